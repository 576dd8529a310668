// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/FleetRun.h"

#include <algorithm>
#include <ostream>
#include <sstream>
#include <utility>

#include "app/SideNames.h"
#include "cli/ComparisonText.h"
#include "cli/FleetText.h"
#include "cli/PairRun.h"
#include "cli/SourceRun.h"
#include "fleet/GroupScripts.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Lists.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kServersAlone[] = "%s: line %d: %s is no server, and sync runs statements";
constexpr char kPasswords[] = "%s holds passwords, and others may read it: give it to its owner alone";

}  // namespace

TFleetRun::TFleetRun(const TPair& pair, const TSourceOptions& sources, const TFleetOptions& options, EFleetUse use,
                     EFormat format, TConsole& console)
    : pair_(pair),
      sources_(sources),
      options_(options),
      use_(use),
      format_(format),
      console_(console),
      wishes_{{pair.collations, false, false, {}, false, pair.exact},
              use != EFleetUse::Compare,
              pair.allow_empty_reference},
      lanes_(options.jobs),
      progress_(MakeProgress(console)) {}

void TFleetRun::Compare() {
  settings_ = TargetSettings();
  TSourceSettings unasked = settings_;
  unasked.AskPassword = nullptr;
  const std::vector<TListedSource> list = ReadTargetList(pair_.targets, unasked);
  for (const TListedSource& listed : list)
    if (use_ == EFleetUse::Sync && !listed.on_server)
      RaiseError(Format(kServersAlone, pair_.targets, listed.line, listed.shown));
  if (ShowsPasswords(pair_.targets, list)) console_.Warn(Format(kPasswords, pair_.targets));
  progress_->ShowSimple("Reading the reference...");
  ReadReference();
  progress_->ShowSimple("Asking for databases...");
  TFleetTargets found =
      ExpandTargets(pair_.targets, list, settings_, PlaceOf(reference_->Source()), options_.slice, lanes_);
  progress_->Finish();
  for (const std::string& note : found.notes) console_.Note(note);
  fleet_ = std::make_unique<TFleet>(*reference_, wishes_, settings_, lanes_);
  fleet_->Quick = !options_.compare_each;
  fleet_->Show = [](const TApplication& compared) {
    std::ostringstream shown;
    PrintComparison(compared, false, shown);
    return shown.str();
  };
  fleet_->Ended = [this](std::size_t target, const TFleetOutcome& outcome) { TellEnded(target, outcome); };
  progress_->ShowOneBar("Comparing", static_cast<std::int64_t>(found.targets.size()));
  comparing_ = true;
  fleet_->Compare(std::move(found.targets));
  comparing_ = false;
  progress_->Finish();
}

// Once for all, as a terminal or a file may be asked but once.
TSourceSettings TFleetRun::TargetSettings() {
  TSourceSettings settings = sources_.ForTarget(console_);
  settings.PasswordRefused = nullptr;
  settings.OfFile = true;
  settings.Warn = [this](const std::string& text) {
    const std::lock_guard lock(mutex_);
    if (warned_.insert(text).second) console_.Warn(text);
  };
  settings.AskPassword = [this, ask = settings.AskPassword](const std::string& account) {
    const std::lock_guard lock(mutex_);
    const auto known = passwords_.find(account);
    if (known != passwords_.end()) return known->second;
    progress_->Finish();
    return passwords_.emplace(account, ask(account)).first->second;
  };
  return settings;
}

void TFleetRun::ReadReference() {
  std::unique_ptr<TDBConn> source = MakeSource(pair_.reference, sources_.ForReference(console_));
  ForgetSocketOfOthers(*source);
  reference_ = std::make_unique<TFleetReference>(std::move(source));
  WarnOfSource(reference_->Source(), sources_.verbose(), console_, true);
  if (reference_->HasTables()) return;
  const std::string text = EmptyReferenceText(reference_->Source());
  if (wishes_.for_script && !wishes_.allow_empty_reference) RaiseError(text + kAllowEmpty);
  console_.Warn(text);
}

void TFleetRun::TellEnded(std::size_t target, const TFleetOutcome& outcome) {
  if (comparing_) progress_->StepTotal();
  const bool not_the_last = comparing_ && use_ == EFleetUse::Sync && outcome.status == EFleetStatus::Different;
  if (format_ != EFormat::Json || not_the_last) return;
  console_.out << TextOf(FleetLine(fleet_->Targets()[target], outcome, console_.Without(outcome.error))) << std::flush;
}

void TFleetRun::TellFaults() {
  for (std::size_t i = 0; i < fleet_->Targets().size(); ++i)
    if (const TFleetOutcome& outcome = fleet_->Outcomes()[i]; !outcome.error.empty())
      console_.Error(Placed(fleet_->Targets()[i].name, outcome.error));
}

void TFleetRun::TellGroups() {
  TellFaults();
  if (format_ == EFormat::Text) PrintGroups(*fleet_, console_.out);
}

void TFleetRun::TellSummary() {
  if (format_ == EFormat::Json)
    console_.out << TextOf(FleetSummaryLine(*fleet_));
  else
    console_.out << FleetSummary(*fleet_) << '\n';
}

// The lines of the target's own console begin as those of any do.
void TFleetRun::TellOf(std::size_t target, const std::string& told, const std::string& error) {
  const std::string& name = fleet_->Targets()[target].name;
  const std::lock_guard lock(mutex_);
  for (const std::string& line : LinesOf(told))
    console_.err << kCompanionName << ": " << ShownText(name) << line.substr(std::string_view(kCompanionName).size())
                 << '\n';
  if (!error.empty()) console_.Error(Placed(name, error));
}

void TFleetRun::WriteScripts(const std::string& folder) {
  TOwnFolder scripts = GroupFolder(folder);
  TellFaults();
  WriteGroups(*fleet_, SideName(reference_->Source()), scripts);
  const TStringList files = GroupFiles(*fleet_);
  if (format_ == EFormat::Json) {
    console_.out << TextOf(FleetSummaryLine(*fleet_, files));
    return;
  }
  PrintFiles(*fleet_, files, console_.out);
  console_.out << FleetSummary(*fleet_) << '\n';
}

int TFleetRun::ScriptStatus() const {
  const bool reach =
      std::ranges::all_of(fleet_->Groups(), [](const TFleetGroup& group) { return group.findings.reaches; });
  return reach && Status() != kExitFailure ? kExitSuccess : kExitFailure;
}

int TFleetRun::Status() const {
  int status = kExitSuccess;
  for (const TFleetOutcome& outcome : fleet_->Outcomes()) {
    if (outcome.status == EFleetStatus::Different) status = std::max(status, kExitDifferent);
    if (outcome.status != EFleetStatus::Different && outcome.status != EFleetStatus::Identical) return kExitFailure;
  }
  return status;
}

}  // namespace velmora
