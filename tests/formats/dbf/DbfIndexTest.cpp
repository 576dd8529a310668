// What stands beside the tables: indexes of dBASE and FoxPro, databases of FoxPro.

#include <filesystem>

#include "formats/dbf/DbfRig.h"

namespace velmora {
namespace {

using namespace std::string_literals;
using testing::CdxBytes;
using testing::DbfLittle;
using testing::NdxBytes;
using testing::TCdxTag;
using testing::TDbcDraft;
using testing::TDbfDraft;

constexpr int kCandidate = 0x64;
constexpr int kFiltered = 0x08;

class DbfIndexTest : public testing::TDbfRig {
 protected:
  DbfIndexTest() {
    Put("t.dbf", TDbfDraft{.fields = {{"NAME", 'C', 5}, {"CITY", 'C', 5}}});
    Put("fox.dbf", TDbfDraft{.fields = {{"NAME", 'C', 5}, {"CITY", 'C', 5}}, .version = 0xF5, .flags = 1});
  }
};

TEST_F(DbfIndexTest, DBaseKnowsTheIndexesOfTheInfFile) {
  Put("byname.ndx", NdxBytes("name"));
  Put("ByCity.NDX", NdxBytes("CITY ", true));
  Put("both.ndx", NdxBytes("NAME+CITY"));
  EXPECT_EQ(Indexes(*DBase()), "");
  Put("T.INF",
      "NDX1=nosection.ndx\r\n[other]\r\nNDX1=no.ndx\r\n[dBASE IV]\r\nNDX1=BYNAME.NDX\r\n"
      "NDX2 = C:\\DATA\\bycity.ndx\r\nUNDX1=byname.ndx\r\nNDX3=both.ndx\r\nMDX1=t.mdx\r\nNDXS=x\r\n");
  EXPECT_EQ(Indexes(*DBase()), "byname(NAME);ByCity(CITY) unique;byname(NAME) unique;");
  EXPECT_EQ(Indexes(*FoxPro()), "");
  const struct {
    const char* entry;
    std::string bytes;
    const char* failure;
  } kCases[] = {{"none.ndx", "", "Cannot open none.ndx: No such file or directory"},
                {"", "", "Cannot open : it is no regular file"},
                {"short.ndx", "short", "short.ndx: offset 0x05: the file ends within the first 512 bytes of its head"}};
  for (const auto& test : kCases) {
    if (!test.bytes.empty()) Put(test.entry, test.bytes);
    Put("T.INF", "[dbase iii]\nNDX1="s + test.entry + "\n");
    EXPECT_EQ(StrReplace(Failure([&] { DBase()->Structure("t"); }), folder_.Path(), ""), test.failure);
    EXPECT_EQ(DBase()->Rows("t", 1).rows.size(), 0U);
  }
}

TEST_F(DbfIndexTest, FoxProKnowsTheTagsOfPlainFields) {
  const std::vector<TCdxTag> tags = {{"ALL", "name+city", kCandidate},
                                     {"CITY", "city "},
                                     {"FEW", "name", kCandidate | kFiltered, "city='x'"},
                                     {"KEY", "NAME", kCandidate},
                                     {"LIVE", "name", kCandidate | kFiltered, ".NOT. DELETED()"},
                                     {"LIVE2", "name", kCandidate | kFiltered, "!deleted()"},
                                     {"ONCE", "city", 0x61}};
  for (const std::size_t per_page : {20U, 3U, 1U}) {
    Put("Fox.cdx", CdxBytes(tags, per_page));
    EXPECT_EQ(Indexes(*FoxPro(), "fox"),
              "CITY(CITY);FEW(NAME);KEY(NAME) unique;LIVE(NAME) unique;LIVE2(NAME) unique;ONCE(CITY);")
        << per_page;
  }
  Put("Fox.cdx", CdxBytes({}));
  EXPECT_EQ(Indexes(*FoxPro(), "fox"), "");
  Put("t.cdx", "not looked at, as the table does not say that it has one");
  EXPECT_EQ(Indexes(*FoxPro(), "t"), "");
  EXPECT_EQ(Indexes(*DBase(), "fox"), "");
}

TEST_F(DbfIndexTest, SpoiltTagsAreRefused) {
  const std::string one = CdxBytes({{"A", "name"}, {"AB", "city"}});
  const std::string two = CdxBytes({{"A", "name"}, {"AB", "city"}}, 1);  // pages at 0x400 and 0x600, the root at 0x800
  const auto with = [](std::string bytes, std::size_t at, const std::string& put) {
    return bytes.replace(at, put.size(), put);
  };
  const struct {
    std::string bytes;
    const char* failure;
  } kCases[] = {
      {one.substr(0, 1023), "offset 0x3FF: the file ends within the first 1024 bytes of its head"},
      {with(one, 0, DbfLittle(-1)),
       "offset 0xFFFFFFFF: a page of the list of tags begins here, but the file ends at 0x1000"},
      {with(two, 0x408, DbfLittle(0x400)), "offset 0x400: the list of tags comes back to a page"},
      {with(two, 0x608, DbfLittle(0x400)), "offset 0x400: the list of tags comes back to a page"},
      {with(two, 0x81A, "\0\0\x08\0"s), "offset 0x800: the list of tags comes back to a page"},
      {with(two, 0x802, "\0"s), "offset 0x800: a page of the list of tags with 0 entries of 10 bytes"},
      {with(two, 12, "\xFF\xFF"), "offset 0x800: a page of the list of tags with 2 entries of 65535 bytes"},
      {with(one, 0x402, "\xFF\xFF"), "offset 0x400: a page of the list of tags with 65535 entries of 4 bytes"},
      {with(one, 0x417, "\0"s), "offset 0x400: a page of the list of tags with 2 entries of 0 bytes"},
      {with(one, 0x41B, "\x07"), "offset 0x400: entry 1 of this page of the list of tags is damaged"},
      {with(one, 12, "\xFF\xFF"), "offset 0x400: entry 1 of this page of the list of tags is damaged"},
      {with(one, 0x418, "\xFF\xFF\xFF"),
       "offset 0xFFFFFF: the head of tag \"A\" begins here, but the file ends at 0x1000"},
  };
  for (const auto& test : kCases) {
    Put("fox.cdx", test.bytes);
    EXPECT_EQ(Failure([&] { FoxPro()->Structure("fox"); }), "fox.cdx: "s + test.failure);
    EXPECT_EQ(FoxPro()->Rows("fox", 1).rows.size(), 0U) << "rows need no tags";
  }
  std::filesystem::remove(folder_ / "fox.cdx");
  EXPECT_EQ(Failure([&] { FoxPro()->Structure("fox"); }), "Cannot open fox.cdx: No such file or directory");
}

// --- Databases

class DbcDatabaseTest : public testing::TDbfRig {
 protected:
  DbcDatabaseTest() {
    std::filesystem::create_directory(folder_ / "Data");
    Put("Data/ORD.DBF",
        TDbfDraft{
            .fields = {{"ORDER_NUMB", 'I', 4, 0, 0x0C}, {"CUSTOMER_N", 'C', 10, 0, 2}, {"_NullFlags", '0', 1, 0, 5}},
            .records = {" " + DbfLittle(7) + "Ann       " + "\0"s},
            .version = 0x31,
            .flags = 5,
            .database = "..\\SHOP.DBC"});
    Put("Data/ord.cdx", CdxBytes({{"CUST", "customer_name"}, {"ORDERNO", "order_numb", kCandidate}}));
    Put("free.dbf", TDbfDraft{.fields = {{"A", 'C', 1}}, .version = 0x30});
    Save(Sound());
  }

  TDbcDraft Sound() {
    TDbcDraft database;
    database.AddTable("gone", {{1, "gone.dbf\0"s}});
    database.DeleteLast();
    const int orders = database.AddTable("orders of shop", {{2, "x"}, {1, "data\\ord.dbf"}, {20, "orderno"}});
    const int view = database.Add("View", 1, "a view", "");
    database.AddField(orders, "order_number");
    database.AddField(view, "order_number");
    database.AddField(orders, "customer_name", {{9, "text"}, {11, "\"none\""}});
    database.AddTable("missing", {});
    return database;
  }
  void Save(const TDbcDraft& database) {
    Put("shop.dbc", database.Table());
    Put("shop.DCT", database.Memos());
  }
};

TEST_F(DbcDatabaseTest, GivesLongNamesDefaultsAndThePrimaryKey) {
  const std::string columns =
      "order_number 3 16 0 0,0 auto-increment auto\ncustomer_name 129 16 10 0,0 null =\"none\" fixed char\n";
  const std::string indexes = "CUST(customer_name);ORDERNO(order_number) primary unique;";
  const auto database = FoxPro("shop.dbc");
  EXPECT_EQ(database->Tables().size(), 2U);
  EXPECT_EQ(database->Tables()[0].TABLE_NAME, "orders of shop");
  EXPECT_EQ(Columns(*database, "orders of shop"), columns);
  EXPECT_EQ(Indexes(*database, "ORDERS of shop"), indexes);
  EXPECT_EQ(Rows(*database, "orders of shop"), "int 7|text Ann;");
  EXPECT_EQ(Failure([&] { database->Structure("missing"); }), "Cannot open missing.dbf: No such file or directory");
  EXPECT_EQ(Failure([&] { database->Structure("free"); }), "shop.dbc: there is no table \"free\"");

  const auto folder = FoxPro("Data");
  EXPECT_EQ(Columns(*folder, "ord"), columns) << "the table's link leads to the database";
  EXPECT_EQ(Indexes(*folder, "ord"), indexes);
  EXPECT_EQ(Columns(*FoxPro(), "free"), "A 129 16 1 0,0 fixed char\n");
}

TEST_F(DbcDatabaseTest, WhatIsRefused) {
  const auto failure = [this] { return Failure([this] { FoxPro("Data")->Structure("ORD"); }); };
  const std::string tail = "; the table in Data/ORD.DBF belongs to it";
  TDbcDraft database = Sound();
  database.AddTable("broken", {{1, "x"}});
  database.DeleteLast();
  database.Add("Table", 1, "more", DbfLittle(9) + "\1\0\1ab"s + DbfLittle(9) + "\1\0\x0B"s);
  Save(database);
  EXPECT_EQ(StrReplace(failure(), "Data/../", ""),
            "shop.dbc: record 10: the properties of more end in the middle of one" + tail);
  database = TDbcDraft();
  database.AddTable("orders", {{1, "other.dbf"}});
  Save(database);
  EXPECT_EQ(StrReplace(failure(), "Data/../", ""),
            "shop.dbc: the table in Data/ORD.DBF says that it belongs here, but is not among its tables");
  database = TDbcDraft();
  database.AddField(database.AddTable("orders", {{1, "Data/ord.dbf"}}), "only");
  Save(database);
  EXPECT_EQ(StrReplace(failure(), "Data/../", ""),
            "shop.dbc: table \"orders\" has 1 fields here, but 2 in Data/ORD.DBF");
  std::filesystem::remove(folder_ / "shop.DCT");
  EXPECT_EQ(StrReplace(failure(), "Data/../", ""), "Cannot open shop.dct: No such file or directory" + tail);
  std::filesystem::remove(folder_ / "shop.dbc");
  EXPECT_EQ(StrReplace(failure(), "Data/../", ""), "Cannot open SHOP.DBC: No such file or directory" + tail);
  EXPECT_EQ(Rows(*FoxPro("Data"), "ORD"), "int 7|text Ann;") << "rows need no database";
}

}  // namespace
}  // namespace velmora
