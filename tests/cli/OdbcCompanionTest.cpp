// The companion on an ODBC data source.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>

#include "odbc/OdbcProvider.h"
#include "support/CompanionRun.h"
#include "support/OdbcSources.h"
#include "support/ScratchFolder.h"

namespace velmora {
namespace {

using testing::TAnswer;

class OdbcCompanionTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    static const testing::TScratchFolder folder;
    testing::AddOdbcSource("shop", testing::OdbcDriverFile("libsqlite3odbc.so"), "Database=" + (folder / "shop.db"));
    TInitString properties;
    properties.Set("Data Source", "shop");
    const std::unique_ptr<TOLEDBProvider> provider = NewOdbcProvider(properties);
    provider->Initialize();
    for (const char* statement :
         {"create table [größe](id integer primary key, name nvarchar(20) not null default 'x', made date)",
          "create index by_name on [größe](name, made)",
          "insert into [größe] values (1, 'zwölf Ω 😀', '2001-02-03'), (2, 'b', null)"})
      provider->Execute(statement);
  }
};

TEST_F(OdbcCompanionTest, SchemaAndRows) {
  const TAnswer schema = testing::RunInProcess({"schema", "ODBC:dsn=shop", "--format", "json"});
  EXPECT_EQ(schema.status, 0) << schema.err;
  EXPECT_EQ(schema.out,
            R"j({"engine":16,"display_name":"shop","tables":[{"name":"größe","type":"","columns":[)j"
            R"j({"name":"id","datatype":2,"tag":"<I4>","size":0,"precision":null,"notnull":false,"default":"",)j"
            R"j("autoinc":false,"text":"int","text_error":null},)j"
            R"j({"name":"name","datatype":16,"tag":"<VARCHAR>","size":20,"precision":null,"notnull":true,)j"
            R"j("default":"x","autoinc":false,"text":"varchar(20) not null default (x)","text_error":null},)j"
            R"j({"name":"made","datatype":11,"tag":"<DATE>","size":0,"precision":null,"notnull":false,"default":"",)j"
            R"j("autoinc":false,"text":"date","text_error":null}],"keys":[)j"
            R"j({"name":"sqlite_autoindex_0","primary":true,"unique":true,"fulltext":false,"columns":["id"],)j"
            R"j("orders":[""],"text":"primary key (id)"},)j"
            R"j({"name":"by_name","primary":false,"unique":false,"fulltext":false,"columns":["name","made"],)j"
            R"j("orders":["",""],"text":"key [by_name] (name,made)"}],"constraints":[],"error":null}],"error":null})j"
            "\n");
  const TAnswer rows = testing::RunInProcess({"rows", "odbc:dsn=shop", "größe", "--format", "json"});
  EXPECT_EQ(rows.status, 0) << rows.err;
  EXPECT_EQ(rows.out,
            R"j({"columns":[{"name":"id","type":"integer"},{"name":"name","type":"string"},)j"
            R"j({"name":"made","type":"date"}],"rows":[[1,"zwölf Ω 😀","2001-02-03"],[2,"b",null]],"error":null})j"
            "\n");
}

// In a process of its own, whose locale knows ASCII only.
TEST_F(OdbcCompanionTest, LettersNeedNoLocale) {
  const char kCommand[] =
      "env LC_ALL=C ASAN_OPTIONS=detect_leaks=0 " VELMORA_CLI " rows ODBC:dsn=shop größe --format json 2>&1";
  FILE* pipe = popen(kCommand, "r");
  std::string out(4000, '\0');
  out.resize(fread(out.data(), 1, out.size(), pipe));
  EXPECT_EQ(pclose(pipe), 0);
  EXPECT_THAT(out, ::testing::HasSubstr("zwölf Ω 😀"));
}

TEST_F(OdbcCompanionTest, AnUnknownSource) {
  const TAnswer answer = testing::RunInProcess({"schema", "ODBC:dsn=nowhere"});
  EXPECT_EQ(answer.status, 2);
  EXPECT_THAT(answer.err, ::testing::HasSubstr("There is no data source \"nowhere\" in odbc.ini"));
}

}  // namespace
}  // namespace velmora
