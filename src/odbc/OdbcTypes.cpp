// SPDX-License-Identifier: GPL-3.0-or-later
#include "odbc/OdbcTypes.h"

#include <sql.h>
#include <sqlext.h>

#include <algorithm>
#include <charconv>
#include <iterator>
#include <optional>
#include <string_view>
#include <utility>

#include "util/Dates.h"
#include "util/Errors.h"
#include "util/Format.h"

namespace velmora {

namespace {

// Types of the drivers for SQL Server, by their published numbers.
constexpr int kVariant = -150;
constexpr int kUserDefined = -151;
constexpr int kXml = -152;
constexpr int kTime2 = -154;
constexpr int kTimestampOffset = -155;

constexpr int kOldDate = 9;  // of ODBC 2
constexpr int kOldTime = 10;
constexpr int kOldTimestamp = 11;

// --- Values. What is not of the column's type stays text.

TVariant AsText(std::string text) { return text; }

TVariant AsInteger(std::string text) {
  std::int64_t number = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  return error == std::errc() && stop == end ? TVariant(number) : TVariant(std::move(text));
}

TVariant AsFloat(std::string text) {
  const std::optional<double> number = TryStrToFloat(text);
  return number ? TVariant(*number) : TVariant(std::move(text));
}

// Stays text, which keeps it exact. Some drivers write no zero in front of the point.
TVariant AsDecimal(std::string text) {
  const std::size_t first = text.starts_with('-') ? 1 : 0;
  if (first < text.size() && text[first] == '.') text.insert(first, "0");
  return text;
}

// "yyyy-mm-dd hh:mm:ss.fraction", of which all after the date may be missing.
std::optional<TMoment> MomentOf(const std::string& text) {
  constexpr double kSecondsPerDay = 86400;
  const std::size_t point = text.find('.');
  const auto fraction = point == std::string::npos ? 0 : TryStrToFloat("0" + text.substr(point));
  if (text.empty() || !fraction) return std::nullopt;
  try {
    return TMoment{ParseDateTime(text.substr(0, point)) + *fraction / kSecondsPerDay};
  } catch (const EVelmora&) {
    return std::nullopt;
  }
}

// No date stands for the zero date of MySQL servers.
TVariant AsDate(std::string text) {
  if (text.starts_with("0000-00-00")) return {};
  const std::optional<TMoment> moment = MomentOf(text);
  return moment ? TVariant(*moment) : TVariant(std::move(text));
}

TVariant AsTime(std::string text) {
  const std::optional<TMoment> moment = MomentOf("1899-12-30 " + text);  // day 0
  return moment ? TVariant(*moment) : TVariant(std::move(text));
}

TVariant AsBoolean(std::string text) { return !text.empty() && text[0] != '\0'; }

// --- The table

using enum EFieldKind;
using enum EOdbcForm;
constexpr std::uint32_t kFixed = kColumnIsFixedLength;
constexpr std::uint32_t kLong = kColumnIsLong;

constexpr TOdbcType kTypes[] = {
    {SQL_BIT, kDbTypeBool, kDbTypeBool, kFixed, Boolean, Boolean, Bit, AsBoolean},
    {SQL_TINYINT, kDbTypeI1, kDbTypeUI1, kFixed, SmallInt, SmallInt, Text, AsInteger},
    {SQL_SMALLINT, kDbTypeI2, kDbTypeUI2, kFixed, SmallInt, Word, Text, AsInteger},
    {SQL_INTEGER, kDbTypeI4, kDbTypeUI4, kFixed, Integer, LargeInt, Text, AsInteger},
    {SQL_BIGINT, kDbTypeI8, kDbTypeUI8, kFixed, LargeInt, LargeInt, Text, AsInteger},
    {SQL_REAL, kDbTypeR4, kDbTypeR4, kFixed, Float, Float, Text, AsFloat},
    {SQL_FLOAT, kDbTypeR8, kDbTypeR8, kFixed, Float, Float, Text, AsFloat},
    {SQL_DOUBLE, kDbTypeR8, kDbTypeR8, kFixed, Float, Float, Text, AsFloat},
    {SQL_DECIMAL, kDbTypeNumeric, kDbTypeNumeric, kFixed, Bcd, Bcd, Text, AsDecimal},
    {SQL_NUMERIC, kDbTypeNumeric, kDbTypeNumeric, kFixed, Bcd, Bcd, Text, AsDecimal},
    {SQL_CHAR, kDbTypeStr, kDbTypeStr, kFixed, FixedChar, FixedChar, Text, AsText},
    {SQL_VARCHAR, kDbTypeStr, kDbTypeStr, 0, String, String, Text, AsText},
    {SQL_LONGVARCHAR, kDbTypeStr, kDbTypeStr, kLong, Memo, Memo, Text, AsText},
    {SQL_WCHAR, kDbTypeWStr, kDbTypeWStr, kFixed, WideString, WideString, Text, AsText},
    {SQL_WVARCHAR, kDbTypeWStr, kDbTypeWStr, 0, WideString, WideString, Text, AsText},
    {SQL_WLONGVARCHAR, kDbTypeWStr, kDbTypeWStr, kLong, Memo, Memo, Text, AsText},
    {SQL_BINARY, kDbTypeBytes, kDbTypeBytes, kFixed, Bytes, Bytes, Raw, AsText},
    {SQL_VARBINARY, kDbTypeBytes, kDbTypeBytes, 0, VarBytes, VarBytes, Raw, AsText},
    {SQL_LONGVARBINARY, kDbTypeBytes, kDbTypeBytes, kLong, Blob, Blob, Raw, AsText},
    {SQL_TYPE_DATE, kDbTypeDBDate, kDbTypeDBDate, kFixed, Date, Date, Text, AsDate},
    {kOldDate, kDbTypeDBDate, kDbTypeDBDate, kFixed, Date, Date, Text, AsDate},
    {SQL_TYPE_TIME, kDbTypeDBTime, kDbTypeDBTime, kFixed, Time, Time, Text, AsTime},
    {kOldTime, kDbTypeDBTime, kDbTypeDBTime, kFixed, Time, Time, Text, AsTime},
    {SQL_TYPE_TIMESTAMP, kDbTypeDBTimeStamp, kDbTypeDBTimeStamp, kFixed, DateTime, DateTime, Text, AsDate},
    {kOldTimestamp, kDbTypeDBTimeStamp, kDbTypeDBTimeStamp, kFixed, DateTime, DateTime, Text, AsDate},
    {SQL_GUID, kDbTypeGuid, kDbTypeGuid, kFixed, Guid, Guid, Text, AsText},
    {kVariant, 0, 0, 0, String, String, Text, AsText},
    {kUserDefined, 0, 0, 0, Blob, Blob, Raw, AsText},
    {kXml, 0, 0, 0, Memo, Memo, Text, AsText},
    {kTime2, 0, 0, 0, Time, Time, Text, AsTime},
    {kTimestampOffset, 0, 0, 0, String, String, Text, AsText},
};

}  // namespace

const TOdbcType* FindOdbcType(int number) {
  const auto* type = std::ranges::find(kTypes, number, &TOdbcType::number);
  return type == std::end(kTypes) ? nullptr : type;
}

bool IsOdbcInteger(const TOdbcType& type) { return type.db_type != type.db_type_unsigned; }

bool IsOdbcSized(const TOdbcType& type) {
  return type.db_type == kDbTypeStr || type.db_type == kDbTypeWStr || type.db_type == kDbTypeBytes;
}

bool IsOdbcDecimal(const TOdbcType& type) { return type.db_type == kDbTypeNumeric; }

std::uint16_t UnknownDbType(int number) {
  constexpr std::pair<int, int> kTaken[] = {
      {kDbTypeI2, kDbTypeUI8}, {kDbTypeGuid, kDbTypeGuid}, {kDbTypeBytes, kDbTypeDBTimeStamp}};
  const bool taken = std::ranges::any_of(
      kTaken, [number](const auto& range) { return number >= range.first && number <= range.second; });
  return taken ? std::uint16_t{0} : static_cast<std::uint16_t>(number);
}

}  // namespace velmora
