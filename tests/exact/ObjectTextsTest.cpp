#include "exact/objects/ObjectTexts.h"

#include <gmock/gmock.h>

#include "support/CaseFile.h"

namespace velmora {
namespace {

TEST(ObjectTextsTest, WhatCountsInTheirTexts) {
  for (const TStringList& row : testing::CaseRows("exact/objects.txt")) {
    SCOPED_TRACE(row[1] + " | " + row.at(2));
    const auto text = [&](std::size_t side) { return testing::Unshown(row[side]); };
    const auto differences = CompareObjects({"r", {{"x", "o", text(1)}}}, {"g", {{"x", "o", text(2)}}});
    EXPECT_EQ(differences.empty() ? "same" : differences[0].difference, row[0]);
  }
}

TEST(ObjectTextsTest, EachObjectIsNamedByKindAndName) {
  std::string told;
  for (const TObjectDifference& object :
       CompareObjects({"", {{"view", "a", "1"}, {"event", "n", ""}, {"function", "f", "1"}}},
                      {"", {{"procedure", "f", "1"}, {"event", "n", "1"}, {"function", "f", "1"}}}))
    told += object.kind + " " + object.name + " " + object.difference + "|";
  EXPECT_EQ(told, "view a only in the reference|event n not read|procedure f only in the target|");
}

}  // namespace
}  // namespace velmora
