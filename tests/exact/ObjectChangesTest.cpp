#include "exact/objects/ObjectChanges.h"

#include <gmock/gmock.h>

#include "exact/objects/ViewQuery.h"

#include "support/CaseFile.h"

namespace velmora {
namespace {

TObjectComparison Compared(const std::string& kind, const std::string& reference, const std::string& target) {
  return CompareObjects({"r", {{kind, "o", reference}}}, {"g", {{kind, "o", target}}});
}

TEST(ObjectChangesTest, WhatCountsInTheirTexts) {
  for (const TStringList& row : testing::CaseRows("exact/objects.txt")) {
    SCOPED_TRACE(row[2] + " | " + row.at(3));
    const TObjectComparison found = Compared(row[0], testing::Unshown(row[2]), testing::Unshown(row[3]));
    const bool told = !found.differences.empty();
    const std::string differs = found.changes.empty() ? "same" : JoinList(found.changes[0].elements, ", ");
    EXPECT_EQ(told ? found.differences[0].difference : differs, row[1]);
  }
}

TEST(ObjectChangesTest, ViewsAsServersPrintThem) {
  for (const TStringList& row : testing::CaseRows("exact/views.txt"))
    EXPECT_EQ(QueryMeaning(row[0]), QueryMeaning(row.at(1))) << row[1];
}

TEST(ObjectChangesTest, EachObjectIsNamedByKindAndName) {
  const std::string text = "create view v as select 1";
  const TObjectComparison found = CompareObjects(
      {"", {{"view", "a", text}, {"event", "n", ""}, {"sequence", "s", "1"}, {"function", "F", "x"}}, {"trigger"}},
      {"", {{"view", "b", text}, {"event", "n", "1"}, {"function", "f", "x"}, {"trigger", "t", text}}});
  std::string told;
  for (const TObjectChange& change : found.changes) told += change.LogText() + "|";
  for (const TObjectDifference& object : found.differences)
    told += object.kind + " " + object.name + " " + object.difference + "|";
  EXPECT_EQ(told,
            "New view a|Obsolete view b|event n not read|sequence s only in the reference|function F not followed, "
            "line 1: neither a view, trigger, procedure, function nor event is created here|"
            "trigger t not read: the reference may have it and does not show all of its kind|");
}

}  // namespace
}  // namespace velmora
