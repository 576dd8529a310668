#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "mysqlclient/mysqlUtil.h"
#include "support/LiveDatabase.h"
#include "support/MessageOf.h"
#include "util/Errors.h"
#include "util/Format.h"

namespace velmora {
namespace {

using ::testing::HasSubstr;
using testing::MessageOf;
using testing::TLiveDatabase;
using namespace std::string_literals;

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
  std::string Answer(const std::string& sql) { return testing::Answer(database.Connection(), sql); }

  TLiveDatabase database;
};

struct TValueCase {
  const char* type;
  const char* literal;
  EFieldKind kind;
  TVariant value;
};

const TMoment kMoment{EncodeDate(2005, 1, 31) + EncodeTime(9, 5, 30)};
const TValueCase kValues[] = {
    {"tinyint(1)", "-5", EFieldKind::SmallInt, std::int64_t{-5}},
    {"smallint unsigned", "65535", EFieldKind::Word, std::int64_t{65535}},
    {"mediumint", "-8388608", EFieldKind::Integer, std::int64_t{-8388608}},
    {"int", "-2147483648", EFieldKind::Integer, std::int64_t{-2147483648}},
    {"int unsigned", "4294967295", EFieldKind::LargeInt, std::int64_t{4294967295}},
    {"int(8) zerofill", "42", EFieldKind::LargeInt, std::int64_t{42}},
    {"int auto_increment primary key", "7", EFieldKind::AutoInc, std::int64_t{7}},
    {"bigint", "-9223372036854775808", EFieldKind::LargeInt, INT64_MIN},
    {"bigint unsigned", "18446744073709551615", EFieldKind::LargeInt, "18446744073709551615"s},
    {"year", "2005", EFieldKind::Word, std::int64_t{2005}},
    {"bit(12)", "b'101000000001'", EFieldKind::LargeInt, std::int64_t{0xA01}},
    {"bit(64)", "18446744073709551615", EFieldKind::LargeInt, "18446744073709551615"s},
    {"decimal(40,10)", "-123456789012345678901234567890.0123456789", EFieldKind::Bcd,
     "-123456789012345678901234567890.0123456789"s},
    {"float", "0.5", EFieldKind::Float, 0.5},
    {"double", "-1.7976931348623157e308", EFieldKind::Float, -1.7976931348623157e308},
    {"date", "'2005-01-31'", EFieldKind::Date, TMoment{EncodeDate(2005, 1, 31)}},
    {"date", "'0001-01-01'", EFieldKind::Date, TMoment{EncodeDate(1, 1, 1)}},
    {"date", "'9999-12-31'", EFieldKind::Date, TMoment{EncodeDate(9999, 12, 31)}},
    {"date", "'0000-00-00'", EFieldKind::Date, {}},
    {"date", "'2005-00-10'", EFieldKind::Date, "2005-00-10"s},
    {"date", "'2005-02-31'", EFieldKind::Date, "2005-02-31"s},
    {"time", "'09:05:30'", EFieldKind::Time, TMoment{EncodeTime(9, 5, 30)}},
    {"time", "'838:59:59'", EFieldKind::Time, "838:59:59"s},
    {"time", "'-01:00:00'", EFieldKind::Time, "-01:00:00"s},
    {"datetime", "'2005-01-31 09:05:30'", EFieldKind::DateTime, kMoment},
    {"datetime(3)", "'2005-01-31 09:05:30.250'", EFieldKind::DateTime, TMoment{kMoment.value + 0.25 / 86400}},
    {"datetime(6)", "'9999-12-31 23:59:59.999999'", EFieldKind::DateTime, TMoment{EncodeDate(9999, 12, 31) + 1}},
    {"datetime", "'0000-00-00 00:00:00'", EFieldKind::DateTime, {}},
    {"timestamp", "'2005-01-31 09:05:30'", EFieldKind::TimeStamp, kMoment},
    {"char(5)", "'a雪'", EFieldKind::FixedChar, "a雪"s},
    {"varchar(300)", "'it''s\\0 \\\\'", EFieldKind::String, "it's\0 \\"s},
    {"enum('Ž','b')", "'Ž'", EFieldKind::String, "Ž"s},
    {"set('a','b')", "'a,b'", EFieldKind::String, "a,b"s},
    {"binary(3)", "x'00FF'", EFieldKind::Bytes, "\0\xFF\0"s},
    {"varbinary(9)", "x'00FF41'", EFieldKind::VarBytes, "\0\xFF\x41"s},
    {"blob", "x'00FF41'", EFieldKind::Blob, "\0\xFF\x41"s},
    {"longtext", "repeat('雪', 100000)", EFieldKind::Memo, {}},
    {"json", "'{\"a\": 1}'", EFieldKind::Memo, "{\"a\": 1}"s},
    {"varchar(3)", "null", EFieldKind::String, {}},
    {"varchar(3)", "''", EFieldKind::String, ""s},
};

TEST_P(LiveQuery, ValuesOfEveryType) {
  database.Run("set sql_mode = 'ALLOW_INVALID_DATES'");
  for (const TValueCase& row : kValues) {
    SCOPED_TRACE(Format("%s %s", row.type, row.literal));
    database.Run(Format("create or replace table v (a %s) engine=MyISAM", row.type));
    database.Run(Format("insert into v values (%s)", row.literal));
    for (const bool blocks : {false, true}) {
      const auto query = blocks ? InBlocks("select a from v", 5) : Opened("select a from v");
      EXPECT_EQ(query->Fields()[0].name, "a");
      EXPECT_EQ(FieldKindName(query->Fields()[0].kind), FieldKindName(row.kind));
      if (row.type == "longtext"s)
        EXPECT_EQ(VarToText(query->Value(0)).size(), 300000U);
      else if (const auto* moment = std::get_if<TMoment>(&row.value); moment != nullptr && !VarIsNull(query->Value(0)))
        EXPECT_NEAR(std::get<TMoment>(query->Value(0)).value, moment->value, 1e-9);
      else
        EXPECT_TRUE(query->Value(0) == row.value) << VarToText(query->Value(0));
      query->Next();
      EXPECT_TRUE(query->Eof());
      EXPECT_TRUE(VarIsNull(query->Value(0)));
    }
  }
}

TEST_P(LiveQuery, TimesAreTextsAsSentWhereAMomentSaysLess) {
  database.Connection().Options.TimesAsSent = true;
  database.Run("set sql_mode = 'ALLOW_INVALID_DATES'");
  for (const TValueCase& row : kValues) {
    if (row.kind < EFieldKind::Date || row.kind > EFieldKind::TimeStamp) continue;
    database.Run(Format("create or replace table v (a %s) engine=MyISAM", row.type));
    database.Run(Format("insert into v values (%s)", row.literal));
    const std::string literal = row.literal;
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
  const auto query = Opened("select seq from seq_1_to_100");
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
    const auto query = InBlocks(Format("select seq from seq_1_to_50 where seq <= %d", rows), 25);
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
  const auto first = InBlocks("select seq from seq_1_to_1000", 10);
  const auto second = InBlocks("select seq from seq_1_to_2000", 10);  // keeps the rest of the first
  first->Next();
  EXPECT_EQ(Answer("select 7"), "7");
  EXPECT_EQ(Sum(*second), 2001000);
  EXPECT_EQ(Sum(*first), 500500 - 1);
  EXPECT_EQ(first->RecordCount(), 1000);
}

// Nobody waits for rows that are not wanted, and no server is told to stop that may be another one.
TEST_P(LiveQuery, BlocksClosedHalfWayEndTheConnection) {
  const auto query = InBlocks("select seq, repeat('x', 1000) from seq_1_to_100000000", 10);
  query->Next();
  query->Close();
  EXPECT_FALSE(database.Connection().GetConnected());
  database.Connection().SetConnected(true);
  query->Open();
  EXPECT_EQ(VarToInt(query->Value(0)), 1);
}

TEST_P(LiveQuery, BlocksAreCutOffByADisconnect) {
  const auto query = InBlocks("select seq from seq_1_to_1000", 10);
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
  database.Run("insert into t select seq from seq_1_to_500");
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

// No table's text grows that long, but a view's does, and is asked for in the same words.
TEST_P(LiveQuery, LongCreationText) {
  const std::string text(1 << 20, 'x');
  database.Run("create view v as select '" + text + "' as a");
  std::vector<TVariant> row;
  EXPECT_EQ(MySqlQueryRow("show create table v", database.Connection(), row), 1);
  EXPECT_THAT(VarToText(row[1]), HasSubstr("select '" + text + "' AS `a`"));
}

INSTANTIATE_TEST_SUITE_P(Clients, LiveQuery, ::testing::Bool(), testing::ClientName);

}  // namespace
}  // namespace velmora
