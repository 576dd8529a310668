// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/mysql/DBConnMySQLscript.h"

#include <gtest/gtest.h>

#include "util/Errors.h"

namespace velmora {
namespace {

TEST(DBConnMySQLscript, HoldsAFileNameAndReadsNothing) {
  TDBConnMySQLscript conn("/no/such file.sql");
  std::string text;
  conn.GetDisplayName(text);
  EXPECT_EQ(text, "/no/such file.sql");
  EXPECT_EQ(conn.GetEngine(), 9);
  TStringList list;
  EXPECT_THROW(conn.Connect(), EAbstractError);
  EXPECT_THROW(conn.GetConnected(), EAbstractError);
  EXPECT_THROW(conn.ListTables(list), EAbstractError);
  EXPECT_THROW(conn.ParseDDL("drop table t"), EAbstractError);
}

}  // namespace
}  // namespace velmora
