// SPDX-License-Identifier: GPL-3.0-or-later

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
#include "util/Lists.h"
#include "util/Text.h"

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

// Tables t0 to t3, of which t2 and t3 lack a column where it is not `whole`.
void Fill(TLiveDatabase& database, bool whole) {
  for (int i = 0; i < 4; ++i)
    database.Run(Format("create table t%d (a int not null%s)", i, i > 1 && whole ? ", b int not null" : ""));
}

// What happens to a connection to the victim at a statement: a cut, or else the server's death.
struct TFault {
  const char* at;  // the beginning of the statement
  int time;        // counts those that begin so; 0 means that the server is gone already
  EFate fate = EFate::Pass;

  bool Kills() const { return fate == EFate::Pass; }
};

TRelay Faulty(const TFault& fault) {
  return TRelay(Victim().Port(), [&fault, times = 0](const std::string& statement) mutable {
    if (!statement.starts_with(fault.at) || ++times != fault.time) return EFate::Pass;
    if (fault.Kills()) Victim().Kill();
    return fault.fate;
  });
}

TEST(LostSideTest, IsNamedWithWhatWasFoundAndLeavesNothing) {
  const struct {
    const char* command;  // the victim has the database whose name is in capitals
    TFault fault;
    const char* place;  // after the name of the side
    std::size_t found;  // before it, where there is a document
    int again;          // the status once the server is back
  } cases[] = {
      {"compare WHOLE less", {"show tables", 1, EFate::CutBefore}, "", 0, 1},
      {"compare whole LESS", {"show create table `t3`", 1, EFate::CutWithin}, ": table t3", 1, 1},
      {"script WHOLE less", {"show tables", 2, EFate::CutAfter}, "", 0, 0},
      {"script whole LESS", {"show tables", 2, EFate::CutWithin}, "", 0, 0},
      {"script whole LESS", {"show tables", 3, EFate::CutBefore}, "", 0, 0},
      {"sync WHOLE less", {"show create table `t3`", 1, EFate::CutBefore}, ": table t3", 0, 0},
      {"sync whole LESS", {"show create table `t3`", 1, EFate::CutAfter}, ": table t3", 0, 0},
      {"compare WHOLE less", {"", 0}, "", 0, 1},
      {"compare WHOLE less", {"show tables", 1}, "", 0, 1},
      {"compare WHOLE less", {"show create table `t3`", 1}, ": table t3", 1, 1},
      {"compare whole LESS", {"show tables", 1}, "", 0, 1},
      {"compare whole LESS", {"show create table `t3`", 1}, ": table t3", 1, 1},
      {"script whole LESS", {"show tables", 2}, "", 0, 0},
      {"schema WHOLE", {"show create table `t2`", 1}, ": table t2", 3, 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(Format("%s, %s at %s", c.command, c.fault.Kills() ? "killed" : "cut", c.fault.at));
    TLiveDatabase whole("whole"), less("less"), whole_there("whole", Victim()), less_there("less", Victim());
    Fill(whole, true), Fill(whole_there, true);
    Fill(less, false), Fill(less_there, false);
    TWitness here(whole), there(whole_there);
    TRelay relay = Faulty(c.fault);
    TStringList arguments;
    SplitText(" ", c.command, arguments);
    std::string lost;
    for (std::size_t i = 1; i < arguments.size(); ++i) {
      const std::string name = LowerText(arguments[i]);
      if (name != arguments[i]) lost = Format("127.0.0.1:%d.%s", relay.Port(), name);
      arguments[i] = name == arguments[i] ? LiveSource(name) : LiveSource(name, relay.Port());
    }
    const bool document = arguments[0] != "sync";
    arguments.insert(arguments.end(), {"--no-read-ahead"});  // the statement is the one whose answer is waited for
    if (arguments[0] == "compare" || arguments[0] == "script" || !document)
      arguments.insert(arguments.end(), {"--dialect", "standard"});
    if (document) arguments.insert(arguments.end(), {"--format", "json"});
    if (!document) arguments.emplace_back("--yes");
    if (c.fault.time == 0) Victim().Kill();

    const TAnswer answer = RunLive(arguments);
    EXPECT_EQ(answer.status, 2);
    EXPECT_THAT(answer.err, HasSubstr("velmora-cli: " + lost + c.place + ": " + kLost));
    EXPECT_TRUE(here.NothingLeft());
    EXPECT_TRUE(c.fault.Kills() || there.NothingLeft());
    if (document) {
      const TJson json = TJson::parse(answer.out);
      EXPECT_TRUE(json["error"].is_string());
      EXPECT_THAT(answer.out, HasSubstr(kLost));
      EXPECT_FALSE(json.value("identical", false));
      for (const char* array : {"actions", "lines", "tables"})
        if (json.contains(array)) EXPECT_EQ(json[array].size(), c.found) << "what was found before stays";
    }
    if (c.fault.Kills()) Victim().Restart();
    const TAnswer again = RunLive(arguments);
    EXPECT_EQ(again.status, c.again) << again.err;
    if (document) EXPECT_TRUE(TJson::parse(again.out)["error"].is_null());
  }
}

TEST(LostSideTest, RowsThatBreakOffAreAnError) {
  TLiveDatabase database("broken");
  database.Run("create table t as select seq, repeat('x', 40) from " + testing::Numbers(100));
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
    return RunLive({"sync", "--dialect", "standard", "unused", target, "--script", folder_ / "s.sql", "--yes"});
  }

  testing::TScratchFolder folder_;
};

constexpr char kTwoRows[] = "insert into t values (1);\ninsert into t values (2);\n";
constexpr char kSecondRow[] = "insert into t values (2)";

TEST_F(CutRunTest, TellsWhereAndLeavesNothing) {
  const char* const kUnknown = "2 of 2 statements ran before it, and whether they are in force is not known";
  const char* const kRolledBack = "1 of 2 statements ran before it and were rolled back";
  const struct {
    const char* script;
    TFault fault;
    const char* told;
    const char* rows;  // in the table afterwards
  } cases[] = {
      {kTwoRows, {"start transaction", 1, EFate::CutBefore}, "no statement ran before it", "0"},
      {kTwoRows, {kSecondRow, 1, EFate::CutBefore}, "statement 2 of 2 failed at line 2, column 1: insert", "0"},
      {kTwoRows, {kSecondRow, 1, EFate::CutAfter}, kRolledBack, "0"},
      {kTwoRows, {"commit", 1, EFate::CutBefore}, kUnknown, "0"},
      {kTwoRows, {"commit", 1, EFate::CutAfter}, kUnknown, "2"},
      {"insert into t values (1);\ncreate table u (a int);\ninsert into t values (2);\n",
       {kSecondRow, 1, EFate::CutBefore},
       "2 of 3 statements ran before it and are in force",
       "1"},
      {kTwoRows, {kSecondRow, 1}, kRolledBack, "0"},
      {kTwoRows, {"commit", 1}, kUnknown, "0"},
      {"create table u (a int);\ndo sleep(0);\ndrop table u;\n",
       {"do sleep", 1},
       "1 of 3 statements ran before it and are in force",
       "0"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(Format("%s at %s", c.fault.Kills() ? "killed" : "cut", c.fault.at));
    TLiveDatabase database("cut", Victim());
    database.Run("create table t (a int) engine=InnoDB");
    TWitness witness(database);
    TRelay relay = Faulty(c.fault);
    const TAnswer answer = RunScript(LiveSource("cut", relay.Port()), c.script);
    EXPECT_EQ(answer.status, 2);
    EXPECT_EQ(answer.out, "");
    EXPECT_THAT(answer.err, HasSubstr(std::string("velmora-cli: ") + kLost));
    EXPECT_THAT(answer.err, HasSubstr("the connection to the target "));
    EXPECT_THAT(answer.err, HasSubstr(c.told));
    EXPECT_TRUE(c.fault.Kills() || witness.NothingLeft());
    if (c.fault.Kills()) Victim().Restart();
    TLiveDatabase after("witness", Victim());
    EXPECT_EQ(testing::Answer(after.Connection(), "select count(*) from cut.t"), c.rows);
    EXPECT_EQ(RunScript(LiveSource("cut", Victim().Port()), kTwoRows).status, 0) << "it can be run again";
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
  EXPECT_EQ(RunLive({"sync", "--dialect", "standard", LiveSource("wanted"), LiveSource("held")}, answering("n")).status,
            2);
  EXPECT_TRUE(at_target.NothingLeft());
  EXPECT_EQ(RunLive({"sync", "--dialect", "standard", LiveSource("wanted"), LiveSource("held")}, answering("y")).status,
            0);
  EXPECT_TRUE(at_target.NothingLeft());
}

TEST_F(CutRunTest, NothingIsHeldAfterAnyError) {
  TLiveDatabase reference("wanted"), target("held");
  reference.Run("create table t (a int not null)");
  target.Run("create table t (a mediumint not null)");
  TWitness witness(target);
  const std::string wanted = LiveSource("wanted"), held = LiveSource("held");
  for (const TStringList& arguments : {TStringList{"compare", "--dialect", "standard", wanted, held},
                                       {"compare", "--dialect", "standard", held, wanted},
                                       {"sync", "--dialect", "standard", wanted, held, "--yes"}}) {
    EXPECT_EQ(RunLive(arguments).status, 2);
    EXPECT_TRUE(witness.NothingLeft()) << arguments[0];
  }
  EXPECT_EQ(RunScript(held, "insert into t values (1);\nbad;\n").status, 2);
  EXPECT_TRUE(witness.NothingLeft());
  EXPECT_EQ(witness.Ask("select count(*) from t"), "0");
}

}  // namespace
}  // namespace velmora
