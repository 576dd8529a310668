// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A provider behind the OLE DB engines that is fed from tables: it gives the schema rowsets and answers that a test has
// laid out, raises the errors that it is told to, and writes down what it is asked.

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "formats/port/Provider.h"
#include "support/PlayedAnswers.h"
#include "util/Errors.h"

namespace velmora::testing {

// What stands behind every provider of one test; it outlives them.
struct TFakeOLEDB {
  TStringList catalogs;
  std::vector<TOLEDBTableRow> tables;
  std::map<std::string, std::vector<TOLEDBColumnRow>> columns;  // by table
  std::map<std::string, std::vector<TOLEDBIndexRow>> indexes;   // by table
  std::map<std::string, TOLEDBRowset> answers;                  // by statement; other queries have no fields, no rows
  std::map<std::string, std::string> errors;                    // by line of the log
  std::int64_t affected = 0;

  // "open SOURCE", "close", "create SOURCE ENGINE-TYPE", "catalogs", "tables", "columns T", "indexes T", "begin 4096",
  // "commit", and statements as they are.
  TStringList log;

  TStringList TakeLog() { return std::exchange(log, {}); }
  void Note(const std::string& line) {
    log.push_back(line);
    if (const auto error = errors.find(line); error != errors.end()) RaiseError(error->second);
  }
  // A table of columns of one type, in this order.
  void AddTable(const std::string& name, const TStringList& names, std::uint16_t type = kDbTypeI4) {
    tables.push_back({name, "TABLE"});
    for (const std::string& column : names)
      columns[name].push_back({.TABLE_NAME = name,
                               .COLUMN_NAME = column,
                               .ORDINAL_POSITION = static_cast<std::uint32_t>(columns[name].size() + 1),
                               .DATA_TYPE = type});
  }
  // Rows of texts, numbers and nulls under fields of these names.
  void Answer(const std::string& sql, const TStringList& fields, TRowsOfValues rows) {
    TOLEDBRowset& rowset = answers[sql];
    for (const std::string& name : fields) rowset.fields.push_back({name});
    rowset.rows = std::move(rows);
  }
  // Answers and errors as they stand in a file: statements, and rows of "columns T" and "indexes T", whose tables are
  // added; "identity" stands for the type of a field that counts itself, "int" at the end of one for whole numbers.
  void Answer(const TPlayedAnswers& played);
  TOLEDBProviderMaker Maker();
};

// A row of columns or indexes in the order of their fields; without a table's name of its own it is of `table`.
inline TOLEDBColumnRow PlayedColumn(const std::string& table, const TPlayedAnswer::TRow& row) {
  const auto number = [&](std::size_t i) { return std::stoll(row[i].value_or("0")); };
  return {.TABLE_NAME = row[9].value_or(table),
          .COLUMN_NAME = row[0].value(),
          .ORDINAL_POSITION = static_cast<std::uint32_t>(number(1)),
          .COLUMN_DEFAULT = row[8],
          .COLUMN_FLAGS = static_cast<std::uint32_t>(number(3)),
          .IS_NULLABLE = row[7] != "NO",
          .DATA_TYPE = static_cast<std::uint16_t>(number(2)),
          .CHARACTER_MAXIMUM_LENGTH = static_cast<std::uint32_t>(number(4)),
          .NUMERIC_PRECISION = static_cast<std::uint16_t>(number(5)),
          .NUMERIC_SCALE = static_cast<std::int16_t>(number(6))};
}

inline TOLEDBIndexRow PlayedIndex(const std::string& table, const TPlayedAnswer::TRow& row) {
  return {.TABLE_NAME = row[5].value_or(table),
          .INDEX_NAME = row[0].value(),
          .PRIMARY_KEY = row[4] == "YES",
          .UNIQUE = row[3] == "YES",
          .ORDINAL_POSITION = static_cast<std::uint32_t>(std::stoul(row[1].value())),
          .COLUMN_NAME = row[2].value()};
}

inline TOLEDBRowset PlayedRowset(const TPlayedAnswer& answer) {
  const auto value_of = [](const std::string& type, const std::optional<std::string>& text) -> TVariant {
    if (!text) return {};
    return type.ends_with("int") ? TVariant(std::int64_t{std::stoll(*text)}) : TVariant(*text);
  };
  TOLEDBRowset rowset;
  for (const TPlayedAnswer::TColumn& column : answer.columns) {
    rowset.fields.push_back({column.name});
    rowset.is_autoincrement.push_back(column.type == "identity");
  }
  for (const TPlayedAnswer::TRow& row : answer.rows)
    for (TMemDataset::TRow& values = rowset.rows.emplace_back(); values.size() < row.size();)
      values.push_back(value_of(answer.columns[values.size()].type, row[values.size()]));
  return rowset;
}

inline void TFakeOLEDB::Answer(const TPlayedAnswers& played) {
  constexpr std::string_view kColumns = "columns ", kIndexes = "indexes ";
  for (const auto& [query, answer] : played) {
    if (answer.error != 0) errors[query] = answer.message;
    const std::string table = query.substr(kColumns.size());
    if (query.starts_with(kColumns)) {
      tables.push_back({table, "TABLE"});
      for (const auto& row : answer.rows) columns[table].push_back(PlayedColumn(table, row));
    } else if (query.starts_with(kIndexes)) {
      for (const auto& row : answer.rows) indexes[table].push_back(PlayedIndex(table, row));
    } else {
      answers[query] = PlayedRowset(answer);
    }
  }
}

class TFakeOLEDBProvider final : public TOLEDBProvider {
 public:
  TFakeOLEDBProvider(TFakeOLEDB& backend, TInitString properties)
      : backend_(backend), properties_(std::move(properties)) {}

  void Initialize() override {
    backend_.Note("open " + properties_.Value("Data Source"));
    open_ = true;
  }
  void Uninitialize() override {
    if (std::exchange(open_, false)) backend_.Note("close");
  }
  bool Initialized() const override { return open_; }
  void CreateDataSource() override {
    backend_.Note("create " + properties_.Value("Data Source") + " " + properties_.Value("Jet OLEDB:Engine Type"));
  }
  TStringList Catalogs() override { return backend_.Note("catalogs"), backend_.catalogs; }
  std::vector<TOLEDBTableRow> Tables() override { return backend_.Note("tables"), backend_.tables; }
  std::vector<TOLEDBColumnRow> Columns(const std::string& table) override {
    return backend_.Note("columns " + table), backend_.columns[table];
  }
  std::vector<TOLEDBIndexRow> Indexes(const std::string& table) override {
    return backend_.Note("indexes " + table), backend_.indexes[table];
  }
  TOLEDBRowset Open(const std::string& sql) override { return backend_.Note(sql), backend_.answers[sql]; }
  std::int64_t Execute(const std::string& sql) override { return backend_.Note(sql), backend_.affected; }
  void StartTransaction(std::uint32_t isolation) override { backend_.Note("begin " + std::to_string(isolation)); }
  void Commit() override { backend_.Note("commit"); }

 private:
  TFakeOLEDB& backend_;
  TInitString properties_;
  bool open_ = false;
};

inline TOLEDBProviderMaker TFakeOLEDB::Maker() {
  return [this](const TInitString& properties) { return std::make_unique<TFakeOLEDBProvider>(*this, properties); };
}

}  // namespace velmora::testing
