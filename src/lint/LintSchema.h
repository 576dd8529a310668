// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A database as rules look at it.

#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "exact/compare/ServerForm.h"
#include "mysqltext/TableText.h"

namespace velmora {

// A character set or a collation that more than half of the tables have.
struct TUsualName {
  std::string name;        // empty where there is none
  std::size_t tables = 0;  // that have it
  std::size_t of = 0;      // tables whose own is known
};

// Filled by whoever reads the source; Settle is called once all tables are in.
class TLintSchema {
 public:
  void Add(TTableText table) { tables_.push_back(std::move(table)); }
  void Settle();

  const std::vector<TTableText>& Tables() const { return tables_; }
  const TTableText* Find(std::string_view name) const;  // case ignored, as on some servers; null for none
  const TUsualName& UsualCharset() const { return usual_charset_; }
  const TUsualName& UsualCollation() const { return usual_collation_; }  // of the tables with the usual set

  std::optional<TServerTraits> server{};  // nothing where nobody knows
  bool live = false;                      // counters are those of a server, as they are now
  bool whole = true;                      // there are no tables beside these and the unread ones
  std::set<std::string> unread{};         // tables of which nothing is known, in lower case

 private:
  std::vector<TTableText> tables_;
  std::map<std::string, std::size_t> index_;  // by name in lower case
  TUsualName usual_charset_, usual_collation_;
};

// The table's engine in lower case: InnoDB where none is named, as servers have it from 5.5 on.
std::string LintEngine(const TTableText& table);

}  // namespace velmora
