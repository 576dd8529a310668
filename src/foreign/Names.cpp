// SPDX-License-Identifier: GPL-3.0-or-later
#include "foreign/Names.h"

#include <array>
#include <clocale>
#include <cstdint>
#include <cwctype>

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

// InnoDB's own columns, in lower case.
constexpr std::array<std::string_view, 4> kStorageColumns = {"db_row_id", "db_trx_id", "db_roll_ptr", "fts_doc_id"};
// What follows is the name of a file, and not of a table.
constexpr std::string_view kFileNameMark = "#mysql50#";

char32_t CodePointOf(std::string_view letter) {
  constexpr unsigned kTail = 0x3F, kTailBits = 6;
  constexpr std::array<unsigned, 5> kLead = {0, 0x7F, 0x1F, 0x0F, 0x07};  // by size
  char32_t code = static_cast<unsigned char>(letter[0]) & (letter.size() == 1 ? 0xFFU : kLead.at(letter.size()));
  for (const char c : letter.substr(1)) code = code << kTailBits | (static_cast<unsigned char>(c) & kTail);
  return code;
}

// Servers ignore the case of all letters, not only of the plain ones.
std::u32string Folded(std::string_view name) {
  static const locale_t kLetters = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  std::u32string folded;
  for (std::size_t at = 0; at < name.size(); at += CharSize(name, at)) {
    const char32_t code = CodePointOf(name.substr(at, CharSize(name, at)));
    folded += kLetters == nullptr ? code : static_cast<char32_t>(towlower_l(static_cast<wint_t>(code), kLetters));
  }
  return folded;
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

std::string MakeColumnName(std::string_view name, std::string_view nameless) {
  std::string made = MakeName(name, nameless);
  if (std::ranges::find(kStorageColumns, LowerText(made)) != kStorageColumns.end()) made += '_';
  return made;
}

std::string MakeTableName(std::string_view name, std::string_view nameless) {
  std::string made = MakeName(name, nameless);
  if (made.starts_with(kFileNameMark)) made.front() = '_';
  return made;
}

std::string MakeKeyName(std::string_view name, std::string_view nameless) {
  std::string made = MakeName(name, nameless);
  return SameText(made, "PRIMARY") ? "PRIMARY_KEY" : made;
}

std::string TNames::Take(const std::string& name) {
  if (taken_.insert(Folded(name)).second) return name;
  const std::string start = CutChars(name, kKeptLetters);
  int& number = last_.try_emplace(Folded(start), 1).first->second;
  std::string free;
  do free = start + Format("_%d", ++number);
  while (!taken_.insert(Folded(free)).second);
  return free;
}

}  // namespace velmora
