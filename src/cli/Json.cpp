// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/Json.h"

#include <new>
#include <ostream>

namespace velmora {

namespace {

TJson ColumnJson(const TColumnView& column) {
  const TColumnRow& row = column.row;
  return {{"name", row.name},
          {"datatype", static_cast<int>(row.datatype)},
          {"tag", NeutralTag(row.datatype)},
          {"size", row.size ? TJson(*row.size) : TJson()},
          {"precision", row.precision ? TJson(*row.precision) : TJson()},
          {"notnull", row.notnull},
          {"default", row.default_},
          {"autoinc", row.autoinc},
          {"text", JsonOf(column.rendered.text)},
          {"text_error", column.rendered.text ? TJson() : TJson(column.rendered.error)}};
}

TJson KeyJson(const TKeyView& key) {
  return {{"name", key.row.name},
          {"primary", key.row.primary},
          {"unique", key.row.unique},
          {"fulltext", key.row.fulltext},
          {"columns", key.columns},
          {"orders", key.orders},
          {"text", JsonOf(key.rendered.text)}};
}

TJson ConstraintJson(const TConstraintView& constraint) {
  const TConstraintRow& row = constraint.row;
  return {{"name", row.name},
          {"constraint_type", row.constraint_type},
          {"foreign_table", row.foreign_table},
          {"delete_rule", row.delete_rule},
          {"update_rule", row.update_rule},
          {"def_value", row.def_value},
          {"check_condition", row.check_condition},
          {"local", constraint.local},
          {"foreign", constraint.foreign},
          {"text", JsonOf(constraint.rendered.text)}};
}

template <class View>
TJson ArrayOf(const std::vector<View>& views, TJson (*json)(const View&)) {
  TJson array = TJson::array();
  for (const View& view : views) array.push_back(json(view));
  return array;
}

}  // namespace

TJson JsonOf(const std::optional<std::string>& text) { return text ? TJson(*text) : TJson(); }

TJson JsonOf(const TTableView& table) {
  return {{"name", table.name},
          {"type", table.type},
          {"columns", ArrayOf(table.columns, ColumnJson)},
          {"keys", ArrayOf(table.keys, KeyJson)},
          {"constraints", ArrayOf(table.constraints, ConstraintJson)},
          {"error", JsonOf(table.error)}};
}

TJson StructureDocument(int engine, const std::string& display_name, const std::vector<TTableView>& tables,
                        const std::optional<std::string>& error) {
  std::optional<std::string> first = error;
  TJson array = TJson::array();
  for (const TTableView& table : tables) {
    array.push_back(JsonOf(table));
    if (!first) first = table.error;
  }
  return {{"engine", engine}, {"display_name", display_name}, {"tables", std::move(array)}, {"error", JsonOf(first)}};
}

bool PrintDocument(std::ostream& out, const std::function<TJson()>& whole, const std::function<TJson()>& least) {
  try {
    out << TextOf(whole());
    return true;
  } catch (const std::bad_alloc&) {
    out << TextOf(least());
    return false;
  }
}

std::string TextOf(const TJson& document) {
  return document.dump(-1, ' ', false, TJson::error_handler_t::replace) + '\n';
}

}  // namespace velmora
