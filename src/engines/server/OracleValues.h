// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Result columns and values as an Oracle client library gives them, turned into fields and values of a dataset.

#include <cstdint>
#include <string>

#include "core/Dataset.h"
#include "util/Variant.h"

namespace velmora {

// The session settings that the readers below rely on.
inline constexpr char kOracleFormats[] =
    "alter session set nls_numeric_characters='.,' nls_date_format='YYYY-MM-DD HH24:MI:SS' "
    "nls_timestamp_format='YYYY-MM-DD HH24:MI:SS' nls_timestamp_tz_format='YYYY-MM-DD HH24:MI:SS.FF TZH:TZM'";

// What a client library tells about a column; the type is one of its own numbers.
struct TOracleColumn {
  std::string name;
  std::uint16_t type = 0;
  std::uint16_t size = 0;  // bytes at the server
  bool national = false;   // its letters are in the server's national character set
};

enum class EOraRoom {
  Bytes,       // as many as the column has
  Characters,  // the same, each of which may take more bytes here than at the server
  Short,       // of numbers, dates, addresses of rows
  Pieces       // of any length
};

// How a column is fetched and read.
struct TOracleTypeRow {
  std::uint16_t type;
  EFieldKind kind;
  std::uint16_t fetch_as;  // the type that is asked for
  EOraRoom room;
  TVariant (*read)(std::string text);
};

// Raises "Column %s is of a type that cannot be read (%d)" for objects, references, files and cursors.
const TOracleTypeRow& OracleTypeOf(const TOracleColumn& column);
TFieldDef OracleFieldDef(const TOracleColumn& column);

}  // namespace velmora
