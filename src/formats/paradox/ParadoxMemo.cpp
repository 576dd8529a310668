// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/paradox/ParadoxMemo.h"

#include <filesystem>

#include "formats/paradox/ParadoxHeader.h"
#include "util/Format.h"

namespace velmora {
namespace {

constexpr char kExtension[] = ".mb";
constexpr std::uint32_t kIndexBits = 0xFF;
constexpr std::uint32_t kWholeBlock = 255;  // the index of a memo that has its block to itself
constexpr std::uint64_t kWholeBlockHeader = 9;
constexpr std::uint64_t kEntriesAt = 12;
constexpr std::uint64_t kEntrySize = 5;
constexpr std::uint64_t kEntryUnit = 16;  // of the place that an entry gives

constexpr char kMemoBeyondEnd[] = "a memo of %d bytes, but the file ends at 0x%02X";
constexpr char kEntryBeyondEnd[] = "the place of memo %d of its block, but the file ends at 0x%02X";

}  // namespace

std::string TPxMemoFile::Read(std::uint32_t location, std::size_t length) {
  if (!file_) Open();
  const std::uint32_t index = location & kIndexBits;
  const std::uint64_t block = location & ~kIndexBits;
  const std::uint64_t place = index == kWholeBlock ? block + kWholeBlockHeader : SharedPlace(block, index);
  const auto fail = [&] { RaisePxFault(file_->Path(), place, Format(kMemoBeyondEnd, length, file_->Size())); };
  if (place > file_->Size() || length > file_->Size() - place) fail();
  std::string memo(length, '\0');
  if (file_->ReadAt(place, memo) < length) fail();  // cut since it was opened
  return memo;
}

void TPxMemoFile::Open() {
  const std::filesystem::path table(table_path_);
  file_.emplace(FindFileNoCase(table.parent_path().string(), table.stem().string(), kExtension));
}

std::uint64_t TPxMemoFile::SharedPlace(std::uint64_t block, std::uint32_t index) const {
  const std::uint64_t at = block + kEntriesAt + index * kEntrySize;
  char unit = 0;
  if (file_->ReadAt(at, {&unit, 1}) == 0)
    RaisePxFault(file_->Path(), at, Format(kEntryBeyondEnd, index, file_->Size()));
  return block + static_cast<unsigned char>(unit) * kEntryUnit;
}

}  // namespace velmora
