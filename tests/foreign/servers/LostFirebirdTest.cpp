// SPDX-License-Identifier: GPL-3.0-or-later

// A Firebird server that is gone while its facts are read.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "engines/server/ClientFirebird.h"
#include "engines/server/DBConnInterbase.h"
#include "foreign/ForeignTexts.h"
#include "support/MessageOf.h"
#include "support/PrivateFirebird.h"

namespace velmora {
namespace {

using testing::TPrivateFirebird;

TEST(LostFirebirdTest, IsAnErrorAndNeverAnEmptySource) {
  TPrivateFirebird server;
  const std::string path = server.Folder().NewDatabase(
      "shop.fdb", {"create table A (ID int not null primary key)", "create table B (ID int, A int references A)"});
  TDBConnInterbase source(NewFirebirdDatabase(), server.Server(), path, "SYSDBA", TPrivateFirebird::kPassword);
  source.Connect();
  TForeignTexts whole(source, {});
  whole.Read(TTargetServer(), {}, [](const std::string&, std::size_t) {});
  EXPECT_EQ(whole.Tables(), (TStringList{"A", "B"}));

  server.Kill();
  TForeignTexts lost(source, {});
  const std::string message =
      testing::MessageOf([&] { lost.Read(TTargetServer(), {}, [](const std::string&, std::size_t) {}); });
  EXPECT_THAT(message, ::testing::AnyOf(::testing::HasSubstr("connection"), ::testing::HasSubstr("network")));
  EXPECT_TRUE(lost.Tables().empty());
}

}  // namespace
}  // namespace velmora
