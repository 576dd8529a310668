#include <gtest/gtest.h>

#include <string>

#include "exact/compare/Changes.h"
#include "exact/compare/Safety.h"

namespace velmora {
namespace {

constexpr char kUtf8[] = " DEFAULT CHARSET=utf8mb4";

std::string Reason(const std::string& from, const std::string& to) {
  const auto target = ReadTableText("CREATE TABLE `t` (`c` " + from + ")" + kUtf8);
  const auto reference = ReadTableText("CREATE TABLE `t` (`c` " + to + ")" + kUtf8);
  return UnsafeColumnChange(target.elements[0], target, reference.elements[0], reference);
}

struct TStep {
  const char* from;
  const char* to;
};

TEST(SafetyTest, WhatKeepsEveryValueIsSafe) {
  const TStep steps[] = {
      {"int(11)", "int"},
      {"int", "bigint"},
      {"int unsigned", "bigint"},
      {"tinyint(3) unsigned zerofill", "smallint"},
      {"int", "decimal(10,0)"},
      {"int", "double"},
      {"smallint", "float"},
      {"int", "varchar(11)"},
      {"decimal(5,2)", "decimal(7,3)"},
      {"decimal(9,0)", "int"},
      {"decimal(5,2) unsigned", "decimal(5,2)"},
      {"float", "double"},
      {"float(7,4)", "double(16,4)"},
      {"bit(3)", "bit(9)"},
      {"year(4)", "smallint"},
      {"varchar(9)", "varchar(10)"},
      {"char(9)", "varchar(9)"},
      {"varchar(255)", "text"},
      {"text", "mediumtext"},
      {"varchar(9) CHARACTER SET latin1", "varchar(9)"},
      {"text CHARACTER SET utf8mb3", "text"},
      {"varchar(9) CHARACTER SET ascii", "varchar(9) CHARACTER SET latin1"},
      {"varchar(9)", "varchar(9) COLLATE utf8mb4_bin"},
      {"binary(4)", "varbinary(4)"},
      {"varbinary(9)", "blob"},
      {"enum('a','b')", "enum('x','a','y','b','z')"},
      {"enum('long','b')", "varchar(4)"},
      {"set('a','b')", "set('a','b','c')"},
      {"date", "datetime"},
      {"datetime(3)", "datetime(6)"},
      {"timestamp NULL", "datetime"},
      {"datetime(3)", "varchar(23)"},
      {"point", "geometry"},
      {"int NOT NULL", "int"},
      {"int DEFAULT 1", "int DEFAULT 2"},
      {"int GENERATED ALWAYS AS (1) STORED", "tinyint GENERATED ALWAYS AS (2) VIRTUAL"},
      {"int GENERATED ALWAYS AS (1) STORED", "int"},
  };
  for (const auto& step : steps) EXPECT_EQ(Reason(step.from, step.to), "") << step.from << " to " << step.to;
}

TEST(SafetyTest, WhatMayLoseIsUnsafeWithItsReason) {
  const struct {
    const char* from;
    const char* to;
    const char* reason;
  } cases[] = {
      {"bigint", "int", "bigint to int: values may be out of range"},
      {"int", "int unsigned", "int to int unsigned: values may be out of range"},
      {"int unsigned", "int", "int unsigned to int: values may be out of range"},
      {"int", "decimal(9,0)", "int to decimal(9,0): values may be out of range"},
      {"decimal(10,0)", "int", "decimal(10,0) to int: values may be out of range"},
      {"decimal(9,1)", "int", "decimal(9,1) to int: digits may be lost"},
      {"decimal(5,2)", "decimal(6,1)", "decimal(5,2) to decimal(6,1): digits may be lost"},
      {"decimal(5,2)", "decimal(5,3)", "decimal(5,2) to decimal(5,3): values may be out of range"},
      {"bigint", "double", "bigint to double: digits may be lost"},
      {"double", "float", "double to float: digits may be lost"},
      {"mediumint", "float", "mediumint to float: digits may be lost"},
      {"float", "float(7,4)", "float to float(7,4): digits may be lost"},
      {"int", "uuid", "int to uuid: values are not kept"},
      {"double", "decimal(20,5)", "double to decimal(20,5): values may change"},
      {"bit(9)", "bit(8)", "bit(9) to bit(8): longer values do not fit"},
      {"varchar(10)", "varchar(9)", "varchar(10) to varchar(9): longer values do not fit"},
      {"varchar(9)", "char(9)", "varchar(9) to char(9): trailing blanks are lost"},
      {"varchar(64)", "tinytext", "varchar(64) to tinytext: longer values do not fit"},
      {"mediumtext", "text", "mediumtext to text: longer values do not fit"},
      {"text CHARACTER SET latin1", "text", "text to text: longer values do not fit"},
      {"varchar(9)", "varchar(9) CHARACTER SET latin1", "utf8mb4 to latin1: letters may be lost"},
      {"varchar(9)", "varchar(8) CHARACTER SET utf8mb3",
       "varchar(9) to varchar(8): longer values do not fit; utf8mb4 to utf8mb3: letters may be lost"},
      {"varchar(9)", "varbinary(36)", "varchar(9) to varbinary(36): values may change"},
      {"int", "varchar(10)", "int to varchar(10): longer values do not fit"},
      {"binary(4)", "binary(5)", "binary(4) to binary(5): values are filled up with zero bytes"},
      {"varbinary(5)", "binary(5)", "varbinary(5) to binary(5): values are filled up with zero bytes"},
      {"longblob", "blob", "longblob to blob: longer values do not fit"},
      {"enum('a','b')", "enum('b','a')", "enum to enum: members are taken away or change their order"},
      {"set('a','b')", "set('a')", "set to set: members are taken away or change their order"},
      {"varchar(1)", "enum('a')", "varchar(1) to enum: values may change"},
      {"datetime(3)", "datetime", "datetime(3) to datetime: fractions of seconds are lost"},
      {"datetime", "timestamp NULL", "datetime to timestamp: values may be out of range"},
      {"datetime", "date", "datetime to date: values may change"},
      {"geometry", "point", "geometry to point: values may change"},
      {"int", "int NOT NULL", "NULL is no longer allowed"},
      {"int NOT NULL", "int NOT NULL AUTO_INCREMENT", "rows with 0 are numbered anew"},
      {"int", "int GENERATED ALWAYS AS (1) STORED", "its values are replaced by computed ones"},
      {"int GENERATED ALWAYS AS (1) VIRTUAL", "int", "its computed values are not kept"},
  };
  for (const auto& c : cases) EXPECT_EQ(Reason(c.from, c.to), c.reason) << c.from << " to " << c.to;
}

TEST(SafetyTest, KeysColumnsAndOptions) {
  const struct {
    const char* name;
    const char* reference;
    const char* target;
    const char* reason;
  } cases[] = {
      {"unique key dropped", "`a` int)", "`a` int, UNIQUE KEY `k` (`a`))", "equal rows may enter from then on"},
      {"plain key dropped", "`a` int)", "`a` int, KEY `k` (`a`))", ""},
      {"primary key dropped", "`a` int)", "`a` int, PRIMARY KEY (`a`))", "equal rows may enter from then on"},
      {"unique no more", "`a` int, KEY `k` (`a`))", "`a` int, UNIQUE KEY `k` (`a`))",
       "equal rows may enter from then on"},
      {"looser", "`a` int, UNIQUE KEY `k` (`a`,`b`))", "`a` int, UNIQUE KEY `k` (`a`))",
       "equal rows may enter from then on"},
      {"stricter", "`a` int, UNIQUE KEY `k` (`b`))", "`a` int, UNIQUE KEY `k` (`a`,`b`))", ""},
      {"longer prefix", "`a` int, UNIQUE KEY `k` (`a`(9)))", "`a` int, UNIQUE KEY `k` (`a`(8)))",
       "equal rows may enter from then on"},
      {"shorter prefix", "`a` int, UNIQUE KEY `k` (`a`(8) DESC))", "`a` int, UNIQUE KEY `k` (`a`))", ""},
      {"new key, check, foreign key",
       "`a` int, UNIQUE KEY `k` (`a`), CONSTRAINT `c` CHECK (`a` > 1), CONSTRAINT `f` FOREIGN KEY (`a`) REFERENCES `p` "
       "(`a`))",
       "`a` int)", ""},
      {"column dropped", "`a` int)", "`a` int, `b` int)", "the column is dropped with its values"},
      {"new column", "`a` int, `b` int NOT NULL)", "`a` int)", ""},
      {"engine without rows", "`a` int) ENGINE=BLACKHOLE", "`a` int) ENGINE=InnoDB", "the engine keeps no rows"},
      {"a letter that may not have been printed, in a default", "`a` int, `b` varchar(9) DEFAULT '?') CHARSET=utf8mb4",
       "`a` int)", "a ? in its default may stand for a letter that the server does not print"},
      {"in members, of a column that moves", "`b` enum('?'), `a` int) CHARSET=utf8mb4",
       "`a` int, `b` enum('?')) CHARSET=utf8mb4",
       "a ? in its members may stand for a letter that the server does not print"},
      {"one that is what it looks like",
       "`a` int, `b` char(9) DEFAULT '?' CHARACTER SET latin1, `c` text DEFAULT '?', `d` int COMMENT '?', "
       "`e` varchar(9) DEFAULT concat('?'), `f` varchar(9) CHARACTER SET utf8mb3 DEFAULT '?') CHARSET=utf8mb4",
       "`a` int)", ""},
      {"other engine", "`a` int) ENGINE=MyISAM", "`a` int) ENGINE=InnoDB", ""},
      {"fewer partitions", "`a` int) PARTITION BY HASH (`a`) PARTITIONS 2",
       "`a` int) PARTITION BY HASH (`a`) PARTITIONS 3", ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    TEquivalenceUse use;
    const auto changes = CompareTableTexts(ReadTableText("CREATE TABLE `t` (" + std::string(c.reference)),
                                           ReadTableText("CREATE TABLE `t` (" + std::string(c.target)), use);
    ASSERT_FALSE(changes.empty());
    for (const auto& change : changes) EXPECT_EQ(change.unsafe, c.reason);
  }
}

TEST(SafetyTest, AKeyThatAForeignKeyNeedsIsUnsafeToDrop) {
  constexpr char kForeign[] = ", CONSTRAINT `f` FOREIGN KEY (`c`) REFERENCES `p` (`id`))";
  const auto reason = [&](const std::string& there, const std::string& wanted) {
    const auto target = ReadTableText("CREATE TABLE `t` (`c` int, `d` int" + there);
    const auto reference = ReadTableText("CREATE TABLE `t` (`c` int, `d` int" + wanted);
    TEquivalenceUse use;
    for (const TChange& change : CompareTableTexts(reference, target, use))
      if (change.action == saDropKey) return change.unsafe;
    return std::string("no key is dropped");
  };
  EXPECT_EQ(reason(std::string(", KEY `c` (`c`)") + kForeign, kForeign), "foreign key f needs it");
  EXPECT_EQ(reason(std::string(", KEY `c` (`c`), KEY `e` (`c`,`d`)") + kForeign,
                   std::string(", KEY `e` (`c`,`d`)") + kForeign),
            "");
  EXPECT_EQ(reason(std::string(", KEY `c` (`c`)") + kForeign, ")"), "");
}

}  // namespace
}  // namespace velmora
