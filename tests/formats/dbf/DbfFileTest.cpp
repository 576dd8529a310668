// Folders and files: which tables there are, heads, records, memo files, and what is refused.

#include <sys/stat.h>

#include <filesystem>

#include "formats/dbf/DBaseFolder.h"
#include "formats/dbf/DbfRig.h"

namespace velmora {
namespace {

using namespace std::string_literals;
using testing::DbfLeft;
using testing::DbfLittle;
using testing::DbfRight;
using testing::TDbfDraft;
using testing::TDbfMemoDraft;

class DbfFileTest : public testing::TDbfRig {
 protected:
  std::string Names(TFileReader& reader) {
    std::string names;
    for (const TOLEDBTableRow& table : reader.Tables()) names += table.TABLE_NAME + " " + table.TABLE_TYPE + ";";
    return names;
  }
};

TDbfDraft Letters(const std::string& records, int version = 3) {
  TDbfDraft table{.fields = {{"C", 'C', 1}}, .version = version};
  for (std::size_t i = 0; i < records.size(); i += 2) table.records.push_back(records.substr(i, 2));
  return table;
}

TEST_F(DbfFileTest, TablesAreTheFilesOfTheFolder) {
  for (const char* name : {"b.dbf", "A.DBF", "a b.Dbf", "c.dbf.bak", "c.db", "c.DBF", "c.dbf"})
    Put(name, Letters(" x"));
  std::filesystem::create_directory(folder_ / "folder.dbf");
  mkfifo((folder_ / "pipe.dbf").c_str(), 0600);
  EXPECT_EQ(Names(*DBase()), "A TABLE;a b TABLE;b TABLE;c TABLE;pipe TABLE;");
  EXPECT_EQ(Names(*FoxPro()), Names(*DBase()));
  EXPECT_EQ(Rows(*DBase(), "A B"), "text x;") << "the case of letters plays no part";
  const struct {
    const char* table;
    const char* failure;
  } kCases[] = {{"none", "Cannot open none.dbf: No such file or directory"},
                {"pipe", "Cannot open pipe.dbf: it is no regular file"},
                {"folder", "Cannot open folder.dbf: it is no regular file"}};
  for (const auto& test : kCases) {
    EXPECT_EQ(Failure([&] { DBase()->Structure(test.table); }), test.failure);
    EXPECT_EQ(Failure([&] { FoxPro()->Rows(test.table, kAllRows); }), test.failure);
  }
  EXPECT_EQ(Failure([&] { OpenDBaseFolder(folder_ / "none"); }), "Cannot open none: No such file or directory");
  EXPECT_EQ(Failure([&] { OpenDBaseFolder(folder_ / "b.dbf"); }), "Cannot open b.dbf: Not a directory");
  EXPECT_EQ(Failure([&] { FoxPro("none.dbc"); }), "Cannot open none.dbc: No such file or directory");
  EXPECT_EQ(Failure([&] { FoxPro("b.dbf"); }),
            "b.dbf: it is no database of FoxPro: it has no field OBJECTID of type I");
  EXPECT_EQ(Failure([&] { FoxPro("pipe.dbf"); }), "Cannot open pipe.dbf: it is no regular file");
}

TEST_F(DbfFileTest, DeletedRowsAreShownByDBaseAndHiddenByFoxPro) {
  Put("t.dbf", Letters(" a*b c*d e"));
  EXPECT_EQ(Rows(*DBase()), "text a;text b;text c;text d;text e;");
  EXPECT_EQ(Rows(*DBase(), "t", 2), "text a;text b;");
  EXPECT_EQ(Rows(*FoxPro()), "1: text a;3: text c;5: text e;") << "they keep their numbers";
  EXPECT_EQ(Rows(*FoxPro(), "t", 2), "1: text a;3: text c;");
  EXPECT_EQ(Rows(*FoxPro(), "t", 1), "text a;");
  EXPECT_EQ(Rows(*FoxPro(), "t", 0), "");
  Put("t.dbf", Letters("*a*b"));
  EXPECT_EQ(Rows(*FoxPro()), "");
}

// More than a block of them; the last is cut by the bytes behind the table's end.
TEST_F(DbfFileTest, ManyRecords) {
  TDbfDraft table{.fields = {{"N", 'N', 7}, {"C", 'C', 40}}};
  std::string expected;
  for (int i = 0; i < 12345; ++i) {
    table.records.push_back(" " + DbfRight(std::to_string(i), 7) + DbfLeft("row", 40));
    expected += Format("float %d|text row;", i);
  }
  Put("t.dbf", table);
  EXPECT_TRUE(Rows(*DBase()) == expected);
}

TEST_F(DbfFileTest, HeadsOfOtherProgramsThatAreSound) {
  for (const int version : {0x03, 0x04, 0x05, 0x30, 0x31, 0x32, 0x43, 0x63, 0x7B, 0x83, 0x8B, 0x8E, 0xCB, 0xF5, 0xFB}) {
    Put("t.dbf", Letters(" x", version));
    EXPECT_EQ(Rows(*DBase()), "text x;") << version;
  }
  std::string bytes = Letters(" x").Bytes();
  Put("t.dbf", bytes.substr(0, 67));
  EXPECT_EQ(Rows(*DBase()), "text x;") << "no mark behind the last record";
  bytes.erase(64, 1);
  bytes[8] = 64;
  Put("t.dbf", bytes);
  EXPECT_EQ(Rows(*DBase()), "text x;") << "no mark behind the fields";
  Put("t.dbf", TDbfDraft{.fields = {{"C", 'C', 1}}, .records = {" xyz"}, .record_size = 4});
  EXPECT_EQ(Rows(*DBase()), "text x;") << "bytes of the record that no field has";
  Put("t.dbf", TDbfDraft{.fields = {{"C", 'C', 300 % 256, 300 / 256}, {"D", 'C', 1, 7}},
                         .records = {" " + DbfLeft("long", 300) + "d"},
                         .record_size = 302});
  EXPECT_NE(Rows(*DBase()), "text long|text d;") << "decimals of a short text";
  Put("t.dbf", TDbfDraft{.fields = {{"C", 'C', 300 % 256, 300 / 256}, {"D", 'C', 1}},
                         .records = {" " + DbfLeft("long", 300) + "d"},
                         .record_size = 302});
  EXPECT_EQ(Rows(*DBase()), "text long|text d;") << "long texts of Clipper";
}

TEST_F(DbfFileTest, WhatIsRefused) {
  const std::string sound = Letters(" x y").Bytes();
  const auto with = [&](std::size_t at, const std::string& bytes) {
    std::string changed = sound;
    return changed.replace(at, bytes.size(), bytes);
  };
  const struct {
    std::string bytes;
    const char* failure;
  } kCases[] = {
      {"", "offset 0x00: the file ends within the first 32 bytes of its head"},
      {sound.substr(0, 31), "offset 0x1F: the file ends within the first 32 bytes of its head"},
      {with(0, "P"), "offset 0x00: byte 0x50 stands for no table of dBASE or FoxPro"},
      {with(0, "\x02"), "offset 0x00: tables of dBASE II cannot be read"},
      {with(0, "\x8C").replace(43, 1, 1, '\0'), "offset 0x00: tables of dBASE 7 cannot be read"},
      {with(15, "\x01"), "offset 0x0F: the table is enciphered"},
      {with(8, "\xFF\xFF"), "offset 0x08: a head of 65535 bytes in a file of 70"},
      {with(8, "\x1F\0"s), "offset 0x08: a head of 31 bytes in a file of 70"},
      {with(8, "\x21\0"s), "offset 0x20: no field is declared"},
      {with(32, "\0"s), "offset 0x20: field 1 has no name"},
      {with(43, "Z"), "offset 0x2B: field \"C\" is of an unknown type (0x5A)"},
      {with(43, "I"), "offset 0x30: field \"C\" of type I has 1 bytes"},
      {with(43, "M"), "offset 0x30: field \"C\" of type M has 1 bytes"},
      {with(48, "\0"s), "offset 0x30: field \"C\" of type C has 0 bytes"},
      {with(48, "\x02"), "offset 0x0A: a record of 2 bytes cannot hold its fields, which have 3"},
      {with(10, "\0\0"s), "offset 0x0A: a record of 0 bytes cannot hold its fields, which have 2"},
      {with(4, "\xFF\xFF\xFF\xFF"), "offset 0x04: 4294967295 records of 2 bytes, but only 5 bytes after the head"},
      {sound.substr(0, 68), "offset 0x04: 2 records of 2 bytes, but only 3 bytes after the head"},
      {TDbfDraft{.fields = {{"V", 'V', 5}}, .version = 0x32}.Bytes(),
       "offset 0x20: field \"V\" has a bit among the null flags, which have 0 bits"},
  };
  for (const auto& test : kCases) {
    Put("t.dbf", test.bytes);
    EXPECT_EQ(Failure([&] { DBase()->Structure("t"); }), "t.dbf: "s + test.failure);
    EXPECT_EQ(Failure([&] { FoxPro()->Rows("t", 1); }), "t.dbf: "s + test.failure);
    EXPECT_EQ(DBase()->Tables().size(), 1U);
  }
}

TEST_F(DbfFileTest, MemosOfEveryForm) {
  const std::string long_memo = std::string(511, 'x') + "\xE4" + std::string(4000, 'y');
  const struct {
    int version;
    const char* file;
    const char* form;
    std::size_t block;
    int size;  // of the field
  } kCases[] = {{0x83, "T.DBT", "III", 512, 10}, {0x8B, "t.dbt", "IV", 1024, 10}, {0x8B, "t.Dbt", "IV", 64, 10},
                {0xF5, "t.fpt", "Fox", 64, 10},  {0x30, "T.FPT", "Fox", 1, 4},    {0x32, "t.FPT", "Fox", 33, 4}};
  for (const auto& test : kCases) {
    TDbfMemoDraft memos(test.form, test.block);
    TDbfDraft table{.fields = {{"M", 'M', test.size}}, .version = test.version, .code_page = 3};
    const auto add = [&](std::uint32_t number) {
      table.records.push_back(" " + (test.size == 4 ? DbfLittle(number) : DbfRight(std::to_string(number), 10)));
    };
    for (const std::string& memo : {"one"s, ""s, long_memo, std::string(512, 'z')}) add(memos.Add(memo));
    add(0);
    if (test.size == 10) table.records.push_back(" " + DbfLeft("", 10));
    Put("t.dbf", table);
    Put(test.file, memos.Bytes());
    const std::string rows = "text one;text ;text " + std::string(511, 'x') + "ä" + std::string(4000, 'y') + ";text " +
                             std::string(512, 'z') + ";";
    EXPECT_TRUE(Rows(*DBase()) == rows + (test.size == 10 ? "null;null;" : "null;")) << test.form << test.block;
    EXPECT_TRUE(Rows(*FoxPro()) == rows + (test.size == 10 ? "text ;text ;" : "text ;")) << test.form << test.block;
    std::filesystem::remove(folder_ / test.file);
  }
}

TEST_F(DbfFileTest, MemosThatAreNotThere) {
  const auto table = [this](int version, const std::string& number, int size) {
    Put("t.dbf", TDbfDraft{.fields = {{"G", 'G', size}}, .records = {" " + number}, .version = version});
  };
  const auto failure = [this] { return Failure([this] { DBase()->Rows("t", 1); }); };
  table(0xF5, DbfRight("1", 10), 10);
  EXPECT_EQ(failure(), "Cannot open t.fpt: No such file or directory");
  EXPECT_EQ(Columns(*DBase()), "G 128 128 0 0,0 null blob\n") << "the structure needs no memos";
  table(0xF5, DbfRight("1x", 10), 10);
  EXPECT_EQ(failure(), "t.dbf: field \"G\": '1x' is no number of a memo");

  const std::string sized = "\0\0\0\1\0\0\0\5hello"s;
  const std::string fox = DbfLittle(0, 6) + "\0\1"s + DbfLittle(0, 504);
  const std::string four = DbfLittle(0, 20) + "\0\2"s + DbfLittle(0, 490);
  const std::string memo_of_four = "\xFF\xFF\x08\0"s;
  const struct {
    int version;
    const char* file;
    std::string bytes;
    std::uint32_t number;
    const char* failure;
  } kCases[] = {
      {0x30, "t.fpt", "short", 512, "offset 0x05: the file ends within the first 24 bytes of its head"},
      {0x30, "t.fpt", DbfLittle(0, 512) + sized, 512, "offset 0x06: a block size of 0"},
      {0x30, "t.fpt", fox + sized, 525, "offset 0x20D: a memo begins here, but the file ends at 0x20D"},
      {0x30, "t.fpt", fox + sized, 0xFFFFFFFF, "offset 0xFFFFFFFF: a memo begins here, but the file ends at 0x20D"},
      {0x30, "t.fpt", fox + sized, 518, "offset 0x206: the file ends before the memo that begins here does"},
      {0x30, "t.fpt", fox + sized.substr(0, 12), 512, "offset 0x208: a memo of 5 bytes, but the file ends at 0x20C"},
      {0x30, "t.fpt", fox + "\0\0\0\1\xFF\xFF\xFF\xFFx"s, 512,
       "offset 0x208: a memo of 4294967295 bytes, but the file ends at 0x209"},
      {0x8B, "t.dbt", DbfLittle(0, 512) + "x", 1, "offset 0x14: a block size of 0"},
      {0x8B, "t.dbt", four + "x", 1, "offset 0x200: the file ends before the memo that begins here does"},
      {0x8B, "t.dbt", four + memo_of_four + DbfLittle(7), 1, "offset 0x200: no memo begins here"},
      {0x8B, "t.dbt", four + "plain text in the block", 1, "offset 0x200: no memo begins here"},
      {0x8B, "t.dbt", four + memo_of_four + DbfLittle(-1), 1,
       "offset 0x208: a memo of 4294967287 bytes, but the file ends at 0x208"},
      {0x83, "t.dbt", DbfLittle(0, 512) + std::string(600, 'x'), 1,
       "offset 0x200: the file ends before the memo that begins here does"},
  };
  for (const auto& test : kCases) {
    table(test.version, DbfLittle(test.number), 4);
    Put(test.file, test.bytes);
    EXPECT_EQ(failure(), test.file + ": "s + test.failure);
    std::filesystem::remove(folder_ / test.file);
  }
}

// A small file cannot stand for any amount of memory.
TEST_F(DbfFileTest, RecordsThatShareAMemo) {
  for (const char* form : {"III", "Fox"}) {
    const bool fox = *form == 'F';
    TDbfMemoDraft memos(form, 512);
    TDbfDraft table{.fields = {{"M", 'M', 4}}, .version = fox ? 0x30 : 0x83};
    table.records.assign(1000, " " + DbfLittle(memos.Add(std::string(100000, 'x'))));
    Put("t.dbf", table);
    Put(fox ? "t.fpt" : "t.dbt", memos.Bytes());
    EXPECT_EQ(
        Failure([&] { DBase()->Rows("t", kAllRows); }),
        fox ? "t.fpt: offset 0x208: with this memo more bytes were read than the 100864 of the file: records share "
              "memos"
            : "t.dbt: offset 0x200: with this memo more bytes were read than the 100864 of the file: records share "
              "memos");
    EXPECT_EQ(DBase()->Rows("t", 1).rows.size(), 1U);
  }
}

}  // namespace
}  // namespace velmora
