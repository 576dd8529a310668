// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What a reader of files says, as text.

#include <string>

#include "formats/port/FileReader.h"

namespace velmora::testing {

inline constexpr char kNoFault[] = "nothing raised";  // MessageOf's word

// A table, as in
//
//   table t TABLE
//   column NAME type 130 flags 128 length 12 numeric 15,0 null default "x" string(12) auto
//   key pk(NAME,CITY) primary unique
//   row text Ann|null
//   row 3: text Bob|int 5          where records have numbers of their own
//
// What is 0 or none is left out. "structure:" and "rows:" begin what could not be read, "fault:" what is true of both.
std::string TableText(TFileReader& reader, const TOLEDBTableRow& table);
// The names of the tables, and each as above.
std::string ReaderText(TFileReader& reader);
std::string ColumnsText(const TFileTable& table);
std::string KeysText(const TFileTable& table);
std::string RowsText(const TFileRows& rows);

}  // namespace velmora::testing
