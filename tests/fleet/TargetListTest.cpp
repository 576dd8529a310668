// SPDX-License-Identifier: GPL-3.0-or-later
#include "fleet/TargetList.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "fleet/FleetTargets.h"
#include "support/MessageOf.h"
#include "support/ScratchFolder.h"
#include "util/Errors.h"
#include "util/Files.h"

namespace velmora {
namespace {

using ::testing::HasSubstr;
using testing::MessageOf;
using ::testing::Not;

TEST(NamePattern, StandsForNames) {
  const struct {
    const char* pattern;
    const char* fits;
    const char* does_not;
  } cases[] = {
      {"tenant_*", "tenant_", "tenantx1"},  // an underscore is one
      {"*_eu", "a_eu_eu", "a_eu1"},
      {"a*b*c", "axxbyybc", "axxbyyb"},
      {"shard_??", "shard_07", "shard_7"},
      {"?", "\xC3\xA4", "ab"},  // one letter, whatever its bytes
      {"*", "any", nullptr},
      {"100%25*", "100%x", "100x"},
      {"%2A*", "*shop", "shop"},
      {"Shop*", "Shop1", "shop1"},
  };
  for (const auto& c : cases) {
    const TNamePattern pattern(c.pattern);
    EXPECT_TRUE(pattern.Any()) << c.pattern;
    EXPECT_TRUE(pattern.Matches(c.fits)) << c.pattern;
    if (c.does_not != nullptr) EXPECT_FALSE(pattern.Matches(c.does_not)) << c.pattern;
  }
  EXPECT_FALSE(TNamePattern("plain%2A").Any());
  EXPECT_TRUE(TNamePattern(PercentEncoded("a b%*\xC3\xA4")).Matches("a b%*\xC3\xA4"));
}

class TargetListTest : public ::testing::Test {
 protected:
  std::string File(const std::string& text) {
    WriteFileText(folder_ / "list", text, false, 0600);
    return folder_ / "list";
  }
  testing::TScratchFolder folder_;
};

TEST_F(TargetListTest, HoldsASourceALine) {
  const auto list = ReadTargetList(
      File("\xEF\xBB\xBF# all\r\n\r\n  mysql://u:p@h@s:3307/tenant_*  \r\nold.sql\nmysql://u@h/a%2Ab"), {});
  ASSERT_EQ(list.size(), 3U);
  EXPECT_EQ(list[0].line, 3U);
  EXPECT_EQ(list[0].source, "mysql://u:p@h@s:3307/");
  EXPECT_EQ(list[0].shown, "mysql://u:***@s:3307/tenant_*");
  EXPECT_TRUE(list[0].pattern.Matches("tenant_1"));
  EXPECT_EQ(list[1].source, "old.sql");
  EXPECT_FALSE(list[2].pattern.Any());
  EXPECT_FALSE(ShowsPasswords(folder_ / "list", list));
  chmod((folder_ / "list").c_str(), 0644);
  EXPECT_TRUE(ShowsPasswords(folder_ / "list", list));
}

TEST_F(TargetListTest, NamesTheLineThatIsNone) {
  const struct {
    std::string text;
    const char* told;
  } cases[] = {
      {"a.sql\nnowhere", ": line 2: \"nowhere\" is no source"},
      {"mysql://u@h", ": line 1: The database is missing"},
      {"mysql://u@h*/shop", ": line 1: a * or ? may stand in the name of the database alone"},
      {"mysql://u@h/shop_%zz*", ": line 1: A \"%\" must be followed"},
      {"mysql://u:secret@h:0/shop", ": line 1: \"0\" is no port"},
      {"Paradox:folder=.", ": line 1: Paradox cannot be a target"},
      {"a.sql\n" + std::string("x\0.sql", 6), ": line 2: this is no text"},
      {std::string(10000, 'x') + ".sql", ": line 1: no source is as long as this line"},
      {"-", ": line 1: a list names no standard input"},
      {"# nothing\n\n", "lists no target"},
  };
  for (const auto& c : cases) {
    const std::string message = MessageOf([&] { ReadTargetList(File(c.text), {}); });
    EXPECT_THAT(message, HasSubstr(c.told));
    EXPECT_THAT(message, HasSubstr(folder_ / "list"));
    EXPECT_THAT(message, Not(HasSubstr("secret")));
  }
  EXPECT_THAT(MessageOf([&] { ReadTargetList(folder_.Path(), {}); }), HasSubstr("it is a folder"));
  EXPECT_THAT(MessageOf([&] { ReadTargetList(folder_ / "none", {}); }), HasSubstr("No such file"));
  mkfifo((folder_ / "pipe").c_str(), 0600);
  EXPECT_THAT(MessageOf([&] { ReadTargetList(folder_ / "pipe", {}); }), HasSubstr("it is no regular file"));
}

// Whatever others there are, a target stays in its share.
TEST_F(TargetListTest, SharesTakeEachTargetOnce) {
  constexpr std::size_t kShares = 7;
  std::size_t taken[kShares] = {};
  for (int i = 0; i < 1000; ++i)
    for (std::size_t share = 1; share <= kShares; ++share)
      if (TFleetSlice{share, kShares}.Takes("db.tenant_" + std::to_string(i))) ++taken[share - 1];
  std::size_t all = 0;
  for (const std::size_t count : taken) {
    EXPECT_GT(count, 100U);
    all += count;
  }
  EXPECT_EQ(all, 1000U);
  EXPECT_EQ(ReadSlice("2/8").number, 2U);
  for (const char* none : {"0/3", "4/3", "1", "a/b", "1/0", "/", "1/2/3"})
    EXPECT_THAT(MessageOf([&] { ReadSlice(none); }), HasSubstr("is no share")) << none;
}

TEST_F(TargetListTest, WhatIsThereTwiceIsTakenOnce) {
  const std::string path =
      File("mysql://u:@h/a\nmysql://v:@H:3306/a\nb.sql\nb.sql\nmysql://u:@h:3307/a\nmysql://u:@h/ref");
  TLanes lanes(4);
  const TFleetTargets found = ExpandTargets(path, ReadTargetList(path, {}), {}, {"h:3306", "ref"}, {}, lanes);
  ASSERT_EQ(found.targets.size(), 3U);
  EXPECT_EQ(found.targets[2].name, "h:3307.a");
  EXPECT_NE(found.targets[0].lane, found.targets[2].lane);
  EXPECT_THAT(found.notes, ::testing::ElementsAre(HasSubstr("line 2: H.a is listed in line 1 already"),
                                                  HasSubstr("line 4: b.sql is listed in line 3 already"),
                                                  HasSubstr("line 6: h.ref is the reference")));
}

}  // namespace
}  // namespace velmora
