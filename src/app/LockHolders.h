// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Who stands in the way of a statement that did not get its lock.

#include <string>

#include "core/DBConn.h"

namespace velmora {

// "connection 12 (app@10.0.0.4, Sleep for 340 s) holds t", of several with commas between; where the server does not
// show who holds locks, those that may: "perhaps ...". Says so where nobody can be seen. Raises nothing.
std::string LockHolders(TDBConn& target, const std::string& statement);

}  // namespace velmora
