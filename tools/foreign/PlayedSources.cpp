// SPDX-License-Identifier: GPL-3.0-or-later

// Sources on servers that are played: what their catalogs would say of the structure.

#include <cstdlib>
#include <optional>

#include "foreign/OracleFacts.h"
#include "foreign/Sources.h"
#include "foreign/SqlServerFacts.h"
#include "support/FakeOracle.h"
#include "support/OdbcSources.h"
#include "support/ScratchFolder.h"
#include "support/tds/FakeTdsServer.h"
#include "util/Files.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora::testing {

namespace {

using enum EMost;
using TCells = std::vector<std::optional<std::string>>;

std::string Bit(bool yes) { return yes ? "1" : "0"; }
std::optional<std::string> Filled(const std::string& text) { return text.empty() ? std::nullopt : std::optional(text); }
// The type's word without its sizes.
std::string BareWord(const TSketchColumn& column) {
  const std::string word = column.type->word;
  return word.substr(0, word.find('('));
}

// --- SQL Server. A type's code is the bytes of a letter, or the size of a value.

constexpr int kWide = 2;
const TSketchDialect kSqlServer = {
    .types = {{.word = "tinyint", .code = 1, .literal = "255", .defaults = {"((7))"}, .keyed = true},
              {.word = "smallint", .code = 2, .literal = "-32768", .keyed = true},
              {.word = "int",
               .code = 4,
               .literal = "-2147483648",
               .defaults = {"((-1))", "(CONVERT([int],'5'))"},
               .checks = {"([#]>(0))", "([#]>=(1) AND [#]<=(9))"},
               .keyed = true,
               .counts = true},
              {.word = "bigint", .code = 8, .literal = "-9223372036854775808", .keyed = true, .counts = true},
              {.word = "decimal(%d,%d)",
               .code = 9,
               .first = 1,
               .last = 38,
               .most_scale = 38,
               .most = Digits,
               .defaults = {"((0))", "((.5))"},
               .keyed = true},
              {.word = "money", .literal = "-922337203685477.5808", .defaults = {"($1.5)"}},
              {.word = "smallmoney", .literal = "-214748.3648"},
              {.word = "float", .literal = "1.7e308", .defaults = {"((1.0000000000000000e+003))"}},
              {.word = "real", .literal = "3.4e38"},
              {.word = "bit", .literal = "1", .defaults = {"((0))", "('true')"}, .keyed = true},
              {.word = "char(%d)",
               .code = 1,
               .first = 1,
               .last = 8000,
               .most = PlainLetters,
               .defaults = {"('A')"},
               .keyed = true},
              {.word = "varchar(%d)",
               .code = 1,
               .first = 2,
               .last = 8000,
               .most = PlainLetters,
               .defaults = {"('a''')", "('')"},
               .checks = {"([#]<>'x' OR [#] IS NULL)", "([#] like '%%a_')"},
               .keyed = true},
              {.word = "nchar(%d)", .code = kWide, .first = 1, .last = 4000, .most = Letters, .keyed = true},
              {.word = "nvarchar(%d)",
               .code = kWide,
               .first = 4,
               .last = 4000,
               .most = Letters,
               .defaults = {"(N'größ')", "(user_name())"},
               .keyed = true},
              {.word = "nvarchar(max)", .code = -1, .literal = "'ö'", .defaults = {"('x')"}},
              {.word = "ntext", .literal = "'ö'"},
              {.word = "xml", .literal = "'<a/>'"},
              {.word = "binary(%d)", .code = 1, .first = 1, .last = 8000, .most = Bytes, .keyed = true},
              {.word = "varbinary(%d)",
               .code = 1,
               .first = 1,
               .last = 8000,
               .most = Bytes,
               .defaults = {"(0x)", "(0xFF)"},
               .keyed = true},
              {.word = "varbinary(max)", .code = -1, .literal = "x'ff'"},
              {.word = "date", .literal = "'9999-12-31'", .defaults = {"(getdate())", "('2024-02-29')"}, .keyed = true},
              {.word = "time(%d)", .first = 1, .last = 7, .literal = "'23:59:59.99'", .keyed = true},
              {.word = "datetime",
               .literal = "'9999-12-31 23:59:59.997'",
               .defaults = {"(getdate())", "(getutcdate())"},
               .keyed = true},
              {.word = "datetime2(%d)",
               .first = 1,
               .last = 7,
               .literal = "'9999-12-31 23:59:59.9'",
               .defaults = {"(sysdatetime())"}},
              {.word = "smalldatetime", .literal = "'2079-06-06 23:59:00'"},
              {.word = "datetimeoffset(%d)", .first = 1, .last = 7, .literal = "'9999-12-31 23:59:59.9'"},
              {.word = "uniqueidentifier", .code = 16, .literal = "uuid()", .defaults = {"(newid())"}, .keyed = true},
              {.word = "timestamp", .code = 8, .literal = "'12345678'"},
              {.word = "sql_variant", .literal = "'x'"},
              {.word = "geometry", .literal = "null"}},
    .names = {128, 128, 128},
    .delete_rules = {"NO_ACTION", "CASCADE", "SET_NULL", "SET_DEFAULT"},
    .update_rules = {"NO_ACTION", "CASCADE", "SET_NULL"},
    .key_size = 450,
    .without_form = {"user_name()", "longer than keys", "takes no check of a column"}};

TPlayedAnswer Answer(const char* columns) {
  TPlayedAnswer answer;
  TStringList list;
  SplitText(", ", columns, list);
  for (std::string& column : list) {
    const std::string name = StrChop(" ", column);
    answer.columns.push_back({name, column});
  }
  return answer;
}

class TSqlServerSources final : public TSourceMaker {
 public:
  TSqlServerSources() {
    AddOdbcSource("nobody", "/nowhere");  // leads the driver manager to files of our own
    WriteFileText(getenv("ODBCSYSINI") + std::string("/odbcinst.ini"), "[FreeTDS]\nDriver=libtdsodbc.so\n");
    WriteFileText(folder_ / "freetds.conf", "[global]\n");
    setenv("FREETDSCONF", (folder_ / "freetds.conf").c_str(), 1);
  }
  const TSketchDialect& Dialect() const override { return kSqlServer; }

  std::string Make(TSketch& sketch, const std::string& /*folder*/, TRandom& random) override {
    server_.emplace();
    server_->password = "sesam";
    TPlayedAnswers& answers = server_->answers;
    answers["exec [shop]..sp_tables @table_qualifier='shop'"] = Answer(
        "TABLE_QUALIFIER nvarchar(128), TABLE_OWNER nvarchar(128), TABLE_NAME nvarchar(128), TABLE_TYPE "
        "nvarchar(32), REMARKS nvarchar(254)");
    answers["select 1"] = Answer("one int");
    answers["select 1"].rows = {{"1"}};
    for (const TCatalogQuery& query : SqlServerQueries()) answers[query.sql] = Rows(query.name, sketch, random);
    return Format("SQL Server:server=127.0.0.1,%d;database=shop;username=sa;password=sesam", server_->Port());
  }

 private:
  static TPlayedAnswer Rows(const std::string& query, const TSketch& sketch, TRandom& random) {
    TPlayedAnswer answer = Answer(Head(query));
    for (std::size_t i = 0; i < sketch.size(); ++i) {
      const TSketchTable& table = sketch[i];
      const std::string id = Format("%d", i + 1);
      if (query == "tables")
        answer.rows.push_back({id, random.Chance(70) ? "dbo" : "sales", table.name, Filled(table.comment)});
      if (query == "columns")
        for (const TSketchColumn& column : table.columns) answer.rows.push_back(Column(id, column));
      if (query == "keys")
        for (std::size_t key = 0; key < table.keys.size(); ++key) AddKey(id, key, table, answer.rows);
      if (query == "references")
        for (const TSketchReference& reference : table.references)
          AddReference(id, reference, table, sketch, answer.rows);
      if (query == "checks")
        for (const TSketchColumn& column : table.columns)
          if (column.check)
            answer.rows.push_back({id, "CK_" + CutChars(column.name, 100),
                                   StrReplace(*column.check, "#", StrReplace(column.name, "]", "]]")), "0"});
    }
    return answer;
  }

  static const char* Head(const std::string& query) {
    if (query == "tables") return "id int, schema_name nvarchar(128), name nvarchar(128), comment nvarchar(4000)";
    if (query == "columns")
      return "id int, name nvarchar(128), type nvarchar(128), declared nvarchar(128), bytes smallint, digits tinyint, "
             "scale tinyint, is_nullable bit, is_identity bit, default_text nvarchar(max), computed nvarchar(max), "
             "comment nvarchar(4000)";
    if (query == "keys")
      return "id int, index_id int, name nvarchar(128), type tinyint, type_text nvarchar(60), is_unique bit, "
             "is_primary bit, is_disabled bit, filter nvarchar(max), part nvarchar(128), is_descending bit, "
             "is_included bit, place tinyint";
    if (query == "references")
      return "id int, reference_id int, name nvarchar(128), parent_id int, delete_rule nvarchar(60), "
             "update_rule nvarchar(60), is_disabled bit, part nvarchar(128), parent_part nvarchar(128)";
    return "id int, name nvarchar(128), condition nvarchar(max), is_disabled bit";
  }

  static TCells Column(const std::string& id, const TSketchColumn& column) {
    const bool sized = column.type->most != Literal && column.type->most != Digits;
    const int bytes = sized ? column.size * column.type->code : column.type->code;
    const bool digits = column.type->most == Digits;
    const int scale = digits ? column.scale : sized ? 0 : column.size;
    return {id,
            column.name,
            BareWord(column),
            BareWord(column),
            Format("%d", bytes),
            digits ? Format("%d", column.size) : "0",
            Format("%d", scale),
            Bit(!column.not_null),
            Bit(column.counts),
            column.default_text,
            std::nullopt,
            Filled(column.comment)};
  }

  static void AddKey(const std::string& id, std::size_t at, const TSketchTable& table, std::vector<TCells>& rows) {
    const TSketchKey& key = table.keys[at];
    for (std::size_t i = 0; i < key.columns.size(); ++i)
      rows.push_back({id, Format("%d", at + 1), key.name, at == 0 ? "1" : "2", "NONCLUSTERED",
                      Bit(key.kind != ESketchKey::Plain), Bit(key.kind == ESketchKey::Primary), "0", std::nullopt,
                      table.columns[key.columns[i]].name, Bit(key.descending[i]), "0", Format("%d", i + 1)});
  }

  static void AddReference(const std::string& id, const TSketchReference& reference, const TSketchTable& table,
                           const TSketch& sketch, std::vector<TCells>& rows) {
    const std::string number = Format("%d", rows.size() + 1);
    for (std::size_t i = 0; i < reference.columns.size(); ++i)
      rows.push_back({id, number, reference.name, Format("%d", reference.table + 1),
                      kSqlServer.delete_rules[reference.delete_rule], kSqlServer.update_rules[reference.update_rule],
                      "0", table.columns[reference.columns[i]].name,
                      sketch[reference.table].columns[reference.references[i]].name});
  }

  TScratchFolder folder_;
  std::optional<TFakeTdsServer> server_;
};

// --- Oracle

const TSketchDialect kOracle = {
    .types =
        {{.word = "NUMBER", .literal = "-99999999999999999999999999999999999.999999999999999999999999999999"},
         {.word = "NUMBER(%d,%d)",
          .first = 1,
          .last = 38,
          .most_scale = 38,
          .most = Digits,
          .defaults = {"0", "-.5 "},
          .checks = {"# >= 0", "\"#\" between 1 and 9"},
          .keyed = true},
         {.word = "NUMBER(%d)",
          .first = 1,
          .last = 38,
          .most = Digits,
          .defaults = {"1\n"},
          .keyed = true,
          .counts = true},
         {.word = "FLOAT", .literal = "1.7e308"},
         {.word = "BINARY_FLOAT", .literal = "3.4e38"},
         {.word = "BINARY_DOUBLE", .literal = "1.7e308", .defaults = {"1e3"}},
         {.word = "CHAR(%d)",
          .code = 'B',
          .first = 1,
          .last = 2000,
          .most = PlainLetters,
          .defaults = {"'x'"},
          .keyed = true},
         {.word = "VARCHAR2(%d)",
          .code = 'C',
          .first = 3,
          .last = 4000,
          .most = Letters,
          .defaults = {"'a''b'", "USER", "NULL", "''"},
          .checks = {"\"#\" in ('a','b')"},
          .keyed = true},
         {.word = "NVARCHAR2(%d)", .code = 'C', .first = 1, .last = 2000, .most = Letters, .keyed = true},
         {.word = "CLOB", .literal = "'ö'", .defaults = {"'none'"}},
         {.word = "LONG", .literal = "'ö'"},
         {.word = "RAW(%d)", .first = 1, .last = 2000, .most = Bytes, .keyed = true},
         {.word = "BLOB", .literal = "x'ff'"},
         {.word = "DATE", .literal = "'9999-12-31 23:59:59'", .defaults = {"SYSDATE", "trunc(sysdate)"}, .keyed = true},
         {.word = "TIMESTAMP(%d)",
          .first = 1,
          .last = 9,
          .literal = "'9999-12-31 23:59:59.9'",
          .defaults = {"systimestamp"},
          .keyed = true},
         {.word = "TIMESTAMP(%d) WITH TIME ZONE", .first = 1, .last = 9, .literal = "'9999-12-31 23:59:59.9'"},
         {.word = "INTERVAL DAY(2) TO SECOND(6)", .literal = "'+99 23:59:59.999999'"},
         {.word = "ROWID", .literal = "'AAAAAAAAAAAAAAAAAA'"},
         {.word = "XMLTYPE", .literal = "'<a/>'"}},
    .names = {128, 128, 128},
    .refused = "\"\t",
    .case_counts = true,
    .delete_rules = {"NO ACTION", "CASCADE", "SET NULL"},
    .key_size = 400,
    .without_form = {"USER", "longer than keys", "takes no check of a column"}};

class TOracleSources final : public TSourceMaker {
 public:
  TOracleSources() { setenv("ORACLE_HOME", kHome, 1); }
  const TSketchDialect& Dialect() const override { return kOracle; }

  std::string Make(TSketch& sketch, const std::string& /*folder*/, TRandom& random) override {
    TFakeOracle& server = FakeOracleOf(kHome);
    AddOracleAnswers(server, "");
    server.piece = 1 + random.Below(100);
    for (const TCatalogQuery& query : OracleQueries()) server.answers[query.sql] = Rows(query.name, sketch);
    return "oracle:server=ORCL;username=scott;password=tiger";
  }

 private:
  static constexpr char kHome[] = VELMORA_FAKE_CLIENTS "/oracle";

  static std::vector<TFakeOracle::TColumn> Head(const std::string& query) {
    constexpr std::uint16_t kNumber = 2, kLong = 8;
    const auto named = [](const char* list) {
      std::vector<TFakeOracle::TColumn> columns;
      TStringList names;
      SplitText(" ", list, names);
      for (const std::string& name : names)
        columns.push_back({.name = StrReplace(StrReplace(name, "#", ""), "!", ""),
                           .type = static_cast<std::uint16_t>(name.ends_with('#')   ? kNumber
                                                              : name.ends_with('!') ? kLong
                                                                                    : 1),
                           .size = 400});
      return columns;
    };
    if (query == "tables") return named("TABLE_NAME REMARKS TEMPORARY");
    if (query == "columns")
      return named(
          "TABLE_NAME NAME DATA_TYPE TYPE_OWNER BYTES# LETTERS# UNIT DIGITS# DECIMALS# NULLABLE IS_VIRTUAL REMARKS "
          "DEFAULT_TEXT!");
    if (query == "constraints") return named("TABLE_NAME NAME KIND STATUS PART");
    if (query == "indexes") return named("TABLE_NAME NAME INDEX_TYPE UNIQUENESS PART DIRECTION EXPRESSION!");
    if (query == "references") return named("TABLE_NAME NAME PARENT DELETE_RULE STATUS PART PARENT_PART");
    if (query == "checks") return named("TABLE_NAME NAME GENERATED STATUS CONDITION!");
    return named("TABLE_NAME BODY!");
  }

  static TFakeOracle::TAnswer Rows(const std::string& query, const TSketch& sketch) {
    TFakeOracle::TAnswer answer;
    answer.columns = Head(query);
    for (const TSketchTable& table : sketch) {
      if (query == "tables") answer.rows.push_back({table.name, Filled(table.comment), "N"});
      for (const TSketchColumn& column : table.columns) {
        if (query == "columns") answer.rows.push_back(Column(table, column));
        if (query == "checks" && column.check)
          answer.rows.push_back({table.name, "CK" + CutChars(column.name, 50), "USER NAME", "ENABLED", Check(column)});
        if (query == "checks" && column.not_null)
          answer.rows.push_back(
              {table.name, "SYS_C1", "GENERATED NAME", "ENABLED", "\"" + column.name + "\" IS NOT NULL"});
      }
      for (const TSketchKey& key : table.keys) AddKey(query, key, table, answer.rows);
      for (const TSketchReference& reference : table.references)
        for (std::size_t i = 0; i < reference.columns.size() && query == "references"; ++i)
          answer.rows.push_back({table.name, reference.name, sketch[reference.table].name,
                                 kOracle.delete_rules[reference.delete_rule], "ENABLED",
                                 table.columns[reference.columns[i]].name,
                                 sketch[reference.table].columns[reference.references[i]].name});
    }
    return answer;
  }

  // A bare name is written where it needs no quotes.
  static std::string Check(const TSketchColumn& column) {
    const bool quoted = column.check->find("\"#\"") != std::string::npos;
    return StrReplace(*column.check, "#", quoted ? column.name : "\"" + column.name + "\"");
  }

  static TCells Column(const TSketchTable& table, const TSketchColumn& column) {
    const bool letters = column.type->code != 0, digits = column.type->most == Digits;
    std::string word = BareWord(column);
    std::optional<std::string> scale = digits ? std::optional(Format("%d", column.scale)) : std::nullopt;
    if (word == "TIMESTAMP") {
      word = column.Word();
      scale = Format("%d", column.size);
    }
    if (word == "INTERVAL DAY") word = column.type->word;
    return {table.name,
            column.name,
            word,
            std::nullopt,
            Format("%d", column.size * (letters ? 4 : 1)),
            letters ? Format("%d", column.size) : "0",
            letters ? std::optional(std::string(1, static_cast<char>(column.type->code))) : std::nullopt,
            digits ? std::optional(Format("%d", column.size)) : std::nullopt,
            scale,
            column.not_null ? "N" : "Y",
            "NO",
            Filled(column.comment),
            column.counts ? std::optional<std::string>("\"S\".\"ISEQ$$_1\".nextval") : column.default_text};
  }

  static void AddKey(const std::string& query, const TSketchKey& key, const TSketchTable& table,
                     std::vector<TCells>& rows) {
    const bool unique = key.kind != ESketchKey::Plain;
    for (std::size_t i = 0; i < key.columns.size(); ++i) {
      const std::string& part = table.columns[key.columns[i]].name;
      const bool down = key.descending[i];
      if (query == "constraints" && unique)
        rows.push_back({table.name, key.name, key.kind == ESketchKey::Primary ? "P" : "U", "ENABLED", part});
      if (query == "indexes")
        rows.push_back({table.name, key.name, down ? "FUNCTION-BASED NORMAL" : "NORMAL",
                        unique ? "UNIQUE" : "NONUNIQUE", down ? "SYS_NC1$" : part, down ? "DESC" : "ASC",
                        down ? std::optional("\"" + part + "\"") : std::nullopt});
    }
  }
};

}  // namespace

std::unique_ptr<TSourceMaker> MakeSqlServerSources() { return std::make_unique<TSqlServerSources>(); }
std::unique_ptr<TSourceMaker> MakeOracleSources() { return std::make_unique<TOracleSources>(); }

}  // namespace velmora::testing
