// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/run/TablesNotMade.h"

#include <algorithm>
#include <map>
#include <string>

#include "exact/compare/PrintedTable.h"
#include "util/Errors.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kSkipped[] = "is skipped";
constexpr char kLeftOut[] = "is left out";

// Of columns and keys, in lower case; none where the text cannot be read.
std::set<std::string> ElementNames(const TReadSide& side, const std::string& table) {
  std::set<std::string> names;
  const auto text = side.texts.find(table);
  if (text == side.texts.end()) return names;
  try {
    for (const TElement& element : ReadPrintedTable(text->second).elements) names.insert(LowerText(element.name));
  } catch (const EVelmora&) {  // that is why it is skipped
  }
  return names;
}

TTableNotMade Skipped(const TReadPair& pair, const TSkippedTable& table) {
  TTableNotMade made{table.table, kSkipped};
  made.there = pair.target.texts.contains(table.table) || (table.side == kTargetSide && table.unread);
  if (!made.there) return made;
  const std::set<std::string> wanted = ElementNames(pair.reference, table.table);
  const std::set<std::string> there = ElementNames(pair.target, table.table);
  if (there.empty()) return made;
  std::ranges::set_difference(wanted, there, std::inserter(made.lacks, made.lacks.end()));
  return made;
}

}  // namespace

std::vector<TTableNotMade> TablesNotMade(const TReadPair& pair) {
  std::vector<TTableNotMade> tables;
  for (const TSkippedTable& table : pair.skipped) tables.push_back(Skipped(pair, table));
  for (const std::string& table : pair.left_out.tables)
    if (std::ranges::find(pair.left_out.target, table) == pair.left_out.target.end())
      tables.push_back({table, kLeftOut});
  return tables;
}

}  // namespace velmora
