// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// SARIF 2.1.0 (OASIS Static Analysis Results Interchange Format), whatever has found the results.

#include <cstddef>
#include <string>
#include <vector>

#include "util/Lists.h"

namespace velmora {

// Levels are "error", "warning" and "note".
struct TSarifRule {
  std::string id;
  std::string level;
  std::string title;
  std::string text;
};

struct TSarifResult {
  std::size_t rule = 0;  // of the log's
  std::string level;
  std::string text;
  std::string file;      // with `line`; none where that is 0
  std::size_t line = 0;  // from 1
  std::string name;      // of what it is about: "orders.total"
  std::string kind;      // "column"
  std::string mark;      // what is the same from one run to the next
};

struct TSarifLog {
  std::string category;   // "velmora/lint/": what hosts keep apart from other logs of the same change
  std::string mark_name;  // "velmoraDifference/v1"
  std::vector<TSarifRule> rules;
  std::vector<TSarifResult> results;  // the gravest first: of more than 25,000 the first are given
  TStringList notes;                  // of the run, a sentence each
  bool whole = true;                  // all was read
};

std::string SarifText(TSarifLog log);

}  // namespace velmora
