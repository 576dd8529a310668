// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Cases that stand in the files of tests/data/exact, for the tests without a server and for those with one.

#include <string>
#include <vector>

#include "mysqltext/Schema.h"
#include "support/CaseFile.h"

namespace velmora::testing {

// A table on each line: what is there | what is wanted | what is to be told of it | rows that are there. Elements of a
// table; its options come after " @ ", and are those of the last line "@ options" where a side has none of its own.
struct TTableCase {
  std::string there;  // "(elements) options"
  std::string wanted;
  std::string told = {};
  std::string rows = {};
};

inline std::vector<TTableCase> TableCases(const std::string& file) {
  std::vector<TTableCase> cases;
  std::string options;
  const auto table = [&](const std::string& side) {
    const std::size_t at = side.find(" @");
    return "(" + side.substr(0, at) + ") " + (at == std::string::npos ? options : side.substr(at + 2));
  };
  for (TStringList& cells : CaseRows("exact/" + file)) {
    if (cells[0].starts_with("@")) {
      options = cells[0].substr(1);
      continue;
    }
    cells.resize(4);
    cases.push_back({table(cells[0]), table(cells[1]), cells[2], cells[3]});
  }
  return cases;
}

// A block of lines: "# name", "reference TABLE" and "target TABLE" for each table, then what is to come of it. "##"
// begins a comment.
struct TSchemaCase {
  std::string name;
  TStringList reference;  // "name (elements) options"
  TStringList target;
  std::string outcome;
};

inline std::vector<TSchemaCase> SchemaCases(const std::string& file) {
  std::vector<TSchemaCase> cases;
  for (const std::string& line : LinesOf(CaseText("exact/" + file)))
    if (line.starts_with("# "))
      cases.push_back({line.substr(2), {}, {}, {}});
    else if (line.starts_with("reference "))
      cases.back().reference.push_back(line.substr(10));
    else if (line.starts_with("target "))
      cases.back().target.push_back(line.substr(7));
    else if (!line.empty() && !line.starts_with("##"))
      cases.back().outcome += line + "\n";
  return cases;
}

inline TSchema SchemaOf(const TStringList& tables) {
  TSchema schema;
  for (const std::string& table : tables) schema.Add(ReadTableText("CREATE TABLE " + table));
  return schema;
}

}  // namespace velmora::testing
