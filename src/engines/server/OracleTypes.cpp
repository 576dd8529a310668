// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/server/OracleTypes.h"

namespace velmora {
namespace {

constexpr std::int64_t kLongMax = 2147483647;

constexpr TColumnTypeInfo kOracleTypes[] = {
    {.name = "NUMBER",
     .datatype = ntDecimal,
     .accepts = {ntI1, ntI2, ntI4, ntI8, ntUI1, ntUI2, ntUI4, ntUI8, ntDouble, ntBool, ntMoneyMsSql, ntSmallMoneyMsSql,
                 ntTimestampMsSql},
     .has_precision = true,
     .has_scale = true},
    {.name = "FLOAT",
     .datatype = ntFloat,
     .accepts = {ntI1, ntI2, ntI4, ntI8, ntUI1, ntUI2, ntUI4, ntUI8, ntDouble, ntBool, ntMoneyMsSql, ntSmallMoneyMsSql},
     .has_precision = true},
    {.name = "CHAR", .datatype = ntChar, .aliases = "CHARACTER", .has_length = true},
    {.name = "DATE", .datatype = ntDate, .accepts = {ntDate, ntDateTime, ntTime, ntTimestamp}},
    {.name = "VARCHAR2", .datatype = ntVarChar, .has_length = true},
    {.name = "NCHAR2", .datatype = ntNChar, .aliases = "NCHAR", .has_length = true},
    {.name = "NVARCHAR2", .datatype = ntNVarChar, .aliases = "NVARCHAR", .has_length = true},
    {.name = "LONG",
     .datatype = ntBytes,
     .aliases = "RAW;LONG RAW;BLOB;CLOB",
     .accepts = {ntBytes, ntVarBytes, ntText},
     .has_length = true,
     .max_length = kLongMax},
};

}  // namespace

TColumnTypeInfoArray OracleColumnTypes() { return kOracleTypes; }

}  // namespace velmora
