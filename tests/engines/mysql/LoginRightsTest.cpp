// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/mysql/LoginRights.h"

#include <gtest/gtest.h>

#include "support/CaseFile.h"
#include "util/Errors.h"

namespace velmora::testing {
namespace {

TEST(LoginRightsTest, WhatALoginMayNotSeeIsHidden) {
  for (const TStringList& row : CaseRows("mysqltext/grants.txt")) {
    TStringList lines;
    SplitText("; ", row[0], lines);
    const TStringList hidden = HiddenKinds(TGrants(lines), row[1]);
    EXPECT_EQ(hidden.empty() ? "none" : JoinList(hidden, ", "), row.at(2)) << row[0];
  }
}

// Error 1290 is that of a server with skip-grant-tables, which has no grants to show.
TEST(LoginRightsTest, WhereNobodyIsAskedForRightsAllIsSeen) {
  const auto refuse = [](int number) {
    return AskGrants([number](const std::string& /*query*/) -> TStringList { throw EMySqlException(number, "no"); });
  };
  EXPECT_EQ(HiddenKinds(refuse(1290), "shop"), TStringList());
  EXPECT_THROW(refuse(2013), EMySqlException);
}

}  // namespace
}  // namespace velmora::testing
