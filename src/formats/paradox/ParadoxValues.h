// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The values of Paradox fields, out of the bytes of a record.

#include "formats/paradox/ParadoxHeader.h"
#include "formats/paradox/ParadoxMemo.h"
#include "util/Variant.h"

namespace velmora {

// Decodes the field of the record at `record` into `value`: null, an integer, a float or a text. Truth values are the
// integers 1 and 0; dates, times and timestamps are floats, days since 1899-12-30. A type that is not decoded (BCD,
// bytes, unknown ones) leaves `value` as it is. Raises what the memo file raises.
void DecodePxField(const TPxField& field, const char* record, TPxMemoFile& memos, TVariant& value);

}  // namespace velmora
