// The companion on databases of server client engines.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <cstdio>
#include <filesystem>

#include "support/CompanionRun.h"
#include "support/FakeOracle.h"
#include "support/OracleDictionary.h"
#include "support/PrivateFirebird.h"
#include "support/ScratchFolder.h"

namespace velmora {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;
using testing::TAnswer;

class InterbaseCompanionTest : public ::testing::Test {
 protected:
  std::string NewSource(const std::string& name) {
    path_ = folder_.NewDatabase(
        name, {"create table ITEMS (ID integer not null, NAME varchar(40), PRICE numeric(9,2) default 0, RATIO float)",
               "create table TRUTH (YES boolean)", "insert into ITEMS values (1, 'zwölf', -0.5, null)"});
    return "interbase/firebird:database=" + path_ + ";username=SYSDBA;password=";
  }

  testing::TFirebirdFolder folder_;
  std::string path_;
};

TEST_F(InterbaseCompanionTest, Schema) {
  const TAnswer answer = testing::RunInProcess({"schema", NewSource("shop.fdb"), "--format", "json"});
  EXPECT_EQ(answer.status, 2) << "one table fails";
  EXPECT_EQ(
      answer.out,
      "{\"engine\":5,\"display_name\":\"" + path_ +
          "\",\"tables\":[{\"name\":\"ITEMS\",\"type\":\"\",\"columns\":["
          "{\"name\":\"ID\",\"datatype\":2,\"tag\":\"<I4>\",\"size\":0,\"precision\":0,\"notnull\":true,"
          "\"default\":\"\",\"autoinc\":false,\"text\":\"LONG not null\",\"text_error\":null},"
          "{\"name\":\"NAME\",\"datatype\":16,\"tag\":\"<VARCHAR>\",\"size\":40,\"precision\":0,\"notnull\":false,"
          "\"default\":\"\",\"autoinc\":false,\"text\":\"VARYING(40)\",\"text_error\":null},"
          "{\"name\":\"PRICE\",\"datatype\":10,\"tag\":\"<DECIMAL>\",\"size\":9,\"precision\":2,\"notnull\":false,"
          "\"default\":\"\",\"autoinc\":false,\"text\":\"DECIMAL(9,2)\",\"text_error\":null},"
          "{\"name\":\"RATIO\",\"datatype\":8,\"tag\":\"<FLOAT>\",\"size\":8,\"precision\":0,\"notnull\":false,"
          "\"default\":\"\",\"autoinc\":false,\"text\":\"FLOAT(8,0)\",\"text_error\":null}"
          "],\"keys\":[],\"constraints\":[],\"error\":null},"
          "{\"name\":\"TRUTH\",\"type\":\"\",\"columns\":[],\"keys\":[],\"constraints\":[],"
          "\"error\":\"TDBConn.DecodeColumn: Unhandled column type BOOLEAN\"}],"
          "\"error\":\"TDBConn.DecodeColumn: Unhandled column type BOOLEAN\"}\n");
}

TEST_F(InterbaseCompanionTest, RowsAndAMissingFile) {
  const std::string source = NewSource("shop.fdb");
  const TAnswer rows = testing::RunInProcess({"rows", source, "ITEMS", "--format", "json"});
  EXPECT_EQ(rows.status, 0) << rows.err;
  EXPECT_THAT(rows.out, HasSubstr("\"rows\":[[1,\"zwölf\",-0.50,null]],\"error\":null}"));
  std::filesystem::remove(path_);
  const TAnswer missing = testing::RunInProcess({"schema", source});
  EXPECT_EQ(missing.status, 2);
  EXPECT_THAT(missing.err,
              StartsWith("velmora-cli: I/O error during \"open\" operation for file \"" + path_ + "\"\n  -"));
}

// A process of its own, since the library looks at its environment once.
TEST_F(InterbaseCompanionTest, NeedsNothingOfTheEnvironment) {
  const testing::TScratchFolder home;
  NewSource("shop.fdb");
  std::filesystem::rename(path_, folder_.Path() + "/größe.fdb");
  const std::string command =
      "env -i HOME=" + home.Path() +
      " LC_ALL=C ASAN_OPTIONS=detect_leaks=0 " VELMORA_CLI " rows 'Interbase/Firebird:database=" + folder_.Path() +
      "/größe.fdb;username=SYSDBA;password=' ITEMS 2>&1";
  FILE* pipe = popen(command.c_str(), "r");
  std::string out(4000, '\0');
  out.resize(fread(out.data(), 1, out.size(), pipe));
  EXPECT_EQ(pclose(pipe), 0);
  EXPECT_EQ(out, "ID\tNAME\tPRICE\tRATIO\n1\tzwölf\t-0.50\tNULL\n");
  EXPECT_TRUE(std::filesystem::exists(home / ".cache/velmora/firebird")) << "lock files are the user's own";
}

// --- Oracle, whose server is played by a stand-in for the client library

class OracleCompanionTest : public ::testing::Test {
 protected:
  OracleCompanionTest() { setenv("ORACLE_HOME", VELMORA_FAKE_CLIENTS "/oracle", 1); }
  ~OracleCompanionTest() override {
    unsetenv("ORACLE_HOME");
    EXPECT_EQ(server_.given_out, 0);
  }

  testing::TFakeOracle& server_ = testing::FakeOracleOf(VELMORA_FAKE_CLIENTS "/oracle");
  const std::string source_ = "oracle:server=ORCL;username=scott;password=tiger";
};

TEST_F(OracleCompanionTest, Schema) {
  testing::TOracleDictionary(server_)
      .Tables({"ITEMS", "LOG"})
      .Column("ITEMS", {"ID", "NUMBER", "0", "22", "10", "0", "N"})
      .Column("ITEMS", {"NAME", "VARCHAR2", "40", "160", {}, {}, "Y"})
      .Column("ITEMS", {"IMAGE", "BLOB", {}, "4000", {}, {}, "Y"})
      .Index("ITEMS", {"PK_ITEMS", "UNIQUE", "ID", "ASC"})
      .Constraint("ITEMS", {"PK_ITEMS", "P", {}, "ID", {}, {}})
      .Constraint("ITEMS", {"SYS_C1", "C", "\"ID\" IS NOT NULL", "ID", {}, {}})
      .Column("LOG", {"AT", "TIMESTAMP(6)", {}, "11", {}, "6", "Y"});
  const TAnswer answer = testing::RunInProcess({"schema", source_, "--format", "json"});
  EXPECT_EQ(answer.status, 2) << "one table fails";
  EXPECT_EQ(answer.out,
            "{\"engine\":10,\"display_name\":\"scott@ORCL\",\"tables\":[{\"name\":\"ITEMS\",\"type\":\"\",\"columns\":["
            "{\"name\":\"ID\",\"datatype\":10,\"tag\":\"<DECIMAL>\",\"size\":10,\"precision\":0,\"notnull\":true,"
            "\"default\":\"\",\"autoinc\":false,\"text\":\"NUMBER(10,0) not null\",\"text_error\":null},"
            "{\"name\":\"NAME\",\"datatype\":16,\"tag\":\"<VARCHAR>\",\"size\":40,\"precision\":0,\"notnull\":false,"
            "\"default\":\"\",\"autoinc\":false,\"text\":\"VARCHAR2(40)\",\"text_error\":null},"
            "{\"name\":\"IMAGE\",\"datatype\":20,\"tag\":\"<BYTES>\",\"size\":4000,\"precision\":0,\"notnull\":false,"
            "\"default\":\"\",\"autoinc\":false,\"text\":\"LONG\",\"text_error\":null}],"
            "\"keys\":[{\"name\":\"PK_ITEMS\",\"primary\":true,\"unique\":true,\"fulltext\":false,\"columns\":[\"ID\"],"
            "\"orders\":[\"A\"],\"text\":\"constraint pk_ITEMS primary key (ID)\"}],"
            "\"constraints\":[{\"name\":\"PK_ITEMS\",\"constraint_type\":0,\"foreign_table\":\"\",\"delete_rule\":\"\","
            "\"update_rule\":\"\",\"def_value\":\"\",\"check_condition\":\"\",\"local\":[\"ID\"],\"foreign\":[\"\"],"
            "\"text\":null},{\"name\":\"SYS_C1\",\"constraint_type\":3,\"foreign_table\":\"\",\"delete_rule\":\"\","
            "\"update_rule\":\"\",\"def_value\":\"\",\"check_condition\":\"\\\"ID\\\" IS NOT NULL\",\"local\":[\"ID\"],"
            "\"foreign\":[\"\"],\"text\":null}],\"error\":null},"
            "{\"name\":\"LOG\",\"type\":\"\",\"columns\":[],\"keys\":[],\"constraints\":[],"
            "\"error\":\"TDBConn.DecodeColumn: Unhandled column type TIMESTAMP(6)\"}],"
            "\"error\":\"TDBConn.DecodeColumn: Unhandled column type TIMESTAMP(6)\"}\n");
}

TEST_F(OracleCompanionTest, RowsAndFailures) {
  testing::TOracleDictionary(server_).Tables({"ITEMS"});
  testing::TFakeOracle::TAnswer& rows = server_.answers["select * from \"ITEMS\""];
  rows.columns = {{"ID", 2}, {"AT", 12}, {"NOTE", 112}};
  rows.rows = {{"-.5", "2001-02-03 04:05:06", "zw\xC3\xB6lf"}, {"2", std::nullopt, std::nullopt}};
  const TAnswer answer = testing::RunInProcess({"rows", source_, "ITEMS", "--format", "json"});
  EXPECT_EQ(answer.status, 0) << answer.err;
  EXPECT_THAT(answer.out, HasSubstr("\"rows\":[[-0.5,\"2001-02-03 04:05:06\",\"zw\xC3\xB6lf\"],[2,null,null]]"));

  const struct {
    const char* home;
    std::string source;
    const char* message;
  } kCases[] = {
      {VELMORA_FAKE_CLIENTS "/oracle", "Oracle:server=ORCL;username=scott;password=lion",
       "ORA-01017: invalid username/password; logon denied"},
      {VELMORA_FAKE_CLIENTS "/oracle", source_ + ";authmode=sysdba", "Invalid Oracle authentication mode!"},
      {VELMORA_FAKE_CLIENTS "/oracle", source_ + ";direct=Y",
       "direct mode is not available on this system; use the Oracle client"},
      {VELMORA_FAKE_CLIENTS "/oracle-old", source_, "has no entry point OCIStmtFetch2: install an Oracle client"},
  };
  for (const auto& c : kCases) {
    setenv("ORACLE_HOME", c.home, 1);
    const TAnswer failed = testing::RunInProcess({"schema", c.source});
    EXPECT_EQ(failed.status, 2) << c.message;
    EXPECT_THAT(failed.err, HasSubstr(c.message));
  }
}

}  // namespace
}  // namespace velmora
