// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A database looked at by the rules: a MySQL server, a file of creation texts, a folder of them.

#include <string>
#include <vector>

#include "core/DBConn.h"
#include "exact/run/Selection.h"
#include "lint/Finding.h"
#include "lint/Rules.h"
#include "util/Lists.h"

namespace velmora {

struct TUnreadTable {
  std::string table;
  std::string reason;
};

struct TLintResult {
  std::vector<TFinding> findings;    // by file and line; of a server table by table
  std::vector<TUnreadTable> unread;  // tables that could not be read
  TStringList not_followed;          // statements that may have made or changed tables unseen, each with its place
  std::size_t tables = 0;            // that were looked at

  bool Whole() const { return unread.empty() && not_followed.empty(); }
};

struct TLintSourceWishes {
  TSelection selection{};  // what of the database is looked at
  TLintWishes rules{};
  std::string version{};  // of the server that a file will run on: "mysql 8.0.36"; empty where nobody knows
};

// Raises for a source that has no creation texts. It need not be connected.
void CheckLintable(TDBConn& source);
// `source` is connected and prints exact texts. Raises where its connection is lost.
TLintResult LintSource(TDBConn& source, const TLintSourceWishes& wishes);

// What `after` has and `before` does not: the same rule at the same element of the same table is nothing new. Left out
// is what comes of rows.
std::vector<TFinding> NewFindings(const std::vector<TFinding>& after, const std::vector<TFinding>& before);

}  // namespace velmora
