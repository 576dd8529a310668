// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/LintCommand.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <ostream>

#include "app/SideNames.h"
#include "app/Sources.h"
#include "cli/FailOnOptions.h"
#include "cli/Json.h"
#include "cli/SourceRun.h"
#include "core/CreationTexts.h"
#include "report/LintReport.h"
#include "util/Clock.h"
#include "util/Dates.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"
#include "util/Version.h"

namespace velmora {

namespace {

constexpr int kMostPercent = 100;

// --- Rules

void PrintRules(EFormat format, TConsole& console) {
  if (format == EFormat::Json) {
    TJson rules = TJson::array();
    for (const TLintRule& rule : LintRules())
      rules.push_back({{"id", rule.id}, {"severity", SeverityWord(rule.severity)}, {"text", rule.help}});
    console.out << TextOf({{"rules", std::move(rules)}});
    return;
  }
  for (const TLintRule& rule : LintRules())
    console.out << Format("%-24s %-8s %s\n", rule.id, SeverityWord(rule.severity), rule.help);
}

// --- Findings

std::string PlaceOf(const TFinding& finding) {
  return finding.place.line == 0 ? std::string() : Format("%s:%d: ", finding.place.file, finding.place.line);
}

void PrintText(const TLintReport& report, TConsole& console) {
  for (const TFinding& finding : report.result.findings)
    console.out << ShownText(Format("%s%s: %s", PlaceOf(finding), SeverityWord(finding.severity), finding.text)) << " ["
                << finding.rule << "]\n    " << ShownText(finding.advice) << '\n';
  console.out << report.Verdict() << '\n';
}

TJson FindingJson(const TFinding& finding) {
  const bool placed = finding.place.line > 0;
  return {{"rule", finding.rule},
          {"severity", SeverityWord(finding.severity)},
          {"table", finding.table},
          {"kind", ElementWord(finding.kind)},
          {"element", finding.element.empty() ? TJson() : TJson(finding.element)},
          {"file", placed ? TJson(finding.place.file) : TJson()},
          {"line", placed ? TJson(finding.place.line) : TJson()},
          {"text", finding.text},
          {"advice", finding.advice}};
}

void PrintJson(const TLintReport& report, bool failed, const std::optional<std::string>& error, TConsole& console) {
  TJson findings = TJson::array();
  for (const TFinding& finding : report.result.findings) findings.push_back(FindingJson(finding));
  TJson unread = TJson::array();
  for (const TUnreadTable& table : report.result.unread)
    unread.push_back({{"table", table.table}, {"reason", table.reason}});
  console.out << TextOf({{"findings", std::move(findings)},
                         {"tables", report.result.tables},
                         {"errors", report.Count(ESeverity::Error)},
                         {"warnings", report.Count(ESeverity::Warning)},
                         {"notes", report.Count(ESeverity::Note)},
                         {"unread", std::move(unread)},
                         {"not_followed", report.result.not_followed},
                         {"failed", failed},
                         {"error", velmora::JsonOf(error)}});
}

bool HasFailure(const TLintReport& report, ESeverity level) {
  return level != ESeverity::Off &&
         std::ranges::any_of(report.result.findings, [level](auto& finding) { return finding.severity >= level; });
}

}  // namespace

void TLintCommand::Declare(CLI::App& app) {
  app.add_option("SOURCE", source_, "The database: a MySQL server, a file of creation texts or a folder of them");
  DeclareRules(app, rules_);
  app.add_flag("--list-rules", list_rules_, "List the rules with their severities, and look at nothing");
  DeclareChoice(app, "--fail-level", {"never", "note", "warning", "error"},
                "End with status 1 where a finding is of this severity or a graver one (warning)",
                [this](std::size_t choice) { fail_level_ = static_cast<ESeverity>(choice); });
  DeclareNumber(app, "--auto-increment-percent", 1, kMostPercent,
                "Tell of counters of new rows that are at N percent of their column's numbers or above (80)",
                [this](std::int64_t percent) { rules_.counter_percent = static_cast<int>(percent); });
  DeclareExact(app, {"only", "except", "target-version"}, exact_);
  DeclareFormat(app, format_);
  app.add_option("--report", reports_,
                 "Write the findings to FILE: a comment on a change (.md), results for programs (.sarif); may be given "
                 "several times")
      ->type_name("FILE")
      ->allow_extra_args(false)
      ->check([](const std::string& name) {
        return IsLintReportFile(name) ? std::string() : name + " has to end in .md or .sarif";
      });
  options_.DeclareOne(app);
  app.callback([this] {
    if (source_.empty() && !list_rules_) throw CLI::RequiredError("SOURCE");
  });
}

int TLintCommand::Execute(TConsole& console) {
  if (list_rules_) {
    PrintRules(format_, console);
    return kExitSuccess;
  }
  TLintReport report;
  std::optional<std::string> error;
  try {
    Look(console, report);
    for (const std::string& line : report.NotLookedAt()) console.Error(line);
    for (const std::string& file : reports_) WriteLintReport(report, file);
  } catch (const EAbort&) {
    throw;
  } catch (const EVelmora& fault) {
    error = console.Without(fault.what());
    console.Error(*error);
  }
  const bool failed = HasFailure(report, fail_level_);
  if (format_ == EFormat::Json)
    PrintJson(report, failed, error, console);
  else if (!error)
    PrintText(report, console);
  if (error || !report.result.Whole()) return kExitFailure;
  return failed ? kExitDifferent : kExitSuccess;
}

void TLintCommand::Look(TConsole& console, TLintReport& report) {
  const std::unique_ptr<TDBConn> conn = MakeSource(source_, options_.ForOne(console));
  CheckLintable(*conn);
  SettleSocket({conn.get()});
  if (auto* texts = dynamic_cast<TCreationTexts*>(conn.get())) texts->PrepareExactTexts();
  ConnectNamed(*conn);
  WarnOfSource(*conn, options_.verbose(), console, true);
  report.source = SideName(*conn);
  report.made = AppTitle() + ", " + ShortDateTimeText(SystemClock().Now());
  report.result = LintSource(*conn, {exact_.selection, rules_, exact_.locks.target_version});
}

}  // namespace velmora
