// SPDX-License-Identifier: GPL-3.0-or-later

// The differences of a pair of files as the exact dialect tells them, and what becomes of them by ticks and filters.

#include "app/DifferenceList.h"
#include "app/OptionMeanings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/Application.h"
#include "engines/mysql/OfflineEngine.h"
#include "support/RecordingPorts.h"
#include "support/ScratchFolder.h"
#include "util/Files.h"
#include "util/Format.h"
#include "util/Lists.h"

namespace velmora {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

constexpr char kThere[] =
    "CREATE TABLE `b` (\n  `id` int(11) NOT NULL,\n  `name` varchar(300) DEFAULT NULL,\n  `kind` enum('x','y') NOT "
    "NULL,\n"
    "  `note` varchar(9) COLLATE utf8mb4_bin DEFAULT 'x' COMMENT 'old',\n  `far` int DEFAULT NULL,\n"
    "  PRIMARY KEY (`id`),\n  KEY `k` (`name`(9)),\n  KEY `gone` (`far`,`kind`),\n"
    "  CONSTRAINT `f` FOREIGN KEY (`far`) REFERENCES `a` (`id`)\n) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 "
    "COMMENT='was';\n"
    "CREATE TABLE `A_old` (\n  `x` int DEFAULT NULL,\n  `y` int DEFAULT NULL\n) ENGINE=InnoDB DEFAULT "
    "CHARSET=utf8mb4;\n";
constexpr char kWanted[] =
    "CREATE TABLE `b` (\n  `far` int DEFAULT NULL,\n  `id` int NOT NULL,\n  `name` varchar(255) NOT NULL,\n"
    "  `kind` enum('x','y','z') NOT NULL,\n"
    "  `note` varchar(9) COLLATE utf8mb4_general_ci DEFAULT 'z' COMMENT 'new',\n  `more` text COMMENT 'm',\n"
    "  PRIMARY KEY (`id`),\n  UNIQUE KEY `k` (`name`,`kind`),\n"
    "  CONSTRAINT `f` FOREIGN KEY (`far`) REFERENCES `a` (`id`) ON DELETE CASCADE,\n"
    "  CONSTRAINT `c` CHECK (`id` > 0)\n) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COMMENT='c'\n"
    " PARTITION BY HASH (`id`) PARTITIONS 4;\n"
    "CREATE TABLE `new` (\n  `x` int DEFAULT NULL\n) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4;\n";

class DifferenceListTest : public ::testing::Test {
 protected:
  DifferenceListTest() : app_(progress_, editor_, log_, SystemClock()), list_(app_.data) {
    WriteFileText(folder_ / "a.sql", kWanted);
    WriteFileText(folder_ / "b.sql", kThere);
    app_.Choose(EDialect::Exact);
    app_.OpenTask(std::make_unique<TDBConnMySQLOffline>(folder_ / "a.sql"),
                  std::make_unique<TDBConnMySQLOffline>(folder_ / "b.sql"));
    Compare();
  }
  void Compare() {
    list_.Clear();
    app_.Compare();
    list_.Take(app_.Dialect().Differences());
  }
  std::size_t Place(const std::string& text) {
    for (std::size_t i = 0; i < list_.Count(); ++i)
      if (list_.At(i).text == text) return i;
    ADD_FAILURE() << "no difference " << text;
    return 0;
  }
  // "b: Changed column name, ..." for each group that is shown.
  TStringList Shown() {
    TStringList groups;
    for (const TDifferenceGroup& group : list_.Groups()) {
      TStringList texts;
      for (const std::size_t place : group.members) texts.push_back(list_.At(place).text);
      groups.push_back(group.title + (group.alone ? "" : ": " + JoinList(texts, ", ")));
    }
    return groups;
  }
  std::string Script() {
    app_.Dialect().GenerateScript();
    return editor_.Text();
  }

  testing::TScratchFolder folder_;
  TNoProgress progress_;
  TLineEditor editor_;
  testing::TRecordingLog log_;
  TApplication app_;
  TDifferenceList list_;
};

TEST_F(DifferenceListTest, EachSaysWhatChangesAndWhatItRisks) {
  struct TCase {
    const char* text;
    const char* kind;
    const char* detail;
    const char* unsafe;  // part of the reason; empty for a safe one
  };
  const TCase kCases[] = {
      {"Obsolete table A_old", "obsolete table", "2 columns", "dropped with its rows"},
      {"New table new", "new table", "1 column", ""},
      {"Changed options of table b", "changed options", "comment 'was' -> 'c'", ""},
      {"Changed column name", "changed column", "varchar(300) -> varchar(255), null -> not null",
       "longer values do not fit"},
      {"Changed column kind", "changed column", "enum('x','y') -> enum('x','y','z')", ""},
      {"Changed column note", "changed column",
       "utf8mb4_bin -> utf8mb4_general_ci, default 'x' -> default 'z', comment 'old' -> comment 'new'", ""},
      {"Moved column far", "changed column", "first", ""},
      {"New column more", "new column", "text", ""},
      {"Changed index k", "changed index", "not unique -> unique, (name(9)) -> (name, kind)", ""},
      {"New index f", "new index", "(far)", ""},
      {"Obsolete index gone", "obsolete index", "(far, kind)", ""},
      {"Changed constraint f", "changed foreign key", "no rules -> on delete cascade", ""},
      {"New constraint c", "new constraint", "(id > 0)", ""},
      {"Changed partitioning of table b", "changed partitioning",
       "not partitioned -> PARTITION BY HASH (id) PARTITIONS 4", ""},
  };
  EXPECT_EQ(list_.Count(), std::size(kCases));
  for (const TCase& item : kCases) {
    const TDifference& difference = list_.At(Place(item.text));
    EXPECT_EQ(std::string(StateWord(difference.state)) + " " + std::string(KindWord(difference.kind)), item.kind);
    EXPECT_THAT(difference.detail, HasSubstr(item.detail)) << item.text;
    EXPECT_EQ(difference.unsafe.empty(), *item.unsafe == '\0') << item.text << difference.unsafe;
    EXPECT_THAT(difference.unsafe, HasSubstr(item.unsafe)) << item.text;
  }
}

TEST_F(DifferenceListTest, IsGroupedSortedFilteredAndCounted) {
  EXPECT_EQ(list_.Heading(), "3 tables: 1 new, 1 obsolete, 1 changed; 2 unsafe");
  struct TCase {
    EGrouping grouping;
    ESorting sorting;
    const char* filter;
    TStringList shown;
  };
  const TCase kCases[] = {
      {EGrouping::ByTable, ESorting::ByName, "  UNSAFE ", {"A_old", "b: Changed column name"}},
      {EGrouping::ByTable, ESorting::ByName, "varchar(2", {"b: Changed column name"}},
      {EGrouping::ByTable, ESorting::ByName, "table new", {"new"}},
      {EGrouping::ByTable, ESorting::ByName, "index b", {"b: New index f, Obsolete index gone, Changed index k"}},
      {EGrouping::ByTable, ESorting::ByName, "obsolete unsafe index", {}},
      {EGrouping::ByTable, ESorting::ByRunning, "obsolete", {"b: Obsolete index gone", "A_old"}},
      {EGrouping::ByKind,
       ESorting::ByName,
       "obsolete",
       {"Tables: Obsolete table A_old", "Indexes: Obsolete index gone"}},
      {EGrouping::ByKind,
       ESorting::ByRunning,
       "column",
       {"Columns: Changed column name, Changed column kind, Changed column note, Moved column far, New column more"}},
      {EGrouping::ByKind, ESorting::ByRunning, "constraint f", {}},
      {EGrouping::ByTable, ESorting::ByName, "Foreign-keys:b.f check:*", {"b: New constraint c, Changed constraint f"}},
      {EGrouping::ByTable,
       ESorting::ByName,
       "options:b partitioning:",
       {"b: Changed options of table b, Changed partitioning of table b"}},
      {EGrouping::ByTable, ESorting::ByName, "a_* table:new", {"A_old", "new"}},
      {EGrouping::ByTable, ESorting::ByName, "column:n", {}},
      {EGrouping::ByTable, ESorting::ByName, "b.n* unsafe", {"b: Changed column name"}},
      {EGrouping::ByTable, ESorting::ByName, "index:B. new", {"b: New index f"}},
  };
  for (const TCase& item : kCases) {
    list_.SetFilter(item.filter);
    list_.Arrange(item.grouping, item.sorting);
    EXPECT_EQ(Shown(), item.shown) << item.filter;
  }
  list_.SetFilter("unsafe");
  EXPECT_EQ(list_.Footing(), "14 of 14 actions ticked; 12 hidden (12 ticked)");
  list_.SetFilter({});
  list_.Arrange(EGrouping::ByTable, ESorting::ByRunning);
  EXPECT_EQ(list_.Groups().front().title, "b");  // whose foreign key is dropped before all else
}

TEST_F(DifferenceListTest, WhatTheOptionsLeaveOutIsToldUntilItIsTicked) {
  TOptions options{};
  options.DropExtraIndices = true;
  list_.Take(app_.Dialect().Differences(), [&](const TDifference& each) { return TickedAtFirst(each, options); });
  EXPECT_FALSE(list_.Ticked(Place("Obsolete table A_old")));
  EXPECT_TRUE(list_.Ticked(Place("Obsolete index gone")));
  EXPECT_THAT(list_.Heading(), HasSubstr("; 1 left out by the options (Alt+O)"));
  EXPECT_TRUE(list_.Tick({Place("Obsolete table A_old")}, true));
  EXPECT_THAT(list_.Heading(), Not(HasSubstr("left out")));
}

TEST_F(DifferenceListTest, WhatTheOptionsLeftOutIsTickedOnceTheyDoNot) {
  list_.Tick({Place("New table new")}, false);
  for (const bool left_out : {true, false}) {
    list_.Clear();
    app_.Compare();
    list_.Take(app_.Dialect().Differences(), [left_out](const TDifference&) { return !left_out; });
  }
  EXPECT_EQ(list_.Footing(), "13 of 14 actions ticked") << "what the user has unticked is left";
}

TEST_F(DifferenceListTest, ScriptAndQuestionsFollowTheTicks) {
  const std::string whole = Script();
  const std::size_t name = Place("Changed column name");
  EXPECT_TRUE(list_.Tick({name, Place("Obsolete table A_old")}, false));
  EXPECT_FALSE(list_.Tick({name}, false));
  EXPECT_THAT(Script(), Not(HasSubstr("drop table")));
  EXPECT_THAT(Script(), Not(HasSubstr("varchar(255)")));
  EXPECT_THAT(app_.Dialect().UnsafeActions(), IsEmpty());
  EXPECT_FALSE(app_.Dialect().TablesIdentical());
  EXPECT_THAT(list_.Heading(), HasSubstr("; 2 unsafe"));
  EXPECT_EQ(list_.Footing(), "12 of 14 actions ticked");
  EXPECT_TRUE(list_.Delete({Place("New table new")}));
  EXPECT_THAT(Shown(), ElementsAre("A_old", HasSubstr("b: ")));
  EXPECT_FALSE(list_.Tick({Place("New table new")}, true));

  EXPECT_TRUE(list_.Undo());
  EXPECT_THAT(Shown(), Not(ElementsAre("A_old", HasSubstr("b: "))));
  EXPECT_TRUE(list_.Undo());
  EXPECT_FALSE(list_.Undo());
  EXPECT_EQ(Script(), whole);
  EXPECT_TRUE(list_.Redo());
  EXPECT_FALSE(list_.Ticked(name));
  EXPECT_TRUE(list_.Tick({name}, true));
  EXPECT_FALSE(list_.CanRedo());
  EXPECT_TRUE(list_.Undo());
  EXPECT_TRUE(list_.Undo());
  EXPECT_EQ(Script(), whole);
}

TEST_F(DifferenceListTest, WhatIsUntickedStaysSoUntilThePairIsAnother) {
  std::vector<std::size_t> all;
  for (std::size_t i = 0; i < list_.Count(); ++i) all.push_back(i);
  list_.Tick(all, false);
  list_.Delete({Place("New table new")});
  Compare();
  EXPECT_EQ(app_.data.mtActions.Count(), 1U);  // what was deleted is found again
  EXPECT_TRUE(list_.Ticked(Place("New table new")));
  EXPECT_FALSE(list_.CanUndo());
  EXPECT_FALSE(app_.Dialect().Identical());
  list_.Forget();
  EXPECT_EQ(list_.Heading(), "");
  Compare();
  EXPECT_EQ(app_.data.mtActions.Count(), all.size());
}

TEST_F(DifferenceListTest, PlannedStatementsAreFoundInTheScript) {
  const std::string script = "-- mine;\r\n" + Script() + "drop table `A_old`, b;\r\n";
  std::vector<TPlannedStatement> planned = app_.Dialect().Planned(script);
  ASSERT_FALSE(planned.empty());
  for (const TPlannedStatement& statement : planned) {
    EXPECT_THAT(script.substr(statement.start, 11),
                ::testing::AnyOf("alter table", "drop table ", "create tabl", "CREATE TABL"));
    EXPECT_EQ(script[statement.end], ';');
    EXPECT_THAT(statement.actions, Not(IsEmpty()));
  }
  const int dropped = list_.At(Place("Obsolete table A_old")).id;
  EXPECT_EQ(std::ranges::count_if(planned, [&](const auto& s) { return s.actions == std::vector<int>{dropped}; }), 1);
  list_.Delete({Place("Obsolete table A_old")});
  EXPECT_EQ(app_.Dialect().Planned(script).size(), planned.size() - 1);
}

}  // namespace
}  // namespace velmora
