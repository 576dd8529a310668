// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/mysql/MySQLTypes.h"

#include <gtest/gtest.h>

#include "support/CaseFile.h"
#include "support/MessageOf.h"
#include "support/ParserHost.h"
#include "util/Format.h"

namespace velmora::testing {
namespace {

TNeutralType Decoded(const std::string& word) {
  TNeutralType datatype = ntUnknown;
  TNumber length, precision, scale;
  TParserHost().DecodeColumn(word, 0, 0, 0, datatype, length, precision, scale);
  return datatype;
}

std::string Described(TNeutralType datatype, int size, int precision, bool detailed) {
  TMetaColumn column;
  column.table = "t";
  column.name = "c";
  column.datatype = datatype;
  column.size = size;
  column.precision = precision;
  std::string text;
  TParserHost().ColumnDescription(column, detailed, text);
  return text;
}

TNeutralType TypeOfTag(const std::string& tag) {
  int type = 0;
  while (type < ntUnknown && NeutralTag(static_cast<TNeutralType>(type)) != tag) ++type;
  return static_cast<TNeutralType>(type);
}

TEST(MySQLTypes, WordsAreReadAndTypesWritten) {
  for (const TStringList& row : ReadCaseRows("ddl/types.txt")) {
    ASSERT_EQ(row.size(), 6U) << row[0];
    TStringList words;
    SplitText(";", row[0], words);
    const TNeutralType type = TypeOfTag(row[1]);
    const int size = std::stoi(row[2]), precision = std::stoi(row[3]);
    for (const std::string& word : words) EXPECT_EQ(Decoded(word), type) << word;
    EXPECT_EQ(Described(type, size, precision, false), row[4]) << row[1];
    EXPECT_EQ(Described(type, size, precision, true), row[5]) << row[1];
  }
}

TEST(MySQLTypes, OthersAreRefused) {
  for (const auto& [datatype, size] : {std::pair{ntFloat, 25}, {ntDouble, 54}, {ntChar, 0}, {ntVarChar, 256}})
    EXPECT_EQ(MessageOf([&, &type = datatype, &bytes = size] { Described(type, bytes, 0, true); }),
              Format("TDBConn.ColumnDescription: Unhandled column type %d for column t/c", static_cast<int>(datatype)));
  for (const char* word : {"mediumint", "enum", "set", "integer", "bool", "binary", "varbinary", "INT", "bit", ""})
    EXPECT_EQ(MessageOf([&] { Decoded(word); }), std::string("TDBConn.DecodeColumn: Unhandled column type ") + word);
}

}  // namespace
}  // namespace velmora::testing
