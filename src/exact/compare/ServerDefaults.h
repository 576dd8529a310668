#pragma once

// Literals of defaults, as servers print them for a column of a type.

#include <optional>
#include <string>

#include "mysqltext/ColumnType.h"
#include "mysqltext/KeyText.h"

namespace velmora {

// The literal that `value`, a default as it is written, becomes; nothing for what is no literal, or none that is known.
std::optional<std::string> PrintedDefault(const TColumnText& column, TTokens value);

}  // namespace velmora
