// SPDX-License-Identifier: GPL-3.0-or-later

// Two scripts, as they stand or made of a seed: whatever tables they make, the plan that leads from those of the one to
// those of the other leaves no difference when it is applied in memory; an error may say that a statement cannot be
// followed.

#include <algorithm>
#include <functional>
#include <iterator>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "Harnesses.h"
#include "Input.h"
#include "converge/SchemaGenerator.h"
#include "exact/compare/ServerLanguage.h"
#include "exact/plan/FileSchema.h"
#include "exact/plan/Plan.h"
#include "exact/plan/PlanApply.h"
#include "exact/plan/StatementLocks.h"
#include "exact/run/PairReader.h"
#include "mysqltext/Charsets.h"
#include "mysqltext/ColumnParts.h"
#include "mysqltext/CreationScript.h"
#include "mysqltext/TableOptions.h"
#include "util/Text.h"

namespace velmora::fuzzing {
namespace {

bool HasAll(const std::set<std::string>& columns, const std::vector<std::string>& named) {
  return std::ranges::all_of(named, [&](const std::string& name) { return columns.contains(LowerText(name)); });
}

std::vector<std::string> ColumnsOfKey(const TElement& key) {
  std::vector<std::string> columns;
  for (const TKeyPart& part : key.text.KeyParts())
    if (!part.column.empty()) columns.push_back(part.column);
  return columns;
}

// Servers refuse a collation of another character set.
bool IsOfSet(const std::string& collation, const std::string& charset) {
  return collation.empty() || charset.empty() || collation == charset || collation.starts_with(charset + "_");
}

bool IsSoundColumn(const TElement& column) {
  constexpr std::string_view kOtherTypes[] = {"bit", "date", "year", "json", "uuid", "inet4", "inet6", "vector"};
  const TColumnParts& parts = column.text.Column();
  const std::string_view type = parts.type;
  const bool known = IsLetterType(type) || IsByteType(type) || IsNumberType(type) || IsTimeType(type) ||
                     IsShapeType(type) || std::ranges::find(kOtherTypes, type) != std::end(kOtherTypes);
  return known && parts.rest.empty() && IsOfSet(parts.collation, parts.charset);
}

// Options of engines have any names; here only those of the server count.
bool IsSoundOption(const TTableOption& option) {
  constexpr std::string_view kNamed[] = {"ENGINE", "DEFAULT CHARSET", "COLLATE"};
  const bool known =
      OptionResetValue(option) ? !IsEngineOption(option) : std::ranges::find(kNamed, option.name) != std::end(kNamed);
  const EToken kind = Tokens(option.value).front().kind;
  return known && Tokens(option.value).size() == 2 && kind != EToken::Symbol && kind != EToken::Name;
}

// Whether a server could have the table: texts may say anything.
bool IsSound(const TTableText& table) {
  std::set<std::string> columns, keys, constraints;
  for (const TElement& element : table.elements) {
    if (element.name.empty() || element.kind == EElement::Other) return false;
    const bool column = element.kind == EElement::Column;
    auto& names = column ? columns : IsKey(element.kind) ? keys : constraints;
    if (!names.insert(LowerText(element.name)).second || (column && !IsSoundColumn(element))) return false;
  }
  const TTableOption *charset = table.FindOption("DEFAULT CHARSET"), *collation = table.FindOption("COLLATE");
  if (charset != nullptr && collation != nullptr &&
      !IsOfSet(CollationName(OptionValue(*collation)), CharsetName(OptionValue(*charset))))
    return false;
  return !columns.empty() && std::ranges::all_of(table.options, IsSoundOption) &&
         std::ranges::all_of(table.elements, [&](const TElement& element) {
           if (element.kind == EElement::ForeignKey) return HasAll(columns, element.text.ForeignKey().columns);
           return !IsKey(element.kind) || HasAll(columns, ColumnsOfKey(element));
         });
}

TSchema SchemaOf(std::string_view text, const TServerTraits& server) {
  const TCreationScript script{std::string(text)};
  TFileSchema made(script.Structure(), server);
  TSchema schema;
  for (const std::string& name : made.TableNames())
    if (IsSound(made.Table(name))) schema.Add(made.Table(name));
  return schema;
}

std::vector<TChange> ChangesOf(const TSchema& reference, const TSchema& target) {
  TEquivalenceUse use;
  std::vector<TChange> changes = SchemaChanges(reference, target, use);
  for (int id = 0; TChange & change : changes) change.id = ++id;
  return changes;
}

// Some options have no value that takes them back: the proof names what they leave.
bool IsBeyondStatements(const TChange& change) { return change.item == kOptionsItem && change.options.empty(); }

void MakeEqual(const TSchema& reference, TSchema target, const TServerTraits& server) {
  const TPlanServer plan_server = {.mysql = server.mysql, .mariadb = !server.mysql, .version = server.version};
  std::string plan;
  for (const TPlanStatement& statement : MakePlan(ChangesOf(reference, target), reference, target, plan_server)) {
    plan += statement.text + ";\n";
    if (const TTableText* table = target.Find(statement.table)) ClassOfStatement(statement.text, *table, server, true);
    ApplyStatement(statement.text, target, server);
  }
  for (const TChange& change : ChangesOf(reference, target))
    if (!IsBeyondStatements(change)) throw std::logic_error(change.LogText() + " is left by\n" + plan);
}

void MakeEqualBothWays(std::string_view one, std::string_view other, const TServerTraits& server) {
  const TSchema a = SchemaOf(one, server), b = SchemaOf(other, server);
  Try([&] { MakeEqual(a, b, server); });
  Try([&] { MakeEqual(b, a, server); });
}

std::string ScriptOf(const velmora::testing::TSchemaModel& schema) {
  std::string script;
  for (const auto& table : schema.tables) script += CreateStatement(table) + ";\n";
  return script;
}

}  // namespace

void FuzzPlan(std::string_view input) {
  const std::size_t way = Choose(input, 4);
  const TServerTraits server = ReadServerTraits(way % 2 == 0 ? "10.11.6-MariaDB" : "8.0.36");
  if (way < 2) {
    const auto parts = Parts(input, 2);
    MakeEqualBothWays(parts[0], parts[1], server);
    return;
  }
  velmora::testing::TSchemaGenerator generator(std::hash<std::string_view>()(input));
  velmora::testing::TSchemaModel schema = generator.Schema(1 + way % 2);
  const std::string before = ScriptOf(schema);
  generator.Mutate(schema);
  MakeEqualBothWays(before, ScriptOf(schema), server);
}

}  // namespace velmora::fuzzing
