// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/NeutralTypes.h"

#include <iterator>

namespace velmora {
namespace {

// In the order of the values. A type that one maker alone has says so in its tag.
// clang-format off
constexpr std::string_view kTags[ntUnknown + 1] = {
    "<I1>", "<I2>", "<I4>", "<I8>", "<UI1>", "<UI2>", "<UI4>", "<UI8>",
    "<FLOAT>", "<DOUBLE>", "<DECIMAL>", "<DATE>", "<DATETIME>", "<TIME>", "<TIMESTAMP>",
    "<CHAR>", "<VARCHAR>", "<NCHAR>", "<NVARCHAR>", "<BOOL>", "<BYTES>", "<VARBYTES>", "<TEXT>",
    "<YEAR_mysql>", "<UID_mssql>", "<MONEY_mssql>", "<SMALLMONEY_mssql>", "<NTEXT_mssql>",
    "<IMAGE_mssql>", "<SMALLDATETIME_mssql>", "<TIMESTAMP_mssql>", "<ARRAY_ib>", "<Unknown>"};
// clang-format on

}  // namespace

std::string_view NeutralTag(TNeutralType type) { return type < std::size(kTags) ? kTags[type] : std::string_view{}; }

}  // namespace velmora
