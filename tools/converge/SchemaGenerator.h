// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <set>
#include <string>

#include "converge/SchemaModel.h"

namespace velmora::testing {

// Makes schemas of everything that MariaDB 10.11 has for tables, and changes them. What one seed gives is always the
// same. A server may refuse some of it, see SchemaTaken.h.
class TSchemaGenerator {
 public:
  explicit TSchemaGenerator(std::uint64_t seed) : random_(seed) {}

  TSchemaModel Schema(std::size_t tables);
  // Some tables go, some come, most of the others change in one to four ways.
  void Mutate(TSchemaModel& schema);
  // Some tables and columns get other names.
  void Rename(TSchemaModel& schema);
  TRandom& random() { return random_; }
  std::string Name(const char* prefix);  // that nothing has so far

 private:
  std::string Comment();
  TTableModel Table();
  TColumnModel Column();
  TColumnModel Column(TTypeModel type);
  void AddColumn(TTableModel& table);
  void AddGenerated(TTableModel& table);
  void AddKey(TTableModel& table);
  TKeyModel Key(const TTableModel& table, EKeyModel kind);
  void AddPrimaryKey(TTableModel& table);
  void AddCheck(TTableModel& table);
  void AddForeignKey(TSchemaModel& schema, TTableModel& table);
  void SetForeignKeyRules(TForeignKeyModel& key);
  void SetOptions(TTableModel& table);
  void SetPartitions(TTableModel& table);

  void MutateTable(TSchemaModel& schema, TTableModel& table);
  void MutateColumn(TSchemaModel& schema, TTableModel& table);
  void Retype(TSchemaModel& schema, TTableModel& table, TColumnModel& column);
  void DropColumn(TTableModel& table);
  void RenameColumn(TSchemaModel& schema, TTableModel& table, TColumnModel& column);
  void RenameTable(TSchemaModel& schema, TTableModel& table);
  void MoveColumn(TTableModel& table);
  void MutateKey(TTableModel& table);
  void MutateForeignKey(TSchemaModel& schema, TTableModel& table);

  TRandom random_;
  int named_ = 0;                // makes names different
  int identified_ = 0;           // makes ids different
  std::set<std::string> plain_;  // reserved words that are names as they are
};

}  // namespace velmora::testing
