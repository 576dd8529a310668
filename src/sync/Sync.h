// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// TDBSync: turns two databases into a list of sync actions.

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "sync/ActionTree.h"
#include "sync/Data.h"
#include "sync/MessageLog.h"
#include "sync/Progress.h"
#include "sync/TaskConnections.h"
#include "util/Lists.h"

namespace velmora {

class TMeta;

// Compares the structure of a reference with that of a target and records in `mtActions` and in the tree what must
// happen to the target so that it equals the reference. Changes nothing on any server: each decided statement is
// replayed on the target's store by ParseDDL, so that later decisions see the target as it will be. In the end the
// altered target is thrown away and a copy made at the start takes its place.
//
// The target must have ParseDDL, and both sides creation texts, as the MySQL engines do.
class TDBSync {
 public:
  // All outlive this object. `connections` holds the same two connections that SetDatabases is given.
  TDBSync(TTaskConnections& connections, TdmData& data, TActionTree& tree, TProgress& progress, TMessageLog& log);
  TDBSync(const TDBSync&) = delete;
  TDBSync& operator=(const TDBSync&) = delete;

  TDBConn* RefConn = nullptr;  // not owned
  TDBConn* TgtConn = nullptr;  // not owned; null after a run, since the target that was compared is gone
  TStringList ActionLog;       // one line per action of the last run

  // Raises "TDBSync: Empty reference database!" or "TDBSync: Empty target database!".
  void SetDatabases(TDBConn* ref, TDBConn* tgt);
  // One whole comparison; SetDatabases first. Both sides are reconnected. An error of either side ends the run and
  // passes on: the actions found so far stay, and the target is replaced all the same. Gives the target that was
  // compared, altered, for a large one takes time to free.
  std::unique_ptr<TDBConn> Compare();

  // The table that the last run came to, for messages; empty when it ended well or came to none.
  const std::string& TableUnderWay() const { return tableUnderWay_; }
  // Whether the target's connection was gone when the last run ended, for messages too: the copy in its place has one
  // of its own.
  bool TargetLost() const { return targetLost_; }

  // The passes over one table that both sides hold. Each raises what the stores and ParseDDL raise.
  void CompareColumns(const std::string& table);
  void CompareKeys(const std::string& table);
  void CompareConstraints(const std::string& table);

  // Records one action. Raises "AddToActions: Unhandled action type".
  void AddToActions(int action, const std::string& table, const std::string& description, const std::string& item);
  void ActionName(int id, std::string& text);  // raises "Unhandled sync action"

 private:
  struct TColumnLists;
  struct TKeyText {
    std::string name;
    std::string text;
  };
  using TKeyTexts = std::vector<TKeyText>;
  using TTablePass = void (TDBSync::*)(const std::string& table);
  using TTableVisit = std::function<void(const std::string& table)>;

  // Steps of Compare
  void ReconnectBoth();
  void RunPasses();
  void ExpectCommonTexts(const TStringList& referenceTables);
  void ForEachTable(const TStringList& tables, const std::string& title, const TTableVisit& visit);
  void DropObsoleteTables(const TStringList& targetTables);
  void CompareTables(const TStringList& referenceTables, const std::string& title, TTablePass pass);
  void CreateNewTables(const TStringList& referenceTables);
  bool CreationTextsDiffer(const std::string& table);

  void GotoFetched(const std::string& table);  // both stores on the table, fetched
  TMeta& Reference() const;
  TMeta& Target() const;

  // Steps of CompareColumns
  void CompareTableType(const std::string& table);
  void CompareColumn(const std::string& table, const std::string& name, TColumnLists& lists);
  void AddColumn(const std::string& table, const std::string& name, const std::string& text, TColumnLists& lists);
  void ModifyColumn(const std::string& table, const std::string& name, const std::string& text,
                    const std::string& predecessor);
  void DropObsoleteColumns(const std::string& table, TColumnLists& lists);

  // Steps of CompareKeys
  TKeyTexts WantedKeys(const std::string& table);  // the reference's, each rendered once
  void DropObsoleteKeys(const std::string& table, const TKeyTexts& wanted);
  bool DropNextObsoleteKey(const std::string& table, const TKeyTexts& wanted);
  bool FirstColumnCounts(const std::string& table);
  void AddNewKeys(const std::string& table, const TKeyTexts& wanted);
  void CompareReferenceKey(const std::string& table, const std::string& name, const std::string& text);
  bool TargetHasNamelessKey(const std::string& table, const std::string& text);

  // Steps of CompareConstraints
  void DropObsoleteConstraints(const std::string& table);
  void AddNewConstraints(const std::string& table);

  TTaskConnections& connections_;
  TdmData& data_;
  TActionTree& tree_;
  TProgress& progress_;
  TMessageLog& log_;
  std::ptrdiff_t tableIndex_ = 0;  // of the table under way in the list that the pass walks
  std::string tableUnderWay_;
  bool targetLost_ = false;
  bool tempKeyUsed_ = false;  // a temporary key is believed to stand in for the primary key
};

}  // namespace velmora
