// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A value of a row: nothing, a truth value, a number, a date and time, text or bytes.

#include <cstdint>
#include <string>
#include <variant>

#include "util/Dates.h"

namespace velmora {

struct TMoment {  // a date, a time or both
  TDateTime value = 0;
  friend bool operator==(const TMoment&, const TMoment&) = default;
};

using TVariant = std::variant<std::monostate, bool, std::int64_t, double, TMoment, std::string>;

inline bool VarIsNull(const TVariant& value) { return value.index() == 0; }

// Null gives the default.
TVariant IfNull(const TVariant& value, const TVariant& defaultValue);

// As text, whole number (rounded to the nearest, halves to the even one), number; null gives "" and 0, a truth value
// "True" or "False" and 1 or 0. VarToInt and VarToFloat raise EConvertError for what is no such number.
std::string VarToText(const TVariant& value);
std::string VarToText(TVariant&& value);  // takes the text over
std::int64_t VarToInt(const TVariant& value);
double VarToFloat(const TVariant& value);

}  // namespace velmora
