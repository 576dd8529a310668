// The companion on a SQL Server, over the real driver.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

#include "support/CompanionRun.h"
#include "support/ScratchFolder.h"
#include "support/tds/DriverFolder.h"
#include "support/tds/FakeTdsServer.h"

namespace velmora {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using testing::TAnswer;

class SqlServerCompanionTest : public ::testing::Test {
 protected:
  SqlServerCompanionTest() {
    testing::UseSqlServerDriver();
    std::ofstream(folder_ / "password") << server_.password << "\n";
  }

  TAnswer Run(const std::string& command, const std::vector<std::string>& rest) const {
    std::vector<std::string> arguments = {
        command, "SQL Server:server=127.0.0.1," + std::to_string(server_.Port()) + ";database=shop;username=sa"};
    arguments.insert(arguments.end(), rest.begin(), rest.end());
    arguments.insert(arguments.end(), {"--format", "json", "--password-file", folder_ / "password"});
    return testing::RunInProcess(arguments);
  }

  const testing::TScratchFolder folder_;
  testing::TFakeTdsServer server_;
};

TEST_F(SqlServerCompanionTest, Schema) {
  server_.Table("customers").Column("id", "int identity", "No").Primary("PK_c", {"id"});
  server_.Table("orders")
      .Column("customer", "int", "No")
      .Column("größe", "nvarchar(40)")
      .Column("total", "decimal(12,2)")
      .Default("DF_total", "total", "((0))")
      .Index("by size", {"größe desc"}, {.unique = true})
      .Check("CK_total", "([total]>=(0))", "total")
      .Foreign("FK_c", {"customer"}, "customers", {"id"});
  const TAnswer answer = Run("schema", {});
  EXPECT_EQ(answer.status, 0) << answer.err;
  EXPECT_EQ(
      answer.out,
      R"j({"engine":7,"display_name":"127.0.0.1,)j" + std::to_string(server_.Port()) +
          R"j(.shop","tables":[)j"
          R"j({"name":"customers","type":"","columns":[)j"
          R"j({"name":"id","datatype":2,"tag":"<I4>","size":0,"precision":0,"notnull":true,"default":"","autoinc":true,)j"
          R"j("text":"int not null identity","text_error":null}],)j"
          R"j("keys":[{"name":"PK_c","primary":true,"unique":true,"fulltext":false,"columns":["id"],"orders":["A"],)j"
          R"j("text":"primary key (id)"}],)j"
          R"j("constraints":[{"name":"PK_c","constraint_type":0,"foreign_table":"","delete_rule":"","update_rule":"",)j"
          R"j("def_value":"","check_condition":"","local":[],"foreign":[],"text":""}],"error":null},)j"
          R"j({"name":"orders","type":"","columns":[)j"
          R"j({"name":"customer","datatype":2,"tag":"<I4>","size":0,"precision":0,"notnull":true,"default":"",)j"
          R"j("autoinc":false,"text":"int not null","text_error":null},)j"
          R"j({"name":"größe","datatype":18,"tag":"<NVARCHAR>","size":40,"precision":0,"notnull":false,"default":"",)j"
          R"j("autoinc":false,"text":"nvarchar(40)","text_error":null},)j"
          R"j({"name":"total","datatype":10,"tag":"<DECIMAL>","size":12,"precision":2,"notnull":false,)j"
          R"j("default":"((0))","autoinc":false,"text":"decimal(12,2) default (((0)))","text_error":null}],)j"
          R"j("keys":[{"name":"by size","primary":false,"unique":true,"fulltext":false,"columns":["größe"],)j"
          R"j("orders":["D"],"text":"unique key [by size] (größe)"}],)j"
          R"j("constraints":[{"name":"DF_total","constraint_type":4,"foreign_table":"","delete_rule":"",)j"
          R"j("update_rule":"","def_value":"((0))","check_condition":"","local":["total"],"foreign":[""],"text":""},)j"
          R"j({"name":"CK_total","constraint_type":3,"foreign_table":"","delete_rule":"","update_rule":"",)j"
          R"j("def_value":"","check_condition":"","local":["total"],"foreign":[""],"text":""},)j"
          R"j({"name":"FK_c","constraint_type":2,"foreign_table":"customers","delete_rule":"","update_rule":"",)j"
          R"j("def_value":"","check_condition":"","local":["customer"],"foreign":["id"],)j"
          R"j("text":"constraint FK_c foreign key(customer) references customers(id)"}],"error":null}],"error":null})j"
          "\n");
}

TEST_F(SqlServerCompanionTest, RowsAndARefusedLogin) {
  server_.Table("t").Column("id", "int").Column("name", "nvarchar(9)").Row({"1", "Łódź"}).Row({"2", {}});
  const TAnswer rows = Run("rows", {"t"});
  EXPECT_EQ(rows.status, 0) << rows.err;
  EXPECT_THAT(rows.out, HasSubstr("\"rows\":[[1,\"Łódź\"],[2,null]]"));
  std::ofstream(folder_ / "password") << "geheim\n";
  const TAnswer refused = Run("schema", {});
  EXPECT_EQ(refused.status, 2);
  EXPECT_THAT(refused.err, HasSubstr("Login failed for user 'sa'."));
  EXPECT_THAT(refused.err, Not(HasSubstr("geheim")));
}

}  // namespace
}  // namespace velmora
