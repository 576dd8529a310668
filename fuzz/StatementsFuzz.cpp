// SPDX-License-Identifier: GPL-3.0-or-later

// A script: cut into statements in every way that there is, its creation texts, the tables that it makes when its
// statements are applied, and what its statements risk.

#include <stdexcept>
#include <string>

#include "Harnesses.h"
#include "Input.h"
#include "app/ScriptSplitter.h"
#include "exact/compare/ServerLanguage.h"
#include "exact/plan/FileSchema.h"
#include "exact/plan/ScriptSafety.h"
#include "exact/plan/TableStatement.h"
#include "mysqltext/CreationScript.h"
#include "mysqltext/SessionSettings.h"
#include "mysqltext/StatementHead.h"
#include "mysqltext/StatementReader.h"

namespace velmora::fuzzing {
namespace {

void ReadEach(std::string_view script, bool with_versions) {
  TStatementReader reader(script, with_versions);
  TSessionSettings settings;
  for (TStatement statement; reader.Next(statement);) {
    ReadStatementHead(statement.text, with_versions);
    settings.Take(statement.text, with_versions, "line 1");
    Try([&] { ReadTableStatement(statement.text); });
    Try([&] { TextForScratch(statement.text, "shop"); });
  }
}

// What is made can be read again, and says the same.
void WriteAndRead(const TTableText& table) {
  const std::string text = CreationTextOf(table);
  if (CreationTextOf(ReadTableText(text)) != text) throw std::logic_error("another table: " + text);
}

void ApplyAll(std::string_view text, const TScriptChoice& choice, const TServerTraits& server) {
  const TCreationScript script{std::string(text), choice};
  for (const TScriptWarning& warning : script.Warnings()) warning.Message();
  TFileSchema schema(script.Structure(), server);
  for (const std::string& name : schema.TableNames()) Try([&] { WriteAndRead(schema.Table(name)); });
}

}  // namespace

void FuzzStatements(std::string_view input) {
  constexpr const char* kServers[] = {"10.11.6-MariaDB", "8.0.36", "5.7.44", ""};
  const std::size_t way = Choose(input, 8);
  SplitScript(input);
  SplitExactScript(input);
  for (const TScriptRange& range : ScanStatements(input))
    if (range.start + range.length > input.size()) throw std::logic_error("a statement outside the script");
  for (const bool with_versions : {false, true}) Try([&] { ReadEach(input, with_versions); });
  const TScriptChoice choice{.database = way < 4 ? "" : "shop", .allow_incomplete = way % 2 != 0};
  Try([&] { ApplyAll(input, choice, ReadServerTraits(kServers[way % 4])); });
  ScriptRisks(input, {}, [](const std::string&) { return std::optional<std::string>("CREATE TABLE `t` (`a` int)"); });
}

}  // namespace velmora::fuzzing
