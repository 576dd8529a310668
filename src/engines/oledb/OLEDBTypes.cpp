// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/oledb/OLEDBTypes.h"

namespace velmora {
namespace {

constexpr TColumnTypeInfo kOLEDBTypes[] = {
    {.name = "tinyint", .datatype = ntI1, .accepts = {ntUI1}},
    {.name = "smallint", .datatype = ntI2, .accepts = {ntUI2}},
    {.name = "int", .datatype = ntI4, .accepts = {ntUI4}},
    {.name = "bigint", .datatype = ntI8, .accepts = {ntUI8}},
    {.name = "binary", .datatype = ntBytes, .has_length = true, .min_length = 1, .max_length = 8000},
    {.name = "varbinary", .datatype = ntVarBytes, .has_length = true, .min_length = 1, .max_length = 8000},
    {.name = "image", .datatype = ntImageMsSql, .accepts = {ntBytes, ntVarBytes}, .min_length = 8001},
    {.name = "text", .datatype = ntText, .min_length = 8001},
    {.name = "ntext", .datatype = ntNTextMsSql},
    {.name = "char", .datatype = ntChar, .has_length = true, .is_character = true},
    {.name = "varchar", .datatype = ntVarChar, .has_length = true, .is_character = true},
    {.name = "nchar",
     .datatype = ntNChar,
     .has_length = true,
     .is_character = true,
     .min_length = 1,
     .max_length = 4000},
    {.name = "nvarchar",
     .datatype = ntNVarChar,
     .has_length = true,
     .is_character = true,
     .min_length = 1,
     .max_length = 4000},
    {.name = "bit", .datatype = ntBool},
    {.name = "timestamp", .datatype = ntTimestampMsSql},
    {.name = "uniqueidentifier", .datatype = ntUidMsSql},
    {.name = "date", .datatype = ntDate, .min_length = 8, .max_length = 8},
    {.name = "time", .datatype = ntTime, .min_length = 8, .max_length = 8},
    {.name = "datetime", .datatype = ntDateTime, .accepts = {ntTimestamp}, .min_length = 8, .max_length = 8},
    {.name = "smalldatetime", .datatype = ntSmallDateTimeMsSql, .min_length = 4, .max_length = 4},
    {.name = "money", .datatype = ntMoneyMsSql},
    {.name = "smallmoney", .datatype = ntSmallMoneyMsSql},
    {.name = "decimal", .datatype = ntDecimal, .aliases = "numeric", .has_precision = true, .has_scale = true},
    {.name = "float", .datatype = ntDouble, .has_precision = true, .min_precision = 1, .max_precision = 53},
    {.name = "real", .datatype = ntFloat, .aliases = "float(24)"},
};

}  // namespace

TColumnTypeInfoArray OLEDBColumnTypes() { return kOLEDBTypes; }

}  // namespace velmora
