// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/sheet/CompoundFile.h"

#include <algorithm>
#include <cstddef>

#include "util/Errors.h"
#include "util/LittleEndian.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kBadHead[] = "the compound file around the workbook is damaged";

// Places in the head.
constexpr std::size_t kSectorShiftAt = 30, kFirstFolderAt = 48, kFirstSmallTableAt = 60, kFirstTableListAt = 68;
constexpr std::size_t kTableListAt = 76, kTableListEnd = 512;

// Places in an entry of a folder.
constexpr std::size_t kEntrySize = 128;
constexpr std::size_t kNameSizeAt = 64, kTypeAt = 66, kLeftAt = 68, kRightAt = 72, kChildAt = 76;
constexpr std::size_t kStartAt = 116, kSizeAt = 120;
constexpr char kStreamType = 2;

constexpr std::uint32_t kLastSectorNumber = 0xFFFFFFFA;  // what is larger marks an end, or no sector
constexpr unsigned kSmallShift = 6;
constexpr std::uint64_t kSmallLimit = 4096;  // streams of fewer bytes lie in small sectors
constexpr std::uint64_t kWholeChain = ~std::uint64_t{0};

std::uint32_t NumberAt(std::string_view bytes, std::size_t at) {
  return at + sizeof(std::uint32_t) > bytes.size() ? ~0U : LittleAt<std::uint32_t>(bytes.data() + at);
}

// Of names beyond ASCII only the low bytes, since none of those is looked for.
std::string NameOf(std::string_view entry) {
  std::string name;
  const std::size_t size = std::min<std::size_t>(LittleAt<std::uint16_t>(entry.data() + kNameSizeAt), kNameSizeAt);
  for (std::size_t i = 0; i + 2 < size; i += 2) name += entry[i];
  return name;
}

}  // namespace

TCompoundFile::TCompoundFile(std::string_view bytes) : bytes_(bytes) {
  if (bytes.size() < kTableListEnd || !bytes.starts_with(kCompoundFileStart)) RaiseError(kBadHead);
  sector_shift_ = LittleAt<std::uint16_t>(bytes.data() + kSectorShiftAt);
  if (sector_shift_ != 9 && sector_shift_ != 12) RaiseError(kBadHead);
  sector_count_ = static_cast<std::uint32_t>(
      std::min<std::size_t>((bytes.size() >> sector_shift_) + 1, std::size_t{kLastSectorNumber}));
  FindTableSectors();
  ReadEntries();
}

std::string_view TCompoundFile::Sector(std::uint32_t number) const {
  const std::size_t at = (std::size_t{number} + 1) << sector_shift_;
  return number > kLastSectorNumber || at >= bytes_.size() ? std::string_view()
                                                           : bytes_.substr(at, std::size_t{1} << sector_shift_);
}

// The head lists the first of these sectors; a chain of its own, by the last number of each link, lists the others.
void TCompoundFile::FindTableSectors() {
  const auto take = [&](std::string_view list) {
    for (std::size_t at = 0; at + sizeof(std::uint32_t) <= list.size(); at += sizeof(std::uint32_t))
      if (const std::uint32_t number = NumberAt(list, at); table_sectors_.size() < sector_count_)
        table_sectors_.push_back(number);
  };
  take(bytes_.substr(kTableListAt, kTableListEnd - kTableListAt));
  std::string_view list = Sector(NumberAt(bytes_, kFirstTableListAt));
  for (std::uint32_t i = 0; i < sector_count_ && list.size() > sizeof(std::uint32_t); ++i) {
    take(list.substr(0, list.size() - sizeof(std::uint32_t)));
    list = Sector(NumberAt(list, list.size() - sizeof(std::uint32_t)));
  }
}

std::uint32_t TCompoundFile::NextSector(std::uint32_t number) const {
  const unsigned per_sector_shift = sector_shift_ - 2;
  const std::size_t table = number >> per_sector_shift;
  if (table >= table_sectors_.size()) return ~0U;
  const std::size_t at = number & ((1U << per_sector_shift) - 1);
  return NumberAt(Sector(table_sectors_[table]), at * sizeof(std::uint32_t));
}

std::string TCompoundFile::Chain(std::uint32_t start, std::uint64_t size) const {
  std::string bytes;
  std::uint32_t number = start;
  for (std::uint32_t i = 0; i < sector_count_ && bytes.size() < size; ++i) {
    const std::string_view sector = Sector(number);
    if (sector.empty()) break;
    bytes += sector;
    number = NextSector(number);
  }
  if (bytes.size() > size) bytes.resize(size);
  return bytes;
}

std::string TCompoundFile::SmallChain(std::uint32_t start, std::uint64_t size) const {
  std::string bytes;
  std::uint32_t number = start;
  for (std::size_t left = (small_sectors_.size() >> kSmallShift) + 1; left > 0 && bytes.size() < size; --left) {
    const std::size_t at = std::size_t{number} << kSmallShift;
    if (at >= small_sectors_.size()) break;
    bytes.append(small_sectors_, at, std::size_t{1} << kSmallShift);
    number = NumberAt(small_table_, std::size_t{number} * sizeof(std::uint32_t));
  }
  if (bytes.size() > size) bytes.resize(size);
  return bytes;
}

void TCompoundFile::ReadEntries() {
  const std::string folder = Chain(NumberAt(bytes_, kFirstFolderAt), kWholeChain);
  for (std::size_t at = 0; at + kEntrySize <= folder.size(); at += kEntrySize) {
    const std::string_view entry = std::string_view(folder).substr(at, kEntrySize);
    entries_.push_back({.name = NameOf(entry),
                        .type = entry[kTypeAt],
                        .left = NumberAt(entry, kLeftAt),
                        .right = NumberAt(entry, kRightAt),
                        .child = NumberAt(entry, kChildAt),
                        .start = NumberAt(entry, kStartAt),
                        .size = NumberAt(entry, kSizeAt)});  // its upper half is only used by files beyond 4 GB
  }
  if (entries_.empty()) RaiseError(kBadHead);
  small_table_ = Chain(NumberAt(bytes_, kFirstSmallTableAt), kWholeChain);
  small_sectors_ = Chain(entries_.front().start, entries_.front().size);
}

// Some programs write no proper tree of names. Then the first entry of that name counts, whatever folder it is in.
const TCompoundFile::TEntry* TCompoundFile::FindEntry(std::string_view name) const {
  const auto fits = [&](const TEntry& entry) { return entry.type == kStreamType && SameText(entry.name, name); };
  std::vector<bool> seen(entries_.size());
  std::vector<std::uint32_t> todo{entries_.front().child};
  while (!todo.empty()) {
    const std::uint32_t number = todo.back();
    todo.pop_back();
    if (number >= entries_.size() || seen[number]) continue;
    seen[number] = true;
    const TEntry& entry = entries_[number];
    if (fits(entry)) return &entry;
    todo.insert(todo.end(), {entry.left, entry.right});
  }
  if (std::ranges::count(seen, true) > 1) return nullptr;
  const auto first = std::ranges::find_if(entries_, fits);
  return first == entries_.end() ? nullptr : &*first;
}

std::optional<std::string> TCompoundFile::Stream(std::string_view name) const {
  const TEntry* entry = FindEntry(name);
  if (entry == nullptr) return std::nullopt;
  return entry->size < kSmallLimit ? SmallChain(entry->start, entry->size) : Chain(entry->start, entry->size);
}

}  // namespace velmora
