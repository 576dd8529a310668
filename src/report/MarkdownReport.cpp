// SPDX-License-Identifier: GPL-3.0-or-later
#include "report/MarkdownReport.h"

#include <algorithm>

#include "app/RunTelling.h"
#include "report/MarkdownText.h"
#include "util/Format.h"
#include "util/Lists.h"
#include "util/OneLine.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr std::size_t kMostFailures = 20;
constexpr char kScriptLeft[] = "The script has %d lines, which do not fit here.\n";
constexpr std::size_t kLongestLine = 500;  // letters, of a run
constexpr char kMoreParts[] = "\n... and %d more, which do not fit here.\n";

// Longer than any row of backticks in it.
std::string Fence(std::string_view text) {
  std::size_t longest = 2, row = 0;
  for (const char c : text) longest = std::max(longest, row = c == '`' ? row + 1 : 0);
  return std::string(longest + 1, '`');
}

std::string Block(std::string_view text, const std::string& language) {
  const std::string shown = ShownLines(text);
  const std::string fence = Fence(shown);
  return fence + language + "\n" + shown + (shown.ends_with('\n') ? "" : "\n") + fence + "\n";
}

std::string LineOf(const TReportLine& line) {
  const TDifference& what = line.difference;
  std::string text = Format("  - `%c` %s", SignOf(what.state), PlainMarkdown(what.text));
  if (!what.detail.empty()) text += ": " + PlainMarkdown(what.detail);
  if (!what.lock.empty()) text += Format(" *(%s)*", PlainMarkdown(what.lock));
  if (!line.scripted) text += " *(taken out of the script)*";
  if (!what.unsafe.empty()) text += Format("\n    - :warning: **unsafe**: %s", PlainMarkdown(what.unsafe));
  return text + "\n";
}

std::string HeadOf(const TReport& report) {
  std::string text = Format("## %s\n\n", PlainMarkdown(report.verdict));
  for (const std::string& fact :
       {"Reference: " + report.reference, "Target: " + report.target, report.dialect, report.made})
    text += Format("- %s\n", PlainMarkdown(fact));
  const std::size_t told = std::min(report.failures.size(), kMostFailures);
  for (std::size_t i = 0; i < told; ++i) text += Format("- **Fails on %s**\n", PlainMarkdown(report.failures[i]));
  if (told < report.failures.size()) text += Format("- **Fails on %d more**\n", report.failures.size() - told);
  return text + "\n";
}

// The statements that did not simply run, as far as there is room for these few.
std::string RunOf(const TReportRun& run) {
  constexpr std::size_t kMostStatements = 20;
  std::string text = Format("### Run\n\n- %s\n", PlainMarkdown(run.sentence));
  for (const std::string& line : run.lines) text += Format("- %s\n", PlainMarkdown(CutChars(line, kLongestLine)));
  if (!run.verdict.empty())
    text += Format("- Compared again: %s\n", PlainMarkdown(CutChars(run.verdict, kLongestLine)));
  std::size_t told = 0;
  for (std::size_t i = 0; i < run.statements.size() && told < kMostStatements; ++i) {
    const TReportStatement& statement = run.statements[i];
    if (statement.state == ERunState::NotRun || statement.words.empty()) continue;
    ++told;
    text += Format("  - statement %d, %s%s: %s\n", i + 1, StateWord(statement.state),
                   statement.took.empty() ? "" : " after " + statement.took,
                   PlainMarkdown(CutChars(OnOneLine(statement.words), kLongestLine)));
  }
  return text + "\n### What differed before it\n\n";
}

// As many as fit.
std::string PartsOf(const TReport& report, std::size_t most) {
  std::string text;
  for (std::size_t i = 0; i < report.parts.size(); ++i) {
    const std::string place = report.parts[i].Place();
    std::string part = Format("- **%s**%s\n", PlainMarkdown(report.parts[i].title),
                              place.empty() ? std::string() : " (" + PlainMarkdown(place) + ")");
    for (const TReportLine& line : report.parts[i].lines) part += LineOf(line);
    const std::string more = Format(kMoreParts, report.parts.size() - i);
    if (text.size() + part.size() + more.size() > most) return text + more;
    text += part;
  }
  return text;
}

std::string ListOf(const std::string& title, const TStringList& lines) {
  if (lines.empty()) return {};
  std::string text = "\n### " + title + "\n\n";
  for (const std::string& line : lines) text += Format("- %s\n", PlainMarkdown(line));
  return text;
}

std::string ScriptOf(const TReport& report, std::size_t most) {
  if (report.script.empty()) return {};
  std::string text = Format("\n<details><summary>Script</summary>\n\n%s\n</details>\n", Block(report.script, "sql"));
  if (text.size() <= most) return text;
  return Format("\n" + std::string(kScriptLeft), std::ranges::count(report.script, '\n'));
}

}  // namespace

// Bytes are counted, of which no letter has less than one.
std::string MarkdownReport(const TReport& report, std::size_t most) {
  const std::string room = Format("\n" + std::string(kScriptLeft), report.script.size());
  const auto left = [&](const std::string& text) { return most > text.size() ? most - text.size() : 0; };
  std::string text = HeadOf(report) + (report.run ? RunOf(*report.run) : std::string());
  const std::string findings = ListOf("Not compared, or left alone", report.findings);
  text += PartsOf(report, left(text + room + findings));
  if (findings.size() <= left(text + room)) text += findings;
  const std::string script = ScriptOf(report, left(text));
  return script.size() <= left(text) ? text + script : text;
}

}  // namespace velmora
