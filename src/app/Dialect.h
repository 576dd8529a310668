// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The port to a dialect: what the open task can be asked and told, whichever way it is compared.

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "app/AlignedTexts.h"
#include "app/Difference.h"
#include "app/RunCare.h"
#include "app/ScriptRunner.h"
#include "exact/compare/Collations.h"
#include "exact/run/ActionLock.h"
#include "exact/run/ExactWishes.h"
#include "exact/run/PairReader.h"
#include "exact/run/RowChecks.h"
#include "exact/run/ScratchDatabase.h"
#include "exact/run/TextMaker.h"
#include "foreign/ForeignWishes.h"
#include "sync/ActionTree.h"
#include "sync/Data.h"
#include "sync/MessageLog.h"
#include "sync/Progress.h"
#include "sync/ScriptEditor.h"
#include "sync/TaskConnections.h"
#include "util/Clock.h"
#include "util/Lists.h"

namespace velmora {

// What a dialect knows of how it came to be used.
struct TDialectUse {
  std::string note;  // of its choice, for the script's header; empty where the user has chosen
  // To be called in a comparison when both sides have taken the login and were not asked for more. What it raises ends
  // the comparison.
  std::function<void()> logged_in;
};

// What a dialect works on and tells; all of it outlives the dialect.
struct TDialectParts {
  TTaskConnections& connections;
  TdmData& data;
  TActionTree& tree;
  TProgress& progress;
  TMessageLog& log;
  TScriptEditor& editor;
  const TClock& clock;
  TScriptRunner& runner;
  const TDialectUse& use;
};

// How working with a dialect goes, as far as whoever drives it has to know.
struct TDialectTraits {
  bool has_findings = false;        // its comparison finds more than actions
  bool applies_statements = false;  // files are read with their statements on tables applied, as a server would
  bool connects_target = false;     // a comparison leaves a target that a script can run on
  bool tells_result = false;        // comparing again after a run tells what it has reached
  bool asks_before_run = false;     // a run is always asked about, as what it can lose is known of any text
  bool ticked_actions = false;      // it tells its differences, which are ticked or not: see Differences
  bool tells_statements = false;    // what became of each statement of a run is shown
  bool aligned_texts = false;       // the texts of a table are read side by side, line by line
  bool maps_foreign = false;        // references that are not MySQL can be compared
  bool has_options = false;         // what TExactWishes asks for can be granted
  bool takes_care = false;          // a run takes care of what TRunCare asks for
};

// What the user asks of a comparison beyond the pair.
struct TComparisonWishes {
  TCollationMap collations{};     // names of the reference that the target has others for
  bool verify_on_server = false;  // VerifyOnServer will be called
  bool via_server = false;        // the reference's statements are read by the target's server
  TForeignWishes foreign{};       // of a reference that is not MySQL
  bool verbose = false;           // the log names what it otherwise counts
  TExactWishes exact{};           // which the exact dialect alone can grant
};

// What a comparison found beside its actions.
struct TFindings {
  std::vector<TSkippedTable> skipped;      // tables that could not be compared
  TStringList not_followed;                // statements of a script that may have made or changed tables unseen
  std::vector<TKindsNotSeen> not_seen;     // of servers whose logins may not see all
  std::vector<TObjectDifference> objects;  // those beside tables that differ
  int differences_left = 0;                // that the whole script would leave, by a proof in memory
  std::string nothing_left;                // what a proof says that leaves none
  std::vector<TUnmadeElement> unmade{};    // what a reference that is not MySQL has and MySQL has no form for
  std::vector<TUnmadeElement> accepted{};  // of what has none, that the user goes on without
  std::vector<TMadeColumn> mapping{};      // what became of its columns
  TLeftOut left_out{};                     // by the selection
  TStringList renames{};                   // that may be meant, as ReadRename takes them
  TStringList not_granted{};               // wishes that keep the two from being identical, and why
};

// What the user should hear of a comparison that ended well.
struct TRemark {
  bool warning = false;  // otherwise a note
  std::string text;
  bool decides = false;  // the two are not identical, or cannot be made so, because of this
};

class TDialect {
 public:
  explicit TDialect(const TDialectTraits& traits) : traits_(traits) {}
  virtual ~TDialect() = default;
  TDialect(const TDialect&) = delete;
  TDialect& operator=(const TDialect&) = delete;

  const TDialectTraits& Traits() const { return traits_; }

  // --- Comparison
  // Before a comparison. Raises for a wish that this dialect has no way to grant.
  virtual void Take(const TComparisonWishes& wishes) = 0;
  // Compares the pair and fills the action rows, which are empty, and the tree; on an error those found so far stay.
  // Gives the target that was compared if a copy has taken its place: a large one takes time to free.
  virtual std::unique_ptr<TDBConn> Compare() = 0;
  virtual void Forget() {}                   // what was compared last
  virtual bool TablesIdentical() const = 0;  // whatever else the databases hold
  virtual bool Identical() const = 0;
  virtual const TStringList& ActionLog() const = 0;
  virtual TFindings Findings() const { return {}; }
  // One for each action row of the last comparison, whether that is still there or not; of `ticked_actions` alone.
  virtual std::vector<TDifference> Differences() const { return {}; }
  virtual std::vector<TRemark> Remarks(TDBConn* compared) const = 0;  // `compared`: what Compare gave, or null
  // Whether the reference, once compared, turned out to have no table: a dump that failed, more often than a wish. What
  // to say of it: EmptyReferenceText.
  virtual bool ReferenceIsEmpty() const = 0;
  // Why no script is to be made of what was compared, nor run; empty for nothing.
  virtual std::string Refusal() const { return {}; }
  // For messages: the table that the last comparison came to, empty when it ended well or came to none; whether the
  // target's connection was gone when it ended.
  virtual const std::string& TableUnderWay() const = 0;
  virtual bool TargetLost() const = 0;
  // Whether this dialect is known to read the table, on both sides; connects them where they are not.
  virtual bool Reads(const std::string& /*table*/) { return false; }

  // --- Tables
  // The creation texts to show; empty for a side without the table.
  virtual void TableTexts(const std::string& table, std::string& reference, std::string& target) = 0;
  // Those of a view, trigger, routine or event that an action is about, by the action's id.
  virtual void ObjectTexts(int /*action*/, std::string& /*reference*/, std::string& /*target*/) {}
  // These two texts side by side, by what the comparison counts.
  virtual TAlignedRows Aligned(const std::string& /*reference*/, const std::string& /*target*/) const { return {}; }

  // --- The script
  virtual std::map<int, std::string> UnsafeActions() const { return {}; }  // why any that is left may lose data, by id
  // What of a script may lose data, whoever wrote it, by the text that would run: of statements that the comparison
  // planned "TABLE: ACTION: REASON", of any other "line N: STATEMENT: REASONS". Nothing need have been compared; where
  // a statement's cost hangs on a table's structure, a connected target is asked for it.
  virtual TStringList UnsafeStatements(const std::string& /*script*/) { return {}; }
  // What making the actions that are left costs others meanwhile, by id; none where nothing is known of that.
  virtual std::map<int, TActionLock> ActionLocks() const { return {}; }
  // Statements of `script` that the last comparison planned, and that the user does not want to be run that way, a line
  // each.
  virtual TStringList AboveAlgorithm(const std::string& /*script*/) const { return {}; }
  // The statements of `script` that the last comparison planned for the actions that are left, in order.
  virtual std::vector<TPlannedStatement> Planned(const std::string& /*script*/) const { return {}; }
  // What the target's rows say to the actions that are left, each asked for at most `seconds`, 0 for as long as it
  // takes.
  virtual std::vector<TRowFinding> CheckRows(int /*seconds*/) { return {}; }
  // Tries the script in a scratch database of the target's server. Gives the differences that are left there.
  virtual int VerifyOnServer(const TScratchPorts& ports) = 0;
  virtual void GenerateScript() = 0;  // for the actions that are left, into the editor
  // The script that leads back from what a run of that script makes of the target; empty where nobody can tell.
  virtual std::string UndoScript() const { return {}; }
  virtual TScriptPieces Statements(const std::string& script) const = 0;  // that a run of it executes
  // Runs a text on the connected target in one transaction; see TScriptRunner. A dialect takes of `care` what it can.
  virtual void RunScript(const std::string& text, const TRunCare& care) = 0;

 private:
  const TDialectTraits& traits_;
};

}  // namespace velmora
