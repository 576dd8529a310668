// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Literals of defaults, as servers print them for a column of a type.

#include <optional>
#include <string>
#include <string_view>

#include "mysqltext/ColumnType.h"
#include "mysqltext/KeyText.h"

namespace velmora {

// What digits of four bits or one say, most significant first.
std::string BytesOf(std::string_view digits, int bits);

// The literal that `value`, a default as it is written, becomes; nothing for what is no literal, or none that is known.
// `local_time_of_day` as TServerTraits has it.
std::optional<std::string> PrintedDefault(const TColumnText& column, TTokens value, bool local_time_of_day);

}  // namespace velmora
