// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Type tables: what ties the words of a dialect to neutral types. A table is constant data; the order of its rows
// decides.

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "core/NeutralTypes.h"

namespace velmora {

inline constexpr std::int64_t kNoBound = -1;

struct TColumnTypeInfo {
  std::string_view name;          // the dialect's type word; may hold blanks
  TNeutralType datatype;          // the neutral type of this word
  std::string_view aliases = {};  // other spellings that DecodeColumn takes, joined by ";"
  TNeutralSet accepts = {};       // further neutral types that this row also writes out
  bool has_length = false;        // the word carries one number, governed by the length range
  bool has_precision = false;     // the word may carry a precision, governed by the precision range
  bool has_scale = false;         // with has_precision: a second number, the scale, is written
  bool is_character = false;      // carried by some tables, read by no operation
  bool size_required = false;     // false in every table
  std::int64_t min_length = kNoBound, max_length = kNoBound;
  std::int64_t min_precision = kNoBound, max_precision = kNoBound;

  bool Writes(TNeutralType type) const { return datatype == type || accepts.Holds(type); }
};

// A view of a constant table that lives as long as the program.
using TColumnTypeInfoArray = std::span<const TColumnTypeInfo>;

// A number that an engine may leave unstated.
using TNumber = std::optional<std::int64_t>;

TColumnTypeInfoArray GenericColumnTypes();  // what the base engine gives

}  // namespace velmora
