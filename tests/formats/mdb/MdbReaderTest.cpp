// SPDX-License-Identifier: GPL-3.0-or-later

// Access files beyond the cases of tests/data/formats: of any size, enciphered, with values that are none.

#include "formats/mdb/MdbReader.h"

#include <cmath>
#include <limits>

#include "formats/mdb/MdbBuilder.h"
#include "formats/mdb/MdbText.h"
#include "support/AceFile.h"
#include "support/FormatCase.h"
#include "support/MessageOf.h"
#include "support/ReaderText.h"
#include "support/ScratchFolder.h"
#include "util/Format.h"
#include "util/LittleEndian.h"

namespace velmora::testing {
namespace {

constexpr std::uint32_t kLongOwner = 0x4C41564C;  // "LVAL"
constexpr std::size_t kChainPiece = 1900;

const TDateTime kDay = EncodeDate(2001, 2, 3);

TMdbTable TableOf(std::vector<TMdbColumn> columns, const std::vector<TMdbValues>& rows) {
  TMdbTable table;
  table.columns = PlacedColumns(std::move(columns));
  for (const TMdbValues& values : rows) table.rows.push_back({kMdbJet4.row(table.columns, values)});
  return table;
}

// A long value as it stands in a row: with its bytes, or leading to them.
enum class ELongValue { Inline, OneRow, Chain };

std::string LongValue(TMdbBuilder& builder, const std::string& bytes, ELongValue form) {
  if (form == ELongValue::Inline) return LittleBytes(bytes.size() | 0x80000000U, 4) + std::string(8, '\0') + bytes;
  std::uint32_t next = 0;
  if (form == ELongValue::OneRow)
    next = builder.AddRows(kLongOwner, {{bytes}}).front();
  else
    for (std::size_t left = bytes.size(), at = 0; left > 0; left = at) {
      at = (left - 1) / kChainPiece * kChainPiece;
      next = builder.AddRows(kLongOwner, {{LittleBytes(next, 4) + bytes.substr(at, kChainPiece)}}).front();
    }
  return LittleBytes(bytes.size() | (form == ELongValue::OneRow ? 0x40000000U : 0), 4) + LittleBytes(next, 4) +
         std::string(4, '\0');
}

class MdbReaderTest : public ::testing::Test {
 protected:
  std::unique_ptr<TFileReader> Open(const std::string& bytes) const {
    PutFile(path_, bytes);
    return OpenMdbFileHere(path_);
  }
  // The rows of a database with one table, T.
  TRowsOfValues Rows(const TMdbTable& table, TMdbBuilder builder = TMdbBuilder(kMdbJet4, kDay)) const {
    builder.AddTable("T", table);
    return Open(std::move(builder).Bytes())->Rows("T", kAllRows).rows;
  }

  TScratchFolder folder_;
  const std::string path_ = folder_ / "shop.mdb";
};

// All pages but the first enciphered, as "Encode database" does.
std::string Encoded(std::string bytes, std::size_t page_size, std::size_t secret_size, std::uint32_t key) {
  constexpr char kHeaderKey[] = "\xC7\xDA\x39\x6B";
  constexpr std::size_t kHeaderSecret = 0x18, kPageKey = 0x3E;
  ApplyRC4({kHeaderKey, 4}, bytes, kHeaderSecret, secret_size);
  bytes.replace(kPageKey, 4, LittleBytes(key, 4));
  ApplyRC4({kHeaderKey, 4}, bytes, kHeaderSecret, secret_size);
  for (std::uint32_t page = 1; page < bytes.size() / page_size; ++page)
    ApplyRC4(LittleBytes(key ^ page, 4), bytes, page * page_size, page_size);
  return bytes;
}

TEST_F(MdbReaderTest, EncodedDatabases) {
  for (const auto& [name, page, secret, key] :
       {std::tuple{"jet4", 4096U, 128U, 0x12345678U}, {"jet3", 2048U, 126U, 0x87654321U}}) {
    const TFormatCase files = FormatCase(name);
    std::string bytes = Encoded(files.Bytes("shop.mdb"), page, secret, key);
    EXPECT_EQ(ReaderText(*Open(bytes)), files.asks[0].answer);
    bytes[2 * page] ^= 1;
    EXPECT_EQ(MessageOf([&] { Open(bytes); }),
              "Cannot read " + path_ + ": it is encrypted, in a way that is not known here");
  }
}

TEST_F(MdbReaderTest, AceDatabases) {
  const TFormatCase files = FormatCase("jet4");
  for (const char version : {'\2', '\3', '\4', '\5', '\6'})
    EXPECT_EQ(ReaderText(*Open(AsAce(files.Bytes("shop.mdb"), version))), files.asks[0].answer)
        << static_cast<int>(version);
}

// Of a computed column: a head that ends with the size of the value, the value, a tail.
std::string Computed(const std::string& value) {
  return std::string(16, '\x01') + LittleBytes(value.size(), 4) + value + std::string(3, '\0');
}

TEST_F(MdbReaderTest, WhatAceHasAdded) {
  TMdbTable table = TableOf({MdbFixedColumn("big", EMdbType::BigInt), MdbFixedColumn("at", EMdbType::LongDateTime),
                             MdbVarColumn("sum", EMdbType::LongInt, 4), MdbVarColumn("text", EMdbType::Memo),
                             MdbVarColumn("both", EMdbType::Bool)},
                            {});
  for (std::size_t i = 2; i < table.columns.size(); ++i) table.columns[i].computed = true;
  TMdbBuilder builder(kMdbJet4, kDay);
  const std::string moment = "0000000000000730518:0000000432000000000:7";  // 2001-02-03, noon
  table.rows.push_back({kMdbJet4.row(
      table.columns, {LittleBytes(0x8000000000000001, 8), moment + '\0', Computed(LittleBytes(42, 4)),
                      LongValue(builder, Computed(Utf16OfText("ö")), ELongValue::Inline), Computed("\xFF")})});
  builder.AddTable("T", table);
  builder.AddTable("U", TableOf({MdbFixedColumn("files", EMdbType::Complex)}, {}));
  const auto reader = Open(AsAce(std::move(builder).Bytes(), 5));
  EXPECT_EQ(RowsText(reader->Rows("T", kAllRows)),
            "row int -9223372036854775807|moment 2001-02-03 12:00:00|int 42|text ö|truth True\n");
  EXPECT_EQ(MessageOf([&] { reader->Structure("U"); }),
            "Cannot read " + path_ + ": table U: column files holds attachments or several values in one");
}

TEST_F(MdbReaderTest, LongValues) {
  const struct {
    std::size_t size;
    std::vector<ELongValue> forms;
  } kCases[] = {{0, {ELongValue::Inline, ELongValue::OneRow}},
                {1, {ELongValue::Inline, ELongValue::OneRow, ELongValue::Chain}},
                {600, {ELongValue::Inline, ELongValue::OneRow, ELongValue::Chain}},
                {1900, {ELongValue::OneRow, ELongValue::Chain}},
                {1000000, {ELongValue::Chain}}};
  for (const auto& [size, forms] : kCases)
    for (const ELongValue form : forms) {
      std::string text;
      while (text.size() < size) text += "An ö in each. ";
      text.resize(size);
      TMdbBuilder builder(kMdbJet4, kDay);
      const std::string memo = LongValue(builder, Utf16OfText(text), form), object = LongValue(builder, text, form);
      const TMdbTable table =
          TableOf({MdbVarColumn("m", EMdbType::Memo), MdbVarColumn("o", EMdbType::Ole)}, {{memo, object}});
      const TRowsOfValues rows = Rows(table, std::move(builder));
      EXPECT_TRUE(rows.at(0) == (std::vector<TVariant>{*TextOfUtf16(Utf16OfText(text)), text})) << size;
    }
  TMdbBuilder none(kMdbJet4, kDay);
  const std::string packed = LongValue(none, "\xFF\xFEpacked", ELongValue::Inline);
  EXPECT_EQ(Rows(TableOf({MdbVarColumn("m", EMdbType::Memo)}, {{packed}, {""}})),
            (TRowsOfValues{{std::string("packed")}, {std::string()}}));
}

// 700 rows on as many pages, so that the map of the table's pages takes pages of its own; a definition on several.
TEST_F(MdbReaderTest, ManyPagesAndColumns) {
  constexpr std::int64_t kRows = 700, kColumns = 255;
  std::vector<TMdbValues> rows;
  TRowsOfValues expected;
  for (std::int64_t i = 0; i < kRows; ++i) {
    const std::string bytes(3000, static_cast<char>(i));
    rows.push_back({LittleBytes(static_cast<std::uint64_t>(i), 4), bytes});
    expected.push_back({i, bytes});
  }
  EXPECT_TRUE(Rows(TableOf({MdbFixedColumn("id", EMdbType::LongInt), MdbVarColumn("b", EMdbType::Binary, 3000)},
                           rows)) == expected);

  std::vector<TMdbColumn> columns;
  TMdbValues values;
  for (std::int64_t i = 0; i < kColumns; ++i) {
    const std::string name = Format("a rather long name for column %d", i);
    columns.push_back(i % 2 == 0 ? MdbFixedColumn(name, EMdbType::Int) : MdbVarColumn(name, EMdbType::Text, 20));
    values.push_back(i % 2 == 0 ? LittleBytes(static_cast<std::uint64_t>(i), 2) : Utf16OfText(std::to_string(i)));
  }
  TMdbTable wide = TableOf(columns, {values});
  wide.indexes.push_back({.name = "last", .parts = {{254}, {253, true}}, .flags = 0, .kind = 0});
  TMdbBuilder builder(kMdbJet4, kDay);
  builder.AddTable("Wide", wide);
  const auto reader = Open(std::move(builder).Bytes());
  EXPECT_EQ(KeysText(reader->Structure("Wide")),
            "key last(a rather long name for column 254,a rather long name for column 253)\n");
  const TRowsOfValues row = reader->Rows("Wide", kAllRows).rows;
  ASSERT_EQ(std::ssize(row.at(0)), kColumns);
  for (std::size_t i = 0; i < row[0].size(); ++i) EXPECT_EQ(VarToText(row[0][i]), std::to_string(i));
}

TEST_F(MdbReaderTest, ValuesThatAreNone) {
  const struct {
    TMdbColumn column;
    std::string bytes;
  } kValues[] = {
      {MdbFixedColumn("v", EMdbType::DateTime), DoubleBytes(1e9)},
      {MdbFixedColumn("v", EMdbType::DateTime), DoubleBytes(std::numeric_limits<double>::quiet_NaN())},
      {MdbFixedColumn("v", EMdbType::LongDateTime), std::string(42, '0')},
      {MdbVarColumn("v", EMdbType::Text, 20), "odd"},
      {MdbVarColumn("v", EMdbType::Memo), "short"},
  };
  for (const auto& [column, bytes] : kValues)
    EXPECT_EQ(MessageOf([&] { Rows(TableOf({column}, {{bytes}})); }),
              "Cannot read " + path_ + ": the file is damaged: table T: a value of column v is broken");
}

}  // namespace
}  // namespace velmora::testing
