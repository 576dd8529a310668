// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// How long the statements of a run wait for their locks, and what comes then. A change of structure that waits for its
// table makes everybody wait who comes after it, so that it had better give way and come again.

#include <cstdint>
#include <string>

#include "app/RunCare.h"
#include "app/ScriptRunner.h"
#include "core/DBConn.h"
#include "sync/Progress.h"

namespace velmora {

class TLockWaits {
 public:
  // All outlive this object. Sets how long the session waits, where the server knows such a bound.
  TLockWaits(TDBConn& target, const TRunCare& care, TProgress& progress);
  // What the session had before; raises nothing. A connection that is lost is left alone.
  void PutBack();

  // Executes the statement. A change of structure, or "lock tables", that does not get its lock in time is tried again
  // after pauses that grow; the host may end these by raising from its message pump. The error of the last try tells
  // who holds the lock. Statements on rows are not tried again: a server may have rolled back what was before them.
  std::int64_t Execute(const std::string& statement, TStatementRun& run);

 private:
  void Pause(int seconds) const;

  TDBConn& target_;
  const TRunCare& care_;
  TProgress& progress_;
  std::string before_;  // the session's seconds; empty where they were left alone
};

}  // namespace velmora
