// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Neutral column types: the small numbers that stand for a column type in every engine, and sets of them.
//
// An engine's type table (core/ColumnTypes.h) says which word of its dialect stands for which of them. Sizes
// and digits of a type stand beside it, in TColumnTypeInfo.

#include <cstdint>
#include <initializer_list>
#include <string_view>

namespace velmora {

// Any byte may occur as a value; those above ntUnknown have no meaning and no tag.
enum TNeutralType : std::uint8_t {
  ntI1,  // whole numbers of 1 to 8 bytes with a sign
  ntI2,
  ntI4,
  ntI8,
  ntUI1,  // the same without
  ntUI2,
  ntUI4,
  ntUI8,
  ntFloat,
  ntDouble,
  ntDecimal,
  ntDate,
  ntDateTime,
  ntTime,
  ntTimestamp,
  ntChar,
  ntVarChar,
  ntNChar,
  ntNVarChar,
  ntBool,
  ntBytes,
  ntVarBytes,
  ntText,
  ntYearMySql,  // from here on, types that one engine alone has
  ntUidMsSql,
  ntMoneyMsSql,
  ntSmallMoneyMsSql,
  ntNTextMsSql,
  ntImageMsSql,
  ntSmallDateTimeMsSql,
  ntTimestampMsSql,
  ntArrayIb,
  ntUnknown
};

// The tag of a type, as in "<I4>"; the empty text for a value above ntUnknown.
std::string_view NeutralTag(TNeutralType type);

// A set of neutral types with values 0 to 39.
class TNeutralSet {
 public:
  constexpr TNeutralSet() = default;
  constexpr TNeutralSet(std::initializer_list<TNeutralType> types) {
    for (TNeutralType type : types) bits_ |= std::uint64_t{1} << type;
  }
  constexpr bool Holds(TNeutralType type) const { return type < 40 && ((bits_ >> type) & 1) != 0; }

 private:
  std::uint64_t bits_ = 0;
};

inline constexpr TNeutralSet kIntegers{ntI1, ntI2, ntI4, ntI8, ntUI1, ntUI2, ntUI4, ntUI8};
// Types whose default is written without quotes; <DOUBLE> is deliberately not among them.
inline constexpr TNeutralSet kNumericUnquoted{ntI1,  ntI2,  ntI4,    ntI8,      ntUI1,        ntUI2,
                                              ntUI4, ntUI8, ntFloat, ntDecimal, ntMoneyMsSql, ntSmallMoneyMsSql};
inline constexpr TNeutralSet kFractional{ntFloat, ntDouble, ntDecimal, ntMoneyMsSql, ntSmallMoneyMsSql};
inline constexpr TNeutralSet kCharacter{ntChar, ntVarChar, ntNChar, ntNVarChar, ntText};

}  // namespace velmora
