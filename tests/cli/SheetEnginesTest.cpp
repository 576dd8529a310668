// The companion on Excel workbooks and Lotus sheets.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/CompanionRun.h"
#include "support/LotusFile.h"
#include "support/ParadoxFile.h"
#include "support/PerlWorkbook.h"
#include "support/ScratchFolder.h"

namespace velmora {
namespace {

using ::testing::HasSubstr;
using testing::RunInProcess;
using testing::TAnswer;

std::string Column(const std::string& name, const std::string& type, const std::string& precision,
                   const std::string& text) {
  return "{\"name\":\"" + name + "\"," + type + ",\"precision\":" + precision +
         ",\"notnull\":false,\"default\":\"\",\"autoinc\":false,\"text\":\"" + text + "\",\"text_error\":null}";
}
std::string Text(const std::string& name) {
  return Column(name, "\"datatype\":16,\"tag\":\"<VARCHAR>\",\"size\":255", "null", "varchar(255)");
}

class ExcelCompanionTest : public ::testing::Test {
 protected:
  ExcelCompanionTest() {
    testing::WriteWorkbook(
        path_,
        "sheet\tOrders\ntext\t0\t0\tOrder No.\ntext\t0\t1\tday\ntext\t0\t2\tnote\nnumber\t1\t0\t1.5\n"
        "date\t1\t1\t38000\ntext\t1\t2\tx\nmoment\t2\t1\t38000.75\nnumber\t2\t2\t2\n"
        "sheet\tMy Sheet\nnumber\t0\t0\t7\n");
  }

  testing::TScratchFolder folder_;
  const std::string path_ = folder_ / "shop.xls";
};

TEST_F(ExcelCompanionTest, Schema) {
  const auto run = [&](const std::string& keys) {
    const TAnswer answer = RunInProcess({"schema", "Excel:filename=" + path_ + keys, "--format", "json"});
    EXPECT_EQ(answer.status, 0) << answer.err;
    return answer.out;
  };
  const auto tables = [](const std::string& orders, const std::string& mine) {
    constexpr char kEnd[] = "],\"keys\":[],\"constraints\":[],\"error\":null}";
    return HasSubstr("\"tables\":[{\"name\":\"Orders$\",\"type\":\"\",\"columns\":[" + orders + kEnd +
                     ",{\"name\":\"'My Sheet$'\",\"type\":\"\",\"columns\":[" + mine + kEnd + "],\"error\":null}\n");
  };
  const auto number = [](const std::string& name) {
    return Column(name, "\"datatype\":9,\"tag\":\"<DOUBLE>\",\"size\":15", "0", "float(15)");
  };
  EXPECT_THAT(
      run(";HDR=Y;IMEX=Y"),
      tables(number("Order No#") + "," +
                 Column("day", "\"datatype\":11,\"tag\":\"<DATE>\",\"size\":0", "null", "date") + "," + Text("note"),
             Text("7")));
  EXPECT_THAT(run(""), tables(Text("F1") + "," + Text("F2") + "," + Text("F3"), number("F1")));
}

TEST_F(ExcelCompanionTest, Rows) {
  const auto rows = [&](const std::string& keys, const std::string& table) {
    const TAnswer answer = RunInProcess({"rows", "excel:filename=" + path_ + keys, table, "--format", "json"});
    EXPECT_EQ(answer.status, 0) << answer.err;
    return answer.out;
  };
  EXPECT_THAT(rows(";HDR=Y", "Orders$"),
              HasSubstr("\"rows\":[[1.5,\"2004-01-14\",\"x\"],[null,\"2004-01-14 18:00:00\",\"2\"]]"));
  EXPECT_THAT(rows("", "orders"),
              HasSubstr("\"rows\":[[\"Order No.\",\"day\",\"note\"],[\"1.5\",\"2004-01-14\",\"x\"],[null,\"2004-01-14 "
                        "18:00:00\",\"2\"]]"));
  for (const char* name : {"'My Sheet$'", "My Sheet$", "my sheet"})
    EXPECT_THAT(rows("", name), HasSubstr("\"rows\":[[7.0]]"));
}

TEST_F(ExcelCompanionTest, FaultsNameTheFile) {
  const TAnswer unknown = RunInProcess({"rows", "excel:filename=" + path_, "none$"});
  EXPECT_EQ(unknown.status, 2);
  EXPECT_THAT(unknown.err, HasSubstr("There is no sheet \"none$\" with cells in " + path_));
  testing::PutFile(path_, "PK\x03\x04");
  const TAnswer newer = RunInProcess({"schema", "excel:filename=" + path_});
  EXPECT_EQ(newer.status, 2);
  EXPECT_THAT(newer.err, HasSubstr("Cannot read " + path_ + ": it is a workbook of Excel 2007 or later"));
}

TEST(LotusCompanionTest, SchemaAndRows) {
  const testing::TScratchFolder folder;
  const std::string path = folder / "shop.wk4", source = "Lotus 1-2-3:filename=" + path;
  testing::PutFile(path, testing::TWkFile{.sheets = {{"A", {{0, 0, "n"}, {0, 1, "t"}, {1, 0, 1.0}, {1, 1, "caf\x82"}}}},
                                          .release4 = true}
                             .Bytes());
  const TAnswer schema = RunInProcess({"schema", source, "--format", "json"});
  EXPECT_THAT(schema.out,
              HasSubstr("\"tables\":[{\"name\":\"A:\",\"type\":\"\",\"columns\":[" +
                        Column("n", "\"datatype\":9,\"tag\":\"<DOUBLE>\",\"size\":15", "0", "float(15)") + "," +
                        Column("t", "\"datatype\":18,\"tag\":\"<NVARCHAR>\",\"size\":255", "null", "nvarchar(255)") +
                        "],\"keys\":[],\"constraints\":[],\"error\":null}],\"error\":null}\n"))
      << schema.err;
  EXPECT_THAT(RunInProcess({"rows", source, "A:", "--format", "json"}).out,
              HasSubstr("\"rows\":[[1.0,\"caf\xC3\xA9\"]]"));
}

}  // namespace
}  // namespace velmora
