// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What a provider tells, as text; and where the cases stand.

#include <charconv>
#include <cmath>
#include <iterator>
#include <memory>
#include <string>

#include "odbc/OdbcProvider.h"
#include "util/Text.h"

namespace velmora::testing {

inline std::unique_ptr<TOLEDBProvider> OdbcProviderOf(const std::string& source) {
  TInitString properties;
  properties.Set("Data Source", source);
  return NewOdbcProvider(properties);
}

inline std::string Told(const TOLEDBColumnRow& c) {
  return "  column " + c.COLUMN_NAME + " " + std::to_string(c.DATA_TYPE) + "/" + std::to_string(c.COLUMN_FLAGS) + " " +
         std::to_string(c.CHARACTER_MAXIMUM_LENGTH) + " (" + std::to_string(c.NUMERIC_PRECISION) + "," +
         std::to_string(c.NUMERIC_SCALE) + ") place " + std::to_string(c.ORDINAL_POSITION) +
         (c.IS_NULLABLE ? "" : " not null") + (c.COLUMN_DEFAULT ? " default " + *c.COLUMN_DEFAULT : "") + "\n";
}

inline std::string Told(const TOLEDBIndexRow& i) {
  return "  index " + i.INDEX_NAME + "." + std::to_string(i.ORDINAL_POSITION) + " " + i.COLUMN_NAME +
         (i.PRIMARY_KEY ? " primary" : "") + (i.UNIQUE ? " unique" : "") + "\n";
}

// Texts in quotes; bytes that are none in hexadecimal; a text of one letter over and over as the number of its letters.
inline std::string Told(const TVariant& value) {
  if (const auto* moment = std::get_if<TMoment>(&value)) {
    const double thousandths = static_cast<double>(std::llround(moment->value * 86400000) % 1000);
    return VarToText(TMoment{moment->value - thousandths / 86400000}) +
           (thousandths == 0 ? "" : " and " + std::to_string(std::lround(thousandths)) + " ms");
  }
  if (const auto* number = std::get_if<double>(&value)) {
    char digits[32];
    return {digits, std::to_chars(std::begin(digits), std::end(digits), *number).ptr};  // as many as tell it apart
  }
  const auto* text = std::get_if<std::string>(&value);
  if (text == nullptr) return VarIsNull(value) ? "null" : VarToText(value);
  const std::string first = text->substr(0, text->empty() ? 0 : CharSize(*text, 0));
  if (text->size() > 1000 && StrReplace(*text, first, "").empty())
    return std::to_string(text->size() / first.size()) + " x " + Told(TVariant(first));
  return "'" + ShownText(*text) + "'";
}

// The columns of a rowset, each with its values.
inline std::string Told(const TOLEDBRowset& rowset) {
  std::string told;
  for (std::size_t i = 0; i < rowset.fields.size(); ++i) {
    const TFieldDef& field = rowset.fields[i];
    told += "  field " + field.name + " " + std::string(FieldKindName(field.kind)) + " " + std::to_string(field.size) +
            (rowset.is_autoincrement[i] ? " counts itself" : "") + ":";
    for (const TMemDataset::TRow& row : rowset.rows) told += " " + Told(row[i]);
    told += "\n";
  }
  return told;
}

// All tables with their columns, indexes, and first two rows.
inline std::string Told(TOLEDBProvider& provider) {
  std::string told;
  for (const TOLEDBTableRow& table : provider.Tables()) {
    told += table.TABLE_TYPE + " " + table.TABLE_NAME + "\n";
    for (const TOLEDBColumnRow& column : provider.Columns(table.TABLE_NAME)) told += Told(column);
    for (const TOLEDBIndexRow& index : provider.Indexes(table.TABLE_NAME)) told += Told(index);
    told += Told(provider.Open("select top 2 * from [" + table.TABLE_NAME + "] order by 1"));
  }
  return told;
}

inline const std::string kOdbcCases = VELMORA_SOURCE_DIR "/tests/odbc/cases/";

}  // namespace velmora::testing
