// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "engines/oledb/DBConnSQLServer.h"
#include "support/MessageOf.h"
#include "support/tds/SqlServerShop.h"

namespace velmora::testing {

// Connections to a played server by the real driver.
class TSqlServerTest : public ::testing::Test {
 protected:
  TDBConnSQLServer Conn() const { return {server_.Place(), "shop", server_.user, server_.password, false}; }

  TSqlServerShop server_;
};

}  // namespace velmora::testing
