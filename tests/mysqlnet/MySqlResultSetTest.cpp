// SPDX-License-Identifier: GPL-3.0-or-later

// What tests/data/dialogues cannot say of results.

#include "mysqlnet/MySqlResultSet.h"

#include <gtest/gtest.h>

#include "mysqlnet/SessionRig.h"
#include "support/MessageOf.h"
#include "util/Errors.h"

namespace velmora {
namespace {

using namespace velmora::testing;

constexpr char kHead[] = "after 4.1\nquery q\n< 02\n< {a}\n< {b}\n< {end}\n";

TEST(MySqlResultSet, RowsThatNobodyWants) {
  TSessionRig rig(
      WrittenCase("queries.txt", kHead + std::string("< \"1\" \"one\"\n< \"2\" \"two\"\n< {end}\nquery z\n< {4.1 ok}"))
          .Dialogue());
  rig.Connect();
  rig.Query("q");
  {
    TMySqlResultSet rows(rig.session);
    EXPECT_TRUE(rows.Next());
    rows.Skip();
    EXPECT_THROW(rows.Value(0), EListError);
    EXPECT_FALSE(rows.Next());
  }
  rig.Query("z");
  rig.ExpectDone();
  EXPECT_THROW(TMySqlResultSet{rig.session}, EMySqlException);
}

// Rows that never end: one by one they take no memory, at once they end at the limit.
TEST(MySqlResultSet, EndlessRows) {
  std::string text = kHead;
  for (int i = 0; i < 20000; ++i) text += "< \"1\" 64 'x'*100\n";
  const TDialogueCase endless = WrittenCase("queries.txt", text);
  for (const bool whole : {false, true}) {
    TSessionRig rig(endless.Dialogue());
    rig.session.max_result_size = 500000;
    EXPECT_EQ(endless.Play(rig, whole).back(), whole ? "2008 MySQL client run out of memory, lost"
                                                     : "2013 Lost connection to MySQL server during query, lost");
  }
}

// With the older protocol a row that takes two packets is read one by one only.
TEST(MySqlResultSet, HugeRows) {
  const std::string rows = "< FD FAFFFF 'h'*16777210 03\n< 'two'\n";
  const TDialogueCase old =
      WrittenCase("queries.txt", "after old\nquery q\n< 02\n< {old a}\n< {old b}\n< FE\n" + rows + "< FE");
  const TDialogueCase current = WrittenCase("queries.txt", kHead + rows + "< {end}");
  for (const bool whole : {false, true}) {
    for (const TDialogueCase* one : {&old, &current}) {
      TSessionRig rig(one->Dialogue());
      one->SetUp(rig);
      const TStringList told = one->Play(rig, whole);
      if (whole && one == &old) {
        EXPECT_EQ(told.back(), "Cannot retrieve huge data in FetchAll mode, lost");
        continue;
      }
      EXPECT_EQ(told.at(2), "row hhhhhhhhhh... 16777210 bytes|two");
      rig.ExpectDone();
    }
  }
}

}  // namespace
}  // namespace velmora
