// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/oledb/OLEDBClient.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/FakeOLEDB.h"
#include "support/MessageOf.h"

namespace velmora {
namespace {

using ::testing::ElementsAre;
using testing::MessageOf;

class OLEDBClientTest : public ::testing::Test {
 protected:
  void Connect(const std::string& text = "Provider=p;Data Source=shop") {
    source.BeforeConnect = [this, text] { source.SetInitializationString(text); };
    source.SetConnected(true);
  }
  TOLEDBDataSet& Open(const std::string& sql) {
    rows.SetOLEDBDataSource(source);
    rows.SetCommandText(sql);
    rows.Open();
    return rows;
  }

  testing::TFakeOLEDB backend;
  TOLEDBDataSource source{backend.Maker()};
  TOLEDBDataSet rows;
};

TEST_F(OLEDBClientTest, ConnectsByTheStringOfTheMoment) {
  EXPECT_FALSE(source.GetConnected());
  Connect();
  source.SetConnected(true);
  EXPECT_TRUE(source.GetConnected());
  EXPECT_EQ(source.DBName(), "shop");
  source.SetConnected(false);
  source.SetConnected(false);
  EXPECT_EQ(MessageOf([&] { source.Execute("x"); }), "Not connected");
  EXPECT_EQ(MessageOf([&] { source.Session().GetTables(); }), "Not connected");
  EXPECT_EQ(MessageOf([&] { Open("x"); }), "Not connected");
  Connect("Provider=p;Data Source=other");
  source.Close();
  source.Open();
  EXPECT_THAT(backend.log, ElementsAre("open shop", "close", "open other", "close", "open other"));
}

TEST_F(OLEDBClientTest, AFailedConnectionIsNone) {
  backend.errors["open shop"] = "Login failed";
  EXPECT_EQ(MessageOf([&] { Connect(); }), "Login failed");
  EXPECT_FALSE(source.GetConnected());
  EXPECT_EQ(source.DBName(), "shop") << "messages can name it";
  EXPECT_EQ(MessageOf([&] { Connect("Password=sec;ret"); }).find("ret"), std::string::npos);
  backend.errors.clear();
  Connect();
  EXPECT_TRUE(source.GetConnected());
  backend.errors["close"] = "Link lost";
  EXPECT_EQ(MessageOf([&] { source.SetConnected(false); }), "Link lost");
  EXPECT_FALSE(source.GetConnected());
}

TEST_F(OLEDBClientTest, CommitsInOneWayOnly) {
  Connect();
  source.Session().StartTransaction(kReadCommitted);
  source.Session().Commit(false, kSyncCommit);
  EXPECT_THAT(backend.TakeLog(), ElementsAre("open shop", "begin 4096", "commit"));
  EXPECT_EQ(MessageOf([&] { source.Session().Commit(true, 2); }), "Commit(retaining 1, flags 2) is not supported");
  EXPECT_EQ(MessageOf([&] { source.Session().Commit(false, 1); }), "Commit(retaining 0, flags 1) is not supported");
  EXPECT_THAT(backend.log, ElementsAre());
}

TEST_F(OLEDBClientTest, RowsAreReadBothWays) {
  backend.Answer("q", {"a", "b"}, {{"1", "x"}, {"2"}});
  backend.answers["q"].is_autoincrement = {true};
  Connect();
  Open("q");
  EXPECT_EQ(rows.RecordCount(), 2);
  rows.Prior();
  EXPECT_EQ(VarToText(rows.FieldByName("B").value), "x");
  rows.Next();
  EXPECT_TRUE(VarIsNull(rows.Value(1))) << "a short row ends in nulls";
  rows.Next();
  rows.Next();
  EXPECT_TRUE(rows.Eof() && VarIsNull(rows.Value(0)));
  rows.Prior();
  EXPECT_EQ(VarToText(rows.Value(0)), "2");
  EXPECT_EQ(MessageOf([&] { rows.Value(2); }), "List index out of bounds (2)");
  EXPECT_TRUE(rows.ColumnInfo("A").DBCOLUMN_ISAUTOINCREMENT);
  EXPECT_FALSE(rows.ColumnInfo("b").DBCOLUMN_ISAUTOINCREMENT) << "the provider is silent";
  EXPECT_FALSE(rows.ColumnInfo("c").DBCOLUMN_ISAUTOINCREMENT);
  rows.Close();
  EXPECT_TRUE(rows.Eof());
  EXPECT_EQ(rows.Fields().size(), 2u);
}

TEST_F(OLEDBClientTest, RowsComeWhenTheyAreAskedFor) {
  int reads = 0;
  TOLEDBRowset& rowset = backend.answers["q"];
  rowset.fields = {{"a"}};
  rowset.read_rows = [&] {
    if (++reads >= 2) RaiseError("Page 7 is damaged");
    return TRowsOfValues{{"1"}};
  };
  Connect();
  Open("q");
  EXPECT_EQ(rows.Fields().size() + static_cast<std::size_t>(reads), 1u);
  EXPECT_EQ(rows.RecordCount(), 1);
  EXPECT_FALSE(rows.Eof());
  EXPECT_EQ(reads, 1);
  Open("q");
  EXPECT_EQ(MessageOf([&] { rows.Eof(); }), "Page 7 is damaged");
  EXPECT_NE(MessageOf([&] { rows.Eof(); }), "nothing raised") << "rows that cannot be read are not none";
  Open("q");
  source.Close();
  source.Open();
  EXPECT_EQ(MessageOf([&] { rows.RecordCount(); }), "Not connected") << "the provider of these rows is gone";
  EXPECT_EQ(reads, 3);
}

}  // namespace
}  // namespace velmora
