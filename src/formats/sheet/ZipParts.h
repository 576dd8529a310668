// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The parts of a Zip archive, unpacked piece by piece and within bounds.

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

struct zip;
struct zip_file;

namespace velmora {

// A small file may claim to hold any amount.
inline constexpr std::uint64_t kMostUnpacked = 4ULL << 30U;   // bytes of all parts that are read of an archive
inline constexpr std::uint64_t kMostGrowth = 300;             // times the packed size, of a part beyond ...
inline constexpr std::uint64_t kGrowthAtWill = 16ULL << 20U;  // ... so many bytes

class TZipPart;

// Over the bytes of a whole archive, which outlive it. All raise the archive library's own message for what is damaged.
class TZipParts {
 public:
  explicit TZipParts(std::string_view bytes);

  // The part of that name; where none has it, the one whose name differs in the case of letters. Raises an error when
  // there is none. It must not outlive the archive.
  TZipPart Open(const std::string& name);
  bool Has(const std::string& name) const;

 private:
  friend class TZipPart;
  struct TClose {
    void operator()(zip* archive) const;
  };

  std::int64_t Find(const std::string& name) const;  // its place; -1: there is none

  std::unique_ptr<zip, TClose> archive_;
  std::uint64_t unpacked_ = 0;
};

class TZipPart {
 public:
  // Fills `buffer` as far as there is something left and gives the number of bytes, 0 at the end. Raises an error for
  // damage and beyond the bounds.
  std::size_t Read(std::span<char> buffer);

 private:
  friend class TZipParts;
  struct TClose {
    void operator()(zip_file* file) const;
  };
  TZipPart(TZipParts& parts, zip_file* file, std::uint64_t packed) : parts_(&parts), file_(file), packed_(packed) {}

  TZipParts* parts_;
  std::unique_ptr<zip_file, TClose> file_;
  std::uint64_t packed_ = 0;
  std::uint64_t unpacked_ = 0;
};

}  // namespace velmora
