// SPDX-License-Identifier: GPL-3.0-or-later
#include "report/SarifLog.h"

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

TJson LocationOf(const TSarifResult& result) {
  TJson location = TJson::object();
  if (result.line > 0)
    location["physicalLocation"] = {{"artifactLocation", {{"uri", UriOf(result.file)}}},
                                    {"region", {{"startLine", result.line}}}};
  location["logicalLocations"] =
      TJson::array({{{"fullyQualifiedName", ShownText(result.name)}, {"kind", result.kind}}});
  return location;
}

TJson ResultOf(const TSarifResult& result, const TSarifLog& log) {
  return {{"ruleId", log.rules.at(result.rule).id},
          {"ruleIndex", result.rule},
          {"level", result.level},
          {"message", {{"text", ShownText(result.text)}}},
          {"locations", TJson::array({LocationOf(result)})},
          {"partialFingerprints", {{log.mark_name, TextDigest(result.mark)}}}};
}

TJson RulesJson(const TSarifLog& log) {
  TJson rules = TJson::array();
  for (const TSarifRule& rule : log.rules)
    rules.push_back({{"id", rule.id},
                     {"shortDescription", {{"text", rule.title}}},
                     {"fullDescription", {{"text", rule.text}}},
                     {"defaultConfiguration", {{"level", rule.level}}}});
  return rules;
}

}  // namespace

std::string SarifText(TSarifLog log) {
  if (log.results.size() > kMostResults) log.results.resize(kMostResults);
  TJson results = TJson::array();
  for (const TSarifResult& result : log.results) results.push_back(ResultOf(result, log));
  TJson notes = TJson::array();
  for (const std::string& note : log.notes)
    notes.push_back({{"level", "warning"}, {"message", {{"text", ShownText(note)}}}});
  const TJson run = {
      {"tool", {{"driver", {{"name", kProgramTitle}, {"version", VersionText()}, {"rules", RulesJson(log)}}}}},
      {"automationDetails", {{"id", log.category}}},
      {"invocations",
       TJson::array({{{"executionSuccessful", log.whole}, {"toolExecutionNotifications", std::move(notes)}}})},
      {"results", std::move(results)}};
  const TJson document = {{"$schema", kSchema}, {"version", "2.1.0"}, {"runs", TJson::array({run})}};
  return document.dump(1, ' ', false, TJson::error_handler_t::replace) + "\n";
}

}  // namespace velmora
