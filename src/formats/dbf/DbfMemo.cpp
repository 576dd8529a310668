// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/dbf/DbfMemo.h"

#include <algorithm>
#include <array>
#include <filesystem>

#include "util/Format.h"
#include "util/LittleEndian.h"

namespace velmora {
namespace {

constexpr std::uint64_t kDBase3Block = 512;
constexpr std::size_t kHead = 24;               // as much of the file's head as counts
constexpr std::size_t kDBase4BlockSizeAt = 20;  // 2 bytes
constexpr std::size_t kFoxProBlockSizeAt = 6;   // 2 bytes, highest first
constexpr std::size_t kMemoHead = 8;            // its kind, its length
constexpr std::uint32_t kDBase4Memo = 0x0008FFFF;
constexpr char kEndOfMemo = 0x1A;

constexpr char kHeadTooShort[] = "the file ends within the first %d bytes of its head";
constexpr char kNoBlocks[] = "a block size of 0";
constexpr char kBeyondEnd[] = "a memo begins here, but the file ends at 0x%02X";
constexpr char kTooLong[] = "a memo of %d bytes, but the file ends at 0x%02X";
constexpr char kNoEnd[] = "the file ends before the memo that begins here does";
constexpr char kNoMemo[] = "no memo begins here";
constexpr char kShared[] = "with this memo more bytes were read than the %d of the file: records share memos";

}  // namespace

std::string_view DbfMemoExtension(EDbfMemo form) { return form == EDbfMemo::FoxPro ? ".fpt" : ".dbt"; }

std::string TDbfMemoFile::Read(std::uint32_t block) {
  if (!file_) Open();
  const std::uint64_t place = block * block_size_;
  if (place >= file_->Size()) RaiseDbfFault(file_->Path(), place, Format(kBeyondEnd, file_->Size()));
  if (form_ == EDbfMemo::DBase3) return ReadToMark(place);
  std::array<char, kMemoHead> head{};
  if (file_->ReadAt(place, head) < head.size()) RaiseDbfFault(file_->Path(), place, kNoEnd);
  if (form_ == EDbfMemo::FoxPro) return ReadSized(place + kMemoHead, DbfBigAt(head.data() + 4));
  // The length counts these bytes too.
  const auto size = LittleAt<std::uint32_t>(head.data() + 4);
  if (LittleAt<std::uint32_t>(head.data()) != kDBase4Memo || size < kMemoHead)
    RaiseDbfFault(file_->Path(), place, kNoMemo);
  return ReadSized(place + kMemoHead, size - kMemoHead);
}

void TDbfMemoFile::Open() {
  const std::filesystem::path table(table_path_);
  auto file = std::make_unique<TInputFile>(
      FindFileNoCase(table.parent_path().string(), table.stem().string(), extension_), ESharing::Full);
  std::array<char, kHead> head{};
  const std::size_t count = file->ReadAt(0, head);
  if (count < head.size()) RaiseDbfFault(file->Path(), count, Format(kHeadTooShort, head.size()));
  switch (form_) {
    case EDbfMemo::DBase3:
      block_size_ = kDBase3Block;
      break;
    case EDbfMemo::DBase4:
      block_size_ = LittleAt<std::uint16_t>(head.data() + kDBase4BlockSizeAt);
      break;
    case EDbfMemo::FoxPro:
      block_size_ = DbfBigAt(head.data() + kFoxProBlockSizeAt - 2) & 0xFFFF;
      break;
  }
  if (block_size_ == 0)
    RaiseDbfFault(file->Path(), form_ == EDbfMemo::FoxPro ? kFoxProBlockSizeAt : kDBase4BlockSizeAt, kNoBlocks);
  file_ = std::move(file);
}

// The text ends at the first mark; what follows in its block is left from others.
std::string TDbfMemoFile::ReadToMark(std::uint64_t place) {
  std::string memo;
  std::array<char, kDBase3Block> part{};
  for (std::uint64_t at = place;;) {
    const std::size_t count = file_->ReadAt(at, part);
    const std::size_t size = std::min(std::string_view(part.data(), count).find(kEndOfMemo), count);
    memo.append(part.data(), size);
    Count(place, size);
    if (size < count) return memo;
    if (count < part.size()) RaiseDbfFault(file_->Path(), place, kNoEnd);
    at += count;
  }
}

std::string TDbfMemoFile::ReadSized(std::uint64_t place, std::uint64_t size) {
  if (size > file_->Size() - place) RaiseDbfFault(file_->Path(), place, Format(kTooLong, size, file_->Size()));
  Count(place, size);
  std::string memo(size, '\0');
  if (file_->ReadAt(place, memo) < size) RaiseDbfFault(file_->Path(), place, kNoEnd);  // cut since it was opened
  return memo;
}

void TDbfMemoFile::Count(std::uint64_t place, std::uint64_t size) {
  read_ += size;
  if (read_ > file_->Size()) RaiseDbfFault(file_->Path(), place, Format(kShared, file_->Size()));
}

}  // namespace velmora
