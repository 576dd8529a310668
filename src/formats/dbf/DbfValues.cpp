// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/dbf/DbfValues.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <chrono>
#include <cmath>
#include <optional>
#include <string>

#include "util/Dates.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/LittleEndian.h"
#include "util/Text.h"

namespace velmora {
namespace {

constexpr char kLengthTooLong[] = "%s: a value of %d bytes in field \"%s\" of %d";
constexpr char kNoMemoNumber[] = "%s: field \"%s\": '%s' is no number of a memo";

constexpr std::int32_t kDayZero = 2415019;      // 1899-12-30 by the number of days that astronomers count
constexpr double kFirstDay = -693593;           // 0001-01-01
constexpr double kEnd = 2958466 - 0.5 / 86400;  // what would be shown as the first second of the year 10000
constexpr double kMillisecondsPerDay = 86400000;
constexpr std::uint64_t kMoneyUnit = 10000;

bool BitAt(const TDbfFile& file, int bit, std::string_view record) {
  const auto at = static_cast<std::size_t>(bit);
  const auto byte = static_cast<unsigned char>(record[file.NullFlags()->offset + at / 8]);
  return (byte >> at % 8 & 1) != 0;
}

std::string_view WithoutPadding(std::string_view bytes) {
  const std::size_t last = bytes.find_last_not_of(std::string_view(" \0", 2));
  return bytes.substr(0, last == std::string_view::npos ? 0 : last + 1);
}

// A number's characters; none when the field is blank or the number had too many.
std::string_view Digits(const TDbfCell& cell) {
  const std::string_view digits = TrimView(cell.bytes);
  return digits.find_first_not_of('*') == std::string_view::npos ? std::string_view() : digits;
}

bool IsDigits(std::string_view text) {
  return !text.empty() && std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; });
}

int NumberOf(std::string_view digits) {
  int number = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), number);
  return number;
}

std::optional<TDateTime> DateOf(std::string_view digits) {
  if (digits.size() != 8 || !IsDigits(digits)) return std::nullopt;
  const int year = NumberOf(digits.substr(0, 4)), month = NumberOf(digits.substr(4, 2)),
            day = NumberOf(digits.substr(6));
  const std::chrono::year_month_day date(std::chrono::year(year), std::chrono::month(static_cast<unsigned>(month)),
                                         std::chrono::day(static_cast<unsigned>(day)));
  if (year == 0 || !date.ok()) return std::nullopt;
  return EncodeDate(year, month, day);
}

// 0: there is none. Ten digits, or in Visual FoxPro four bytes.
std::uint32_t MemoNumber(const TDbfCell& cell) {
  if (cell.bytes.size() == sizeof(std::uint32_t)) return LittleAt<std::uint32_t>(cell.bytes.data());
  const std::string_view digits = TrimView(cell.bytes);
  if (digits.empty()) return 0;
  std::uint32_t number = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  if (error != std::errc() || end != digits.data() + digits.size())
    RaiseError(Format(kNoMemoNumber, cell.file.Path(), cell.field.name, cell.file.CodePage().Decode(digits)));
  return number;
}

}  // namespace

std::string_view DbfBytesOf(const TDbfFile& file, const TDbfField& field, std::string_view record) {
  const std::string_view bytes = record.substr(field.offset, field.size);
  if (field.length_bit < 0 || !BitAt(file, field.length_bit, record)) return bytes;
  const auto length = static_cast<unsigned char>(bytes.back());
  if (length >= bytes.size()) RaiseError(Format(kLengthTooLong, file.Path(), length, field.name, bytes.size()));
  return bytes.substr(0, length);
}

bool DbfIsNull(const TDbfFile& file, const TDbfField& field, std::string_view record) {
  return field.null_bit >= 0 && BitAt(file, field.null_bit, record);
}

TVariant DbfText(const TDbfCell& cell) { return cell.file.CodePage().Decode(WithoutPadding(cell.bytes)); }

TVariant DbfVarText(const TDbfCell& cell) { return cell.file.CodePage().Decode(cell.bytes); }

TVariant DbfBytes(const TDbfCell& cell) { return std::string(cell.bytes); }

TVariant DbfFloat(const TDbfCell& cell) {
  const std::string_view digits = Digits(cell);
  if (digits.empty()) return {};
  const std::optional<double> number = TryStrToFloat(digits);
  return number ? TVariant(*number) : TVariant(cell.file.CodePage().Decode(digits));
}

// Programs leave out a zero in front of the point, and put zeros in front of a number.
TVariant DbfDecimal(const TDbfCell& cell) {
  const std::string_view digits = Digits(cell);
  if (digits.empty()) return {};
  if (!TryStrToFloat(digits)) return cell.file.CodePage().Decode(digits);
  const bool negative = digits.front() == '-';
  std::string_view rest = digits.substr(negative || digits.front() == '+' ? 1 : 0);
  rest.remove_prefix(std::min(rest.find_first_not_of('0'), rest.size()));
  if (rest.ends_with('.')) rest.remove_suffix(1);
  std::string text = negative ? "-" : "";
  if (rest.empty() || rest.front() < '0' || rest.front() > '9') text += '0';
  return text.append(rest);
}

TVariant DbfInteger(const TDbfCell& cell) { return std::int64_t{LittleAt<std::int32_t>(cell.bytes.data())}; }

TVariant DbfDouble(const TDbfCell& cell) {
  const double number = std::bit_cast<double>(LittleAt<std::uint64_t>(cell.bytes.data()));
  return std::isfinite(number) ? TVariant(number) : TVariant();
}

TVariant DbfMoney(const TDbfCell& cell) {
  const auto raw = LittleAt<std::int64_t>(cell.bytes.data());
  const std::uint64_t units = raw < 0 ? ~static_cast<std::uint64_t>(raw) + 1 : static_cast<std::uint64_t>(raw);
  std::string decimals = std::to_string(units % kMoneyUnit);
  decimals.insert(0, 4 - decimals.size(), '0');
  return (raw < 0 ? "-" : "") + std::to_string(units / kMoneyUnit) + "." + decimals;
}

TVariant DbfDate(const TDbfCell& cell) {
  const std::string_view digits = TrimView(cell.bytes);
  if (digits.find_first_not_of('0') == std::string_view::npos) return {};
  const std::optional<TDateTime> date = DateOf(digits);
  return date ? TVariant(TMoment{*date}) : TVariant(cell.file.CodePage().Decode(digits));
}

TVariant DbfDateTime(const TDbfCell& cell) {
  const std::int64_t day = LittleAt<std::int32_t>(cell.bytes.data());
  const auto milliseconds = LittleAt<std::int32_t>(cell.bytes.data() + 4);
  const double value = static_cast<double>(day - kDayZero) + milliseconds / kMillisecondsPerDay;
  return value >= kFirstDay && value < kEnd ? TVariant(TMoment{value}) : TVariant();
}

TVariant DbfLogical(const TDbfCell& cell) {
  switch (cell.bytes.front()) {
    case 'T':
    case 't':
    case 'Y':
    case 'y':
      return true;
    case 'F':
    case 'f':
    case 'N':
    case 'n':
      return false;
    default:
      return {};
  }
}

TVariant DbfMemoText(const TDbfCell& cell) {
  const std::uint32_t number = MemoNumber(cell);
  return number == 0 ? TVariant() : TVariant(cell.file.CodePage().Decode(cell.memos.Read(number)));
}

TVariant DbfMemoBytes(const TDbfCell& cell) {
  const std::uint32_t number = MemoNumber(cell);
  return number == 0 ? TVariant() : TVariant(cell.memos.Read(number));
}

}  // namespace velmora
