// SPDX-License-Identifier: GPL-3.0-or-later
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "support/CaseFile.h"
#include "support/LiveDatabase.h"
#include "support/MessageOf.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {
namespace {

using ::testing::HasSubstr;
using testing::MessageOf;
using testing::Numbers;
using testing::TLiveDatabase;

class LiveQuery : public testing::TWithBothClients {
 protected:
  std::unique_ptr<TMyQuery> Opened(const std::string& sql) {
    auto query = database.Connection().NewQuery();
    query->SQL = sql;
    query->Open();
    return query;
  }
  std::unique_ptr<TMyQuery> InBlocks(const std::string& sql, int rows) {
    auto query = database.Connection().NewQuery();
    query->SQL = sql;
    query->UniDirectional = true;
    query->FetchAll = false;
    query->FetchRows = rows;
    query->Open();
    return query;
  }
  // The first column from here to the end, and the rest is as it should be.
  static std::int64_t Sum(TMyQuery& query) {
    std::int64_t sum = 0;
    for (; !query.Eof(); query.Next()) sum += VarToInt(query.Value(0));
    return sum;
  }
  // v, of one column a with one row.
  void MakeTable(const std::string& type, const std::string& literal) {
    database.Run("set sql_mode = 'ALLOW_INVALID_DATES'");
    database.Run("drop table if exists v");
    database.Run(Format("create table v (a %s) engine=MyISAM", type));
    database.Run(Format("insert into v values (%s)", literal));
  }
  std::string Answer(const std::string& sql) { return testing::Answer(database.Connection(), sql); }

  TLiveDatabase database;
};

std::string Shown(const TMoment& moment) {
  if (moment.value >= EncodeDate(9999, 12, 31) + 1) return "past the last year";
  const long milliseconds = std::lround(moment.value * 86400000);
  const long rest = milliseconds % 1000;
  return "moment " + DateTimeText(moment.value) + (rest == 0 ? "" : Format(" and %d ms", rest));
}

std::string Shown(const TVariant& value) {
  constexpr std::size_t kLong = 100;
  if (VarIsNull(value)) return "nothing";
  if (const auto* moment = std::get_if<TMoment>(&value)) return Shown(*moment);
  const std::string text = VarToText(value);
  if (std::holds_alternative<std::int64_t>(value)) return "number " + text;
  if (const auto* number = std::get_if<double>(&value)) return Format("float %.17g", *number);
  return text.size() > kLong ? Format("text of %d bytes", text.size()) : "text \"" + ShownText(text) + "\"";
}

TEST_P(LiveQuery, ValuesOfEveryType) {
  for (const TStringList& row : testing::ReadCaseRows("live/values.txt")) {
    SCOPED_TRACE(row.at(0) + " " + row.at(1));
    MakeTable(row[0], row[1]);
    for (const bool blocks : {false, true}) {
      const auto query = blocks ? InBlocks("select a from v", 5) : Opened("select a from v");
      EXPECT_EQ(query->Fields()[0].name, "a");
      EXPECT_EQ(FieldKindName(query->Fields()[0].kind), row.at(2));
      EXPECT_EQ(Shown(query->Value(0)), row.at(3));
      query->Next();
      EXPECT_TRUE(query->Eof() && VarIsNull(query->Value(0)));
    }
  }
}

TEST_P(LiveQuery, TimesAreTextsAsSentWhereAMomentSaysLess) {
  database.Connection().Options.TimesAsSent = true;
  for (const TStringList& row : testing::ReadCaseRows("live/values.txt")) {
    if (!InList(row.at(2), {"date", "time", "date-time", "timestamp"})) continue;
    const std::string& literal = row[1];
    MakeTable(row[0], literal);
    const bool says_less = literal.find('.') != std::string::npos || literal.find("'0000") == 0;
    for (const auto& query : {Opened("select a from v"), InBlocks("select a from v", 5)})
      EXPECT_EQ(says_less ? "'" + VarToText(query->Value(0)) + "'" : literal, literal);
  }
}

TEST_P(LiveQuery, AnErrorWithoutATextShowsItsNumber) {
  EXPECT_EQ(MessageOf([&] { database.Run("signal sqlstate '45000' set mysql_errno = 4321, message_text = ''"); }),
            "Error 4321, of which the server says no more");
}

TEST_P(LiveQuery, SizesAreInCharactersOrBytes) {
  database.Run("create table t (a varchar(64), b varbinary(64), c char(3), d text, e int)");
  const auto query = Opened("select * from t");
  std::vector<std::int64_t> sizes;
  for (const TFieldDef& field : query->Fields()) sizes.push_back(field.size);
  EXPECT_EQ(sizes, (std::vector<std::int64_t>{64, 64, 3, 0, 0}));
}

TEST_P(LiveQuery, StoredRowsGoBackToTheFirst) {
  const auto query = Opened("select seq from " + Numbers(100));
  EXPECT_EQ(query->RecordCount(), 100);
  EXPECT_EQ(Sum(*query), 5050);
  query->First();
  EXPECT_EQ(Sum(*query), 5050);
  EXPECT_THROW(query->Value(1), EListError);
  query->Close();
  EXPECT_EQ(query->RecordCount(), 0);
  query->Open();
  EXPECT_EQ(Sum(*query), 5050);
}

TEST_P(LiveQuery, BlocksAtEveryEdge) {
  for (const int rows : {0, 1, 24, 25, 26, 50, 51}) {
    const auto query = InBlocks(Format("select seq from %s where seq <= %d", Numbers(50), rows), 25);
    EXPECT_EQ(query->RecordCount(), std::min(rows, 25));
    EXPECT_EQ(query->Eof(), rows == 0);
    query->First();
    EXPECT_EQ(Sum(*query), std::min(rows, 50) * (std::min(rows, 50) + 1) / 2);
    EXPECT_EQ(query->RecordCount(), std::min(rows, 50));
    EXPECT_TRUE(VarIsNull(query->Value(0)));
    EXPECT_EQ(MessageOf([&] { query->First(); }), rows == 0 ? "nothing raised" : "These rows can only be read forward");
    query->Close();
    EXPECT_EQ(Answer("select 5"), "5");
  }
}

TEST_P(LiveQuery, BlocksLeaveTheConnectionToOthers) {
  const auto first = InBlocks("select seq from " + Numbers(1000), 10);
  const auto second = InBlocks("select seq from " + Numbers(2000), 10);  // keeps the rest of the first
  first->Next();
  EXPECT_EQ(Answer("select 7"), "7");
  EXPECT_EQ(Sum(*second), 2001000);
  EXPECT_EQ(Sum(*first), 500500 - 1);
  EXPECT_EQ(first->RecordCount(), 1000);
}

// Nobody waits for rows that are not wanted, and no server is told to stop that may be another one.
TEST_P(LiveQuery, BlocksClosedHalfWayEndTheConnection) {
  const auto query = InBlocks("select seq, repeat('x', 1000) from " + Numbers(200000), 10);
  query->Next();
  query->Close();
  EXPECT_FALSE(database.Connection().GetConnected());
  database.Connection().SetConnected(true);
  query->Open();
  EXPECT_EQ(VarToInt(query->Value(0)), 1);
}

TEST_P(LiveQuery, BlocksAreCutOffByADisconnect) {
  const auto query = InBlocks("select seq from " + Numbers(1000), 10);
  database.Connection().SetConnected(false);
  EXPECT_EQ(MessageOf([&] {
              while (!query->Eof()) query->Next();
            }),
            "The connection was closed before all rows were read");
  database.Connection().SetConnected(true);
  EXPECT_EQ(Answer("select 7"), "7");
}

TEST_P(LiveQuery, FaultInTheMiddleOfTheRows) {
  database.Run("create table t (a int)");
  database.Run("insert into t select seq from " + Numbers(500));
  const std::string sql = "select a, (select b.a from t b where b.a = t.a or t.a = 499) from t";
  EXPECT_THAT(MessageOf([&] {
                const auto query = InBlocks(sql, 10);
                while (!query->Eof()) query->Next();
              }),
              HasSubstr("Subquery returns more than 1 row"));
  EXPECT_THROW(Opened(sql), EMySqlException);
  EXPECT_EQ(Answer("select 7"), "7");
  EXPECT_TRUE(database.Connection().GetConnected());
}

TEST_P(LiveQuery, ExecuteCountsRowsAndThrowsThemAway) {
  const auto query = database.Connection().NewQuery();
  const struct {
    const char* sql;
    std::int64_t rows;
  } kCases[] = {{"create table t (a int)", 0},
                {"insert into t values (1),(2),(3)", 3},
                {"update t set a = 5 where a > 1", 2},
                {"delete from t where a = 9", 0},
                {"select * from t", 3},
                {"set @x = 1", 0},
                {"drop table t", 0}};
  for (const auto& [sql, rows] : kCases) {
    query->SQL = sql;
    query->Execute();
    EXPECT_EQ(query->RowsAffected(), rows) << sql;
    EXPECT_FALSE(query->Active());
  }
}

TEST_P(LiveQuery, OpenOfAStatementWithoutRows) {
  for (const bool blocks : {false, true}) {
    const auto query = blocks ? InBlocks("set @x = 1", 5) : Opened("set @x = 1");
    EXPECT_TRUE(query->Fields().empty());
    EXPECT_TRUE(query->Eof());
  }
}

TEST_P(LiveQuery, ProceduresGiveTheirFirstRows) {
  database.Run("create procedure p() begin select 1; select 2; set @x = 3; end");
  database.Run("create procedure bad() begin select 1; select 2 from nowhere; end");
  EXPECT_EQ(Answer("call p()"), "1");
  EXPECT_EQ(Sum(*InBlocks("call p()", 5)), 1);
  InBlocks("call p()", 5)->Close();
  database.Run("call p()");
  EXPECT_THROW(Opened("call bad()"), EMySqlException);
  EXPECT_THROW(database.Run("call bad()"), EMySqlException);
  EXPECT_EQ(Answer("select 7"), "7");
}

TEST_P(LiveQuery, StatementsTheServerRefuses) {
  std::string columns = "a0 int";
  for (int i = 1; i <= 4100; ++i) columns += Format(",a%d int", i);
  const struct {
    std::string sql;
    const char* message;
  } kCases[] = {{"create table wide (" + columns + ")", "Too many columns"},
                {"", "Query was empty"},
                {"select 1; select 2", "You have an error in your SQL syntax"},
                {"drop table nowhere", "nowhere'"},
                {"show create table `no``where`", "no`where' doesn't exist"}};
  for (const auto& [sql, message] : kCases) {
    EXPECT_THAT(MessageOf([&, &sql = sql] { database.Run(sql); }), HasSubstr(message));
    EXPECT_THAT(MessageOf([&, &sql = sql] { Opened(sql); }), HasSubstr(message));
  }
  EXPECT_EQ(Answer("select 7"), "7");
}

INSTANTIATE_TEST_SUITE_P(Clients, LiveQuery, ::testing::Bool(), testing::ClientName);

}  // namespace
}  // namespace velmora
