// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqlclient/ReadAhead.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "util/Errors.h"

namespace velmora {
namespace {

// A server that answers in order; what is asked for and what is thrown away is written down.
class TLoggedLine final : public TReadAhead::TLine {
 public:
  void SendOnly(const std::vector<std::string_view>& statements) override {
    wire.insert(wire.end(), statements.begin(), statements.end());
  }
  void SkipReply() override {
    skipped.push_back(wire.at(0));
    wire.erase(wire.begin());
  }
  std::string Reply() {
    std::string reply = wire.at(0);
    wire.erase(wire.begin());
    return reply;
  }

  TStringList wire;  // sent, not read
  TStringList skipped;
};

TStringList Numbered(const char* name, int count) {
  TStringList list;
  for (int i = 0; i < count; ++i) list.push_back(name + std::to_string(i));
  return list;
}

TEST(ReadAhead, EachAskerGetsHisOwnReply) {
  struct TCase {
    const char* name;
    TStringList expected;
    TStringList asked;
    TStringList skipped;
  };
  const TCase kCases[] = {
      {"nothing expected", {}, {"x", "y"}, {}},
      {"in order", {"a", "b", "c"}, {"a", "b", "c"}, {}},
      {"one is left out", {"a", "b", "c"}, {"a", "c"}, {"b"}},
      {"another one between", {"a", "b", "c"}, {"a", "x", "b", "c"}, {"b", "c"}},
      {"begins in the middle", {"a", "b", "c"}, {"b", "c"}, {}},
      {"twice", {"a", "b"}, {"a", "a", "b"}, {"b"}},
      {"another one first", {"a", "b"}, {"x", "a", "b"}, {}},
  };
  for (const TCase& item : kCases) {
    SCOPED_TRACE(item.name);
    TReadAhead ahead;
    TLoggedLine line;
    ahead.Expect(item.expected);
    for (const std::string& sql : item.asked) {
      const bool others = ahead.Ask(sql, line);
      EXPECT_TRUE(others || line.wire.size() == 1);
      EXPECT_EQ(line.Reply(), sql);
    }
    EXPECT_EQ(line.skipped, item.skipped);
  }
}

TEST(ReadAhead, TheWindowIsBoundedInStatementsAndBytes) {
  TReadAhead ahead;
  TLoggedLine line;
  ahead.Expect(Numbered("s", 100));
  ahead.Ask("s0", line);
  EXPECT_EQ(line.wire.size(), 1 + TReadAhead::kWindow);
  for (std::size_t i = 1; i < 100; ++i) {
    line.Reply();
    ahead.Ask("s" + std::to_string(i), line);
    EXPECT_LE(line.wire.size(), 1 + TReadAhead::kWindow);
    EXPECT_GE(line.wire.size(), std::min(100 - i, TReadAhead::kWindow / 2));
  }
  EXPECT_TRUE(line.skipped.empty());

  TReadAhead large;
  TLoggedLine wire;
  large.Expect({"a", std::string(TReadAhead::kLongestAhead - 1, 'b'), "cc", "d"});
  large.Ask("a", wire);
  EXPECT_EQ(wire.wire.size(), 2U);

  large.Forget();
  EXPECT_FALSE(large.Ask("b", wire));
  EXPECT_TRUE(wire.skipped.empty());
}

}  // namespace
}  // namespace velmora
