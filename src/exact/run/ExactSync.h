// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The comparison of the exact dialect: reads creation texts without loss, compares element by element, plans one
// "alter table" per table, and proves the plan in memory before anybody runs it.

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "exact/compare/Changes.h"
#include "exact/compare/Collations.h"
#include "exact/compare/ServerForm.h"
#include "exact/objects/ObjectPlan.h"
#include "exact/plan/Plan.h"
#include "exact/run/ActionLock.h"
#include "exact/run/ExactWishes.h"
#include "exact/run/PairReader.h"
#include "exact/run/Renaming.h"
#include "exact/run/RowChecks.h"
#include "exact/run/ScratchDatabase.h"
#include "exact/run/TableSizes.h"
#include "sync/ActionTree.h"
#include "sync/Data.h"
#include "sync/MessageLog.h"
#include "sync/Progress.h"
#include "sync/ScriptEditor.h"
#include "sync/TaskConnections.h"
#include "util/Clock.h"

namespace velmora {

class TExactSync {
 public:
  // All outlive this object.
  TExactSync(TTaskConnections& connections, TdmData& data, TActionTree& tree, TProgress& progress, TMessageLog& log);

  TStringList ActionLog;  // names alike but for case, objects that are left alone, those that differ, tables that could
                          // not be read, warnings of the mapping, actions, equivalences, proof
  TEquivalenceUse Equivalences;
  TExactWishes Wishes;
  bool Verbose = false;           // the log names all that was left out, and what became of every column that was made
  TCollationMap Collations;       // names of the reference that the target has others for
  std::function<void()> OnLogin;  // called in a comparison when both sides have taken the login and were not asked for
                                  // more; what it raises ends the comparison; optional
  // What makes the texts of a reference that has none; optional, and may give null.
  std::function<std::unique_ptr<TTextMaker>(TDBConn& reference)> MakeTexts;

  // Reconnects both sides, reads every table that either lists, compares, and fills the action rows and the tree. A
  // table that cannot be read is skipped and named; the result is then not identical. Raises what the connections
  // raise, and for a side that gives no creation texts.
  void Compare();
  void Forget();  // what was compared last

  // No action on tables was found, nothing was skipped or not followed, and all has a form in MySQL.
  bool TablesIdentical() const;
  bool Identical() const;  // and nothing beside tables differs
  const std::vector<TSkippedTable>& Skipped() const { return read_.skipped; }
  const TStringList& CaseTwins() const { return case_twins_; }           // see sync/CaseTwins.h
  const TStringList& NotFollowed() const { return read_.not_followed; }  // statements of a script, with the reason
  const std::vector<TKindsNotSeen>& NotSeen() const { return read_.not_seen; }
  const TLeftOut& LeftOut() const { return read_.left_out; }  // by the selection
  // A line for each pattern, of `only` and of `except`, that names nothing of either side; none where not all was seen.
  const TStringList& IdleOnly() const { return idle_only_; }
  const TStringList& IdleExcept() const { return idle_except_; }
  bool NothingNamed() const;  // by any pattern of `only`, of which there are some
  const TStringList& KeysToNothing() const { return keys_to_nothing_; }  // see ForeignKeysToNothing
  const TStringList& LeftAlone() const { return read_.left_alone; }      // a line for each object that is not handled
  // Of what stands beside tables: what no action changes, and why.
  const std::vector<TObjectDifference>& Objects() const { return objects_.differences; }
  const TStringList& ObjectRemarks() const { return objects_.remarks; }  // of them what is no difference
  // Of a reference whose texts were made: what has no form in MySQL, what of that was accepted and is no longer there,
  // and what became of its columns.
  const std::vector<TUnmadeElement>& Unmade() const { return read_.unmade; }
  const std::vector<TUnmadeElement>& Accepted() const { return read_.accepted; }
  const std::vector<TMadeColumn>& MadeColumns() const { return read_.made; }
  std::vector<TChange> Changes() const;              // those whose rows are still there
  std::vector<TObjectChange> ObjectChanges() const;  // likewise
  std::vector<TPlanStatement> Plan() const;
  const std::vector<TChange>& AllChanges() const { return changes_; }
  const std::vector<TObjectChange>& AllObjectChanges() const { return objects_.changes; }
  const std::vector<TPlanStatement>& WholePlan() const { return plan_; }  // for all of them
  const TReadPair& Read() const { return read_; }                         // all of it, as it was read
  const TSchema& Reference() const { return read_.reference.schema; }     // as it was read
  // With the renames done that were asked for.
  const TSchema& Target() const { return renamed_ ? *renamed_ : read_.target.schema; }
  const TDatabaseObjects& TargetObjects() const { return renamed_objects_ ? *renamed_objects_ : read_.target_objects; }
  const std::vector<TRenameChange>& Renames() const { return renames_; }  // likewise
  const std::vector<TRenameOffer>& RenameOffers() const { return offers_; }
  const TStringList& RenamesTold() const { return renames_told_; }  // what does not fit, and what names the old names
  const TStringList& RenamesRefused() const { return renames_refused_; }  // those by which no script may be made
  int DifferencesLeft() const { return differences_left_; }               // by the proof, for the whole plan
  std::string NothingLeft() const;  // what a proof says that leaves none: a skipped table is in no proof
  const std::string& TableUnderWay() const { return table_under_way_; }
  // Of the last comparison: nothing of the reference was read, nor skipped.
  bool ReferenceIsEmpty() const;
  bool TargetLost() const { return target_lost_; }

  // Writes the script of the rows that are left: header as "-- " comments, reasons of what is unsafe as comments,
  // statements, foreign key checks put back to what they were, and the same with the session's mode where
  // tables have zero dates as defaults. `note` is a further line of the header, if not empty.
  void GenerateScript(TScriptEditor& editor, const TClock& clock, const std::string& note = {}) const;

  // Writes the script that leads back from what the rows that are left make of the target to what it is, and says in
  // front of it what that cannot bring back.
  void GenerateUndo(TScriptEditor& editor, const TClock& clock) const;

  // Creation texts of a table as both servers print them; empty for a side without the table.
  std::string ReferenceText(const std::string& table) const;
  std::string TargetText(const std::string& table) const;

  // Of actions that statements of `plan` serve, by id; none where nothing is known of the target's server.
  std::map<int, TActionLock> ActionLocks(const std::vector<TPlanStatement>& plan) const;
  // Those of these that are known to need more than the algorithm which was asked for, a line each.
  TStringList AboveAlgorithm(const std::vector<TPlanStatement>& statements) const;

  // Asks the target's server what its rows say to the changes that are left; see AskRows.
  std::vector<TRowFinding> CheckRows(int seconds);

  // Does the proof for real: makes the target's structure in a scratch database of its server, runs the plan there,
  // compares, and removes the database in every case. Gives the differences left. Views, triggers and routines that the
  // server refuses are told in Objects from then on, and have no rows: the plan leaves them alone. So it does with
  // views that it makes as the target has them, which are no changes any more. Raises where it refuses anything else,
  // and beforehand where a table of the target could not be read.
  int VerifyOnServer(const TScratchPorts& ports = {});

 private:
  std::unique_ptr<TTextMaker> MakerFor(TDBConn& reference) const;
  void LookForIdlePatterns(bool objects);
  void CompareSchemas(TDBConn& target);
  std::vector<TChange> ChangesOf(const TSchema& target, TEquivalenceUse& use, const TTableNames* only = nullptr,
                                 TLeftOut* left = nullptr) const;
  void CompareOthers(TDBConn& target);
  const TDatabaseObjects& WantedObjects() const {
    return translated_objects_ ? *translated_objects_ : read_.wanted_objects;
  }
  void TellAsRead();
  void Rename(TDBConn& target);
  std::vector<TRename> RenamesBack() const;
  void RenameBack(TSchema schema, std::vector<TPlanStatement>& plan) const;
  std::vector<TPlanStatement> PlanBack(const TSchema& after, const TDatabaseObjects& objects_after) const;
  std::string LeftByWayBack(const std::vector<TPlanStatement>& back, TSchema tables, TDatabaseObjects objects,
                            TStringList& faults) const;
  std::string TargetVersion(TDBConn& target) const;
  TSchema RenamedTarget(std::vector<TPlanStatement>* plan) const;
  std::vector<TPlanStatement> StatementsOf(const TRenameChange& change, const TSchema& schema) const;
  std::vector<TRenameChange> StruckOutRenames() const;
  std::vector<TChange> RenamedChanges() const;
  std::string OldTable(const TRenameChange& change) const;
  std::vector<TRowQuestion> QuestionsByOldNames() const;
  std::vector<TRowQuestion> QuestionsOfRenames() const;
  void ShowChanges();
  std::vector<TPlanStatement> PlanOf(const std::vector<TChange>& changes,
                                     const std::vector<TObjectChange>& objects) const;
  TStringList ObjectsLeft(TStringList& faults) const;
  void LeaveOutTold(std::vector<TObjectChange>& changes) const;
  void TakeAsEqual(const std::set<std::string>& objects);
  void LeaveRefused(const std::map<std::string, std::string>& refused);
  bool MeetsZeroDates(const std::vector<TPlanStatement>& plan) const;
  TPlanServer PlanServerOf(TDBConn& target) const;
  // What a plan makes of the target's tables and objects; statements that cannot be followed are told in `faults`.
  TSchema TablesAfter(const std::vector<TPlanStatement>& plan, TStringList& faults) const;
  TDatabaseObjects ObjectsAfter(const std::vector<TPlanStatement>& plan, TStringList& faults) const;
  void FollowTables(const std::vector<TPlanStatement>& plan, TSchema& tables, TStringList& faults) const;
  static void FollowObjects(const std::vector<TPlanStatement>& plan, TDatabaseObjects& objects, TStringList& faults);
  void WriteStatements(const std::vector<TPlanStatement>& plan, TScriptEditor& editor) const;
  void AskSizes(TDBConn& target);
  TActionLock LockOf(const TPlanStatement& statement) const;
  void Prove();
  TTableNames TouchedTables() const;
  TStringList DigestLines() const;
  void FillLog();

  TTaskConnections& connections_;
  TdmData& data_;
  TActionTree& tree_;
  TProgress& progress_;
  TMessageLog& log_;
  TReadPair read_;
  TStringList case_twins_;
  TStringList keys_to_nothing_;
  TStringList idle_only_;
  TStringList idle_except_;
  std::vector<TRenameChange> renames_;
  std::optional<TSchema> renamed_;                   // the target's tables under their new names, where there are any
  std::optional<TDatabaseObjects> renamed_objects_;  // with the triggers of these tables
  std::optional<TDatabaseObjects>
      translated_objects_;  // what is wanted, in words and collations of the target's server
  std::vector<TRenameOffer> offers_;
  TStringList renames_told_;
  TStringList renames_refused_;
  TServerTraits target_server_;  // in what it differs, where something is renamed
  std::vector<TChange> changes_;
  TObjectComparison objects_;
  TPlanServer server_;
  TTableSizes sizes_;
  std::vector<TPlanStatement> plan_;  // of all of them
  TStringList proof_;                 // its lines in the log
  int differences_left_ = 0;
  std::string table_under_way_;
  bool target_lost_ = false;
};

}  // namespace velmora
