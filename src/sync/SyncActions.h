// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The sync actions, one row of data each: twelve on tables and what is in them, three on what stands beside tables,
// and renames.

#include <array>
#include <string>
#include <string_view>

namespace velmora {

class TDBConn;
struct TActionRow;

enum TSyncAction : int {
  saCreateTable,
  saDropTable,
  saAddColumn,
  saModifyColumn,
  saDropColumn,
  saAddKey,
  saModifyKey,
  saDropKey,
  saAddConstraint,
  saModifyConstraint,
  saDropConstraint,
  saChangeTableType,
  // Of the exact dialect alone: views, triggers, procedures, functions, events.
  saCreateObject,
  saChangeObject,
  saDropObject,
  saRename  // of a table or column
};
inline constexpr int kSyncActionCount = 16;

// Icons of the action tree: positions in the image list of differences.
enum TActionIcon : int {
  kIconNew,
  kIconChanged,
  kIconObsolete,
  kIconTableWithChanges,
  kIconNewTable,
  kIconObsoleteTable
};

enum class ELogSubject { Table, Item };

// Composes the statement of an action for the script from the stores of both sides. Raises what the stores raise.
using TStatementMaker = std::string (*)(TDBConn& reference, TDBConn& target, const TActionRow& row);

struct TSyncActionInfo {
  TSyncAction id;
  std::string_view word;      // what the action is called
  std::string_view log_text;  // begins the line in the log; the name follows
  ELogSubject log_subject;    // whose name that is
  TActionIcon icon;           // of its own node, which for whole tables is the top node
  TStatementMaker statement;

  bool WholeTable() const { return id == saCreateTable || id == saDropTable; }
  bool OfObject() const { return id >= saCreateObject && id <= saDropObject; }
  std::string LogText(const std::string& table, const std::string& item) const;
};

const std::array<TSyncActionInfo, kSyncActionCount>& SyncActions();  // by id
const TSyncActionInfo* FindSyncAction(int id);                       // null for a number that is no action
const TSyncActionInfo& SyncAction(int id);                           // raises "Unhandled sync action"

}  // namespace velmora
