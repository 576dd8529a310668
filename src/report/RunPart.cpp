// SPDX-License-Identifier: GPL-3.0-or-later
#include "report/RunPart.h"

#include "app/RunTelling.h"

namespace velmora {

namespace {

constexpr char kNothing[] = "Nothing was run.";

TReportStatement StatementOf(const TRunReport& report, std::size_t index) {
  const TStatementRun& run = report.runs[index];
  const bool ran = run.state != ERunState::NotRun;
  return {report.statements[index].text, run.state, ran ? DurationText(run.seconds) : "",
          ran ? ForceWord(report, index) : "", ServerWords(run)};
}

}  // namespace

void TReportRun::SetVerdict(bool identical, const std::string& text) {
  done = done && identical;
  verdict = text;
}

TReportRun RunPartOf(const TRunReport& report, const TStringList& lines) {
  TReportRun part{report.committed, report.statements.empty() ? kNothing : RunSentence(report), lines, {}, {}};
  for (std::size_t i = 0; i < report.runs.size(); ++i) part.statements.push_back(StatementOf(report, i));
  return part;
}

}  // namespace velmora
