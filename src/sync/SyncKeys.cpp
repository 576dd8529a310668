// The comparison of keys. They are compared as rendered text, in which the name stands.

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

// Whether one of the table's keys has this text. `nameOf` gives the name by which the text of a row is asked for.
template <class NameOf>
bool HasKeyText(TMeta& meta, const std::string& table, const std::string& text, NameOf nameOf) {
  meta.GotoTable(table);
  auto& keys = meta.tKeys;
  for (auto row = keys.Rows().begin(); row != keys.Rows().end(); ++row) {
    keys.GoTo(row);
    if (KeyText(meta, table, nameOf(*row)) == text) return true;
  }
  return false;
}

}  // namespace

// A changed key is dropped first and then found missing, so it shows as obsolete and new.
void TDBSync::CompareKeys(const std::string& table) {
  GotoFetched(table);
  tempKeyUsed_ = false;
  DropObsoleteKeys(table);
  AddNewKeys(table);
}

void TDBSync::DropObsoleteKeys(const std::string& table) {
  while (DropNextObsoleteKey(table)) {
  }
}

// Drops the first key of the target that the reference lacks; false when there is none left.
//
// Deliberate: on a table whose first column counts by itself a temporary key would have to stand in for the primary key
// while that is replaced. No statement makes one; what remains of it is that a key of that name is then left alone.
bool TDBSync::DropNextObsoleteKey(const std::string& table) {
  Target().GotoTable(table);
  auto& keys = Target().tKeys;
  for (auto row = keys.Rows().begin(); row != keys.Rows().end(); ++row) {
    keys.GoTo(row);
    const std::string name = row->name;
    const std::string text = KeyText(Target(), table, name);
    if (name.empty() || ReferenceHasKey(table, text)) continue;
    if (name == kPrimaryKeyName && FirstColumnCounts(table)) tempKeyUsed_ = true;
    if (tempKeyUsed_ && name == kTempKeyName) continue;

    std::string unused;
    AddToActions(saDropKey, table, text, name);
    Target().DropKeySQL(table, name, unused);
    return true;
  }
  return false;
}

bool TDBSync::ReferenceHasKey(const std::string& table, const std::string& text) {
  return HasKeyText(Reference(), table, text, [](const TKeyRow& row) { return row.name; });
}

bool TDBSync::FirstColumnCounts(const std::string& table) {
  Target().GotoTable(table);
  const auto& columns = Target().tColumns.Rows();
  return !columns.empty() && columns.front().autoinc;
}

void TDBSync::AddNewKeys(const std::string& table) {
  Reference().GotoTable(table);
  auto& keys = Reference().tKeys;
  for (auto row = keys.Rows().begin(); row != keys.Rows().end(); ++row) {
    keys.GoTo(row);
    CompareReferenceKey(table, row->name);
  }
}

void TDBSync::CompareReferenceKey(const std::string& table, const std::string& name) {
  const std::string text = KeyText(Reference(), table, name);
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
  return HasKeyText(Target(), table, text, [](const TKeyRow&) { return std::string(); });
}

}  // namespace velmora
