// Names that need quotes, from servers through comparison and script and back.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/LiveRun.h"

namespace velmora {
namespace {

using ::testing::HasSubstr;
using testing::LiveSource;
using testing::RunLive;
using testing::TAnswer;
using testing::TLiveDatabase;

class LiveNamesTest : public ::testing::Test {
 protected:
  LiveNamesTest() : reference_("named"), target_("naming") {}

  // Tables have two columns and those of `more`.
  static void Make(TLiveDatabase& database, const std::string& table, const std::string& more) {
    database.Run("create table `" + table + "` (a int not null, b int not null" + more + ", key k (a))");
  }
  static std::string Column(const std::string& name) { return ", `" + name + "` int not null"; }
  TAnswer Sync() {
    return RunLive({"sync", LiveSource("named"), LiveSource("naming"), "--yes", "--allow-empty-reference"});
  }
  int Compared() { return RunLive({"compare", LiveSource("named"), LiveSource("naming")}).status; }

  TLiveDatabase reference_, target_;
};

TEST_F(LiveNamesTest, OfNewTablesAndOfWhatBothSidesHaveAreNoHindrance) {
  int number = 0;
  for (const std::string name : {"two words", "say \"hi\"", "it's", "back``tick", "Šifra 雪", "select", "a,b", "a;b"}) {
    const std::string table = Format("t%d", ++number);
    const std::string both = Column(name) + ", key `" + name + "` (`" + name + "`)";
    Make(reference_, table, both + Column("z"));
    Make(target_, table, both);
    if (name.find_first_of("';`") == std::string::npos) Make(reference_, name, Column(name));
  }
  const TAnswer ran = Sync();
  EXPECT_EQ(ran.status, 0) << ran.err;
  EXPECT_EQ(Compared(), 0);
}

TEST_F(LiveNamesTest, OfLettersAloneNeedNoQuotes) {
  Make(reference_, "Žluť", Column("kůň"));
  Make(target_, "Žluť", Column("žába"));
  Make(target_, "чёрт", "");
  Make(reference_, "雪", "");
  const TAnswer script = RunLive({"script", LiveSource("named"), LiveSource("naming")});
  EXPECT_THAT(script.out, HasSubstr("drop table чёрт;\r\n"));
  EXPECT_THAT(script.out, HasSubstr("alter table Žluť add column kůň int not null;\r\n"));
  const TAnswer ran = Sync();
  EXPECT_EQ(ran.status, 0) << ran.err;
  EXPECT_EQ(Compared(), 0);
}

// Deliberate: statements name tables and columns as they are, without quotes, and a quote within a name hides the ends
// of statements. What a name makes impossible ends with a message that has the place, and the target stays as it was.
TEST_F(LiveNamesTest, ThatNeedQuotesEndTheWorkWithTheirPlace) {
  enum EDifference { kNewTable, kOldTable, kChangedTable, kNewColumn, kOldColumn };
  const struct {
    EDifference difference;
    const char* name;
    const char* message;
  } cases[] = {
      {kNewTable, "it's", "statement 2 of 2 failed at line 6, column 1: CREATE TABLE `it's` (\n"},
      {kNewTable, "a;b", "statement 2 of 4 failed at line 6, column 1: CREATE TABLE `a\n"},
      {kNewTable, "back``tick", "localhost.named: table back`tick: You have an error in your SQL syntax"},
      {kOldTable, "two words", "velmora-cli: table two words: Can't drop undefined table two\n"},
      {kOldTable, "Šifra 雪", "velmora-cli: table Šifra 雪: Can't drop undefined table Šifra\n"},
      {kOldTable, "back``tick", "statement 2 of 3 failed at line 6, column 1: drop table back`tick\n"},
      {kOldTable, "select", "statement 2 of 3 failed at line 6, column 1: drop table select\n"},
      {kChangedTable, "say \"hi\"", "velmora-cli: table say \"hi\": Can't alter undefined table say\n"},
      {kChangedTable, "it's", "velmora-cli: table it's: Can't alter undefined table it\n"},
      {kChangedTable, "select", "column 1: alter table select add column z int not null\n"},
      {kNewColumn, "two words", "velmora-cli: table t: TDBConn.DecodeColumn: Unhandled column type words\n"},
      {kNewColumn, "say \"hi\"", "velmora-cli: table t: TDBConn.DecodeColumn: Unhandled column type \"hi\"\n"},
      {kNewColumn, "back``tick", "column 1: alter table t add column back``tick int not null\n"},
      {kOldColumn, "two words", "column 1: alter table t drop column two words\n"},
      {kOldColumn, "it's", "statement 2 of 2 failed at line 6, column 1: alter table t drop column it's;\n"},
      {kOldColumn, "Šifra 雪", "column 1: alter table t drop column Šifra 雪\n"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(Format("%s: %s", c.name, c.message));
    const bool of_column = c.difference == kNewColumn || c.difference == kOldColumn;
    const std::string table = of_column ? "t" : c.name;
    if (c.difference != kOldTable)
      Make(reference_, table,
           c.difference == kChangedTable ? Column("z")
           : c.difference == kNewColumn  ? Column(c.name)
                                         : "");
    if (c.difference != kNewTable) Make(target_, table, c.difference == kOldColumn ? Column(c.name) : "");
    const TAnswer ran = Sync();
    EXPECT_EQ(ran.status, 2);
    EXPECT_EQ(ran.out, "");
    EXPECT_THAT(ran.err, HasSubstr(c.message));
    EXPECT_NE(Compared(), 0) << "nothing has changed";
    for (TLiveDatabase* database : {&reference_, &target_}) database->Run("drop table if exists `" + table + "`");
  }
}

}  // namespace
}  // namespace velmora
