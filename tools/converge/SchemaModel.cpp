// SPDX-License-Identifier: GPL-3.0-or-later
#include "converge/SchemaModel.h"

#include <algorithm>

namespace velmora::testing {

namespace {

std::string Doubled(std::string_view text, std::string_view what) {
  std::string result;
  for (const char c : text) {
    if (what.find(c) != std::string_view::npos) result += c;
    result += c;
  }
  return result;
}

std::string WithName(std::string text, const std::string& column) {
  const std::string name = SqlName(column);
  for (std::size_t at = 0; (at = text.find("%s", at)) != std::string::npos; at += name.size())
    text.replace(at, 2, name);
  return text;
}

std::string NameList(const std::vector<std::string>& names) {
  std::string result;
  for (const auto& name : names) result += (result.empty() ? "" : ", ") + SqlName(name);
  return "(" + result + ")";
}

// A timestamp without a default has one that depends on its place in the table and on the server's mode.
std::string DefaultOf(const TColumnModel& column) {
  const bool needed = column.not_null && column.type.text.starts_with("timestamp");
  return column.default_value.empty() && needed ? column.type.defaults.front() : column.default_value;
}

std::string ColumnText(const TColumnModel& column) {
  std::string text = SqlName(column.name) + " " + column.type.text;
  if (!column.type.charset.empty()) text += " " + column.type.charset;
  const std::string standard = DefaultOf(column);
  if (column.Generated()) {
    text += " as (" + WithName(column.expression, column.base) + ")" + (column.stored ? " stored" : " virtual");
  } else if (column.auto_increment) {
    text += " not null auto_increment";
  } else {
    text += column.not_null ? " not null" : " null";
    if (!standard.empty()) text += " default " + standard;
  }
  if (column.invisible && (column.Generated() || !column.not_null || !standard.empty())) text += " invisible";
  if (!column.comment.empty()) text += " comment " + SqlText(column.comment);
  if (!column.check.empty() && !column.Generated() && !column.auto_increment)
    text += " check (" + WithName(column.check, column.name) + ")";
  return text;
}

std::string KeyText(const TKeyModel& key) {
  static constexpr const char* kWords[] = {"primary key", "unique key", "key", "fulltext key", "spatial key"};
  std::string parts;
  for (const auto& part : key.parts) {
    const std::string name = SqlName(part.column);
    parts += (parts.empty() ? "" : ", ") + (part.expression.empty() ? name : WithName(part.expression, part.column));
    if (part.prefix > 0) parts += "(" + std::to_string(part.prefix) + ")";
    if (part.descending) parts += " desc";
  }
  const std::string name = key.kind == EKeyModel::Primary ? "" : " " + SqlName(key.name);
  return kWords[static_cast<std::size_t>(key.kind)] + name + " (" + parts + ")" + key.options;
}

}  // namespace

bool TTypeModel::HasLetters() const {
  return family == EFamily::Letters || family == EFamily::LongLetters || family == EFamily::Members;
}

bool TTypeModel::InKeys() const {
  constexpr std::size_t kLongest = 40;
  if (compressed) return false;
  switch (family) {
    case EFamily::Letters:
    case EFamily::Bytes:
      return length <= kLongest;
    case EFamily::LongLetters:
    case EFamily::LongBytes:
    case EFamily::Json:
    case EFamily::Shape:
    case EFamily::Vector:
      return false;
    default:
      return true;
  }
}

bool TTypeModel::TakesPrefix() const {
  constexpr std::size_t kShortest = 10;
  if (compressed) return false;
  if (family == EFamily::Letters || family == EFamily::Bytes) return length > kShortest;
  return family == EFamily::LongLetters || family == EFamily::LongBytes || family == EFamily::Json;
}

const TColumnModel* TTableModel::Find(const std::string& column) const {
  const auto found = std::find_if(columns.begin(), columns.end(), [&](const auto& c) { return c.name == column; });
  return found == columns.end() ? nullptr : &*found;
}

TColumnModel* TTableModel::Find(const std::string& column) {
  const auto found = std::find_if(columns.begin(), columns.end(), [&](const auto& c) { return c.name == column; });
  return found == columns.end() ? nullptr : &*found;
}

bool TTableModel::IsReferring(const std::string& column) const {
  return std::any_of(foreign_keys.begin(), foreign_keys.end(), [&](const TForeignKeyModel& key) {
    return std::find(key.columns.begin(), key.columns.end(), column) != key.columns.end();
  });
}

const std::string& TTableModel::CharsetOf(const TColumnModel& column) const {
  return column.type.charset.empty() ? charset : column.type.charset;
}

TTableModel* TSchemaModel::Find(const std::string& table) {
  const auto found = std::find_if(tables.begin(), tables.end(), [&](const auto& t) { return t.name == table; });
  return found == tables.end() ? nullptr : &*found;
}

std::vector<TRename> RenamesBetween(const TSchemaModel& before, const TSchemaModel& after) {
  std::vector<TRename> renames, of_columns;
  const auto each = [](const auto& old_ones, const auto& new_ones, auto action) {
    for (const auto& old_one : old_ones)
      for (const auto& new_one : new_ones)
        if (old_one.id != 0 && old_one.id == new_one.id) action(old_one, new_one);
  };
  each(before.tables, after.tables, [&](const TTableModel& there, const TTableModel& then) {
    if (there.name != then.name) renames.push_back({"", there.name, then.name});
    each(there.columns, then.columns, [&](const TColumnModel& from, const TColumnModel& to) {
      if (from.name != to.name) of_columns.push_back({then.name, from.name, to.name});
    });
  });
  renames.insert(renames.end(), of_columns.begin(), of_columns.end());
  return renames;
}

std::string SqlName(std::string_view name) { return "`" + Doubled(name, "`") + "`"; }

std::string SqlText(std::string_view text) { return "'" + Doubled(text, "'\\") + "'"; }

std::string ForeignKeyText(const TForeignKeyModel& key) {
  std::string text = "constraint " + SqlName(key.name) + " foreign key " + NameList(key.columns) + " references " +
                     SqlName(key.parent) + " " + NameList(key.references);
  if (!key.on_delete.empty()) text += " on delete " + key.on_delete;
  if (!key.on_update.empty()) text += " on update " + key.on_update;
  return text;
}

std::string CreateStatement(const TTableModel& table) {
  std::string body;
  const auto line = [&body](const std::string& text) { body += (body.empty() ? "\n  " : ",\n  ") + text; };
  for (const auto& column : table.columns) line(ColumnText(column));
  for (const auto& key : table.keys) line(KeyText(key));
  for (const auto& check : table.checks)
    line("constraint " + SqlName(check.name) + " check (" + WithName(check.expression, check.column) + ")" +
         check.enforcement);
  for (const auto& key : table.foreign_keys) line(ForeignKeyText(key));
  std::string text =
      "create table " + SqlName(table.name) + " (" + body + "\n) engine=" + table.engine + " default " + table.charset;
  for (const auto& option : table.options) text += " " + option.name + "=" + option.value;
  if (!table.partitioning.empty()) text += "\n" + WithName(table.partitioning, table.partition_column);
  return text;
}

}  // namespace velmora::testing
