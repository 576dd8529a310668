// SPDX-License-Identifier: GPL-3.0-or-later

// The seven engines of OLE DB providers beside each other, and what FoxPro has of its own.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "engines/oledb/DBConnAccess.h"
#include "engines/oledb/DBConnDBF.h"
#include "engines/oledb/DBConnExcel.h"
#include "engines/oledb/DBConnFoxPro.h"
#include "engines/oledb/DBConnLotus.h"
#include "engines/oledb/DBConnODBC.h"
#include "engines/oledb/DBConnSQLServer.h"
#include "support/FakeOLEDB.h"
#include "support/MessageOf.h"
#include "support/RecordingHost.h"
#include "util/Files.h"
#include "xml/XMLAccess.h"

namespace velmora {
namespace {

using testing::MessageOf;

const std::string kAbstract = MessageOf([] { RaiseAbstract(); });
const std::string kGoldens = VELMORA_SOURCE_DIR "/tests/engines/oledb/catalog/";

struct ProviderEnginesTest : ::testing::Test {
  testing::TFakeOLEDB backend;
};

template <class Conn, class... Args>
std::unique_ptr<TDBConnOLEDB> Made(TOLEDBProviderMaker maker, Args... args) {
  return std::make_unique<Conn>(args..., std::move(maker));
}

using TMaker = std::unique_ptr<TDBConnOLEDB> (*)(TOLEDBProviderMaker maker);
constexpr TMaker kEngines[] = {
    [](TOLEDBProviderMaker m) { return Made<TDBConnDBF>(m, "/d/a b"); },
    [](TOLEDBProviderMaker m) { return Made<TDBConnLotus>(m, "a.wk4"); },
    [](TOLEDBProviderMaker m) { return Made<TDBConnAccess>(m, "/dev/null", "pw", "sys"); },
    [](TOLEDBProviderMaker m) { return Made<TDBConnAccess>(m, "/dev/null", "", ""); },
    [](TOLEDBProviderMaker m) { return Made<TDBConnSQLServer>(m, "h", "d", "u", "pw", false); },
    [](TOLEDBProviderMaker m) { return Made<TDBConnSQLServer>(m, "", "sales", "u", "pw", true); },
    [](TOLEDBProviderMaker m) { return Made<TDBConnExcel>(m, "a.xls", false, true); },
    [](TOLEDBProviderMaker m) { return Made<TDBConnExcel>(m, "a;b.xls", true, false); },
    [](TOLEDBProviderMaker m) { return Made<TDBConnFoxPro>(m, "/fox"); },
    [](TOLEDBProviderMaker m) { return Made<TDBConnODBC>(m, "shop"); },
};

std::string ParamsOf(TDBConn& conn) {
  TXMLAccess store;
  conn.SaveParams("/root/x", store);
  const std::string text = store.xmlGetText();
  const std::size_t start = text.find("<x>");
  return text.substr(start + 3, text.find("</x>") - start - 3);
}

// What each of the engines is asked; an answer is a text or an error.
const struct {
  const char* what;
  void (*call)(TDBConnOLEDB& conn, std::string& text);
} kQuestions[] = {
    {"display name", [](TDBConnOLEDB& c, std::string& t) { c.GetDisplayName(t); }},
    {"connection", [](TDBConnOLEDB& c, std::string& t) { t = c.GetConnectionObject().InitializationString(); }},
    {"parameters in a task", [](TDBConnOLEDB& c, std::string& t) { t = ParamsOf(c); }},
    {"parameters of a copy",
     [](TDBConnOLEDB& c, std::string& t) {
       const auto copy = c.Clone();
       t = ParamsOf(*copy) + (copy->GetEngine() == c.GetEngine() && copy->GetConnected() ? "" : " is another");
     }},
    {"parameters of its copy", [](TDBConnOLEDB& c, std::string& t) { t = ParamsOf(*c.Clone()->Clone()); }},
    {"national types", [](TDBConnOLEDB& c, std::string& t) { t = c.NationalTypes ? "yes" : "no"; }},
    {"data are taken", [](TDBConnOLEDB& c, std::string& t) { t = c.allow_data ? "yes" : "no"; }},
    {"tables are made", [](TDBConnOLEDB& c, std::string& t) { t = c.CanCreateTables() ? "yes" : "no"; }},
    {"surrogate keys", [](TDBConnOLEDB& c, std::string& t) { t = c.SupportsSurrogateKey() ? "yes" : "no"; }},
    {"a surrogate key", [](TDBConnOLEDB& c, std::string& t) { c.SurrogateKeyColumn("i d", t); }},
    {"chunks without a key", [](TDBConnOLEDB& c, std::string& t) { t = c.SupportsChunks("T") ? "yes" : "no"; }},
    {"a chunk", [](TDBConnOLEDB& c, std::string&) { c.OpenTableDataChunk("T", 11, 5); }},
    {"a date", [](TDBConnOLEDB& c, std::string& t) { c.DateTimeLiteral(EncodeDate(2001, 2, 3), t); }},
    {"a time",
     [](TDBConnOLEDB& c, std::string& t) { c.DateTimeLiteral(EncodeDate(2001, 2, 3) + EncodeTime(4, 5, 6), t); }},
    {"auto-increment", [](TDBConnOLEDB& c, std::string& t) { c.AutoIncKeyword(t); }},
    {"a name", [](TDBConnOLEDB& c, std::string& t) { t = c.QuoteName("a]b"); }},
    {"a normal name", [](TDBConnOLEDB& c, std::string& t) { c.NormalizeName("a b", t); }},
    {"DDL", [](TDBConnOLEDB& c, std::string&) { c.ParseDDL("create table t (a int)"); }},
    {"a description that is read",
     [](TDBConnOLEDB& c, std::string& t) {
       TMetaColumn column;
       column.datatype = ntDate;
       column.size = 3;
       c.ParseColumnDescription("varchar(7)", column);
       t = std::string(NeutralTag(column.datatype)) + std::to_string(column.size);
     }},
    {"a new name", [](TDBConnOLEDB& c, std::string&) { c.RenameTable("T", "N"); }},
};

TEST_F(ProviderEnginesTest, WhatEachEngineAnswers) {
  backend.AddTable("T", {"a"});
  std::string told;
  for (const TMaker make : kEngines) {
    told += "engine " + std::to_string(make(backend.Maker())->GetEngine()) + "\n";
    for (const auto& [what, call] : kQuestions) {
      const std::unique_ptr<TDBConnOLEDB> conn = make(backend.Maker());
      conn->Connect();
      std::string text;
      const std::string error = MessageOf([&, &call = call] { call(*conn, text); });
      told += "  " + std::string(what) + ": " + (error == kAbstract ? "abstract" : text.empty() ? error : text) + "\n";
    }
  }
  EXPECT_EQ(told, ReadFileText(kGoldens + "engines.golden"));
}

// A line for each neutral type: its word from which size on, with the size that it gets instead; a column of it as
// text, and what that is read as.
std::string ToldTypes(TDBConn& conn) {
  std::string told;
  for (int type = ntI1; type <= ntUnknown; ++type) {
    TMetaColumn column;
    column.datatype = static_cast<TNeutralType>(type);
    column.precision = 2;
    told += "  " + std::string(NeutralTag(column.datatype));
    std::string last;
    for (const std::int64_t size : {0, 1, 24, 53, 54, 255, 256, 4000, 4001, 8000, 8001, 70000}) {
      TMetaColumn converted = column;
      converted.size = size;
      const std::string error = MessageOf([&] { conn.ConvertColumn(TMetaColumn(converted), converted); });
      const std::string now = error == "nothing raised" ? converted.description : "none";
      const std::string other = converted.size == size ? "" : " of " + std::to_string(converted.size);
      if (now + other != last) told += " " + std::to_string(size) + ":" + now + other;
      last = now + other;
    }
    column.size = 9;
    std::string text;
    if (MessageOf([&] { conn.ColumnDescription(column, true, text); }) == "nothing raised") {
      told += " | " + text;
      conn.ParseColumnDescription(text, column);
      told += " | " + std::string(NeutralTag(column.datatype)) + " " + std::to_string(column.size);
    }
    told += "\n";
  }
  return told;
}

TEST_F(ProviderEnginesTest, TheirTypes) {
  TDBConnODBC odbc("shop", backend.Maker());
  TDBConnSQLServer sqlserver("h", "d", "u", "pw", false, backend.Maker());
  TDBConnAccess access("/dev/null", "", "", backend.Maker());
  EXPECT_EQ("ODBC\n" + ToldTypes(odbc) + "SQL Server\n" + ToldTypes(sqlserver) + "Access\n" + ToldTypes(access),
            ReadFileText(kGoldens + "types.golden"));
  for (const char* alias : {"numeric", "float(24)"}) {
    TNeutralType type{};
    TNumber length, precision, scale;
    odbc.DecodeColumn(alias, {}, {}, {}, type, length, precision, scale);
    EXPECT_EQ(NeutralTag(type), alias[0] == 'n' ? "<DECIMAL>" : "<FLOAT>");
  }
}

// --- Chunks by a primary key of one column

TEST_F(ProviderEnginesTest, ChunksByAKeyOfOneColumn) {
  backend.Answer(testing::ReadPlayedAnswers(kGoldens + "keyed.txt"));
  TDBConnAccess access("/dev/null", "", "", backend.Maker());
  TDBConnSQLServer sqlserver("h", "d", "u", "p", false, backend.Maker());
  access.Connect();
  sqlserver.Connect();
  const struct {
    TDBConnOLEDB& conn;
    int first, count;
    const char* sent;
  } kCases[] = {
      {access, 1, 5, "select top 5 * from [one]"},
      {access, 6, 5, "select top 5 * from [one] where id not in (select top 5 id from [one])"},
      {sqlserver, 1, 5, "select top 5 * from [one] where id not in (select top 0 id from [one])"},
      {sqlserver, 101, 100, "select top 100 * from [one] where id not in (select top 100 id from [one])"},
  };
  for (const auto& c : kCases) {
    EXPECT_TRUE(c.conn.SupportsChunks("one"));
    c.conn.OpenTableDataChunk("one", c.first, c.count);
    EXPECT_EQ(backend.log.back(), c.sent);
    for (const std::string table : {"two", "none"}) {
      EXPECT_FALSE(c.conn.SupportsChunks(table));
      EXPECT_EQ(MessageOf([&] { c.conn.OpenTableDataChunk(table, c.first, c.count); }),
                "Table " + table + " can not be opened in chunks!");
    }
  }
}

// An engine that takes any table for one with chunks, for the messages after that one.
template <class Conn>
struct TBold final : Conn {
  using Conn::Conn;
  bool SupportsChunks(const std::string&) override { return true; }
};

TEST_F(ProviderEnginesTest, SayWhatIsWrongWithAKey) {
  backend.Answer(testing::ReadPlayedAnswers(kGoldens + "keyed.txt"));
  TBold<TDBConnAccess> access("/dev/null", "", "", backend.Maker());
  TBold<TDBConnSQLServer> sqlserver("h", "d", "u", "p", false, backend.Maker());
  const std::pair<TDBConnOLEDB&, std::string> kEnginesByClass[] = {{access, "TDBConnAccess"},
                                                                   {sqlserver, "TDBConnSQLServer"}};
  for (const auto& [conn, name] : kEnginesByClass) {
    conn.Connect();
    EXPECT_EQ(MessageOf([&, &conn = conn] { conn.OpenTableDataChunk("none", 1, 5); }),
              name + ".OpenTableDataChunk: Table none does not have a primary key!");
    EXPECT_EQ(MessageOf([&, &conn = conn] { conn.OpenTableDataChunk("two", 1, 5); }),
              name + ".OpenTableDataChunk: Table two has a multiple columns primary key!");
  }
}

TEST(ProvidersTest, APathIsAskedFor) {
  const std::string none = "The connection names no file or folder";
  EXPECT_EQ(MessageOf([] { TDBConnDBF("").Connect(); }), none);
  EXPECT_EQ(MessageOf([] { TDBConnFoxPro("").Connect(); }), none);
  EXPECT_EQ(MessageOf([] { MakeOLEDBProvider(TInitString("Provider=Jet 5;Password=secret")); }),
            "No provider named \"Jet 5\" is part of this program");
}

// --- FoxPro

TEST_F(ProviderEnginesTest, FoxProReadsChunksByRecordNumber) {
  TDBConnFoxPro conn("/fox", backend.Maker());
  conn.Connect();
  conn.OpenTableDataChunk("a b", 101, 100);
  EXPECT_EQ(backend.log.back(), "select * from [a b] where recno() between 101 and 200");
}

TEST_F(ProviderEnginesTest, AMissingFoxProProviderIsOffered) {
  const struct {
    const char* error;
    bool ok;
    std::vector<std::string> calls;
  } kCases[] = {
      {"Class not registered", false, {"ask"}},
      {" Class not registered\r\n", true, {"ask", "ShellOpen: https://velmora.example/providers"}},
      {"Class not registered.", true, {}},
      {"Access denied", true, {}},
  };
  for (const auto& c : kCases) {
    testing::TRecordingHost host;
    host.ok_answer = c.ok;
    const THostGuard guard(host);
    backend.errors["open /fox"] = c.error;
    TDBConnFoxPro conn("/fox", backend.Maker());
    if (c.calls.empty())
      EXPECT_EQ(MessageOf([&] { conn.Connect(); }), c.error);
    else
      EXPECT_THROW(conn.Connect(), EAbort);
    for (std::string& call : host.calls)
      if (call ==
          "ConfirmOk: To use FoxPro in this application, Microsoft FoxPro OLEDB provider must be installed. Would you "
          "like to be taken to Microsoft web page to download the file?")
        call = "ask";
    EXPECT_EQ(host.calls, c.calls) << c.error;
    EXPECT_FALSE(conn.GetConnected());
  }
}

}  // namespace
}  // namespace velmora
