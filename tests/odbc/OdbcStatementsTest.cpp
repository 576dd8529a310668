// SPDX-License-Identifier: GPL-3.0-or-later
#include "odbc/OdbcStatements.h"

#include <gtest/gtest.h>

#include "odbc/OdbcStrings.h"
#include "support/MessageOf.h"

namespace velmora {
namespace {

TEST(OdbcStatementsTest, Adapting) {
  const struct {
    const char* sql;
    const char* quote;
    const char* adapted;
    std::int64_t limit;
  } kCases[] = {
      {"select top 1 * from [items] order by 1", "\"", "select * from \"items\" order by 1", 1},
      {"  SELECT\tTop  20 \n [a b] from [t]", "`", "select `a b` from `t`", 20},
      {"select * from [t] where a in (select top 3 a from [t])", "`",
       "select * from `t` where a in (select top 3 a from `t`)", kNoLimit},
      {"select top 0 * from t", "\"", "select * from t", 0},
      {"select top (1) * from t", "\"", "select top (1) * from t", kNoLimit},
      {"select top 99999999999999999999 * from t", "\"", "select top 99999999999999999999 * from t", kNoLimit},
      {"select topmost from [t]", "\"", "select topmost from \"t\"", kNoLimit},
      {"select top", "\"", "select top", kNoLimit},
      {"drop table [it's \"x\"]", "\"", "drop table \"it's \"\"x\"\"\"", kNoLimit},
      {"drop table [it`s]", "`", "drop table `it``s`", kNoLimit},
      {"select '[a]', 'it''s [b]', \"[c]\", [d]", "\"", "select '[a]', 'it''s [b]', \"[c]\", \"d\"", kNoLimit},
      {"select `[a]`, [b]", "`", "select `[a]`, `b`", kNoLimit},
      {"select [a], 'no end [b]", "\"", "select \"a\", 'no end [b]", kNoLimit},
      {"select [a from t", "\"", "select [a from t", kNoLimit},
      {"select [größe Ω], [] from t", "\"", "select \"größe Ω\", \"\" from t", kNoLimit},
      {"select [a b] from t", " ", "select a b from t", kNoLimit},
      {"select [a] from t", "", "select a from t", kNoLimit},
      {"", "\"", "", kNoLimit},
  };
  for (const auto& c : kCases) {
    const TOdbcCommand command = AdaptStatement(c.sql, c.quote);
    EXPECT_EQ(command.sql, c.adapted);
    EXPECT_EQ(command.limit, c.limit) << c.sql;
  }
}

TEST(OdbcStringsTest, SQLServer) {
  const struct {
    std::vector<std::pair<const char*, const char*>> properties;
    const char* text;
  } kCases[] = {
      {{}, "Server=localhost;UID=;PWD="},
      {{{"Data Source", "."}, {"Initial Catalog", "shop"}, {"User ID", "sa"}, {"Password", "secret"}},
       "Server=localhost;Database=shop;UID=sa;PWD=secret"},
      {{{"Data Source", "(LOCAL)\\EXPRESS"}}, "Server=localhost\\EXPRESS;UID=;PWD="},
      {{{"Data Source", "db.example,1433"}}, "Server=db.example;Port=1433;UID=;PWD="},
      {{{"Data Source", " h\\inst , 1500 "}}, "Server=h;Port=1500;UID=;PWD="},
      {{{"Data Source", "h"}, {"Integrated Security", "sspi"}, {"User ID", "sa"}, {"Password", "x"}},
       "Server=h;Trusted_Connection=Yes"},
      {{{"User ID", "a b"}, {"Password", "p;w}{=d "}, {"Initial Catalog", "größe"}},
       "Server=localhost;Database=gr\xF6\xDF\x65;UID={a b};PWD={p;w}{=d }"},
      {{{"Password", "x;Server=evil"}, {"Data Source", "h;PWD=y"}}, "Server={h;PWD=y};UID=;PWD={x;Server=evil}"},
  };
  for (const auto& c : kCases) {
    TInitString properties;
    for (const auto& [key, value] : c.properties) properties.Set(key, value);
    EXPECT_EQ(FreeTdsString(properties),
              std::string("DRIVER={FreeTDS};") + c.text + ";ClientCharset=UTF-8;TDS_Version=7.4");
  }
  const std::pair<const char*, const char*> kNotTaken[] = {
      {"secret};", "The ODBC driver for SQL Server takes no \"};\" in a password"},
      {"Łódź", "The ODBC driver for SQL Server takes only letters of ISO 8859-1 in a password"},
  };
  for (const auto& [password, message] : kNotTaken) {
    TInitString properties;
    properties.Set("Password", password);
    EXPECT_EQ(testing::MessageOf([&] { FreeTdsString(properties); }), message);
  }
  for (const char* port : {"x", "", "0", "65536", "-1", "1433,1"}) {
    TInitString properties;
    properties.Set("Data Source", std::string("h,") + port);
    EXPECT_EQ(testing::MessageOf([&] { FreeTdsString(properties); }),
              "\"" + std::string(port) + "\" is no port of a server");
  }
}

TEST(OdbcStringsTest, Timeout) {
  TInitString properties;
  EXPECT_EQ(LoginTimeout(properties), std::nullopt);
  properties.Set("Connect Timeout", "5");
  EXPECT_EQ(LoginTimeout(properties), 5);
  for (const char* bad : {"soon", "-1", "99999999999"}) {
    properties.Set("Connect Timeout", bad);
    EXPECT_EQ(testing::MessageOf([&] { LoginTimeout(properties); }), "\"Connect Timeout\" is no number of seconds");
  }
}

}  // namespace
}  // namespace velmora
