// SPDX-License-Identifier: GPL-3.0-or-later

// The provider over a real driver that needs no server.

#include <filesystem>

#include "odbc/OdbcSuite.h"
#include "support/OdbcSources.h"
#include "support/ScratchFolder.h"

namespace velmora::testing {
namespace {

std::shared_ptr<void> NewSqliteFile() {
  static const TScratchFolder folder;
  static const std::string path = folder / "shop.db";
  static const bool known = [] {
    AddOdbcSource("sqlite", OdbcDriverFile("libsqlite3odbc.so"), "Database=" + path);
    AddOdbcSource("no-driver", "/nowhere/driver.so");
    return true;
  }();
  static_cast<void>(known);
  std::filesystem::remove(path);
  return nullptr;
}

INSTANTIATE_TEST_SUITE_P(Sqlite, OdbcSuite,
                         ::testing::Values(TOdbcDriver{"sqlite", NewSqliteFile, "[SQLite]no such table: nöpe (1)",
                                                       "UNIQUE constraint failed: t.a"}),
                         DriverName);

TEST(OdbcSourcesTest, WhatCannotBeOpened) {
  NewSqliteFile();
  const std::pair<std::string, const char*> kCases[] = {
      {"nope",
       "[unixODBC][Driver Manager]Data source name not found and no default driver specified\n"
       "There is no data source \"nope\" in odbc.ini; \"odbcinst -j\" tells which files are read"},
      {"no-driver", "[unixODBC][Driver Manager]Can't open lib '/nowhere/driver.so' : file not found"},
      {std::string(100000, 'x'), "A text of 100000 bytes is too long for ODBC"},
  };
  for (const auto& [source, message] : kCases)
    EXPECT_EQ(MessageOf([&, &source = source] { OdbcProviderOf(source)->Initialize(); }), message);
  EXPECT_EQ(
      MessageOf([] { NewSQLServerProvider(TInitString("Data Source=.;User ID=sa;Password=secret"))->Initialize(); }),
      "[unixODBC][Driver Manager]Can't open lib 'FreeTDS' : file not found "
      "(the ODBC driver for SQL Server is missing: install the package tdsodbc)");
}

TEST(OdbcSourcesTest, AreListed) {
  NewSqliteFile();
  const std::unique_ptr<TDataset> sources = OdbcDataSources();
  ASSERT_EQ(sources->Fields().size(), 4U);
  TStringList names;
  FieldToList(*sources, "SOURCES_NAME", names);
  EXPECT_THAT(names, ::testing::IsSupersetOf({"sqlite", "no-driver"}));
  sources->First();
  EXPECT_EQ(VarToInt(sources->FieldByName("SOURCES_TYPE").value), 1);
}

}  // namespace
}  // namespace velmora::testing
