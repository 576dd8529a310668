#pragma once

// The statements that make the changes of views, triggers, routines and events.

#include <string>
#include <vector>

#include "exact/objects/ObjectChanges.h"
#include "exact/plan/Plan.h"

namespace velmora {

struct TObjectPlan {
  std::vector<TPlanStatement> before;  // those of the tables: what is obsolete goes
  std::vector<TPlanStatement> after;   // them: functions, procedures, views in the order in which they name each other,
                                       // triggers, events
};

// Around each statement the session is set as the reference's server had it set, and put back at the end. What a server
// cannot replace in one statement is dropped and made; its old text is what the plan puts back where the new one is
// refused. Triggers are replaced while their table is locked, so that no row slips through.
TObjectPlan MakeObjectPlan(const std::vector<TObjectChange>& changes, const TPlanServer& server);

// What such a statement makes of the objects of a database; settings of a session and locks make nothing. Raises for a
// statement that cannot be followed.
void ApplyObjectStatement(const std::string& statement, TDatabaseObjects& objects);

}  // namespace velmora
