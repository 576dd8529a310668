// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/plan/RenamePlan.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>
#include <vector>

#include "exact/plan/PlanClauses.h"
#include "exact/plan/StatementLocks.h"
#include "mysqltext/ColumnParts.h"
#include "mysqltext/KeyText.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Lists.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kNoTable[] = "There is no table %s to rename";
constexpr char kNoColumn[] = "Table %s has no column %s to rename";
constexpr char kTableThere[] = "Table %s is there already";
constexpr char kColumnThere[] = "Table %s has a column %s already";

constexpr int kMySqlRenames = 80000;  // from here on servers have "rename column"
constexpr int kMariaDbRenames = 100502;

bool HasRenameColumn(const TServerTraits& server) {
  return server.version == 0 || server.version >= (server.mysql ? kMySqlRenames : kMariaDbRenames);
}

// The columns by which partitions are chosen stand in brackets before the list of partitions.
std::string PartitioningWith(const std::string& text, const std::string& from, const std::string& to) {
  const std::vector<TToken> tokens = Tokens(text);
  std::string result;
  std::size_t done = 0;
  int depth = 0;
  for (std::size_t at = 0; at < tokens.size(); ++at) {
    if (tokens[at].Is("(") && IsKeyword(TokenAt(tokens, at + 1), "partition")) break;
    depth += tokens[at].Is("(") ? 1 : tokens[at].Is(")") ? -1 : 0;
    const bool column = depth > 0 && IsName(tokens[at]) && !TokenAt(tokens, at + 1).Is("(");
    if (!column || !SameText(NameOf(tokens[at]), from)) continue;
    result += text.substr(done, tokens[at].start - done) + QuotedName(to);
    done = tokens[at].End();
  }
  return result + text.substr(done);
}

void ApplyToTable(const TRename& rename, const TServerTraits& server, TSchema& schema) {
  const TTableText* there = schema.Find(rename.from);
  if (there == nullptr) RaiseError(Format(kNoTable, rename.from));
  if (schema.Find(rename.to) != nullptr) RaiseError(Format(kTableThere, rename.to));
  TTableText table = *there;
  schema.Remove(rename.from);
  table.name = rename.to;
  MoveMadeNames(table, rename.from, server);
  schema.Add(std::move(table));
  for (const TTableText& other : schema.Tables())
    for (TElement& element : schema.Find(other.name)->elements)
      if (element.kind == EElement::ForeignKey) MoveReferences(element, rename.from, rename.to);
}

void ApplyToColumn(const TRename& rename, TSchema& schema) {
  TTableText* table = schema.Find(rename.table);
  if (table == nullptr) RaiseError(Format(kNoTable, rename.table));
  const auto column = std::ranges::find_if(table->elements, [&rename](const TElement& element) {
    return element.kind == EElement::Column && SameText(element.name, rename.from);
  });
  if (column == table->elements.end()) RaiseError(Format(kNoColumn, rename.table, rename.from));
  if (!SameText(rename.from, rename.to) && table->Find(EElement::Column, rename.to) != nullptr)
    RaiseError(Format(kColumnThere, rename.table, rename.to));
  RenameColumn(*column, rename.to);
  for (TElement& element : table->elements) RenameColumnIn(element, rename.from, rename.to);
  table->partitioning = PartitioningWith(table->partitioning, rename.from, rename.to);
  for (const TTableText& other : schema.Tables())
    for (TElement& element : schema.Find(other.name)->elements) {
      if (element.kind != EElement::ForeignKey) continue;
      const TForeignKeyParts& key = element.text.ForeignKey();
      if (key.database.empty() && key.table == rename.table) RenameReferenced(element, rename.from, rename.to);
    }
}

// Whether a server that does not follow by itself has to be told of this element again.
bool NeedsTelling(const TElement& element) {
  if (element.kind == EElement::Check) return true;
  if (element.kind == EElement::Column) {
    const TColumnParts& parts = element.text.Column();
    const bool computed = parts.default_value && element.text.Tokens()[parts.default_value->first].Is("(");
    return computed || parts.generated;
  }
  return IsKey(element.kind) &&
         std::ranges::any_of(element.text.KeyParts(), [](const TKeyPart& part) { return part.column.empty(); });
}

bool NamesOne(const TElement& element, const std::set<std::string>& columns) {
  return std::ranges::any_of(element.text.Tokens(), [&columns](const TToken& token) {
    return IsName(token) && columns.contains(LowerText(NameOf(token)));
  });
}

// The column, and those that are computed of it, of these, and so on; in lower case.
std::set<std::string> ComputedOf(const std::string& column, const TTableText& table) {
  std::set<std::string> columns = {LowerText(column)};
  for (bool more = true; more;) {
    more = false;
    for (const TElement& element : table.elements)
      if (element.kind == EElement::Column && element.text.Column().generated && NamesOne(element, columns))
        more = columns.insert(LowerText(element.name)).second || more;
  }
  return columns;
}

// A key over expressions goes and comes back where these name what is computed of the column.
void AddDependents(const TRename& rename, const TTableText& table, TStringList& clauses) {
  const TPlanServer server{.mysql = true};
  const std::set<std::string> computed = ComputedOf(rename.from, table);
  TStringList after;
  for (const TElement& element : table.elements) {
    TElement follows = element;
    const bool told = NeedsTelling(element);
    if (told) RenameColumnIn(follows, rename.from, rename.to);
    const bool column = element.kind == EElement::Column;
    const bool comes_back = told && IsKey(element.kind) && NamesOne(element, computed);
    if (follows.text == element.text && !comes_back) continue;
    if (!column) clauses.insert(clauses.begin(), DropText(element.kind, element.name, server));
    after.push_back((column ? "modify column " : "add ") + follows.text.Str());
  }
  clauses.insert(clauses.end(), after.begin(), after.end());
}

bool IsVirtual(const TElement* column) {
  return column != nullptr && column->kind == EElement::Column && column->text.Column().generated &&
         !column->text.Column().stored;
}

bool IsVirtual(const TRename& rename, const TSchema& schema) {
  const TTableText* table = schema.Find(rename.table);
  return table != nullptr && IsVirtual(table->Find(EElement::Column, rename.from));
}

bool NamesIt(const std::vector<std::string>& columns, const TRename& rename) {
  return std::ranges::any_of(columns, [&rename](const std::string& name) { return SameText(name, rename.from); });
}

// The statement without words about it.
void AddPart(TAlter& alter, const TServerTraits& server, const TSchema& schema, std::vector<TPlanStatement>& plan) {
  alter.MoveTo(plan);
  TPlanStatement& added = plan.back();
  const TTableText* table = schema.Find(added.table);
  if (server.version != 0 && table != nullptr)
    added.lock = ClassOfStatement(added.text, *table, server, added.checks_on);
}

std::vector<TElement> HashKeysOf(const TTableText& table) {
  TTableWork work;
  work.target = &table;
  return HashKeys(work);
}

// MariaDB forgets with every "alter table" that does not add it that a unique key was one by hash.
void AddHashKeys(const TRename& rename, const TTableText& table, TStringList& clauses) {
  for (TElement key : HashKeysOf(table)) {
    clauses.push_back(DropText(key.kind, key.name, {}));
    RenameColumnIn(key, rename.from, rename.to);
    clauses.push_back("add " + key.text.Str());
  }
}

// So keys that come back bring those along that were there all the time.
void AddHashKeys(const TTableText& table, const TTableText& without, TAlter& comes) {
  for (const TElement& key : HashKeysOf(table)) {
    if (without.Find(key.kind, key.name) == nullptr) continue;
    comes.Clause(DropText(key.kind, key.name, {}));
    comes.Clause("add " + key.text.Str());
  }
}

TSchema Without(const std::vector<TTableKey>& keys, TSchema schema) {
  for (const TTableKey& key : keys)
    std::erase_if(schema.Find(key.table)->elements, [&key](const TElement& element) {
      return element.kind == key.key->kind && element.name == key.key->name;
    });
  return schema;
}

bool HasFirstLetters(const TElement& key) {
  return std::ranges::any_of(key.text.KeyParts(), [](const TKeyPart& part) { return part.length > 0; });
}

// Whether MariaDB 10.11 breaks the table: it no longer finds its keys, and forgets foreign keys with them. Keys with
// the first letters of a column do that, where a virtual column is in the key, or in a table whose primary key is of
// first letters, too.
bool LosesItself(const TElement& key, const TTableText& table, const TRename& rename) {
  if (!IsKey(key.kind) || key.kind == EElement::PrimaryKey || !HasFirstLetters(key)) return false;
  const std::vector<TKeyPart>& parts = key.text.KeyParts();
  if (!std::ranges::any_of(parts, [&](const TKeyPart& part) { return SameText(part.column, rename.from); }))
    return false;
  const auto computed = [&](const TKeyPart& part) { return IsVirtual(table.Find(EElement::Column, part.column)); };
  if (std::ranges::any_of(parts, computed)) return true;
  const bool any = std::ranges::any_of(table.elements, [](const TElement& element) { return IsVirtual(&element); });
  return any && std::ranges::any_of(table.elements, [](const TElement& element) {
           return element.kind == EElement::PrimaryKey && HasFirstLetters(element);
         });
}

// For the statement that renames a column.
bool Copies(const TRename& rename, const TServerTraits& server, const TSchema& schema) {
  const TTableText* table = schema.Find(rename.table);
  if (table == nullptr) return false;
  TStringList by_hash;
  if (!server.mysql) AddHashKeys(rename, *table, by_hash);
  if (!server.mysql || server.version == 0) return server.mysql || !by_hash.empty();
  const ELockClass lock = ClassOfStatement(RenameStatement(rename, server, schema), *table, server, false);
  return lock == ELockClass::Copy || lock == ELockClass::Unknown;
}

TPlanStatement Renaming(const TRename& rename, const TServerTraits& server, const TSchema& schema) {
  TPlanStatement statement{
      RenameStatement(rename, server, schema), {}, {}, rename.OfTable() ? rename.to : rename.table};
  statement.lock = RenameLock(rename, server, schema);
  return statement;
}

}  // namespace

void ApplyRename(const TRename& rename, const TServerTraits& server, TSchema& schema) {
  if (rename.OfTable()) return ApplyToTable(rename, server, schema);
  ApplyToColumn(rename, schema);
}

std::string RenameStatement(const TRename& rename, const TServerTraits& server, const TSchema& schema) {
  if (rename.OfTable()) return Format("rename table %s to %s", QuotedName(rename.from), QuotedName(rename.to));
  const TTableText* table = schema.Find(rename.table);
  const TElement* column = table == nullptr ? nullptr : table->Find(EElement::Column, rename.from);
  if (column == nullptr) RaiseError(Format(kNoColumn, rename.table, rename.from));
  TStringList clauses;
  if (HasRenameColumn(server)) {
    clauses.push_back(Format("rename column %s to %s", QuotedName(rename.from), QuotedName(rename.to)));
  } else {
    TElement renamed = *column;
    RenameColumn(renamed, rename.to);
    clauses.push_back("change column " + QuotedName(rename.from) + " " + renamed.text.Str());
  }
  server.mysql ? AddDependents(rename, *table, clauses) : AddHashKeys(rename, *table, clauses);
  std::string end;
  if (const std::string followed = PartitioningWith(table->partitioning, rename.from, rename.to);
      server.mysql && followed != table->partitioning)
    end = "\n" + followed;
  return "alter table " + QuotedName(rename.table) + " " + JoinList(clauses, ", ") + end;
}

std::vector<TTableKey> KeysInTheWay(const TRename& rename, const TServerTraits& server, const TSchema& schema) {
  std::vector<TTableKey> keys;
  const bool copies = !rename.OfTable() && Copies(rename, server, schema);
  const bool stays = !server.mysql && IsVirtual(rename, schema);
  if (const TTableText* own = server.mysql || rename.OfTable() ? nullptr : schema.Find(rename.table); own != nullptr)
    for (const TElement& element : own->elements)
      if (LosesItself(element, *own, rename)) keys.push_back({rename.table, &element});
  if (!copies && !stays) return keys;
  for (const TTableText& table : schema.Tables())
    for (const TElement& element : table.elements) {
      if (element.kind != EElement::ForeignKey || element.name.empty()) continue;
      const TForeignKeyParts& key = element.text.ForeignKey();
      const bool refers = key.database.empty() && key.table == rename.table && NamesIt(key.references, rename);
      const bool own = copies && table.name == rename.table && NamesIt(key.columns, rename);
      if (refers || own) keys.push_back({table.name, &element});
    }
  return keys;
}

std::vector<TPlanStatement> RenameStatements(const TRename& rename, const TServerTraits& server, const TSchema& schema,
                                             bool unchecked) {
  std::map<std::string, std::pair<TAlter, TAlter>> of_keys;  // by table: they go and come
  const std::vector<TTableKey> keys = KeysInTheWay(rename, server, schema);
  if (keys.empty()) return {Renaming(rename, server, schema)};
  const TSchema between = Without(keys, schema);
  TSchema after = schema;
  ApplyRename(rename, server, after);
  for (const TTableKey& key : keys) {
    auto& [goes, comes] = of_keys.try_emplace(key.table, TAlter(key.table), TAlter(key.table)).first->second;
    goes.Clause(DropText(key.key->kind, key.key->name, {}));
    comes.Clause("add " + after.Find(key.table)->Find(key.key->kind, key.key->name)->text.Str());
    if (!unchecked && key.key->kind == EElement::ForeignKey) comes.CheckRows();
  }
  std::vector<TPlanStatement> plan;
  for (auto& [table, alters] : of_keys) AddPart(alters.first, server, schema, plan);
  plan.push_back(Renaming(rename, server, between));
  for (auto& [table, alters] : of_keys) {
    if (!server.mysql) AddHashKeys(*after.Find(table), *between.Find(table), alters.second);
    AddPart(alters.second, server, after, plan);
  }
  return plan;
}

ELockClass RenameLock(const TRename& rename, const TServerTraits& server, const TSchema& schema) {
  if (server.version == 0) return ELockClass::None;
  const TTableText* table = schema.Find(rename.OfTable() ? rename.from : rename.table);
  if (table == nullptr) return ELockClass::Unknown;
  if (rename.OfTable()) return ClassOf(ELockChange::RenameTable, LockTraitsOf(*table), server);
  TStringList by_hash;
  if (!server.mysql) AddHashKeys(rename, *table, by_hash);
  if (!by_hash.empty()) return ELockClass::Unknown;
  return ClassOfStatement(RenameStatement(rename, server, schema), *table, server, false);
}

}  // namespace velmora
