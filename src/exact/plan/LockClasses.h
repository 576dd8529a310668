// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What a change of a table costs those who work with it meanwhile: one row for each kind of change, by the server's
// product and version. Measured by scripts/measure-classes on the servers at hand, and of earlier versions taken from
// their manuals. What is not known is not guessed.

#include <array>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "exact/compare/ServerForm.h"

namespace velmora {

// The least first.
enum class ELockClass {
  None,            // nothing is said: no table that is there is changed, or nobody knows the server
  Instant,         // the table's description changes, and nothing else
  InPlace,         // rows stay as they are; keys are made or go; reading and writing go on
  Rebuild,         // the table is made anew; reading and writing go on
  CopyWithWrites,  // the table is copied row by row; reading and writing go on
  ReadersOnly,     // made in place, while nobody writes
  Copy,            // the table is copied row by row, while nobody writes
  Unknown
};
std::string_view LockWord(ELockClass of);  // "instant", "in place", "rebuild", "copy", ...; empty for None
std::string_view LockText(ELockClass of);  // "copies the table; no writes meanwhile"

enum class ELockChange {
  AddColumn,  // behind the last one
  AddColumnBetween,
  AddComputedDefault,
  AddCheckedColumn,
  AddCounter,
  AddVirtual,
  AddStored,
  DropColumn,
  DropKeyColumn,
  DropWiderKeyColumn,
  DropVirtual,
  MoveColumn,
  MoveVirtual,
  MoveStored,
  RenameColumn,
  DescribeColumn,
  DescribeStored,
  ChangeWidth,
  GrowLetters,
  GrowLettersAcross,
  AppendMember,
  ChangeType,
  ChangeVirtual,
  StartCounter,
  EndCounter,
  ForbidNull,
  AllowNull,
  WidenCharset,
  WidenCharsetOfKey,
  WidenCharsetOfMembers,
  ChangeCollation,
  ChangeCollationOfKey,
  ChangeCollationOfPrimary,
  AddColumnCheck,
  DropColumnCheck,
  AddKey,
  AddComputedKey,
  AddFulltext,
  AddSpatial,
  DropKey,
  RenameKey,
  UseKey,
  AddPrimary,
  ReplacePrimary,
  DropPrimary,
  AddForeignKey,
  AddForeignKeyUnchecked,
  DropForeignKey,
  AddCheck,
  AddCheckUnenforced,
  DropCheck,
  ChangeRows,
  ChangeEngine,
  ConvertCharset,
  DescribeTable,
  HandDownCharset,
  RenameTable,
  Partition,
  Unknown,
  kCount
};

// From this version on: 80029 for MySQL 8.0.29.
struct TLockStep {
  int since = 0;  // 0 ends the list
  ELockClass is = ELockClass::Unknown;
};
using TLockSteps = std::array<TLockStep, 3>;

struct TLockRow {
  ELockChange change;
  std::string_view name;
  TLockSteps mysql;
  TLockSteps mariadb;
};
std::span<const TLockRow> LockRows();  // in the order of ELockChange, without Unknown

// Of what a table has that changes its classes.
struct TLockTraits {
  bool other_engine = false;  // than InnoDB
  bool compressed = false;
  bool redundant = false;  // of the oldest row format
  bool fulltext = false;   // keys
  bool spatial = false;
  bool computed = false;      // virtual columns
  bool computed_key = false;  // with keys over them
  bool functional = false;    // keys over expressions, which stand for virtual columns that nobody sees
  bool cascades = false;      // foreign keys by which the server changes rows itself
  bool versioned = false;     // keeps former rows
};

// What a change alone costs. The server's version is known.
ELockClass ClassOf(ELockChange change, const TLockTraits& table, const TServerTraits& server);
// What these cost in one statement: more than the most of them, where one keeps another from being instant.
ELockClass ClassTogether(const std::vector<ELockChange>& changes, const TLockTraits& table,
                         const TServerTraits& server);

}  // namespace velmora
