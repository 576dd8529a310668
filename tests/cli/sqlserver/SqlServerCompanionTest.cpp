// SPDX-License-Identifier: GPL-3.0-or-later

// The companion on a SQL Server, over the real driver.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

#include "support/CompanionRun.h"
#include "support/ScratchFolder.h"
#include "support/tds/SqlServerShop.h"
#include "util/Files.h"
#include "util/Text.h"

namespace velmora {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;
using testing::TAnswer;

class SqlServerCompanionTest : public ::testing::Test {
 protected:
  SqlServerCompanionTest() { std::ofstream(folder_ / "password") << server_.password << "\n"; }

  TAnswer Run(const std::string& command, const std::vector<std::string>& rest) const {
    std::vector<std::string> arguments = {command,
                                          "SQL Server:server=" + server_.Place() + ";database=shop;username=sa"};
    arguments.insert(arguments.end(), rest.begin(), rest.end());
    arguments.insert(arguments.end(), {"--format", "json", "--password-file", folder_ / "password"});
    return testing::RunInProcess(arguments);
  }

  const testing::TScratchFolder folder_;
  testing::TSqlServerShop server_;
};

TEST_F(SqlServerCompanionTest, SchemaRowsAndARefusedLogin) {
  const TAnswer schema = Run("schema", {});
  EXPECT_EQ(schema.status, 0) << schema.err;
  EXPECT_THAT(schema.out, AllOf(HasSubstr("{\"engine\":7,\"display_name\":\"127.0.0.1,"),
                                HasSubstr(RemoveChar(ReadFileText(testing::kSqlServerData + "orders.json"), '\n'))));
  const TAnswer rows = Run("rows", {"wide"});
  EXPECT_EQ(rows.status, 0) << rows.err;
  EXPECT_THAT(rows.out, HasSubstr("\"rows\":[[1,\"Łódź\"],[2,null]]"));
  std::ofstream(folder_ / "password") << "geheim\n";
  const TAnswer refused = Run("schema", {});
  EXPECT_EQ(refused.status, 2);
  EXPECT_THAT(refused.err, AllOf(HasSubstr("Login failed for user 'sa'."), Not(HasSubstr("geheim"))));
}

}  // namespace
}  // namespace velmora
