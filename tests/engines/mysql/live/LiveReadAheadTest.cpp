// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/Meta.h"
#include "support/LiveDatabase.h"
#include "support/MessageOf.h"

namespace velmora {
namespace {

using ::testing::HasSubstr;
using testing::MessageOf;

constexpr int kTables = 60;

std::string Name(int i) { return "t" + std::to_string(i); }

class LiveReadAhead : public ::testing::TestWithParam<bool> {
 protected:
  LiveReadAhead() {
    for (int i = 0; i < kTables; ++i) {
      database_.Run("create table " + Name(i) + " (a int, b varchar(" + std::to_string(10 + i) + "))");
      names_.push_back(Name(i));
    }
    engine_->GetConnectionObject().Options.ReadAhead = GetParam();
    engine_->Connect();
  }
  std::string TextOf(int i) {
    std::string text;
    engine_->ShowCreateTable(Name(i), text);
    return text;
  }
  void ExpectText(int i) { EXPECT_THAT(TextOf(i), HasSubstr("varchar(" + std::to_string(10 + i) + ")")); }

  testing::TLiveDatabase database_;
  std::unique_ptr<TDBConnMySQL> engine_ = database_.NewEngine();
  TStringList names_;
};

// The same with and without: answers in and out of turn, statements between them, tables that are gone.
TEST_P(LiveReadAhead, AnswersAreThoseThatWereAskedFor) {
  names_.insert(names_.begin() + 2, "gone");  // never asked for: its error shows nowhere
  engine_->ExpectCreationTexts(names_);
  for (int i = 0; i < kTables / 2; ++i) ExpectText(i);
  ExpectText(45);  // out of turn
  EXPECT_EQ(engine_->GetRecordCount("t1"), 0);
  database_.Run("drop table t50");
  ExpectText(46);
  EXPECT_THAT(MessageOf([&] { TextOf(50); }), HasSubstr("t50"));
  ExpectText(51);
  engine_->ExecSQL("create table fresh (a int)");
  EXPECT_EQ(engine_->GetConnectionObject().TransactionOpen(true), false);
  EXPECT_TRUE(engine_->GetConnected());
}

TEST_P(LiveReadAhead, ADisconnectInTheMiddleLeavesNothingBehind) {
  engine_->ExpectCreationTexts(names_);
  TextOf(0);
  engine_->Reconnect();
  ExpectText(7);
}

INSTANTIATE_TEST_SUITE_P(ReadAhead, LiveReadAhead, ::testing::Bool(),
                         [](const auto& on) { return on.param ? "on" : "off"; });

}  // namespace
}  // namespace velmora
