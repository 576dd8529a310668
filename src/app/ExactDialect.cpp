// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/ExactDialect.h"

#include <algorithm>
#include <set>

#include "app/CopyTool.h"
#include "app/FaultPlace.h"
#include "app/LockWaits.h"
#include "app/MovedTarget.h"
#include "app/PlannedStatements.h"
#include "app/RunSession.h"
#include "app/RunTelling.h"
#include "core/CreationTexts.h"
#include "exact/objects/ShownView.h"
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
                                    .has_options = true,
                                    .takes_care = true};

constexpr char kSeeMore[] = ": grant it the rights to see them, or leave them out of the comparison";
constexpr char kMoved[] = "The target has changed since it was compared, and nothing was run: %s. Compare anew";

std::string UnsafeLine(const TChange& change) { return change.table + ": " + change.LogText() + ": " + change.unsafe; }

// Bodies are kept as they are sent: with line ends as the reference has them, not as the script does.
TRunWishes WishesFor(const TPlannedStatements& planned) {
  const auto object = [&planned](const std::string& text) {
    const TPlanStatement* found = planned.Find(text);
    return found == nullptr || found->object.empty() ? nullptr : found;
  };
  TRunWishes wishes{.warnings = true};
  wishes.sent = [object](const std::string& text) {
    const TPlanStatement* found = object(text);
    return found == nullptr ? text : found->text;
  };
  wishes.put_back = [object](const std::string& text) {
    const TPlanStatement* found = object(text);
    return found == nullptr ? TStringList() : found->put_back;
  };
  return wishes;
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

// " (FILE: line 12)" where the reference is a file, or a folder of files.
std::string PlaceIn(TDBConn* reference, const TObjectDifference& object) {
  const std::string place = ObjectPlace(reference, object.kind, object.name);
  return place.empty() ? place : " (" + place + ")";
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
  TFindings findings = {sync.Skipped(),
                        sync.NotFollowed(),
                        sync.NotSeen(),
                        sync.Objects(),
                        sync.DifferencesLeft(),
                        sync.NothingLeft(),
                        sync.Unmade(),
                        sync.Accepted(),
                        sync.MadeColumns(),
                        sync.LeftOut(),
                        {},
                        sync.RenamesRefused()};
  if (sync.NothingNamed())
    findings.not_granted.insert(findings.not_granted.end(), sync.IdleOnly().begin(), sync.IdleOnly().end());
  for (const TRenameOffer& offer : sync.RenameOffers()) findings.renames.push_back(offer.rename.Text());
  return findings;
}

// What is left alone, could not be read, and could not be proved.
std::vector<TRemark> TExactDialect::Remarks(TDBConn* /*compared*/) const {
  std::vector<TRemark> remarks;
  const auto tell = [&](bool warning, std::string text) { remarks.push_back({warning, std::move(text)}); };
  const auto tell_why = [&](bool warning, std::string text) { remarks.push_back({warning, std::move(text), true}); };
  for (const std::string& line : sync.CaseTwins()) tell(false, line);
  for (const std::string& line : sync.IdleOnly()) remarks.push_back({true, line, sync.NothingNamed()});
  if (sync.Verbose)
    for (const std::string& line : sync.IdleExcept()) tell(false, line);
  if (sync.LeftOut().Any()) tell(false, "Left out: " + sync.LeftOut().Text());
  for (const std::string& line : sync.KeysToNothing()) tell(true, line);
  for (const std::string& line : sync.RenamesRefused()) tell_why(true, line);
  for (const std::string& line : sync.RenamesTold()) tell(false, line);
  for (const TRenameOffer& offer : sync.RenameOffers()) tell(false, offer.Text());
  for (const std::string& line : sync.LeftAlone()) tell(false, line);
  for (const TObjectDifference& object : sync.Objects())
    tell_why(false, Format("Not the same: %s %s: %s", object.kind, object.name, object.difference) +
                        PlaceIn(parts_.connections.reference.get(), object));
  for (const std::string& line : sync.ObjectRemarks()) tell(false, line);
  for (const std::string& statement : sync.NotFollowed()) tell_why(true, "not followed: " + statement);
  for (const TKindsNotSeen& kinds : sync.NotSeen()) tell_why(true, kinds.Text() + kSeeMore);
  for (const TSkippedTable& skipped : sync.Skipped())
    tell_why(true, Format("%s: table %s is skipped: %s", skipped.side, skipped.table, skipped.reason));
  for (const TMadeColumn& column : sync.MadeColumns())
    if (column.level == EMadeLevel::Warning) tell(true, column.Text());
  for (const TUnmadeElement& element : sync.Unmade()) tell_why(true, "no form in MySQL: " + element.Text());
  if (const int left = sync.DifferencesLeft(); left > 0)
    tell_why(true, Format("by the proof in memory the script would leave %s",
                          Counted(static_cast<std::size_t>(left), "difference")));
  return remarks;
}

std::string TExactDialect::Refusal() const { return JoinList(sync.RenamesRefused(), "\n"); }

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
  target = sync.TargetText(OldName(sync, table));
}

void TExactDialect::ObjectTexts(int action, std::string& reference, std::string& target) {
  const std::vector<TObjectChange>& changes = sync.AllObjectChanges();
  const auto change = std::ranges::find(changes, action, &TObjectChange::id);
  if (change == changes.end()) return;
  const auto shown = [&](const std::string& text) { return change->kind == "view" ? ShownView(text) : text; };
  reference = shown(change->new_object.text);
  target = shown(change->old_object.text);
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

std::string TExactDialect::UndoScript() const {
  TLineEditor editor;
  sync.GenerateUndo(editor, parts_.clock);
  return editor.Text();
}

TStringList TExactDialect::AboveAlgorithm(const std::string& script) const {
  return sync.AboveAlgorithm(TPlannedStatements(sync.Plan()).In(script));
}

// What a run has changed before is no stranger's work.
void TExactDialect::CheckUnmoved(std::vector<TPlanStatement> planned) const {
  std::erase_if(planned, [](const TPlanStatement& statement) { return statement.object == "session"; });
  if (has_run_ || planned.empty()) return;
  const TStringList moved = MovedSince(sync, planned, *parts_.connections.target);
  if (!moved.empty()) throw EMovedTarget(Format(kMoved, JoinList(moved, "; ")));
}

void TExactDialect::RunScript(const std::string& text, const TRunCare& care) {
  const TPlannedStatements planned(sync.Plan());
  const std::vector<TPlanStatement> holds = planned.In(text);
  if (!holds.empty() && !Refusal().empty()) RaiseError(Refusal());
  if (const TStringList above = sync.AboveAlgorithm(holds); !above.empty()) RaiseError(JoinList(above, "\n"));
  TDBConn& target = *parts_.connections.target;
  if (auto* texts = dynamic_cast<TCreationTexts*>(&target)) texts->PrepareExactTexts();
  CheckUnmoved(holds);
  has_run_ = true;
  TRunSession session(target);
  TLockWaits waits(target, care, parts_.progress);
  TCopyToolRuns tool(target, care);
  TRunWishes wishes = WishesFor(planned);
  wishes.execute = [&](const std::string& sent, TStatementRun& run) -> std::int64_t {
    const TPlanStatement* known = planned.Find(sent);
    if (!tool.Takes(sent, known == nullptr ? ELockClass::Unknown : known->lock)) return waits.Execute(sent, run);
    run.in_steps = true;
    tool.Run(sent);
    return -1;
  };
  RunGuarded(
      [&] {
        try {
          parts_.runner.RunScript(text, wishes, SplitExactScript);
        } catch (...) {
          session.PutBack();
          throw;
        }
      },
      [&waits] { waits.PutBack(); });
}

}  // namespace velmora
