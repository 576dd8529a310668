// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/mysql/LoginRights.h"

#include <gtest/gtest.h>

#include "support/CaseFile.h"
#include "util/Text.h"

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

}  // namespace
}  // namespace velmora::testing
