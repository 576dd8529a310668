#include "exact/objects/ViewNames.h"

#include <utility>

#include "exact/objects/ObjectText.h"
#include "exact/objects/ViewQuery.h"
#include "mysqltext/ColumnParts.h"
#include "mysqltext/TableText.h"
#include "util/Errors.h"

namespace velmora {

namespace {

constexpr int kMaxDepth = 100;

std::vector<TListedColumn> ColumnsOfTable(const std::string& text) {
  std::vector<TListedColumn> columns;
  for (const TElement& element : ReadTableText(text).elements)
    if (element.kind == EElement::Column) columns.push_back({element.name, element.text.Column().invisible});
  return columns;
}

}  // namespace

std::string TViewNames::Meaning(const TObjectText& view) const {
  try {
    return ResolvedMeaning(view.query, view.columns, [this](const std::string& table) { return ColumnsOf(table); });
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
  const TOtherObject* view = FindView(table);
  if (view == nullptr) {
    const std::string text = side_.table_text ? side_.table_text(table) : std::string();
    return text.empty() ? std::nullopt : TListedColumns(ColumnsOfTable(text));
  }
  const TObjectText read = ReadObjectText(view->text, side_.database);
  std::vector<std::string> names = read.columns;
  if (names.empty()) names = QueryColumns(read.query, [this](const std::string& name) { return ColumnsOf(name); });
  std::vector<TListedColumn> columns;
  for (std::string& name : names) columns.push_back({std::move(name)});
  return columns.empty() ? std::nullopt : TListedColumns(std::move(columns));
}

const TOtherObject* TViewNames::FindView(const std::string& name) const {
  if (views_.empty())
    for (const TOtherObject& object : side_.objects)
      if (object.kind == "view") views_.emplace(object.name, &object);
  const auto found = views_.find(name);
  return found == views_.end() ? nullptr : found->second;
}

}  // namespace velmora
