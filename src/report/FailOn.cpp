// SPDX-License-Identifier: GPL-3.0-or-later
#include "report/FailOn.h"

#include <algorithm>
#include <map>

#include "app/Difference.h"
#include "core/CreationTexts.h"
#include "lint/LintSource.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kNoKind[] = "\"%s\" is none of data-loss, rebuild, lint";
constexpr char kNotExact[] =
    "--fail-on needs a comparison in the exact dialect, and this was one in the %s dialect: give --dialect exact";
constexpr char kNotCompared[] = "not-compared";
constexpr char kSkipped[] = "table %s of the %s: %s";
constexpr char kNotRead[] = "table %s could not be read: %s";
constexpr char kNobodyKnows[] =
    "nobody knows whether it copies or rebuilds the table: the target's server is not known";

class TFailures {
 public:
  TFailures(TApplication& app, const TFailOnWishes& wishes, const TExactWishes& exact)
      : app_(app), wishes_(wishes), exact_(exact) {}

  std::vector<TFailure> Find() {
    LookAtDifferences();
    if (wishes_.kinds.contains(EFailOn::Lint)) LookAtStructure();
    const TFindings findings = app_.Dialect().Findings();
    for (const TSkippedTable& table : findings.skipped)
      failures_.push_back({kNotCompared, Format(kSkipped, table.table, table.side, table.reason)});
    for (const std::string& statement : findings.not_followed) failures_.push_back({kNotCompared, statement});
    for (const TKindsNotSeen& kinds : findings.not_seen) failures_.push_back({kNotCompared, kinds.Text()});
    for (const std::string& wish : findings.not_granted) failures_.push_back({kNotCompared, wish});
    return std::move(failures_);
  }

 private:
  void Add(EFailOn kind, std::string text) {
    failures_.push_back({std::string(kFailWords[static_cast<std::size_t>(kind)]), std::move(text)});
  }

  void LookAtDifferences() {
    const std::map<int, TActionLock> locks = app_.Dialect().ActionLocks();
    for (const TDifference& difference : app_.Dialect().Differences()) {
      if (app_.data.mtActions.Find(difference.id) == nullptr) continue;
      const std::string text = OfTable(difference.kind) ? difference.table + ": " + difference.text : difference.text;
      if (wishes_.kinds.contains(EFailOn::DataLoss) && !difference.unsafe.empty())
        Add(EFailOn::DataLoss, Format("%s: %s", text, difference.unsafe));
      if (!wishes_.kinds.contains(EFailOn::Rebuild)) continue;
      if (const std::string cost = CostOf(difference, locks); !cost.empty())
        Add(EFailOn::Rebuild, Format("%s: %s", text, cost));
    }
  }

  // Empty for what neither copies nor rebuilds a table. Of what is in a table that is there a class is told wherever
  // the server is known.
  static std::string CostOf(const TDifference& difference, const std::map<int, TActionLock>& locks) {
    const auto lock = locks.find(difference.id);
    const bool in_table = OfTable(difference.kind) && difference.kind != EDifferenceKind::Table;
    if (lock == locks.end()) return in_table ? kNobodyKnows : "";
    const ELockClass is = lock->second.is;
    return is >= ELockClass::Rebuild && is != ELockClass::ReadersOnly ? lock->second.text : "";
  }

  // Both as the target's server has it.
  void LookAtStructure() {
    TLintSourceWishes wishes{exact_.selection, wishes_.rules, exact_.locks.target_version};
    if (wishes.version.empty())
      if (auto* target = dynamic_cast<TCreationTexts*>(app_.connections.target.get()))
        wishes.version = target->ServerVersion();
    const TLintResult after = LintOf(*app_.connections.reference, wishes);
    const TLintResult before = LintOf(*app_.connections.target, wishes);
    for (const TUnreadTable& table : after.unread) Add(EFailOn::Lint, Format(kNotRead, table.table, table.reason));
    for (const TFinding& finding : NewFindings(after.findings, before.findings))
      if (finding.severity >= ESeverity::Warning) Add(EFailOn::Lint, finding.text + " [" + finding.rule + "]");
  }

  static TLintResult LintOf(TDBConn& side, const TLintSourceWishes& wishes) {
    CheckLintable(side);
    dynamic_cast<TCreationTexts&>(side).PrepareExactTexts();
    if (!side.GetConnected()) side.Connect();
    return LintSource(side, wishes);
  }

  TApplication& app_;
  const TFailOnWishes& wishes_;
  const TExactWishes& exact_;
  std::vector<TFailure> failures_;
};

}  // namespace

void TakeFailOn(const std::string& text, TFailOnWishes& wishes) {
  TStringList words;
  SplitPlain(',', text, words);
  for (const std::string& word : words) {
    const auto* const found =
        std::ranges::find_if(kFailWords, [&word](std::string_view of) { return SameText(of, Trim(word)); });
    if (found == kFailWords.end()) RaiseError(Format(kNoKind, Trim(word)));
    wishes.kinds.insert(static_cast<EFailOn>(found - kFailWords.begin()));
  }
}

std::vector<TFailure> FailuresOf(TApplication& app, const TFailOnWishes& wishes, const TExactWishes& exact) {
  if (!wishes.Any()) return {};
  if (!app.Dialect().Traits().ticked_actions) RaiseError(Format(kNotExact, std::string(app.Used().word)));
  return TFailures(app, wishes, exact).Find();
}

}  // namespace velmora
