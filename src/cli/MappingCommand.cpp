// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/MappingCommand.h"

#include <CLI/CLI.hpp>
#include <array>
#include <ostream>

#include "app/Sources.h"
#include "cli/SourceRun.h"
#include "foreign/FactReaders.h"
#include "foreign/ForeignTexts.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kIsMySql[] = "%s is MySQL already, or its structure cannot be read: there is nothing to map";

// By level.
constexpr std::array kLevelWords = {"info", "warning", "refused"};

struct TMappedText {
  std::string table;
  std::string text;
  std::optional<std::string> error{};
};

TMappedText TextOfTable(TForeignTexts& texts, const std::string& table) {
  try {
    return {table, texts.Make(table, nullptr).shown};
  } catch (const EAbort&) {
    throw;
  } catch (const EVelmora& error) {
    return {table, {}, error.what()};
  }
}

void TellColumn(const TMadeColumn& column, TConsole& console) {
  if (column.level == EMadeLevel::Info || column.text.empty()) return;
  const std::string place = column.column.empty() ? column.table : column.table + "." + column.column;
  console.Warn(place + ": " + column.text);
}

void PrintTexts(const std::vector<TMappedText>& tables, const TForeignTexts& texts, TConsole& console) {
  bool first = true;
  for (const TMappedText& table : tables) {
    if (table.error) continue;
    console.out << (first ? "" : "\n") << ShownLines(table.text) << ";\n";
    first = false;
  }
  for (const TMadeColumn& column : texts.Columns()) TellColumn(column, console);
}

TJson DocumentOf(const std::vector<TMappedText>& tables, const TForeignTexts& texts) {
  TJson list = TJson::array();
  for (const TMappedText& table : tables)
    list.push_back(
        {{"name", table.table}, {"text", table.error ? TJson() : TJson(table.text)}, {"error", JsonOf(table.error)}});
  return {{"tables", std::move(list)},
          {"mapping", MappingJson(texts.Columns())},
          {"unmade", UnmadeJson(texts.Unmade())},
          {"error", TJson()}};
}

TJson FailedDocument(const std::string& error) {
  return {{"tables", TJson::array()}, {"mapping", TJson::array()}, {"unmade", TJson::array()}, {"error", error}};
}

}  // namespace

TJson MappingJson(const std::vector<TMadeColumn>& columns) {
  TJson list = TJson::array();
  for (const TMadeColumn& column : columns)
    list.push_back({{"table", column.table},
                    {"column", column.column},
                    {"source", column.source},
                    {"type", column.type},
                    {"level", kLevelWords[static_cast<std::size_t>(column.level)]},
                    {"text", column.text}});
  return list;
}

TJson UnmadeJson(const std::vector<TUnmadeElement>& elements) {
  TJson list = TJson::array();
  for (const TUnmadeElement& element : elements)
    list.push_back(
        {{"table", element.table}, {"element", element.element}, {"kind", element.kind}, {"reason", element.reason}});
  return list;
}

void TMappingCommand::Declare(CLI::App& app) {
  app.add_option("SOURCE", source_, "The database")->required();
  app.add_option("--target-version", version_,
                 "The server that the texts are for, as in 5.6, 8.4, \"mariadb 10.11\" (the newest MariaDB)")
      ->type_name("VERSION");
  DeclareMapping(app, wishes_);
  DeclareFormat(app, format_);
  options_.DeclareOne(app);
}

int TMappingCommand::Execute(TConsole& console) {
  try {
    const TTargetServer server = version_.empty() ? TTargetServer() : ReadTargetServer(version_);
    const std::unique_ptr<TDBConn> conn = MakeSource(source_, options_.ForOne(console));
    if (!HasFactReader(*conn)) RaiseError(Format(kIsMySql, source_));
    ConnectNamed(*conn);
    TForeignTexts texts(*conn, wishes_);
    texts.Read(server, {}, [](const std::string&, std::size_t) {});
    std::vector<TMappedText> tables;
    bool whole = true;
    for (const std::string& table : texts.Tables()) {
      tables.push_back(TextOfTable(texts, table));
      whole = whole && !tables.back().error;
    }
    if (format_ == EFormat::Json)
      console.out << TextOf(DocumentOf(tables, texts));
    else
      PrintTexts(tables, texts, console);
    return whole ? kExitSuccess : kExitFailure;
  } catch (const EAbort&) {
    throw;
  } catch (const EVelmora& error) {
    if (format_ == EFormat::Json) console.out << TextOf(FailedDocument(console.Without(error.what())));
    throw;
  }
}

}  // namespace velmora
