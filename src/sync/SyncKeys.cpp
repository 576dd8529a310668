// SPDX-License-Identifier: GPL-3.0-or-later

// The comparison of keys. They are compared as rendered text, in which the name stands.

#include <algorithm>
#include <string>

#include "core/Meta.h"
#include "sync/Sync.h"
#include "sync/SyncActions.h"
#include "util/Format.h"

namespace velmora {

namespace {

constexpr char kTempKeyName[] = "_tmp_autoinc_key";

std::string KeyText(TMeta& meta, const std::string& table, const std::string& key) {
  std::string text;
  meta.KeyDefinition(table, key, text);
  return text;
}

}  // namespace

TDBSync::TKeyTexts TDBSync::WantedKeys(const std::string& table) {
  TKeyTexts wanted;
  Reference().GotoTable(table);
  auto& keys = Reference().tKeys;
  for (auto row = keys.Rows().begin(); row != keys.Rows().end(); ++row) {
    keys.GoTo(row);
    wanted.push_back({row->name, KeyText(Reference(), table, row->name)});
  }
  return wanted;
}

// A changed key is dropped first and then found missing, so it shows as obsolete and new.
void TDBSync::CompareKeys(const std::string& table) {
  GotoFetched(table);
  tempKeyUsed_ = false;
  const TKeyTexts wanted = WantedKeys(table);
  DropObsoleteKeys(table, wanted);
  AddNewKeys(table, wanted);
}

void TDBSync::DropObsoleteKeys(const std::string& table, const TKeyTexts& wanted) {
  while (DropNextObsoleteKey(table, wanted)) {
  }
}

// Drops the first key of the target that the reference lacks; false when there is none left.
//
// Deliberate: on a table whose first column counts by itself a temporary key would have to stand in for the primary key
// while that is replaced. No statement makes one; what remains of it is that a key of that name is then left alone.
bool TDBSync::DropNextObsoleteKey(const std::string& table, const TKeyTexts& wanted) {
  Target().GotoTable(table);
  auto& keys = Target().tKeys;
  for (auto row = keys.Rows().begin(); row != keys.Rows().end(); ++row) {
    keys.GoTo(row);
    const std::string name = row->name;
    const std::string text = KeyText(Target(), table, name);
    const bool isWanted =
        std::any_of(wanted.begin(), wanted.end(), [&text](const TKeyText& key) { return key.text == text; });
    if (name.empty() || isWanted) continue;
    if (name == kPrimaryKeyName && FirstColumnCounts(table)) tempKeyUsed_ = true;
    if (tempKeyUsed_ && name == kTempKeyName) continue;

    std::string unused;
    AddToActions(saDropKey, table, text, name);
    Target().DropKeySQL(table, name, unused);
    return true;
  }
  return false;
}

bool TDBSync::FirstColumnCounts(const std::string& table) {
  Target().GotoTable(table);
  const auto& columns = Target().tColumns.Rows();
  return !columns.empty() && columns.front().autoinc;
}

void TDBSync::AddNewKeys(const std::string& table, const TKeyTexts& wanted) {
  for (const auto& [name, text] : wanted) CompareReferenceKey(table, name, text);
}

void TDBSync::CompareReferenceKey(const std::string& table, const std::string& name, const std::string& text) {
  bool isNew = true;
  if (name.empty()) {
    if (TargetHasNamelessKey(table, text)) return;
  } else {
    isNew = !Target().FindKey(table, name);
    if (!isNew && KeyText(Target(), table, name) == text) return;
  }
  AddToActions(isNew ? saAddKey : saModifyKey, table, text, name);
  TgtConn->ParseDDL(Format("alter table %s %s %s;", table, isNew ? "add" : "modify", text));
}

// Deliberate: the empty name is asked for at each row, whatever that row's name. So a target that has keys, but none
// without a name, ends the run.
bool TDBSync::TargetHasNamelessKey(const std::string& table, const std::string& text) {
  Target().GotoTable(table);
  auto& keys = Target().tKeys;
  for (auto row = keys.Rows().begin(); row != keys.Rows().end(); ++row) {
    keys.GoTo(row);
    if (KeyText(Target(), table, {}) == text) return true;
  }
  return false;
}

}  // namespace velmora
