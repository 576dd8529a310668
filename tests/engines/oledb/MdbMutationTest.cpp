// Spoilt Access files end in rows or in an error that names the file; what the library does not survive happens in a
// process of its own.

#include <gmock/gmock.h>

#include <random>

#include "engines/oledb/MdbRig.h"
#include "engines/oledb/ReaderProcess.h"
#include "util/Errors.h"

namespace velmora {
namespace {

using testing::PutFile;

constexpr int kFiles = 2500;

// One to four faults; most hit the heads of pages, where counts and pointers stand, or the rows at their ends.
std::string Spoilt(unsigned seed, std::string bytes, std::size_t page_size) {
  std::mt19937 random(seed);  // NOLINT: the same run each time
  const auto below = [&](std::size_t bound) { return random() % bound; };
  const std::size_t pages = bytes.size() / page_size;
  for (std::size_t faults = 1 + below(4); faults > 0; --faults) {
    const std::size_t page = below(pages) * page_size;
    const std::size_t at = page + (below(2) == 0 ? below(300) : page_size - 1 - below(200));
    switch (below(5)) {
      case 0:
        bytes[at] = static_cast<char>(bytes[at] ^ 1 << below(8));
        break;
      case 1:
        PutAt(bytes, std::min(at, bytes.size() - 4), below(2) == 0 ? below(pages + 2) << 8 | below(4) : random(), 4);
        break;
      case 2:
        PutAt(bytes, page + 4, below(pages + 1), 4);  // the next page, or the owner
        break;
      case 3:
        bytes.replace(page, page_size, bytes.substr(below(pages) * page_size, page_size));
        break;
      default:
        bytes[at] = static_cast<char>(below(3) == 0 ? 0xFF : random());
    }
  }
  if (below(20) == 0) bytes.resize(below(bytes.size()));
  return bytes;
}

// Its "rows" of table N are what came of reading the file spoilt by seed N: a number of rows, or an error.
class TSpoiltFiles final : public TFileReader {
 public:
  TSpoiltFiles(std::string path, const TMdbLayout& layout)
      : path_(std::move(path)), sound_(testing::MdbSample(layout)), page_size_(layout.page_size) {}

  std::vector<TOLEDBTableRow> Tables() override { return {}; }
  TFileTable Structure(const std::string& /*table*/) override { return {}; }
  TFileRows Rows(const std::string& seed, std::int64_t /*limit*/) override {
    PutFile(path_, Spoilt(static_cast<unsigned>(std::stoul(seed)), sound_, page_size_));
    std::int64_t rows = 0;
    const auto reader = OpenMdbFileHere(path_);
    for (const TOLEDBTableRow& table : reader->Tables()) {
      reader->Structure(table.TABLE_NAME);
      rows += static_cast<std::int64_t>(reader->Rows(table.TABLE_NAME, kAllRows).rows.size());
    }
    TFileRows outcome;
    outcome.rows = {{rows}};
    return outcome;
  }

 private:
  std::string path_;
  std::string sound_;
  std::size_t page_size_;
};

class MdbMutationTest : public ::testing::TestWithParam<bool> {};

TEST_P(MdbMutationTest, RowsOrAnError) {
  const TMdbLayout& layout = GetParam() ? kMdbJet4 : testing::kMdbJet3;
  const testing::TScratchFolder folder;
  const std::string path = folder / "spoilt.mdb";
  const auto reader =
      ReadInOwnProcess([&] { return std::make_unique<TSpoiltFiles>(path, layout); }, path, "the library",
                       {.silence = std::chrono::seconds(3), .memory = std::uint64_t{512} << 20});
  int read = 0, refused = 0, ended = 0;
  for (int seed = 0; seed < kFiles; ++seed) {
    SCOPED_TRACE(seed);
    const std::string message = testing::MessageOf([&] { reader->Rows(std::to_string(seed), kAllRows); });
    if (message == "nothing raised") {
      ++read;
    } else {
      ASSERT_THAT(message, ::testing::StartsWith("Cannot read " + path + ": "));
      ASSERT_THAT(message, ::testing::Not(::testing::HasSubstr("gave no answer")));
      ++(message.find("its reader ended") == std::string::npos ? refused : ended);
    }
  }
  RecordProperty("read", read);
  RecordProperty("refused", refused);
  RecordProperty("ended", ended);
  EXPECT_GT(read, kFiles / 10);
  EXPECT_GT(refused, kFiles / 10);
  EXPECT_LT(ended, kFiles / 10);
}

INSTANTIATE_TEST_SUITE_P(Layouts, MdbMutationTest, ::testing::Values(true, false),
                         [](const auto& layout) { return layout.param ? "Jet4" : "Jet3"; });

}  // namespace
}  // namespace velmora
