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
  for (const std::function<void()>& operation : {std::function<void()>([&] { conn.Connect(); }),
                                                 {[&] { conn.Disconnect(); }},
                                                 {[&] { conn.Reconnect(); }},
                                                 {[&] { conn.GetConnected(); }},
                                                 {[&] { conn.ListTables(list); }},
                                                 {[&] { conn.ParseDDL("drop table t"); }}})
    EXPECT_THROW(operation(), EAbstractError);
}

}  // namespace
}  // namespace velmora
