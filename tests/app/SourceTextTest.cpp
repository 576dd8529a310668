// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/SourceText.h"

#include <gtest/gtest.h>

#include "app/Sources.h"
#include "engines/mysql/DBConnMySQL.h"
#include "support/MessageOf.h"

namespace velmora {
namespace {

using testing::MessageOf;

std::string Told(const TServerAddress& address) {
  return address.username + "|" + address.password.value_or("-") + "|" + address.server + "|" +
         std::to_string(address.port) + "|" + address.database;
}

TEST(SourceTextTest, ServerAddresses) {
  const struct {
    const char* source;
    const char* told;
  } cases[] = {
      {"mysql://u@h/d", "u|-|h|0|d"},
      {"mysql://u:p@h:3307/d", "u|p|h|3307|d"},
      {"mysql://u:@h/d", "u||h|0|d"},
      {"mysql://u@/d", "u|-||0|d"},
      {"mysql://u@[::1]:3307/d", "u|-|::1|3307|d"},
      {"mysql://u@[fe80::1]/d", "u|-|fe80::1|0|d"},
      {"mysql://a%40b:p%2Fq%3a@h/my%20db", "a@b|p/q:|h|0|my db"},
      {"mysql://u:p@q@h/d", "u|p@q|h|0|d"},
      {"mysql://u:a:b@h/d", "u|a:b|h|0|d"},
  };
  for (const auto& c : cases) EXPECT_EQ(Told(ParseServerAddress(c.source)), c.told) << c.source;
}

TEST(SourceTextTest, BadAddressesAreNamedWithoutTheirPassword) {
  const struct {
    const char* source;
    const char* message;
  } cases[] = {
      {"mysql://u:secret@h", "The database is missing"},
      {"mysql://u:secret@h/", "The database is missing"},
      {"mysql://h/d", "The user is missing"},
      {"mysql://u:secret@h:0/d", "\"0\" is no port"},
      {"mysql://u:secret@h:x/d", "\"x\" is no port"},
      {"mysql://u:secret@h:65536/d", "\"65536\" is no port"},
      {"mysql://u:secret@[::1/d", "The bracket"},
      {"mysql://u:secret@[::1]3/d", "A port is missing"},
      {"mysql://u:secret%4@h/d", "A \"%\" must be followed"},
      {"mysql://u:secret@h/%zz", "A \"%\" must be followed"},
  };
  for (const auto& c : cases) {
    const std::string message = MessageOf([&] { ParseServerAddress(c.source); });
    EXPECT_TRUE(message.starts_with(c.message)) << c.source << ": " << message;
    EXPECT_EQ(message.find("secret"), std::string::npos) << message;
  }
}

TEST(SourceTextTest, SourcesByKeys) {
  const std::optional<TEngineSource> source = ParseEngineSource("mysql: Server = x ;PORT=1;password=a%3Bb%25;;empty=");
  ASSERT_TRUE(source);
  EXPECT_EQ(source->engine->engine, kEngineMySQL);
  EXPECT_EQ(source->values, (std::map<std::string, std::string>{
                                {"server", " x "}, {"port", "1"}, {"password", "a;b%"}, {"empty", ""}}));
  EXPECT_EQ(ParseEngineSource("Interbase/Firebird:database=/x")->engine->engine, kEngineInterbase);
  EXPECT_FALSE(ParseEngineSource("nothing:a=b"));
  EXPECT_FALSE(ParseEngineSource("/a/b.sql"));
  EXPECT_EQ(MessageOf([] { ParseEngineSource("MySQL:server"); }),
            "A key of \"MySQL\" has no value: write key=value;key=value");
}

TEST(SourcesTest, AServerGetsItsParametersAndAsksForAMissingPassword) {
  TStringList asked, warned;
  TSourceSettings settings;
  settings.AskPassword = [&](const std::string& account) {
    asked.push_back(account);
    return "answered";
  };
  settings.Warn = [&](const std::string& text) { warned.push_back(text); };
  const auto password = [&](const std::string& source) {
    const std::unique_ptr<TDBConn> conn = MakeTarget(source, settings);
    return dynamic_cast<TDBConnMySQL&>(*conn).password();
  };
  EXPECT_EQ(password("mysql://u@h/d"), "answered");
  EXPECT_EQ(password("MySQL:username=u;database=d"), "answered");
  EXPECT_EQ(asked, (TStringList{"u@h", "u@localhost"}));
  EXPECT_TRUE(warned.empty());
  EXPECT_EQ(password("MYSQL://u:@h/d"), "");
  EXPECT_TRUE(warned.empty()) << "an empty password is no secret";
  EXPECT_EQ(password("mysql://u:given@h/d"), "given");
  EXPECT_EQ(password("mysql:server=h;password=given;username=u;port=3307"), "given");
  EXPECT_EQ(asked.size(), 2u);
  ASSERT_EQ(warned.size(), 2u);
  EXPECT_EQ(warned[0].find("given"), std::string::npos);
}

// The password of a file is not asked for, nor one that the machine's own login stands in for.
TEST(SourcesTest, AccountsAloneAskForAMissingPassword) {
  const struct {
    const char* source;
    int engine;
    TStringList asked;
  } cases[] = {
      {"Access:filename=a.mdb", kEngineAccess, {}},
      {"sql server:server=h;username=u", kEngineSQLServer, {"u@h"}},
      {"SQL Server:server=h;windows_authentication=Y", kEngineSQLServer, {}},
      {"ODBC:dsn=x", kEngineODBC, {}},
      {"Excel:filename=a.xls;HDR=Y;IMEX=Y", kEngineExcel, {}},
      {"Lotus 1-2-3:filename=a.wk4", kEngineLotus, {}},
      {"DBF:folder=d", kEngineDBF, {}},
      {"FoxPro:folder=d", kEngineFoxPro, {}},
  };
  for (const auto& c : cases) {
    TStringList asked;
    TSourceSettings settings;
    settings.AskPassword = [&](const std::string& account) { return asked.push_back(account), "answered"; };
    EXPECT_EQ(MakeSource(c.source, settings)->GetEngine(), c.engine);
    EXPECT_EQ(asked, c.asked) << c.source;
  }
}

TEST(SourcesTest, WhatIsNoSourceIsSaid) {
  const struct {
    const char* source;
    const char* message;
  } cases[] = {
      {"nonsense",
       "\"nonsense\" is no source: give a file that ends in .sql, mysql://USER@HOST/DATABASE, or "
       "ENGINE:key=value"},
      {"mysq://u:secret@h/d",
       "\"mysq...\" is no source: give a file that ends in .sql, mysql://USER@HOST/DATABASE, or "
       "ENGINE:key=value"},
      {"MySQl;server=h;password=secret",
       "\"MySQl...\" is no source: give a file that ends in .sql, "
       "mysql://USER@HOST/DATABASE, or ENGINE:key=value"},
      {"MySQL:host=x;password=secret", "MySQL has no key \"host\"; its keys are: server, "},
      {"MySQL:server=h;password=sec;ret=3", "MySQL has no key of the name given; its keys are: server, "},
      {"shop.MDB", "\"shop.MDB\" is no source by itself: give Access:filename=shop.MDB"},
      {"/data/100%/orders.db", "\"/data/100%/orders.db\" is no source by itself: give Paradox:folder=/data/100%25"},
      {"a.vlt", "\"a.vlt\" is no source by itself: give the only source: a task file stands for reference and target"},
      {"/dev",
       "\"/dev\" is no source by itself: give a folder that holds files that end in .sql, Paradox:folder=/dev, "
       "DBF:folder=/dev, FoxPro:folder=/dev or "
       "Text:folder=/dev;HDR=Y;separator=,"},
      {"data/passengers.csv",
       "\"data/passengers.csv\" is no source by itself: give Text:folder=data;HDR=Y;separator=,"},
      {"MySQL:port=no", "\"no\" is no port: it must be a number from 1 to 65535"},
  };
  for (const auto& c : cases) {
    const std::string message = MessageOf([&] { MakeSource(c.source); });
    EXPECT_TRUE(message.starts_with(c.message)) << message;
  }
}

}  // namespace
}  // namespace velmora
