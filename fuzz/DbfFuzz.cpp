// SPDX-License-Identifier: GPL-3.0-or-later

// A table of dBASE or FoxPro; its memos, its indexes and its database, with memos of its own, are further parts.

#include <memory>

#include "Harnesses.h"
#include "Input.h"
#include "formats/dbf/DBaseFolder.h"
#include "formats/dbf/DbfStructure.h"
#include "formats/dbf/FoxProFolder.h"

namespace velmora::fuzzing {
namespace {

void ReadStructures(TDbfStructures& structures) {
  for (const std::string& table : structures.TableNames()) Try([&] { structures.StructureOf(table); });
}

void ReadDBase(std::string_view input) {
  const auto parts = Parts(input, 4);
  const std::string& folder =
      PutFiles({{"people.dbf", parts[0]}, {"people.dbt", parts[1]}, {"people.inf", parts[2]}, {"name.ndx", parts[3]}});
  Try([&] { ReadAll(*OpenDBaseFolder(folder)); });
  Try([&] { ReadStructures(*OpenDBaseStructures(folder, "")); });
}

void ReadFoxPro(std::string_view input, bool by_database) {
  const auto parts = Parts(input, 5);
  const std::string& folder = PutFiles({{"items.dbf", parts[0]},
                                        {"items.fpt", parts[1]},
                                        {"items.cdx", parts[2]},
                                        {"shop.dbc", parts[3]},
                                        {"shop.dct", parts[4]}});
  const std::string path = by_database ? folder + "/shop.dbc" : folder;
  Try([&] { ReadAll(*OpenFoxProFolder(path)); });
  Try([&] { ReadStructures(*OpenFoxProStructures(path, "")); });
}

}  // namespace

void FuzzDbf(std::string_view input) {
  const std::size_t kind = Choose(input, 3);
  if (kind == 0)
    ReadDBase(input);
  else
    ReadFoxPro(input, kind == 2);
}

}  // namespace velmora::fuzzing
