#pragma once

// The open task and what a user can do with it, without windows: the windows and the companion both drive this.

#include <memory>
#include <optional>
#include <string>

#include "app/Dialect.h"
#include "app/LineDifference.h"
#include "app/ScriptRunner.h"
#include "exact/run/ExactSync.h"
#include "sync/ActionTree.h"
#include "sync/Data.h"
#include "sync/MessageLog.h"
#include "sync/Progress.h"
#include "sync/ScriptEditor.h"
#include "sync/ScriptGenerator.h"
#include "sync/Sync.h"
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
  TDBSync sync;      // of the standard dialect
  TExactSync exact;  // of the exact one
  EDialect dialect = EDialect::Standard;

  // Takes the pair and connects both, the reference first.
  void OpenTask(std::unique_ptr<TDBConn> reference, std::unique_ptr<TDBConn> target);
  // Takes the pair as it is. That is enough for a comparison, which connects both sides anew by itself; a script needs
  // a target that was connected before.
  void TakeTask(TTaskConnections pair);
  // Compares the pair in the dialect of the task. A reference that cannot be compared truthfully is an error before any
  // action; see CheckComparable. The actions are in `data` and `tree` afterwards, the log in
  // ActionLog. On an error those found so far stay.
  void Compare();
  // Drops what comparisons have found so far, of whatever pair.
  void Forget();
  bool Identical() const;
  bool TablesIdentical() const;  // whatever else the databases hold
  const TStringList& ActionLog() const;
  // Of the last comparison, for messages: the table that it came to, empty when it ended well or came to none; whether
  // the target's connection was gone when it ended.
  const std::string& TableUnderWay() const;
  bool TargetLost() const;
  // Whether the exact dialect reads the table at which a comparison of the standard one ended.
  bool ExactDialectReads();
  // Why the actions that are left may lose data, "TABLE: ACTION: REASON" each; the standard dialect knows of none.
  TStringList UnsafeActions() const;
  // The same of a script, whoever wrote it, by the text that would run: of statements of the plan the lines of
  // UnsafeActions, of any other "line N: STATEMENT: REASONS". Nothing need have been compared; where a statement's cost
  // hangs on a table's structure, a connected target is asked for it.
  TStringList UnsafeStatements(const std::string& script);
  // Whether the reference, once compared, turned out to have no table: a dump that failed, more often than a wish. What
  // to say of it: EmptyReferenceText.
  bool ReferenceIsEmpty() const;
  // What the target's rows say to the actions that are left, each asked for at most `seconds`, 0 for as long as it
  // takes; the standard dialect asks nothing.
  std::vector<TRowFinding> CheckRows(int seconds);
  // The creation texts of a table: in the exact dialect as the servers print them, otherwise built of what was read.
  // Empty for a side without the table.
  void TableTexts(const std::string& table, std::string& reference, std::string& target);
  // The lines of these two texts that differ by what the comparison counts; the standard dialect tells of none.
  TLinePair MarkedLines(const std::string& reference, const std::string& target) const;

  void GenerateScript();
  // The statements that a run of `text` executes.
  TScriptPieces Statements(const std::string& text) const;
  // Runs a text on the target in one transaction; see TScriptRunner. `RunReport` tells how far it came. In the exact
  // dialect foreign key checks are after a failure as they were before. A connection that was lost since it was last
  // used, as while somebody read a question, is made anew first.
  void RunScript(const std::string& text);
  const TRunReport& RunReport() const { return runner_.Report(); }

 private:
  bool Exact() const { return dialect == EDialect::Exact; }
  TScriptSplitter Splitter() const { return Exact() ? SplitExactScript : SplitScript; }
  void RunExactScript(const std::string& text);
  std::optional<std::string> TargetStructure(const std::string& table);

  TScriptEditor& editor_;
  const TClock& clock_;
  TScriptGenerator generator_;
  TScriptRunner runner_;
};

}  // namespace velmora
