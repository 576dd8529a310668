// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/LockWaits.h"

#include <algorithm>
#include <chrono>
#include <thread>

#include "app/LockHolders.h"
#include "core/Host.h"
#include "exact/run/RefusedRenames.h"
#include "util/Counted.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Lists.h"
#include "util/Text.h"
#include "util/Words.h"

namespace velmora {

namespace {

constexpr int kLockWaitTimeout = 1205;
constexpr int kFirstPause = 1;  // seconds; each is twice the one before
constexpr int kLongestPause = 30;
constexpr auto kPulse = std::chrono::milliseconds(50);
constexpr char kHeld[] = "%s; %s";
constexpr char kAgain[] = "the lock was not to be had in time: %s; try %d of %d follows in %s";
constexpr char kTitle[] = "Waiting for a lock...";
constexpr char kGoesOn[] = "Executing script...";

// What commits by itself, and what takes locks before anything else.
bool MayBeTriedAgain(const std::string& statement) {
  std::size_t start = 0;
  std::string_view word;
  StrNextWord(statement, 1, start, word);
  return InList(LowerText(word), {"create", "alter", "drop", "rename", "truncate", "lock"});
}

std::string Seconds(int seconds) { return Counted(static_cast<std::size_t>(seconds), "second"); }

}  // namespace

TLockWaits::TLockWaits(TDBConn& target, const TRunCare& care, TProgress& progress)
    : target_(target), care_(care), progress_(progress) {
  if (care.lock_wait == 0) return;
  try {
    TVariant before;
    target.GetResultSQL("select @@lock_wait_timeout", before);
    target.ExecSQL(Format("set lock_wait_timeout = %d", care.lock_wait));
    before_ = VarToText(before);
  } catch (const EMySqlException&) {  // a server of old waits as it does
    if (!target.GetConnected()) throw;
  }
}

void TLockWaits::PutBack() {
  if (before_.empty() || !target_.GetConnected()) return;
  try {
    target_.ExecSQL("set lock_wait_timeout = " + before_);
  } catch (const EVelmora&) {  // what came of the run matters more
  }
}

std::int64_t TLockWaits::Execute(const std::string& statement, TStatementRun& run) {
  for (int pause = kFirstPause;; pause = std::min(2 * pause, kLongestPause)) {
    try {
      return ExecuteChange(target_, statement);
    } catch (const EMySqlException& error) {
      if (error.Number() != kLockWaitTimeout) throw;
      const std::string holders = LockHolders(target_, statement);
      if (!MayBeTriedAgain(statement) || run.tries > care_.retries)
        throw EMySqlException(error.Number(), Format(kHeld, error.what(), holders));
      if (care_.tell) care_.tell(Format(kAgain, holders, run.tries + 1, care_.retries + 1, Seconds(pause)));
    }
    ++run.tries;
    Pause(pause);
  }
}

void TLockWaits::Pause(int seconds) const {
  progress_.SetTitle(kTitle);
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
  for (; std::chrono::steady_clock::now() < end; std::this_thread::sleep_for(kPulse)) Host().ProcessMessages();
  progress_.SetTitle(kGoesOn);
}

}  // namespace velmora
