// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/mysql/MySQLTypes.h"

namespace velmora {
namespace {

constexpr std::int64_t kTinyMax = 255;
constexpr std::int64_t kShortMax = 65535;
constexpr std::int64_t kMediumMax = 16777215;
constexpr std::int64_t kLongMax = 4294967295;

// Deliberate: "longblob" and "longtext" stand first among their kin, so they are what is written, whatever the size:
// nothing can be lost. The narrower words are only read.
constexpr TColumnTypeInfo kMySQLTypes[] = {
    {.name = "tinyint", .datatype = ntI1, .accepts = {ntBool}},
    {.name = "smallint", .datatype = ntI2},
    {.name = "int", .datatype = ntI4},
    {.name = "bigint", .datatype = ntI8, .accepts = {ntTimestampMsSql}},
    {.name = "tinyint unsigned", .datatype = ntUI1, .accepts = {ntBool}},
    {.name = "smallint unsigned", .datatype = ntUI2},
    {.name = "int unsigned", .datatype = ntUI4},
    {.name = "bigint unsigned", .datatype = ntUI8},
    {.name = "longblob",
     .datatype = ntBytes,
     .accepts = {ntImageMsSql},
     .min_length = kMediumMax + 1,
     .max_length = kLongMax},
    {.name = "tinyblob", .datatype = ntBytes, .min_length = 1, .max_length = kTinyMax},
    {.name = "blob", .datatype = ntBytes, .min_length = kTinyMax + 1, .max_length = kShortMax},
    {.name = "mediumblob", .datatype = ntBytes, .min_length = kShortMax + 1, .max_length = kMediumMax},
    {.name = "longtext", .datatype = ntText, .min_length = kMediumMax + 1, .max_length = kLongMax},
    {.name = "tinytext", .datatype = ntText, .min_length = 1, .max_length = kTinyMax},
    {.name = "text", .datatype = ntText, .min_length = kTinyMax + 1, .max_length = kShortMax},
    {.name = "mediumtext", .datatype = ntText, .min_length = kShortMax + 1, .max_length = kMediumMax},
    {.name = "char", .datatype = ntChar, .has_length = true, .min_length = 1, .max_length = 255},
    {.name = "varchar", .datatype = ntVarChar, .has_length = true, .min_length = 1, .max_length = 255},
    {.name = "national char", .datatype = ntNChar, .has_length = true, .min_length = 1, .max_length = 255},
    {.name = "national varchar", .datatype = ntNVarChar, .has_length = true, .min_length = 1, .max_length = 255},
    {.name = "date", .datatype = ntDate},
    {.name = "datetime", .datatype = ntDateTime, .accepts = {ntSmallDateTimeMsSql}},
    {.name = "time", .datatype = ntTime},
    {.name = "timestamp", .datatype = ntTimestamp},
    {.name = "year", .datatype = ntYearMySql},
    {.name = "decimal", .datatype = ntDecimal, .aliases = "numeric;dec", .has_precision = true, .has_scale = true},
    {.name = "float", .datatype = ntFloat, .has_precision = true, .min_precision = 1, .max_precision = 24},
    {.name = "double", .datatype = ntDouble, .has_precision = true, .min_precision = 1, .max_precision = 53},
};

}  // namespace

TColumnTypeInfoArray MySQLColumnTypes() { return kMySQLTypes; }

}  // namespace velmora
