// SPDX-License-Identifier: GPL-3.0-or-later

// What sources become on a real server, and what of a target counts as equal.

#include <gtest/gtest.h>

#include "foreign/PlayedFacts.h"
#include "foreign/live/ForeignSync.h"
#include "support/CaseFile.h"
#include "support/FakeConn.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {
namespace {

using testing::Answer;
using testing::CaseRows;
using ::testing::ContainsRegex;
using ::testing::IsEmpty;
using testing::kAllFacts;
using testing::ReadColumnFacts;
using testing::ReadFacts;
using testing::ReadWishes;
using testing::TPlayedFacts;

class MappingLiveTest : public testing::TForeignSync, public ::testing::Test {
 protected:
  MappingLiveTest() {
    connections_.reference = std::make_unique<testing::TFakeConn>();
    sync_.MakeTexts = [this](TDBConn&) {
      return std::make_unique<TForeignTexts>(std::make_unique<TPlayedFacts>(facts_, known_), wishes_);
    };
  }

  void Compare() { sync_.Compare(); }
  // The columns that are to change.
  std::set<std::string> Changed() const {
    std::set<std::string> columns;
    for (const TChange& change : sync_.Changes()) columns.insert(change.item);
    return columns;
  }
  std::string TypeOf(const std::string& column) {
    return Answer(target_.Connection(),
                  "select column_type from information_schema.columns where table_schema = database() and table_name = "
                  "'m' and column_name = '" +
                      column + "'");
  }

  std::vector<TForeignTable> facts_;
  TKnownFacts known_ = kAllFacts;
  TForeignWishes wishes_;
};

// Of other products' words each server keeps its own alone.
TEST_F(MappingLiveTest, KeepsTheFurtherWordsOfColumnsThatChange) {
  facts_ = ReadFacts(
      "table m\n  a varchar(20) comment x\n  b char(5)\n  g shape not null comment x\n  h longtext not null\n");
  target_.Run(
      "create table m (a varchar(10) /*M!100301 COMPRESSED */ /*!80000 COLUMN_FORMAT DYNAMIC */ default null invisible,"
      "b varchar(3) /*M!100301 COMPRESSED */, g point not null /*!80003 SRID 4326 */, h point not null /*!80003 SRID 0 "
      "*/)");
  Sync();
  EXPECT_THAT(sync_.Changes(), IsEmpty()) << JoinList(sync_.ActionLog, "\n");
  const std::string text = Answer(target_.Connection(), "show create table m");
  const bool mariadb = ReadTargetServer(Answer(target_.Connection(), "select version()")).mariadb;
  EXPECT_THAT(text, ContainsRegex("`a` varchar\\(20\\).*INVISIBLE.*\n"));
  EXPECT_THAT(text, ContainsRegex(mariadb ? "`a` .*COMPRESSED.*\n" : "`a` .*COLUMN_FORMAT DYNAMIC.*\n"));
  EXPECT_THAT(text, ContainsRegex(mariadb ? "`g` point " : "`g` .*SRID 4326.*\n"));
}

// As many columns of one type as there is room for.
class RowRoomLiveTest : public MappingLiveTest, public ::testing::WithParamInterface<const char*> {
 protected:
  static TForeignTable Table(int columns) {
    TForeignTable table{.name = "m"};
    for (int i = 0; i < columns; ++i) table.columns.push_back(ReadColumnFacts(Format("c%d int32", i)));
    return table;
  }
  bool Makes(int columns) {
    wishes_.rules = {{"int32", GetParam()}};
    TForeignTexts texts(std::make_unique<TPlayedFacts>(std::vector{Table(columns)}), wishes_);
    texts.Read(ReadTargetServer(Answer(target_.Connection(), "select version()")), {}, [](auto&, auto) {});
    return std::ranges::none_of(texts.Columns(), [](auto& told) { return told.level == EMadeLevel::Refused; });
  }
  void Create(int columns) {
    TStringList lines;
    for (int i = 0; i < columns; ++i) lines.push_back(Format("c%d %s", i, GetParam()));
    target_.Run("create table m (" + JoinList(lines, ", ") + ") row_format=dynamic default charset utf8mb4");
  }
};

TEST_P(RowRoomLiveTest, IsTheServers) {
  int most = 1;
  for (int step = 512; step > 0; step /= 2)
    if (Makes(most + step)) most += step;
  EXPECT_THROW(Create(most + 1), EVelmora) << most;
  Create(most);
}

INSTANTIATE_TEST_SUITE_P(Types, RowRoomLiveTest,
                         ::testing::Values("decimal(65,30)", "decimal(18,9)", "datetime(6)", "char(9)", "varchar(63)",
                                           "varchar(64)", "varbinary(255)", "varchar(2000)", "longtext"),
                         [](const auto& each) { return "Case" + std::to_string(each.index); });

struct TMappingCase {
  std::string source;
  std::string made;
  TStringList equal;
  TStringList other;
};

TStringList Types(const std::string& cell) {
  TStringList types;
  if (Trim(cell) == "-") return types;
  SplitText(";", cell, types);
  for (std::string& type : types) type = Trim(type);
  return types;
}

std::vector<TMappingCase> MappingCases() {
  std::vector<TMappingCase> cases;
  for (const TStringList& cells : CaseRows("foreign/mapping.txt"))
    cases.push_back({Trim(cells.at(0)), Trim(cells.at(1)), Types(cells.at(2)), Types(cells.at(3))});
  return cases;
}

// A table with a column for each case, by the number of the case.
class MappingTableTest : public MappingLiveTest {
 protected:
  MappingTableTest() {
    TForeignTable table{.name = "m"};
    for (std::size_t i = 0; i < cases_.size(); ++i)
      table.columns.push_back(ReadColumnFacts(Name(i) + " " + cases_[i].source));
    facts_ = {table};
  }
  static std::string Name(std::size_t number) { return Format("c%d", number); }

  // Gives each column the type in this place of a list, if it has one, and says which those are.
  std::set<std::string> Retype(TStringList TMappingCase::*list, std::size_t place) {
    std::set<std::string> columns;
    target_.Run("drop table if exists m");
    TStringList lines;
    for (std::size_t i = 0; i < cases_.size(); ++i) {
      const bool has = place < (cases_[i].*list).size();
      if (has) columns.insert(Name(i));
      lines.push_back(Name(i) + " " + (has ? (cases_[i].*list)[place] : cases_[i].made));
    }
    target_.Run("create table m (" + JoinList(lines, ", ") + ") row_format=dynamic default charset utf8mb4");
    return columns;
  }

  const std::vector<TMappingCase> cases_ = MappingCases();
};

TEST_F(MappingTableTest, BecomesItsTypeAndIsIdenticalThen) {
  Sync();
  EXPECT_TRUE(sync_.Identical()) << JoinList(sync_.ActionLog, "\n");
  for (std::size_t i = 0; i < cases_.size(); ++i) {
    const TColumnText there = ReadType(TypeOf(Name(i)));
    EXPECT_TRUE(SameType(there, ReadType(cases_[i].made))) << cases_[i].source << " is " << TypeOf(Name(i));
  }
}

TEST_F(MappingTableTest, TakesTypesThatHoldEveryValueAsEqual) {
  std::set<std::string> columns;
  for (std::size_t place = 0; !(columns = Retype(&TMappingCase::equal, place)).empty(); ++place) {
    Compare();
    EXPECT_TRUE(sync_.Identical()) << "place " << place << "\n" << JoinList(sync_.ActionLog, "\n");
  }
}

TEST_F(MappingTableTest, TellsTypesThatDoNot) {
  std::set<std::string> columns;
  for (std::size_t place = 0; !(columns = Retype(&TMappingCase::other, place)).empty(); ++place) {
    Compare();
    EXPECT_EQ(Changed(), columns) << "place " << place;
  }
}

TEST_F(MappingTableTest, WithStrictTypesTellsWiderOnesToo) {
  wishes_.strict_types = true;
  Retype(&TMappingCase::equal, 0);
  Compare();
  std::set<std::string> wider;
  for (std::size_t i = 0; i < cases_.size(); ++i)
    if (!SameType(ReadType(cases_[i].equal.at(0)), ReadType(cases_[i].made))) wider.insert(Name(i));
  EXPECT_EQ(Changed(), wider);
}

// Whole tables, with all that hangs together in them.
class StructureLiveTest : public MappingLiveTest, public ::testing::WithParamInterface<testing::TCaseText> {};

TEST_P(StructureLiveTest, IsThereAfterARun) {
  facts_ = ReadFacts(GetParam().Parts().at(0));
  wishes_ = ReadWishes(GetParam().Parts().at(0));
  Sync();
  EXPECT_THAT(sync_.Changes(), IsEmpty()) << JoinList(sync_.ActionLog, "\n");
}

INSTANTIATE_TEST_SUITE_P(Facts, StructureLiveTest,
                         ::testing::ValuesIn(testing::ReadCaseFile("foreign/structure.txt").cases),
                         [](const auto& each) { return "Case" + std::to_string(each.index); });

// Facts beside tables that are there.
class ToleranceLiveTest : public MappingLiveTest, public ::testing::WithParamInterface<testing::TCaseText> {};

TEST_P(ToleranceLiveTest, ToldAsWrittenAndEqualAfterARun) {
  const TStringList parts = GetParam().Parts();
  facts_ = ReadFacts(parts.at(0));
  wishes_ = ReadWishes(parts.at(0));
  if (GetParam().name.ends_with("structure alone")) known_ = {EFact::Order, EFact::PrimaryKey};
  TStringList statements;
  SplitText(";\n", parts.at(1) + "\n", statements);
  for (const std::string& statement : statements)
    if (!Trim(statement).empty()) target_.Run(statement);
  Compare();
  EXPECT_EQ(JoinList(sync_.ActionLog, "\n"), parts.at(2));
  Sync();
  EXPECT_THAT(sync_.Changes(), IsEmpty()) << JoinList(sync_.ActionLog, "\n");
}

INSTANTIATE_TEST_SUITE_P(Facts, ToleranceLiveTest,
                         ::testing::ValuesIn(testing::ReadCaseFile("foreign/tolerance.txt").cases),
                         [](const auto& each) { return "Case" + std::to_string(each.index); });

}  // namespace
}  // namespace velmora
