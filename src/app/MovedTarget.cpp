// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/MovedTarget.h"

#include <algorithm>
#include <set>
#include <vector>

#include "core/CreationTexts.h"
#include "exact/run/StructureDigest.h"
#include "util/Errors.h"

namespace velmora {

namespace {

constexpr int kNoSuchTable = 1146;

// Empty for a table that is not there.
std::string TextNow(TCreationTexts& texts, TDBConn& target, const std::string& table) {
  std::string text;
  try {
    texts.ShowCreateTable(table, text);
  } catch (const EMySqlException& error) {
    if (!target.GetConnected() || error.Number() != kNoSuchTable) throw;
  }
  return text;
}

void Tell(const std::string& what, const std::string& before, const std::string& now, TStringList& moved) {
  if (before == now) return;
  if (before.empty())
    moved.push_back(what + " has come");
  else
    moved.push_back(what + (now.empty() ? " is gone" : " is not as it was"));
}

void LookAtTables(const TExactSync& sync, const TStringList& tables, TDBConn& target, TStringList& moved) {
  auto& texts = dynamic_cast<TCreationTexts&>(target);
  texts.ExpectCreationTexts(tables);
  RunGuarded(
      [&] {
        for (const std::string& table : tables)
          Tell("table " + table, WithoutCounter(sync.TargetText(table)), WithoutCounter(TextNow(texts, target, table)),
               moved);
      },
      [&] { texts.ExpectCreationTexts({}); });
}

std::vector<TOtherObject> ObjectsNow(const std::vector<const TObjectChange*>& touched, TCreationTexts& texts) {
  std::vector<TOtherObject> now;
  now.reserve(touched.size());
  for (const TObjectChange* change : touched)
    now.push_back({change->kind, change->old_text ? change->old_object.name : change->name});
  texts.ReadObjectTexts(now);
  return now;
}

// A table stands also where a new view would.
void LookAtObjects(const TExactSync& sync, const std::set<std::string>& names, TDBConn& target, TStringList& moved) {
  auto& texts = dynamic_cast<TCreationTexts&>(target);
  std::vector<const TObjectChange*> touched;
  for (const TObjectChange& change : sync.AllObjectChanges())
    if (names.contains(change.Object())) touched.push_back(&change);
  const std::vector<TOtherObject> now = ObjectsNow(touched, texts);
  for (std::size_t i = 0; i < touched.size(); ++i) {
    const TObjectChange& change = *touched[i];
    std::string text = now[i].text;
    if (text.empty() && change.kind == "view" && change.old_object.text.empty())
      text = TextNow(texts, target, change.name);
    Tell(change.Object(), change.old_object.text, text, moved);
  }
}

}  // namespace

std::string OldName(const TExactSync& sync, const std::string& table) {
  for (const TRenameChange& change : sync.Renames())
    if (change.rename.OfTable() && change.rename.to == table) return change.rename.from;
  return table;
}

TStringList MovedSince(const TExactSync& sync, const std::vector<TPlanStatement>& statements, TDBConn& target) {
  TStringList moved, tables;
  std::set<std::string> seen, objects;
  for (const TPlanStatement& statement : statements)
    if (!statement.object.empty())
      objects.insert(statement.object);
    else
      for (const std::string& table : {statement.table, OldName(sync, statement.table)})
        if (seen.insert(table).second) tables.push_back(table);
  LookAtTables(sync, tables, target, moved);
  if (!objects.empty()) LookAtObjects(sync, objects, target, moved);
  return moved;
}

}  // namespace velmora
