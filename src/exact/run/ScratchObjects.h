#pragma once

// Views, triggers and routines in a scratch database: copies of the target's, and what the plan makes of them. Events
// are left out: they would run there.

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
  // Whether a statement of the plan can be tried.
  bool Tries(const TPlanStatement& statement) const;
  // After the plan: what differs from `wanted` still.
  std::vector<TObjectChange> Left(const TDatabaseObjects& wanted, const TDefinerWishes& wishes);

 private:
  TScratchDatabase& scratch_;
  const TPlanServer& server_;
  std::set<std::string> missing_;  // "view v"
};

}  // namespace velmora
