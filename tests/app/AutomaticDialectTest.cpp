// SPDX-License-Identifier: GPL-3.0-or-later

// Which dialect a target gets, and the comparison that begins in the wrong one.

#include "app/AutomaticDialect.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/Application.h"
#include "app/ServerVersion.h"
#include "engines/mysql/DBConnMySQL.h"
#include "support/FakeMyConnection.h"
#include "support/MessageOf.h"
#include "support/RecordingPorts.h"

namespace velmora {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

TEST(AutomaticDialect, IsToldByTheServersVersion) {
  const struct {
    const char* said;
    const char* version;
    EDialect dialect;
  } cases[] = {
      {"3.23.58-nt", "MySQL 3.23.58", EDialect::Standard},
      {"4.1.22-standard-log", "MySQL 4.1.22", EDialect::Standard},
      {"5.0.15", "MySQL 5.0.15", EDialect::Exact},
      {"8.0.36-0ubuntu0.22.04.1", "MySQL 8.0.36", EDialect::Exact},
      {"5.5.5-10.11.6-MariaDB-log", "MariaDB 10.11.6", EDialect::Exact},
      {"11.8.6-MariaDB", "MariaDB 11.8.6", EDialect::Exact},
      {"trunk", "MySQL ", EDialect::Exact},
  };
  for (const auto& c : cases) {
    const auto server = std::make_shared<testing::TFakeMyServer>();
    server->AddColumn("select version()", {c.said});
    server->AddColumn("show tables", {});
    TDBConnMySQL target(std::make_unique<testing::TFakeMyConnection>(server), "h", 3306, "d", "u", "");
    target.Connect();
    const TDialectChoice choice = DialectFor(target);
    EXPECT_EQ(choice.dialect, c.dialect) << c.said;
    EXPECT_EQ(choice.reason, std::string("the target's server is ") + c.version);
  }
}

class AutomaticComparisonTest : public ::testing::Test {
 protected:
  AutomaticComparisonTest() : app_(progress_, editor_, log_, SystemClock()) {
    server_->AddColumn("select version()", {"4.1.22"});
    server_->AddTable("t", "CREATE TABLE `t` (\n  `a` int(11) NOT NULL\n) TYPE=InnoDB");
    app_.TakeTask({Conn(), Conn()});
  }
  std::unique_ptr<TDBConn> Conn() const {
    return std::make_unique<TDBConnMySQL>(std::make_unique<testing::TFakeMyConnection>(server_), "h", 3306, "d", "u",
                                          "");
  }

  std::shared_ptr<testing::TFakeMyServer> server_ = std::make_shared<testing::TFakeMyServer>();
  TNoProgress progress_;
  TLineEditor editor_;
  testing::TRecordingLog log_;
  TApplication app_;
};

TEST_F(AutomaticComparisonTest, AServerOfOldIsComparedInTheStandardDialect) {
  for (int i = 0; i < 2; ++i) {
    app_.Compare();
    EXPECT_EQ(app_.Used().id, EDialect::Standard);
    EXPECT_TRUE(app_.Dialect().Identical());
    const std::string line = "Dialect: standard (automatic: the target's server is MySQL 4.1.22)";
    EXPECT_THAT(app_.Log(), ElementsAre(line));
    app_.Dialect().GenerateScript();
    EXPECT_THAT(editor_.Text(), HasSubstr("--" + line + "\r\n"));
  }
  app_.Choose(EDialect::Standard);
  app_.Compare();
  EXPECT_THAT(app_.Log(), ElementsAre()) << "the user has chosen";
}

TEST_F(AutomaticComparisonTest, WhatOnlyTheExactDialectCanDoIsRefusedThere) {
  TComparisonWishes wishes;
  wishes.verify_on_server = true;
  app_.Take(wishes);
  EXPECT_THAT(testing::MessageOf([&] { app_.Compare(); }), HasSubstr("Only a script of the exact dialect"));
}

}  // namespace
}  // namespace velmora
