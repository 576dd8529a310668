#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "engines/oledb/DBConnSQLServer.h"
#include "support/MessageOf.h"
#include "support/tds/DriverFolder.h"
#include "support/tds/FakeTdsServer.h"

namespace velmora::testing {

inline const std::string kSqlServerShop = VELMORA_SOURCE_DIR "/tests/engines/oledb/catalog/shop";

// A server with the shop, and connections to it by the real driver.
class TSqlServerTest : public ::testing::Test {
 protected:
  TSqlServerTest() {
    UseSqlServerDriver();
    server_.answers = ReadPlayedAnswers(kSqlServerShop + ".txt");
  }

  TDBConnSQLServer Conn() const { return {Place(), "shop", server_.user, server_.password, false}; }
  std::string Place() const { return "127.0.0.1," + std::to_string(server_.Port()); }

  TFakeTdsServer server_;
};

}  // namespace velmora::testing
