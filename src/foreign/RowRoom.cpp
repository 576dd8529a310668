// SPDX-License-Identifier: GPL-3.0-or-later
#include "foreign/RowRoom.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

namespace velmora {

namespace {

constexpr long long kLetterBytes = 4;  // of utf8mb4
constexpr long long kShort = 255;      // bytes, whose number takes one byte

// Types whose values take as many bytes, whatever they are.
struct TFixedType {
  std::string_view type;
  int bytes;
};
constexpr std::array<TFixedType, 17> kFixedTypes = {{{"tinyint", 1},
                                                     {"smallint", 2},
                                                     {"mediumint", 3},
                                                     {"int", 4},
                                                     {"bigint", 8},
                                                     {"float", 4},
                                                     {"double", 8},
                                                     {"year", 1},
                                                     {"date", 3},
                                                     {"time", 3},
                                                     {"datetime", 5},
                                                     {"timestamp", 4},
                                                     {"enum", 2},
                                                     {"set", 8},
                                                     {"inet4", 4},
                                                     {"inet6", 16},
                                                     {"uuid", 16}}};

// Nine digits take four bytes, on either side of the point.
long long DigitBytes(long long digits) {
  constexpr std::array<int, 9> kRest = {0, 1, 1, 2, 2, 3, 3, 4, 4};
  constexpr long long kGroup = 9;
  return digits / kGroup * 4 + kRest.at(static_cast<std::size_t>(digits % kGroup));
}

// Nothing for types whose values take more bytes or fewer.
std::optional<long long> FixedBytes(const TColumnText& column) {
  if (column.type == "decimal") {
    constexpr long long kUsualDigits = 10;
    const long long behind = column.Fraction().value_or(0);
    return DigitBytes(std::max(column.Length().value_or(kUsualDigits) - behind, 0LL)) + DigitBytes(behind);
  }
  if (column.type == "bit") return (column.Length().value_or(1) + 7) / 8;
  if (column.type == "binary") return column.Length().value_or(1);
  const auto* row = std::ranges::find(kFixedTypes, column.type, &TFixedType::type);
  if (row == kFixedTypes.end()) return std::nullopt;
  const bool fraction = column.type == "time" || column.type == "datetime" || column.type == "timestamp";
  return row->bytes + (fraction ? (column.Fraction().value_or(0) + 1) / 2 : 0);
}

// Nothing for types that rows only have the address of.
std::optional<long long> MostBytes(const TColumnText& column) {
  if (column.type == "varbinary") return column.Length().value_or(0);
  if (column.type == "char" || column.type == "varchar") return column.Length().value_or(1) * kLetterBytes;
  return std::nullopt;
}

long long WithLength(long long bytes) { return bytes + (bytes > kShort ? 2 : 1); }

}  // namespace

// Letters of a fixed length stand in rows without their number.
long long RowBytes(const TColumnText& column) {
  constexpr long long kAddress = 12;
  if (const auto fixed = FixedBytes(column)) return *fixed;
  const auto most = MostBytes(column);
  if (!most) return kAddress;
  return column.type == "char" ? *most : WithLength(*most);
}

// MySQL counts 40 bytes of each longer value; MariaDB all of what has up to 255, and an address of what may have more.
long long PageBytes(const TColumnText& column, const TTargetServer& server) {
  constexpr long long kKept = 40, kAddress = 20;
  if (const auto fixed = FixedBytes(column)) return *fixed;
  const auto most = MostBytes(column);
  if (!server.mariadb) return WithLength(std::min(most.value_or(kKept), kKept));
  return WithLength(most && *most <= kShort ? *most : kAddress);
}

}  // namespace velmora
