// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What the formats of a workbook's cells say of their numbers: whether one is a moment, that is a date, a time or both.

#include <string_view>
#include <unordered_map>
#include <vector>

#include "util/Variant.h"

namespace velmora {

// By the pattern of a number format, as in "yyyy-mm-dd hh:mm", "[h]:mm:ss" or "#,##0.00".
bool IsMomentPattern(std::string_view pattern);

// The formats and styles of a workbook. A cell names a style, that a format, and a format without a pattern is one of
// those that every workbook has.
class TCellFormats {
 public:
  void AddPattern(unsigned format, std::string_view pattern) { patterns_[format] = IsMomentPattern(pattern); }
  void AddStyle(unsigned format) { styles_.push_back(format); }
  void CountFrom1904() { from_1904_ = true; }

  // The value of a cell with that number: the number, a moment to the second, or null where it is none. Days count from
  // 1900 with a 29th of February that this year never had, and which is given as text; or from 1904. A number below 1
  // is a time of day alone, one that stands for no day before the year 10000 stays a number.
  TVariant Value(double number, std::size_t style) const;

 private:
  bool IsMoment(std::size_t style) const;

  std::unordered_map<unsigned, bool> patterns_;
  std::vector<unsigned> styles_;
  bool from_1904_ = false;
};

}  // namespace velmora
