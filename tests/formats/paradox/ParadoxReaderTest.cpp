#include "formats/paradox/ParadoxReader.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "formats/paradox/ParadoxText.h"
#include "support/MessageOf.h"
#include "support/ParadoxFile.h"
#include "support/ScratchFolder.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {
namespace {

using namespace std::string_literals;
using testing::MessageOf;
using testing::PutFile;
using testing::PxInteger;
using testing::PxMemoField;
using testing::PxText;
using testing::ReadAll;
using testing::TPxFile;
using testing::TPxFileBlock;

class ParadoxReaderTest : public ::testing::Test {
 protected:
  void Write(const TPxFile& file) { PutFile(path_, file.Bytes()); }
  std::string Rows() {
    TPxTable table(path_, false);
    return ReadAll(table);
  }
  std::string Failure() {
    return StrReplace(MessageOf([this] { Rows(); }), folder_.Path() + "/", "");
  }

  testing::TScratchFolder folder_;
  const std::string path_ = folder_ / "t.db";
};

// One Alpha field of one byte, so that a record is a letter.
TPxFile Letters(std::vector<TPxFileBlock> blocks, std::optional<std::uint32_t> records = {}, int firstBlock = 1) {
  return {.fields = {{"c", pxAlpha, 1}}, .blocks = std::move(blocks), .firstBlock = firstBlock, .records = records};
}

TEST_F(ParadoxReaderTest, HeaderOfEveryVersionAndFileType) {
  const struct {
    int id, version;
  } kVersions[] = {{0, 30},  {3, 30},  {4, 35},  {5, 40},     {9, 40},
                   {10, 50}, {11, 50}, {12, 70}, {13, 65535}, {255, 65535}};
  for (const auto& version : kVersions) {
    for (const int type : {0, 1, 2, 3, 4, 5, 6}) {
      TPxFile file{.fields = {{"Number", pxLong, 4},
                              {"Amount", pxBCD, 99},
                              {"Name", pxAlpha, 10},
                              {std::string(20, 'x') + "\xC3\xA4\xC3\xB6\xC3\xBC\xC3\x9F, cut", pxLogical, 1}},
                   .blocks = {{{PxInteger(-7, 4) + std::string(17, '\xC1') + PxText("n", 10) + "\x81"}}},
                   .version = version.id,
                   .fileType = type,
                   .keys = 2};
      Write(file);
      TPxTable table(path_, false);
      EXPECT_EQ(table.Header().Version(), version.version);
      EXPECT_EQ(table.Header().primaryKeyFields, 2);
      ASSERT_EQ(table.Fields().size(), 4U);
      EXPECT_EQ(table.Fields()[0].name, "Number");
      EXPECT_EQ(table.Fields()[2].offset, 21U) << "17 bytes for BCD, whatever its size byte says";
      EXPECT_EQ(table.Fields()[3].name, std::string(20, 'x') + "\xC3\xA4\xC3\xB6\xC3\xBC\xC3\x9F,");
      EXPECT_EQ(ReadAll(table), "-7||n|1;") << version.id << " " << type;
    }
  }
}

TEST_F(ParadoxReaderTest, WalksTheBlocksInFileOrder) {
  const struct {
    const char* what;
    TPxFile file;
    std::string rows;
  } kCases[] = {
      {"one block", Letters({{{"a", "b"}}}), "a;b;"},
      {"several", Letters({{{"a", "b"}}, {{"c"}}, {{"d", "e", "f"}}}), "a;b;c;d;e;f;"},
      {"empty ones between and behind", Letters({{{"a"}}, {{}, -1}, {{}, -32768}, {{"b"}}, {{}, -1}}), "a;b;"},
      {"an empty one in front", Letters({{{}, -6}, {{"a"}}}), "a;"},
      {"numRecords ends it", Letters({{{"a", "b"}}, {{"c"}}}, 2), "a;b;"},
      {"addDataSize ends a block", Letters({{{"a", "b", "c"}, 1}, {{"d", "e"}}}), "a;b;d;e;d;"},
      {"a later first block", Letters({{{"x"}}, {{"a"}}, {{"b"}}}, 2, 2), "a;b;"},
      {"first block 0", Letters({{{"a"}}}, 1, 0), "a;"},
      {"the file ends too soon", Letters({{{"x"}}, {{"a", "b"}}}, 6), "x;a;b;a;b;a;"},
      {"the last block is empty too", Letters({{{"a", "b"}}, {{"?"}, -1}}, 4), "a;b;?;?;"},
      {"spoilt behind the last record", Letters({{{"a"}}, {{}, 32767}}), "a;"},
      {"no records", Letters({}), ""},
  };
  for (const auto& c : kCases) {
    Write(c.file);
    EXPECT_EQ(Rows(), c.rows) << c.what;
  }
}

TEST_F(ParadoxReaderTest, LargestBlocks) {
  TPxFile file = Letters({{{std::string(30000, 'x') + "y"}, 30000}, {{"a"}}}, 30002);
  file.blockKilobytes = 255;
  Write(file);
  EXPECT_TRUE(Rows().ends_with("x;x;y;a;"));
}

TEST_F(ParadoxReaderTest, FullBlocksOfOddRecords) {
  TPxFile file{.fields = {{"n", pxShort, 2}, {"pad", pxAlpha, 5}}};
  std::string rows;
  for (int i = 0; i < 1454; ++i) {  // 145 records of 7 bytes to a block of 1018, and 4 over
    if (i % 145 == 0) file.blocks.emplace_back();
    file.blocks.back().records.push_back(PxInteger(i - 700, 2) + PxText("p", 5));
    rows += Format("%d|p;", i - 700);
  }
  Write(file);
  EXPECT_EQ(Rows(), rows);
}

TEST_F(ParadoxReaderTest, MoreThan256Fields) {
  TPxFile file;
  std::string record;
  for (int i = 0; i < 300; ++i) {
    file.fields.push_back({Format("f%d", i), pxAlpha, 1});
    record += static_cast<char>('a' + i % 26);
  }
  file.blocks = {{{record}}};
  Write(file);
  TPxTable table(path_, false);
  EXPECT_EQ(table.Fields()[299].name, "f299");
  table.ReadRecord(0);
  EXPECT_EQ(VarToText(table.Values()[299]), "n");
}

TEST_F(ParadoxReaderTest, Memos) {
  // A block with a memo of its own at 0x1000, one that three share at 0x2000: their entries count 16 bytes each.
  std::string memos(0x1000, '#');
  memos += "HHHHHHHHHwhole memo";
  memos.resize(0x2180, '#');
  memos.replace(0x2000 + 12 + 3 * 5, 1, "\x06");
  memos.replace(0x2000 + 0x60, 12, "third shared");
  memos.replace(0x2000 + 12 + 63 * 5, 1, "\x16");
  memos.replace(0x2000 + 0x160, 12, "last of them");
  const struct {
    std::string field, value;
  } kCases[] = {
      {PxMemoField("lead", 0x10FF, 4), "text lead"},
      {PxMemoField("lead", 0x10FF, 10), "text whole memo"},
      {PxMemoField("lead", 0x2003, 12), "text third shared"},
      {PxMemoField("lead", 0x203F, 12), "text last of them"},
      {PxMemoField("lead", 0x10FF, 0), "null"},
  };
  for (const std::string name : {"t.mb", "t.MB", "T.Mb"}) {
    PutFile(folder_ / name, memos);
    for (const auto& c : kCases) {
      Write({.fields = {{"m", pxMemo, 14}}, .blocks = {{{c.field}}}});
      TPxTable table(path_, false);
      table.ReadRecord(0);
      EXPECT_EQ(testing::Shown(table.Values()[0]), c.value);
    }
    unlink((folder_ / name).c_str());
  }
}

TEST_F(ParadoxReaderTest, MemoFaultsNameTheMemoFile) {
  const auto failure = [this](std::uint32_t location, std::int32_t length) {
    Write({.fields = {{"m", pxMemo, 14}}, .blocks = {{{PxMemoField("lead", location, length)}}}});
    return Failure();
  };
  EXPECT_EQ(failure(0xFF, 5), "Cannot open t.mb: No such file or directory");
  EXPECT_EQ(failure(0xFF, 4), "nothing raised") << "the record holds the whole";
  PutFile(folder_ / "t.mb", std::string(100, '\x05'));
  EXPECT_EQ(failure(0xFF, 91), "nothing raised");
  EXPECT_EQ(failure(0xFF, 92), "t.mb: offset 0x09: a memo of 92 bytes, but the file ends at 0x64");
  EXPECT_EQ(failure(0xFF, 0x7FFFFFFF), "t.mb: offset 0x09: a memo of 2147483647 bytes, but the file ends at 0x64");
  EXPECT_EQ(failure(0xFFFFFFFF, 5), "t.mb: offset 0xFFFFFF09: a memo of 5 bytes, but the file ends at 0x64");
  EXPECT_EQ(failure(0x00, 20), "nothing raised");
  EXPECT_EQ(failure(0x00, 21), "t.mb: offset 0x50: a memo of 21 bytes, but the file ends at 0x64");
  EXPECT_EQ(failure(0x12, 5), "t.mb: offset 0x66: the place of memo 18 of its block, but the file ends at 0x64");
}

TEST_F(ParadoxReaderTest, HeaderNumbersAreHeldAgainstTheFile) {
  const TPxFile sound{.fields = {{"a", pxAlpha, 4}, {"m", pxMemo, 14}}, .blocks = {{{std::string(18, '\0')}}}};
  Write(sound);
  ASSERT_EQ(Failure(), "nothing raised");
  const struct {
    std::size_t at;
    std::string bytes, message;
  } kCases[] = {
      {0x00, "\x00\x00"s, "t.db: offset 0x00: a record of 0 bytes cannot hold field \"a\", which ends at 4"},
      {0x00, "\x11\x00"s, "t.db: offset 0x00: a record of 17 bytes cannot hold field \"m\", which ends at 18"},
      {0x00, "\xFB\x03"s, "t.db: offset 0x05: a block of 1024 bytes cannot hold a record of 1019"},
      {0x02, "\x57\x00"s, "t.db: offset 0x02: a header of 87 bytes in a file of 3072"},
      {0x02, "\x01\x0C"s, "t.db: offset 0x02: a header of 3073 bytes in a file of 3072"},
      {0x02, "\x8C\x01"s, "t.db: offset 0x21: a header of 396 bytes cannot hold 2 fields"},
      {0x02, "\x8F\x01"s, "t.db: offset 0x18F: the header ends before the name of field 2"},
      {0x05, "\x00"s, "t.db: offset 0x05: a block of 0 bytes cannot hold a record of 18"},
      {0x06, "\x39\x00\x00\x00"s, "t.db: offset 0x06: 57 records of 18 bytes, but only 1024 bytes after the header"},
      {0x06, "\xFF\xFF\xFF\xFF"s,
       "t.db: offset 0x06: 4294967295 records of 18 bytes, but only 1024 bytes after the header"},
      {0x0E, "\x02\x00"s, "t.db: offset 0x0E: the first block is number 2, which lies after the end of the file"},
      {0x21, "\xFF\xFF"s, "t.db: offset 0x21: a header of 2048 bytes cannot hold 65535 fields"},
      {0x23, "\x03\x00"s, "t.db: offset 0x23: a primary key of 3 fields in a table of 2"},
      {0x44, "\x00\x00\x00\x01"s, "This file is encrypted."},
      {0x7A, "\x03\x01"s, "nothing raised"},
      {0x7B, "\x09"s, "t.db: offset 0x7B: memo field \"m\" has 9 bytes, fewer than the 10 of its descriptor"},
      {0x804, "\xE9\x03"s,
       "t.db: offset 0x804: the last record begins at 1001, where a block of 1024 bytes has no room for 18"},
  };
  for (const auto& c : kCases) {
    std::string bytes = sound.Bytes();
    bytes.replace(c.at, c.bytes.size(), c.bytes);
    PutFile(path_, bytes);
    EXPECT_EQ(Failure(), c.message) << c.at;
  }
  PutFile(path_, std::string(87, '\0'));
  EXPECT_EQ(Failure(), "t.db: offset 0x57: the file ends within the first 88 bytes of its header");
  PutFile(path_, sound.Bytes().substr(0, 0x7FF));
  EXPECT_EQ(Failure(), "t.db: offset 0x02: a header of 2048 bytes in a file of 2047");
  TPxFile hollow{.fields = {{"a", 99, 0}, {"b", 99, 0}, {"c", pxAlpha, 2}}, .blocks = {{{"xx"}}}};
  Write(hollow);
  EXPECT_EQ(Failure(), "t.db: offset 0x00: a record of 2 bytes cannot hold 3 fields");
}

TEST_F(ParadoxReaderTest, WithoutRecordsOnlyTheFieldsMatter) {
  TPxFile file = Letters({});
  file.blockKilobytes = 0;
  Write(file);
  TPxTable table(path_, false);
  table.ReadRecord(0);
  EXPECT_EQ(testing::Shown(table.Values()[0]), "null");
}

TEST_F(ParadoxReaderTest, FilesAreOpenedWithOthersWritesDenied) {
  Write(Letters({{{"a"}, 32767}}));
  EXPECT_EQ(StrReplace(MessageOf([&] { TPxTable(folder_ / "none.db", true); }), folder_.Path(), ""),
            "Cannot open /none.db: No such file or directory");
  const int writer = open(path_.c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_EQ(flock(writer, LOCK_EX | LOCK_NB), 0);
  EXPECT_EQ(Failure(), "Cannot open t.db: another program has it open for writing");
  std::uint32_t records = 0;
  std::uint16_t fields = 0;
  TPxTable::ReadHeaderInfo(path_, records, fields);
  EXPECT_EQ(records, 1U);
  EXPECT_EQ(fields, 1U);
  flock(writer, LOCK_UN);
  TPxTable table(path_, true);
  EXPECT_NE(flock(writer, LOCK_EX | LOCK_NB), 0);
  table.Close();
  EXPECT_EQ(flock(writer, LOCK_EX | LOCK_NB), 0);
  EXPECT_EQ(MessageOf([&] { table.LoadNextBlock(); }), "TpxTable.LoadNextBlock: No stream assigned");
  close(writer);
  unlink(path_.c_str());
  mkfifo(path_.c_str(), 0600);
  EXPECT_EQ(Failure(), "Cannot open t.db: it is no regular file");
}

}  // namespace
}  // namespace velmora
