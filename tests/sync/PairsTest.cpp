// SPDX-License-Identifier: GPL-3.0-or-later

// Golden pairs: each folder of tests/data/pairs holds a reference, a target, and what comparison and script must give.
// A new case is a new folder. Sections of expected.txt that would be empty are left out; the script stands without its
// two header lines; line ends within a description are written \r and \n.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "support/LineDiff.h"
#include "support/MessageOf.h"
#include "support/SyncRig.h"
#include "util/Text.h"

namespace velmora::testing {
namespace {

constexpr char kNothingRaised[] = "nothing raised";
const std::filesystem::path kPairs = std::filesystem::path(VELMORA_SOURCE_DIR) / "tests/data/pairs";

std::vector<std::string> PairNames() {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(kPairs))
    names.push_back(entry.path().filename().string());
  std::sort(names.begin(), names.end());
  return names;
}

std::string Section(const std::string& title, const TStringList& lines) {
  if (lines.empty()) return {};
  return "[" + title + "]\n" + JoinList(lines, "\n") + "\n";
}

std::string ErrorSection(const std::string& title, const std::string& message) {
  return message == kNothingRaised ? std::string() : Section(title, {message});
}

std::string OnOneLine(const std::string& text) { return StrReplace(StrReplace(text, "\r", "\\r"), "\n", "\\n"); }

std::string Actions(const TdmData& data) {
  TStringList lines;
  for (const TActionRow& row : data.mtActions.Rows())
    lines.push_back(std::to_string(row.id) + " | " + row.table + " | " + row.item + " | " +
                    std::to_string(row.action_id) + " | " + OnOneLine(row.description));
  return Section("actions", lines);
}

std::string Script(TSyncRig& rig) {
  const std::string error = MessageOf([&] { rig.GenerateScript(); });
  TStringList lines = rig.editor.Lines();
  lines.erase(lines.begin(), std::find(lines.begin(), lines.end(), ""));
  lines.erase(lines.begin());
  return Section("script", lines) + ErrorSection("script error", error);
}

std::string Outcome(const std::filesystem::path& folder) {
  TSyncRig rig((folder / "reference.sql").string(), (folder / "target.sql").string());
  const std::string error = MessageOf([&] { rig.Compare(); });
  const std::string found = Actions(rig.data) + Section("log", rig.sync.ActionLog) + ErrorSection("error", error);
  return error == kNothingRaised ? found + Script(rig) : found;
}

class Pairs : public ::testing::TestWithParam<std::string> {};

TEST_P(Pairs, GiveTheExpectedActionsLogAndScript) {
  const std::filesystem::path folder = kPairs / GetParam();
  EXPECT_EQ(LineDiff(ReadFileText((folder / "expected.txt").string()), Outcome(folder)), "");
}

INSTANTIATE_TEST_SUITE_P(Sync, Pairs, ::testing::ValuesIn(PairNames()), [](const auto& pair) { return pair.param; });

}  // namespace
}  // namespace velmora::testing
