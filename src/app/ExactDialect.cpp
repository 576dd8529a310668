#include "app/ExactDialect.h"

#include <algorithm>
#include <set>

#include "app/CopyTool.h"
#include "app/LockWaits.h"
#include "app/MovedTarget.h"
#include "app/RunTelling.h"
#include "core/CreationTexts.h"
#include "exact/plan/ScriptSafety.h"
#include "foreign/FactReaders.h"
#include "foreign/ForeignTexts.h"
#include "mysqltext/Lexer.h"
#include "mysqltext/TableText.h"
#include "util/Counted.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/OneLine.h"

namespace velmora {

namespace {

constexpr TDialectTraits kTraits = {.has_findings = true,
                                    .applies_statements = true,
                                    .connects_target = true,
                                    .tells_result = true,
                                    .asks_before_run = true,
                                    .ticked_actions = true,
                                    .tells_statements = true,
                                    .aligned_texts = true,
                                    .maps_foreign = true,
                                    .has_options = true};

constexpr char kMoved[] = "The target has changed since it was compared, and nothing was run: %s. Compare anew";

std::string UnsafeLine(const TChange& change) { return change.table + ": " + change.LogText() + ": " + change.unsafe; }

// What made the run fail matters more than an error of this.
void RestoreChecks(TDBConn& target, const std::string& checks) {
  try {
    target.ExecSQL("set foreign_key_checks = " + checks);
  } catch (const EVelmora&) {
  }
}

bool ReadsTable(TDBConn* conn, const std::string& table) {
  auto* texts = dynamic_cast<TCreationTexts*>(conn);
  if (texts == nullptr) return false;
  if (!conn->GetConnected()) conn->Connect();
  std::string text;
  texts->PrepareExactTexts();
  texts->ShowCreateTable(table, text);
  ReadTableText(text);
  return true;
}

}  // namespace

TExactDialect::TExactDialect(const TDialectParts& parts)
    : TDialect(kTraits), sync(parts.connections, parts.data, parts.tree, parts.progress, parts.log), parts_(parts) {
  sync.OnLogin = parts_.use.logged_in;
  sync.MakeTexts = [this](TDBConn& reference) -> std::unique_ptr<TTextMaker> {
    if (!HasFactReader(reference)) return nullptr;
    return std::make_unique<TForeignTexts>(reference, foreign_);
  };
}

void TExactDialect::Take(const TComparisonWishes& wishes) {
  sync.Collations = wishes.collations;
  foreign_ = wishes.foreign;
  sync.Wishes = wishes.exact;
  sync.Verbose = wishes.verbose;
}

std::unique_ptr<TDBConn> TExactDialect::Compare() {
  has_run_ = false;
  sync.Compare();
  return nullptr;
}

TFindings TExactDialect::Findings() const {
  TFindings findings = {
      sync.Skipped(), sync.NotFollowed(), sync.Objects(),     sync.DifferencesLeft(), sync.NothingLeft(),
      sync.Unmade(),  sync.Accepted(),    sync.MadeColumns(), sync.LeftOut(),         {}};
  for (const TRenameOffer& offer : sync.RenameOffers()) findings.renames.push_back(offer.rename.Text());
  return findings;
}

// What is left alone, could not be read, and could not be proved.
std::vector<TRemark> TExactDialect::Remarks(TDBConn* /*compared*/) const {
  std::vector<TRemark> remarks;
  const auto tell = [&](bool warning, std::string text) { remarks.push_back({warning, std::move(text)}); };
  for (const std::string& line : sync.CaseTwins()) tell(false, line);
  if (sync.LeftOut().Any()) tell(false, "Left out: " + sync.LeftOut().Text());
  for (const std::string& line : sync.KeysToNothing()) tell(true, line);
  for (const std::string& line : sync.RenamesTold()) tell(false, line);
  for (const TRenameOffer& offer : sync.RenameOffers()) tell(false, offer.Text());
  for (const std::string& line : sync.LeftAlone()) tell(false, line);
  for (const TObjectDifference& object : sync.Objects())
    tell(false, Format("Not the same: %s %s: %s", object.kind, object.name, object.difference));
  for (const std::string& statement : sync.NotFollowed()) tell(true, "not followed: " + statement);
  for (const TSkippedTable& skipped : sync.Skipped())
    tell(true, Format("%s: table %s is skipped: %s", skipped.side, skipped.table, skipped.reason));
  for (const TMadeColumn& column : sync.MadeColumns())
    if (column.level == EMadeLevel::Warning) tell(true, column.Text());
  for (const TUnmadeElement& element : sync.Unmade()) tell(true, "no form in MySQL: " + element.Text());
  if (const int left = sync.DifferencesLeft(); left > 0)
    tell(true, Format("by the proof in memory the script would leave %s",
                      Counted(static_cast<std::size_t>(left), "difference")));
  return remarks;
}

bool TExactDialect::Reads(const std::string& table) {
  try {
    return ReadsTable(parts_.connections.reference.get(), table) && ReadsTable(parts_.connections.target.get(), table);
  } catch (const EAbort&) {
    throw;
  } catch (const EVelmora&) {
    return false;
  }
}

void TExactDialect::TableTexts(const std::string& table, std::string& reference, std::string& target) {
  reference = sync.ReferenceText(table);
  target = sync.TargetText(table);
}

void TExactDialect::ObjectTexts(int action, std::string& reference, std::string& target) {
  const std::vector<TObjectChange>& changes = sync.AllObjectChanges();
  const auto change = std::ranges::find(changes, action, &TObjectChange::id);
  if (change == changes.end()) return;
  reference = change->new_object.text;
  target = change->old_object.text;
}

TAlignedRows TExactDialect::Aligned(const std::string& reference, const std::string& target) const {
  return AlignTexts(reference, target, sync.Equivalences);
}

std::map<int, std::string> TExactDialect::UnsafeActions() const {
  std::map<int, std::string> reasons;
  for (const TChange& change : sync.Changes())
    if (!change.unsafe.empty()) reasons.emplace(change.id, change.unsafe);
  for (const TObjectChange& change : sync.ObjectChanges())
    if (!change.unsafe.empty()) reasons.emplace(change.id, change.unsafe);
  return reasons;
}

// A statement of the plan is told by the actions that it makes.
TStringList TExactDialect::UnsafeStatements(const std::string& script) {
  TStringList planned, others;
  const std::vector<TPlanStatement> plan = sync.Plan();
  std::set<int> actions;
  for (const TStatementRisk& risk :
       ScriptRisks(script, plan, [this](const std::string& table) { return TargetStructure(table); })) {
    if (risk.planned != nullptr && !risk.planned->unsafe.empty())
      actions.insert(risk.planned->actions.begin(), risk.planned->actions.end());
    else
      others.push_back(Format("line %d: %s: %s", LineOf(script, risk.start), ShownStatement(OnOneLine(risk.text)),
                              JoinList(risk.reasons, "; ")));
  }
  for (const TChange& change : sync.Changes())
    if (!change.unsafe.empty() && actions.contains(change.id)) planned.push_back(UnsafeLine(change));
  for (const TObjectChange& change : sync.ObjectChanges())
    if (!change.unsafe.empty() && actions.contains(change.id))
      planned.push_back(change.LogText() + ": " + change.unsafe);
  planned.insert(planned.end(), others.begin(), others.end());
  return planned;
}

// As the target has the table now, if it can be asked.
std::optional<std::string> TExactDialect::TargetStructure(const std::string& table) {
  TDBConn* target = parts_.connections.target.get();
  auto* texts = dynamic_cast<TCreationTexts*>(target);
  std::string text = sync.TargetText(table);
  if (texts != nullptr && target->GetConnected()) {
    try {
      texts->PrepareExactTexts();
      texts->ShowCreateTable(table, text);
    } catch (const EAbort&) {
      throw;
    } catch (const EVelmora&) {
      return std::nullopt;
    }
  }
  return text.empty() ? std::nullopt : std::optional(text);
}

// Bodies are kept as they are sent: with line ends as the reference has them, not as the script does.
TRunWishes TExactDialect::RunWishes() const {
  auto planned = std::make_shared<std::map<std::string, TPlanStatement>>();
  for (TPlanStatement& statement : sync.Plan())
    if (!statement.object.empty()) {
      std::string text = WithPlainLineEnds(statement.text);
      planned->emplace(std::move(text), std::move(statement));
    }
  const auto find = [planned](const std::string& text) { return planned->find(WithPlainLineEnds(text)); };
  TRunWishes wishes{.warnings = true};
  wishes.sent = [planned, find](const std::string& text) {
    const auto found = find(text);
    return found == planned->end() ? text : found->second.text;
  };
  wishes.put_back = [planned, find](const std::string& text) {
    const auto found = find(text);
    return found == planned->end() ? TStringList() : found->second.put_back;
  };
  return wishes;
}

std::string TExactDialect::UndoScript() const {
  TLineEditor editor;
  sync.GenerateUndo(editor, parts_.clock);
  return editor.Text();
}

// What a run has changed before is no stranger's work.
void TExactDialect::CheckUnmoved(const std::string& script) const {
  std::set<std::string> texts;
  for (const TScriptStatement& statement : SplitExactScript(script).statements)
    texts.insert(WithPlainLineEnds(statement.text));
  std::vector<TPlanStatement> planned = sync.Plan();
  std::erase_if(planned, [&](const TPlanStatement& statement) {
    return statement.object == "session" || !texts.contains(WithPlainLineEnds(statement.text));
  });
  if (has_run_ || planned.empty()) return;
  const TStringList moved = MovedSince(sync, planned, *parts_.connections.target);
  if (!moved.empty()) RaiseError(Format(kMoved, JoinList(moved, "; ")));
}

// A script that ends early has not come to the line that puts the checks back.
void TExactDialect::RunScript(const std::string& text, const TRunCare& care) {
  if (const TStringList above = sync.AboveAlgorithm(); !above.empty()) RaiseError(JoinList(above, "\n"));
  TDBConn& target = *parts_.connections.target;
  if (auto* texts = dynamic_cast<TCreationTexts*>(&target)) texts->PrepareExactTexts();
  CheckUnmoved(text);
  has_run_ = true;
  TVariant checks;
  target.GetResultSQL("select @@foreign_key_checks", checks);
  TLockWaits waits(target, care, parts_.progress);
  TRunWishes wishes = RunWishes();
  TCopyToolRuns tool(target, care);
  std::map<std::string, ELockClass> locks;
  for (const TPlanStatement& statement : sync.Plan()) locks.emplace(WithPlainLineEnds(statement.text), statement.lock);
  wishes.execute = [&](const std::string& sent, TStatementRun& run) -> std::int64_t {
    const auto planned = locks.find(WithPlainLineEnds(sent));
    if (!tool.Takes(sent, planned == locks.end() ? ELockClass::Unknown : planned->second))
      return waits.Execute(sent, run);
    tool.Run(sent);
    return -1;
  };
  RunGuarded(
      [&] {
        try {
          parts_.runner.RunScript(text, wishes, SplitExactScript);
        } catch (...) {
          if (target.GetConnected()) RestoreChecks(target, VarToText(checks));
          throw;
        }
      },
      [&waits] { waits.PutBack(); });
}

}  // namespace velmora
