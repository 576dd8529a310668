// SPDX-License-Identifier: GPL-3.0-or-later
#include "report/LintReport.h"

#include <algorithm>

#include "report/MarkdownReport.h"
#include "report/MarkdownText.h"
#include "report/SarifLog.h"
#include "util/Counted.h"
#include "util/Errors.h"
#include "util/Files.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kNotRead[] = "Table %s could not be read: %s";
constexpr char kNotFollowed[] = "%s: tables that this makes or changes were not looked at";
constexpr char kMore[] = "\n... and %d more, which do not fit here.\n";
constexpr char kUnknownForm[] = "%s: this report's name has to end in .md or .sarif";

std::vector<const TFinding*> Gravest(const TLintReport& report) {
  std::vector<const TFinding*> findings;
  for (const TFinding& finding : report.result.findings) findings.push_back(&finding);
  std::ranges::stable_sort(findings, std::ranges::greater(), &TFinding::severity);
  return findings;
}

// --- Markdown

std::string ItemOf(const TFinding& finding) {
  const bool placed = finding.place.line > 0;
  const std::string place = placed ? PlainMarkdown(Format("%s:%d", finding.place.file, finding.place.line)) + ": " : "";
  return Format("- **%s** %s%s %s `%s`\n", SeverityWord(finding.severity), place, PlainMarkdown(finding.text),
                PlainMarkdown(finding.advice), finding.rule);
}

std::string MarkdownOf(const TLintReport& report) {
  std::string text = Format("## %s\n\n- %s\n- %s\n\n", report.Verdict(), PlainMarkdown(report.source), report.made);
  std::string after;
  for (const std::string& line : report.NotLookedAt()) after += Format("- %s\n", PlainMarkdown(line));
  if (!after.empty()) after = "\n### Not looked at\n\n" + after;
  const std::string room = Format(kMore, report.result.findings.size());
  if (text.size() + room.size() + after.size() > kMostMarkdown) after = Format(kMore, report.NotLookedAt().size());
  const std::vector<const TFinding*> findings = Gravest(report);
  for (std::size_t i = 0; i < findings.size(); ++i) {
    const std::string item = ItemOf(*findings[i]);
    if (text.size() + item.size() + room.size() + after.size() > kMostMarkdown)
      return text.append(Format(kMore, findings.size() - i)).append(after);
    text += item;
  }
  return text + after;
}

// --- SARIF

TSarifResult ResultOf(const TFinding& finding) {
  const std::span<const TLintRule> rules = LintRules();
  const auto rule = FindLintRule(finding.rule) - rules.data();
  const std::string kind(ElementWord(finding.kind));
  return {static_cast<std::size_t>(rule),
          std::string(SeverityWord(finding.severity)),
          finding.text + " " + finding.advice,
          finding.place.file,
          finding.place.line,
          NameOf(finding),
          kind,
          kind + ":" + NameOf(finding) + ":" + finding.rule};
}

std::string SarifOf(const TLintReport& report) {
  TSarifLog log{"velmora/lint/", "velmoraFinding/v1", {}, {}, report.NotLookedAt(), report.result.Whole()};
  for (const TLintRule& rule : LintRules())
    log.rules.push_back({std::string(rule.id), std::string(SeverityWord(rule.severity)), std::string(rule.help),
                         std::string(rule.help) + "."});
  for (const TFinding* finding : Gravest(report)) log.results.push_back(ResultOf(*finding));
  return SarifText(std::move(log));
}

// --- Files

using TWrite = std::string (*)(const TLintReport& report);

TWrite FormOf(const std::string& path) {
  const std::string name = LowerText(path);
  if (name.ends_with(".md")) return MarkdownOf;
  return name.ends_with(".sarif") ? SarifOf : nullptr;
}

}  // namespace

std::size_t TLintReport::Count(ESeverity severity) const {
  return static_cast<std::size_t>(std::ranges::count(result.findings, severity, &TFinding::severity));
}

std::string TLintReport::Verdict() const {
  return Format("%s, %s, %s in %s", Counted(Count(ESeverity::Error), "error"),
                Counted(Count(ESeverity::Warning), "warning"), Counted(Count(ESeverity::Note), "note"),
                Counted(result.tables, "table"));
}

TStringList TLintReport::NotLookedAt() const {
  TStringList lines;
  for (const TUnreadTable& table : result.unread) lines.push_back(Format(kNotRead, table.table, table.reason));
  for (const std::string& statement : result.not_followed) lines.push_back(Format(kNotFollowed, statement));
  return lines;
}

bool IsLintReportFile(const std::string& path) { return FormOf(path) != nullptr; }

void WriteLintReport(const TLintReport& report, const std::string& path) {
  const TWrite write = FormOf(path);
  if (write == nullptr) RaiseError(Format(kUnknownForm, path));
  WriteFileText(path, write(report));
}

}  // namespace velmora
