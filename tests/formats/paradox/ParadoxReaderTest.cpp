// SPDX-License-Identifier: GPL-3.0-or-later

// Tables of Paradox beyond the cases of tests/data/formats: of any size, and shared with other programs.

#include "formats/paradox/ParadoxReader.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/FormatCase.h"
#include "support/MessageOf.h"
#include "support/ScratchFolder.h"
#include "support/ShownValues.h"
#include "util/Format.h"

namespace velmora::testing {
namespace {

class ParadoxReaderTest : public ::testing::Test {
 protected:
  // A table of records of one letter, changed.
  void Put(const std::string& change) { PutFile(path_, BytesOver(FormatCase("paradox-blocks").Bytes("t.db"), change)); }

  TScratchFolder folder_;
  const std::string path_ = folder_ / "t.db";
};

TEST_F(ParadoxReaderTest, LargestBlocks) {
  Put("@5 FF @6 le4:30002 @0x804 le2:30000 \"x\"*30000 \"y\" @263168 00*4 le2:0 \"a\" @524287 00");
  TPxTable table(path_, false);
  std::string letters;
  for (int i = 0; i < 30002; ++i) {
    table.ReadRecord(i);
    letters += VarToText(table.Values()[0]);
  }
  EXPECT_TRUE(letters == std::string(30000, 'x') + "ya");
}

TEST_F(ParadoxReaderTest, MoreThan256Fields) {
  std::string types, names, record;
  for (int i = 0; i < 300; ++i) {
    types += "01 01 ";
    names += Format("\"f%d\" 00 ", i);
    record += static_cast<char>('a' + i % 26);
  }
  Put("le2:300 le2:4096 @6 le4:1 @33 le2:300 @88 00*32 " + types + "00*1204 00*261 " + names + "@4096 00*6 \"" +
      record + "\" @5119 00");
  TPxTable table(path_, false);
  EXPECT_EQ(table.Fields()[299].name, "f299");
  table.ReadRecord(0);
  EXPECT_EQ(VarToText(table.Values()[299]), "n");
}

TEST_F(ParadoxReaderTest, WithoutRecordsOnlyTheFieldsMatter) {
  Put("@5 00 @6 le4:0");
  TPxTable table(path_, false);
  table.ReadRecord(0);
  EXPECT_EQ(ShownRow(table.Values()), "null");
}

TEST_F(ParadoxReaderTest, FilesAreOpenedWithOthersWritesDenied) {
  Put("@0x804 le2:32767");
  const auto failure = [&] { return MessageOf([&] { TPxTable(path_, false).ReadRecord(0); }); };
  const int writer = open(path_.c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_EQ(flock(writer, LOCK_EX | LOCK_NB), 0);
  EXPECT_EQ(failure(), "Cannot open " + path_ + ": another program has it open for writing");
  std::uint32_t records = 0;
  std::uint16_t fields = 0;
  TPxTable::ReadHeaderInfo(path_, records, fields);
  EXPECT_EQ(records, 6U);
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
  EXPECT_EQ(failure(), "Cannot open " + path_ + ": it is no regular file");
}

}  // namespace
}  // namespace velmora::testing
