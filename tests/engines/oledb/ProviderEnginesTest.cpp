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
#include "xml/XMLAccess.h"

namespace velmora {
namespace {

using testing::Column;
using testing::MessageOf;

const std::string kAbstract = MessageOf([] { RaiseAbstract(); });

struct ProviderEnginesTest : ::testing::Test {
  testing::TFakeOLEDB backend;
};

struct TEngineCase {
  int number;
  std::unique_ptr<TDBConnOLEDB> (*make)(TOLEDBProviderMaker maker);
  bool national;
  std::size_t types;
  const char* display;
  const char* params;      // as a task file holds them
  const char* clone;       // its parameters; null: the same
  const char* connection;  // string
};

template <class Conn, class... Args>
std::unique_ptr<TDBConnOLEDB> Made(TOLEDBProviderMaker maker, Args... args) {
  return std::make_unique<Conn>(args..., std::move(maker));
}

const TEngineCase kEngines[] = {
    {2, [](TOLEDBProviderMaker m) { return Made<TDBConnDBF>(m, "/d/a b"); }, false, 25, "/d/a b",
     "<folder>/d/a b</folder>", nullptr,
     "Provider=Microsoft.Jet.OLEDB.4.0;Extended Properties=dBASE IV;Persist Security Info=False;Data Source=/d/a b;"},
    {3, [](TOLEDBProviderMaker m) { return Made<TDBConnLotus>(m, "a.wk4"); }, true, 25, "a.wk4",
     "<filename>a.wk4</filename>", nullptr,
     "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=a.wk4;Jet OLEDB:Engine Type=66"},
    {6, [](TOLEDBProviderMaker m) { return Made<TDBConnAccess>(m, "/dev/null", "pw", "sys"); }, true, 23, "/dev/null",
     "<filename>/dev/null</filename><password>pw</password><sysdb_filename>sys</sysdb_filename>",
     "<filename>/dev/null</filename><password>sys</password><sysdb_filename>pw</sysdb_filename>",
     "Provider=Microsoft.Jet.OLEDB.4.0;User ID=Admin;Password=pw;Data Source=/dev/null;Jet OLEDB:Database "
     "Password=sys;"},
    {6, [](TOLEDBProviderMaker m) { return Made<TDBConnAccess>(m, "/dev/null", "", ""); }, true, 23, "/dev/null",
     "<filename>/dev/null</filename><password></password><sysdb_filename></sysdb_filename>", nullptr,
     "Provider=Microsoft.Jet.OLEDB.4.0;User ID=Admin;Password=;Data Source=/dev/null;"},
    {7, [](TOLEDBProviderMaker m) { return Made<TDBConnSQLServer>(m, "h", "d", "u", "pw", false); }, true, 23, "h.d",
     "<server>h</server><database>d</database><username>u</username><password>pw</password>"
     "<windows_authentication>N</windows_authentication>",
     nullptr,
     "Provider=SQLOLEDB.1;Persist Security Info=True;User ID=u;Password=pw;Initial Catalog=d;Data Source=h;Connect "
     "Timeout=5;Use Procedure for Prepare=1;Auto Translate=True;Packet Size=4096"},
    {7, [](TOLEDBProviderMaker m) { return Made<TDBConnSQLServer>(m, "", "sales", "u", "pw", true); }, true, 23,
     "localhost.sales",
     "<server></server><database>sales</database><username>u</username><password>pw</password>"
     "<windows_authentication>Y</windows_authentication>",
     nullptr,
     "Provider=SQLOLEDB.1;Persist Security Info=True;Integrated Security=SSPI;Initial Catalog=sales;Data "
     "Source=;Connect Timeout=5;Use Procedure for Prepare=1;Auto Translate=True;Packet Size=4096"},
    {14, [](TOLEDBProviderMaker m) { return Made<TDBConnExcel>(m, "a.xls", false, true); }, false, 25, "a.xls",
     "<filename>a.xls</filename><HDR>N</HDR><IMEX>Y</IMEX>", nullptr,
     "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=a.xls;Extended Properties=\"Excel 8.0;HDR=No;IMEX=1\""},
    {14, [](TOLEDBProviderMaker m) { return Made<TDBConnExcel>(m, "a;b.xls", true, false); }, false, 25, "a;b.xls",
     "<filename>a;b.xls</filename><HDR>Y</HDR><IMEX>N</IMEX>", nullptr,
     "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=\"a;b.xls\";Extended Properties=\"Excel 8.0;HDR=Yes;IMEX=0\""},
    {15, [](TOLEDBProviderMaker m) { return Made<TDBConnFoxPro>(m, "/fox"); }, false, 25, "/fox",
     "<folder>/fox</folder>", nullptr,
     "Provider=VFPOLEDB.1;Password=\"\";Data Source=/fox;Collating Sequence=MACHINE;Persist Security Info=False"},
    {16, [](TOLEDBProviderMaker m) { return Made<TDBConnODBC>(m, "shop"); }, true, 25, "shop", "<dsn>shop</dsn>",
     nullptr, "Provider=MSDASQL;Data Source=shop"},
};

std::string ParamsOf(TDBConn& conn) {
  TXMLAccess store;
  conn.SaveParams("/root/x", store);
  const std::string text = store.xmlGetText();
  const std::size_t start = text.find("<x>");
  return text.substr(start + 3, text.find("</x>") - start - 3);
}

TEST_F(ProviderEnginesTest, EachEngineHasItsParameters) {
  for (const TEngineCase& c : kEngines) {
    const std::unique_ptr<TDBConnOLEDB> conn = c.make(backend.Maker());
    EXPECT_EQ(conn->GetEngine(), c.number);
    EXPECT_EQ(conn->NationalTypes, c.national) << c.number;
    EXPECT_EQ(conn->allow_data, c.number != kEngineAccess);
    TColumnTypeInfoArray types;
    conn->GetColumnTypes(types);
    EXPECT_EQ(types.size(), c.types) << c.number;
    conn->Connect();
    EXPECT_EQ(conn->GetConnectionObject().InitializationString(), c.connection);
    std::string display;
    conn->GetDisplayName(display);
    EXPECT_EQ(display, c.display);
    EXPECT_EQ(ParamsOf(*conn), c.params);
    const std::unique_ptr<TDBConn> clone = conn->Clone();
    EXPECT_EQ(clone->GetEngine(), c.number);
    EXPECT_TRUE(clone->GetConnected());
    EXPECT_EQ(ParamsOf(*clone), c.clone == nullptr ? c.params : c.clone);
    EXPECT_EQ(ParamsOf(*clone->Clone()), c.params);
  }
}

// Engine by operation: what each of them answers.
TEST_F(ProviderEnginesTest, TheEnginesAtAGlance) {
  const struct {
    const char* what;
    void (*call)(TDBConn& conn, std::string& text);
    const char *access, *sqlserver, *foxpro, *others;
  } kCases[] = {
      {"chunks of a table without a key", [](TDBConn& c, std::string& t) { t = c.SupportsChunks("T") ? "yes" : "no"; },
       "no", "no", "yes", "no"},
      {"a chunk of it", [](TDBConn& c, std::string&) { c.OpenTableDataChunk("T", 11, 5); },
       "Table T can not be opened in chunks!", "Table T can not be opened in chunks!", "nothing raised", "abstract"},
      {"date", [](TDBConn& c, std::string& t) { c.DateTimeLiteral(EncodeDate(2001, 2, 3), t); }, "#2001-02-03#",
       "'20010203'", "'20010203'", "'20010203'"},
      {"surrogate key", [](TDBConn& c, std::string& t) { c.SurrogateKeyColumn("i d", t); }, "abstract",
       "[i d] int not null identity primary key", "abstract", "abstract"},
      {"auto-increment", [](TDBConn& c, std::string& t) { c.AutoIncKeyword(t); }, "identity", "identity", "identity",
       "identity"},
      {"name", [](TDBConn& c, std::string& t) { t = c.QuoteName("a]b"); }, "[a]b]", "[a]b]", "[a]b]", "[a]b]"},
      {"normal name", [](TDBConn& c, std::string& t) { c.NormalizeName("a b", t); }, "a b", "a b", "a b", "a b"},
      {"can create tables", [](TDBConn& c, std::string& t) { t = c.CanCreateTables() ? "yes" : "no"; }, "yes", "yes",
       "yes", "yes"},
      {"surrogate keys", [](TDBConn& c, std::string& t) { t = c.SupportsSurrogateKey() ? "yes" : "no"; }, "no", "no",
       "no", "no"},
      {"DDL", [](TDBConn& c, std::string&) { c.ParseDDL("create table t (a int)"); }, "abstract", "abstract",
       "abstract", "abstract"},
      {"parsed description",
       [](TDBConn& c, std::string& t) {
         TMetaColumn column;
         column.datatype = ntDate;
         column.size = 3;
         c.ParseColumnDescription("varchar(7)", column);
         t = std::string(NeutralTag(column.datatype)) + std::to_string(column.size);
       },
       "<VARCHAR>7", "<DATE>3", "<VARCHAR>7", "<VARCHAR>7"},
      {"rename", [](TDBConn& c, std::string&) { c.RenameTable("T", "N"); }, "nothing raised", "nothing raised",
       "nothing raised", "nothing raised"},
  };
  backend.AddTable("T", {Column("a", kDbTypeI4)});
  for (const TEngineCase& engine_case : kEngines) {
    for (const auto& c : kCases) {
      const std::unique_ptr<TDBConnOLEDB> conn = engine_case.make(backend.Maker());
      conn->Connect();
      const char* wanted = engine_case.number == kEngineAccess      ? c.access
                           : engine_case.number == kEngineSQLServer ? c.sqlserver
                           : engine_case.number == kEngineFoxPro    ? c.foxpro
                                                                    : c.others;
      std::string text;
      const std::string error = MessageOf([&] { c.call(*conn, text); });
      EXPECT_EQ(error == kAbstract ? "abstract"
                : text.empty()     ? error
                                   : text,
                wanted)
          << c.what << " of engine " << engine_case.number;
    }
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
