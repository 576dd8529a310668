// The companion on folders of files.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/Json.h"
#include "support/CompanionRun.h"
#include "support/ParadoxFile.h"
#include "support/ScratchFolder.h"
#include "util/Files.h"
#include "util/Text.h"

namespace velmora {
namespace {

using ::testing::HasSubstr;
using testing::PutFile;
using testing::PxFloat;
using testing::PxInteger;
using testing::PxMemoField;
using testing::PxText;
using testing::RunInProcess;
using testing::TAnswer;
using testing::TPxFile;

class ParadoxCompanionTest : public ::testing::Test {
 protected:
  ParadoxCompanionTest() {
    PutFile(folder_ / "ORDERS.DB",
            TPxFile{.fields = {{"Order No", 22, 4}, {"Line", 3, 2}, {"Price", 5, 8}, {"Day", 2, 4}, {"Note", 12, 16}},
                    .blocks = {{{PxInteger(1, 4) + PxInteger(-2, 2) + PxFloat(1.5) + PxInteger(730120, 4) +
                                     PxMemoField("long t", 0xFF, 9),
                                 std::string(34, '\0')}}},
                    .keys = 2}
                .Bytes());
    PutFile(folder_ / "orders.mb", std::string(9, 'h') + "long text");
    PutFile(folder_ / "blobs.db",
            TPxFile{.fields = {{"b", 13, 12}, {"yes", 9, 1}}, .blocks = {{{PxMemoField("\xFF\xFE", 0, 2) + "\x81"}}}}
                .Bytes());
  }

  testing::TScratchFolder folder_;
  const std::string source_ = "paradox:folder=" + folder_.Path();
};

TEST_F(ParadoxCompanionTest, Schema) {
  const auto column = [](const std::string& name, const std::string& type, const std::string& autoinc,
                         const std::string& text) {
    return "{\"name\":\"" + name + "\"," + type +
           ",\"precision\":null,\"notnull\":false,\"default\":\"\",\"autoinc\":" + autoinc + "," + text +
           ",\"text_error\":null}";
  };
  const TAnswer answer = RunInProcess({"schema", source_, "--format", "json"});
  EXPECT_EQ(answer.status, 0) << answer.err;
  EXPECT_EQ(answer.out,
            "{\"engine\":11,\"display_name\":\"" + folder_.Path() +
                "\",\"tables\":[{\"name\":\"blobs\",\"type\":\"\",\"columns\":[" +
                column("b", "\"datatype\":20,\"tag\":\"<BYTES>\",\"size\":12", "false", "\"text\":\"binary(12)\"") +
                "," + column("yes", "\"datatype\":19,\"tag\":\"<BOOL>\",\"size\":0", "false", "\"text\":\"bit\"") +
                "],\"keys\":[],\"constraints\":[],\"error\":null},"
                "{\"name\":\"ORDERS\",\"type\":\"\",\"columns\":[" +
                column("Order No", "\"datatype\":2,\"tag\":\"<I4>\",\"size\":0", "true", "\"text\":\"int\"") + "," +
                column("Line", "\"datatype\":1,\"tag\":\"<I2>\",\"size\":0", "false", "\"text\":\"smallint\"") + "," +
                column("Price", "\"datatype\":9,\"tag\":\"<DOUBLE>\",\"size\":0", "false", "\"text\":\"float\"") + "," +
                column("Day", "\"datatype\":11,\"tag\":\"<DATE>\",\"size\":0", "false", "\"text\":\"date\"") + "," +
                column("Note", "\"datatype\":22,\"tag\":\"<TEXT>\",\"size\":0", "false", "\"text\":\"text\"") +
                "],\"keys\":[{\"name\":\"primary key\",\"primary\":true,\"unique\":true,\"fulltext\":false,"
                "\"columns\":[\"Order No\",\"Line\"],\"orders\":[\"\",\"\"],"
                "\"text\":\"primary key (Order No,Line)\"}],\"constraints\":[],\"error\":null}],\"error\":null}\n");
}

TEST_F(ParadoxCompanionTest, Rows) {
  const TAnswer orders = RunInProcess({"rows", source_, "orders", "--format", "json"});
  EXPECT_EQ(orders.status, 0) << orders.err;
  EXPECT_THAT(orders.out, HasSubstr("\"rows\":[[1,-2,1.5,\"2000-01-01\",\"long text\"],[null,null,null,null,null]]"));
  EXPECT_THAT(RunInProcess({"rows", source_, "blobs", "--format", "json"}).out,
              HasSubstr("\"rows\":[[{\"base64\":\"//4=\"},true]]"));
}

TEST_F(ParadoxCompanionTest, FaultsNameTheirFile) {
  PutFile(folder_ / "secret.db", TPxFile{.fields = {{"a", 1, 1}}, .encryption = 1}.Bytes());
  PutFile(folder_ / "short.db", "short");
  const TAnswer schema = RunInProcess({"schema", source_});
  EXPECT_EQ(schema.status, 2);
  EXPECT_THAT(schema.err, HasSubstr(folder_.Path() + ": table secret: This file is encrypted.\n"));
  EXPECT_THAT(schema.err, HasSubstr(folder_ / "short.db: offset 0x05: the file ends within"));
  EXPECT_THAT(schema.out, HasSubstr("ORDERS")) << "the others are shown";
  const TAnswer rows = RunInProcess({"rows", source_, "secret"});
  EXPECT_EQ(rows.status, 2);
  EXPECT_EQ(rows.err, "velmora-cli: " + folder_.Path() + ": table secret: This file is encrypted.\n");
  EXPECT_EQ(RunInProcess({"rows", source_, "none"}).err,
            "velmora-cli: Cannot open " + folder_.Path() + "/none.db: No such file or directory\n");
}

// --- Text files: the folders of tests/data/text against the documents beside them

TEST(TextCompanionTest, Schema) {
  const std::string folder = VELMORA_SOURCE_DIR "/tests/data/text/";
  for (const std::string name : {"delimited", "fixed"}) {
    const std::string source = "Text:folder=" + folder + name + ";HDR=Y;separator=" + (name == "fixed" ? "" : ",");
    const TAnswer answer = RunInProcess({"schema", source, "--format", "json"});
    EXPECT_EQ(TJson::parse(StrReplace(answer.out, folder, "")).dump(1),
              TJson::parse(ReadFileText(folder + name + ".json")).dump(1));
    EXPECT_EQ(answer.status, name == "fixed" ? 0 : 2) << "broken.txt holds text without quotes";
  }
}

TEST(TextCompanionTest, Rows) {
  const std::string folder = VELMORA_SOURCE_DIR "/tests/data/text/";
  EXPECT_THAT(RunInProcess({"rows", "text:folder=" + folder + "delimited;HDR=Y;separator=,", "people.csv"}).out,
              HasSubstr("\n1\tAnn \xC4\x8C"
                        "ech\t1980-05-17\t1200.5\t31\n2\tO Neil\tNULL\tNULL\t2\n"));
  const std::string fixed = "text:folder=" + folder + "fixed;HDR=Y;separator=";
  EXPECT_THAT(RunInProcess({"rows", fixed, "people.txt", "--format", "json"}).out,
              HasSubstr("[12,\"Bj\xC3\xB6rn\",\"1999-12-31\",7.0,\"2001-02-04\"]"));
  const TAnswer missing = RunInProcess({"rows", fixed, "none.txt"});
  EXPECT_EQ(missing.status, 2);
  EXPECT_THAT(missing.err, HasSubstr("Cannot read " + folder + "fixed/none.txt: No such file or directory"));
}

TEST(FileCompanionTest, AFolderWithoutTablesIsWorthAWarning) {
  const testing::TScratchFolder folder;
  for (const std::string engine : {"Paradox", "Text"}) {
    const TAnswer answer = RunInProcess({"schema", engine + ":folder=" + folder.Path() + "/none"});
    EXPECT_EQ(answer.status, 0) << engine;
    EXPECT_THAT(answer.err, HasSubstr("warning: ")) << engine;
    EXPECT_THAT(answer.err, HasSubstr("no table was found")) << engine;
  }
}

}  // namespace
}  // namespace velmora
