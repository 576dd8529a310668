#pragma once

// Fills the dictionary of a made-up Oracle schema, a row at a time; the queries are those of a client that asks for one
// table, letter for letter.

#include <algorithm>
#include <string>
#include <vector>

#include "support/FakeOracle.h"

namespace velmora::testing {

class TOracleDictionary {
 public:
  using TRow = TFakeOracle::TRow;

  explicit TOracleDictionary(TFakeOracle& server) : server_(server) {}

  // Each of them has an empty structure unless rows were added.
  TOracleDictionary& Tables(const std::vector<std::string>& names) {
    // The view has many more columns; only the first counts.
    TFakeOracle::TAnswer& answer =
        server_.Add("select * from user_tables order by 1", {"TABLE_NAME", "TABLESPACE_NAME"});
    for (const std::string& name : names) {
      answer.rows.push_back({name, std::nullopt});
      ColumnsOf(name);
      IndexesOf(name);
      ConstraintsOf(name);
    }
    return *this;
  }
  // Name, type, characters, bytes, precision, scale, "N" for not null; what is missing at the end is null.
  TOracleDictionary& Column(const std::string& table, TRow row) {
    row.resize(7);
    ColumnsOf(table).rows.push_back(std::move(row));
    return *this;
  }
  // Index, "UNIQUE" or "NONUNIQUE", column, "ASC" or "DESC".
  TOracleDictionary& Index(const std::string& table, TRow row) {
    IndexesOf(table).rows.push_back(std::move(row));
    return *this;
  }
  // Constraint, letter, search condition, column, foreign table, foreign column.
  TOracleDictionary& Constraint(const std::string& table, const TRow& row) {
    ConstraintsOf(table).rows.push_back(
        {table, row.at(0), row.at(1), std::nullopt, row.at(2), row.at(3), std::nullopt, row.at(4), row.at(5)});
    return *this;
  }
  // The server goes away while the columns of `table` are read.
  void Lost(const std::string& table, std::size_t after) { ColumnsOf(table).lost_after = after; }

 private:
  static constexpr std::uint16_t kNumber = 2, kLong = 8;

  TFakeOracle::TAnswer& AnswerTo(const std::string& sql, const std::vector<TFakeOracle::TColumn>& columns) {
    TFakeOracle::TAnswer& answer = server_.answers[sql];
    answer.columns = columns;
    return answer;
  }
  TFakeOracle::TAnswer& ColumnsOf(const std::string& table) {
    return AnswerTo(
        "select column_name,data_type,char_length,data_length,data_precision,data_scale,nullable from "
        "user_tab_columns where table_name='" +
            table + "'",
        {{"COLUMN_NAME"},
         {"DATA_TYPE"},
         {"CHAR_LENGTH", kNumber},
         {"DATA_LENGTH", kNumber},
         {"DATA_PRECISION", kNumber},
         {"DATA_SCALE", kNumber},
         {"NULLABLE"}});
  }
  TFakeOracle::TAnswer& IndexesOf(const std::string& table) {
    return AnswerTo(
        "select ix.index_name,ix.uniqueness,col.column_name,col.descend from user_ind_columns col,user_indexes ix "
        "where ix.table_name(+)=col.table_name and ix.index_name(+)=col.index_name and ix.table_name='" +
            table + "' order by ix.index_name,col.column_position ",
        {{"INDEX_NAME"}, {"UNIQUENESS"}, {"COLUMN_NAME"}, {"DESCEND"}});
  }
  TFakeOracle::TAnswer& ConstraintsOf(const std::string& table) {
    return AnswerTo(
        "select con.table_name,con.constraint_name,con.constraint_type,con.r_constraint_name,con.search_condition,"
        "col.column_name,col.position, (select r_col.table_name from user_cons_columns r_col where "
        "r_col.position=col.position and r_col.constraint_name(+)=con.r_constraint_name) foreign_table, (select "
        "r_col.column_name from user_cons_columns r_col where r_col.position=col.position and "
        "r_col.constraint_name(+)=con.r_constraint_name) foreign_col from user_cons_columns col,user_constraints con "
        "where col.table_name(+)=con.table_name and col.constraint_name(+)=con.constraint_name and con.table_name='" +
            table + "' order by con.constraint_name,col.position",
        {{"TABLE_NAME"},
         {"CONSTRAINT_NAME"},
         {"CONSTRAINT_TYPE"},
         {"R_CONSTRAINT_NAME"},
         {"SEARCH_CONDITION", kLong},
         {"COLUMN_NAME"},
         {"POSITION", kNumber},
         {"FOREIGN_TABLE"},
         {"FOREIGN_COL"}});
  }

  TFakeOracle& server_;
};

}  // namespace velmora::testing
