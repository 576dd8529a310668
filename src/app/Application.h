// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The open task and what a user can do with it, without windows: the windows and the companion both drive this.

#include <functional>
#include <memory>
#include <string>

#include "app/Dialect.h"
#include "app/Dialects.h"
#include "app/ScriptRunner.h"
#include "sync/ActionTree.h"
#include "sync/Data.h"
#include "sync/MessageLog.h"
#include "sync/Progress.h"
#include "sync/ScriptEditor.h"
#include "sync/TaskConnections.h"
#include "util/Clock.h"

namespace velmora {

class TApplication {
 public:
  // All outlive this object.
  TApplication(TProgress& progress, TScriptEditor& editor, TMessageLog& log, const TClock& clock);

  TTaskConnections connections;
  TdmData data;
  TActionTree tree;

  // The dialect of the task; kDefaultDialect until another is chosen. What one dialect has found the other knows
  // nothing of.
  void Choose(EDialect id);
  const TDialectRow& Chosen() const { return *chosen_; }
  // The one in use. For Automatic it is the exact one until the target is known; see Settle.
  const TDialectRow& Used() const { return *used_; }
  // Why it is used, as in "the target's server is MariaDB 10.11.6"; empty where the user has chosen, and as long as
  // nothing is known of the target.
  const std::string& Why() const { return why_; }
  // "Dialect: exact (automatic: the target's server is MariaDB 10.11.6)", "Dialect: standard".
  std::string DialectLine() const;
  // Of Automatic: looks at the target, which is connected or a file, and uses the dialect that fits it. Comparisons do
  // so by themselves. Raises what asking the server's version raises.
  void Settle();
  // What every comparison from here on has to grant; raises for a wish that the dialect has no way to grant.
  void Take(const TComparisonWishes& wishes);
  TDialect& Dialect() { return *dialect_; }
  const TDialect& Dialect() const { return *dialect_; }

  // Takes the pair and connects both, the reference first.
  void OpenTask(std::unique_ptr<TDBConn> reference, std::unique_ptr<TDBConn> target);
  // Takes the pair as it is. That is enough for a comparison, which connects both sides anew by itself; a script may
  // need a target that was connected before: see TDialectTraits.
  void TakeTask(TTaskConnections pair);
  // Compares the pair in the dialect of the task; see TDialect. A reference that cannot be compared truthfully is an
  // error before any action; see CheckComparable.
  std::unique_ptr<TDBConn> Compare();
  // Drops what comparisons have found so far, of whatever pair.
  void Forget();
  // What the last comparison has to say: how the dialect was chosen, if by itself, and the dialect's own lines.
  TStringList Log() const;
  TStringList ChoiceLog() const;  // the first of these alone
  // Another dialect that reads the table at which the last comparison ended; null for none.
  const TDialectRow* DialectThatReads();
  // Another dialect that fits the connected target, after a run in which the server did not know a statement's
  // language; null for none.
  const TDialectRow* DialectThatFits();

  TRunCare Care;  // of the runs from here on
  // Runs a text on the target, in the dialect of the task. `RunReport` tells how far it came. A connection that was
  // lost since it was last used, as while somebody read a question, is made anew first.
  void RunScript(const std::string& text);
  // Called as a run goes on; see TScriptRunner.
  void WatchRuns(std::function<void(const TRunReport& report)> watch) { runner_.OnProgress = std::move(watch); }
  const TRunReport& RunReport() const { return runner_.Report(); }

 private:
  void Use(EDialect id, const std::string& why);

  TScriptRunner runner_;
  TDialectUse use_;
  TDialectParts parts_;
  const TDialectRow* chosen_;
  const TDialectRow* used_ = nullptr;
  std::string why_;
  bool unknown_language_ = false;  // ended the last run
  TComparisonWishes wishes_;
  std::unique_ptr<TDialect> dialect_;
};

}  // namespace velmora
