// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/server/InterbaseTypes.h"

namespace velmora {
namespace {

constexpr std::int64_t kCharMax = 32767;
constexpr std::int64_t kVaryingMax = 32765;

// Deliberate: the server's word DOUBLE is an alias of "DECIMAL", so columns of double precision are read as decimals,
// and "DOUBLE PRECISION" is only ever written. The spelling CHARARACTER is what earlier versions took.
constexpr TColumnTypeInfo kInterbaseTypes[] = {
    {.name = "SHORT", .datatype = ntI2},
    {.name = "LONG", .datatype = ntI4},
    {.name = "INT64", .datatype = ntI8, .accepts = {ntTimestampMsSql}},
    {.name = "BLOB", .datatype = ntBytes, .has_length = true},
    {.name = "TEXT",
     .datatype = ntChar,
     .aliases = "CHAR;CHARACTER",
     .has_length = true,
     .min_length = 1,
     .max_length = kCharMax},
    {.name = "VARYING",
     .datatype = ntVarChar,
     .aliases = "VARCHAR;CHAR VARYING;CHARACTER VARYING;TEXT",
     .has_length = true,
     .min_length = 1,
     .max_length = kVaryingMax},
    {.name = "NCHAR",
     .datatype = ntNChar,
     .aliases = "NATIONAL CHAR;NATIONAL CHARARACTER",
     .has_length = true,
     .min_length = 1,
     .max_length = kCharMax},
    {.name = "NCHAR VARYING",
     .datatype = ntNVarChar,
     .aliases = "NATIONAL CHAR VARYING;NATIONAL CHARARACTER VARYING",
     .has_length = true,
     .min_length = 1,
     .max_length = kVaryingMax},
    {.name = "DATE", .datatype = ntDate, .aliases = "TIMESTAMP"},
    {.name = "TIME", .datatype = ntTime},
    {.name = "DECIMAL", .datatype = ntDecimal, .aliases = "NUMERIC;DOUBLE", .has_precision = true, .has_scale = true},
    {.name = "DOUBLE PRECISION", .datatype = ntDouble, .has_precision = true, .min_precision = 25, .max_precision = 53},
    {.name = "FLOAT", .datatype = ntFloat, .has_precision = true, .min_precision = 1, .max_precision = 24},
};

}  // namespace

TColumnTypeInfoArray InterbaseColumnTypes() { return kInterbaseTypes; }

}  // namespace velmora
