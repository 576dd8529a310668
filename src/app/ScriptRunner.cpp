// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/ScriptRunner.h"

#include <algorithm>
#include <memory>

#include "core/Host.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Lists.h"
#include "util/Text.h"
#include "util/Words.h"

namespace velmora {

namespace {

constexpr char kPutBack[] = "What it was to replace was put back";
constexpr char kNotPutBack[] = "What it was to replace could not be put back: %s; the statement was: %s";
constexpr char kLost[] = "What it was to replace may be gone; this brings it back: %s";

std::string FirstWord(const std::string& statement) {
  std::size_t start = 0;
  std::string_view word;
  StrNextWord(statement, 1, start, word);
  return LowerText(word);
}

// Whether a server commits at this statement, whatever the transaction.
bool CommitsByItself(const std::string& statement) {
  return InList(FirstWord(statement), {"create", "alter", "drop", "rename", "truncate"});
}

class TStopwatch {
 public:
  double Seconds() const { return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count(); }

 private:
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

// "Warning 1265: Data truncated for column 'a' at row 1", a line each. What can't be told is left out: the statement
// ran.
std::string Warnings(TDBConn& target) {
  TStringList lines;
  if (target.GetConnectionObject().WarningCount() == 0) return {};
  try {
    const std::unique_ptr<TDataset> rows = target.OpenQuery("show warnings");
    for (; !rows->Eof(); rows->Next())
      lines.push_back(
          Format("%s %s: %s", VarToText(rows->Value(0)), VarToText(rows->Value(1)), VarToText(rows->Value(2))));
  } catch (const EVelmora&) {
  }
  return JoinList(lines, "\n");
}

}  // namespace

std::size_t TRunReport::InForce() const {
  if (committed) return executed;
  if (settled) return *settled;
  const auto end = statements.begin() + static_cast<std::ptrdiff_t>(executed);
  const bool committed_by_one = std::any_of(
      statements.begin(), end, [](const TScriptStatement& statement) { return CommitsByItself(statement.text); });
  return committed_by_one ? executed : 0;
}

bool TRunReport::CommitUnknown() const {
  return lost && !committed && (committing || (failed && CommitsByItself(statements[*failed].text)));
}

// Settings are the session's. Of a list of tables to drop some may be gone, of rows without a transaction some written.
bool TRunReport::DidNothing() const {
  const auto is_setting = [](const TScriptStatement& statement) { return FirstWord(statement.text) == "set"; };
  const bool whole =
      !failed || (InList(FirstWord(statements[*failed].text), {"alter", "create", "set"}) && !runs[*failed].in_steps);
  const auto end = statements.begin() + static_cast<std::ptrdiff_t>(executed);
  return !lost && whole && std::all_of(statements.begin(), end, is_setting);
}

void TScriptRunner::RunScript(const std::string& text, const TRunWishes& wishes, TScriptSplitter split) {
  TDBConn& target = *connections_.target;
  report_ = {};
  bool done = false;
  const TStopwatch watch;
  RunGuarded(
      [&] {
        if (wishes.transaction) target.StartTransaction();
        progress_.ShowSimple("Analyzing script...");
        TScriptPieces cut = split(text);
        report_.statements = std::move(cut.statements);
        report_.runs.resize(report_.statements.size());
        Tell();
        Execute(target, cut.pieces, wishes);
        report_.committing = true;
        if (wishes.transaction) target.Commit();
        report_.committed = done = true;
      },
      [&] {
        report_.cancelled = !done && Host().Cancelling();
        if (!done) Settle(target, true);
        report_.seconds = watch.Seconds();
        RunGuarded([&] { RollBack(target, done); },
                   [&] {
                     progress_.Finish();
                     report_.ended = true;
                     Tell();
                   });
      });
}

// Without an open transaction all that ran is in force: a statement has ended it, or there was none.
void TScriptRunner::Settle(TDBConn& target, bool after_error) {
  report_.lost = !target.GetConnected();
  const std::optional<bool> open =
      report_.lost ? std::nullopt : target.GetConnectionObject().TransactionOpen(after_error);
  if (!open) return;
  if (!report_.settled) report_.settled = 0;
  if (!*open) report_.settled = report_.executed;
}

// An error of the rollback must not hide the one that it is for.
void TScriptRunner::RollBack(TDBConn& target, bool done) {
  try {
    if (target.InTransaction()) target.Rollback();
  } catch (const EVelmora&) {
    if (done) throw;
  }
}

// Deliberate: the bar's maximum counts the empty pieces of the cut too, so a script with comments ends short of it.
void TScriptRunner::Execute(TDBConn& target, std::size_t pieces, const TRunWishes& wishes) {
  progress_.ShowOneBar("Executing script...", static_cast<std::int64_t>(pieces));
  try {
    while (report_.executed < report_.statements.size()) {
      progress_.StepTotal();
      RunNext(target, wishes);
      ++report_.executed;
      Settle(target, false);
      Tell();
      Host().ProcessMessages();
    }
  } catch (...) {
    PutBack(target, report_.executed, wishes);
    throw;
  }
}

void TScriptRunner::MarkFailed(std::size_t index) {
  report_.failed = index;
  editor_.SetCaret(report_.statements[index].position);
  editor_.ScrollToLine(editor_.CaretLine());
  editor_.MarkLine(editor_.CaretLine());
}

// What ended the run matters more than an error of this, which is told beside it. Settings may stand between what took
// an object away and what makes it again.
void TScriptRunner::PutBack(TDBConn& target, std::size_t index, const TRunWishes& wishes) {
  std::size_t makes = index;
  while (makes < report_.statements.size() && FirstWord(report_.statements[makes].text) == "set") ++makes;
  if (makes == report_.statements.size()) return;
  TStatementRun& run = report_.runs[index];
  const TStringList statements = wishes.put_back ? wishes.put_back(report_.statements[makes].text) : TStringList();
  if (statements.empty()) return;
  if (!target.GetConnected()) {
    run.put_back = Format(kLost, JoinList(statements, "; "));
    return;
  }
  run.put_back = kPutBack;
  for (const std::string& statement : statements) {
    try {
      target.ExecSQL(statement);
    } catch (const EVelmora& error) {
      run.put_back = Format(kNotPutBack, error.what(), statement);
    }
  }
}

void TScriptRunner::RunNext(TDBConn& target, const TRunWishes& wishes) {
  const std::size_t index = report_.executed;
  TStatementRun& run = report_.runs[index];
  Begin(run);
  const TStopwatch watch;
  try {
    const std::string& text = report_.statements[index].text;
    const std::string sent = wishes.sent ? wishes.sent(text) : text;
    const std::int64_t rows = wishes.execute ? wishes.execute(sent, run) : target.ExecSQL(sent);
    run.seconds = watch.Seconds();
    if (rows >= 0) run.rows = rows;
  } catch (const std::exception& error) {
    const auto* told = dynamic_cast<const EMySqlException*>(&error);
    run.seconds = watch.Seconds();
    run.error = told == nullptr ? 0 : told->Number();
    run.words = error.what();
    run.state = Host().Cancelling() ? ERunState::Cancelled : ERunState::Failed;
    MarkFailed(index);
    throw;
  }
  if (wishes.warnings && run.words.empty()) run.words = Warnings(target);
  run.state = ERunState::Done;
}

// Whoever is told may end the run before the server has heard of the statement.
void TScriptRunner::Begin(TStatementRun& run) const {
  run.state = ERunState::Running;
  try {
    Tell();
  } catch (...) {
    run.state = ERunState::NotRun;
    throw;
  }
}

}  // namespace velmora
