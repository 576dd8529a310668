#include "support/SpoiltFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <stdexcept>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "support/MessageOf.h"
#include "support/ParadoxFile.h"
#include "util/Errors.h"

namespace velmora::testing {

namespace {

using ::testing::HasSubstr;

// Its "rows" of table N, up to a limit, are one row: how many of so many files from number N on were read, and how
// many were refused.
class TBatchReader final : public TFileReader {
 public:
  explicit TBatchReader(const TSpoiltFiles& files) : files_(files) {}

  std::vector<TOLEDBTableRow> Tables() override { return {}; }
  TFileTable Structure(const std::string& /*table*/) override { return {}; }
  TFileRows Rows(const std::string& first, std::int64_t count) override {
    std::int64_t read = 0, refused = 0;
    for (std::int64_t i = 0; i < count; ++i) (Reads(static_cast<unsigned>(std::stol(first) + i)) ? read : refused) += 1;
    return {.rows = {{read, refused}}, .numbers = {}};
  }

 private:
  bool Reads(unsigned seed) const {
    PutFile(files_.path, files_.bytes(seed));
    try {
      const auto reader = files_.open(files_.path);
      for (const TOLEDBTableRow& table : reader->Tables()) {
        reader->Structure(table.TABLE_NAME);
        reader->Rows(table.TABLE_NAME, kAllRows);
      }
      return true;
    } catch (const EVelmora& error) {
      if (std::string_view(error.what()).find(files_.path) != std::string_view::npos) return false;
      throw std::logic_error(std::string("no path in the message: ") + error.what());
    }
  }

  const TSpoiltFiles& files_;
};

// The message of what went wrong in one of them; empty when all were read or refused.
std::string ReadBatch(TFileReader& reader, int first, int count, TSpoiltOutcome& outcome) {
  TFileRows counts;
  const std::string message = MessageOf([&] { counts = reader.Rows(std::to_string(first), count); });
  if (counts.rows.empty()) return message;
  outcome.read += static_cast<int>(std::get<std::int64_t>(counts.rows[0][0]));
  outcome.refused += static_cast<int>(std::get<std::int64_t>(counts.rows[0][1]));
  return {};
}

}  // namespace

TSpoiltOutcome ReadSpoiltFiles(const TSpoiltFiles& files, int count, const TChildLimits& limits) {
  constexpr int kBatch = 100;
  const auto reader =
      ReadInOwnProcess([&] { return std::make_unique<TBatchReader>(files); }, files.path, "the library", limits);
  TSpoiltOutcome outcome;
  for (int first = 0; first < count; first += kBatch) {
    if (ReadBatch(*reader, first, kBatch, outcome).empty()) continue;
    for (int i = first; i < first + kBatch; ++i) {  // to see which one it was
      const std::string message = ReadBatch(*reader, i, 1, outcome);
      if (message.empty()) continue;
      EXPECT_THAT(message, HasSubstr("Cannot read " + files.path + ": ")) << "file " << i;
      ++(message.find("(no answer") == std::string::npos ? outcome.crashed : outcome.silent);
    }
  }
  for (const auto& [name, number] :
       {std::pair{"read", outcome.read}, {"refused", outcome.refused}, {"crashed", outcome.crashed}})
    ::testing::Test::RecordProperty(name, number);
  EXPECT_GT(outcome.read, count / 10);
  EXPECT_GT(outcome.refused, count / 10);
  EXPECT_LT(outcome.crashed + outcome.silent, count / 10);
  return outcome;
}

}  // namespace velmora::testing
