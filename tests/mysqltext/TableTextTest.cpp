// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqltext/TableText.h"

#include <gmock/gmock.h>

#include "mysqltext/ColumnType.h"
#include "mysqltext/KeyText.h"
#include "support/CaseFile.h"
#include "support/MessageOf.h"
#include "util/Text.h"

namespace velmora {
namespace {

using ::testing::ElementsAre;
using testing::MessageOf;

TElement FirstElement(const std::string& text) { return ReadTableText("create table t (" + text + ")").elements.at(0); }

std::string OptionsOf(const std::string& text) {
  std::string result;
  for (const TTableOption& option : ReadTableText("create table t (a int) " + text).options)
    result += option.name + "=" + option.value + "|";
  return result;
}

// As servers print them; those of MySQL in its published format. One holds every kind of column, key, check and option.
std::string ServerText(const std::string& name) { return Trim(testing::CaseText("server_texts/" + name + ".sql")); }

TEST(TableTextTest, GivesServersTextsBackByteForByte) {
  for (const char* name : {"mariadb_all_kinds", "mariadb_versioned", "mariadb_partitioned"}) {
    const TTableText table = ReadTableText(ServerText(name));
    std::string expected = StrReplace(ServerText(name), "`page_compressed`=", "PAGE_COMPRESSED=");
    if (const std::size_t at = expected.find("\n PARTITION BY") + 1; at > 0)
      expected = expected.substr(0, at) + StrReplace(StrReplace(expected.substr(at), "\n", " "), "  ", " ");
    EXPECT_EQ(CreationTextOf(table), expected);
  }
}

TEST(TableTextTest, ReadsItsOwnTextAlikeWithEitherLineEnd) {
  for (const char* name : {"mariadb_all_kinds", "mariadb_versioned", "mariadb_partitioned", "mysql5", "mysql8"}) {
    const TTableText table = ReadTableText(ServerText(name));
    const std::string written = CreationTextOf(table);
    EXPECT_EQ(CreationTextOf(ReadTableText(written)), written);
    EXPECT_EQ(ReadTableText(StrReplace(written, "\n", "\r\n") + ";\r\n").elements.size(), table.elements.size());
  }
}

TEST(TableTextTest, FindsKindsAndNames) {
  const TTableText table = ReadTableText(ServerText("mariadb_all_kinds"));
  EXPECT_EQ(table.name, "t");
  EXPECT_EQ(table.elements.size(), 31U);
  ASSERT_NE(table.Find(EElement::Column, "ORDER, BY`S"), nullptr);
  EXPECT_EQ(table.Find(EElement::Column, "order, by`s")->text.Str(), "`order, by``s` double DEFAULT 10000000000");
  EXPECT_EQ(table.Find(EElement::Check, "c`x")->text.Str(), "CONSTRAINT `c``x` CHECK (`f` < 5 and `b` like 'a\\\\_%')");
  EXPECT_EQ(table.Find(EElement::Check, "C`X"), nullptr);
  EXPECT_EQ(CreationTextOf(table, true).find("REFERENCES"), std::string::npos);

  const TTableText mysql = ReadTableText(ServerText("mysql8"));
  EXPECT_EQ(mysql.Find(EElement::Column, "x")->text.Str(), "`x` int DEFAULT NULL /*!80023 INVISIBLE */");
  EXPECT_EQ(mysql.Find(EElement::Check, "e_chk_1")->text.Str(),
            "CONSTRAINT `e_chk_1` CHECK ((`x` > 0)) /*!80016 NOT ENFORCED */");
  EXPECT_EQ(mysql.FindOption("TABLESPACE")->value, "`ts`");
  EXPECT_EQ(mysql.FindOption("ENCRYPTION")->value, "'Y'");
  EXPECT_NE(mysql.FindOption("START TRANSACTION"), nullptr);
  EXPECT_TRUE(ReadTableText(ServerText("mariadb_versioned")).system_versioned);
  EXPECT_EQ(ReadTableText(ServerText("mysql5")).partitioning,
            "PARTITION BY RANGE COLUMNS(id) (PARTITION p0 VALUES LESS THAN (10) ENGINE = InnoDB, PARTITION p1 VALUES "
            "LESS THAN (MAXVALUE) ENGINE = InnoDB)");
}

TEST(TableTextTest, TellsElementsByTheirFirstWords) {
  constexpr const char* kKinds[] = {"column",      "primary key", "unique key", "key",    "fulltext key",
                                    "spatial key", "foreign key", "check",      "period", "other"};
  for (const TStringList& row : testing::CaseRows("mysqltext/elements.txt")) {
    const TElement element = FirstElement(row[0]);
    const std::string kind = kKinds[static_cast<std::size_t>(element.kind)];
    EXPECT_EQ(element.name.empty() ? kind : kind + ": " + element.name, row.at(1)) << row[0];
    EXPECT_EQ(element.text.Str(), row[0]);
  }
}

TEST(TableTextTest, ReadsColumnsOfKeys) {
  EXPECT_THAT(KeyColumns(FirstElement("key k using btree (`a b`(10), c desc, (lower(`d`)), `x``y` asc)")),
              ElementsAre("a b", "c", "", "x`y"));
  EXPECT_THAT(KeyColumns(FirstElement("unique key (`id`,`app` WITHOUT OVERLAPS)")), ElementsAre("id"));
  const TForeignKeyParts parts =
      FirstElement("constraint f foreign key i (a, `b c`) references `d``b` . `p q` (x, y) match full")
          .text.ForeignKey();
  EXPECT_THAT(parts.columns, ElementsAre("a", "b c"));
  EXPECT_EQ(parts.database, "d`b");
  EXPECT_EQ(parts.table, "p q");
  EXPECT_THAT(parts.references, ElementsAre("x", "y"));
  EXPECT_EQ(FirstElement("foreign key (a) references p (x)").text.ForeignKey().database, "");
}

TEST(TableTextTest, ReadsHeadsOfDumps) {
  const TTableText table = ReadTableText("-- dump\ncreate or replace temporary table if not exists d.`t``1` (a int);");
  EXPECT_EQ(table.name, "t`1");
  EXPECT_TRUE(table.temporary);
  const TTableText ansi = ReadTableText("CREATE TABLE \"m`1\" (\n \"a\"\"b\" int,\n KEY \"k\" (\"a\"\"b\"))");
  EXPECT_EQ(CreationTextOf(ansi), "CREATE TABLE `m``1` (\n  `a\"b` int,\n  KEY `k` (`a\"b`)\n)");
  EXPECT_EQ(ReadTableText("create table t (a int default \"x\")").elements[0].text.Str(), "a int default \"x\"");
}

TEST(TableTextTest, ReadsOptions) {
  const std::pair<const char*, const char*> cases[] = {
      {"ENGINE=InnoDB default character set = utf8 collate utf8_bin",
       "ENGINE=InnoDB|DEFAULT CHARSET=utf8|COLLATE=utf8_bin|"},
      {"type = MyISAM, charset latin1, comment 'a, b=''c'''",
       "ENGINE=MyISAM|DEFAULT CHARSET=latin1|COMMENT='a, b=''c'''|"},
      {"data directory='/d' INDEX DIRECTORY '/i' union = (`a`,b)",
       "DATA DIRECTORY='/d'|INDEX DIRECTORY='/i'|UNION=(`a`,b)|"},
      {"pack_keys=default tablespace `ts` storage disk autoextend_size=4M",
       "PACK_KEYS=default|TABLESPACE=`ts`|STORAGE=disk|AUTOEXTEND_SIZE=4M|"},
      {"`page_compressed`='1' `my``x`=-1", "PAGE_COMPRESSED='1'|`MY``X`=-1|"},
  };
  for (const auto& [text, options] : cases) EXPECT_EQ(OptionsOf(text), options);
}

TEST(TableTextTest, SaysWhereAndWhatWasExpected) {
  for (const TStringList& row : testing::CaseRows("mysqltext/refused.txt"))
    EXPECT_EQ(MessageOf([&] { ReadTableText(testing::Unshown(row[0])); }), row.at(1)) << row[0];
  EXPECT_EQ(MessageOf([] { ReadTableText(""); }), "line 1: \"create\" expected, but the end found");
}

TEST(TableTextTest, TakesColumnsApart) {
  const TTableText table = ReadTableText(ServerText("mariadb_all_kinds"));
  const auto column = [&](const char* name) { return ReadColumnText(table.Find(EElement::Column, name)->text, table); };
  EXPECT_THAT(column("n").arguments, ElementsAre("a,b", "c'd", "e\\f", "("));
  EXPECT_EQ(column("n").charset, (TCharset{"latin1", "latin1_swedish_ci"}));
  EXPECT_EQ(column("b").charset, (TCharset{"latin1", "latin1_bin"}));
  EXPECT_EQ(column("Total").charset, TCharset());
  EXPECT_TRUE(column("Total").not_null);
  EXPECT_EQ(column("m").generated, "`Total` + 1");
  EXPECT_TRUE(column("m").stored && column("m").invisible && !column("m").not_null);
  EXPECT_TRUE(column("f").is_unsigned && column("f").zerofill && column("f").IsNumber());
  EXPECT_EQ(column("h").default_text, "-4.50");
  EXPECT_EQ(column("h").Length(), 5);
  EXPECT_EQ(column("h").Fraction(), 2);
  EXPECT_EQ(column("d").Fraction(), 6);
  EXPECT_EQ(column("z").default_text, "(curdate() + interval 1 day)");
  EXPECT_EQ(column("i").default_text, "concat('a',')b')");
  EXPECT_EQ(column("w").Length(), 11);
  EXPECT_EQ(column("o").default_text, "uuid()");

  const auto of = [](const char* text) {
    return ReadColumnText(FirstElement(text).text, ReadTableText("create table t (a int)"));
  };
  EXPECT_EQ(of("a double precision unsigned").type, "double");
  EXPECT_EQ(of("a character varying(3)").type, "varchar");
  EXPECT_EQ(of("a boolean").Length(), 1);
  EXPECT_EQ(of("a int references p (b) on update cascade on delete set null not null").default_text, std::nullopt);
  EXPECT_TRUE(of("a int references p (b) on update cascade on delete set null not null").not_null);
  EXPECT_EQ(of("a date default date'2020-01-01' comment 'x'").default_text, "date'2020-01-01'");
  EXPECT_EQ(of("a int default (1)").charset, TCharset());
}

}  // namespace
}  // namespace velmora
