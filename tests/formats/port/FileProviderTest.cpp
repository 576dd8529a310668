// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/port/FileProvider.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "formats/port/FileStatement.h"
#include "support/MessageOf.h"
#include "util/Variant.h"

namespace velmora::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

// Table "t" with a text, a number and records 1, 2, 4 and 7; counts what it is asked for.
class TPlayedReader : public TFileReader {
 public:
  explicit TPlayedReader(std::vector<std::string>& log) : log_(log) {}

  std::vector<TOLEDBTableRow> Tables() override { return {{"t", "TABLE"}}; }
  TFileTable Structure(const std::string& table) override {
    log_.push_back("structure " + table);
    TFileTable found;
    found.columns.resize(2);
    found.columns[0].COLUMN_NAME = "name";
    found.columns[1].COLUMN_NAME = "Id";
    found.indexes.resize(1);
    found.indexes[0].INDEX_NAME = "pk";
    found.fields = {{"name", EFieldKind::String, 5}, {"Id", EFieldKind::Integer, 0}};
    found.is_autoincrement = {false, true};
    return found;
  }
  TFileRows Rows(const std::string& table, std::int64_t limit) override {
    log_.push_back("rows " + table + " " + std::to_string(limit));
    return {.rows = {{std::string("d"), std::int64_t{10}},
                     {std::string("c"), std::int64_t{9}},
                     {TVariant(), std::int64_t{30}},
                     {std::string("a"), std::int64_t{40}}},
            .numbers = {1, 2, 4, 7}};
  }

 private:
  std::vector<std::string>& log_;
};

class FileProviderTest : public ::testing::Test {
 protected:
  FileProviderTest() { provider_->Initialize(); }

  // The second field of each row.
  std::vector<std::string> Ids(const std::string& sql) {
    TOLEDBRowset rowset = provider_->Open(sql);
    if (rowset.read_rows) rowset.rows = rowset.read_rows();
    std::vector<std::string> ids;
    for (const auto& row : rowset.rows) ids.push_back(VarToText(row.back()));
    return ids;
  }

  std::vector<std::string> log_;
  std::unique_ptr<TOLEDBProvider> provider_ = NewFileProvider([this] { return std::make_unique<TPlayedReader>(log_); });
};

TEST_F(FileProviderTest, EachFormOfStatementTakesItsRows) {
  EXPECT_THAT(Ids("select * from [t]"), ElementsAre("10", "9", "30", "40"));
  EXPECT_THAT(Ids("select count(*) from [t]"), ElementsAre("4"));
  EXPECT_THAT(provider_->Open("select count(*) from [t]").fields,
              ElementsAre(::testing::FieldsAre("count", EFieldKind::LargeInt, 0)));
  EXPECT_THAT(Ids("select top 2 * from [t]"), ElementsAre("10", "9"));
  EXPECT_EQ(log_.back(), "rows t 2");
  EXPECT_THAT(Ids("select top 3 * from [t] order by 1"), ElementsAre("30", "40", "9"));
  EXPECT_EQ(log_.back(), "rows t -1") << "an order needs all rows";
  EXPECT_THAT(Ids("select top 2 * from [t] where id not in (select top 1 id from [t])"), ElementsAre("9", "30"));
  EXPECT_THAT(Ids("select top 9 * from [t] where Id not in (select top 0 Id from [t])"),
              ElementsAre("10", "9", "30", "40"));
  EXPECT_THAT(Ids("select * from [t] where recno() between 2 and 6"), ElementsAre("9", "30"));
  EXPECT_EQ(MessageOf([&] { Ids("select top 2 * from [t] where x not in (select top 1 x from [t])"); }),
            "Field 'x' not found");
}

// The probe of a structure asks for one row in order and never looks at it.
TEST_F(FileProviderTest, RowsAreReadWhenOneIsAskedFor) {
  TOLEDBRowset probe = provider_->Open("select top 1 * from [t] order by 1");
  EXPECT_THAT(probe.is_autoincrement, ElementsAre(false, true));
  EXPECT_THAT(log_, ElementsAre("structure t"));
  provider_->Uninitialize();
  EXPECT_EQ(probe.read_rows().size(), 1U) << "rows can be read once the provider is closed";
}

TEST_F(FileProviderTest, ColumnsAndIndexesComeFromOneReading) {
  EXPECT_EQ(provider_->Columns("t").size(), 2U);
  EXPECT_EQ(provider_->Indexes("t").size(), 1U);
  EXPECT_THAT(log_, ElementsAre("structure t"));
  EXPECT_EQ(provider_->Indexes("t").size(), 1U);
  EXPECT_EQ(log_.size(), 2U) << "what was asked for again is read again";
  provider_->Columns("t");
  provider_->Indexes("u");
  EXPECT_EQ(log_.back(), "structure u");
}

TEST_F(FileProviderTest, WhatFilesCannotDoIsSaid) {
  EXPECT_THAT(MessageOf([&] { provider_->Execute("drop table [t]"); }), HasSubstr("read only"));
  EXPECT_THAT(MessageOf([&] { provider_->StartTransaction(4096); }), HasSubstr("read only"));
  EXPECT_THAT(MessageOf([&] { provider_->CreateDataSource(); }), HasSubstr("cannot be made"));
  EXPECT_THAT(provider_->Catalogs(), IsEmpty());
  provider_->Uninitialize();
  EXPECT_EQ(MessageOf([&] { provider_->Tables(); }), "Not connected");
}

TEST(FileStatementTest, NamesMayHoldBrackets) {
  for (const char* name : {"a", "a b", "a]b", "[", "] where ", "x] order by 1", "Sheet1$", "'x y$'", "ü"}) {
    const std::string table = name;
    EXPECT_EQ(ParseFileStatement("select * from [" + table + "]").table, table);
    const TFileStatement chunk = ParseFileStatement("select top 5 * from [" + table +
                                                    "] where k l not in (select top 3 k l from [" + table + "])");
    EXPECT_EQ(chunk.table, table);
    EXPECT_EQ(chunk.key, "k l");
    EXPECT_EQ(chunk.skip, 3);
    EXPECT_EQ(*chunk.top, 5);
  }
}

TEST(FileStatementTest, OtherStatementsAreRefusedByTheirText) {
  for (const char* sql :
       {"", "select", "select 1", "select * from t", "select * from [t", "select * from [t] order by 1",
        "select top x * from [t]", "select top -1 * from [t]", "select top 99999999999999999999 * from [t]",
        "select top 1 * from [t] where recno() between 1 and 2", "select count(*) from [t] where a=1",
        "select * from [t] where recno() between 1 and 2 or 1=1", "delete from [t]",
        "select top 1 * from [t] where a not in (select top 1 b from [t])",
        "select top 1 * from [t] where a not in (select top 1 a from [u])"})
    EXPECT_THAT(MessageOf([&] { ParseFileStatement(sql); }), HasSubstr("cannot be run: " + std::string(sql))) << sql;
}

TEST(FileStatementTest, OrderHoldsForValuesOfEveryKind) {
  const std::vector<TFieldDef> fields = {{"v", EFieldKind::Other, 0}};
  TFileStatement statement = ParseFileStatement("select top 99 * from [t] order by 1");
  TFileRows rows;
  for (const TVariant& value :
       std::vector<TVariant>{std::string("b"), TMoment{2}, 0.5, std::int64_t{9007199254740993},
                             std::int64_t{9007199254740992}, TVariant(), TMoment{1}, true, -1.5, std::string("a")})
    rows.rows.push_back({value});
  std::vector<std::string> order;
  for (const auto& row : SelectRows(statement, fields, rows)) order.push_back(VarToText(row[0]));
  EXPECT_THAT(order, ElementsAre("", "-1.5", "0.5", "True", "9007199254740992", "9007199254740993",
                                 VarToText(TMoment{1}), VarToText(TMoment{2}), "a", "b"));
}

TEST(FileStatementTest, KeysThatAreNearlyEqualAreTwo) {
  const TFileStatement statement =
      ParseFileStatement("select top 9 * from [t] where k not in (select top 1 k from [t])");
  const TFileRows rows{.rows = {{1.0}, {1.0000000000000002}, {std::int64_t{1}}, {std::string("1")}}, .numbers = {}};
  EXPECT_EQ(SelectRows(statement, {{"k", EFieldKind::Float, 0}}, rows),
            (TRowsOfValues{{1.0000000000000002}, {std::string("1")}}));
}

}  // namespace
}  // namespace velmora::testing
