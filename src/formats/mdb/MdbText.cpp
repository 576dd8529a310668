// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/mdb/MdbText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <system_error>

#include "util/Format.h"
#include "util/LittleEndian.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char32_t kNoCharacter = 0xFFFD;
constexpr std::string_view kCompressed = "\xFF\xFE";

void AppendUtf8(std::string& text, char32_t c) {
  const auto put = [&](char32_t byte) { text += static_cast<char>(byte); };
  if (c < 0x80) return put(c);
  if (c < 0x800) {
    put(0xC0 | c >> 6);
  } else if (c < 0x10000) {
    put(0xE0 | c >> 12);
    put(0x80 | (c >> 6 & 0x3F));
  } else {
    put(0xF0 | c >> 18);
    put(0x80 | (c >> 12 & 0x3F));
    put(0x80 | (c >> 6 & 0x3F));
  }
  put(0x80 | (c & 0x3F));
}

// The character at `index`, which moves past it.
char32_t NextCharacter(std::string_view text, std::size_t& index) {
  const std::size_t size = CharSize(text, index);
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[index + i]); };
  char32_t c = byte(0);
  if (size == 1 && c >= 0x80) c = kNoCharacter;
  if (size > 1) c &= 0x7FU >> size;
  for (std::size_t i = 1; i < size; ++i) c = c << 6 | (byte(i) & 0x3FU);
  index += size;
  return c;
}

bool IsHighSurrogate(char32_t unit) { return unit >= 0xD800 && unit < 0xDC00; }
bool IsLowSurrogate(char32_t unit) { return unit >= 0xDC00 && unit < 0xE000; }

// The compressed form leaves the high byte out where it is 0; a byte 0 switches to whole units and back.
std::optional<std::u16string> UnitsOfCompressed(std::string_view stored) {
  std::u16string units;
  bool compressed = true;
  for (std::size_t i = 0; i < stored.size();) {
    if (stored[i] == '\0') {
      compressed = !compressed;
      ++i;
    } else if (compressed) {
      units += static_cast<unsigned char>(stored[i++]);
    } else {
      if (i + 1 >= stored.size()) return std::nullopt;
      units += LittleAt<char16_t>(stored.data() + i);
      i += 2;
    }
  }
  return units;
}

std::optional<std::u16string> UnitsOf(std::string_view stored) {
  if (stored.starts_with(kCompressed)) return UnitsOfCompressed(stored.substr(kCompressed.size()));
  if (stored.size() % 2 != 0) return std::nullopt;
  std::u16string units;
  for (std::size_t i = 0; i < stored.size(); i += 2) units += LittleAt<char16_t>(stored.data() + i);
  return units;
}

// The number in base 2 to the 32, the highest group first, as decimal digits with `scale` of them after the point.
template <std::size_t kGroups>
std::string DecimalText(std::array<std::uint32_t, kGroups> groups, std::size_t scale, bool negative) {
  std::string digits;  // the last one first
  while (digits.size() <= scale || std::ranges::any_of(groups, [](std::uint32_t group) { return group != 0; })) {
    std::uint64_t rest = 0;
    for (std::uint32_t& group : groups) {
      const std::uint64_t part = rest << 32 | group;
      group = static_cast<std::uint32_t>(part / 10);
      rest = part % 10;
    }
    digits += static_cast<char>('0' + rest);
  }
  if (scale > 0) digits.insert(scale, ".");
  if (negative && digits.find_first_not_of("0.") != std::string::npos) digits += '-';
  std::ranges::reverse(digits);
  return digits;
}

}  // namespace

std::optional<std::string> TextOfUtf16(std::string_view stored) {
  const std::optional<std::u16string> units = UnitsOf(stored);
  if (!units) return std::nullopt;
  std::string text;
  for (std::size_t i = 0; i < units->size(); ++i) {
    char32_t c = (*units)[i];
    if (IsHighSurrogate(c) && i + 1 < units->size() && IsLowSurrogate((*units)[i + 1]))
      c = 0x10000 + ((c - 0xD800) << 10) + ((*units)[++i] - 0xDC00U);
    else if (IsHighSurrogate(c) || IsLowSurrogate(c))
      c = kNoCharacter;
    AppendUtf8(text, c);
  }
  return text;
}

std::string Utf16OfText(std::string_view utf8) {
  std::string stored;
  const auto put = [&](char32_t unit) {
    stored += static_cast<char>(unit & 0xFF);
    stored += static_cast<char>(unit >> 8 & 0xFF);
  };
  for (std::size_t i = 0; i < utf8.size();) {
    const char32_t c = NextCharacter(utf8, i);
    if (c < 0x10000) {
      put(c);
    } else {
      put(0xD800 + ((c - 0x10000) >> 10));
      put(0xDC00 + ((c - 0x10000) & 0x3FF));
    }
  }
  return stored;
}

std::optional<std::string> TextOfMoney(std::string_view stored) {
  constexpr std::size_t kScale = 4;
  if (stored.size() != sizeof(std::int64_t)) return std::nullopt;
  const auto bits = LittleAt<std::uint64_t>(stored.data());
  const bool negative = bits >> 63 != 0;
  const std::uint64_t amount = negative ? 0 - bits : bits;
  return DecimalText<2>({static_cast<std::uint32_t>(amount >> 32), static_cast<std::uint32_t>(amount)}, kScale,
                        negative);
}

std::optional<std::string> TextOfNumeric(std::string_view stored, int scale) {
  constexpr std::size_t kGroups = 4;
  if (stored.size() != 1 + kGroups * sizeof(std::uint32_t) || scale < 0) return std::nullopt;
  std::array<std::uint32_t, kGroups> groups{};
  for (std::size_t i = 0; i < kGroups; ++i)
    groups[i] = LittleAt<std::uint32_t>(stored.data() + 1 + i * sizeof(std::uint32_t));
  return DecimalText(groups, static_cast<std::size_t>(scale), (stored[0] & 0x80) != 0);
}

std::optional<std::string> TextOfGuid(std::string_view stored) {
  if (stored.size() != 16) return std::nullopt;
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(stored[i]); };
  std::string text = Format("{%08X-%04X-%04X-", LittleAt<std::uint32_t>(stored.data()),
                            LittleAt<std::uint16_t>(stored.data() + 4), LittleAt<std::uint16_t>(stored.data() + 6));
  for (std::size_t i = 8; i < 16; ++i) text += Format(i == 10 ? "-%02X" : "%02X", byte(i));
  return text + "}";
}

namespace {

bool IsDay(double days) {
  static const TDateTime first = EncodeDate(1, 1, 1);
  static const TDateTime last = EncodeDate(9999, 12, 31);
  return days >= first && days <= last;
}

std::optional<double> NumberOf(std::string_view digits) {
  std::uint64_t number = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  if (error != std::errc() || end != digits.data() + digits.size()) return std::nullopt;
  return static_cast<double>(number);
}

}  // namespace

std::optional<TDateTime> MomentOf(std::string_view stored) {
  if (stored.size() != sizeof(double)) return std::nullopt;
  const double days = std::bit_cast<double>(LittleAt<std::uint64_t>(stored.data()));
  if (!IsDay(std::trunc(days))) return std::nullopt;
  return std::trunc(days) + std::abs(days - std::trunc(days));
}

std::optional<TDateTime> MomentOfDigits(std::string_view stored) {
  constexpr std::size_t kDigits = 19;
  constexpr std::string_view kTail(":7\0", 3);  // seven digits behind the second
  constexpr double kUnitsOfDay = 864e9;
  if (stored.size() != 2 * kDigits + 1 + kTail.size() || stored[kDigits] != ':' || !stored.ends_with(kTail))
    return std::nullopt;
  const std::optional<double> days = NumberOf(stored.substr(0, kDigits));
  const std::optional<double> units = NumberOf(stored.substr(kDigits + 1, kDigits));
  if (!days || !units || *units >= kUnitsOfDay) return std::nullopt;
  const double day = EncodeDate(1, 1, 1) + *days;
  if (!IsDay(day)) return std::nullopt;
  return day + *units / kUnitsOfDay;
}

}  // namespace velmora
