// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/TnsNames.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "support/MessageOf.h"
#include "support/ScratchFolder.h"
#include "util/Files.h"

namespace velmora {
namespace {

using testing::MessageOf;

TEST(TnsNamesTest, NamesStandOutsideParenthesesQuotesAndComments) {
  using namespace std::string_view_literals;
  const struct {
    std::string_view text;
    TStringList names;
  } kCases[] = {
      {"", {}},
      {"ORCL = (DESCRIPTION = (HOST = db1)(PORT = 1521))\r\nTEST.WORLD=(X)\n", {"ORCL", "TEST.WORLD"}},
      {"a, b = (x)", {"a", "b"}},
      {"9i_-.#$x=(y)z", {"9i_-.#$x", "z"}},
      {"_a -b .c", {"a", "b", "c"}},  // a name begins with a letter or digit
      {"same same", {"same", "same"}},
      {"last", {"last"}},
      {"a # b ( ' c\nd", {"a", "d"}},
      {"# a\rb", {"b"}},
      {"# it's\nb", {"b"}},
      {"a#b", {"a#b"}},  // within a name it begins no comment
      {"a 'b (# c\nd' e", {"a", "e"}},
      {"a'b", {"a"}},
      {"a (b # c)\n) d", {"a", "d"}},
      {"a (b 'c)' ) d", {"a", "d"}},
      {"a ((b) c", {"a"}},
      {"a ) b", {"a"}},
      {"a (b)) c", {"a"}},
      {"a ') b' c", {"a", "c"}},
      {"a\0b"sv, {"a"}},
      {"\xC5\xA1"
       "a=\"b\"",
       {"a", "b"}},
  };
  for (const auto& c : kCases) EXPECT_EQ(TnsNames(c.text), c.names) << c.text;
}

TEST(TnsNamesTest, TheFileIsFoundByTheHomeOfTheClient) {
  const testing::TScratchFolder folder;
  const std::string machine = folder / "machine.values";
  const auto services = [&] { return OracleServices(machine); };
  EXPECT_EQ(MessageOf([&] { services(); }), "ReadRegStringHKLM - ne postoji key");

  WriteFileText(machine, "[\\SOFTWARE\\ORACLE\\HOME0]\nOTHER=\"x\"\n");
  EXPECT_EQ(services(), TStringList());

  WriteFileText(machine, "[\\SOFTWARE\\ORACLE\\HOME0]\nORACLE_HOME=\"" + folder.Path() + "\"\n");
  const std::string file = folder / "network/admin/tnsnames.ora";
  EXPECT_EQ(MessageOf([&] { services(); }), "Cannot read " + file + ": No such file or directory");

  std::filesystem::create_directories(folder / "network/admin");
  WriteFileText(file, "\xEF\xBB\xBFONE=(A=1)\nTWO=(B=2)\n");
  EXPECT_EQ(services(), TStringList({"ONE", "TWO"}));
}

}  // namespace
}  // namespace velmora
