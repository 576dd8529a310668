// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/FakeOracle.h"

#include <dlfcn.h>

#include <algorithm>
#include <stdexcept>

#include "util/Format.h"
#include "util/Lists.h"
#include "util/Text.h"

namespace velmora::testing {

namespace {

constexpr char kTables[] = "select * from user_tables order by 1";

// What a client asks of the dictionary about a table; columns with the library's numbers of their types, those that
// nobody reads at the end.
constexpr struct {
  const char* word;
  const char* sql;
  const char* columns;
} kOfATable[] = {
    {"column",
     "select column_name,data_type,char_length,data_length,data_precision,data_scale,nullable from user_tab_columns "
     "where table_name='%s'",
     "COLUMN_NAME, DATA_TYPE, CHAR_LENGTH:2, DATA_LENGTH:2, DATA_PRECISION:2, DATA_SCALE:2, NULLABLE"},
    {"index",
     "select ix.index_name,ix.uniqueness,col.column_name,col.descend from user_ind_columns col,user_indexes ix where "
     "ix.table_name(+)=col.table_name and ix.index_name(+)=col.index_name and ix.table_name='%s' order by "
     "ix.index_name,col.column_position ",
     "INDEX_NAME, UNIQUENESS, COLUMN_NAME, DESCEND"},
    {"constraint",
     "select con.table_name,con.constraint_name,con.constraint_type,con.r_constraint_name,con.search_condition,"
     "col.column_name,col.position, (select r_col.table_name from user_cons_columns r_col where "
     "r_col.position=col.position and r_col.constraint_name(+)=con.r_constraint_name) foreign_table, (select "
     "r_col.column_name from user_cons_columns r_col where r_col.position=col.position and "
     "r_col.constraint_name(+)=con.r_constraint_name) foreign_col from user_cons_columns col,user_constraints con "
     "where col.table_name(+)=con.table_name and col.constraint_name(+)=con.constraint_name and con.table_name='%s' "
     "order by con.constraint_name,col.position",
     "CONSTRAINT_NAME, CONSTRAINT_TYPE, SEARCH_CONDITION:8, COLUMN_NAME, FOREIGN_TABLE, FOREIGN_COL, TABLE_NAME, "
     "R_CONSTRAINT_NAME, POSITION:2"},
};

std::vector<TFakeOracle::TColumn> ColumnsOf(const std::string& text) {
  std::vector<TFakeOracle::TColumn> columns;
  TStringList names;
  SplitText(", ", text, names);
  for (std::string& name : names) {
    const std::string column = StrChop(":", name, true);
    columns.push_back({column, static_cast<std::uint16_t>(name.empty() ? 1 : std::stoi(name))});
  }
  return columns;
}

void AddRow(TFakeOracle::TAnswer& answer, const std::string& text) {
  TStringList values;
  SplitText(", ", text, values);
  TFakeOracle::TRow row(values.begin(), values.end());
  for (std::optional<std::string>& value : row)
    if (value == "-") value.reset();
  row.resize(answer.columns.size());
  answer.rows.push_back(std::move(row));
}

}  // namespace

TFakeOracle& FakeOracleOf(const std::string& home) {
  void* library = dlopen((home + "/lib/libclntsh.so").c_str(), RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) throw std::runtime_error(dlerror());
  auto server = reinterpret_cast<TFakeOracle* (*)()>(dlsym(library, "FakeOracle"))();
  *server = {};
  return *server;
}

void AddOracleAnswers(TFakeOracle& server, const std::string& text) {
  server.answers[kTables].columns = ColumnsOf("TABLE_NAME, TABLESPACE_NAME");
  std::string table;
  TFakeOracle::TAnswer* query = nullptr;
  for (std::string rest : LinesOf(text)) {
    const std::string word = StrChop(" ", rest, true);
    if (word == "table") {
      table = rest;
      AddRow(server.answers[kTables], table);
      for (const auto& each : kOfATable) server.answers[Format(each.sql, table)].columns = ColumnsOf(each.columns);
      query = &server.answers[Format(kOfATable[0].sql, table)];
    } else if (word == "query") {
      query = &server.answers[rest];
    } else if (word == "columns") {
      query->columns = ColumnsOf(rest);
    } else if (word == "row") {
      AddRow(*query, rest);
    } else if (word == "affected") {
      query->affected = static_cast<std::uint32_t>(std::stoi(rest));
    } else if (word == "error") {
      const std::string code = StrChop(", ", rest);
      query->error = {std::stoi(code), rest + "\n"};
    } else if (word == "lost") {
      query->lost_after = query->rows.size();
    } else {
      for (const auto& each : kOfATable)
        if (each.word == word) AddRow(server.answers[Format(each.sql, table)], rest);
    }
  }
}

}  // namespace velmora::testing
