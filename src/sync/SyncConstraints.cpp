// SPDX-License-Identifier: GPL-3.0-or-later

// The comparison of constraints: by their rendered text from "foreign key" on, so that their names do not count.

#include <string>

#include "core/Meta.h"
#include "sync/Sync.h"
#include "sync/SyncActions.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

std::string ConstraintText(TMeta& meta, const std::string& table, const std::string& constraint) {
  std::string text;
  meta.ConstraintDefinition(table, constraint, text);
  return text;
}

// Raises "Nothing to StrChop!" for a text without these words.
std::string WithoutName(std::string text) {
  StrChop("foreign key", text);
  return text;
}

// Looks at no more rows than it takes to find one.
bool HasConstraint(TMeta& meta, const std::string& table, const std::string& nameless) {
  meta.GotoTable(table);
  auto& constraints = meta.tConstraints;
  for (auto row = constraints.Rows().begin(); row != constraints.Rows().end(); ++row) {
    constraints.GoTo(row);
    if (WithoutName(ConstraintText(meta, table, row->name)) == nameless) return true;
  }
  return false;
}

}  // namespace

void TDBSync::CompareConstraints(const std::string& table) {
  GotoFetched(table);
  DropObsoleteConstraints(table);
  AddNewConstraints(table);
}

// Deliberate: the row after a dropped one is passed over, as with columns.
void TDBSync::DropObsoleteConstraints(const std::string& table) {
  Target().GotoTable(table);
  auto& constraints = Target().tConstraints;
  for (constraints.First(); !constraints.Eof(); constraints.Next()) {
    const std::string name = constraints.Current().name;
    if (name.empty()) continue;
    const std::string text = ConstraintText(Target(), table, name);
    if (HasConstraint(Reference(), table, WithoutName(text))) continue;

    std::string unused;
    AddToActions(saDropConstraint, table, text, name);
    Target().DropConstraintSQL(table, name, unused);
  }
}

void TDBSync::AddNewConstraints(const std::string& table) {
  Reference().GotoTable(table);
  auto& constraints = Reference().tConstraints;
  for (auto row = constraints.Rows().begin(); row != constraints.Rows().end(); ++row) {
    constraints.GoTo(row);
    const std::string name = row->name;
    const std::string text = ConstraintText(Reference(), table, name);
    if (HasConstraint(Target(), table, WithoutName(text))) continue;

    AddToActions(saAddConstraint, table, text, name);
    TgtConn->ParseDDL(Format("alter table %s add %s;", table, text));
  }
}

}  // namespace velmora
