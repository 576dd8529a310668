// SPDX-License-Identifier: GPL-3.0-or-later
#include "converge/SchemaTaken.h"

#include <set>
#include <utility>
#include <vector>

#include "util/Errors.h"

namespace velmora::testing {

namespace {

// The parts of a table that a server may refuse, in the order in which they build on each other.
enum class EPart { Column, Generated, Key, Counter, Check, Option, Partitioning };
using TPart = std::pair<EPart, std::size_t>;  // with its place among its kind
using TParts = std::vector<TPart>;

TParts PartsOf(const TTableModel& table) {
  std::set<TPart> parts;
  for (std::size_t i = 0; i < table.columns.size(); ++i) {
    parts.emplace(table.columns[i].Generated() ? EPart::Generated : EPart::Column, i);
    if (table.columns[i].auto_increment) parts.emplace(EPart::Counter, i);
  }
  for (std::size_t i = 0; i < table.keys.size(); ++i) parts.emplace(EPart::Key, i);
  for (std::size_t i = 0; i < table.checks.size(); ++i) parts.emplace(EPart::Check, i);
  for (std::size_t i = 0; i < table.options.size(); ++i) parts.emplace(EPart::Option, i);
  if (!table.partitioning.empty()) parts.emplace(EPart::Partitioning, 0);
  return {parts.begin(), parts.end()};
}

// The table of these parts alone, without foreign keys.
TTableModel Only(const TTableModel& whole, const std::set<TPart>& parts) {
  TTableModel table = whole;
  const auto keep = [&parts](auto& elements, EPart part) {
    std::size_t place = 0;
    std::erase_if(elements, [&](const auto&) { return !parts.contains({part, place++}); });
  };
  for (std::size_t i = 0; i < table.columns.size(); ++i)
    if (!parts.contains({EPart::Counter, i})) table.columns[i].auto_increment = false;
  std::size_t place = 0;
  std::erase_if(table.columns, [&](const TColumnModel& column) {
    return !parts.contains({column.Generated() ? EPart::Generated : EPart::Column, place++});
  });
  keep(table.keys, EPart::Key);
  keep(table.checks, EPart::Check);
  keep(table.options, EPart::Option);
  if (!parts.contains({EPart::Partitioning, 0})) table.partitioning.clear();
  table.foreign_keys.clear();
  return table;
}

bool Runs(TLiveDatabase& database, const std::string& statement) {
  try {
    database.Run(statement);
    return true;
  } catch (const EVelmora&) {
    return false;
  }
}

bool Makes(TLiveDatabase& database, const TTableModel& table) {
  database.Run("drop table if exists " + SqlName(table.name));
  return Runs(database, CreateStatement(table));
}

// Some tables are made that cannot be opened again.
bool Opens(TLiveDatabase& database, const TTableModel& table) {
  const std::string name = SqlName(table.name);
  return Runs(database, "flush tables " + name) && Runs(database, "select * from " + name + " limit 0");
}

bool MakesAndOpens(TLiveDatabase& database, const TTableModel& table) {
  return Makes(database, table) && Opens(database, table);
}

using TTest = bool (*)(TLiveDatabase& database, const TTableModel& table);

// Adds to what is taken: all of the parts at once, or each half of them for itself.
void Add(const TParts& parts, const TTableModel& whole, TTest test, TLiveDatabase& database, std::set<TPart>& taken) {
  std::set<TPart> more = taken;
  more.insert(parts.begin(), parts.end());
  if (test(database, Only(whole, more))) {
    taken = std::move(more);
    return;
  }
  if (parts.size() == 1) return;
  const auto middle = parts.begin() + static_cast<std::ptrdiff_t>(parts.size() / 2);
  Add({parts.begin(), middle}, whole, test, database, taken);
  Add({middle, parts.end()}, whole, test, database, taken);
}

// Leaves the table made; nothing for one of which no column is taken.
std::set<TPart> TakenParts(TLiveDatabase& database, const TTableModel& whole) {
  const TParts parts = PartsOf(whole);
  for (const TTest test : {Makes, MakesAndOpens}) {
    std::set<TPart> taken;
    Add(parts, whole, test, database, taken);
    if (taken.empty()) return taken;  // not one column
    const TTableModel table = Only(whole, taken);
    if ((taken.size() == parts.size() || Makes(database, table)) && Opens(database, table)) return taken;
  }
  RaiseError("A server makes this and cannot open it: " + CreateStatement(whole));
}

}  // namespace

TTakenParts MakeWhatIsTaken(TLiveDatabase& database, TSchemaModel& schema) {
  TTakenParts count;
  TSchemaModel taken;
  for (const TTableModel& whole : schema.tables) {
    const std::set<TPart> parts = TakenParts(database, whole);
    const std::size_t all = PartsOf(whole).size();
    count.parts += all;
    count.dropped += all - parts.size();
    TTableModel table = Only(whole, parts);
    if (table.columns.empty()) continue;
    table.foreign_keys = whole.foreign_keys;
    taken.tables.push_back(std::move(table));
  }
  database.Run("set foreign_key_checks = 1");
  for (TTableModel& table : taken.tables) {
    count.parts += table.foreign_keys.size();
    count.dropped += std::erase_if(table.foreign_keys, [&](const TForeignKeyModel& key) {
      return !Runs(database, "alter table " + SqlName(table.name) + " add " + ForeignKeyText(key));
    });
  }
  database.Run("set foreign_key_checks = 0");
  schema = std::move(taken);
  return count;
}

}  // namespace velmora::testing
