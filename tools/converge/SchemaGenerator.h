#pragma once

#include <set>
#include <string>

#include "converge/SchemaModel.h"

namespace velmora::testing {

// Makes schemas of everything that MariaDB 10.11 has for tables, and changes them. What one seed gives is always the
// same. Every schema is one that a server takes, in the order of its tables with foreign key checks off; what a server
// takes in "create table" but not from an "alter table" is left out, see Repair.
class TSchemaGenerator {
 public:
  explicit TSchemaGenerator(std::uint64_t seed) : random_(seed) {}

  TSchemaModel Schema(std::size_t tables);
  // Some tables go, some come, most of the others change in one to four ways.
  void Mutate(TSchemaModel& schema);
  TRandom& random() { return random_; }

 private:
  std::string Name(const char* prefix);
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
  void RenameColumn(TSchemaModel& schema, TTableModel& table, TColumnModel& column);
  void MoveColumn(TTableModel& table);
  void MutateKey(TTableModel& table);
  void MutateForeignKey(TSchemaModel& schema, TTableModel& table);

  TRandom random_;
  int named_ = 0;                // makes names different
  std::set<std::string> plain_;  // reserved words that are names as they are
};

// Takes away what does not go together any more: keys without their columns, foreign keys whose columns differ, ...
void Repair(TSchemaModel& schema);

}  // namespace velmora::testing
