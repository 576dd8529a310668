// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A schema as the generator of schemas sees it: what it takes to write its "create table" statements, and to know which
// parts of it go together on a server.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "Random.h"
#include "exact/compare/Renames.h"

namespace velmora::testing {

enum class EFamily {
  Whole,
  Number,
  Bit,
  Letters,
  LongLetters,
  Bytes,
  LongBytes,
  Members,
  Time,
  Json,
  Address,
  Shape,
  Vector
};

struct TTypeModel {
  EFamily family = EFamily::Whole;
  std::string text;         // "int(7) unsigned", "enum('a','b')"
  std::string charset;      // a clause, as "character set latin1 collate latin1_bin"; empty where it is the table's
  std::size_t length = 0;   // in letters or bytes, of what has one
  bool compressed = false;  // a COMPRESSED column
  std::vector<std::string> samples;   // two different values in SQL, the least and the greatest where there are such
  std::vector<std::string> defaults;  // in SQL, with "on update" where it has one

  bool HasLetters() const;
  bool InKeys() const;       // whole, without a prefix
  bool TakesPrefix() const;  // in keys
};

// In texts of expressions "%s" is the column's name in backticks.
struct TColumnModel {
  int id = 0;  // the same under every name; 0 for nobody's
  std::string name;
  TTypeModel type;
  std::string default_value;
  std::string base;        // of a generated column: the column it is computed of
  std::string expression;  // what is computed; empty for other columns
  std::string check;
  std::string comment;
  bool stored = false;  // of a generated column
  bool not_null = false;
  bool invisible = false;
  bool auto_increment = false;

  bool Generated() const { return !expression.empty(); }
};

enum class EKeyModel { Primary, Unique, Plain, Fulltext, Spatial };

struct TKeyPartModel {
  std::string column;
  std::size_t prefix = 0;
  bool descending = false;
  std::string expression{};  // over the column, in brackets; empty for the column itself
};

struct TKeyModel {
  EKeyModel kind = EKeyModel::Plain;
  std::string name;  // empty for the primary key
  std::vector<TKeyPartModel> parts;
  std::string options;  // with a blank in front

  bool Unique() const { return kind == EKeyModel::Primary || kind == EKeyModel::Unique; }
};

struct TCheckModel {
  std::string name;
  std::string column;
  std::string expression;
  std::string enforcement{};  // with a blank in front
};

struct TForeignKeyModel {
  std::string name;
  std::vector<std::string> columns;
  std::string parent;
  std::vector<std::string> references;
  std::string on_delete;  // "cascade"; empty for none
  std::string on_update;
};

struct TOptionModel {
  std::string name;
  std::string value;
};

struct TTableModel {
  int id = 0;  // as of a column
  std::string name;
  std::vector<TColumnModel> columns;
  std::vector<TKeyModel> keys;
  std::vector<TCheckModel> checks;
  std::vector<TForeignKeyModel> foreign_keys;
  std::string engine = "InnoDB";
  std::string charset;  // as of a column, never empty
  std::vector<TOptionModel> options;
  std::string partition_column;
  std::string partitioning;  // "%s" is the column; empty for none

  TColumnModel* Find(const std::string& column);
  const TColumnModel* Find(const std::string& column) const;
  bool TakesForeignKeys() const { return engine == "InnoDB" && partitioning.empty(); }
  bool IsReferring(const std::string& column) const;  // a foreign key stands on the column
  const std::string& CharsetOf(const TColumnModel& column) const;
};

struct TSchemaModel {
  std::vector<TTableModel> tables;
  TTableModel* Find(const std::string& table);
};

// What has another name in a later form of the schema, tables first.
std::vector<TRename> RenamesBetween(const TSchemaModel& before, const TSchemaModel& after);

std::string SqlName(std::string_view name);  // in backticks
std::string SqlText(std::string_view text);  // in quotes
std::string ForeignKeyText(const TForeignKeyModel& key);
std::string CreateStatement(const TTableModel& table);

}  // namespace velmora::testing
