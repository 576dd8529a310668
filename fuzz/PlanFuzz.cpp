// SPDX-License-Identifier: GPL-3.0-or-later

// Two scripts: whatever tables they make, the plan that leads from those of the one to those of the other leaves no
// difference when it is applied in memory; an error may say that a statement cannot be followed.

#include <algorithm>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "Harnesses.h"
#include "Input.h"
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
  const TColumnParts& parts = column.text.Column();
  return !parts.type.empty() && IsOfSet(parts.collation, parts.charset);
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
  return !columns.empty() && std::ranges::all_of(table.elements, [&](const TElement& element) {
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

}  // namespace

void FuzzPlan(std::string_view input) {
  const TServerTraits server = ReadServerTraits(Choose(input, 2) == 0 ? "10.11.6-MariaDB" : "8.0.36");
  const auto parts = Parts(input, 2);
  const TSchema one = SchemaOf(parts[0], server), other = SchemaOf(parts[1], server);
  Try([&] { MakeEqual(one, other, server); });
  Try([&] { MakeEqual(other, one, server); });
}

}  // namespace velmora::fuzzing
