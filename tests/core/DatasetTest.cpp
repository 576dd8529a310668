// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/Dataset.h"

#include <gtest/gtest.h>

#include "support/MessageOf.h"
#include "util/Errors.h"

namespace velmora {
namespace {

using testing::MessageOf;
using namespace std::string_literals;

TMemDataset People() {
  TMemDataset people({{"Id", EFieldKind::Integer, 0}, {"Name", EFieldKind::String, 20}});
  people.AddRow({std::int64_t{1}, "Ann"s});
  people.AddRow({std::int64_t{2}, TVariant()});
  return people;
}

TEST(MemDatasetTest, WalksItsRows) {
  TMemDataset people = People();
  EXPECT_EQ(people.RecordCount(), 2);
  EXPECT_EQ(VarToText(people.Value(1)), "Ann");
  people.Next();
  EXPECT_TRUE(VarIsNull(people.Value(1)));
  EXPECT_FALSE(people.Eof());
  people.Next();
  people.Next();
  EXPECT_TRUE(people.Eof());
  EXPECT_TRUE(VarIsNull(people.Value(0))) << "past the last row";
  people.First();
  EXPECT_EQ(VarToInt(people.Value(0)), 1);
}

TEST(MemDatasetTest, CloseFreesTheRowsAndKeepsTheFields) {
  TMemDataset people = People();
  people.Next();
  people.Close();
  EXPECT_TRUE(people.Eof());
  EXPECT_EQ(people.RecordCount(), 0);
  EXPECT_EQ(people.FieldByName("NAME").def.size, 20);
}

TEST(MemDatasetTest, Fields) {
  TMemDataset people = People();
  EXPECT_EQ(VarToText(people.FieldByName("nAmE").value), "Ann");
  EXPECT_EQ(people.Field(0).def.kind, EFieldKind::Integer);
  EXPECT_EQ(MessageOf([&] { people.FieldByName("age"); }), "Field 'age' not found");
  EXPECT_THROW(people.Field(2), EListError);
  EXPECT_THROW(people.Value(2), EListError);
  EXPECT_THROW(people.AddRow({std::int64_t{3}}), EVelmora);
}

TEST(FieldToListTest, TheTextOfEveryRowFromTheFirst) {
  TMemDataset people = People();
  people.Next();
  TStringList list = {"left over"};
  FieldToList(people, "name", list);
  EXPECT_EQ(list, (TStringList{"Ann", ""}));
  EXPECT_THROW(FieldToList(people, "age", list), EVelmora);
  EXPECT_EQ(list.size(), 2U) << "an unknown field leaves the list";
}

TEST(FieldKindTest, WordsStandAtTheirKinds) {
  EXPECT_EQ(FieldKindName(EFieldKind::String), "string");
  EXPECT_EQ(FieldKindName(EFieldKind::LargeInt), "large integer");
  EXPECT_EQ(FieldKindName(EFieldKind::DateTime), "date-time");
  EXPECT_EQ(FieldKindName(EFieldKind::Memo), "memo");
  EXPECT_EQ(FieldKindName(EFieldKind::Other), "other");
}

}  // namespace
}  // namespace velmora
