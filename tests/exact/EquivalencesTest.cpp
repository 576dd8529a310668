#include "exact/compare/Equivalences.h"
#include "exact/compare/OptionEquivalences.h"

#include <gmock/gmock.h>

#include "util/Text.h"

namespace velmora {
namespace {

constexpr const char* kLatin = "engine=InnoDB default charset=latin1 collate=latin1_swedish_ci";
constexpr EEquivalence kNone = EEquivalence::kCount;

TTableText Table(const std::string& element, const std::string& options = kLatin) {
  return ReadTableText("create table t (" + element + ") " + options);
}

bool Same(const TTableText& a, const TTableText& b, TEquivalenceUse& use) {
  return TElementComparison(a, b, use).Same(a.elements.at(0), b.elements.at(0));
}

int Total(const TEquivalenceUse& use) {
  int result = 0;
  for (int i = 0; i < kEquivalenceCount; ++i) result += use.Count(static_cast<EEquivalence>(i));
  return result;
}

struct TCase {
  const char* a;
  const char* b;
  EEquivalence by = kNone;  // kNone: same without any
  const char* options_a = kLatin;
  const char* options_b = kLatin;
};

// The two are equal by exactly this equivalence: counted once, and different without it.
void ExpectSame(const TCase& c) {
  SCOPED_TRACE(std::string(c.a) + " | " + c.b + " | " + c.options_a + " | " + c.options_b);
  const TTableText a = Table(c.a, c.options_a);
  const TTableText b = Table(c.b, c.options_b);
  TEquivalenceUse use;
  EXPECT_TRUE(Same(a, b, use));
  EXPECT_EQ(Total(use), c.by == kNone ? 0 : 1);
  if (c.by == kNone) return;
  EXPECT_EQ(use.Count(c.by), 1);
  use.ResetCounts();
  use.Switch(c.by, false);
  EXPECT_FALSE(Same(b, a, use));
  EXPECT_EQ(Total(use), 0);
}

void ExpectDifferent(const TCase& c) {
  TEquivalenceUse use;
  EXPECT_FALSE(Same(Table(c.a, c.options_a), Table(c.b, c.options_b), use)) << c.a << " | " << c.b;
  EXPECT_EQ(Total(use), 0);
}

TEST(EquivalencesTest, SpellingNeverCounts) {
  const TCase cases[] = {
      {"`a` INT NOT NULL", "a  int\nnot null"},
      {"`a` int DEFAULT NULL", "a int null"},
      {"a text", "a text default null"},
      {"a timestamp null default null", "a timestamp null"},
      {"a varchar(3) comment 'x''y' not null", "a varchar(3) not null comment \"x'y\""},
      {"a integer", "a int"},
      {"a decimal(10,0)", "a numeric"},
      {"a char", "a char(1)"},
      {"a datetime(0)", "a datetime"},
      {"a bool", "a tinyint(1)"},
      {"a int comment ''", "a int visible"},
      {"a int generated always as (`b` + 1) persistent", "a int AS ((B + 1)) stored"},
      {"a int as (b)", "a int generated always as (b) virtual"},
      {"a char(36) default (uuid())", "a char(36) default uuid()"},
      {"a int check (`b` > 0)", "a int check ((b > 0))"},
      {"a enum('\xF0\x9F\x98\x80','b') default '\xF0\x9F\x98\x80x' comment '-\xF0\x9F\x98\x81'",
       "a enum('?','b') default '?x' comment '-?'"},
      {"a int /*!80023 INVISIBLE */", "a int invisible"},
      {"a varchar(3) character set utf8", "a varchar(3) charset utf8mb3"},
      {"unique index `k` (A asc, b(3))", "unique k (`a`, `b`(3))"},
      {"key k (a) comment 'x' key_block_size=4 visible", "index k (a) KEY_BLOCK_SIZE 4 COMMENT 'x'"},
      {"key k using hash (a)", "key k (a) USING HASH"},
      {"key k (a)", "key (a)"},
      {"fulltext k (a) with parser `p`", "fulltext key k (a) /*!50100 WITH PARSER p */"},
      {"constraint x foreign key (A) references `p` (b) on update cascade on delete set null",
       "constraint x foreign key i (a) references p (B) on delete set null on update cascade"},
      {"foreign key (a) references p (b)", "constraint x foreign key (a) references p (b)"},
      {"constraint c check (a > 'x')", "check ((`a` > 'x')) enforced"},
  };
  for (const TCase& c : cases) ExpectSame(c);
}

TEST(EquivalencesTest, EachMakesItsOwnCasesEqualAndNothingElseDoes) {
  constexpr const char* kBin = "default charset=utf8mb4 collate=utf8mb4_bin";
  const TCase cases[] = {
      {"a int(11)", "a int", EEquivalence::DisplayWidth},
      {"a bigint(20) unsigned not null", "a bigint unsigned not null", EEquivalence::DisplayWidth},
      {"a year(4)", "a year", EEquivalence::DisplayWidth},
      {"a int default '0'", "a int default 0", EEquivalence::QuotedNumber},
      {"a decimal(5,2) default '-1.50'", "a decimal(5,2) default -1.50", EEquivalence::QuotedNumber},
      {"a timestamp null default CURRENT_TIMESTAMP", "a timestamp null default current_timestamp()",
       EEquivalence::CurrentTimestamp},
      {"a datetime(6) on update now(6)", "a datetime(6) on update localtime(6)", EEquivalence::CurrentTimestamp},
      {"key k (a) using btree", "key k (a)", EEquivalence::UsingBtree},
      {"primary key using btree (a)", "primary key (a)", EEquivalence::UsingBtree},
      {"foreign key (a) references p (b) on delete restrict", "foreign key (a) references p (b)",
       EEquivalence::NoAction},
      {"foreign key (a) references p (b) on delete no action on update no action",
       "foreign key (a) references p (b) on update restrict", EEquivalence::NoAction},
      {"a varchar(3) character set latin1", "a varchar(3)", EEquivalence::InheritedCharset},
      {"a enum('x') collate latin1_swedish_ci", "a enum('x')", EEquivalence::InheritedCharset},
      {"a text character set latin2", "a text character set latin2 collate latin2_general_ci",
       EEquivalence::InheritedCharset},
      {"a text collate utf8mb4_bin", "a text", EEquivalence::InheritedCharset, kLatin, kBin},
      {"a text", "a text character set utf8mb4 collate utf8mb4_bin", EEquivalence::InheritedCharset, kBin, kLatin},
      {"a text character set utf8mb4", "a text character set utf8mb4 collate utf8mb4_0900_ai_ci",
       EEquivalence::InheritedCharset},
      {"a text", "a text character set latin1", EEquivalence::InheritedCharset, "", kLatin},
  };
  for (const TCase& c : cases) ExpectSame(c);
}

TEST(EquivalencesTest, WhatMeansSomethingElseDiffers) {
  constexpr const char* kMemory = "engine=memory";
  constexpr const char* kUtf8 = "default charset=utf8mb4 collate=utf8mb4_general_ci";
  const TCase cases[] = {
      {"a tinyint(1)", "a tinyint"},
      {"a int(5) unsigned zerofill", "a int unsigned zerofill"},
      {"a int(11)", "a int(11) unsigned"},
      {"a varchar(3)", "a varchar(4)"},
      {"a varchar(3) default '0'", "a varchar(3) default 0"},
      {"a int default '0'", "a int default '1'"},
      {"a varbinary(4) default '\xF0\x9F\x98\x80'", "a varbinary(4) default '?'"},
      {"a varchar(4) default '\xF0\x9F\x98x'", "a varchar(4) default '?x'"},
      {"a text default (concat('\xF0\x9F\x98\x80', b))", "a text default (concat('?', b))"},
      {"a int default 0", "a int"},
      {"a int not null", "a int"},
      {"a timestamp", "a timestamp null"},
      {"A int", "a int"},
      {"a enum('a','B')", "a enum('a','b')"},
      {"a int comment 'not null'", "a int comment 'NOT NULL'"},
      {"a datetime default current_timestamp", "a datetime default current_timestamp on update current_timestamp"},
      {"a datetime(6) default current_timestamp(6)", "a datetime(6) default current_timestamp(3)"},
      {"a int as (b) stored", "a int as (b) virtual"},
      {"a int invisible", "a int"},
      {"a text compressed", "a text"},
      {"a int default ((1)+(2))", "a int default (1)+(3)"},
      {"a text collate latin1_bin", "a text"},
      {"a text", "a text", kNone, kLatin, kUtf8},
      {"a text character set latin1", "a text", kNone, kLatin, "default charset=latin1 collate=latin1_bin"},
      {"a text character set utf8mb4", "a text character set utf8mb4 collate utf8mb4_bin"},
      {"a text character set latin1", "a text", kNone, "", ""},
      {"key k (a)", "unique key k (a)"},
      {"key k (a)", "key K (a)"},
      {"key k (a(3))", "key k (a)"},
      {"key k (a desc)", "key k (a)"},
      {"key k (a, b)", "key k (b, a)"},
      {"key k (a) ignored", "key k (a)"},
      {"key k (a) using btree", "key k (a)", kNone, kMemory, kMemory},
      {"key k (a)", "key k (a)", kNone, "key_block_size=8", ""},
      {"foreign key (a) references p (b) on delete cascade", "foreign key (a) references p (b)"},
      {"foreign key (a) references p (b)", "foreign key (a) references P (b)"},
      {"foreign key (a) references p (b)", "foreign key (a) references d.p (b)"},
      {"foreign key (a) references p (b) on delete cascade", "foreign key (a) references p (b) on update cascade"},
      {"constraint c check (a > 0)", "constraint d check (a > 0)"},
      {"constraint c check (a > 0) not enforced", "constraint c check (a > 0)"},
  };
  for (const TCase& c : cases) ExpectDifferent(c);
}

TEST(EquivalencesTest, SeveralTogetherAreCountedEach) {
  TEquivalenceUse use;
  EXPECT_TRUE(Same(Table("a int(11) default '0'"), Table("a int default 0"), use));
  EXPECT_EQ(use.Count(EEquivalence::DisplayWidth), 1);
  EXPECT_EQ(use.Count(EEquivalence::QuotedNumber), 1);
  // Both have a width, so that it makes nothing equal.
  EXPECT_TRUE(Same(Table("a int(11) default '0'"), Table("a int(11) default 0"), use));
  EXPECT_EQ(use.Count(EEquivalence::DisplayWidth), 1);
  EXPECT_EQ(use.Count(EEquivalence::QuotedNumber), 2);
}

struct TOptionCase {
  const char* a;
  const char* b;
  bool same;
  EEquivalence by;
  const char* to_set;  // "NAME=value|"
};

TEST(EquivalencesTest, ComparesAndSetsOptions) {
  const TOptionCase cases[] = {
      {"engine=InnoDB", "ENGINE = innodb", true, kNone, ""},
      {"auto_increment=5", "auto_increment=6", true, EEquivalence::AutoIncrement, ""},
      {"", "auto_increment=6", true, EEquivalence::AutoIncrement, ""},
      {"max_rows=1 comment='x'", "comment=\"x\" max_rows=1", true, EEquivalence::OptionOrder, ""},
      {"collate=latin1_bin", "charset=latin1 collate=latin1_bin", true, EEquivalence::InheritedCharset, ""},
      {"charset=latin1", "charset=latin1 collate=latin1_swedish_ci", true, EEquivalence::InheritedCharset, ""},
      {"charset=utf8mb4", "charset=utf8mb4 collate=utf8mb4_uca1400_ai_ci", true, EEquivalence::InheritedCharset, ""},
      {"", "charset=utf8mb4", true, EEquivalence::InheritedCharset, ""},
      {"charset=utf8 collate=utf8_bin", "charset=utf8mb3 collate=utf8mb3_bin", true, kNone, ""},
      {"row_format=default comment=''", "pack_keys=DEFAULT", true, kNone, ""},
      {"charset=utf8mb4 collate=utf8mb4_bin", "charset=utf8mb4", false, kNone,
       "DEFAULT CHARSET=utf8mb4|COLLATE=utf8mb4_bin|"},
      {"comment='a'", "comment='A'", false, kNone, "COMMENT='a'|"},
      {"engine=InnoDB", "engine=InnoDB comment='a' row_format=dynamic `page_compressed`='1'", false, kNone,
       "COMMENT=''|ROW_FORMAT=DEFAULT|PAGE_COMPRESSED=DEFAULT|"},
      {"engine=memory", "engine=aria page_checksum=1 `page_compressed`='1'", false, kNone,
       "ENGINE=memory|PAGE_CHECKSUM=DEFAULT|"},
      {"engine=aria", "engine=aria page_checksum=1", true, kNone, ""},
      {"union=(`a`)", "union=(a,b)", false, kNone, "UNION=(`a`)|"},
      {"comment=''", "comment='x' data directory='/d'", false, kNone, "COMMENT=''|"},
  };
  for (const TOptionCase& c : cases) {
    SCOPED_TRACE(std::string(c.a) + " | " + c.b);
    const TTableText a = Table("a int", c.a);
    const TTableText b = Table("a int", c.b);
    TEquivalenceUse use;
    EXPECT_EQ(SameOptions(a, b, use), c.same);
    EXPECT_EQ(Total(use), c.by == kNone ? 0 : 1);
    std::string to_set;
    for (const TTableOption& option : OptionsToSet(a, b, use)) to_set += option.name + "=" + option.value + "|";
    EXPECT_EQ(to_set, c.to_set);
    if (c.by == kNone) continue;
    EXPECT_EQ(use.Count(c.by), 1);
    use.Switch(c.by, false);
    EXPECT_FALSE(SameOptions(a, b, use));
  }
}

TEST(EquivalencesTest, PartitioningIsComparedByWhatItSays) {
  const auto same = [](const char* a, const char* b) {
    return SamePartitioning(Table("a int", "engine=InnoDB " + std::string(a)),
                            Table("a int", "engine=innodb " + std::string(b)));
  };
  EXPECT_TRUE(same("partition by range (`a`)\n(partition `p` values less than MAXVALUE ENGINE = InnoDB)",
                   "/*!50100 PARTITION BY RANGE (a) (PARTITION p VALUES LESS THAN (MAXVALUE)) */"));
  EXPECT_FALSE(same("partition by hash (a) partitions 2", "partition by hash (a) partitions 3"));
  EXPECT_FALSE(same("partition by hash (a) partitions 2", ""));
}

TEST(EquivalencesTest, EveryRowHasItsPlaceAndAName) {
  for (int i = 0; i < kEquivalenceCount; ++i) {
    const TEquivalence& row = Equivalences()[static_cast<std::size_t>(i)];
    EXPECT_EQ(row.id, static_cast<EEquivalence>(i));
    EXPECT_FALSE(row.name.empty() || row.help.empty());
  }
}

}  // namespace
}  // namespace velmora
