// SPDX-License-Identifier: GPL-3.0-or-later

// The provider over a real driver with a server at its other end.

#include "odbc/OdbcSuite.h"
#include "support/LiveDatabase.h"
#include "support/OdbcSources.h"

namespace velmora::testing {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

std::shared_ptr<TLiveDatabase> NewMariaDatabase() {
  static const bool known = [] {
    const std::string server = "Server=127.0.0.1\nUser=root\nPort=" + std::to_string(TPrivateServer::Shared().Port());
    const std::string driver = OdbcDriverFile("libmaodbc.so");
    AddOdbcSource("mariadb", driver, server + "\nDatabase=od_bc");
    AddOdbcSource("mariadb-nowhere", driver, server);
    AddOdbcSource("mariadb-refused", driver, server + "\nUser=nobody\nPassword=secret");
    return true;
  }();
  static_cast<void>(known);
  return std::make_shared<TLiveDatabase>("od_bc");
}

INSTANTIATE_TEST_SUITE_P(MariaDb, OdbcSuite,
                         ::testing::Values(TOdbcDriver{"mariadb", NewMariaDatabase, "od_bc.nöpe' doesn't exist",
                                                       "Duplicate entry '1'"}),
                         DriverName);

class OdbcMariaDbTest : public ::testing::Test {
 protected:
  static std::unique_ptr<TOLEDBProvider> Opened(const std::string& source = "mariadb") {
    std::unique_ptr<TOLEDBProvider> provider = OdbcProviderOf(source);
    provider->Initialize();
    return provider;
  }
  static TStringList Tables(const std::string& source) {
    TStringList tables;
    for (const TOLEDBTableRow& row : Opened(source)->Tables()) tables.push_back(row.TABLE_NAME);
    return tables;
  }

  const std::shared_ptr<TLiveDatabase> database_ = NewMariaDatabase();
};

TEST_F(OdbcMariaDbTest, CatalogsThatLookAlike) {
  TLiveDatabase alike("odXbc");
  database_->Run("create table here(x int)");
  alike.Run("create table other(x int)");
  EXPECT_THAT(Opened()->Catalogs(), ::testing::IsSupersetOf({"od_bc", "odXbc"}));
  TLiveDatabase upper("OD_BC");  // which the driver takes for the same
  upper.Run("create table other(x int)");
  EXPECT_THAT(Tables("mariadb"), ElementsAre("here"));
  EXPECT_THAT(Tables("mariadb-nowhere"), Contains("other")) << "without a database, those of all";
}

TEST_F(OdbcMariaDbTest, RefusedAndDroppedConnections) {
  EXPECT_THAT(MessageOf([] { Opened("mariadb-refused"); }),
              AllOf(HasSubstr("Access denied"), Not(HasSubstr("secret"))));
  const auto provider = Opened();
  database_->Run("kill " + VarToText(provider->Open("select connection_id()").rows.at(0).at(0)));
  EXPECT_THAT(MessageOf([&] { provider->Open("select 1"); }), HasSubstr("MariaDB"));
  EXPECT_FALSE(provider->Initialized());
  provider->Initialize();
  EXPECT_EQ(provider->Open("select 1").rows.size(), 1U);
}

}  // namespace
}  // namespace velmora::testing
