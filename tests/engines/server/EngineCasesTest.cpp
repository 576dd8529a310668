// SPDX-License-Identifier: GPL-3.0-or-later

// The files of tests/data/servers: what the engines make of a database. Their steps are
//
//   firebird           a new database, made by the indented statements; the engine is connected to it
//   oracle             the indented lines are what a played server answers from now on; the engine is connected to it
//   WORD REST          a call of the engine, of those in kCalls below; the indented lines are what it gives or raises
//   told               statements that the engine has announced; of Oracle, also what the server has been asked

#include <gtest/gtest.h>
#include <stdlib.h>

#include <functional>
#include <map>
#include <sstream>

#include "core/Meta.h"
#include "engines/server/ClientFirebird.h"
#include "engines/server/ClientOracle.h"
#include "engines/server/DBConnInterbase.h"
#include "engines/server/DBConnOracle.h"
#include "support/FakeOracle.h"
#include "support/MessageOf.h"
#include "support/MetaDump.h"
#include "support/PrivateFirebird.h"
#include "support/RowText.h"
#include "support/Transcript.h"
#include "util/Dates.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Lists.h"
#include "util/Text.h"
#include "xml/XMLAccess.h"

namespace velmora::testing {
namespace {

constexpr char kCases[] = VELMORA_SOURCE_DIR "/tests/data/servers/";
constexpr char kOracle[] = VELMORA_FAKE_CLIENTS "/oracle";

std::unique_ptr<TDBConn> FirebirdEngine(const std::string& path, const std::string& server = {}) {
  return std::make_unique<TDBConnInterbase>(NewFirebirdDatabase(), server, path, "SYSDBA", "secret");
}

std::unique_ptr<TDBConnOracle> OracleEngine(const std::string& authmode = "Normal", bool direct = false) {
  return std::make_unique<TDBConnOracle>(std::make_unique<TOraLibrarySession>(kOracle), "ORCL", "scott", "tiger",
                                         authmode, direct);
}

// --- Calls of an engine

using TCall = std::string (*)(TDBConn& engine, const std::string& rest);

std::string Done() { return {}; }

std::string RowsOf(TDBConn& engine, const std::string& sql) {
  const std::unique_ptr<TDataset> rows = engine.OpenQuery(sql);
  TStringList columns;
  for (const TFieldDef& field : rows->Fields())
    columns.push_back(Format("%s %s %d", field.name, FieldKindName(field.kind), field.size));
  std::string text = JoinList(columns, "|") + "\n";
  for (; !rows->Eof(); rows->Next()) text += RowText(*rows) + "\n";
  return text;
}

std::string Fetched(TDBConn& engine, const std::string& table) {
  engine.meta().GotoTable(table);
  engine.FetchIfNeeded();
  return DumpMeta(engine.meta());
}

// "<TAG> SIZE PRECISION" of a column and what else is said of it: its texts with attributes, without, without default.
std::string ColumnTexts(TDBConn& engine, const std::string& rest) {
  std::istringstream words(rest);
  TMetaColumn column;
  column.table = "T";
  column.name = "A";
  std::string tag;
  words >> tag >> column.size >> column.precision;
  while (column.datatype < ntUnknown && NeutralTag(column.datatype) != tag)
    column.datatype = static_cast<TNeutralType>(column.datatype + 1);
  for (std::string word; words >> word;) {
    if (word == "notnull") column.notnull = true;
    if (word == "autoinc") column.autoinc = true;
    if (word.starts_with("default=")) column.default_ = word.substr(8);
    if (word.starts_with("word=")) column.description = word.substr(5);
  }
  std::string text, bare, plain;
  engine.ColumnDescription(column, true, text);
  engine.ColumnDescription(column, false, bare);
  engine.no_defaults = true;
  engine.ColumnDescription(column, true, plain);
  engine.no_defaults = false;
  return text + " | " + bare + " | " + plain + "\n";
}

std::string TypeOfWord(TDBConn& engine, const std::string& word) {
  TNeutralType type{};
  TNumber length, precision, scale;
  engine.DecodeColumn(word, 10, 30, 0, type, length, precision, scale);
  return std::string(NeutralTag(type)) + "\n";
}

// What the engine calls things, and what it lacks.
std::string Texts(TDBConn& e, const std::string&) {
  const auto line = [](const std::string& what, const std::function<void(std::string&)>& give) {
    std::string text = "(left alone)";
    const std::string message = MessageOf([&] { give(text); });
    return what + ": " + (message == "nothing raised" ? text : message) + "\n";
  };
  const TDateTime day = EncodeDate(2001, 2, 3);
  const TMetaKey primary{"my table", "k", true, true, false, "a;b"}, unique{"t", "k", false, true, false, "a"};
  return line("display name", [&](std::string& t) { e.GetDisplayName(t); }) +
         line("quoted name", [&](std::string& t) { t = e.QuoteName("a b"); }) +
         line("normal name", [&](std::string& t) { e.NormalizeName("a b.c d", t); }) +
         line("day", [&](std::string& t) { e.DateTimeLiteral(day, t); }) +
         line("moment", [&](std::string& t) { e.DateTimeLiteral(day + EncodeTime(14, 5, 6), t); }) +
         line("auto-increment", [&](std::string& t) { e.AutoIncKeyword(t); }) +
         line("surrogate key", [&](std::string& t) { e.SurrogateKeyColumn("id", t); }) +
         line("primary key", [&](std::string& t) { e.KeyDescription(primary, true, t); }) +
         line("its name", [&](std::string& t) { e.KeyDescription(primary, false, t); }) +
         line("unique key", [&](std::string& t) { e.KeyDescription(unique, true, t); }) +
         line("constraint", [&](std::string& t) { e.ConstraintDescription({}, true, t); }) +
         line("statements", [&](std::string&) { e.ParseDDL("drop table nothing"); }) +
         line("parts of tables", [&](std::string& t) { t = e.SupportsChunks("t") ? "yes" : "no"; }) +
         line("databases", [&](std::string& t) {
           TStringList list{"left over"};
           e.ListDatabases(list);
           t = JoinList(list, ",");
         });
}

const std::map<std::string, TCall> kCalls = {
    {"column", ColumnTexts},
    {"type", TypeOfWord},
    {"texts", Texts},
    {"connect", [](TDBConn& e, const std::string&) { return e.Connect(), Done(); }},
    {"reconnect", [](TDBConn& e, const std::string&) { return e.Reconnect(), Done(); }},
    {"disconnect", [](TDBConn& e, const std::string&) { return e.Disconnect(), Done(); }},
    {"start", [](TDBConn& e, const std::string&) { return e.StartTransaction(), Done(); }},
    {"commit", [](TDBConn& e, const std::string&) { return e.Commit(), Done(); }},
    {"rollback", [](TDBConn& e, const std::string&) { return e.Rollback(), Done(); }},
    {"state",
     [](TDBConn& e, const std::string&) {
       return std::string(e.GetConnected() ? "connected" : "apart") + (e.InTransaction() ? ", in a transaction" : "") +
              "\n";
     }},
    {"tables", [](TDBConn& e, const std::string&) { return DumpMeta(e.meta()); }},
    {"table", Fetched},
    {"count", [](TDBConn& e, const std::string& table) { return Format("%d\n", e.GetRecordCount(table)); }},
    {"one",
     [](TDBConn& e, const std::string& sql) {
       TVariant value;
       e.GetResultSQL(sql, value);
       return VarToText(value) + "\n";
     }},
    {"copy",
     [](TDBConn& e, const std::string&) {
       const std::unique_ptr<TDBConn> copy = e.Clone();
       return (copy->GetConnected() ? "connected\n" : "apart\n") + DumpMeta(copy->meta());
     }},
    {"rows", RowsOf},
    {"run", [](TDBConn& e, const std::string& sql) { return Format("%d\n", e.ExecSQL(sql)); }},
    {"part",
     [](TDBConn& e, const std::string& table) {
       std::unique_ptr<TDataset> rows = e.OpenTableDataChunk(table, 11, 5);
       const std::int64_t count = rows->RecordCount();
       e.CloseTable(std::move(rows));
       return Format("%d\n", count);
     }},
    {"drop-table", [](TDBConn& e, const std::string& table) { return e.DropTable(table), Done(); }},
    {"drop-column",
     [](TDBConn& e, const std::string& rest) {
       std::string column = rest;
       const std::string table = StrChop(" ", column);
       return e.DropColumn(table, column), Done();
     }},
    {"create-table",
     [](TDBConn& e, const std::string& rest) {
       TStringList parts;
       SplitText(" / ", rest, parts);
       e.CreateTable(parts.at(0), {parts.begin() + 1, parts.end()});
       return Done();
     }},
};

// --- Transcripts

class EngineCases : public ::testing::TestWithParam<std::string> {
 public:
  EngineCases() { unsetenv("ORACLE_HOME"); }
  ~EngineCases() override {
    engine_.reset();
    EXPECT_EQ(oracle_.given_out, 0);
    EXPECT_TRUE(oracle_.faults.empty());
  }

  // What a step gives.
  std::string Step(const std::string& word, const std::string& rest, const std::string& below) {
    if (word == "firebird")
      return Use(FirebirdEngine(firebird_.NewDatabaseOf(std::to_string(++databases_), below))), below;
    if (word == "oracle") {
      engine_.reset();
      AddOracleAnswers(oracle_ = {}, below);
      return Use(OracleEngine()), below;
    }
    if (word == "told") return Told();
    try {
      return kCalls.at(word)(*engine_, rest);
    } catch (const EVelmora& error) {
      return std::string(error.what()) + "\n";
    }
  }

 private:
  void Use(std::unique_ptr<TDBConn> engine) {
    engine_ = std::move(engine);
    engine_->Connect();
    engine_->on_exec_sql = [this](const std::string& sql) { oracle_.log.push_back("> " + sql); };
    oracle_.TakeLog();
  }
  std::string Told() {
    std::string told;
    for (const std::string& each : oracle_.TakeLog()) told += each + "\n";
    return told;
  }

  TFirebirdFolder firebird_;
  TFakeOracle& oracle_ = FakeOracleOf(kOracle);
  std::unique_ptr<TDBConn> engine_;
  int databases_ = 0;
};

TEST_P(EngineCases, GiveWhatIsWritten) {
  EXPECT_EQ(TranscriptDifference(kCases + GetParam() + ".txt", {{}, std::bind_front(&EngineCases::Step, this)}), "");
}

INSTANTIATE_TEST_SUITE_P(Servers, EngineCases, ::testing::ValuesIn(TranscriptNames(kCases)),
                         [](const auto& name) { return name.param; });

// --- Without a database

TEST(EnginesApart, ACopyHasTheStoreAndTheSameKeys) {
  const struct {
    std::shared_ptr<TDBConn> engine;
    TStringList keys;
    const char* values;
  } cases[] = {
      {FirebirdEngine("/d/x.fdb", "srv"),
       {"server", "database", "username", "password"},
       "srv|/d/x.fdb|SYSDBA|secret|"},
      {OracleEngine("SYSDBA", true), {"server", "username", "authmode", "direct"}, "ORCL|scott|SYSDBA|Y|"},
      {OracleEngine("", false), {"password", "authmode", "direct"}, "tiger||N|"},
  };
  for (const auto& [engine, keys, values] : cases) {
    engine->meta().tTables.Append().name = "KEPT";
    engine->meta().tTables.Post();
    const std::unique_ptr<TDBConn> copy = engine->Clone();
    EXPECT_FALSE(copy->GetConnected());
    EXPECT_EQ(DumpMeta(copy->meta()), "table KEPT\n");
    TXMLAccess store;
    copy->SaveParams("/root/x", store);
    std::string saved;
    for (const std::string& key : keys) saved += store.xmlGetVal("/root/x/" + key) + "|";
    EXPECT_EQ(saved, values);
    TMetaColumn parsed{"T", "A", ntI8, "INT64", 5, 0, false, "", false};
    copy->ParseColumnDescription("TEXT(10) not null", parsed);
    EXPECT_TRUE(parsed.datatype == ntI8 && parsed.size == 5 && !parsed.notnull) << "nothing is parsed";
  }
  EXPECT_THROW(cases[0].engine->GetConnectionObject(), EAbstractError);
  EXPECT_THROW(cases[0].engine->ApplyParams(), EAbstractError);
}

TEST(EnginesApart, OracleHandsItsParametersToTheSession) {
  const struct {
    const char* authmode;
    bool direct;
    int mode;
    const char* message = "nothing raised";
  } cases[] = {{"Normal", false, 0},
               {"", true, 0},
               {"SYSDBA", false, 2},
               {"SYSOPER", false, 1},
               {"sysdba", false, 0, "Invalid Oracle authentication mode!"}};
  for (const auto& c : cases) {
    const auto engine = OracleEngine(c.authmode, c.direct);
    EXPECT_EQ(MessageOf([&] { engine->ApplyParams(); }), c.message) << c.authmode;
    const TOraSession& session = engine->GetConnectionObject();
    EXPECT_EQ(session.ConnectMode, c.mode) << c.authmode;
    EXPECT_EQ(session.Options.Net, c.direct) << c.authmode;
    EXPECT_EQ(session.Server + session.Username + session.Password, "ORCLscotttiger");
  }
}

}  // namespace
}  // namespace velmora::testing
