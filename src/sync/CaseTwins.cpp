// SPDX-License-Identifier: GPL-3.0-or-later
#include "sync/CaseTwins.h"

#include <string>
#include <unordered_map>

#include "core/Meta.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kTable[] =
    "Table %s of the reference is %s in the target: the names differ in the case of letters alone";
constexpr char kColumn[] =
    "Column %s of the reference's table %s is %s in the target: the names differ in the case of letters alone";

// The rows of both sides that go together by name; `take` gets those of the reference with their partners.
template <class Rows, class Take>
void Pair(const Rows& reference, const Rows& target, Take take) {
  std::unordered_map<std::string, const typename Rows::value_type*> exact, folded;
  for (const auto& row : target) {
    exact.emplace(row.name, &row);
    folded.emplace(LowerText(row.name), &row);
  }
  for (const auto& row : reference)
    if (const auto same = exact.find(row.name); same != exact.end())
      take(row, *same->second);
    else if (const auto alike = folded.find(LowerText(row.name)); alike != folded.end())
      take(row, *alike->second);
}

}  // namespace

TStringList CaseTwins(TDBConn& reference, TDBConn& target, bool case_counts) {
  TStringList lines;
  const TMeta& wanted = reference.meta();
  const TMeta& there = target.meta();
  Pair(wanted.tTables.Rows(), there.tTables.Rows(), [&](const TTableRow& table, const TTableRow& partner) {
    if (case_counts && table.name != partner.name) lines.push_back(Format(kTable, table.name, partner.name));
    Pair(wanted.tColumns.RowsOf(table.id), there.tColumns.RowsOf(partner.id),
         [&](const TColumnRow& column, const TColumnRow& other) {
           if (column.name != other.name) lines.push_back(Format(kColumn, column.name, table.name, other.name));
         });
  });
  return lines;
}

}  // namespace velmora
