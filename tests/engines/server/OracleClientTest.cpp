// SPDX-License-Identifier: GPL-3.0-or-later

// The session over the client library, and what runs on any session: queries, scripts.

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>

#include "engines/server/ClientOracle.h"
#include "support/Asides.h"
#include "support/FakeOracle.h"
#include "support/MessageOf.h"
#include "support/ScratchFolder.h"
#include "util/Dates.h"
#include "util/Errors.h"
#include "util/Files.h"

namespace velmora {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using testing::FakeOracleOf;
using ::testing::HasSubstr;
using testing::MessageOf;
using ::testing::StartsWith;
using testing::TElsewhere;
using testing::TFakeOracle;
using testing::TScratchFolder;

constexpr char kHome[] = VELMORA_FAKE_CLIENTS "/oracle";
constexpr char kOldHome[] = VELMORA_FAKE_CLIENTS "/oracle-old";
constexpr char kUnresolved[] = "ORA-12154: TNS:could not resolve the connect identifier specified";
constexpr char kGone[] = "ORA-03113: end-of-file on communication channel";

class OracleClient : public ::testing::Test {
 protected:
  OracleClient() { unsetenv("ORACLE_HOME"); }
  ~OracleClient() override {
    session.SetConnected(false);
    EXPECT_EQ(server.given_out, 0);
    EXPECT_THAT(server.faults, ElementsAre());
  }

  void Fill(TOraSession& filled) {
    filled.Server = "ORCL";
    filled.Username = "scott";
    filled.Password = "tiger";
  }
  void Connect() {
    Fill(session);
    session.SetConnected(true);
    server.TakeLog();
  }
  // The one value of a query on a column of this type.
  TVariant ValueOf(const TFakeOracle::TColumn& column, const std::optional<std::string>& value) {
    server.answers["select"] = {};
    server.answers["select"].columns = {column};
    server.answers["select"].rows = {{value}};
    TOraQuery query(session);
    query.SQL = "select";
    query.Open();
    EXPECT_EQ(query.RecordCount(), 1);
    return query.Value(0);
  }

  TFakeOracle& server = FakeOracleOf(kHome);
  TOraLibrarySession session{kHome};
};

TEST_F(OracleClient, LogsInByItsMode) {
  const struct {
    int mode;
    const char* login;
  } kModes[] = {{kOraNormal, "login scott 0"}, {kOraSysOper, "login scott 4"}, {kOraSysDba, "login scott 2"}};
  for (const auto& c : kModes) {
    Fill(session);
    session.ConnectMode = c.mode;
    session.SetConnected(true);
    EXPECT_TRUE(session.GetConnected());
    EXPECT_THAT(server.TakeLog(), ElementsAre("attach ORCL", c.login, StartsWith("run alter session set nls_")));
    session.SetConnected(false);
    EXPECT_FALSE(session.GetConnected());
    EXPECT_THAT(server.TakeLog(), ElementsAre("rollback", "end", "detach"));
  }
}

TEST_F(OracleClient, SaysWhyItDidNotConnectAndHoldsNothing) {
  const struct {
    void (*spoil)(TFakeOracle& server, TOraSession& session);
    const char* message;
  } kCases[] = {
      {[](TFakeOracle&, TOraSession& s) { s.Password = "lion"; }, "ORA-01017: invalid username/password; logon denied"},
      {[](TFakeOracle& f, TOraSession&) {
         f.attach_error = {12154, std::string(kUnresolved) + "\n"};
       },
       kUnresolved},
      {[](TFakeOracle& f, TOraSession&) { f.attach_error.code = 12154; },
       "The Oracle client library failed without a text (-1)"},
      {[](TFakeOracle& f, TOraSession&) { f.gone = true; }, kGone},  // after the login
      {[](TFakeOracle&, TOraSession& s) { s.Options.Net = true; },
       "direct mode is not available on this system; use the Oracle client"},
  };
  for (const auto& c : kCases) {
    server = {};
    TOraLibrarySession spoilt(kHome);
    Fill(spoilt);
    c.spoil(server, spoilt);
    EXPECT_EQ(MessageOf([&] { spoilt.SetConnected(true); }), c.message);
    EXPECT_FALSE(spoilt.GetConnected()) << c.message;
    EXPECT_EQ(server.given_out, 0) << c.message;
    EXPECT_EQ(MessageOf([&] { spoilt.Run("x"); }), "Not connected") << c.message;
  }
}

TEST_F(OracleClient, MayBeTalkedToElsewhereAndLeftThere) {
  server.answers["select"].columns = {{"A"}};
  server.answers["select"].rows = {{"1"}};
  const char* kLeft[] = {"the login", "a query", "a statement"};
  for (int i = 0; i < 3; ++i) {
    {
      TElsewhere elsewhere(i);
      const TAsideGuard guard(elsewhere);
      EXPECT_THROW((Connect(), session.Run("select"), session.Run("grant")), ECancelled) << kLeft[i];
      EXPECT_FALSE(session.GetConnected()) << kLeft[i];
      EXPECT_EQ(MessageOf([&] { session.Run("select"); }), "Not connected") << kLeft[i];
    }
    Connect();
    EXPECT_EQ(session.Run("select").rows.size(), 1U) << kLeft[i];
    session.SetConnected(false);
    EXPECT_EQ(server.given_out, 0) << kLeft[i];
  }
}

TEST_F(OracleClient, SaysWhatToInstall) {
  const TScratchFolder broken, empty;
  WriteFileText(broken / "libclntsh.so.19.1", "no library");
  const auto connect = [](const std::string& home) {
    return MessageOf([&] {
      unsetenv("ORACLE_HOME");
      TOraLibrarySession(home).SetConnected(true);
    });
  };
  EXPECT_THAT(connect(broken.Path()),
              AllOf(StartsWith("The Oracle client library " + broken / "libclntsh.so.19.1" + " cannot be loaded: "),
                    HasSubstr("install an Oracle client")));
  EXPECT_EQ(connect(kOldHome), std::string("The Oracle client library ") + kOldHome +
                                   "/lib/libclntsh.so has no entry point OCIStmtFetch2: install an Oracle client of "
                                   "release 10.2 or later");
  if (dlopen("libclntsh.so", RTLD_LAZY) != nullptr) GTEST_SKIP() << "this machine has an Oracle client";
  EXPECT_THAT(connect(empty.Path()), StartsWith("The Oracle client library libclntsh.so cannot be loaded: "));
}

TEST_F(OracleClient, TheEnvironmentsHomeGoesFirst) {
  setenv("ORACLE_HOME", kHome, 1);
  TOraLibrarySession other(kOldHome);
  Fill(other);
  EXPECT_EQ(MessageOf([&] { other.SetConnected(true); }), "nothing raised");
  unsetenv("ORACLE_HOME");
  Connect();
  EXPECT_STREQ(getenv("ORACLE_HOME"), kHome);
}

TEST_F(OracleClient, ReadsValuesByTheirType) {
  const struct {
    std::uint16_t type;
    const char* text;
    EFieldKind kind;
    TVariant value;
  } kCases[] = {
      {1, "\xC3\xA9", EFieldKind::String, "\xC3\xA9"},
      {1, "", EFieldKind::String, ""},
      {96, "a ", EFieldKind::FixedChar, "a "},
      {2, "12345678901234567890123456789012345678", EFieldKind::Bcd, "12345678901234567890123456789012345678"},
      {2, "-.5", EFieldKind::Bcd, "-0.5"},
      {2, ".5", EFieldKind::Bcd, "0.5"},
      {2, "-", EFieldKind::Bcd, "-"},
      {100, "1.5E+000", EFieldKind::Float, 1.5},
      {101, "Nan", EFieldKind::Float, "Nan"},
      {12, "2001-02-03 04:05:06", EFieldKind::DateTime, TMoment{EncodeDate(2001, 2, 3) + EncodeTime(4, 5, 6)}},
      {12, "-4712-01-01 00:00:00", EFieldKind::DateTime, "-4712-01-01 00:00:00"},
      {187, "2001-02-03 00:00:00", EFieldKind::TimeStamp, TMoment{EncodeDate(2001, 2, 3)}},
      {188, "2001-02-03 00:00:00.5 +01:00", EFieldKind::String, "2001-02-03 00:00:00.5 +01:00"},
      {23, "\x01\xFF", EFieldKind::VarBytes, "\x01\xFF"},
      {8, "search me, all of me", EFieldKind::Memo, "search me, all of me"},
      {24, "\xFF", EFieldKind::Blob, "\xFF"},
      {112, "", EFieldKind::OraClob, ""},
      {113, "123456", EFieldKind::OraBlob, "123456"},
  };
  Connect();
  for (const auto& c : kCases) {
    const TFakeOracle::TColumn column{"c", c.type};
    EXPECT_EQ(ValueOf(column, c.text), c.value) << c.type << ' ' << c.text;
    EXPECT_EQ(session.Run("select").fields[0].kind, c.kind) << c.type;
    EXPECT_EQ(ValueOf(column, std::nullopt), TVariant()) << c.type;
  }
}

TEST_F(OracleClient, LongValuesComeWholeOrNotAtAll) {
  Connect();
  const std::string megabyte(1000001, 'x');
  server.piece = 70000;  // more than there is room for
  EXPECT_EQ(ValueOf({"c", 8}, megabyte), TVariant(megabyte));
  const std::string wide(400, 'x');  // every byte of the server's may become four
  EXPECT_EQ(ValueOf({"c", 1, 100}, wide), TVariant(wide));
  EXPECT_EQ(ValueOf({"c", 1, 32767}, megabyte.substr(0, 65534)), TVariant(megabyte.substr(0, 65534)));
  EXPECT_EQ(ValueOf({"c", 1, 10, true}, "x"), TVariant("x"));  // the stand-in looks at the character form

  const struct {
    TFakeOracle::TColumn column;
    std::size_t size;
    const char* message;
  } kCases[] = {
      {{"c", 1, 100}, 401, "A value of column c is too long to be read"},
      {{"c", 1, 100}, 40000, "A value of column c is too long to be read"},
      {{"c", 23, 10}, 11, "A value of column c is too long to be read"},
      {{"c", 108}, 1, "Column c is of a type that cannot be read (108)"},
  };
  for (const auto& c : kCases)
    EXPECT_EQ(MessageOf([&] { ValueOf(c.column, megabyte.substr(0, c.size)); }), c.message) << c.size;
}

TEST_F(OracleClient, AQueryMovesBothWays) {
  Connect();
  AddOracleAnswers(server, "query select\ncolumns A\nrow 1\nrow 2");
  TOraQuery query(session);
  query.SQL = "select";
  query.Open();
  query.Prior();
  EXPECT_EQ(query.FieldByName("a").value, TVariant("1"));
  query.Next();
  query.Next();
  query.Next();
  EXPECT_TRUE(query.Eof());
  EXPECT_EQ(query.Value(0), TVariant());
  query.Prior();
  EXPECT_EQ(query.Value(0), TVariant("2"));
  EXPECT_EQ(MessageOf([&] { query.Value(1); }), "List index out of bounds (1)");
  query.First();
  EXPECT_EQ(query.Value(0), TVariant("1"));
  query.Close();
  EXPECT_TRUE(query.Eof());
  query.Execute();
  EXPECT_EQ(query.RowsAffected(), 2);
}

TEST_F(OracleClient, AServerThatGoesAwayEndsTheConnection) {
  Connect();
  AddOracleAnswers(server, "query select\ncolumns A\nrow 1\nlost");
  session.StartTransaction();
  EXPECT_EQ(MessageOf([&] { session.Run("select"); }), kGone);
  EXPECT_FALSE(session.GetConnected());
  EXPECT_FALSE(session.InTransaction());
  EXPECT_EQ(MessageOf([&] { session.Run("select"); }), "Not connected");
  server.gone = false;
  Connect();
  EXPECT_FALSE(session.InTransaction());
  EXPECT_EQ(MessageOf([&] { session.Run("update"); }), "nothing raised");
  server.answers["x"].error = {942, "ORA-00942: table or view does not exist\n"};
  EXPECT_EQ(MessageOf([&] { session.Run("x"); }), "ORA-00942: table or view does not exist");
  EXPECT_TRUE(session.GetConnected());
}

// --- Scripts

TEST(OracleScript, StatementsEndOutsideQuotesAndComments) {
  const struct {
    const char* script;
    TStringList statements;
  } kCases[] = {
      {"", {}},
      {" ; ;\r\n-- nothing;\n/* ; */;", {}},
      {"a;b", {"a", "b"}},
      {" a ;\r\nb;\r\n", {"a", "b"}},
      {"insert into t values(';''; ');b", {"insert into t values(';''; ')", "b"}},
      {"drop table \"a;b\";b", {"drop table \"a;b\"", "b"}},
      {"a -- it's; here\n;b", {"a -- it's; here", "b"}},
      {"a /* it's; */;b", {"a /* it's; */", "b"}},
      {"values(q'[it's; ]here]');b", {"values(q'[it's; ]here]')", "b"}},
      {"values(nq'!it's;!');b", {"values(nq'!it's;!')", "b"}},
      {"seq'[;]';b", {"seq'[;]'", "b"}},
      {"a';b", {"a';b"}},
      {"a/*;b", {"a/*;b"}},
      {"values(q'", {"values(q'"}},
      {"a-;b/;", {"a-", "b/"}},
  };
  for (const auto& c : kCases) EXPECT_EQ(OraStatements(c.script), c.statements) << c.script;
}

TEST_F(OracleClient, AFailingStatementIsHandedToTheScriptsEvent) {
  Connect();
  server.answers["b"].error = {900, "ORA-00900: invalid SQL statement\n"};
  TOraScript script(session);
  script.SQL = "a;b;c";
  const auto run = [&] {
    std::string result = MessageOf([&] { script.Execute(); });
    return result + ": " + JoinList(server.TakeLog(), ",");
  };
  EXPECT_EQ(run(), "ORA-00900: invalid SQL statement: run a,commit,run b");
  script.OnError = [](std::exception_ptr, const std::string& sql, EOraErrorAction& action) {
    EXPECT_EQ(sql, "b");
    EXPECT_EQ(action, EOraErrorAction::Abort);
  };
  EXPECT_EQ(run(), "nothing raised: run a,commit,run b");
  script.OnError = [](std::exception_ptr, const std::string&, EOraErrorAction& a) { a = EOraErrorAction::Continue; };
  EXPECT_EQ(run(), "nothing raised: run a,commit,run b,run c,commit");
}

}  // namespace
}  // namespace velmora
