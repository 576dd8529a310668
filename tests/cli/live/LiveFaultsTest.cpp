// What users see, and what servers keep, when a connection goes in the middle of the work.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <future>
#include <nlohmann/json.hpp>

#include "support/LiveRun.h"
#include "support/Relay.h"
#include "support/ScratchFolder.h"
#include "util/Files.h"

namespace velmora {
namespace {

using testing::EFate;
using ::testing::HasSubstr;
using testing::LiveSource;
using testing::RunLive;
using ::testing::StartsWith;
using testing::TAnswer;
using testing::TLiveDatabase;
using testing::TPrivateServer;
using testing::TRelay;
using testing::TWitness;
using TJson = nlohmann::ordered_json;

constexpr char kLost[] = "Lost connection to ";  // clients differ in what follows

// The server that tests kill. The shared one stays, to be the other side.
TPrivateServer& Victim() {
  static TPrivateServer server;
  return server;
}

std::string NameAt(int port, const std::string& database) { return Format("127.0.0.1:%d.%s", port, database); }

// Tables t0 to t3, of which t2 and t3 lack a column where it is not `whole`.
void Fill(TLiveDatabase& database, bool whole) {
  for (int i = 0; i < 4; ++i)
    database.Run(Format("create table t%d (a int not null%s)", i, i > 1 && whole ? ", b int not null" : ""));
}

TEST(LostSideTest, AKilledServerEndsACommandAndTheSideIsNamed) {
  const struct {
    const char* name;
    std::vector<std::string> arguments;  // "W" is the killed server's whole database, "w" that of the other one
    const char* at;
    int time;           // 0 means that the server is gone already
    std::string place;  // behind the name of the side
    const char* array;  // in the document
    std::size_t found;
    int status;  // once the server is back
  } cases[] = {
      {"login", {"compare", "W", "l"}, "", 0, "", "actions", 0, 1},
      {"reference, list", {"compare", "W", "l"}, "show tables", 1, "", "actions", 0, 1},
      {"reference, table", {"compare", "W", "l"}, "show create table `t3`", 1, ": table t3", "actions", 1, 1},
      {"target, list", {"compare", "w", "L"}, "show tables", 1, "", "actions", 0, 1},
      {"target, table", {"compare", "w", "L"}, "show create table `t3`", 1, ": table t3", "actions", 1, 1},
      {"target, copied", {"script", "w", "L"}, "show tables", 2, "", "lines", 0, 0},
      {"schema", {"schema", "W"}, "show create table `t2`", 1, ": table t2", "tables", 3, 0},
  };
  TLiveDatabase whole("whole"), less("less"), whole_there("whole", Victim()), less_there("less", Victim());
  Fill(whole, true), Fill(whole_there, true);
  Fill(less, false), Fill(less_there, false);
  TWitness witness(whole);
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    int times = 0;
    TRelay relay(Victim().Port(), [&](const std::string& statement) {
      if (statement.starts_with(c.at) && ++times == c.time) Victim().Kill();
      return EFate::Pass;
    });
    std::vector<std::string> arguments = c.arguments;
    arguments.emplace_back("--no-read-ahead");  // so that the statement is the one whose answer is waited for
    std::string killed;
    for (std::string& argument : arguments) {
      if (argument.size() > 1) continue;
      const bool here = argument[0] >= 'a';
      const std::string database = argument == "w" || argument == "W" ? "whole" : "less";
      if (!here) killed = NameAt(relay.Port(), database);
      argument = here ? LiveSource(database) : LiveSource(database, relay.Port());
    }
    arguments.insert(arguments.end(), {"--format", "json"});
    if (c.time == 0) Victim().Kill();

    const TAnswer answer = RunLive(arguments);
    EXPECT_EQ(answer.status, 2);
    EXPECT_THAT(answer.err, HasSubstr("velmora-cli: " + killed + c.place + ": " + kLost));
    EXPECT_THAT(answer.out, HasSubstr(kLost));
    const TJson json = TJson::parse(answer.out);
    EXPECT_TRUE(json["error"].is_string());
    EXPECT_EQ(json[c.array].size(), c.found) << "what was found before stays";
    EXPECT_FALSE(json.value("identical", false));
    EXPECT_TRUE(witness.NothingLeft());

    Victim().Restart();
    const TAnswer again = RunLive(arguments);
    EXPECT_EQ(again.status, c.status) << again.err;
    EXPECT_TRUE(TJson::parse(again.out)["error"].is_null());
  }
}

// The server is well, and only this connection has gone: ended by an administrator, or cut on its way.
TEST(LostSideTest, ACutConnectionOfEitherSideIsNamedToo) {
  const struct {
    const char* command;
    bool target;
    const char* at;
    int time;
    EFate fate;
    const char* place;
  } cases[] = {
      {"compare", false, "show tables", 1, EFate::CutBefore, ""},
      {"compare", true, "show create table `t3`", 1, EFate::CutWithin, ": table t3"},
      {"script", false, "show tables", 2, EFate::CutAfter, ""},
      {"script", true, "show tables", 2, EFate::CutWithin, ""},
      {"script", true, "show tables", 3, EFate::CutBefore, ""},
      {"sync", false, "show create table `t3`", 1, EFate::CutBefore, ": table t3"},
      {"sync", true, "show create table `t3`", 1, EFate::CutAfter, ": table t3"},
  };
  TLiveDatabase whole("whole"), less("less");
  Fill(whole, true);
  Fill(less, false);
  TWitness witness(less);
  for (const auto& c : cases) {
    SCOPED_TRACE(Format("%s, %s at %s", c.command, c.target ? "target" : "reference", c.at));
    int times = 0;
    TRelay relay(TPrivateServer::Shared().Port(), [&](const std::string& statement) {
      return statement.starts_with(c.at) && ++times == c.time ? c.fate : EFate::Pass;
    });
    const std::string database = c.target ? "less" : "whole";
    const std::string cut = LiveSource(database, relay.Port());
    std::vector<std::string> arguments{c.command, c.target ? LiveSource("whole") : cut,
                                       c.target ? cut : LiveSource("less"), "--no-read-ahead"};
    if (arguments[0] == "sync") arguments.emplace_back("--yes");
    const TAnswer answer = RunLive(arguments);
    EXPECT_EQ(answer.status, 2);
    EXPECT_THAT(answer.err, HasSubstr(NameAt(relay.Port(), database) + c.place + ": " + kLost));
    EXPECT_TRUE(witness.NothingLeft());
  }
}

// A side that is not connected any more, since a comparison is over, is not at fault for that.
TEST(LostSideTest, NoSideIsNamedForAnErrorOfTheComparison) {
  TLiveDatabase whole("whole"), less("less");
  Fill(whole, true);
  Fill(less, false);
  for (const char* command : {"compare", "script"}) {
    const TAnswer answer = RunLive({command, LiveSource("less"), LiveSource("whole")});
    EXPECT_EQ(answer.status, 2);
    EXPECT_EQ(answer.err,
              "velmora-cli: table t2: List index out of bounds (-1)\n"
              "velmora-cli: note: --dialect exact reads this table\n")
        << command;
  }
}

TEST(LostSideTest, RowsThatBreakOffAreAnError) {
  TLiveDatabase database("broken");
  database.Run("create table t as select seq, repeat('x', 40) from seq_1_to_100");
  TRelay relay(TPrivateServer::Shared().Port(), [](const std::string& statement) {
    return statement.starts_with("select * from") ? EFate::CutWithin : EFate::Pass;
  });
  const TAnswer json = RunLive({"rows", LiveSource("broken", relay.Port()), "t", "--format", "json"});
  EXPECT_EQ(json.status, 2);
  EXPECT_THAT(TJson::parse(json.out)["error"].get<std::string>(), StartsWith(kLost));
  EXPECT_EQ(RunLive({"rows", LiveSource("broken", relay.Port()), "t"}).status, 2);
}

// --- A run that is cut off

class CutRunTest : public ::testing::Test {
 protected:
  TAnswer RunScript(const std::string& target, const std::string& script) {
    WriteFileText(folder_ / "s.sql", script);
    return RunLive({"sync", "unused", target, "--script", folder_ / "s.sql", "--yes"});
  }

  testing::TScratchFolder folder_;
};

constexpr char kTwoRows[] = "insert into t values (1);\ninsert into t values (2);\n";
constexpr char kSecondRow[] = "insert into t values (2)";

TEST_F(CutRunTest, TellsWhereAndLeavesNothingBehind) {
  const char* const kUnknown = "2 of 2 statements ran before it, and whether they are in force is not known";
  const struct {
    const char* script;
    const char* at;
    EFate fate;
    const char* told;
    const char* rows;  // in the table afterwards
  } cases[] = {
      {kTwoRows, "start transaction", EFate::CutBefore, "no statement ran before it", "0"},
      {kTwoRows, kSecondRow, EFate::CutBefore, "statement 2 of 2 failed at line 2, column 1: insert", "0"},
      {kTwoRows, kSecondRow, EFate::CutAfter, "1 of 2 statements ran before it and were rolled back", "0"},
      {kTwoRows, "commit", EFate::CutBefore, kUnknown, "0"},
      {kTwoRows, "commit", EFate::CutAfter, kUnknown, "2"},
      {"insert into t values (1);\ncreate table u (a int);\ninsert into t values (2);\n", kSecondRow, EFate::CutBefore,
       "2 of 3 statements ran before it and are in force", "1"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(Format("cut at %s", c.at));
    TLiveDatabase database("cut");
    database.Run("create table t (a int) engine=InnoDB");
    TWitness witness(database);
    TRelay relay(TPrivateServer::Shared().Port(),
                 [&](const std::string& statement) { return statement == c.at ? c.fate : EFate::Pass; });
    const TAnswer answer = RunScript(LiveSource("cut", relay.Port()), c.script);
    EXPECT_EQ(answer.status, 2);
    EXPECT_EQ(answer.out, "");
    EXPECT_THAT(answer.err, HasSubstr(std::string("velmora-cli: ") + kLost));
    EXPECT_THAT(answer.err, HasSubstr("the connection to the target "));
    EXPECT_THAT(answer.err, HasSubstr(c.told));
    EXPECT_TRUE(witness.NothingLeft());
    EXPECT_EQ(witness.Ask("select count(*) from t"), c.rows);
  }
}

TEST_F(CutRunTest, AKilledServerHasNothingOfTheTransaction) {
  for (const char* at : {kSecondRow, "commit"}) {
    TLiveDatabase database("killed", Victim());
    database.Run("create table t (a int) engine=InnoDB");
    TRelay relay(Victim().Port(), [&](const std::string& statement) {
      if (statement == at) Victim().Kill();
      return EFate::Pass;
    });
    const TAnswer answer = RunScript(LiveSource("killed", relay.Port()), kTwoRows);
    EXPECT_EQ(answer.status, 2);
    EXPECT_THAT(answer.err, HasSubstr(kLost));
    EXPECT_THAT(answer.err, HasSubstr("the connection to the target "));
    Victim().Restart();
    TLiveDatabase witness("witness", Victim());
    EXPECT_EQ(testing::Answer(witness.Connection(), "select count(*) from killed.t"), "0") << at;
    EXPECT_EQ(RunScript(LiveSource("killed", Victim().Port()), kTwoRows).status, 0) << "it can be run again";
  }
}

// Going on by a new connection would run the rest outside the transaction.
TEST_F(CutRunTest, AServerThatIsBackAtOnceGetsNothingMore) {
  TLiveDatabase database("back", Victim());
  database.Run("create table t (a int) engine=InnoDB");
  std::promise<void> reached, back;
  TRelay relay(Victim().Port(), [&](const std::string& statement) {
    if (statement == kSecondRow) {
      reached.set_value();
      back.get_future().wait();
    }
    return EFate::Pass;
  });
  auto run = std::async(std::launch::async, [&] {
    return RunScript(LiveSource("back", relay.Port()), Format("%sinsert into t values (3);\n", kTwoRows));
  });
  reached.get_future().wait();
  Victim().Restart();  // by this thread, since a server ends with the one that started it
  back.set_value();
  const TAnswer answer = run.get();
  EXPECT_EQ(answer.status, 2);
  EXPECT_THAT(answer.err, HasSubstr("statement 2 of 3 failed at line 2, column 1"));
  EXPECT_THAT(answer.err, HasSubstr("1 of 3 statements ran before it and were rolled back"));
  TLiveDatabase witness("witness", Victim());
  EXPECT_EQ(testing::Answer(witness.Connection(), "select count(*) from back.t"), "0");
}

// --- What is held while the companion waits, and after it

TEST(HeldTest, NothingWhileTheQuestionStandsNorAfterTheAnswer) {
  TLiveDatabase reference("wanted"), target("held");
  reference.Run("create table t (a int not null, b int not null)");
  target.Run("create table t (a int not null)");
  TWitness at_reference(reference), at_target(target);
  const auto answering = [&](const std::string& answer) {
    return [&, answer](const std::string&, bool) {
      EXPECT_TRUE(at_reference.NothingHeld());
      EXPECT_TRUE(at_target.NothingHeld());
      return answer;
    };
  };
  EXPECT_EQ(RunLive({"sync", LiveSource("wanted"), LiveSource("held")}, answering("n")).status, 2);
  EXPECT_TRUE(at_target.NothingLeft());
  EXPECT_EQ(RunLive({"sync", LiveSource("wanted"), LiveSource("held")}, answering("y")).status, 0);
  EXPECT_TRUE(at_target.NothingLeft());
}

TEST_F(CutRunTest, NothingIsHeldAfterAnyError) {
  TLiveDatabase reference("wanted"), target("held");
  reference.Run("create table t (a int not null)");
  target.Run("create table t (a mediumint not null)");
  TWitness witness(target);
  const std::string unread = "velmora-cli: localhost.held: table t: TDBConn.DecodeColumn: Unhandled column type";
  for (const std::vector<std::string>& arguments :
       std::vector<std::vector<std::string>>{{"compare", LiveSource("wanted"), LiveSource("held")},
                                             {"compare", LiveSource("held"), LiveSource("wanted")},
                                             {"sync", LiveSource("wanted"), LiveSource("held"), "--yes"}}) {
    const TAnswer answer = RunLive(arguments);
    EXPECT_EQ(answer.status, 2);
    EXPECT_THAT(answer.err, HasSubstr(unread));
    EXPECT_TRUE(witness.NothingLeft()) << arguments[0];
  }
  EXPECT_EQ(RunScript(LiveSource("held"), "insert into t values (1);\nbad;\n").status, 2);
  EXPECT_TRUE(witness.NothingLeft());
  EXPECT_EQ(witness.Ask("select count(*) from t"), "0");
}

TEST_F(CutRunTest, AScriptMayBeginWithAMarkAndHaveBareLineFeeds) {
  TLiveDatabase database("marked");
  const std::string mark = "\xEF\xBB\xBF";
  const TAnswer ran =
      RunScript(LiveSource("marked"), mark + "create table t (a int);\n-- two\ninsert into t values (2);\n");
  EXPECT_EQ(ran.status, 0) << ran.err;
  EXPECT_EQ(testing::Answer(database.Connection(), "select a from t"), "2");
  const TAnswer failed = RunScript(LiveSource("marked"), mark + "bad;\n");
  EXPECT_THAT(failed.err, HasSubstr("statement 1 of 1 failed at line 1, column 1: bad\n"));
}

}  // namespace
}  // namespace velmora
