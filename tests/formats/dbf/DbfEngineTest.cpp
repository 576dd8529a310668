// Folders of files through their engines, as the rest of the program sees them.

#include "core/Meta.h"
#include "engines/oledb/DBConnDBF.h"
#include "engines/oledb/DBConnFoxPro.h"
#include "formats/dbf/DbfRig.h"
#include "support/MetaDump.h"

namespace velmora {
namespace {

using namespace std::string_literals;
using testing::CdxBytes;
using testing::DbfLeft;
using testing::DbfLittle;
using testing::DbfRight;
using testing::NdxBytes;
using testing::TDbcDraft;
using testing::TDbfDraft;

class DbfEngineTest : public testing::TDbfRig {
 protected:
  static std::string Fetched(TDBConn& conn) {
    conn.Connect();
    for (conn.meta().tTables.First(); !conn.meta().tTables.Eof(); conn.meta().tTables.Next()) conn.FetchIfNeeded();
    return testing::DumpMeta(conn.meta());
  }
  // The first field of each row, as a literal of the engine.
  static std::string FirstFields(TDBConn& conn, const std::unique_ptr<TDataset>& rows) {
    std::string text;
    for (; !rows->Eof(); rows->Next()) {
      std::string literal;
      conn.FieldValParam(rows->Field(0), literal);
      text += literal + ";";
    }
    return text;
  }
};

TEST_F(DbfEngineTest, DBaseFolder) {
  Put("PEOPLE.DBF",
      TDbfDraft{.fields = {{"NAME", 'C', 20}, {"PAY", 'N', 9, 2}, {"BORN", 'D', 8}, {"NOTE", 'M', 10}},
                .records = {" " + DbfLeft("O'Neil", 20) + DbfRight("1.5", 9) + "20240229" + DbfLeft("", 10),
                            "*" + DbfLeft("gone", 20) + DbfRight("", 9) + DbfLeft("", 18)}});
  Put("people.inf", "[dBASE IV]\r\nUNDX1=NAMES.NDX\r\n");
  Put("names.ndx", NdxBytes("NAME"));
  Put("spoilt.dbf", "spoilt");
  TDBConnDBF conn(folder_.Path());
  EXPECT_EQ(Failure([&] { Fetched(conn); }),
            "spoilt.dbf: offset 0x06: the file ends within the first 32 bytes of its head");
  EXPECT_EQ(testing::DumpMeta(conn.meta()),
            "table PEOPLE fetched\ncolumn NAME <VARCHAR>(20)\ncolumn PAY <DOUBLE>(15,0)\ncolumn BORN <DATE>(0)\n"
            "column NOTE <TEXT>(0)\nkey names(NAME) unique\ntable spoilt\n");
  EXPECT_EQ(FirstFields(conn, conn.OpenTable("PEOPLE")), "'O''Neil';'gone';");
  EXPECT_FALSE(conn.SupportsChunks("PEOPLE"));
  std::string text;
  conn.GetDisplayName(text);
  EXPECT_EQ(text, folder_.Path());
}

TEST_F(DbfEngineTest, FoxProFolder) {
  TDbfDraft items{.fields = {{"ID", 'I', 4, 0, 0x0C}, {"PRICE", 'N', 10, 2, 2}, {"_NullFlags", '0', 1, 0, 5}},
                  .version = 0x31,
                  .flags = 5,
                  .database = "shop.dbc"};
  for (int i = 1; i <= 9; ++i)
    items.records.push_back((i % 3 == 0 ? "*" : " ") + DbfLittle(i * 10) + DbfRight("1.25", 10) + "\0"s);
  Put("items.dbf", items);
  Put("items.cdx", CdxBytes({{"PK", "id", 0x64}}));
  TDbcDraft database;
  const int table = database.AddTable("items", {{1, "items.dbf"}, {20, "pk"}});
  database.AddField(table, "item number");
  database.AddField(table, "price", {{11, ".NULL."}});
  Put("shop.dbc", database.Table());
  Put("shop.dct", database.Memos());
  const std::string dump =
      "table items fetched\ncolumn item number <I4>(0) notnull autoinc\ncolumn price <DECIMAL>(10,2)\n"
      "key PK(item number) primary unique\n";
  for (const std::string& source : {folder_.Path(), folder_ / "shop.dbc"}) {
    TDBConnFoxPro conn(source);
    EXPECT_EQ(Fetched(conn), dump);
    EXPECT_EQ(FirstFields(conn, conn.OpenTable("items")), "10;20;40;50;70;80;");
    EXPECT_TRUE(conn.SupportsChunks("items"));
    EXPECT_EQ(FirstFields(conn, conn.OpenTableDataChunk("items", 1, 3)), "10;20;");
    EXPECT_EQ(FirstFields(conn, conn.OpenTableDataChunk("items", 4, 3)), "40;50;");
    EXPECT_EQ(FirstFields(conn, conn.OpenTableDataChunk("items", 9, 100)), "");
  }
}

}  // namespace
}  // namespace velmora
