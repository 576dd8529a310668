// Spoilt workbooks and sheets end in an error with a message or in rows; where a library crashes or hangs, it does so
// in a process of its own.

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <random>

#include "formats/sheet/ExcelFile.h"
#include "formats/sheet/LotusFile.h"
#include "support/ExcelFile.h"
#include "support/LotusFile.h"
#include "support/PerlWorkbook.h"
#include "support/ScratchFolder.h"
#include "support/SpoiltFiles.h"
#include "util/Files.h"

namespace velmora {
namespace {

constexpr int kFiles = 2000;

using TOpen = std::function<std::unique_ptr<TFileReader>(const std::string& path)>;

std::string Spoilt(unsigned seed, std::string bytes, std::size_t from) {
  constexpr unsigned char kBytes[] = {0x00, 0x01, 0x7F, 0x80, 0xFF};
  std::mt19937 random(seed);  // NOLINT: the same run each time
  for (std::size_t count = 1 + random() % 4; count > 0; --count) {
    const std::size_t at = random() % 4 == 0 ? random() % 600 : from + random() % (bytes.size() - from);
    bytes[at % bytes.size()] = static_cast<char>(random() % 2 == 0 ? kBytes[random() % std::size(kBytes)] : random());
  }
  if (random() % 16 == 0) bytes.resize(random() % bytes.size());
  if (random() % 16 == 0) bytes.insert(random() % (bytes.size() + 1), bytes.substr(0, random() % 64));
  return bytes;
}

class SheetMutationTest : public ::testing::Test {
 protected:
  // `from`: where what the faults shall mostly hit begins.
  void Run(const std::string& sound, std::size_t from, const TOpen& open) const {
    const auto bytes = [&](unsigned seed) { return Spoilt(seed, sound, from); };
    testing::ReadSpoiltFiles({folder_ / "spoilt", bytes, open}, kFiles,
                             {.silence = std::chrono::seconds(2), .memory = std::uint64_t{2} << 30U});
  }

  testing::TScratchFolder folder_;
};

TEST_F(SheetMutationTest, Workbooks) {
  const std::string path = folder_ / "sound.xls";
  testing::WriteWorkbook(
      path,
      "sheet\tOrders\ntext\t0\t0\tid\ntext\t0\t1\tname\nnumber\t1\t0\t1\ntext\t1\t1\t\xC4\x8C"
      "ech\n"
      "date\t1\t2\t38000\nmoment\t2\t2\t38000.75\ntime\t3\t2\t0.5\nformula\t4\t0\t=1+1\t2\nsheet\tb\ncount\t9\t3\n");
  Run(ReadFileBytes(path), 512, [](const std::string& file) { return OpenExcelFileHere(file, true, true); });
}

TEST_F(SheetMutationTest, LotusSheets) {
  const testing::TWkFile sound{.sheets = {{"Orders",
                                           {{0, 0, "id"},
                                            {0, 1, "name"},
                                            {1, 0, 1.0},
                                            {1, 1, "Ann"},
                                            {2, 0, 38000.0, testing::wkDate},
                                            {3, 0, 0.5, testing::wkTime},
                                            {4, 0, 2.5, testing::wkGeneral, true}}},
                                          {"b", {{0, 0, 1.0}}}}};
  Run(sound.Bytes(), 0, OpenLotusFileHere);
}

}  // namespace
}  // namespace velmora
