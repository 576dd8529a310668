// SPDX-License-Identifier: GPL-3.0-or-later

// What servers and drivers answer when their catalogs are asked, and the tables that are made of it. An input is a
// text: "?NAME" begins the answer to a query, the next line has its columns, further ones are rows; "|" parts values
// and "-" is null.

#include <charconv>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <variant>

#include "Harnesses.h"
#include "Input.h"
#include "core/Meta.h"
#include "engines/oledb/DBConnODBC.h"
#include "engines/oledb/DBConnSQLServer.h"
#include "engines/oledb/SQLServerCatalog.h"
#include "engines/server/DBConnOracle.h"
#include "foreign/ForeignTexts.h"
#include "foreign/OracleFacts.h"
#include "foreign/SqlServerFacts.h"
#include "util/Text.h"

namespace velmora::fuzzing {
namespace {

using TAnswers = std::map<std::string, TOLEDBRowset, std::less<>>;

TVariant ValueOf(const std::string& text) {
  if (text == "-") return {};
  std::int64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size() ? TVariant(number) : TVariant(text);
}

TAnswers ReadAnswers(std::string_view input) {
  TAnswers answers;
  TOLEDBRowset* answer = nullptr;
  for (const std::string& line : LinesOf(std::string(input))) {
    TStringList cells;
    SplitPlain('|', line, cells);
    if (line.starts_with('?')) {
      answer = &answers[line.substr(1)];
    } else if (answer != nullptr && answer->fields.empty()) {
      for (const std::string& name : cells) answer->fields.push_back({name});
      answer->is_autoincrement.resize(cells.size());
    } else if (answer != nullptr) {
      auto& row = answer->rows.emplace_back();
      for (const std::string& cell : cells) row.push_back(ValueOf(cell));
      row.resize(answer->fields.size());
    }
  }
  return answers;
}

// By the names of the queries that are known, or of the table that they are about.
const TOLEDBRowset& AnswerTo(const TAnswers& answers, std::span<const TCatalogQuery> queries, const std::string& sql) {
  static const TOLEDBRowset kNone;
  for (const TCatalogQuery& query : queries)
    if (const auto found = answers.find(query.name); sql == query.sql && found != answers.end()) return found->second;
  const auto found = answers.find(sql == ColumnsQuery("t")       ? "columns of t"
                                  : sql == KeysQuery("t")        ? "keys of t"
                                  : sql == ConstraintsQuery("t") ? "constraints of t"
                                                                 : sql);
  return found == answers.end() ? kNone : found->second;
}

// --- ODBC and SQL Server

class TAnswersProvider final : public TOLEDBProvider {
 public:
  explicit TAnswersProvider(const TAnswers& answers) : answers_(answers) {}

  void Initialize() override { open_ = true; }
  void Uninitialize() override { open_ = false; }
  bool Initialized() const override { return open_; }
  TStringList Catalogs() override { return {}; }
  std::vector<TOLEDBTableRow> Tables() override { return {{"t", "TABLE"}, {"u", "TABLE"}}; }
  std::vector<TOLEDBColumnRow> Columns(const std::string& table) override {
    std::vector<TOLEDBColumnRow> columns;
    for (const auto& row : Rows("rowset columns"))
      columns.push_back({.TABLE_NAME = table,
                         .COLUMN_NAME = Text(row, 0),
                         .ORDINAL_POSITION = static_cast<std::uint32_t>(Number(row, 1)),
                         .COLUMN_DEFAULT = Text(row, 2),
                         .COLUMN_FLAGS = static_cast<std::uint32_t>(Number(row, 3)),
                         .IS_NULLABLE = Number(row, 4) != 0,
                         .DATA_TYPE = static_cast<std::uint16_t>(Number(row, 5)),
                         .CHARACTER_MAXIMUM_LENGTH = static_cast<std::uint32_t>(Number(row, 6)),
                         .NUMERIC_PRECISION = static_cast<std::uint16_t>(Number(row, 7)),
                         .NUMERIC_SCALE = static_cast<std::int16_t>(Number(row, 8))});
    return columns;
  }
  std::vector<TOLEDBIndexRow> Indexes(const std::string& table) override {
    std::vector<TOLEDBIndexRow> indexes;
    for (const auto& row : Rows("rowset indexes"))
      indexes.push_back({.TABLE_NAME = table,
                         .INDEX_NAME = Text(row, 0),
                         .PRIMARY_KEY = Number(row, 1) != 0,
                         .UNIQUE = Number(row, 2) != 0,
                         .ORDINAL_POSITION = static_cast<std::uint32_t>(Number(row, 3)),
                         .COLUMN_NAME = Text(row, 4)});
    return indexes;
  }
  TOLEDBRowset CatalogRows(ECatalogRows kind, const std::string& /*table*/) override {
    constexpr const char* kKinds[] = {"columns", "primary key", "foreign keys", "statistics"};
    return AnswerTo(answers_, {}, kKinds[static_cast<std::size_t>(kind)]);
  }
  TOLEDBRowset Open(const std::string& sql) override { return AnswerTo(answers_, SqlServerQueries(), sql); }
  std::int64_t Execute(const std::string& /*sql*/) override { return 0; }
  void StartTransaction(std::uint32_t /*isolation*/) override {}
  void Commit() override {}

 private:
  const TRowsOfValues& Rows(const char* name) const { return AnswerTo(answers_, {}, name).rows; }
  static std::string Text(const TMemDataset::TRow& row, std::size_t at) {
    return at < row.size() ? VarToText(row[at]) : std::string();
  }
  static std::int64_t Number(const TMemDataset::TRow& row, std::size_t at) {
    return at < row.size() && std::holds_alternative<std::int64_t>(row[at]) ? VarToInt(row[at]) : 0;
  }

  const TAnswers& answers_;
  bool open_ = false;
};

// --- Oracle

class TAnswersSession final : public TOraSession {
 public:
  explicit TAnswersSession(const TAnswers& answers) : answers_(answers) {}

  bool GetConnected() const override { return open_; }
  std::unique_ptr<TOraSession> NewSession() const override { return std::make_unique<TAnswersSession>(answers_); }

 private:
  void DoConnect() override { open_ = true; }
  void DoDisconnect() override { open_ = false; }
  TOraResult DoRun(const std::string& sql) override {
    const TOLEDBRowset& answer = AnswerTo(answers_, OracleQueries(), sql);
    return {answer.fields, answer.rows, static_cast<std::int64_t>(answer.rows.size())};
  }
  void DoCommit() override {}
  void DoRollback() override {}

  const TAnswers& answers_;
  bool open_ = false;
};

// --- What is made of them

void MakeTexts(TDBConn& conn) {
  conn.Connect();
  for (const char* server : {"mariadb 10.11", "mysql 8.0"})
    Try([&] {
      TForeignTexts texts(conn, {});
      texts.Read(ReadTargetServer(server), {}, [](const std::string&, std::size_t) {});
      for (const std::string& table : texts.Tables())
        Try([&] { ReadTableText(CreationTextOf(texts.Make(table, nullptr).table)); });
      texts.Log();
    });
  for (const char* table : {"t", "u"})
    Try([&] {
      conn.meta().GotoTable(table);
      conn.FetchIfNeeded();
    });
}

}  // namespace

void FuzzAnswers(std::string_view input) {
  const std::size_t way = Choose(input, 3);
  const TAnswers answers = ReadAnswers(input);
  const TOLEDBProviderMaker maker = [&](const TInitString&) { return std::make_unique<TAnswersProvider>(answers); };
  std::unique_ptr<TDBConn> conn;
  if (way == 0)
    conn = std::make_unique<TDBConnSQLServer>("host", "shop", "joe", "secret", false, maker);
  else if (way == 1)
    conn = std::make_unique<TDBConnODBC>("shop", maker);
  else
    conn = std::make_unique<TDBConnOracle>(std::make_unique<TAnswersSession>(answers), "host", "joe", "secret",
                                           "Normal", false);
  MakeTexts(*conn);
}

}  // namespace velmora::fuzzing
