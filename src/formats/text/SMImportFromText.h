// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "formats/text/SMImportBaseComponent.h"

namespace velmora {

// Imports a text file with columns of fixed width. Such a file does not say where its columns are; they are found by
// this rule:
//
//  1. Lines are UTF-8, else Windows-1252, and end with CR LF, LF or CR. Empty lines at the end are dropped. Positions
//     are characters. Rows begin with line RowFirst; the line before that, if there is one, holds the column names, and
//     lines above it are not looked at.
//  2. A position is blank when it is blank (character 32 or below, or after the end of the line) in every line that
//     counts, that of the names too. Each run of other positions is a span.
//  3. With a line of names, a span without a name above it or without data below joins its left neighbour when exactly
//     one blank position parts them: so "First Name" stays one column, and so does "2001-02-03 04:05" under "at".
//  4. A column begins where its span does and reaches to the next column. Values are trimmed; an empty one is null.
//  5. A column is named by what stands above it, trimmed. Without a name, or when the name was taken by a column before
//     it, it is "Column%d", counted from 0; where that is taken too, with the next number that is free.
//  6. All values of a column that are not null decide about its type, the first of these that takes them all: integer
//     (32 bits), float, date (yyyy-mm-dd), time (hh:mm or hh:mm:ss), date with or without time (one blank between),
//     string. A string's size is the width of the span. Columns without values are strings. Numbers with a needless
//     zero in front ("007") and whole numbers of more than 15 digits are strings, since a number would not give the
//     same digits back. Boolean and binary columns do not occur.
//
// So columns without a blank position between them cannot be told apart, and without a line of names two words that
// stand below each other in all lines become two columns.
class TSMImportFromText : public TSMImportBaseComponent {
 public:
  bool Fixed = false;  // columns of fixed width; without it the whole line is one column
  int RowFirst = 1;    // from 1

  // Raises "Cannot read %s: %s". No value fails: types fit all of them.
  void Execute() override;
};

}  // namespace velmora
