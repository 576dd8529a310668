// SPDX-License-Identifier: GPL-3.0-or-later

// How schemas change.

#include <algorithm>
#include <utility>

#include "converge/SchemaGenerator.h"
#include "converge/SchemaTypes.h"

namespace velmora::testing {

namespace {

template <class Elements>
void DropOne(Elements& elements, TRandom& random) {
  if (elements.empty()) return;
  elements.erase(elements.begin() + static_cast<std::ptrdiff_t>(random.Below(elements.size())));
}

// The columns of other foreign keys that refer to the column, and so have its type.
template <class Action>
void ForEachReferring(TSchemaModel& schema, const std::string& table, const std::string& column, Action action) {
  for (TTableModel& child : schema.tables) {
    for (TForeignKeyModel& key : child.foreign_keys) {
      for (std::size_t i = 0; i < key.references.size(); ++i)
        if (key.parent == table && key.references[i] == column) action(child, key, i);
    }
  }
}

}  // namespace

// Half of the time the columns that refer to it go along.
void TSchemaGenerator::Retype(TSchemaModel& schema, TTableModel& table, TColumnModel& column) {
  const EFamily family = column.type.family;
  column.type = random_.Chance(70) ? TypeOf(family, random_) : AnyType(random_);
  for (TColumnModel& other : table.columns)
    if (other.base == column.name && column.type.family != family) other.expression.clear();
  column.default_value.clear();
  column.check.clear();
  column.auto_increment = false;
  std::erase_if(table.checks, [&](const TCheckModel& check) { return check.column == column.name; });
  if (random_.Chance(50)) return;
  TTypeModel type = column.type;
  if (type.HasLetters()) type.charset = table.CharsetOf(column);
  ForEachReferring(schema, table.name, column.name, [&](TTableModel& child, TForeignKeyModel& key, std::size_t i) {
    TColumnModel* own = child.Find(key.columns[i]);
    if (own == nullptr || own == &column) return;
    own->type = type;
    own->default_value.clear();
    own->check.clear();
  });
}

// With what is made of it.
void TSchemaGenerator::DropColumn(TTableModel& table) {
  const std::string name = random_.Pick(table.columns).name;
  std::erase_if(table.columns, [&](const TColumnModel& other) { return other.name == name || other.base == name; });
  for (TKeyModel& key : table.keys)
    std::erase_if(key.parts, [&](const TKeyPartModel& part) { return table.Find(part.column) == nullptr; });
  std::erase_if(table.keys, [](const TKeyModel& key) { return key.parts.empty(); });
  std::erase_if(table.checks, [&](const TCheckModel& check) { return table.Find(check.column) == nullptr; });
}

void TSchemaGenerator::RenameColumn(TSchemaModel& schema, TTableModel& table, TColumnModel& column) {
  const std::string from = column.name;
  const std::string to = Name("r");
  const auto rename = [&](std::string& name) {
    if (name == from) name = to;
  };
  for (TColumnModel& other : table.columns) rename(other.base);
  for (TKeyModel& key : table.keys)
    for (TKeyPartModel& part : key.parts) rename(part.column);
  for (TCheckModel& check : table.checks) rename(check.column);
  for (TForeignKeyModel& key : table.foreign_keys)
    for (std::string& name : key.columns) rename(name);
  ForEachReferring(schema, table.name, from,
                   [&](TTableModel&, TForeignKeyModel& key, std::size_t i) { key.references[i] = to; });
  rename(table.partition_column);
  column.name = to;
}

void TSchemaGenerator::RenameTable(TSchemaModel& schema, TTableModel& table) {
  const std::string from = std::exchange(table.name, Name("n"));
  for (TTableModel& child : schema.tables)
    for (TForeignKeyModel& key : child.foreign_keys)
      if (key.parent == from) key.parent = table.name;
}

void TSchemaGenerator::Rename(TSchemaModel& schema) {
  for (TTableModel& table : schema.tables) {
    if (random_.Chance(25)) RenameTable(schema, table);
    for (std::size_t columns = random_.Chance(60) ? 1 + random_.Below(3) : 0; columns > 0; --columns)
      RenameColumn(schema, table, random_.Pick(table.columns));
  }
}

void TSchemaGenerator::MoveColumn(TTableModel& table) {
  const auto any = [&] {
    return table.columns.begin() + static_cast<std::ptrdiff_t>(random_.Below(table.columns.size()));
  };
  const auto from = any();
  const auto to = any();
  if (from < to) std::rotate(from, from + 1, to + 1);
  if (to < from) std::rotate(to, from, from + 1);
}

void TSchemaGenerator::MutateColumn(TSchemaModel& schema, TTableModel& table) {
  if (table.columns.empty()) return;  // all were taken away, and the server will refuse the table
  TColumnModel& column = random_.Pick(table.columns);
  switch (random_.Below(10)) {
    case 0:
    case 1:
      if (!column.Generated()) Retype(schema, table, column);
      break;
    case 2:
      column.comment = Comment();
      break;
    case 3:
      column.not_null = !column.not_null;
      break;
    case 4:
      column.default_value =
          column.type.defaults.empty() || random_.Chance(30) ? "" : random_.Pick(column.type.defaults);
      break;
    case 5:
      column.invisible = !column.invisible;
      break;
    case 6:
      RenameColumn(schema, table, column);
      break;
    case 7:
      column.check = column.check.empty() && CanBeRead(column.type.charset) ? AnyCondition(column.type, random_) : "";
      break;
    case 8:
      if (column.Generated()) {
        column.stored = !column.stored;
      } else if (column.type.HasLetters()) {
        column.type.charset = AnyCharset(random_);
        column.default_value.clear();
        if (!CanBeRead(column.type.charset)) column.check.clear();
      }
      break;
    default:
      if (column.Generated()) {
        column.expression.clear();
      } else {
        column.auto_increment = !column.auto_increment && column.type.family == EFamily::Whole;
        column.not_null = column.not_null || column.auto_increment;
      }
  }
}

void TSchemaGenerator::MutateKey(TTableModel& table) {
  static const std::vector<std::string> kOptions = {" comment 'new; ''key'''", " ignored", " key_block_size=4",
                                                    " ignored comment 'k'"};
  if (table.keys.empty()) return;
  TKeyModel& key = random_.Pick(table.keys);
  switch (random_.Below(4)) {
    case 0:
      if (key.kind == EKeyModel::Unique || key.kind == EKeyModel::Plain)
        key.kind = key.Unique() ? EKeyModel::Plain : EKeyModel::Unique;
      break;
    case 1: {
      TKeyModel other = Key(table, key.kind);
      other.name = key.name;
      if (!other.parts.empty()) key = std::move(other);
      break;
    }
    case 2:
      std::reverse(key.parts.begin(), key.parts.end());
      break;
    default:
      key.options = key.options.empty() ? random_.Pick(kOptions) : "";
  }
}

void TSchemaGenerator::MutateForeignKey(TSchemaModel& schema, TTableModel& table) {
  if (table.foreign_keys.empty() || random_.Chance(30))
    AddForeignKey(schema, table);
  else if (random_.Chance(40))
    DropOne(table.foreign_keys, random_);
  else
    SetForeignKeyRules(random_.Pick(table.foreign_keys));
}

void TSchemaGenerator::MutateTable(TSchemaModel& schema, TTableModel& table) {
  switch (random_.Below(20)) {
    case 0:
    case 1:
      AddColumn(table);
      break;
    case 2:
      AddGenerated(table);
      break;
    case 3:
    case 4:
      if (table.columns.size() > 2) DropColumn(table);
      break;
    case 5:
    case 6:
      MoveColumn(table);
      break;
    case 7:
      AddKey(table);
      break;
    case 8:
      DropOne(table.keys, random_);
      break;
    case 9:
      AddPrimaryKey(table);
      break;
    case 10:
      MutateKey(table);
      break;
    case 11:
      AddCheck(table);
      break;
    case 12:
      DropOne(table.checks, random_);
      break;
    case 13:
    case 14:
      MutateForeignKey(schema, table);
      break;
    case 15:
      SetOptions(table);
      break;
    case 16:
      table.charset = AnyTableCharset(random_);
      break;
    case 17:
      if (random_.Chance(50)) {
        table.engine = Table().engine;
        SetOptions(table);
      } else if (table.partitioning.empty()) {
        SetPartitions(table);
      } else if (random_.Chance(50)) {
        table.partitioning.clear();
      } else {
        SetPartitions(table);
      }
      break;
    default:
      MutateColumn(schema, table);
  }
}

void TSchemaGenerator::Mutate(TSchemaModel& schema) {
  for (std::size_t i = 0; i < schema.tables.size(); ++i) {
    if (random_.Chance(25)) continue;
    if (random_.Chance(8)) {
      schema.tables[i] = Table();
    } else {
      for (std::size_t changes = 1 + random_.Below(4); changes > 0; --changes) {
        MutateTable(schema, schema.tables[i]);
        MutateColumn(schema, schema.tables[i]);
      }
    }
  }
  if (random_.Chance(30)) schema.tables.push_back(Table());
  if (random_.Chance(20)) DropOne(schema.tables, random_);
}

}  // namespace velmora::testing
