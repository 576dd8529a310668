// Spoilt files end in an error with a message or in rows, and never in more than that.

#include <gtest/gtest.h>

#include <random>

#include "core/Meta.h"
#include "engines/file/DBConnParadox.h"
#include "formats/paradox/ParadoxHeader.h"
#include "support/ParadoxFile.h"
#include "support/ScratchFolder.h"
#include "util/Errors.h"

namespace velmora {
namespace {

using testing::PutFile;
using testing::PxFloat;
using testing::PxInteger;
using testing::PxMemoField;
using testing::PxText;

constexpr int kFiles = 3000;

std::string SoundTable() {
  testing::TPxFile file{.fields = {{"id", pxLong, 4},
                                   {"name", pxAlpha, 9},
                                   {"day", pxDate, 4},
                                   {"at", pxTimestamp, 8},
                                   {"price", pxBCD, 2},
                                   {"yes", pxLogical, 1},
                                   {"memo", pxMemo, 14}},
                        .keys = 1};
  for (int block = 0; block < 4; ++block) {
    file.blocks.emplace_back();
    if (block == 2) file.blocks.back().addDataSize = -57;
    for (int i = 0; block != 2 && i < 17; ++i) {
      const std::uint32_t place = i % 2 == 0 ? 0x0FFU : 0x1000U + static_cast<std::uint32_t>(i);
      file.blocks.back().records.push_back(PxInteger(i, 4) + PxText("name", 9) + PxInteger(730000 + i, 4) +
                                           PxFloat(6.3e13 + i) + std::string(17, '\xC1') + "\x81" +
                                           PxMemoField("memo", place, 4 + i));
    }
  }
  return file.Bytes();
}

std::string SoundMemos() {
  std::string memos(0x2000, 'm');
  for (std::size_t i = 0; i < 64; ++i) memos[0x1000 + 12 + 5 * i] = static_cast<char>(0x20 + i);
  return memos;
}

// Where a fault hurts most: the header's numbers, its fields, a block's header, a memo's place. Else anywhere.
std::size_t Place(std::mt19937& random, std::size_t size) {
  const auto below = [&random](std::size_t end) { return random() % end; };
  switch (below(4)) {
    case 0:
      return below(0x60);
    case 1:
      return 0x58 + below(0x1E0);
    case 2:
      return 2048 + 1024 * below(4) + below(8);
    default:
      return below(size);
  }
}

std::string Spoilt(std::mt19937& random, std::string bytes) {
  constexpr unsigned char kBytes[] = {0x00, 0x01, 0x7F, 0x80, 0xFF};
  for (std::size_t count = 1 + random() % 3; count > 0; --count) {
    const std::size_t at = Place(random, bytes.size());
    bytes[at % bytes.size()] = static_cast<char>(random() % 2 == 0 ? kBytes[random() % std::size(kBytes)] : random());
  }
  if (random() % 16 == 0) bytes.resize(random() % bytes.size());
  return bytes;
}

// Gives the rows read, or -1 for an error that says what it is about.
std::int64_t Outcome(TDBConnParadox& conn) {
  try {
    conn.meta().GotoTable("t");
    conn.FetchIfNeeded();
    return conn.OpenTable("t")->RecordCount();
  } catch (const EVelmora& error) {
    EXPECT_FALSE(std::string_view(error.what()).empty());
    return -1;
  }
}

TEST(ParadoxMutationTest, EndsInRowsOrInAMessage) {
  const testing::TScratchFolder folder;
  const std::string table = SoundTable(), memos = SoundMemos();
  std::mt19937 random(20240601);  // NOLINT: the same run each time
  int read = 0, refused = 0;
  for (int i = 0; i < kFiles; ++i) {
    PutFile(folder / "t.db", i == 0 ? table : Spoilt(random, table));
    PutFile(folder / "t.mb", random() % 2 == 0 ? memos : Spoilt(random, memos));
    TDBConnParadox conn(folder.Path());
    conn.Connect();
    const std::int64_t rows = Outcome(conn);
    if (i == 0) ASSERT_EQ(rows, 51) << "the sound table";
    (rows < 0 ? refused : read) += 1;
  }
  EXPECT_GT(read, 100);
  EXPECT_GT(refused, 100);
  RecordProperty("read", read);
  RecordProperty("refused", refused);
}

}  // namespace
}  // namespace velmora
