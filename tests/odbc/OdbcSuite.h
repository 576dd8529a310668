// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What the provider has to do over every driver. A driver brings the statements of a schema, cases/NAME.sql, each
// ending in ";" and a line end; what the provider tells of it stands in cases/NAME.golden.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>

#include "engines/oledb/DBConnODBC.h"
#include "odbc/OdbcTold.h"
#include "support/MessageOf.h"
#include "support/MetaDump.h"
#include "util/Files.h"

namespace velmora::testing {

struct TOdbcDriver {
  std::string name;  // of the data source
  // Empties the source, and makes it known; what it gives lives as long as the test.
  std::function<std::shared_ptr<void>()> prepare;
  std::string no_table, duplicate;  // pieces of the driver's messages

  friend void PrintTo(const TOdbcDriver& driver, std::ostream* out) { *out << driver.name; }
};

class OdbcSuite : public ::testing::TestWithParam<TOdbcDriver> {
 protected:
  void SetUp() override { provider_->Initialize(); }

  std::shared_ptr<void> prepared_ = GetParam().prepare();
  std::unique_ptr<TOLEDBProvider> provider_ = OdbcProviderOf(GetParam().name);
};

inline std::string DriverName(const ::testing::TestParamInfo<TOdbcDriver>& driver) { return driver.param.name; }

TEST_P(OdbcSuite, TellsOfASchema) {
  std::string statements = ReadFileText(kOdbcCases + GetParam().name + ".sql");
  while (!statements.empty()) provider_->Execute(StrChop(";\n", statements));
  std::string told = Told(*provider_);
  EXPECT_TRUE(provider_->Columns("nope").empty());
  TDBConnODBC engine(GetParam().name);
  engine.Connect();
  for (const TOLEDBTableRow& table : provider_->Tables()) {
    if (table.TABLE_TYPE != "TABLE") continue;
    engine.meta().GotoTable(table.TABLE_NAME);
    engine.FetchIfNeeded();
  }
  EXPECT_EQ(told + "\nThe engine:\n" + DumpMeta(engine.meta()), ReadFileText(kOdbcCases + GetParam().name + ".golden"));
}

TEST_P(OdbcSuite, StatementsTransactionsAndErrors) {
  provider_->Execute("create table [t](a int primary key)");
  EXPECT_EQ(provider_->Execute("insert into [t] values (1), (2), (3)"), 3);
  EXPECT_EQ(provider_->Execute("delete from [t] where a = 9"), 0);
  const auto other = OdbcProviderOf(GetParam().name);
  other->Initialize();
  const auto count = [&] { return VarToInt(other->Open("select count(*) from [t]").rows.at(0).at(0)); };
  provider_->StartTransaction(4096);
  provider_->Execute("insert into t values (4)");
  EXPECT_EQ(count(), 3);
  provider_->Commit();
  EXPECT_EQ(count(), 4);
  provider_->StartTransaction(4096);
  provider_->Execute("delete from t");
  provider_->Uninitialize();
  EXPECT_EQ(count(), 4) << "rolled back";
  provider_->Initialize();
  EXPECT_THAT(MessageOf([&] { provider_->Execute("insert into t values (1)"); }),
              ::testing::HasSubstr(GetParam().duplicate));
  EXPECT_THAT(MessageOf([&] { provider_->Open("select * from [nöpe]"); }), ::testing::HasSubstr(GetParam().no_table));
  EXPECT_TRUE(provider_->Initialized());
}

}  // namespace velmora::testing
