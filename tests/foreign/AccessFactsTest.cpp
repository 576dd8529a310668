// SPDX-License-Identifier: GPL-3.0-or-later

// What Access files say of their tables, as creation texts and in words.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "engines/oledb/DBConnAccess.h"
#include "foreign/AccessRules.h"
#include "foreign/AccessSamples.h"
#include "foreign/CreationText.h"
#include "foreign/FactReaders.h"
#include "foreign/ForeignTexts.h"
#include "formats/mdb/MdbPages.h"
#include "support/AceFile.h"
#include "support/ByteText.h"
#include "support/MessageOf.h"
#include "support/ScratchFolder.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {
namespace {

using testing::AccessFile;
using testing::TAccessTable;
using enum EMdbType;

TEST(AccessRulesTest, InTheCommonForm) {
  const struct {
    const char *rule, *column, *table;
  } kCases[] = {
      {">0", ">0", ">0"},
      {">=1 And <=10", ">=1 And <=10", ">=1 And <=10"},
      {"Between 1 And 5 Or 7", "Between 1 And 5 Or = 7", "Between 1 And 5 Or 7"},
      {"\"A\" Or \"B\"\"b's\"", "= 'A' Or = 'B\"b''s'", "'A' Or 'B\"b''s'"},
      {"Not \"x\" And <>'y'", "Not = 'x' And <>'y'", "Not 'x' And <>'y'"},
      {"(-1 Or 1)", "(= -1 Or = 1)", "(-1 Or 1)"},
      {"In (\"a\",\"b\")", "In ('a','b')", "In ('a','b')"},
      {"Null Or Is Not Null", "Is Null Or Is Not Null", "Null Or Is Not Null"},
      {"Like \"*@?*.de\"", "Like '%@_%.de'", "Like '%@_%.de'"},
      {"Like \"5%_[a-f?]#\"", "Like '5[%][_][a-f?][0-9]'", "Like '5[%][_][a-f?][0-9]'"},
      {">=#1/31/2024#", ">='2024-01-31'", ">='2024-01-31'"},
      {"<#1/1/2024 10:00:00#", "<#1/1/2024 10:00:00#", "<#1/1/2024 10:00:00#"},
      {"[a]>[b] And [c]=\"q\"", "[a]>[b] And [c]='q'", "[a]>[b] And [c]='q'"},
      {"=\"never closed", "=\"never closed", "=\"never closed"},
      {"", "", ""},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(PlainCondition(c.rule, true), c.column);
    EXPECT_EQ(PlainCondition(c.rule, false), c.table);
  }
}

TMdbColumn Decimal(const char* name, std::uint8_t precision, std::uint8_t scale) {
  TMdbColumn column = MdbFixedColumn(name, Numeric);
  column.precision = precision;
  column.scale = scale;
  return column;
}

class AccessFactsTest : public ::testing::Test {
 protected:
  std::string Texts(const std::string& bytes) {
    testing::PutFile(path_, bytes);
    engine_.Connect();
    TForeignTexts texts(MakeFactReader(engine_), {});
    texts.Read(ReadTargetServer("10.11.6-MariaDB"), {}, [](const std::string&, std::size_t) {});
    std::string made;
    for (const std::string& table : texts.Tables())
      if (table != "Files") made += CreationTextOf(texts.Make(table, nullptr).table) + "\n";
    for (const TMadeColumn& told : texts.Columns())
      if (!told.text.empty()) made += told.table + "." + told.column + ": " + told.text + "\n";
    return StrReplace(made, path_, "FILE");
  }

  testing::TScratchFolder folder_;
  std::string path_ = folder_ / "shop.accdb";
  TDBConnAccess engine_{path_, "", ""};
};

constexpr char kExpected[] = R"(CREATE TABLE `Order` (
  `ID` int NOT NULL AUTO_INCREMENT,
  `done` tinyint(1) DEFAULT 0,
  `tiny` tinyint unsigned NOT NULL DEFAULT 7,
  `small` smallint,
  `big` bigint,
  `price` decimal(19,4),
  `single` float,
  `double` double,
  `rate` decimal(12,3),
  `day` datetime DEFAULT current_timestamp() COMMENT 'of delivery',
  `exact` datetime(6),
  `name` varchar(50) NOT NULL DEFAULT 'n/a',
  `code` char(4),
  `note` longtext,
  `picture` longblob,
  `raw` varbinary(20),
  `guid` char(36) NOT NULL DEFAULT (uuid()),
  `sum` decimal(19,4),
  PRIMARY KEY (`ID`),
  UNIQUE KEY `by name` (`name`,`tiny` DESC),
  CONSTRAINT `chk_Order_1` CHECK (`price` >= `double`),
  CONSTRAINT `chk_Order_2` CHECK (`tiny` between 1 and 9)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COMMENT='What was bought'
CREATE TABLE `Line` (
  `order` int,
  `old` int,
  KEY `OrderLine` (`order`),
  CONSTRAINT `OrderLine` FOREIGN KEY (`order`) REFERENCES `Order` (`ID`) ON DELETE CASCADE ON UPDATE CASCADE
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4
Files.: Cannot read FILE: table Files: column a holds attachments or several values in one
Order.exact: fractions of seconds: 7 digits become 6
Order.sum: computed: [price]*[tiny]
Order.: unique key by name: MySQL's usual collations compare letters without their case
Order.: no form in MySQL: small (check): only comparisons of columns with values have a form in MySQL: <Year(Date())
Line.: relation Old to Order: Access does not enforce it, so it is no foreign key
Line.: the source states no primary key
)";

TEST_F(AccessFactsTest, BecomeTexts) {
  TMdbColumn guid = MdbFixedColumn("guid", RepId, kMdbAutoGuid), sum = MdbVarColumn("sum", Money, 8);
  TMdbColumn code = MdbVarColumn("code", Text, 8);
  code.flags |= kMdbFixed;
  sum.computed = true;
  const TAccessTable order{
      .name = "Order",
      .columns = {MdbFixedColumn("ID", LongInt, kMdbAutoNumber), MdbFixedColumn("done", Bool),
                  MdbFixedColumn("tiny", Byte), MdbFixedColumn("small", Int), MdbFixedColumn("big", BigInt),
                  MdbFixedColumn("price", Money), MdbFixedColumn("single", Float), MdbFixedColumn("double", Double),
                  Decimal("rate", 12, 3), MdbFixedColumn("day", DateTime), MdbFixedColumn("exact", LongDateTime),
                  MdbVarColumn("name", Text, 100), code, MdbVarColumn("note", Memo), MdbVarColumn("picture", Ole),
                  MdbVarColumn("raw", Binary, 20), guid, sum},
      .indexes = {{.name = "PrimaryKey", .parts = {{0}}, .flags = kMdbUnique, .kind = kMdbPrimaryKey},
                  {.name = "by name", .parts = {{11}, {2, true}}, .flags = kMdbUnique | kMdbNotNull, .kind = 0}},
      .properties = {{"", {{"Description", "What was bought"}, {"ValidationRule", "[price]>=[double]"}}},
                     {"done", {{"DefaultValue", "=No"}}},
                     {"tiny", {{"DefaultValue", "7"}, {"Required", "yes"}, {"ValidationRule", "Between 1 And 9"}}},
                     {"day", {{"DefaultValue", "Now()"}, {"Description", "of delivery"}}},
                     {"name", {{"DefaultValue", "\"n/a\""}, {"Required", "no"}}},
                     {"small", {{"ValidationRule", "<Year(Date())"}}},
                     {"sum", {{"Expression", "[price]*[tiny]"}}}}};
  const TAccessTable line{.name = "Line",
                          .columns = {MdbFixedColumn("order", LongInt), MdbFixedColumn("old", LongInt)}};
  const TAccessTable files{.name = "Files", .columns = {MdbFixedColumn("a", Complex)}};
  constexpr unsigned kCascades = 0x1100, kNotEnforced = 2;
  EXPECT_EQ(Texts(testing::AsAce(
                AccessFile({order, line, files}, {{"OrderLine", "Line", {"order"}, "order", {"ID"}, kCascades},
                                                  {"Old", "Line", {"old"}, "Order", {"ID"}, kNotEnforced}}),
                5)),
            kExpected);
}

TEST_F(AccessFactsTest, OfAFileThatIsGone) {
  engine_.Connect();
  const auto reader = MakeFactReader(engine_);
  EXPECT_TRUE(reader->Reachable());
  std::filesystem::remove(path_);
  EXPECT_FALSE(reader->Reachable());
}

}  // namespace
}  // namespace velmora
