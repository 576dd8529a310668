// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/server/OracleValues.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <utility>

#include "engines/server/OracleLibrary.h"
#include "util/Dates.h"
#include "util/Errors.h"
#include "util/Format.h"

namespace velmora {

namespace {

constexpr char kUnreadable[] = "Column %s is of a type that cannot be read (%d)";

TVariant AsText(std::string text) { return text; }

// Stays text, which keeps it exact. The server writes no zero in front of the point.
TVariant AsNumber(std::string text) {
  const std::size_t first = text.starts_with('-') ? 1 : 0;
  if (first < text.size() && text[first] == '.') text.insert(first, "0");
  return text;
}

TVariant AsFloat(std::string text) {
  const std::optional<double> number = TryStrToFloat(text);
  return number ? TVariant(*number) : TVariant(std::move(text));
}

// A date outside the years 1 to 9999 stays text.
TVariant AsDate(std::string text) {
  try {
    return TMoment{ParseDateTime(text)};
  } catch (const EVelmora&) {
    return text;
  }
}

using enum EFieldKind;
constexpr TOracleTypeRow kTypes[] = {
    {oci::kVarchar, String, oci::kString, EOraRoom::Characters, AsText},
    {oci::kNumber, Bcd, oci::kString, EOraRoom::Short, AsNumber},
    {oci::kLong, Memo, oci::kLong, EOraRoom::Pieces, AsText},
    {oci::kRowId, String, oci::kString, EOraRoom::Short, AsText},
    {oci::kDate, DateTime, oci::kString, EOraRoom::Short, AsDate},
    {oci::kRaw, VarBytes, oci::kRaw, EOraRoom::Bytes, AsText},
    {oci::kLongRaw, Blob, oci::kLongRaw, EOraRoom::Pieces, AsText},
    {oci::kChar, FixedChar, oci::kString, EOraRoom::Characters, AsText},
    {oci::kBinaryFloat, Float, oci::kString, EOraRoom::Short, AsFloat},
    {oci::kBinaryDouble, Float, oci::kString, EOraRoom::Short, AsFloat},
    {oci::kRowIdDescriptor, String, oci::kString, EOraRoom::Short, AsText},
    {oci::kClob, OraClob, oci::kLong, EOraRoom::Pieces, AsText},
    {oci::kBlob, OraBlob, oci::kLongRaw, EOraRoom::Pieces, AsText},
    {oci::kTimestamp, TimeStamp, oci::kString, EOraRoom::Short, AsDate},
    {oci::kTimestampZone, String, oci::kString, EOraRoom::Short, AsText},
    {oci::kIntervalMonths, String, oci::kString, EOraRoom::Short, AsText},
    {oci::kIntervalSeconds, String, oci::kString, EOraRoom::Short, AsText},
    {oci::kUniversalRowId, String, oci::kString, EOraRoom::Characters, AsText},
    {oci::kTimestampLocal, TimeStamp, oci::kString, EOraRoom::Short, AsDate},
};

}  // namespace

const TOracleTypeRow& OracleTypeOf(const TOracleColumn& column) {
  const auto* row = std::ranges::find(kTypes, column.type, &TOracleTypeRow::type);
  if (row == std::end(kTypes)) RaiseError(Format(kUnreadable, column.name, column.type));
  return *row;
}

TFieldDef OracleFieldDef(const TOracleColumn& column) {
  const TOracleTypeRow& row = OracleTypeOf(column);
  const bool sized = row.room == EOraRoom::Bytes || row.room == EOraRoom::Characters;
  return {column.name, row.kind, sized ? column.size : 0};
}

}  // namespace velmora
