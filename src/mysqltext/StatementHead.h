// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace velmora {

// What a statement of a creation script is, as far as anybody cares. An Object is a view, trigger, routine, event or
// sequence that is made, an AlterObject changes one; a Dynamic one does what its text does not say: call, prepare,
// source, ... A Setting may say what new tables are where they do not say it themselves, or how texts are read.
enum class EStatementKind {
  CreateTable,
  ReplaceTable,
  AlterTable,
  CreateIndex,
  Rename,
  Drop,
  Use,
  Object,
  AlterObject,
  Dynamic,
  Setting,
  Other
};

struct TStatementHead {
  EStatementKind kind = EStatementKind::Other;
  // Of a CreateTable, offsets in the statement: where a qualified name begins, and the part after its last point. Of a
  // Use, a Drop, an Object, an AlterObject too.
  std::size_t qualifier = 0;
  std::size_t name = 0;
  std::size_t name_end = 0;
  std::string_view object{};  // of these and a Drop: "view", "table", "database", ...; empty for what is none
  bool if_exists = false;     // of a Drop; of an Object "if not exists"
  bool leaves_as_is = false;  // of an AlterTable: keys are switched off or on, as dumps do around rows
};

// Reads the first words of a statement; comments between them are passed. A "create table" without a name is Other, and
// so is one of a temporary table. `with_versions` reads what stands in comments for servers of a version.
TStatementHead ReadStatementHead(std::string_view statement, bool with_versions = false);

// A name as it stands at a place of a head: without its quotes, doubled ones undone.
std::string BareName(std::string_view written);

}  // namespace velmora
