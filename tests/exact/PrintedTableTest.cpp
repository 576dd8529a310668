// SPDX-License-Identifier: GPL-3.0-or-later

// Texts in which servers have mistaken themselves.

#include "exact/compare/PrintedTable.h"

#include <gtest/gtest.h>

#include "support/MessageOf.h"

namespace velmora::testing {
namespace {

TEST(PrintedTable, IsRefusedWhereItSaysSomethingElseThanTheTableHas) {
  struct TCase {
    std::string body;
    std::string told;
  };
  using namespace std::string_literals;
  const TCase cases[] = {
      {"`a``b` int, KEY `f` (`a``b`), CONSTRAINT `f` FOREIGN KEY (`a``b`) REFERENCES `t` (`a``b`)", "nothing raised"},
      {"`a` varchar(9) CHARACTER SET ucs2 DEFAULT \0c\0o"s,
       "line 1: the server prints a default that nobody can read, with zero bytes"},
      {"`a``b` int, CONSTRAINT `f` FOREIGN KEY (`a`b`) REFERENCES `t` (`c`)",
       "the server prints a foreign key whose names nobody can read: line 1: unclosed back quote"},
      {"`a``, ``b` int, CONSTRAINT `f` FOREIGN KEY (`a`, `b`) REFERENCES `t` (`c`)",
       "the server prints a foreign key whose names nobody can read: column a of foreign key f is none of the table"},
      {"`a``b` int, CONSTRAINT `f` FOREIGN KEY (`a``b`) REFERENCES `t` (`a`b`c`)",
       "the server prints a foreign key whose names nobody can read: foreign key f has other columns than it refers "
       "to"}};
  for (const TCase& c : cases)
    EXPECT_EQ(MessageOf([&] { ReadPrintedTable("CREATE TABLE `t` (" + c.body + ") ENGINE=InnoDB"); }), c.told);
}

TEST(PrintedTable, HasPrefixesOfShapesInKeys) {
  const TTableText table = ReadPrintedTable(
      "CREATE TABLE `t` (`a` int, `b` linestring NOT NULL, UNIQUE KEY `k` (`a`,`b`), UNIQUE KEY `h` (`b`(8)) USING "
      "HASH, "
      "SPATIAL KEY `s` (`b`))");
  EXPECT_EQ(table.Find(EElement::UniqueKey, "k")->text.Str(), "UNIQUE KEY `k` (`a`,`b`(4))");
  EXPECT_EQ(table.Find(EElement::UniqueKey, "h")->text.Str(), "UNIQUE KEY `h` (`b`(8)) USING HASH");
  EXPECT_EQ(table.Find(EElement::SpatialKey, "s")->text.Str(), "SPATIAL KEY `s` (`b`)");
}

}  // namespace
}  // namespace velmora::testing
