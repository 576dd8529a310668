// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The dialect that fits a target, where the user leaves it open.

#include <string>

#include "app/Dialects.h"
#include "core/DBConn.h"

namespace velmora {

struct TDialectChoice {
  EDialect dialect = EDialect::Exact;
  std::string reason;  // "the target's server is MariaDB 10.11.6"
};

// Standard for servers before MySQL 5.0, whose statements it writes; Exact for all later ones, and for files. A target
// on a server has to be connected. Raises what asking its version raises.
TDialectChoice DialectFor(TDBConn& target);

}  // namespace velmora
