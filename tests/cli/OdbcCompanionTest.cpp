// SPDX-License-Identifier: GPL-3.0-or-later

// The companion on an ODBC data source.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>

#include "odbc/OdbcProvider.h"
#include "support/CompanionRun.h"
#include "support/OdbcSources.h"
#include "support/ScratchFolder.h"
#include "util/Files.h"
#include "util/Text.h"

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

// The golden has line ends between the parts of its two outputs.
TEST_F(OdbcCompanionTest, SchemaAndRows) {
  const TAnswer schema = testing::RunInProcess({"schema", "ODBC:dsn=shop", "--format", "json"});
  const TAnswer rows = testing::RunInProcess({"rows", "odbc:dsn=shop", "größe", "--format", "json"});
  EXPECT_EQ(schema.status + rows.status, 0) << schema.err << rows.err;
  const std::string golden = ReadFileText(VELMORA_SOURCE_DIR "/tests/cli/data/odbc.json");
  EXPECT_EQ(RemoveChar(schema.out + rows.out, '\n'), RemoveChar(golden, '\n'));
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

}  // namespace
}  // namespace velmora
