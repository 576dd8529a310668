// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Names that become others: what goes and is new in its place may be the same thing under another name.

#include <string>
#include <vector>

#include "exact/compare/Changes.h"
#include "mysqltext/Schema.h"

namespace velmora {

struct TRename {
  std::string table;  // of a column, by its new name; empty for a table
  std::string from;
  std::string to;

  bool OfTable() const { return table.empty(); }
  std::string Text() const;   // as it is asked for: "orders.total=sum", "old=new"; names in backticks that need them
  std::string Place() const;  // "orders.total", "old"
  bool operator==(const TRename&) const = default;
};

// Raises for a text that does not name a table or column and its new name.
TRename ReadRename(const std::string& text);

struct TRenameOffer {
  TRename rename;
  double score = 0;  // up to 1, for the same thing in the same place under a name that is much the same
  int goes = 0;      // ids of the two changes
  int comes = 0;

  std::string Text() const;  // "orders.total may have become orders.sum (score 0.9): --rename orders.total=sum"
};

// Obsolete and new columns of one table that are defined alike and stand near the same place, and tables that are alike
// but for their names. Nothing is offered twice. `target` has the tables that are compared.
std::vector<TRenameOffer> RenameOffers(const std::vector<TChange>& changes, const TSchema& reference,
                                       const TSchema& target, const TEquivalenceUse& use);

}  // namespace velmora
