// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqlclient/MySQLValues.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <optional>
#include <variant>

#include "util/Dates.h"
#include "util/Format.h"

namespace velmora {

namespace {

constexpr unsigned kUnsigned = 32;
constexpr unsigned kEnum = 256;
constexpr unsigned kAutoIncrement = 512;
constexpr unsigned kSet = 2048;
constexpr unsigned kBinaryCharset = 63;
constexpr std::uint64_t kBytesPerCharacter = 4;  // connections speak utf8mb4

TVariant AsText(std::string_view text) { return std::string(text); }

template <class Number>
std::optional<Number> NumberOf(std::string_view text) {
  Number number{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

TVariant AsInteger(std::string_view text) {
  const auto number = NumberOf<std::int64_t>(text);
  return number ? TVariant(*number) : AsText(text);
}

TVariant AsFloat(std::string_view text) {
  const auto number = TryStrToFloat(text);
  return number ? TVariant(*number) : AsText(text);
}

// The bytes of a bit column, the highest first.
TVariant AsBits(std::string_view bytes) {
  std::uint64_t number = 0;
  for (const char byte : bytes) number = number << 8U | static_cast<unsigned char>(byte);
  return AsInteger(std::to_string(number));
}

// The whole numbers of a text like "2005-01-31", as many as there are; nothing when it is no such text.
template <std::size_t N>
std::optional<std::array<int, N>> Parts(std::string_view text, char separator) {
  std::array<int, N> parts{};
  for (std::size_t i = 0; i < N; ++i) {
    const std::size_t end = i + 1 < N ? text.find(separator) : text.size();
    if (end == std::string_view::npos) return std::nullopt;
    const auto part = NumberOf<int>(text.substr(0, end));
    if (!part || *part < 0) return std::nullopt;
    parts[i] = *part;
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return parts;
}

std::optional<TDateTime> DateOf(std::string_view text) {
  const auto parts = Parts<3>(text, '-');
  if (!parts) return std::nullopt;
  const auto [year, month, day] = *parts;
  const std::chrono::year_month_day date(std::chrono::year(year), std::chrono::month(static_cast<unsigned>(month)),
                                         std::chrono::day(static_cast<unsigned>(day)));
  if (year < 1 || year > 9999 || !date.ok()) return std::nullopt;
  return EncodeDate(year, month, day);
}

// "hh:mm:ss" and perhaps a fraction of up to six digits.
std::optional<TDateTime> TimeOf(std::string_view text) {
  constexpr double kSecondsPerDay = 86400;
  const std::size_t point = text.find('.');
  const auto parts = Parts<3>(text.substr(0, point), ':');
  if (!parts || (*parts)[0] > 23 || (*parts)[1] > 59 || (*parts)[2] > 59) return std::nullopt;
  const double fraction =
      point == std::string_view::npos ? 0 : TryStrToFloat("0" + std::string(text.substr(point))).value_or(0);
  return EncodeTime((*parts)[0], (*parts)[1], (*parts)[2]) + fraction / kSecondsPerDay;
}

TVariant AsDate(std::string_view text) {
  if (text.starts_with("0000-00-00")) return {};
  const std::size_t blank = text.find(' ');
  const auto date = DateOf(text.substr(0, blank));
  if (blank == std::string_view::npos) return date ? TVariant(TMoment{*date}) : AsText(text);
  const auto time = TimeOf(text.substr(blank + 1));
  return date && time ? TVariant(TMoment{*date + *time}) : AsText(text);
}

TVariant AsTime(std::string_view text) {
  const auto time = TimeOf(text);
  return time ? TVariant(TMoment{*time}) : AsText(text);
}

enum class ESize { None, Characters };

struct TTypeRow {
  int type;
  EFieldKind kind;
  EFieldKind special_kind;  // unsigned numbers, binary texts
  TVariant (*read)(std::string_view text);
  ESize size = ESize::None;
};

using enum EFieldKind;
constexpr TTypeRow kTypes[] = {
    {0, Bcd, Bcd, AsText},
    {1, SmallInt, SmallInt, AsInteger},
    {2, SmallInt, Word, AsInteger},
    {3, Integer, LargeInt, AsInteger},
    {4, Float, Float, AsFloat},
    {5, Float, Float, AsFloat},
    {6, String, String, AsText},  // a bare null
    {7, TimeStamp, TimeStamp, AsDate},
    {8, LargeInt, LargeInt, AsInteger},
    {9, Integer, Integer, AsInteger},
    {10, Date, Date, AsDate},
    {11, Time, Time, AsTime},
    {12, DateTime, DateTime, AsDate},
    {13, Word, Word, AsInteger},  // year
    {14, Date, Date, AsDate},
    {15, String, VarBytes, AsText, ESize::Characters},
    {16, LargeInt, LargeInt, AsBits},
    {242, Blob, Blob, AsText},  // vector
    {245, Memo, Memo, AsText},  // json
    {246, Bcd, Bcd, AsText},
    {247, String, String, AsText, ESize::Characters},  // enum
    {248, String, String, AsText, ESize::Characters},  // set
    {249, Memo, Blob, AsText},
    {250, Memo, Blob, AsText},
    {251, Memo, Blob, AsText},
    {252, Memo, Blob, AsText},
    {253, String, VarBytes, AsText, ESize::Characters},
    {254, FixedChar, Bytes, AsText, ESize::Characters},
    {255, Blob, Blob, AsText},  // geometry
};
constexpr TTypeRow kUnknownType = {-1, Other, Other, AsText};

const TTypeRow& RowOf(int type) {
  const auto* row =
      std::find_if(std::begin(kTypes), std::end(kTypes), [type](const TTypeRow& r) { return r.type == type; });
  return row == std::end(kTypes) ? kUnknownType : *row;
}

}  // namespace

TFieldDef MyFieldDef(const TMyColumn& column) {
  const TTypeRow& row = RowOf(column.type);
  const bool sized = row.size == ESize::Characters;
  const bool binary = column.charset == kBinaryCharset;
  // The flag of numbers means nothing on texts and the character set nothing on numbers, where it is always binary.
  const bool number = row.read == AsInteger;
  TFieldDef field{column.name, (number ? (column.flags & kUnsigned) != 0 : binary) ? row.special_kind : row.kind};
  if (number && (column.flags & kAutoIncrement) != 0) field.kind = AutoInc;
  if (sized && !binary && (column.flags & (kEnum | kSet)) != 0) field.kind = String;
  if (sized) field.size = static_cast<std::int64_t>(column.length / (binary ? 1 : kBytesPerCharacter));
  return field;
}

TMyValueReader::TMyValueReader(const TMyColumn& column, bool times_as_sent)
    : read_(RowOf(column.type).read), times_as_sent_(times_as_sent && (read_ == AsDate || read_ == AsTime)) {}

TVariant TMyValueReader::Read(std::optional<std::string_view> text) const {
  if (!text) return {};
  TVariant value = read_(*text);
  const bool whole = std::holds_alternative<TMoment>(value) && text->find('.') == std::string_view::npos;
  return times_as_sent_ && !whole ? AsText(*text) : value;
}

}  // namespace velmora
