#include "engines/mysql/DDLParser.h"

#include <gtest/gtest.h>

#include <chrono>
#include <random>

#include "support/MessageOf.h"
#include "support/MetaDump.h"
#include "support/ParserHost.h"

namespace velmora::testing {
namespace {

// The text with CR LF for every blank and line feed outside quotes and backticks.
std::string WithCrLf(std::string_view text) {
  std::string result;
  char quote = '\0';
  for (char c : text) {
    if (quote == c)
      quote = '\0';
    else if (quote == '\0' && (c == '\'' || c == '"' || c == '`'))
      quote = c;
    if (quote == '\0' && (c == ' ' || c == '\n'))
      result += "\r\n";
    else
      result += c;
  }
  return result;
}

// The store after the statements of `before`, and then those of `text`.
std::string Parsed(const std::string& before, const std::string& text) {
  TParserHost host;
  host.ParseDDL(before);
  host.ParseDDL(text);
  return DumpMeta(host.meta());
}

struct TAccepted {
  const char* name;
  const char* before;
  const char* text;
  const char* rows;
};

class Accepted : public ::testing::TestWithParam<TAccepted> {};

TEST_P(Accepted, GivesRows) {
  const TAccepted& each = GetParam();
  EXPECT_EQ(each.rows, Parsed(each.before, each.text));
  EXPECT_EQ(each.rows, Parsed(WithCrLf(each.before), WithCrLf(each.text))) << "with CR LF";
}

struct TRefused {
  const char* name;
  const char* before;
  const char* text;
  const char* message;
  const char* rows = nullptr;  // what the store holds then, where that matters
};

class Refused : public ::testing::TestWithParam<TRefused> {};

void ExpectRefusal(const TRefused& each, const std::string& text) {
  TParserHost host;
  host.ParseDDL(each.before);
  EXPECT_EQ(each.message, MessageOf([&] { host.ParseDDL(text); }));
  if (each.rows != nullptr) EXPECT_EQ(each.rows, DumpMeta(host.meta()));
}

TEST_P(Refused, WithItsMessage) {
  const TRefused& each = GetParam();
  ExpectRefusal(each, each.text);
  if (std::string_view(each.message).find("offset") == std::string_view::npos) ExpectRefusal(each, WithCrLf(each.text));
}

template <class Case>
std::string NameOf(const ::testing::TestParamInfo<Case>& info) {
  return info.param.name;
}

constexpr char kTable[] = "create table t (a int(11) not null default '5', b int, key k (a));";
constexpr char kTableRows[] = "table t\ncolumn a <I4>(11) notnull default='5'\ncolumn b <I4>\nkey k(a)\n";
constexpr char kParentAndChild[] =
    "create table p (id int, primary key (id)); create table c (id int, pid int, key k (pid), "
    "constraint f foreign key (pid) references p (id));";

// --- Statements

INSTANTIATE_TEST_SUITE_P(
    Statements, Accepted,
    ::testing::Values(
        TAccepted{"Nothing", "", "", ""}, TAccepted{"Separators", "", ";; ;", ""},
        TAccepted{"OnlyComments", "", "/* a *//* b */", ""},
        TAccepted{"ServerText", "",
                  "CREATE TABLE `Order Items` (\n"
                  "  `id` int(10) unsigned NOT NULL AUTO_INCREMENT,\n"
                  "  `Unit Price` decimal(10,2) NOT NULL DEFAULT '0.00',\n"
                  "  `note` varchar(40) CHARACTER SET utf8mb4 COLLATE utf8mb4_bin DEFAULT NULL COMMENT 'free text',\n"
                  "  `at` timestamp NOT NULL DEFAULT '0000-00-00 00:00:00',\n"
                  "  PRIMARY KEY (`id`),\n"
                  "  UNIQUE KEY `u` (`note`,`id`),\n"
                  "  FULLTEXT KEY `ft` (`note`),\n"
                  "  KEY `f` (`note`(10)),\n"
                  "  CONSTRAINT `fk 1` FOREIGN KEY (`id`, `note`) REFERENCES `o` (`oid`, `x`) ON DELETE SET NULL"
                  " ON UPDATE CASCADE\n"
                  ") ENGINE=InnoDB AUTO_INCREMENT=7 DEFAULT CHARSET=utf8mb4 COMMENT='it''s; \"fine\"'",
                  "table Order Items InnoDB\n"
                  "column id <I4>(10) notnull autoinc\n"
                  "column Unit Price <DECIMAL>(10,2) notnull default='0'\n"
                  "column note <VARCHAR>(40)\n"
                  "column at <TIMESTAMP> notnull default='0000-00-00 00:00:00'\n"
                  "key primary key(id) primary unique\n"
                  "key u(note,id) unique\n"
                  "key ft(note) fulltext\n"
                  "key f(note)\n"
                  "constraint fk 1(id,note)->o(oid,x) delete=set null update=cascade\n"},
        TAccepted{"BareNamesKeepTheirCase", "", "create table Tab (Col INT);", "table Tab\ncolumn Col <I4>\n"},
        TAccepted{"ReplacesAnExistingTable", kTable, "create table if not exists T (c int);",
                  "table T\ncolumn c <I4>\n"},
        TAccepted{"NewTableDropsReferencesToIt", kParentAndChild, "create table p (id int);",
                  "table c\ncolumn id <I4>\ncolumn pid <I4>\nkey k(pid)\ntable p\ncolumn id <I4>\n"},
        TAccepted{"TypeOption", "", "create table t (a int) type=MyISAM; create table u (a int) engine = Heap;",
                  "table t MyISAM\ncolumn a <I4>\ntable u Heap\ncolumn a <I4>\n"},
        TAccepted{"OptionsEndBehindTheNextStatementEnd", "",
                  "create table t (a int) engine=x comment='a;b\\';\"c\"' foo=\"1;2\"; create table u (a int);",
                  "table t x\ncolumn a <I4>\ntable u\ncolumn a <I4>\n"},
        TAccepted{"OptionsWithoutAnEnd", "", "create table t (a int) engine=x comment='a;b'",
                  "table t x\ncolumn a <I4>\n"},
        TAccepted{"OtherOptionIsReadAsAColumn", "", "create table t (a int) comment int;",
                  "table t\ncolumn a <I4>\ncolumn comment <I4>\n"},
        TAccepted{"OtherWordBehindCreateIsDropped", kTable, "create temporary c int;",
                  "table t\ncolumn a <I4>(11) notnull default='5'\ncolumn b <I4>\ncolumn c <I4>\nkey k(a)\n"},
        TAccepted{"TableCutAtAColumnNamedDrop", "create table u (a int);", "create table t (a int, drop table u;",
                  "table t\ncolumn a <I4>\n"},
        TAccepted{"AlterType", kTable, "alter table T type = InnoDB;",
                  "table t InnoDB\ncolumn a <I4>(11) notnull default='5'\ncolumn b <I4>\nkey k(a)\n"},
        TAccepted{"DropTable", kTable, "drop table T", ""},
        TAccepted{"DropTableDropsReferencesToIt", kParentAndChild, "drop table p;",
                  "table c\ncolumn id <I4>\ncolumn pid <I4>\nkey k(pid)\n"},
        TAccepted{"StrayTableEnd", "", "a int) engine=InnoDB;", ""}),
    NameOf<TAccepted>);

INSTANTIATE_TEST_SUITE_P(
    Statements, Refused,
    ::testing::Values(
        TRefused{"BlankBehindTheLastEnd", "", "create table t (a int); ", "Word expected at offset 25."},
        TRefused{"OnlyBlanks", "", "  \t", "Word expected at offset 4."},
        TRefused{"NothingBehindTheBracket", "", "create table t (a int)", "Word expected at offset 23.",
                 "table t\ncolumn a <I4>\n"},
        TRefused{"OffsetWithoutComments", "", "/* one */create table t (a int) /* two */;  ",
                 "Word expected at offset 26."},
        TRefused{"LineBetweenComments", "", "/* a */\r\n/* b */", "Word expected at offset 2."},
        TRefused{"CreateAlone", "", "create", "Word expected at offset 7."},
        TRefused{"IfNotExists", "", "create table if exists t (a int);", "Word not expected, but exists found."},
        TRefused{"NoBracket", "", "create table `t` SELECT 1;", "Word ( expected, but SELECT found.", "table t\n"},
        TRefused{"QualifiedTable", "", "create table d.t (a int);", "Word ( expected, but . found."},
        TRefused{"OpenName", "", "create table `a b (c int);", "No stopper `"},
        TRefused{"TypeWithoutSign", "", "create table t (a int) engine InnoDB;", "Word = expected, but InnoDB found."},
        TRefused{"AlterUnknown", kTable, "alter table Tt add c int;", "Can't alter undefined table Tt"},
        TRefused{"AlterInBackticks", kTable, "alter table `t` add c int;", "Can't alter undefined table `t`"},
        TRefused{"AlterEngine", kTable, "alter table t ENGINE=InnoDB;",
                 "Any of words [add,change,modify,drop] expected, but ENGINE found."},
        TRefused{"AlterNothing", kTable, "alter table t", "Word expected at offset 14."},
        TRefused{"DropIfExists", kTable, "drop table If exists t;", "Can't drop undefined table If"},
        TRefused{"DropInBackticks", kTable, "drop table `t`;", "Can't drop undefined table `t`", kTableRows},
        TRefused{"DropDatabase", kTable, "drop database d;", "Word table expected, but database found."},
        TRefused{"TwoWordsBehindAKey", kTable, "alter table t drop key k now;",
                 "Any of words [;,,] expected, but now found."}),
    NameOf<TRefused>);

// --- Keys

INSTANTIATE_TEST_SUITE_P(
    Keys, Accepted,
    ::testing::Values(
        TAccepted{"CreateIndex", "create table t (a int); create table u (b int);",
                  "create index i on T (a); create unique index `j` on u (b); create fulltext index k on t (a);",
                  "table t\ncolumn a <I4>\nkey i(a)\nkey k(a) fulltext\ntable u\ncolumn b <I4>\nkey j(b) unique\n"},
        TAccepted{"TableBeforeTheName", "create table t (a int); create table u (b int);", "create index on t i (a);",
                  "table t\ncolumn a <I4>\nkey i(a)\ntable u\ncolumn b <I4>\n"},
        TAccepted{
            "AddKeys", "create table t (a int, b int);",
            "alter table t add primary key (a,b); alter table t add unique (b); alter table t add unique key x (a);"
            "alter table t add index `y z` ( `a` , `b` ); alter table t add fulltext (a); alter table t add key ()",
            "table t\ncolumn a <I4>\ncolumn b <I4>\nkey primary key(a,b) primary unique\nkey (b) unique\n"
            "key x(a) unique\nkey y z(a,b)\nkey (a) fulltext\nkey ()\n"},
        TAccepted{"NamedPrimaryKey", "create table t (a int);", "alter table t add primary key p (a)",
                  "table t\ncolumn a <I4>\nkey p(a) primary unique\n"},
        TAccepted{"PrefixLengthOfOneColumn", "", "create table t (a int, key k (`a`(10)), b int, key l (b(5)));",
                  "table t\ncolumn a <I4>\ncolumn b <I4>\nkey k(a)\nkey l(b)\n"},
        TAccepted{"PrefixLengthOfTheLastColumnEndsTheTable", "", "create table t (a int, key k (a,b(10)); c int);",
                  "table t\ncolumn a <I4>\ncolumn c <I4>\nkey k(a,b(10)\n"},
        TAccepted{"BracketOverTwoColumnsIsNoPrefixLength", "", "create table t (a int, key k (a(10,b)) type=x;",
                  "table t x\ncolumn a <I4>\nkey k(a(10,b)\n"},
        TAccepted{"CommaInANameSplits", "", "create table t (a int, key `k, l` (`a,b`));",
                  "table t\ncolumn a <I4>\nkey k, l(a,b)\n"},
        TAccepted{"DropKeys",
                  "create table t (a int, primary key (a), key k (a), unique key u (a), fulltext key f (a));",
                  "alter table t drop key `k`; alter table t drop unique index U; alter table t drop fulltext key f;"
                  "alter table t drop primary key",
                  "table t fetched\ncolumn a <I4>\n"},
        TAccepted{
            "DroppedKeyTakesItsForeignKey", kParentAndChild, "alter table c drop index k;",
            "table p\ncolumn id <I4>\nkey primary key(id) primary unique\ntable c fetched\ncolumn id <I4>\ncolumn "
            "pid <I4>\n"}),
    NameOf<TAccepted>);

INSTANTIATE_TEST_SUITE_P(
    Keys, Refused,
    ::testing::Values(
        TRefused{"DropForeignKey", kTable, "alter table t drop Foreign key f;",
                 "DROP: PRIMARY KEY, DROP KEY/INDEX expected, but Foreign found."},
        TRefused{"DropMissingKey", kTable, "alter table t drop key x;", "Can't find key x of table t in metadata"},
        TRefused{"UnknownTable", kTable, "create index i on `t` (a);", "Can't add key into undefined table `t`"},
        TRefused{"PrimaryWithoutKey", kTable, "alter table t add primary (a);", "Word key expected, but ( found."},
        TRefused{"OpenBracket", kTable, "alter table t add key x (a, b;", "No closing bracket."},
        TRefused{"PrefixLengthOfTheFirstOfTwo", "", "create table t (a int, key k (a(10),b));",
                 "Any of words [;,,] expected, but b found.", "table t\ncolumn a <I4>\nkey k(a)\n"},
        TRefused{"KeyType", kTable, "alter table t add key x using btree (a);", "Word ( expected, but using found."},
        TRefused{"ColumnTwice", kTable, "alter table t add key x (a,a);", "Duplicate key column name: a"}),
    NameOf<TRefused>);

// --- Constraints

INSTANTIATE_TEST_SUITE_P(
    Constraints, Accepted,
    ::testing::Values(
        TAccepted{"WithoutAName", "",
                  "create table t (a int, foreign key (a) references p (b), constraint foreign "
                  "index (a) references `q` (c));",
                  "table t\ncolumn a <I4>\nconstraint (a)->p(b)\nconstraint (a)->q(c)\n"},
        TAccepted{
            "Added", "create table t (a int, b int);",
            "alter table t add constraint `my f` foreign key (`a`, b) references p (x,`y`) ON update NO ACTION on "
            "delete Set Default;",
            "table t\ncolumn a <I4>\ncolumn b <I4>\nconstraint my f(a,b)->p(x,y) delete=set default update=no "
            "action\n"},
        TAccepted{"RepeatedRule", "",
                  "create table t (a int, foreign key (a) references p (b) on delete cascade on "
                  "delete restrict);",
                  "table t\ncolumn a <I4>\nconstraint (a)->p(b) delete=restrict\n"}),
    NameOf<TAccepted>);

INSTANTIATE_TEST_SUITE_P(
    Constraints, Refused,
    ::testing::Values(
        TRefused{"Check", kTable, "alter table t add constraint c check (a > 0);",
                 "Word foreign expected, but check found."},
        TRefused{"NoKey", kTable, "alter table t add foreign (a) references p (b);", "Invalid foreign key definition."},
        TRefused{"NamedKey", kTable, "alter table t add foreign key f (a) references p (b);",
                 "Word ( expected, but f found."},
        TRefused{"QualifiedTable", kTable, "alter table t add foreign key (a) references `d`.`p` (b);",
                 "Word ( expected, but . found."},
        TRefused{"UnequalLists", kTable, "alter table T add constraint f foreign key (a, `b`) references `p` ( x );",
                 "Invalid foreign key field list: p(x)->t(a,b)",
                 "table t\ncolumn a <I4>(11) notnull default='5'\ncolumn b <I4>\nkey k(a)\nconstraint f()->p()\n"},
        TRefused{"ColumnTwice", kTable, "alter table t add foreign key (a,a) references p (x,y);",
                 "Duplicate constraint column name: a"},
        TRefused{"LastInTheText", kTable, "alter table t add foreign key (a) references p (x)",
                 "Word expected at offset 51."},
        TRefused{"OtherEvent", kTable, "alter table t add foreign key (a) references p (x) on insert set Null;",
                 "Unexpected parse token Null at offset 70"},
        TRefused{"OtherEventOneWord", kTable, "alter table t add foreign key (a) references p (x) on insert Cascade;",
                 "Unexpected parse token Cascade at offset 69"}),
    NameOf<TRefused>);

// --- Columns

INSTANTIATE_TEST_SUITE_P(
    Columns, Accepted,
    ::testing::Values(
        TAccepted{"Add", kTable,
                  "alter table t add c varchar(20) not null; alter table t add column `d e` int first;"
                  "alter table t add f int after A; alter table t add g int default 1 last;",
                  "table t\ncolumn d e <I4>\ncolumn a <I4>(11) notnull default='5'\ncolumn f <I4>\ncolumn b "
                  "<I4>\ncolumn c <VARCHAR>(20) notnull\ncolumn g <I4> default='1'\nkey k(a)\n"},
        TAccepted{"AttributesBehindTheMove", kTable, "alter table t add c int after a not null default 3 first",
                  "table t\ncolumn c <I4> notnull default='3'\ncolumn a <I4>(11) notnull default='5'\ncolumn b "
                  "<I4>\nkey k(a)\n"},
        TAccepted{"ModifyKeepsWhatIsNotNamed", kTable, "alter table t modify a bigint null;",
                  "table t\ncolumn a <I8>(11) notnull default='5'\ncolumn b <I4>\nkey k(a)\n"},
        TAccepted{"ChangeRenamesTheRow", kTable, "alter table t change column `a` a2 int after b;",
                  "table t\ncolumn b <I4>\ncolumn a2 <I4>(11) notnull default='5'\nkey k(a)\n"},
        TAccepted{"ChangeOfAnUnknownColumnAdds", kTable, "alter table t change x y int null;",
                  "table t\ncolumn a <I4>(11) notnull default='5'\ncolumn b <I4>\ncolumn y <I4>\nkey k(a)\n"},
        TAccepted{"CaseMakesAnotherColumn", kTable, "alter table t modify A int null;",
                  "table t\ncolumn a <I4>(11) notnull default='5'\ncolumn b <I4>\ncolumn A <I4>\nkey k(a)\n"},
        TAccepted{"MoveLast", kTable, "alter table t modify a int last; alter table t modify a int last",
                  "table t\ncolumn b <I4>\ncolumn a <I4>(11) notnull default='5'\nkey k(a)\n"},
        TAccepted{"Drop", kTable, "alter table t drop column `a`; alter table t drop b", "table t fetched\n"},
        TAccepted{"SecondAddIsAColumn", kTable, "alter table t drop b, add int;",
                  "table t fetched\ncolumn a <I4>(11) notnull default='5'\ncolumn add <I4>\nkey k(a)\n"},
        TAccepted{"BareTypeSwallowsTheNextStatement", kTable,
                  "alter table t add c int; alter table t add d int; alter table t add e int null;",
                  "table t\ncolumn a <I4>(11) notnull default='5'\ncolumn b <I4>\ncolumn c <I4>\ncolumn e <I4>\nkey "
                  "k(a)\n"},
        TAccepted{"AttributeStopsBeforeTheNextStatement", kTable,
                  "alter table t add c int not null; alter table t add d int null;",
                  "table t\ncolumn a <I4>(11) notnull default='5'\ncolumn b <I4>\ncolumn c <I4> notnull\ncolumn d "
                  "<I4>\nkey k(a)\n"},
        TAccepted{
            "UnknownAttributes", "",
            "create table t (a int unsigned zerofill primary key on update x, b varchar(3) binary collate c unique);",
            "table t\ncolumn a <I4>\ncolumn b <VARCHAR>(3)\n"},
        TAccepted{"CommaInACommentStartsAClause", "", "create table t (a int comment 'x,b int', c int);",
                  "table t\ncolumn a <I4>\ncolumn b <I4>\ncolumn c <I4>\n"},
        TAccepted{
            "Sizes", "",
            "create table t (a decimal(10,2), b decimal( 8 ), c int(-3), d decimal(10, -2), e date, f char(`5`));",
            "table t\ncolumn a <DECIMAL>(10,2)\ncolumn b <DECIMAL>(8)\ncolumn c <I4>(-3)\ncolumn d "
            "<DECIMAL>(10,-2)\ncolumn e <DATE>\ncolumn f <CHAR>(5)\n"},
        TAccepted{"Names", "", "create table t (`x)` int, `it``s` int);",
                  "table t\ncolumn x) <I4>\ncolumn it``s <I4>\n"}),
    NameOf<TAccepted>);

INSTANTIATE_TEST_SUITE_P(
    Columns, Refused,
    ::testing::Values(
        TRefused{"NothingBehindTheType", kTable, "alter table t add c int", "Word expected at offset 24."},
        TRefused{"BlankBehindTheType", kTable, "alter table t add c int(5) ", "Word expected at offset 28."},
        TRefused{"UnknownType", kTable, "alter table t add c MediumInt null;",
                 "TDBConn.DecodeColumn: Unhandled column type mediumint"},
        TRefused{"BlankInFrontOfTheName", "", "create table t (` y` int);",
                 "TDBConn.DecodeColumn: Unhandled column type y`", "table t\ncolumn  <I1>\n"},
        TRefused{"Enum", "", "create table t (a int, e enum('a','b'));", "''a'' is not a valid integer value"},
        TRefused{"ThreeNumbers", "", "create table t (a decimal(1, 2,3));", "Expected size,precision, but 1,2,3 found.",
                 "table t\ncolumn a <I1>(1)\n"},
        TRefused{"NoNumber", "", "create table t (a int());", "List index out of bounds (0)"},
        TRefused{"SecondNumber", "", "create table t (a decimal(7,x));", "'x' is not a valid integer value",
                 "table t\ncolumn a <I1>(7)\n"},
        TRefused{"NotAlone", "", "create table t (a int not a);", "Word null expected, but a found."},
        TRefused{"AnchorInBackticks", kTable, "alter table t add c int after `b`;",
                 "Can't find field `b` of table t in metadata"},
        TRefused{"DropUnknown", kTable, "alter table t drop c;", "Can't find field c of table t in metadata"},
        TRefused{"RenamedOntoAnother", kTable, "alter table t change a b int null;", "Duplicate column name: b",
                 kTableRows},
        TRefused{"OpenLiteral", "", "create table t (a text default 'x);", "StrNextWord: Invalid string."},
        TRefused{"DefaultMissing", "", "create table t (a text default", "Word expected at offset 31."}),
    NameOf<TRefused>);

// --- Defaults

struct TDefault {
  const char* definition;  // type and default
  const char* stored;
};

TEST(DDLParser, DefaultsAreKeptAsTheirTypeHasThem) {
  const TDefault kDefaults[] = {
      {"int default '0'", "'0'"},
      {"int default 12", "'12'"},
      {"int default null", ""},
      {"int default -5", "'-'"},
      {"int default \"7\"", "'7'"},
      {"decimal(10,2) default '5.00'", "'5'"},
      {"decimal(10,2) default '5.000'", "'5.000'"},
      {"decimal(10,2) default '5.10'", "'5.10'"},
      {"decimal(10,2) default '.00'", "''"},
      {"decimal(10) default '5.'", "'5'"},
      {"decimal(10,-1) default '5.'", "'5'"},
      {"decimal(65,2000000000) default '5.0'", "'5.0'"},
      {"float default 1.50", "'1'"},
      {"float(5,1) default '1.0'", "'1'"},
      {"double default '0'", "''0''"},
      {"double(5,1) default '1.0'", "''1.0''"},
      {"double default 3", "'3'"},
      {"varchar(9) default 'abc'", "'abc'"},
      {"varchar(9) default ''", "''"},
      {"varchar(9) default 'a,b) ;'", "'a,b) ;'"},
      {"varchar(9) default 'a\\'b'", "'a\\'b'"},
      {"varchar(9) default 'it''s'", "'it'"},
      {"varchar(9) default \"a\"", "'a'"},
      {"varchar(9) default \"a b\"", "'a'"},
      {"varchar(9) default \" a\"", "' a'"},
      {"varchar(9) default '\"a\"'", "'\"a\"'"},
      {"varchar(9) default x", "'x'"},
      {"datetime default '2004-01-01 00:00:00'", "'2004-01-01 00:00:00'"},
      {"datetime default \"2004\"", "\"2004\""},
      {"timestamp default CURRENT_TIMESTAMP", "CURRENT_TIMESTAMP"},
      {"date default '2004-01-01'", "''2004-01-01''"},
      {"time default '10:00:00'", "''10:00:00''"},
      {"year default '2004'", "''2004''"},
      {"blob default 'x'", "''x''"},
  };
  for (const TDefault& each : kDefaults) {
    for (const char* end : {");", " null);", "\r\nnull\r\n);", ", z int);"}) {
      TParserHost host;
      host.ParseDDL("create table t (a " + std::string(each.definition) + end);
      host.meta().tColumns.First();
      EXPECT_EQ(each.stored, host.meta().tColumns.Current().default_) << each.definition << end;
    }
  }
}

// --- Comments

TEST(DDLParser, CommentsGoWithTheCharacterBeforeThem) {
  EXPECT_EQ("table ab\ncolumn c <I4>\n", Parsed("", "create table ax/**/b (c int);"));
  // Neighbours share one.
  EXPECT_EQ("table ab\ncolumn c <I4>\n", Parsed("", "create table ax/*1*//*2*/b (c int);"));
  // The end of the line above goes with a comment line.
  EXPECT_EQ("table tu\ncolumn c <I4>\n", Parsed("", "create table t\n/* x */u (c int);"));
  // A mark inside a literal counts.
  EXPECT_EQ("table t\ncolumn c <TEXT> default='ad'\n", Parsed("", "create table t (c text default 'ab/*c*/d');"));
  // Without an end all is dropped from the end of the last comment on.
  EXPECT_EQ("table t\ncolumn c <I4>\n", Parsed("", "create table t (c int); /* x *//* open"));
  EXPECT_EQ("", Parsed("", "create table t (c int); /* open"));
  // The close mark does not share the asterisk of the open one.
  EXPECT_EQ("", Parsed("", "/*/ create table t (c int);"));
  // Other marks are words.
  EXPECT_EQ("table t\ncolumn - <I4>\n", Parsed("", "create table t (- int);"));
}

// --- Behaviour around the store

TEST(DDLParser, TheCreatedTableIsCurrentAndNotFetched) {
  TParserHost host;
  host.ParseDDL("create table t (a int); create table u (a int); create table T (b int);");
  EXPECT_EQ("T", host.CurrentTableName());
  EXPECT_FALSE(host.meta().tTables.Current().fetched);
  EXPECT_EQ(kNoCachedDDL, host.meta().tTables.Current().cached_ddl);
  EXPECT_FALSE(host.meta().tColumns.IsOpen());
}

TEST(DDLParser, ARowOfARefusedClauseStays) {
  TParserHost host;
  EXPECT_EQ("Word null expected, but x found.",
            MessageOf([&] { host.ParseDDL("create table t (a varchar(5) default 'd' not x)"); }));
  EXPECT_TRUE(host.meta().tColumns.IsOpen());
  EXPECT_EQ("table t\ncolumn a <VARCHAR>(5) default='d'\n", DumpMeta(host.meta()));
  host.ParseDDL("alter table t add b int null;");
  EXPECT_EQ("table t\ncolumn a <VARCHAR>(5) default='d'\ncolumn b <I4>\n", DumpMeta(host.meta()));
}

TEST(DDLParser, ClausesWithoutATableBelongToNobody) {
  TParserHost host;
  host.ParseDDL("a int null, key k (a), foreign key (a) references p (b);");
  EXPECT_EQ("", DumpMeta(host.meta()));
  EXPECT_EQ("Can't find table  in metadata", MessageOf([&] { host.ParseDDL("b int first;"); }));
}

// --- Input that nobody means

constexpr char kSample[] =
    "create table if not exists `a b` (`id` int(11) not null auto_increment, `n` decimal(10,2) default '0.00' "
    "after id, s varchar(20) default \"x y\" /* c */ comment 'it\\'s', primary key (`id`), unique key `u` (s(5)), "
    "constraint `f` foreign key (id) references p (x) on delete set null) engine=InnoDB comment='a;b';\r\n"
    "alter table c add column d int first; alter table c change d e text last; alter table c drop index k; "
    "create fulltext index i on c (pid); drop table p; alter table c type=x;";

// Whatever a text holds, it is taken or refused with a message, and soon.
TEST(DDLParser, DamagedTextsEnd) {
  std::mt19937 random(20040405);
  const auto below = [&random](std::size_t limit) { return static_cast<std::size_t>(random()) % limit; };
  const std::string_view sample = kSample;
  constexpr std::string_view kBytes = "`'\"(),;/*=\\ \n\t.-\0\xff";
  for (int round = 0; round < 5000; ++round) {
    std::string text(sample);
    for (std::size_t change = below(4) + 1; change > 0 && !text.empty(); --change) {
      const std::size_t at = below(text.size());
      switch (below(4)) {
        case 0:
          text.erase(at, below(20) + 1);
          break;
        case 1:
          text[at] = kBytes[below(kBytes.size())];
          break;
        case 2:
          text.insert(at, sample.substr(below(sample.size()), below(30)));
          break;
        default:
          text.resize(at);
      }
    }
    TParserHost host;
    host.ParseDDL(kParentAndChild);
    MessageOf([&] { host.ParseDDL(text); });
    DumpMeta(host.meta());
  }
}

std::string Repeated(std::string_view text, std::size_t count) {
  std::string result;
  result.reserve(text.size() * count);
  for (std::size_t i = 0; i < count; ++i) result += text;
  return result;
}

TEST(DDLParser, LongTextsTakeLinearTime) {
  const std::string statement = "create table t (a int) engine=x comment='; ;';";
  const std::string kTexts[] = {
      Repeated(",", 1000000),
      "create table t (a int, key k (" + Repeated("a", 2000000),
      "create table t (a int, key k (" + Repeated("a(", 1000000) + ")",
      Repeated("create table t (", 100000),
      Repeated("(", 1000000),
      Repeated(" ", 2000000),
      Repeated("x", 2000000),
      "create table `" + Repeated("a b", 1000000),
      Repeated("`", 1000000),
      Repeated("` ", 500000),
      "create table t (a int " + Repeated("`a b`c ", 200000),
      "create table t (a text default '" + Repeated("\\'", 500000),
      "create table t (a int default " + Repeated("\" \"x default ", 100000),
      Repeated("/*", 1000000),
      Repeated("/**/", 500000),
      Repeated(statement, 20000),
      "create table t (a int) engine=x '" + Repeated(";", 1000000),
      "create table t (a int null" + Repeated(",a int null", 100000) + ");",
  };
  for (const std::string& text : kTexts) {
    const auto start = std::chrono::steady_clock::now();
    TParserHost host;
    MessageOf([&] { host.ParseDDL(text); });
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    EXPECT_LT(seconds.count(), 5) << text.substr(0, 60);
  }
}

}  // namespace
}  // namespace velmora::testing
