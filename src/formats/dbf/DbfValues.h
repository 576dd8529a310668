// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Values out of the records of DBF files. A text that is no value of its type, such as the date 20050231, stays text; a
// number that did not fit, for which programs write stars, is null, as is a moment outside the years 1 to 9999.

#include <cstdint>
#include <string_view>

#include "formats/dbf/DbfFile.h"
#include "formats/dbf/DbfMemo.h"
#include "util/Variant.h"

namespace velmora {

// The place of one value, for as long as the record is the current one.
struct TDbfCell {
  const TDbfFile& file;
  const TDbfField& field;
  std::string_view bytes;  // the field's, of a value of variable length only its own
  TDbfMemoFile& memos;
};

// The bytes of `field` in the record: all that it has, or those that its length byte counts. Raises for a length that
// the field has no room for.
std::string_view DbfBytesOf(const TDbfFile& file, const TDbfField& field, std::string_view record);
// By the null flags of the record.
bool DbfIsNull(const TDbfFile& file, const TDbfField& field, std::string_view record);

// How the bytes of a type are read; which types go with which is up to the mapping of an engine.
TVariant DbfText(const TDbfCell& cell);     // without what it was padded with
TVariant DbfVarText(const TDbfCell& cell);  // whole
TVariant DbfBytes(const TDbfCell& cell);
TVariant DbfFloat(const TDbfCell& cell);    // digits, as a number; blank is null
TVariant DbfDecimal(const TDbfCell& cell);  // digits, as text that any reader of numbers takes; blank is null
TVariant DbfInteger(const TDbfCell& cell);
TVariant DbfDouble(const TDbfCell& cell);
TVariant DbfMoney(const TDbfCell& cell);     // as text with four decimals, which keeps it exact
TVariant DbfDate(const TDbfCell& cell);      // blank is null
TVariant DbfDateTime(const TDbfCell& cell);  // no day is null
TVariant DbfLogical(const TDbfCell& cell);   // neither true nor false is null
TVariant DbfMemoText(const TDbfCell& cell);  // without a memo null, as the next
TVariant DbfMemoBytes(const TDbfCell& cell);

}  // namespace velmora
