// Spoilt Access files end in rows or in an error that names the file; what the library does not survive happens in a
// process of its own.

#include <gtest/gtest.h>

#include <chrono>
#include <random>

#include "formats/mdb/MdbReader.h"
#include "formats/mdb/MdbRig.h"
#include "support/SpoiltFiles.h"

namespace velmora {
namespace {

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

class MdbMutationTest : public ::testing::TestWithParam<bool> {};

TEST_P(MdbMutationTest, RowsOrAnError) {
  const TMdbLayout& layout = GetParam() ? kMdbJet4 : testing::kMdbJet3;
  const testing::TScratchFolder folder;
  const std::string sound = testing::MdbSample(layout);
  const auto bytes = [&](unsigned seed) { return Spoilt(seed, sound, layout.page_size); };
  const testing::TSpoiltOutcome outcome =
      testing::ReadSpoiltFiles({folder / "spoilt.mdb", bytes, OpenMdbFileHere}, kFiles,
                               {.silence = std::chrono::seconds(3), .memory = std::uint64_t{512} << 20});
  EXPECT_EQ(outcome.silent, 0);
}

INSTANTIATE_TEST_SUITE_P(Layouts, MdbMutationTest, ::testing::Values(true, false),
                         [](const auto& layout) { return layout.param ? "Jet4" : "Jet3"; });

}  // namespace
}  // namespace velmora
