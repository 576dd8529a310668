#include "app/ScriptRunner.h"

#include <algorithm>

#include "core/Host.h"
#include "util/Errors.h"
#include "util/Text.h"
#include "util/Words.h"

namespace velmora {

namespace {

// Whether a server commits at this statement, whatever the transaction.
bool CommitsByItself(const std::string& statement) {
  std::size_t start = 0;
  std::string_view word;
  StrNextWord(statement, 1, start, word);
  return InList(LowerText(word), {"create", "alter", "drop", "rename", "truncate"});
}

}  // namespace

std::size_t TRunReport::InForce() const {
  if (committed) return executed;
  if (settled) return *settled;
  const auto end = statements.begin() + static_cast<std::ptrdiff_t>(executed);
  const bool ended = std::any_of(statements.begin(), end,
                                 [](const TScriptStatement& statement) { return CommitsByItself(statement.text); });
  return ended ? executed : 0;
}

bool TRunReport::CommitUnknown() const {
  return lost && !committed && (committing || (failed && CommitsByItself(statements[*failed].text)));
}

void TScriptRunner::RunScript(const std::string& text, bool useTransaction, TScriptSplitter split) {
  TDBConn& target = *connections_.target;
  report_ = {};
  bool done = false;
  RunGuarded(
      [&] {
        if (useTransaction) target.StartTransaction();
        progress_.ShowSimple("Analyzing script...");
        TScriptPieces cut = split(text);
        report_.statements = std::move(cut.statements);
        Execute(target, cut.pieces);
        report_.committing = true;
        if (useTransaction) target.Commit();
        report_.committed = done = true;
      },
      [&] {
        if (!done) Settle(target, true);
        RunGuarded([&] { RollBack(target, done); }, [&] { progress_.Finish(); });
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
void TScriptRunner::Execute(TDBConn& target, std::size_t pieces) {
  progress_.ShowOneBar("Executing script...", static_cast<std::int64_t>(pieces));
  for (std::size_t i = 0; i < report_.statements.size(); ++i) {
    const TScriptStatement& statement = report_.statements[i];
    progress_.StepTotal();
    try {
      target.ExecSQL(statement.text);
    } catch (...) {
      report_.failed = i;
      editor_.SetCaret(statement.position);
      editor_.ScrollToLine(editor_.CaretLine());
      editor_.MarkLine(editor_.CaretLine());
      throw;
    }
    ++report_.executed;
    Settle(target, false);
    Host().ProcessMessages();
  }
}

}  // namespace velmora
