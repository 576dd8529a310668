// The companion on Access files.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "support/CompanionRun.h"
#include "support/MdbFile.h"
#include "support/ParadoxFile.h"
#include "support/ScratchFolder.h"

namespace velmora {
namespace {

using ::testing::HasSubstr;
using testing::RunInProcess;
using testing::TAnswer;

std::string Column(const std::string& name, const std::string& type, const std::string& notnull,
                   const std::string& default_value, const std::string& autoinc, const std::string& text) {
  return "{\"name\":\"" + name + "\"," + type + ",\"notnull\":" + notnull + ",\"default\":\"" + default_value +
         "\",\"autoinc\":" + autoinc + ",\"text\":\"" + text + "\",\"text_error\":null}";
}
std::string Type(int number, const std::string& tag, int size = 0) {
  return "\"datatype\":" + std::to_string(number) + ",\"tag\":\"<" + tag + ">\",\"size\":" + std::to_string(size) +
         ",\"precision\":null";
}
std::string Plain(const std::string& name, const std::string& type, const std::string& text) {
  return Column(name, type, "false", "", "false", text);
}
std::string Key(const std::string& name, const std::string& primary, const std::string& unique,
                const std::string& columns, const std::string& orders, const std::string& text) {
  return "{\"name\":\"" + name + "\",\"primary\":" + primary + ",\"unique\":" + unique +
         ",\"fulltext\":false,\"columns\":[" + columns + "],\"orders\":[" + orders + "],\"text\":\"" + text + "\"}";
}

class MdbCompanionTest : public ::testing::Test {
 protected:
  testing::TScratchFolder folder_;
  const std::string path_ = folder_ / "shop.mdb";
  const std::string source_ = "Access:filename=" + path_;
};

TEST_F(MdbCompanionTest, Schema) {
  testing::PutFile(path_, testing::MdbSample(kMdbJet4));
  const TAnswer answer = RunInProcess({"schema", source_, "--format", "json"});
  EXPECT_EQ(answer.status, 0) << answer.err;
  const std::string kinds =
      Column("id", Type(2, "I4"), "true", "", "true", "int not null identity") + "," +
      Column("yes", Type(19, "BOOL"), "false", "0", "false", "bit default 0") + "," +
      Plain("tiny", Type(4, "UI1"), "tinyint") + "," +
      Column("small", Type(1, "I2"), "true", "5", "false", "smallint not null default 5") + "," +
      Plain("price", Type(25, "MONEY_mssql"), "money") + "," + Plain("single", Type(8, "FLOAT"), "real") + "," +
      Plain("double", Type(9, "DOUBLE"), "float") + "," +
      Column("day", Type(11, "DATE"), "false", "Now()", "false", "date default Now()") + "," +
      Plain("bytes", Type(20, "BYTES", 20), "binary(20)") + "," +
      Column("naïve", Type(18, "NVARCHAR", 50), "false", "\\\"x\\\"", "false", "nvarchar(50) default \\\"x\\\"") + "," +
      Plain("fixed", Type(17, "NCHAR", 4), "nchar(4)") + "," + Plain("note", Type(27, "NTEXT_mssql"), "ntext") + "," +
      Plain("object", Type(20, "BYTES", -1), "image") + "," +
      Column("guid", Type(24, "UID_mssql"), "true", "", "false", "uniqueidentifier not null") + "," +
      Plain("number", "\"datatype\":10,\"tag\":\"<DECIMAL>\",\"size\":12,\"precision\":3", "decimal(12,3)");
  const std::string words = Plain("id", Type(2, "I4"), "int") + "," +
                            Plain("word", Type(18, "NVARCHAR", 255), "nvarchar(255)") + "," +
                            Plain("left", Type(1, "I2"), "smallint") + "," + Plain("late", Type(1, "I2"), "smallint");
  const std::string keys = Key("PrimaryKey", "true", "true", "\"id\"", "\"\"", "primary key (id)") + "," +
                           Key("unique", "false", "true", "\"word\"", "\"\"", "unique key [unique] (word)") + "," +
                           Key("two", "false", "false", "\"word\",\"id\"", "\"\",\"\"", "key [two] (word,id)") + "," +
                           Key("other", "false", "false", "\"left\",\"late\"", "\"\",\"\"", "key [other] (left,late)");
  EXPECT_THAT(answer.out,
              HasSubstr("\"tables\":[{\"name\":\"Kinds\",\"type\":\"\",\"columns\":[" + kinds +
                        "],\"keys\":[],\"constraints\":[],\"error\":null},"
                        "{\"name\":\"Words\",\"type\":\"\",\"columns\":[" +
                        words + "],\"keys\":[" + keys + "],\"constraints\":[],\"error\":null}],\"error\":null}\n"));
}

TEST_F(MdbCompanionTest, Rows) {
  testing::PutFile(path_, testing::MdbSample(testing::kMdbJet3));
  const TAnswer answer = RunInProcess({"rows", source_, "Words", "--format", "json"});
  EXPECT_EQ(answer.status, 0) << answer.err;
  EXPECT_THAT(answer.out, HasSubstr("\"rows\":[[1,\"early\",7,null],[2,\"\",7,8],[4,\"" + std::string(250, 'w') +
                                    "\",7,9]],\"error\":null}"));
  EXPECT_THAT(RunInProcess({"rows", source_, "Kinds", "--limit", "1", "--format", "json"}).out,
              HasSubstr("\"rows\":[[1,true,254,-2,-12345.6789,1.5,-2.25,\"2001-02-03 06:00:00\",{\"base64\":\"AP8Q\"},"
                        "\"Größe\",\"abcd\",\"a note\",{\"base64\":\"AQEB"));
}

TEST_F(MdbCompanionTest, MakesAMissingFile) {
  const TAnswer answer = RunInProcess({"schema", source_, "--format", "json"});
  EXPECT_EQ(answer.status, 0) << answer.err;
  EXPECT_THAT(answer.out, HasSubstr("\"tables\":[],\"error\":null}"));
  EXPECT_EQ(std::filesystem::file_size(path_), 45056U);
  EXPECT_EQ(RunInProcess({"schema", "Access:filename=" + folder_.Path()}).err,
            "velmora-cli: Cannot open " + folder_.Path() + ": it is no regular file\n");
  EXPECT_EQ(RunInProcess({"schema", "Access:filename=" + folder_.Path() + "/no/shop.mdb"}).err,
            "velmora-cli: Cannot write " + folder_.Path() + "/no/shop.mdb: No such file or directory\n");
}

}  // namespace
}  // namespace velmora
