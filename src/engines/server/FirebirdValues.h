// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What the columns and values of a Firebird server become, and how they lie in the message of a fetched row.

#include <string>

#include "core/Dataset.h"

namespace velmora {

struct TFirebirdColumn {
  std::string name;   // the alias
  unsigned type = 0;  // as in ibase.h, without the bit that says whether nulls occur
  int sub_type = 0;
  unsigned length = 0;  // bytes
  int scale = 0;        // negative: digits after the point
  unsigned charset = 0;
  unsigned offset = 0;  // of the value in the message
  unsigned null_offset = 0;
};

// The server keeps the value elsewhere and gives a mark for it, to be read by a call of its own.
bool IsFirebirdBlob(const TFirebirdColumn& column);

// Raises "Column %s has the type %d, which cannot be read" for types of servers that came later.
TFieldDef FirebirdField(const TFirebirdColumn& column);

bool FirebirdIsNull(const TFirebirdColumn& column, const unsigned char* message);

// The value of a column that is not null and no blob. Texts of fixed width lose the blanks that fill them up. Numbers
// with a scale come as texts, to be exact; an array gives its mark, as "80:1f".
TVariant FirebirdValue(const TFirebirdColumn& column, const unsigned char* message);

}  // namespace velmora
