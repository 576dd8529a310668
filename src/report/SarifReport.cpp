// SPDX-License-Identifier: GPL-3.0-or-later
#include "report/SarifReport.h"

#include <algorithm>
#include <array>

#include <nlohmann/json.hpp>

#include "exact/run/StructureDigest.h"
#include "util/Format.h"
#include "util/Text.h"
#include "util/Version.h"

namespace velmora {

namespace {

using TJson = nlohmann::ordered_json;

constexpr char kSchema[] = "https://json.schemastore.org/sarif-2.1.0.json";
constexpr std::size_t kMostResults = 25000;  // more are refused by hosts of sources

struct TRuleText {
  EReportRule rule;
  std::string_view level, title, text;
};
constexpr std::array<TRuleText, 3> kRules = {
    {{EReportRule::DataLoss, "error", "Data may be lost", "Making the target equal may lose data."},
     {EReportRule::Rebuild, "warning", "A table is made anew", "Making the target equal copies or rebuilds a table."},
     {EReportRule::Difference, "note", "A difference", "Reference and target differ."}}};

struct TResult {
  const TReportPart* part;
  const TReportLine* line;
};

std::string NameOf(const TDifference& what) {
  return OfTable(what.kind) && !what.item.empty() ? what.table + "." + what.item
         : what.item.empty()                      ? what.table
                                                  : what.item;
}

// Percent-coded, as addresses have it; a path from the root has a scheme before it.
std::string UriOf(const std::string& path) {
  std::string uri = path.starts_with('/') ? "file://" : "";
  for (const char c : path) {
    const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                       std::string_view("-._~/").find(c) != std::string_view::npos;
    uri += plain ? std::string(1, c) : Format("%%%02X", static_cast<int>(static_cast<unsigned char>(c)));
  }
  return uri;
}

TJson LocationOf(const TResult& result) {
  TJson location = TJson::object();
  const TScriptPlace& place = result.part->place;
  if (place.line > 0)
    location["physicalLocation"] = {{"artifactLocation", {{"uri", UriOf(place.file)}}},
                                    {"region", {{"startLine", place.line}}}};
  const TDifference& what = result.line->difference;
  location["logicalLocations"] =
      TJson::array({{{"fullyQualifiedName", ShownText(NameOf(what))}, {"kind", std::string(KindWord(what.kind))}}});
  return location;
}

TJson ResultOf(const TResult& result) {
  const TDifference& what = result.line->difference;
  const std::string name = NameOf(what);
  const std::string rule(RuleId(result.line->rule));
  std::string text = OfTable(what.kind) ? result.part->title + ": " + what.text : what.text;
  if (!what.detail.empty()) text += " (" + what.detail + ")";
  if (!what.unsafe.empty()) text += ": " + what.unsafe;
  if (result.line->rule == EReportRule::Rebuild) text += ": " + what.lock;
  const std::string mark = std::string(KindWord(what.kind)) + ":" + name + ":" + rule;
  return {{"ruleId", rule},
          {"ruleIndex", static_cast<std::size_t>(result.line->rule)},
          {"level", std::string(kRules[static_cast<std::size_t>(result.line->rule)].level)},
          {"message", {{"text", ShownText(text)}}},
          {"locations", TJson::array({LocationOf(result)})},
          {"partialFingerprints", {{"velmoraDifference/v1", TextDigest(mark)}}}};
}

TJson RulesJson() {
  TJson rules = TJson::array();
  for (const TRuleText& row : kRules)
    rules.push_back({{"id", std::string(RuleId(row.rule))},
                     {"shortDescription", {{"text", std::string(row.title)}}},
                     {"fullDescription", {{"text", std::string(row.text)}}},
                     {"defaultConfiguration", {{"level", std::string(row.level)}}}});
  return rules;
}

// The gravest first, each kind in the order of the report.
std::vector<TResult> ResultsOf(const TReport& report) {
  std::vector<TResult> results;
  for (const TReportPart& part : report.parts)
    for (const TReportLine& line : part.lines) results.push_back({&part, &line});
  std::ranges::stable_sort(results, {}, [](const TResult& result) { return result.line->rule; });
  if (results.size() > kMostResults) results.resize(kMostResults);
  return results;
}

}  // namespace

std::string SarifReport(const TReport& report) {
  TJson results = TJson::array();
  for (const TResult& result : ResultsOf(report)) results.push_back(ResultOf(result));
  TJson notes = TJson::array();
  for (const std::string& finding : report.findings)
    notes.push_back({{"level", "warning"}, {"message", {{"text", ShownText(finding)}}}});
  const TJson run = {
      {"tool", {{"driver", {{"name", kProgramTitle}, {"version", VersionText()}, {"rules", RulesJson()}}}}},
      {"invocations",
       TJson::array({{{"executionSuccessful", true}, {"toolExecutionNotifications", std::move(notes)}}})},
      {"results", std::move(results)}};
  const TJson document = {{"$schema", kSchema}, {"version", "2.1.0"}, {"runs", TJson::array({run})}};
  return document.dump(1, ' ', false, TJson::error_handler_t::replace) + "\n";
}

}  // namespace velmora
