// Spoilt workbooks and sheets end in an error with a message or in rows; where a library crashes or hangs, it does so
// in a process of its own.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>

#include "engines/oledb/ExcelFile.h"
#include "engines/oledb/LotusFile.h"
#include "engines/oledb/ReaderProcess.h"
#include "support/ExcelFile.h"
#include "support/LotusFile.h"
#include "support/MessageOf.h"
#include "support/ParadoxFile.h"
#include "support/PerlWorkbook.h"
#include "support/ScratchFolder.h"
#include "util/Errors.h"
#include "util/Files.h"

namespace velmora {
namespace {

using testing::PutFile;

constexpr std::int64_t kFiles = 2000;
constexpr std::int64_t kBatch = 100;

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

// Reads spoilt files one behind the other, within the process that it runs in. "Rows" from a first file on: how many
// were read and how many refused.
class TSpoiltFiles final : public TFileReader {
 public:
  TSpoiltFiles(std::string path, std::string sound, std::size_t from, TOpen open)
      : path_(std::move(path)), sound_(std::move(sound)), from_(from), open_(std::move(open)) {}

  std::vector<TOLEDBTableRow> Tables() override { return {}; }
  TFileTable Structure(const std::string& /*table*/) override { return {}; }
  TFileRows Rows(const std::string& first, std::int64_t count) override {
    std::int64_t read = 0, refused = 0;
    for (std::int64_t i = 0; i < count; ++i) (Read(static_cast<unsigned>(std::stol(first) + i)) ? read : refused) += 1;
    return {.rows = {{read, refused}}, .numbers = {}};
  }

 private:
  bool Read(unsigned seed) {
    PutFile(path_, Spoilt(seed, sound_, from_));
    try {
      const auto reader = open_(path_);
      for (const TOLEDBTableRow& table : reader->Tables()) {
        reader->Structure(table.TABLE_NAME);
        reader->Rows(table.TABLE_NAME, kAllRows);
      }
      return true;
    } catch (const EVelmora& error) {
      if (std::string_view(error.what()).find(path_) == std::string_view::npos)
        throw std::logic_error("no path in the message");
      return false;
    }
  }

  std::string path_, sound_;
  std::size_t from_;
  TOpen open_;
};

struct TOutcome {
  std::int64_t read = 0, refused = 0, ended = 0;
};

class SheetMutationTest : public ::testing::Test {
 protected:
  // `from`: where what the faults shall mostly hit begins.
  TOutcome Run(const std::string& sound, std::size_t from, const TOpen& open) {
    const std::string path = folder_ / "spoilt";
    const auto reader =
        ReadInOwnProcess([&] { return std::make_unique<TSpoiltFiles>(path, sound, from, open); }, path, "the library",
                         {.silence = std::chrono::milliseconds(2000), .memory = std::uint64_t{2} << 30U});
    TOutcome outcome;
    for (std::int64_t first = 0; first < kFiles; first += kBatch)
      if (!RunBatch(*reader, first, kBatch, outcome))
        for (std::int64_t i = first; i < first + kBatch; ++i)
          if (!RunBatch(*reader, i, 1, outcome)) ++outcome.ended;
    RecordProperty("read", static_cast<int>(outcome.read));
    RecordProperty("refused", static_cast<int>(outcome.refused));
    RecordProperty("ended", static_cast<int>(outcome.ended));
    return outcome;
  }

  testing::TScratchFolder folder_;

 private:
  // False where the library did not survive it.
  bool RunBatch(TFileReader& reader, std::int64_t first, std::int64_t count, TOutcome& outcome) {
    TFileRows counts;
    const std::string message = testing::MessageOf([&] { counts = reader.Rows(std::to_string(first), count); });
    if (counts.rows.empty()) {
      EXPECT_THAT(message, ::testing::HasSubstr("Cannot read " + (folder_ / "spoilt"))) << "from file " << first;
      return false;
    }
    outcome.read += std::get<std::int64_t>(counts.rows[0][0]);
    outcome.refused += std::get<std::int64_t>(counts.rows[0][1]);
    return true;
  }
};

TEST_F(SheetMutationTest, Workbooks) {
  const std::string path = folder_ / "sound.xls";
  testing::WriteWorkbook(
      path,
      "sheet\tOrders\ntext\t0\t0\tid\ntext\t0\t1\tname\nnumber\t1\t0\t1\ntext\t1\t1\t\xC4\x8C"
      "ech\n"
      "date\t1\t2\t38000\nmoment\t2\t2\t38000.75\ntime\t3\t2\t0.5\nformula\t4\t0\t=1+1\t2\nsheet\tb\ncount\t9\t3\n");
  const TOutcome outcome =
      Run(ReadFileBytes(path), 512, [](const std::string& file) { return OpenExcelFileHere(file, true, true); });
  EXPECT_GT(outcome.read, kFiles / 10);
  EXPECT_GT(outcome.refused, kFiles / 10);
  EXPECT_LT(outcome.ended, kFiles / 10);
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
  const TOutcome outcome = Run(sound.Bytes(), 0, [](const std::string& file) { return OpenLotusFileHere(file); });
  EXPECT_GT(outcome.read, kFiles / 10);
  EXPECT_GT(outcome.refused, kFiles / 10);
  EXPECT_LT(outcome.ended, kFiles / 10);
}

}  // namespace
}  // namespace velmora
