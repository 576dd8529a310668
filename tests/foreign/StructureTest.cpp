// SPDX-License-Identifier: GPL-3.0-or-later

// What the facts of whole tables become, for a server that is named.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foreign/ForeignTexts.h"
#include "foreign/PlayedFacts.h"
#include "support/CaseFile.h"
#include "util/Errors.h"
#include "util/Format.h"

namespace velmora {
namespace {

using testing::ReadCaseFile;
using testing::ReadFacts;
using testing::TCaseText;
using testing::TPlayedFacts;

std::string LevelWord(EMadeLevel level) {
  return level == EMadeLevel::Info ? "info" : level == EMadeLevel::Warning ? "warning" : "refused";
}

// The texts, then what is told of them.
std::string MadeOf(const std::string& server, const std::string& facts) {
  TForeignTexts texts(std::make_unique<TPlayedFacts>(ReadFacts(facts)), testing::ReadWishes(facts));
  texts.Read(ReadTargetServer(server), {}, [](const std::string&, std::size_t) {});
  std::string made;
  for (const std::string& table : texts.Tables()) {
    try {
      made += CreationTextOf(texts.Make(table, nullptr).table) + "\n";
    } catch (const EVelmora& error) {
      made += table + ": " + error.what() + "\n";
    }
  }
  for (const TMadeColumn& told : texts.Columns())
    if (!told.text.empty())
      made += Format("%s %s%s: %s\n", LevelWord(told.level), told.table, told.column.empty() ? "" : "." + told.column,
                     told.text);
  return made;
}

class StructureTest : public ::testing::TestWithParam<TCaseText> {};

TEST_P(StructureTest, BecomesTheseTexts) {
  const TStringList parts = GetParam().Parts();
  const std::string server = GetParam().name.substr(0, GetParam().name.find(':'));
  EXPECT_EQ(MadeOf(server, parts.at(0)), parts.at(1) + "\n");
}

INSTANTIATE_TEST_SUITE_P(Facts, StructureTest, ::testing::ValuesIn(ReadCaseFile("foreign/structure.txt").cases),
                         [](const auto& each) { return "Case" + std::to_string(each.index); });

}  // namespace
}  // namespace velmora
