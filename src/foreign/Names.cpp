#include "foreign/Names.h"

#include <cstdint>

#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr std::size_t kKeptLetters = 55;

// FNV-1a: the same on every machine.
std::uint32_t Hash(std::string_view text) {
  constexpr std::uint32_t kStart = 2166136261U;
  constexpr std::uint32_t kPrime = 16777619U;
  std::uint32_t hash = kStart;
  for (const char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * kPrime;
  return hash;
}

std::string HexDigits(std::uint32_t number) {
  constexpr int kDigits = 8;
  constexpr unsigned kBits = 4;
  std::string text(kDigits, '0');
  for (auto digit = text.rbegin(); digit != text.rend(); ++digit, number >>= kBits)
    *digit = "0123456789abcdef"[number & 0xFU];
  return text;
}

}  // namespace

std::string MakeName(std::string_view name, std::string_view nameless) {
  constexpr std::size_t kTooWide = 4;  // bytes of a letter
  std::string made;
  for (std::size_t at = 0; at < name.size();) {
    const std::size_t size = CharSize(name, at);
    if (size >= kTooWide || static_cast<unsigned char>(name[at]) < ' ')
      made += '_';
    else
      made += name.substr(at, size);
    at += size;
  }
  while (made.ends_with(' ')) made.pop_back();
  if (made.empty()) made = nameless;
  if (CharCount(made) <= kLongestName) return made;
  return CutChars(made, kKeptLetters) + "_" + HexDigits(Hash(made));
}

std::string TNames::Take(const std::string& name) {
  std::string free = name;
  for (int number = 2; !taken_.insert(LowerText(free)).second; ++number)
    free = CutChars(name, kKeptLetters) + Format("_%d", number);
  return free;
}

bool TNames::Has(const std::string& name) const { return taken_.contains(LowerText(name)); }

}  // namespace velmora
