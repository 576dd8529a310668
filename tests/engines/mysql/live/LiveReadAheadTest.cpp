#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/Meta.h"
#include "support/LiveDatabase.h"
#include "support/MessageOf.h"
#include "util/Errors.h"

namespace velmora {
namespace {

using ::testing::HasSubstr;
using velmora::testing::MessageOf;
using velmora::testing::TLiveDatabase;

constexpr int kTables = 60;

std::string Name(int i) { return "t" + std::to_string(i); }

class LiveReadAhead : public ::testing::TestWithParam<bool> {
 protected:
  LiveReadAhead() {
    for (int i = 0; i < kTables; ++i)
      database_.Run("create table " + Name(i) + " (a int, b varchar(" + std::to_string(10 + i) + "))");
    engine_ = database_.NewEngine();
    static_cast<TMyConnection&>(engine_->GetConnectionObject()).Options.ReadAhead = GetParam();
    engine_->Connect();
  }
  std::string TextOf(int i) {
    std::string text;
    engine_->ShowCreateTable(Name(i), text);
    return text;
  }
  std::string Length(int i) const { return "varchar(" + std::to_string(10 + i) + ")"; }

  TLiveDatabase database_;
  std::unique_ptr<TDBConnMySQL> engine_;
};

// The same with and without: answers in and out of turn, statements between them, tables that are gone.
TEST_P(LiveReadAhead, AnswersAreThoseThatWereAskedFor) {
  TStringList names;
  for (int i = 0; i < kTables; ++i) names.push_back(Name(i));
  names.insert(names.begin() + 2, "gone");  // never asked for: its error shows nowhere
  engine_->ExpectCreationTexts(names);
  for (int i = 0; i < kTables / 2; ++i) EXPECT_THAT(TextOf(i), HasSubstr(Length(i)));
  EXPECT_THAT(TextOf(45), HasSubstr(Length(45)));  // out of turn
  TVariant count;
  engine_->GetResultSQL("select count(*) from t1", count);
  EXPECT_EQ(VarToText(count), "0");
  database_.Run("drop table t50");
  EXPECT_THAT(TextOf(46), HasSubstr(Length(46)));
  EXPECT_THAT(MessageOf([&] { TextOf(50); }), HasSubstr("t50"));
  EXPECT_THAT(TextOf(51), HasSubstr(Length(51)));
  engine_->ExecSQL("create table fresh (a int)");
  EXPECT_EQ(engine_->GetConnectionObject().TransactionOpen(true), false);
  EXPECT_TRUE(engine_->GetConnected());
}

TEST_P(LiveReadAhead, ADisconnectInTheMiddleLeavesNothingBehind) {
  TStringList names;
  for (int i = 0; i < kTables; ++i) names.push_back(Name(i));
  engine_->ExpectCreationTexts(names);
  TextOf(0);
  engine_->Reconnect();
  EXPECT_THAT(TextOf(7), HasSubstr(Length(7)));
}

INSTANTIATE_TEST_SUITE_P(ReadAhead, LiveReadAhead, ::testing::Bool(),
                         [](const auto& on) { return on.param ? "on" : "off"; });

}  // namespace
}  // namespace velmora
