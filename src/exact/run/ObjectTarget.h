// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What the target's server says to the views, triggers, routines and events that are to be made on it.

#include "core/DBConn.h"
#include "exact/compare/Collations.h"
#include "exact/objects/ObjectChanges.h"
#include "exact/plan/Plan.h"

namespace velmora {

struct TObjectSides {
  const TDatabaseObjects& reference;
  const TDatabaseObjects& target;
};

// A change that needs a mode or a collation which the server does not have is told as a difference instead, and so is a
// view that names a function or view whose definer is no account of the target's: no server makes it. A definer that
// the object does not have yet and that the target does not know makes the change unsafe, and so does one that the
// login may not name. `known` are the target's sets. A file is asked nothing. Asks little, and only where there is
// something to ask.
void SettleOnTarget(TDBConn& target, const TPlanServer& server, TKnownSets& known, const TObjectSides& sides,
                    TObjectComparison& objects);

}  // namespace velmora
