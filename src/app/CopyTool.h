// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Changes of large tables by a tool of the user's: it makes a copy with the new structure, fills it while others go on
// with the table, and puts it in its place.

#include <optional>
#include <string>

#include "app/RunCare.h"
#include "core/DBConn.h"
#include "exact/plan/LockClasses.h"

namespace velmora {

// How the name of the file with a tool's login begins.
inline constexpr char kLoginFileStart[] = "velmora-login-";

// Why a command cannot be one; empty where it can.
std::string FaultOfCopyTool(const std::string& command);

class TCopyToolRuns {
 public:
  // Both outlive this object.
  TCopyToolRuns(TDBConn& target, const TRunCare& care) : target_(target), care_(care) {}

  // Whether the tool is to have the statement: an "alter table" that rebuilds or copies a table that is as large, or
  // keeps writers out, by what is known of it, and else by its clauses. One of constraints or partitions is not for a
  // tool, which gives the copy's constraints other names, and nor is one that has an algorithm; care.tell hears of it.
  bool Takes(const std::string& statement, ELockClass lock);
  // Has the tool make the change, of a statement that it takes. It is started without a shell, in a group of processes
  // of its own, and gets the login by a file that is gone afterwards; the target's session is kept alive. Raises where
  // it fails, with its last lines. The host ends it by raising from its message pump; the tool then has half a minute
  // to clear away.
  void Run(const std::string& statement);

 private:
  std::int64_t SizeOf(const std::string& table);
  void KeepAlive();

  TDBConn& target_;
  const TRunCare& care_;
};

}  // namespace velmora
