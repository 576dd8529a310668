// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Views, triggers and routines in a scratch database: copies of the target's, and what the plan makes of them. Events
// are left out: they would run there.

#include <map>
#include <set>
#include <string>
#include <vector>

#include "exact/objects/ObjectPlan.h"
#include "exact/run/ScratchDatabase.h"

namespace velmora {

class TScratchObjects {
 public:
  // Both outlive this object.
  TScratchObjects(TScratchDatabase& scratch, const TPlanServer& server) : scratch_(scratch), server_(server) {}

  // Copies of the target's, whose tables are there. One that the server refuses to make again, such as a view whose
  // table is gone, is left out.
  void Copy(const TDatabaseObjects& target);
  // Runs a statement of the plan that is about one, if it can be tried. Where the server refuses it, what was there is
  // put back, and the other statements about the object are passed over.
  void Run(const TPlanStatement& statement);
  // What was refused, "view v", with the server's error.
  const std::map<std::string, std::string>& Refused() const { return refused_; }
  // What statements of the plan have made there, "view v".
  const std::set<std::string>& Made() const { return made_; }
  // Those of them that the server prints as `target` has it.
  std::set<std::string> AsBefore(const TDatabaseObjects& target);
  // After the plan: what differs from `wanted` still, but for what was refused.
  std::vector<TObjectChange> Left(const TDatabaseObjects& wanted, const TDefinerWishes& wishes);

 private:
  bool Tries(const TPlanStatement& statement) const;
  void Refuse(const TPlanStatement& statement, const std::string& error);
  void Remember(const std::string& setting);
  bool CopyRoutine(const TObjectDifference& unread, const TDatabaseObjects& target);
  bool RunIfTaken(const std::string& statement);
  TDatabaseObjects There();

  TScratchDatabase& scratch_;
  const TPlanServer& server_;
  bool trigger_case_ = true;                     // as TDatabaseObjects has it
  std::set<std::string> missing_;                // "view v"
  std::set<std::string> held_;                   // views that stand for themselves until their turn comes
  std::map<std::string, std::string> settings_;  // of the session, the last of each
  std::set<std::string> made_;
  std::map<std::string, std::string> refused_;
};

}  // namespace velmora
