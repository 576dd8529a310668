// SPDX-License-Identifier: GPL-3.0-or-later

// Sources whose structure is written in SQL: Firebird, and what ODBC drivers reach.

#include <algorithm>

#include "engines/oledb/OLEDBClient.h"
#include "engines/oledb/Providers.h"
#include "foreign/Sources.h"
#include "support/LiveDatabase.h"
#include "support/OdbcSources.h"
#include "support/PrivateFirebird.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora::testing {

namespace {

using enum EMost;

// How a product writes its statements.
struct TSqlForm {
  char quote;
  const char* counts;         // after the type of a column that counts
  bool index_columns_direct;  // parts of indexes may run down one by one; otherwise an index does as a whole
};

class TSqlWriter {
 public:
  TSqlWriter(const TSketch& sketch, const TSketchDialect& dialect, const TSqlForm& form)
      : sketch_(sketch), dialect_(dialect), form_(form) {}

  // Comments are written by who knows how.
  TStringList Statements() const {
    TStringList statements;
    for (const TSketchTable& table : sketch_) {
      TStringList lines;
      for (const TSketchColumn& column : table.columns) lines.push_back(Column(column));
      for (const TSketchKey& key : table.keys)
        if (key.kind != ESketchKey::Plain) lines.push_back(Constraint(key, table));
      for (const TSketchReference& reference : table.references) lines.push_back(Reference(reference, table));
      statements.push_back("create table " + Quoted(table.name) + " (" + JoinList(lines, ", ") + ")");
      for (const TSketchKey& key : table.keys)
        if (key.kind == ESketchKey::Plain) statements.push_back(Index(key, table));
    }
    return statements;
  }

  std::string Quoted(const std::string& name) const {
    const std::string quote(1, form_.quote);
    return quote + StrReplace(name, quote, quote + quote) + quote;
  }

 private:
  std::string Column(const TSketchColumn& column) const {
    std::string text = Quoted(column.name) + " " + column.Word();
    if (column.counts) text += form_.counts;
    if (column.default_text) text += " default " + *column.default_text;
    if (column.not_null) text += " not null";
    if (column.check) text += " check (" + StrReplace(*column.check, "#", Quoted(column.name)) + ")";
    return text;
  }

  std::string Names(const std::vector<std::size_t>& columns, const TSketchTable& table) const {
    TStringList names;
    for (const std::size_t column : columns) names.push_back(Quoted(table.columns[column].name));
    return JoinList(names, ", ");
  }

  std::string Constraint(const TSketchKey& key, const TSketchTable& table) const {
    return "constraint " + Quoted(key.name) + (key.kind == ESketchKey::Primary ? " primary key (" : " unique (") +
           Names(key.columns, table) + ")";
  }

  std::string Reference(const TSketchReference& reference, const TSketchTable& table) const {
    const TSketchTable& parent = sketch_[reference.table];
    return "constraint " + Quoted(reference.name) + " foreign key (" + Names(reference.columns, table) +
           ") references " + Quoted(parent.name) + " (" + Names(reference.references, parent) + ")" +
           dialect_.delete_rules[reference.delete_rule] + dialect_.update_rules[reference.update_rule];
  }

  std::string Index(const TSketchKey& key, const TSketchTable& table) const {
    const bool down = !form_.index_columns_direct && !key.descending.empty() && key.descending[0];
    TStringList parts;
    for (std::size_t i = 0; i < key.columns.size(); ++i)
      parts.push_back(Quoted(table.columns[key.columns[i]].name) +
                      (form_.index_columns_direct && key.descending[i] ? " desc" : ""));
    return Format("create %sindex %s on %s (%s)", down ? "descending " : "", Quoted(key.name), Quoted(table.name),
                  JoinList(parts, ", "));
  }

  const TSketch& sketch_;
  const TSketchDialect& dialect_;
  const TSqlForm& form_;
};

// --- Firebird

const TSketchDialect kFirebird = {
    .types = {{.word = "smallint", .literal = "-32768", .defaults = {"-7"}, .checks = {"# > 0"}, .keyed = true},
              {.word = "integer", .literal = "-2147483648", .defaults = {"1"}, .keyed = true, .counts = true},
              {.word = "bigint", .literal = "-9223372036854775808", .keyed = true, .counts = true},
              {.word = "numeric(%d,%d)", .first = 1, .last = 18, .most_scale = 18, .most = Digits, .keyed = true},
              {.word = "decimal(%d,%d)", .first = 1, .last = 18, .most_scale = 18, .most = Digits, .defaults = {"0"}},
              {.word = "float", .literal = "3.4e38", .defaults = {"1.5"}},
              {.word = "double precision", .literal = "1.7e308", .defaults = {"1e3", "-.5"}},
              {.word = "char(%d)", .first = 1, .last = 255, .most = Letters, .defaults = {"'x'", "''"}, .keyed = true},
              {.word = "varchar(%d)",
               .first = 3,
               .last = 8000,
               .most = Letters,
               .defaults = {"'a''b'", "user"},
               .checks = {"# <> 'x'", "# in ('a', 'b')", "# like 'a%%_'"},
               .keyed = true},
              {.word = "varchar(%d) character set octets", .first = 1, .last = 300, .most = Bytes, .keyed = true},
              {.word = "char(%d) character set octets", .first = 1, .last = 300, .most = Bytes},
              {.word = "char(%d) character set win1252", .first = 1, .last = 300, .most = Letters, .keyed = true},
              {.word = "date",
               .literal = "'9999-12-31'",
               .defaults = {"current_date", "'2024-02-29'", "'TODAY'"},
               .checks = {"# >= '2000-01-01'"},
               .keyed = true},
              {.word = "time", .literal = "'23:59:59.9999'", .defaults = {"current_time", "'10:20'"}, .keyed = true},
              {.word = "timestamp",
               .literal = "'9999-12-31 23:59:59.9999'",
               .defaults = {"current_timestamp", "'NOW'"},
               .keyed = true},
              {.word = "blob", .literal = "x'00ff'"},
              {.word = "blob sub_type text", .literal = "'ö'", .defaults = {"'none'"}},
              {.word = "boolean", .literal = "1", .defaults = {"true", "false"}}},
    .names = {31, 31, 31},
    .refused = "😀",
    .end_blanks = false,  // its catalog pads names with them
    .case_counts = true,
    .shared_names = true,
    .delete_rules = {"", " on delete cascade", " on delete set null", " on delete set default", " on delete no action"},
    .update_rules = {"", " on update cascade", " on update set null", " on update set default"},
    .key_size = 50,
    .without_form = {"(default): user", "Like", "cannot count", "takes no check of a column"}};

class TFirebirdSources final : public TSourceMaker {
 public:
  const TSketchDialect& Dialect() const override { return kFirebird; }

  std::string Make(TSketch& sketch, const std::string& /*folder*/, TRandom& /*random*/) override {
    constexpr TSqlForm kForm = {'"', " generated by default as identity", false};
    FitRows(sketch);
    const TSqlWriter writer(sketch, kFirebird, kForm);
    TStringList statements = writer.Statements();
    for (const TSketchTable& table : sketch) {
      if (!table.comment.empty())
        statements.push_back("comment on table " + Is(writer.Quoted(table.name), table.comment));
      for (const TSketchColumn& column : table.columns)
        if (!column.comment.empty())
          statements.push_back("comment on column " +
                               Is(writer.Quoted(table.name) + "." + writer.Quoted(column.name), column.comment));
    }
    const std::string path = folder_.NewDatabase(Format("%d.fdb", ++made_), statements);
    return "Interbase/Firebird:server=;database=" + path + ";username=SYSDBA;password=";
  }

 private:
  // Its rows have 64 KB, a letter up to four bytes. Columns of keys are short.
  static void FitRows(TSketch& sketch) {
    constexpr int kLetters = 15000, kLeast = 60;
    for (TSketchTable& table : sketch)
      for (int room = kLetters; TSketchColumn & column : table.columns) {
        if (column.type->most != Letters) continue;
        column.size = std::min(column.size, std::max(room, kLeast));
        room -= column.size;
      }
  }

  static std::string Is(const std::string& what, const std::string& comment) {
    return what + " is '" + StrReplace(comment, "'", "''") + "'";
  }

  TFirebirdFolder folder_;
  int made_ = 0;
};

// --- SQLite

const TSketchDialect kSqlite = {
    .types = {{.word = "integer", .literal = "-2147483648", .defaults = {"1", "-7"}, .keyed = true},
              {.word = "smallint", .literal = "-32768", .keyed = true},
              {.word = "tinyint", .literal = "-128"},
              {.word = "bigint", .literal = "-9223372036854775808", .defaults = {"9000000000"}, .keyed = true},
              {.word = "decimal(%d,%d)", .first = 1, .last = 30, .most_scale = 30, .most = Digits},
              {.word = "double", .literal = "1.7e308", .defaults = {"1.5"}},
              {.word = "float", .literal = "1.7e308"},
              {.word = "varchar(%d)",
               .first = 1,
               .last = 255,
               .most = Letters,
               .defaults = {"'x'", "'it''s'", "''", "'a b'"},
               .keyed = true},
              {.word = "char(%d)", .first = 1, .last = 255, .most = Letters, .keyed = true},
              {.word = "text", .literal = "'ö'", .defaults = {"'none'"}},
              {.word = "blob", .literal = "x'00ff'"},
              {.word = "date", .literal = "'9999-12-31'", .defaults = {"current_date", "'2024-02-29'"}, .keyed = true},
              {.word = "time", .literal = "'23:59:59'", .defaults = {"current_time"}},
              {.word = "timestamp", .literal = "'9999-12-31 23:59:59.999'", .defaults = {"current_timestamp"}},
              {.word = "datetime", .literal = "'9999-12-31 23:59:59.999'"},
              {.word = "boolean", .literal = "1", .defaults = {"0", "1"}}},
    .names = {90, 90, 90},
    .refused = "%[",  // the driver takes names for patterns, and brackets for quotes
    .descending = false,
    .comments = false,
    .checks = false,
    .delete_rules = {"", " on delete cascade", " on delete set null", " on delete restrict", " on delete set default"},
    .update_rules = {"", " on update cascade", " on update set null"}};

class TSqliteSources final : public TSourceMaker {
 public:
  const TSketchDialect& Dialect() const override { return kSqlite; }

  std::string Make(TSketch& sketch, const std::string& folder, TRandom& /*random*/) override {
    constexpr TSqlForm kForm = {'"', "", true};
    const std::string name = Format("sqlite%d", ++made_);
    for (TSketchTable& table : sketch)  // tables have their names among those of indexes
      for (TSketchKey& key : table.keys) key.name = "ix " + key.name;
    AddOdbcSource(name, OdbcDriverFile("libsqlite3odbc.so"), "Database=" + folder + "/shop.db");
    TOLEDBDataSource source(MakeOLEDBProvider);
    source.SetInitializationString("Provider=MSDASQL;Data Source=" + name);
    source.SetConnected(true);
    for (const std::string& statement : TSqlWriter(sketch, kSqlite, kForm).Statements()) source.Execute(statement);
    return "odbc:dsn=" + name;
  }

 private:
  int made_ = 0;
};

// --- A server, over its own driver

const TSketchDialect kServer = {
    .types =
        {{.word = "tinyint", .literal = "-128", .keyed = true},
         {.word = "tinyint unsigned", .literal = "255"},
         {.word = "smallint unsigned", .literal = "65535", .keyed = true},
         {.word = "mediumint", .literal = "-8388608", .keyed = true},
         {.word = "int", .literal = "-2147483648", .defaults = {"-7"}, .keyed = true, .counts = true},
         {.word = "int unsigned", .literal = "4294967295", .keyed = true, .counts = true},
         {.word = "bigint unsigned", .literal = "18446744073709551615", .keyed = true, .counts = true},
         {.word = "bigint", .literal = "-9223372036854775808", .keyed = true},
         {.word = "decimal(%d,%d)", .first = 1, .last = 65, .most_scale = 30, .most = Digits, .keyed = true},
         {.word = "float", .literal = "3.4e38", .defaults = {"1.5"}},
         {.word = "double", .literal = "1.7e308"},
         {.word = "char(%d)", .first = 1, .last = 255, .most = Letters, .defaults = {"'x'", "''"}, .keyed = true},
         {.word = "varchar(%d)", .first = 2, .last = 2000, .most = Letters, .defaults = {"'it'", "'a'"}, .keyed = true},
         {.word = "binary(%d)", .first = 1, .last = 255, .most = Bytes, .keyed = true},
         {.word = "varbinary(%d)", .first = 1, .last = 2000, .most = Bytes},
         {.word = "tinytext", .literal = "repeat('x', 255)"},
         {.word = "text", .literal = "repeat('x', 65535)"},
         {.word = "longtext", .literal = "'ö'"},
         {.word = "tinyblob", .literal = "repeat('x', 255)"},
         {.word = "longblob", .literal = "x'ff'"},
         {.word = "date", .literal = "'9999-12-31'", .defaults = {"'2024-02-29'", "(curdate())"}, .keyed = true},
         {.word = "datetime(%d)", .first = 0, .last = 6, .literal = "'9999-12-31 23:59:59'", .keyed = true},
         {.word = "time(%d)", .first = 0, .last = 6, .literal = "'-838:59:59'", .keyed = true},
         {.word = "year", .literal = "2155"},
         {.word = "bit(1)", .literal = "1"},
         {.word = "bit(20)", .literal = "null"},
         {.word = "enum('a','b''c')", .literal = "'b''c'", .defaults = {"'a'"}},
         {.word = "set('x','y')", .literal = "'x,y'"},
         {.word = "json", .literal = "'{}'"},
         {.word = "uuid", .literal = "null"},
         {.word = "inet6", .literal = "'::1'"}},
    .names = {64, 60, 60},
    .refused = "😀",
    .end_blanks = false,
    .shared_names = true,
    .primary_parents = true,  // the driver tells of no others
    .refused_names = {"PRIMARY", "DB_ROW_ID", "FTS_DOC_ID", "GRÖßE", "ДАТА", "#mysql50#x"},
    .comments = false,
    .checks = false,
    .delete_rules = {"", " on delete cascade", " on delete set null", " on delete restrict"},
    .update_rules = {"", " on update cascade", " on update set null"}};

class TOdbcServerSources final : public TSourceMaker {
 public:
  const TSketchDialect& Dialect() const override { return kServer; }

  std::string Make(TSketch& sketch, const std::string& /*folder*/, TRandom& /*random*/) override {
    constexpr TSqlForm kForm = {'`', " auto_increment", true};
    const std::string name = Format("source%d", ++made_);
    database_ = std::make_unique<TLiveDatabase>(name, server_);
    for (const std::string& statement : TSqlWriter(sketch, kServer, kForm).Statements()) database_->Run(statement);
    AddOdbcSource(name, OdbcDriverFile("libmaodbc.so"),
                  Format("Server=127.0.0.1\nUser=root\nPort=%d\nDatabase=%s", server_.Port(), name));
    return "odbc:dsn=" + name;
  }

 private:
  TPrivateServer server_{{}, ""};  // the system's own: the driver is of its kind
  std::unique_ptr<TLiveDatabase> database_;
  int made_ = 0;
};

}  // namespace

std::unique_ptr<TSourceMaker> MakeFirebirdSources() { return std::make_unique<TFirebirdSources>(); }
std::unique_ptr<TSourceMaker> MakeSqliteSources() { return std::make_unique<TSqliteSources>(); }
std::unique_ptr<TSourceMaker> MakeOdbcServerSources() { return std::make_unique<TOdbcServerSources>(); }

}  // namespace velmora::testing
