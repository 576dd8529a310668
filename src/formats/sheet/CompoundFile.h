// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The streams of a compound file, the file system within a file that older office programs write (Microsoft's
// published [MS-CFB]).

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {

inline constexpr std::string_view kCompoundFileStart = "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1";

// Over the bytes of a whole file, which outlive it. Nothing that the file claims is believed beyond its own size: every
// chain ends after as many sectors as the file has. Where a chain breaks off early the stream ends there; whether that
// is a fault is known to those alone who read the stream.
class TCompoundFile {
 public:
  explicit TCompoundFile(std::string_view bytes);  // raises an error for a head that makes no sense

  // The stream of that name (ASCII, its case plays no part) in the outermost folder. Streams of embedded documents lie
  // in folders of their own and are not looked at.
  std::optional<std::string> Stream(std::string_view name) const;

 private:
  struct TEntry {
    std::string name;
    char type = 0;
    std::uint32_t left = 0, right = 0, child = 0, start = 0;
    std::uint64_t size = 0;
  };
  std::string_view Sector(std::uint32_t number) const;  // shorter at the file's end, empty beyond it
  std::uint32_t NextSector(std::uint32_t number) const;
  std::string Chain(std::uint32_t start, std::uint64_t size) const;
  std::string SmallChain(std::uint32_t start, std::uint64_t size) const;
  void FindTableSectors();
  void ReadEntries();
  const TEntry* FindEntry(std::string_view name) const;

  std::string_view bytes_;
  unsigned sector_shift_ = 0;
  std::uint32_t sector_count_ = 0;
  std::vector<std::uint32_t> table_sectors_;  // those that hold the table of chains
  std::vector<TEntry> entries_;               // the first is the outermost folder
  std::string small_table_;                   // the chains of small sectors
  std::string small_sectors_;                 // what those hold
};

}  // namespace velmora
