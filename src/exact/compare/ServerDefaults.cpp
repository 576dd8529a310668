// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/compare/ServerDefaults.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <cstdlib>

#include "mysqltext/ColumnParts.h"
#include "mysqltext/Lexer.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// A literal as what it says: a number or a text.
struct TLiteral {
  bool is_number = false;
  bool is_bytes = false;  // written in hexadecimal or as bits
  std::string text;       // of numbers without a sign "+"
};

std::optional<TLiteral> ReadLiteral(TTokens value) {
  if (value.empty() || value.size() > 2) return std::nullopt;
  const bool sign = value[0].Is("-") || value[0].Is("+");
  if (sign != (value.size() == 2)) return std::nullopt;
  const TToken& token = value.back();
  const std::string minus = value[0].Is("-") ? "-" : "";
  if (IsKeyword(token, "true") || IsKeyword(token, "false")) return TLiteral{true, false, token.Is("true") ? "1" : "0"};
  if (token.kind == EToken::Number) {
    const std::string_view text = token.text;
    if (text.starts_with("0x")) return TLiteral{false, true, BytesOf(text.substr(2), 4)};
    if (text.starts_with("0b")) return TLiteral{false, true, BytesOf(text.substr(2), 1)};
    return TLiteral{true, false, minus + std::string(text)};
  }
  if (token.kind != EToken::String || sign) return std::nullopt;
  const std::string prefix = LowerText(PrefixOf(token));
  if (prefix == "x" || prefix == "b") return TLiteral{false, true, BytesOf(ValueOf(token), prefix == "x" ? 4 : 1)};
  return TLiteral{false, false, ValueOf(token)};
}

std::optional<std::string> NumberOf(const TLiteral& literal) {
  if (literal.is_bytes) {
    if (literal.text.size() > 8) return std::nullopt;
    unsigned long long value = 0;
    for (const char c : literal.text) value = value * 256 + static_cast<unsigned char>(c);
    return std::to_string(value);
  }
  std::string text = Trim(literal.text);
  if (text.starts_with('+')) text.erase(0, 1);
  return TryStrToFloat(text) ? std::optional(text) : std::nullopt;
}

// Digits, those after the point rounded to `fraction`, halves away from zero.
std::string Rounded(const std::string& number, std::size_t fraction) {
  if (number.find_first_of("eE") != std::string::npos)
    return Rounded(Format("%.*f", static_cast<int>(fraction) + 2, std::strtod(number.c_str(), nullptr)), fraction);
  const bool negative = number.starts_with('-');
  std::string whole = number.substr(negative ? 1 : 0);
  std::string rest;
  if (const std::size_t point = whole.find('.'); point != std::string::npos) {
    rest = whole.substr(point + 1);
    whole.resize(point);
  }
  const bool up = rest.size() > fraction && rest[fraction] >= '5';
  rest.resize(fraction, '0');
  std::string digits = "0" + whole + rest;
  for (std::size_t at = digits.size(); up && at-- > 0;) {
    if (digits[at] != '9') {
      ++digits[at];
      break;
    }
    digits[at] = '0';
  }
  whole = digits.substr(0, digits.size() - fraction);
  whole.erase(0, std::min(whole.find_first_not_of('0'), whole.size() - 1));
  std::string result = whole + (fraction > 0 ? "." + digits.substr(digits.size() - fraction) : "");
  const bool zero = result.find_first_of("123456789") == std::string::npos;
  return (negative && !zero ? "-" : "") + result;
}

// What needs the fewest digits; floats have six.
std::string Shortest(const std::string& number, bool is_float) {
  constexpr double kLeastFixed = 1e-15;
  constexpr double kMostFixed = 1e15;
  const double value = std::strtod(number.c_str(), nullptr);
  std::array<char, 64> buffer{};
  if (is_float) {
    const std::string cut = Format("%.6g", value);
    return Shortest(cut, false);
  }
  const double size = value < 0 ? -value : value;
  const bool fixed = value == 0 || (size >= kLeastFixed && size < kMostFixed);
  const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                                 fixed ? std::chars_format::fixed : std::chars_format::scientific);
  return RemoveChar({buffer.data(), static_cast<std::size_t>(end.ptr - buffer.data())}, '+');
}

std::string Bits(const std::string& number) {
  unsigned long long value = std::strtoull(number.c_str(), nullptr, 10);
  std::string bits;
  for (; value > 0; value /= 2) bits.insert(bits.begin(), value % 2 == 0 ? '0' : '1');
  return "b'" + (bits.empty() ? "0" : bits) + "'";
}

// Whether servers have columns of the size that its type names, which bounds what is filled up to it.
bool HasPossibleSize(const TColumnText& column) {
  constexpr long long kLargest = 255;
  return column.Length().value_or(0) <= kLargest && column.Fraction().value_or(0) <= kLargest;
}

// Of a number that is filled up with zeros. The point counts, but not in the width that a decimal names.
std::size_t WidthOf(const TColumnText& column) {
  struct TWidth {
    std::string_view type;
    long long width;
  };
  constexpr std::array<TWidth, 8> kWidths = {{{"tinyint", 3},
                                              {"smallint", 5},
                                              {"mediumint", 8},
                                              {"int", 10},
                                              {"bigint", 20},
                                              {"decimal", 10},
                                              {"float", 12},
                                              {"double", 22}}};
  const bool named = IsWholeType(column.type) || column.type == "decimal" || column.arguments.size() == 2;
  const long long point = column.type == "decimal" && column.Fraction().value_or(0) > 0 ? 1 : 0;
  for (const TWidth& row : kWidths)
    if (column.type == row.type)
      return static_cast<std::size_t>((named ? column.Length().value_or(row.width) : row.width) + point);
  return 0;
}

// Whether it is a whole number without anything that could be written otherwise.
bool IsPlainNumber(const TLiteral& literal) {
  return literal.is_number && std::all_of(literal.text.begin(), literal.text.end(), IsDigit) &&
         (literal.text == "0" || !literal.text.starts_with('0'));
}

std::optional<std::string> PrintedNumber(const TColumnText& column, const TLiteral& literal) {
  if (IsWholeType(column.type) && !column.zerofill && IsPlainNumber(literal)) return literal.text;
  if (column.type == "bit") {
    TLiteral bytes = literal;
    bytes.is_bytes = !literal.is_number;
    const auto number = NumberOf(bytes);
    return number ? std::optional(Bits(*number)) : std::nullopt;
  }
  const auto number = NumberOf(literal);
  if (!number) return std::nullopt;
  const auto fraction = static_cast<std::size_t>(std::max<long long>(column.Fraction().value_or(0), 0));
  std::string text;
  if (InList(column.type, {"float", "double"}) && column.arguments.size() < 2)
    text = Shortest(*number, column.type == "float" && column.Length().value_or(0) <= 24);
  else if (InList(column.type, {"float", "double"}))
    text = Format("%.*f", static_cast<int>(fraction), std::strtod(number->c_str(), nullptr));
  else
    text = Rounded(*number, IsWholeType(column.type) ? 0 : fraction);
  const std::size_t width = column.zerofill ? WidthOf(column) : 0;
  if (text.size() < width) text.insert(0, width - text.size(), '0');
  return text;
}

// --- Dates and times

using TParts = std::array<int, 6>;

// The groups of digits of a text, or of one number by its length; nothing for more than there may be.
std::optional<std::vector<std::string>> Groups(const std::string& text) {
  std::vector<std::string> groups(1);
  for (const char c : text)
    if (IsDigit(c))
      groups.back() += c;
    else if (InList(std::string_view(&c, 1), {"-", "/", ":", ".", " ", "T"}))
      groups.emplace_back();
    else
      return std::nullopt;
  for (const std::string& group : groups)
    if (group.empty()) return std::nullopt;
  return groups;
}

std::string WithFraction(std::string text, std::string fraction, long long digits) {
  if (digits <= 0) return text;
  fraction.resize(static_cast<std::size_t>(std::min(digits, 6LL)), '0');
  return text + "." + fraction;
}

std::string TakeFraction(std::string& text) {
  const std::size_t point = text.find('.');
  if (point == std::string::npos || text.find(':') > point) return {};
  std::string fraction = text.substr(point + 1);
  text.resize(point);
  return fraction;
}

int Number(const std::string& digits) { return static_cast<int>(std::strtol(digits.c_str(), nullptr, 10)); }

std::optional<std::string> PrintedTime(std::string text, long long digits) {
  const std::string fraction = TakeFraction(text);
  const bool negative = text.starts_with('-');
  const auto groups = Groups(text.substr(negative ? 1 : 0));
  if (!groups || groups->size() > 3) return std::nullopt;
  std::array<int, 3> parts{};
  if (groups->size() == 1) {
    const int number = Number(groups->front());
    parts = {number / 10000, number / 100 % 100, number % 100};
  } else {
    for (std::size_t at = 0; at < groups->size(); ++at) parts[at] = Number((*groups)[at]);
  }
  return WithFraction((negative ? "-" : "") + Format("%02d:%02d:%02d", parts[0], parts[1], parts[2]), fraction, digits);
}

// One number is cut from the right: seconds, minutes, hours, day, month, the rest is the year.
std::optional<TParts> OneNumber(const std::string& digits) {
  const std::size_t date = digits.size() <= 8 ? digits.size() : digits.size() - 6;
  if (digits.size() > 14 || (date != 8 && date != 6 && Number(digits) != 0)) return std::nullopt;
  TParts parts{};
  const int day = Number(digits.substr(0, date));
  parts = {day / 10000, day / 100 % 100, day % 100, 0, 0, 0};
  if (date < digits.size()) {
    const int time = Number(digits.substr(date));
    parts[3] = time / 10000;
    parts[4] = time / 100 % 100;
    parts[5] = time % 100;
  }
  if (date == 6 && parts[0] + parts[1] + parts[2] > 0) parts[0] += parts[0] < 70 ? 2000 : 1900;
  return parts;
}

// Whether a text has digits where the form has them, and is like it otherwise.
bool HasForm(std::string_view text, std::string_view form) {
  return std::equal(text.begin(), text.end(), form.begin(), form.end(),
                    [](char a, char b) { return IsDigit(b) ? IsDigit(a) : a == b; });
}

std::optional<std::string> PrintedDate(std::string text, bool with_time, long long digits) {
  if (digits <= 0 && HasForm(text, with_time ? "0000-00-00 00:00:00" : "0000-00-00")) return text;
  const std::string fraction = TakeFraction(text);
  const auto groups = Groups(text);
  if (!groups || groups->size() > 6 || groups->size() == 2) return std::nullopt;
  TParts parts{};
  if (groups->size() == 1) {
    const auto read = OneNumber(groups->front());
    if (!read) return std::nullopt;
    parts = *read;
  } else {
    for (std::size_t at = 0; at < groups->size(); ++at) parts[at] = Number((*groups)[at]);
    if ((*groups)[0].size() == 2) parts[0] += parts[0] < 70 ? 2000 : 1900;
  }
  const std::string date = Format("%04d-%02d-%02d", parts[0], parts[1], parts[2]);
  if (!with_time) return date;
  return WithFraction(date + Format(" %02d:%02d:%02d", parts[3], parts[4], parts[5]), fraction, digits);
}

std::optional<std::string> Quoted(const std::optional<std::string>& text) {
  return text ? std::optional(QuotedText(*text)) : std::nullopt;
}

std::optional<std::string> PrintedYear(const TColumnText& column, const TLiteral& literal) {
  const auto number = NumberOf(literal);
  if (!number) return std::nullopt;
  int year = Number(*number);
  const bool short_text = !literal.is_number && literal.text.size() < 4;
  if (year > 0 ? year < 100 : short_text) year += year < 70 ? 2000 : 1900;
  return column.Length().value_or(4) == 2 ? Format("%02d", year % 100) : Format("%04d", year);
}

}  // namespace

std::string BytesOf(std::string_view digits, int bits) {
  const std::size_t per_byte = bits == 4 ? 2 : 8;
  std::string all(digits);
  while (all.size() % per_byte != 0) all.insert(all.begin(), '0');
  std::string result;
  for (std::size_t at = 0; at < all.size(); at += per_byte) {
    int value = 0;
    std::from_chars(all.data() + at, all.data() + at + per_byte, value, bits == 4 ? 16 : 2);
    result += static_cast<char>(value);
  }
  return result;
}

std::optional<std::string> PrintedDefault(const TColumnText& column, TTokens value, bool local_time_of_day) {
  if (local_time_of_day && value.size() == 1 && IsKeyword(value[0], "localtime")) return "curtime()";
  if (!value.empty() && IsKeyword(value[0], "current_date")) return "curdate()";
  if (!value.empty() && IsKeyword(value[0], "current_time") && value.size() == 1) return "curtime()";
  const std::optional<TLiteral> literal = ReadLiteral(value);
  if (!literal) return std::nullopt;
  const bool filled_up = column.type == "bit" || column.type == "binary" || column.IsNumber();
  if (filled_up && !HasPossibleSize(column)) return std::nullopt;
  if (column.type == "bit" || column.IsNumber()) return PrintedNumber(column, *literal);
  if (column.type == "year") return PrintedYear(column, *literal);
  const long long digits = column.Length().value_or(0);
  if (column.type == "date") return Quoted(PrintedDate(literal->text, false, 0));
  if (column.type == "time") return Quoted(PrintedTime(literal->text, digits));
  if (IsTimeType(column.type)) return Quoted(PrintedDate(literal->text, true, digits));
  std::string text = literal->text;
  if (InList(column.type, {"char", "enum", "set"})) text.erase(text.find_last_not_of(' ') + 1);
  if (column.type == "binary")
    text.resize(std::max(text.size(), static_cast<std::size_t>(column.Length().value_or(1))));
  if (column.HasLetters() || IsByteType(column.type)) return QuotedText(text);
  return std::nullopt;
}

}  // namespace velmora
