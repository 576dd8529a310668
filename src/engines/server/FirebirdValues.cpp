// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/server/FirebirdValues.h"

#include <ibase.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <string_view>

#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr unsigned kOctets = 1;  // the character set of texts that are bytes
constexpr unsigned kUnicodeFss = 3;
constexpr unsigned kUtf8 = 4;
constexpr char kUnknownType[] = "Column %s has the type %d, which cannot be read";

template <class T>
T At(const unsigned char* place) {
  T value;
  std::memcpy(&value, place, sizeof(value));
  return value;
}

TVariant AsText(const unsigned char* place, std::size_t length) {
  return std::string(reinterpret_cast<const char*>(place), length);
}

TVariant ReadChar(const TFirebirdColumn& column, const unsigned char* place) {
  std::size_t length = column.length;
  if (column.charset != kOctets)
    while (length > 0 && place[length - 1] == ' ') --length;
  return AsText(place, length);
}

TVariant ReadVarying(const TFirebirdColumn& /*column*/, const unsigned char* place) {
  return AsText(place + sizeof(std::uint16_t), At<std::uint16_t>(place));
}

// The number with its point, as in "-0.50".
std::string Scaled(std::int64_t number, int scale) {
  std::string digits = std::to_string(number);
  const std::size_t sign = number < 0 ? 1 : 0;
  const std::size_t after = static_cast<std::size_t>(-scale);
  if (digits.size() - sign <= after) digits.insert(sign, after + 1 - (digits.size() - sign), '0');
  return digits.insert(digits.size() - after, ".");
}

template <class T>
TVariant ReadInteger(const TFirebirdColumn& column, const unsigned char* place) {
  const std::int64_t number = At<T>(place);
  if (column.scale < 0) return Scaled(number, column.scale);
  return number;
}

template <class T>
TVariant ReadFloat(const TFirebirdColumn& /*column*/, const unsigned char* place) {
  return static_cast<double>(At<T>(place));
}

TDateTime DateOf(ISC_DATE days) {
  constexpr ISC_DATE kDayZero = 15018;  // the server counts from 1858-11-17
  return days - kDayZero;
}

TDateTime TimeOf(ISC_TIME ticks) {
  constexpr double kTicksPerDay = 86400.0 * ISC_TIME_SECONDS_PRECISION;
  return ticks / kTicksPerDay;
}

TVariant ReadDate(const TFirebirdColumn& /*column*/, const unsigned char* place) {
  return TMoment{DateOf(At<ISC_DATE>(place))};
}

TVariant ReadTime(const TFirebirdColumn& /*column*/, const unsigned char* place) {
  return TMoment{TimeOf(At<ISC_TIME>(place))};
}

TVariant ReadTimestamp(const TFirebirdColumn& /*column*/, const unsigned char* place) {
  const auto moment = At<ISC_TIMESTAMP>(place);
  return TMoment{DateOf(moment.timestamp_date) + TimeOf(moment.timestamp_time)};
}

TVariant ReadBoolean(const TFirebirdColumn& /*column*/, const unsigned char* place) { return *place != 0; }

TVariant ReadMark(const TFirebirdColumn& /*column*/, const unsigned char* place) {
  const auto mark = At<ISC_QUAD>(place);
  return Format("%x:%x", static_cast<unsigned>(mark.gds_quad_high), static_cast<unsigned>(mark.gds_quad_low));
}

struct TTypeRow {
  unsigned type;
  EFieldKind kind;
  EFieldKind special_kind;  // numbers with a scale, texts that are bytes, blobs that are text
  TVariant (*read)(const TFirebirdColumn& column, const unsigned char* place);
};

using enum EFieldKind;
constexpr TTypeRow kTypes[] = {
    {SQL_TEXT, FixedChar, Bytes, ReadChar},
    {SQL_VARYING, String, VarBytes, ReadVarying},
    {SQL_SHORT, SmallInt, Bcd, ReadInteger<std::int16_t>},
    {SQL_LONG, Integer, Bcd, ReadInteger<std::int32_t>},
    {SQL_INT64, LargeInt, Bcd, ReadInteger<std::int64_t>},
    {SQL_FLOAT, Float, Float, ReadFloat<float>},
    {SQL_DOUBLE, Float, Float, ReadFloat<double>},
    {SQL_D_FLOAT, Float, Float, ReadFloat<double>},
    {SQL_TYPE_DATE, Date, Date, ReadDate},
    {SQL_TYPE_TIME, Time, Time, ReadTime},
    {SQL_TIMESTAMP, DateTime, DateTime, ReadTimestamp},
    {SQL_BOOLEAN, Boolean, Boolean, ReadBoolean},
    {SQL_BLOB, Blob, Memo, ReadMark},
    {SQL_ARRAY, Other, Other, ReadMark},
    {SQL_QUAD, Other, Other, ReadMark},
};

const TTypeRow& RowOf(const TFirebirdColumn& column) {
  const auto* row = std::ranges::find(kTypes, column.type, &TTypeRow::type);
  if (row == std::end(kTypes)) RaiseError(Format(kUnknownType, column.name, column.type));
  return *row;
}

bool IsText(const TFirebirdColumn& column) { return column.type == SQL_TEXT || column.type == SQL_VARYING; }

bool IsSpecial(const TFirebirdColumn& column) {
  if (IsText(column)) return column.charset == kOctets;
  if (column.type == SQL_BLOB) return column.sub_type == isc_blob_text;
  return column.scale < 0;
}

unsigned BytesPerCharacter(unsigned charset) {
  if (charset == kUtf8) return 4;
  return charset == kUnicodeFss ? 3 : 1;
}

}  // namespace

bool IsFirebirdBlob(const TFirebirdColumn& column) { return column.type == SQL_BLOB; }

TFieldDef FirebirdField(const TFirebirdColumn& column) {
  const TTypeRow& row = RowOf(column);
  TFieldDef field{column.name, IsSpecial(column) ? row.special_kind : row.kind};
  if (IsText(column)) field.size = column.length / BytesPerCharacter(column.charset);
  return field;
}

bool FirebirdIsNull(const TFirebirdColumn& column, const unsigned char* message) {
  return At<std::int16_t>(message + column.null_offset) != 0;
}

TVariant FirebirdValue(const TFirebirdColumn& column, const unsigned char* message) {
  return RowOf(column).read(column, message + column.offset);
}

}  // namespace velmora
