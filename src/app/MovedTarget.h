// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Whether a target is still what a plan was made for.

#include "core/DBConn.h"
#include "exact/run/ExactSync.h"
#include "util/Errors.h"
#include "util/Lists.h"

namespace velmora {

// A run did not begin, as the target is no longer what was compared. The message ends in what is to be done.
class EMovedTarget final : public EVelmora {
 public:
  using EVelmora::EVelmora;
};

// The name that a table of the plan has in the target, where it is to get another one.
std::string OldName(const TExactSync& sync, const std::string& table);

// "table t is not as it was", "view v is gone", "table n has come": what these statements of the last comparison's plan
// are about and is no longer as it was read then. Asks the connected target for the creation texts of that alone.
TStringList MovedSince(const TExactSync& sync, const std::vector<TPlanStatement>& statements, TDBConn& target);

}  // namespace velmora
