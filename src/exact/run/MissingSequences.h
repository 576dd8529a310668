// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Sequences by which columns of the reference count, and which the target's server would look for in vain.

#include <map>
#include <string>
#include <utility>

#include "core/DBConn.h"
#include "mysqltext/TableText.h"

namespace velmora {

class TMissingSequences {
 public:
  // `server` is a target of MariaDB that is connected to its database, and outlives this.
  explicit TMissingSequences(TDBConn& server) : server_(server) {}

  // Why the table cannot be made of `there`, the target's, null for none; empty for nothing.
  std::string WhyNot(const TTableText& wanted, const TTableText* there);

 private:
  bool IsThere(const std::string& database, const std::string& name);

  TDBConn& server_;
  std::map<std::pair<std::string, std::string>, bool> asked_;
};

// Whether the text may name a sequence.
bool MayNameSequence(std::string_view text);

}  // namespace velmora
