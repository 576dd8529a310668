// SPDX-License-Identifier: GPL-3.0-or-later

// Two scripts in the standard dialect: the first as statements that fill a store, both as databases that are compared.

#include <string>

#include "Harnesses.h"
#include "Input.h"
#include "app/ParsedStore.h"
#include "app/StructureView.h"
#include "core/Meta.h"
#include "support/SyncRig.h"

namespace velmora::fuzzing {
namespace {

// Every element as the engine writes it, and every table.
void Render(TDBConn& conn) {
  std::string text;
  for (const TTableView& table : ViewTables(conn))
    Try([&] { conn.meta().BuildCreateTable(table.name, nullptr, text); });
}

void Parse(std::string_view text) {
  TParsedStore store("fuzz");
  Try([&] { store.ParseDDL(std::string(text)); });
  Render(store);
}

}  // namespace

void FuzzStandard(std::string_view input) {
  const auto parts = Parts(input, 2);
  Parse(parts[0]);
  const std::string& folder = PutFiles({{"reference.sql", parts[0]}, {"target.sql", parts[1]}});
  if (parts[0].empty() || parts[1].empty()) return;
  velmora::testing::TSyncRig rig(folder + "/reference.sql", folder + "/target.sql");
  Try([&] { rig.Compare(); });
  Try([&] { rig.GenerateScript(); });
}

}  // namespace velmora::fuzzing
