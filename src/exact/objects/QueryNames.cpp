// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/objects/QueryNames.h"

#include <algorithm>
#include <utility>

#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kUnknown[] = "the columns of %s are not known";
constexpr char kAmbiguous[] = "%s may be a column of several tables";

bool HasName(const TNamedColumn& column, const std::string& name) { return SameText(column.column.name, name); }

void RemoveAlike(std::vector<TNamedColumn>& columns, const std::string& name) {
  std::erase_if(columns, [&](const TNamedColumn& column) { return HasName(column, name); });
}

}  // namespace

void TNamedTables::Add(const std::string& table, const TListedColumns& columns) {
  tables_.push_back({table, columns});
  if (!columns) known_ = false;
  if (columns)
    for (const TListedColumn& column : *columns) row_.push_back({table, column});
}

void TNamedTables::Join(const TNamedTables& other) {
  tables_.insert(tables_.end(), other.tables_.begin(), other.tables_.end());
  row_.insert(row_.end(), other.row_.begin(), other.row_.end());
  known_ = known_ && other.known_;
}

std::vector<TColumnPair> TNamedTables::JoinAlike(const TNamedTables& other, const std::vector<std::string>* names,
                                                 bool right) {
  if (!known_ || !other.known_) RaiseError(Format(kUnknown, "joined tables"));
  const TNamedTables& kept = right ? other : *this;
  const TNamedTables& left_out = right ? *this : other;
  std::vector<TColumnPair> pairs;
  std::vector<TNamedColumn> row, rest = kept.row_, others = left_out.row_;
  for (const TNamedColumn& column : kept.row_) {
    const std::string& name = column.column.name;
    const bool wanted = names == nullptr
                            ? left_out.Find({}, name).has_value()
                            : std::ranges::any_of(*names, [&](const auto& named) { return SameText(named, name); });
    if (!wanted) continue;
    const std::optional<TNamedColumn> one = kept.Find({}, name);
    const std::optional<TNamedColumn> same = left_out.Find({}, name);
    if (!one || !same || one->column.hidden || same->column.hidden) RaiseError(Format(kUnknown, name));
    pairs.push_back(right ? TColumnPair{*same, *one} : TColumnPair{*one, *same});
    row.push_back(*one);
    RemoveAlike(rest, name);
    RemoveAlike(others, name);
  }
  if (names != nullptr && names->size() != pairs.size()) RaiseError(Format(kUnknown, "using"));
  row.insert(row.end(), rest.begin(), rest.end());
  row.insert(row.end(), others.begin(), others.end());
  Join(other);
  row_ = std::move(row);
  return pairs;
}

const TNamedTables::TTable* TNamedTables::FindTable(std::string_view table) const {
  const auto found = std::ranges::find(tables_, table, &TTable::name);
  if (found == tables_.end()) return nullptr;
  const bool twice =
      std::find_if(found + 1, tables_.end(), [&](const TTable& other) { return other.name == table; }) != tables_.end();
  if (twice) RaiseError(Format(kAmbiguous, std::string(table)));
  return &*found;
}

std::vector<TNamedColumn> TNamedTables::Alike(const std::string& name) const {
  std::vector<TNamedColumn> alike;
  std::ranges::copy_if(row_, std::back_inserter(alike),
                       [&](const TNamedColumn& column) { return HasName(column, name); });
  return alike;
}

std::optional<TNamedColumn> TNamedTables::Find(std::string_view table, const std::string& name) const {
  if (!table.empty()) {
    const TTable* of = FindTable(table);
    if (of == nullptr) return std::nullopt;
    if (!of->columns) return TNamedColumn{of->name, {name}};
    for (const TListedColumn& column : *of->columns)
      if (SameText(column.name, name)) return TNamedColumn{of->name, column};
    return std::nullopt;
  }
  if (!known_) RaiseError(Format(kUnknown, "a table beside " + name));
  const std::vector<TNamedColumn> alike = Alike(name);
  if (alike.size() > 1) RaiseError(Format(kAmbiguous, name));
  return alike.empty() ? std::nullopt : std::make_optional(alike.front());
}

std::vector<TNamedColumn> TNamedTables::Star(std::string_view table) const {
  std::vector<TNamedColumn> columns;
  if (table.empty()) {
    if (!known_ || tables_.empty()) RaiseError(Format(kUnknown, "*"));
    columns = row_;
  } else {
    const TTable* of = FindTable(table);
    if (of == nullptr || !of->columns) RaiseError(Format(kUnknown, std::string(table)));
    for (const TListedColumn& column : *of->columns) columns.push_back({of->name, column});
  }
  std::erase_if(columns, [](const TNamedColumn& column) { return column.column.hidden; });
  return columns;
}

std::vector<std::string> TNamedTables::Names() const {
  std::vector<std::string> names;
  for (const TTable& table : tables_) names.push_back(table.name);
  return names;
}

}  // namespace velmora
