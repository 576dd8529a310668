// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// TMeta: the in-memory picture of one database's structure. Six tables, linked master to detail, with cursors; much of
// the program works by placing a cursor and then reading.
//
//   tTables - tColumns
//           - tKeys        - tKeyFields
//           - tConstraints - tConstraintFields
//
// A table's detail rows are there once it is `fetched`; operations that need them fetch them through the owner. All
// failures raise EVelmora and roll nothing back.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "core/MetaRecords.h"
#include "core/MetaTable.h"
#include "core/NeutralTypes.h"
#include "util/Lists.h"

namespace velmora {

class TDBConn;

inline constexpr char kNoCachedDDL[] = "N/A";  // `cached_ddl` of a table whose creation text was not asked for yet

// Widths of the text fields, in characters.
inline constexpr std::size_t kNameWidth = 255;
inline constexpr std::size_t kWordWidth = 20;
inline constexpr std::size_t kOrderWidth = 3;

struct TTableRow {
  int id = 0;
  std::string name;  // as the engine spells it
  std::string type;  // storage engine word; empty if unknown
  bool fetched = false;
  std::string cached_ddl = kNoCachedDDL;

  int MasterId() const { return kNoMaster; }
  const std::string& Name() const { return name; }
  static constexpr bool kUniqueName = false;
  static constexpr bool kFoundById = true;
  void CutTexts();
};

struct TColumnRow {
  int table_id = kNoMaster;
  int id = 0;
  std::string name;
  TNeutralType datatype = ntI1;
  std::optional<std::int64_t> size;       // length or numeric precision
  std::optional<std::int32_t> precision;  // scale
  bool notnull = false;
  std::string default_;  // as SQL text with its quotes; empty when there is none
  bool autoinc = false;

  bool SaysSame(const TColumnRow& other) const;  // all but the names
  int MasterId() const { return table_id; }
  void SetMasterId(int master) { table_id = master; }
  const std::string& Name() const { return name; }
  static constexpr bool kUniqueName = true;
  void CutTexts();
  void BeforePost();  // an integer without a size has no precision either
};

struct TKeyRow {
  int table_id = kNoMaster;
  int id = 0;
  std::string name;
  bool primary = false;
  bool unique = false;
  bool fulltext = false;

  int MasterId() const { return table_id; }
  void SetMasterId(int master) { table_id = master; }
  const std::string& Name() const { return name; }
  static constexpr bool kUniqueName = false;
  void CutTexts();
};

struct TKeyFieldRow {
  int key_id = kNoMaster;
  int id = 0;
  std::string column;
  std::optional<std::int64_t> size;  // prefix length, where an engine supplies one
  std::string order;                 // sort order word, where an engine supplies one

  int MasterId() const { return key_id; }
  void SetMasterId(int master) { key_id = master; }
  const std::string& Name() const { return column; }
  static constexpr bool kUniqueName = true;
  void CutTexts();
};

struct TConstraintRow {
  int table_id = kNoMaster;
  int id = 0;
  std::string name;
  std::string foreign_db;
  std::string foreign_table;
  std::string delete_rule;  // lower case, two words joined by one blank
  std::string update_rule;
  std::int32_t constraint_type = kPrimaryConstraint;
  std::string def_value;
  std::string check_condition;

  int MasterId() const { return table_id; }
  void SetMasterId(int master) { table_id = master; }
  const std::string& Name() const { return name; }
  const std::string& Link() const;  // the referenced table of a foreign key
  static constexpr bool kUniqueName = false;
  void CutTexts();
};

struct TConstraintFieldRow {
  int constraint_id = kNoMaster;
  int id = 0;
  std::string local_column;
  std::string foreign_column;

  int MasterId() const { return constraint_id; }
  void SetMasterId(int master) { constraint_id = master; }
  const std::string& Name() const { return local_column; }
  static constexpr bool kUniqueName = true;
  void CutTexts();
};

// A column as a record, its description still empty.
TMetaColumn ColumnRecord(const TTableRow& table, const TColumnRow& row);

class TMeta {
 public:
  // `owner` fetches and renders for the store; it may be absent, else it outlives the store.
  explicit TMeta(TDBConn* owner = nullptr);
  TMeta(const TMeta&) = delete;
  TMeta& operator=(const TMeta&) = delete;

  TDBConn* owner() const { return owner_; }

  TMetaTable<TTableRow> tTables;
  TMetaTable<TColumnRow> tColumns;
  TMetaTable<TKeyRow> tKeys;
  TMetaTable<TKeyFieldRow> tKeyFields;
  TMetaTable<TConstraintRow> tConstraints;
  TMetaTable<TConstraintFieldRow> tConstraintFields;

  // --- Lookups: leave the cursors on what they find; all but FindTable and GotoTable fetch the table
  bool FindTable(std::string_view table);
  bool FindColumn(std::string_view table, std::string_view column);
  bool FindKey(std::string_view table, std::string_view key);
  bool FindConstraint(std::string_view table, std::string_view constraint);
  // Whether the cursor is on this table, fetched: a lookup in it then moves no cursor but that of what it looks for.
  bool StandsOn(std::string_view table) const {
    return tTables.HasCurrent() && tTables.Current().fetched && tTables.Current().name == table;
  }
  void GotoTable(std::string_view table);  // raises "Can't find table %s in metadata", the others alike
  void GotoColumn(std::string_view table, std::string_view column);
  void GotoKey(std::string_view table, std::string_view key);
  void GotoConstraint(std::string_view table, std::string_view constraint);

  // --- Lists
  void TableNames(TStringList& list) const;
  void ColumnNames(std::string_view table, TStringList& list, bool in_quotes);
  // Every other table that holds a foreign key to exactly `table`, in table order; of the rows in memory only.
  void ReferencingTables(std::string_view table, TStringList& list);
  void PrimaryKeyFields(std::string_view table, std::string& text);  // joined by ";", empty without a primary key
  // A key or constraint with its columns as a record. Neither fetches nor moves a cursor.
  TMetaKey KeyRecord(const TTableRow& table, const TKeyRow& row) const;
  TMetaConstraint ConstraintRecord(const TTableRow& table, const TConstraintRow& row) const;
  std::string KeyFieldList(std::string_view separator) const;  // the columns of the current key

  // --- Maintenance
  void Clear();
  // Fetches the current table unless it is fetched. Without an owner raises "TMeta: Table %s not fetched!".
  void CheckFetched();
  // Forgets the table's details; its row stays, and with it `cached_ddl`.
  void InvalidateTable(std::string_view table);
  // Puts the column after `after`, or first when that is empty. Never fetches, so it may run in the middle of a fetch.
  void MoveColumn(std::string_view table, std::string_view column, std::string_view after);
  void CopyFrom(const TMeta& source);  // all rows, ids included; `owner` stays

  // --- Texts
  // The table's creation text, kept once asked for. Raises "CachedTableDDL unsupported" for engines without one.
  void CachedTableDDL(const std::string& table, std::string& ddl) { ddl = CachedTableDDL(table); }
  // The same, valid until the table is fetched, dropped or asked for anew.
  const std::string& CachedTableDDL(const std::string& table);
  // A creation text composed from the rows, in the dialect of `engine`, or of the owner.
  void BuildCreateTable(const std::string& table, TDBConn* engine, std::string& ddl);
  // One object in the dialect of `engine`, or of the owner, with all its attributes.
  void ColumnDefinition(const std::string& table, const std::string& column, std::string& text,
                        TDBConn* engine = nullptr);
  void KeyDefinition(const std::string& table, const std::string& key, std::string& text, TDBConn* engine = nullptr);
  void ConstraintDefinition(const std::string& table, const std::string& constraint, std::string& text,
                            TDBConn* engine = nullptr);

  // --- Removal, with the MySQL statements that do the same on a server; names stand unquoted, lines end in CR LF
  void DropTableSQL(const std::string& table, std::string& sql);
  void DropColumnSQL(const std::string& table, const std::string& column, std::string& sql);
  void DropKeySQL(const std::string& table, const std::string& key, std::string& sql);
  void DropConstraintSQL(const std::string& table, const std::string& constraint, std::string& sql);

 private:
  TDBConn& Owner() const;  // raises without one
  void EraseDetails();     // of the current table
  // These remove the current row with its fields and give its statement; the names go in as they are given.
  std::string EraseConstraint(const std::string& table);
  std::string EraseKey(const std::string& table, const std::string& key);
  // Removes each constraint of the current table that `falls` picks, and gives their statements, each with its line
  // end.
  template <class Falls>
  std::string EraseConstraints(const std::string& table, Falls falls);
  template <class Falls>
  std::string EraseReferences(const std::string& table, Falls falls);
  std::string EraseLocalConstraint(const std::string& table, const std::string& column);
  std::string EraseKeyFields(const std::string& table, const std::string& column);
  std::string KeyFieldListOf(int key_id, std::string_view separator) const;
  std::string LocalColumnListOf(int constraint_id, std::string_view separator) const;
  std::string ForeignColumnListOf(int constraint_id, std::string_view separator) const;

  TDBConn* owner_;
};

}  // namespace velmora
