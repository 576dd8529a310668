// SPDX-License-Identifier: GPL-3.0-or-later
#include "report/SarifReport.h"

#include <algorithm>
#include <array>

#include "report/SarifLog.h"

namespace velmora {

namespace {

struct TRuleText {
  EReportRule rule;
  std::string_view level, title, text;
};
constexpr std::array<TRuleText, 3> kRules = {
    {{EReportRule::DataLoss, "error", "Data may be lost", "Making the target equal may lose data."},
     {EReportRule::Rebuild, "warning", "A table is made anew", "Making the target equal copies or rebuilds a table."},
     {EReportRule::Difference, "note", "A difference", "Reference and target differ."}}};

std::string NameOf(const TDifference& what) {
  return OfTable(what.kind) && !what.item.empty() ? what.table + "." + what.item
         : what.item.empty()                      ? what.table
                                                  : what.item;
}

std::string TextOf(const TReportPart& part, const TReportLine& line) {
  const TDifference& what = line.difference;
  std::string text = OfTable(what.kind) ? part.title + ": " + what.text : what.text;
  if (!what.detail.empty()) text += " (" + what.detail + ")";
  if (!what.unsafe.empty()) text += ": " + what.unsafe;
  if (line.rule == EReportRule::Rebuild) text += ": " + what.lock;
  return text;
}

TSarifResult ResultOf(const TReportPart& part, const TReportLine& line) {
  const std::string kind(KindWord(line.difference.kind));
  const std::string name = NameOf(line.difference);
  const auto rule = static_cast<std::size_t>(line.rule);
  return {rule,
          std::string(kRules.at(rule).level),
          TextOf(part, line),
          part.place.file,
          part.place.line,
          name,
          kind,
          kind + ":" + name + ":" + std::string(RuleId(line.rule))};
}

}  // namespace

std::string SarifReport(const TReport& report) {
  TSarifLog log{"velmora/compare/", "velmoraDifference/v1", {}, {}, report.findings, !report.run || report.run->done};
  for (const std::string& failure : report.failures) log.notes.push_back("Fails on " + failure);
  for (const TRuleText& row : kRules)
    log.rules.push_back(
        {std::string(RuleId(row.rule)), std::string(row.level), std::string(row.title), std::string(row.text)});
  for (const TReportPart& part : report.parts)
    for (const TReportLine& line : part.lines) log.results.push_back(ResultOf(part, line));
  std::ranges::stable_sort(log.results, {}, &TSarifResult::rule);
  return SarifText(std::move(log));
}

}  // namespace velmora
