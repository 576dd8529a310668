// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/objects/ViewNames.h"

#include <utility>

#include "exact/objects/ObjectContext.h"
#include "exact/objects/ObjectText.h"
#include "mysqltext/ColumnParts.h"
#include "mysqltext/TableText.h"
#include "util/Errors.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr int kMaxDepth = 20;  // each may hold queries within queries: all of them share one stack

std::vector<TListedColumn> ColumnsOfTable(const std::string& text) {
  std::vector<TListedColumn> columns;
  for (const TElement& element : ReadTableText(text).elements)
    if (element.kind == EElement::Column) columns.push_back({element.name, element.text.Column().invisible});
  return columns;
}

}  // namespace

TViewNames::TViewNames(const TDatabaseObjects& side)
    : side_(side),
      known_{[this](const std::string& table) { return ColumnsOf(table); },
             [this](const std::string& name) { return Find("function", name) != nullptr; }} {}

std::string TViewNames::Meaning(const TObjectText& view) const {
  try {
    return ResolvedMeaning(view.query, view.columns, known_);
  } catch (const EVelmora&) {  // not certain
    return {};
  }
}

TListedColumns TViewNames::ColumnsOf(const std::string& table) const {
  // While they are read they are not known: a view that leads to itself has none.
  const auto [place, added] = columns_.try_emplace(table);
  if (!added || depth_ >= kMaxDepth) return place->second;
  ++depth_;
  TListedColumns columns;
  try {
    columns = ReadColumns(table);
  } catch (const EVelmora&) {  // what cannot be read is not known
  }
  --depth_;
  return place->second = std::move(columns);
}

TListedColumns TViewNames::ReadColumns(const std::string& table) const {
  const TOtherObject* view = Find("view", table);
  if (view == nullptr) {
    const std::string text = side_.table_text ? side_.table_text(table) : std::string();
    return text.empty() ? std::nullopt : TListedColumns(ColumnsOfTable(text));
  }
  const TObjectText read = ReadObject(*view, side_.database);
  std::vector<std::string> names = read.columns;
  if (names.empty()) names = QueryColumns(read.query, known_);
  std::vector<TListedColumn> columns;
  columns.reserve(names.size());
  for (std::string& name : names) columns.push_back({std::move(name)});
  return columns.empty() ? std::nullopt : TListedColumns(std::move(columns));
}

const TOtherObject* TViewNames::Find(const std::string& kind, const std::string& name) const {
  if (objects_.empty())
    for (const TOtherObject& object : side_.objects)
      objects_.emplace(std::pair(object.kind, object.kind == "view" ? object.name : LowerText(object.name)), &object);
  const auto found = objects_.find({kind, name});
  return found == objects_.end() ? nullptr : found->second;
}

}  // namespace velmora
