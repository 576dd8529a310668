// The companion on folders of dBASE and FoxPro.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/CompanionRun.h"
#include "support/DbfFile.h"
#include "support/ParadoxFile.h"
#include "support/ScratchFolder.h"

namespace velmora {
namespace {

using namespace std::string_literals;
using testing::CdxBytes;
using testing::DbfLeft;
using testing::DbfLittle;
using testing::DbfRight;
using ::testing::HasSubstr;
using testing::NdxBytes;
using testing::PutFile;
using testing::RunInProcess;
using testing::TAnswer;
using testing::TDbcDraft;
using testing::TDbfDraft;
using testing::TDbfMemoDraft;

class DbfCompanionTest : public ::testing::Test {
 protected:
  DbfCompanionTest() {
    TDbfMemoDraft notes("IV");
    const std::string note = std::to_string(notes.Add("first\r\nsecond"));
    PutFile(folder_ / "PEOPLE.DBF",
            TDbfDraft{
                .fields = {{"NAME", 'C', 10}, {"PAY", 'N', 9, 2}, {"BORN", 'D', 8}, {"IN", 'L', 1}, {"NOTE", 'M', 10}},
                .records = {" " + DbfLeft("J\x81rgen", 10) + DbfRight("1200.50", 9) + "20240229T" + DbfRight(note, 10),
                            "*" + DbfLeft("", 27) + "?" + DbfLeft("", 10)},
                .version = 0x8B}
                .Bytes());
    PutFile(folder_ / "people.dbt", notes.Bytes());
    PutFile(folder_ / "people.inf", "[dBASE IV]\r\nNDX1=NAME.NDX\r\n");
    PutFile(folder_ / "name.ndx", NdxBytes("NAME", true));
    PutFile(
        folder_ / "items.dbf",
        TDbfDraft{.fields = {{"ID", 'I', 4, 0, 0x0C},
                             {"PRICE", 'N', 12, 2, 2},
                             {"RAW", 'C', 2, 0, 4},
                             {"SUM", 'Y', 8},
                             {"_NullFlags", '0', 1, 0, 5}},
                  .records = {" " + DbfLittle(7) + DbfRight("123456789.10", 12) + "\xFF\xFE" + DbfLittle(-5, 8) + "\0"s,
                              "*" + DbfLittle(8) + DbfRight("1.00", 12) + "  " + DbfLittle(0, 8) + "\0"s,
                              " " + DbfLittle(9) + DbfRight("", 12) + "  " + DbfLittle(0, 8) + "\1"s},
                  .version = 0x31,
                  .flags = 5,
                  .database = "shop.dbc"}
            .Bytes());
    PutFile(folder_ / "items.cdx", CdxBytes({{"PK", "id", 0x64}, {"SOME", "price>0"}}));
    TDbcDraft database;
    const int table = database.AddTable("items", {{1, "items.dbf"}, {20, "pk"}});
    database.AddField(table, "item_number");
    database.AddField(table, "price_each", {{11, "0.5"}});
    database.AddField(table, "raw");
    database.AddField(table, "sum");
    PutFile(folder_ / "shop.dbc", database.Table());
    PutFile(folder_ / "shop.dct", database.Memos());
  }

  static std::string Column(const std::string& name, const std::string& type, const std::string& notnull,
                            const std::string& more) {
    return "{\"name\":\"" + name + "\"," + type + ",\"notnull\":" + notnull + "," + more + ",\"text_error\":null}";
  }

  testing::TScratchFolder folder_;
};

TEST_F(DbfCompanionTest, SchemaOfDBase) {
  const auto column = [](const std::string& name, const std::string& type, const std::string& precision,
                         const std::string& text) {
    return Column(name, type + ",\"precision\":" + precision, "false",
                  "\"default\":\"\",\"autoinc\":false,\"text\":\"" + text + "\"");
  };
  const TAnswer answer = RunInProcess({"schema", "DBF:folder=" + folder_.Path(), "PEOPLE", "--format", "json"});
  EXPECT_EQ(answer.status, 0) << answer.err;
  EXPECT_THAT(answer.out, HasSubstr("{\"engine\":2,"));
  EXPECT_THAT(answer.out,
              HasSubstr("\"tables\":[{\"name\":\"PEOPLE\",\"type\":\"\",\"columns\":[" +
                        column("NAME", "\"datatype\":16,\"tag\":\"<VARCHAR>\",\"size\":10", "null", "varchar(10)") +
                        "," + column("PAY", "\"datatype\":9,\"tag\":\"<DOUBLE>\",\"size\":15", "0", "float(15)") + "," +
                        column("BORN", "\"datatype\":11,\"tag\":\"<DATE>\",\"size\":0", "null", "date") + "," +
                        column("IN", "\"datatype\":19,\"tag\":\"<BOOL>\",\"size\":0", "null", "bit") + "," +
                        column("NOTE", "\"datatype\":22,\"tag\":\"<TEXT>\",\"size\":0", "null", "text") +
                        "],\"keys\":[{\"name\":\"name\",\"primary\":false,\"unique\":true,\"fulltext\":false,"
                        "\"columns\":[\"NAME\"],\"orders\":[\"\"],\"text\":\"unique key [name] (NAME)\"}],"
                        "\"constraints\":[],\"error\":null}],\"error\":null}\n"));
}

TEST_F(DbfCompanionTest, SchemaOfFoxPro) {
  for (const std::string& source : {folder_.Path(), folder_ / "shop.dbc"}) {
    const TAnswer answer = RunInProcess({"schema", "FoxPro:folder=" + source, "items", "--format", "json"});
    EXPECT_EQ(answer.status, 0) << answer.err;
    EXPECT_EQ(answer.out,
              "{\"engine\":15,\"display_name\":\"" + source +
                  "\",\"tables\":[{\"name\":\"items\",\"type\":\"\",\"columns\":[" +
                  Column("item_number", "\"datatype\":2,\"tag\":\"<I4>\",\"size\":0,\"precision\":null", "true",
                         "\"default\":\"\",\"autoinc\":true,\"text\":\"int not null identity\"") +
                  "," +
                  Column("price_each", "\"datatype\":10,\"tag\":\"<DECIMAL>\",\"size\":12,\"precision\":2", "false",
                         "\"default\":\"0.5\",\"autoinc\":false,\"text\":\"decimal(12,2) default (0.5)\"") +
                  "," +
                  Column("raw", "\"datatype\":20,\"tag\":\"<BYTES>\",\"size\":2,\"precision\":null", "true",
                         "\"default\":\"\",\"autoinc\":false,\"text\":\"binary(2) not null\"") +
                  "," +
                  Column("sum", "\"datatype\":25,\"tag\":\"<MONEY_mssql>\",\"size\":0,\"precision\":null", "true",
                         "\"default\":\"\",\"autoinc\":false,\"text\":\"money not null\"") +
                  "],\"keys\":[{\"name\":\"PK\",\"primary\":true,\"unique\":true,\"fulltext\":false,"
                  "\"columns\":[\"item_number\"],\"orders\":[\"\"],\"text\":\"primary key (item_number)\"}],"
                  "\"constraints\":[],\"error\":null}],\"error\":null}\n");
  }
}

TEST_F(DbfCompanionTest, Rows) {
  const TAnswer people = RunInProcess({"rows", "dbf:folder=" + folder_.Path(), "people", "--format", "json"});
  EXPECT_EQ(people.status, 0) << people.err;
  EXPECT_THAT(people.out, HasSubstr("\"rows\":[[\"J\xC3\xBCrgen\",1200.5,\"2024-02-29\",true,\"first\\r\\nsecond\"],"
                                    "[\"\",null,null,null,null]]"));
  const TAnswer items = RunInProcess({"rows", "foxpro:folder=" + folder_.Path(), "items", "--format", "json"});
  EXPECT_EQ(items.status, 0) << items.err;
  EXPECT_THAT(items.out, HasSubstr("\"columns\":[{\"name\":\"item_number\",\"type\":\"auto-increment\"},"
                                   "{\"name\":\"price_each\",\"type\":\"BCD\"},{\"name\":\"raw\",\"type\":\"bytes\"},"
                                   "{\"name\":\"sum\",\"type\":\"currency\"}],\"rows\":[[7,123456789.10,{\"base64\":"
                                   "\"//4=\"},-0.0005],[9,null,{\"base64\":\"ICA=\"},0.0000]]"));
}

TEST_F(DbfCompanionTest, FaultsNameTheirFile) {
  PutFile(folder_ / "spoilt.dbf", "spoilt");
  for (const std::string engine : {"DBF", "FoxPro"}) {
    const TAnswer schema = RunInProcess({"schema", engine + ":folder=" + folder_.Path()});
    EXPECT_EQ(schema.status, 2);
    EXPECT_THAT(schema.err, HasSubstr(folder_ / "spoilt.dbf: offset 0x06: the file ends within"));
    EXPECT_THAT(schema.out, HasSubstr("PEOPLE")) << "the others are shown";
    EXPECT_THAT(RunInProcess({"rows", engine + ":folder=" + folder_.Path() + "/none", "t"}).err,
                HasSubstr("Cannot open " + folder_.Path() + "/none: No such file or directory"));
  }
}

}  // namespace
}  // namespace velmora
