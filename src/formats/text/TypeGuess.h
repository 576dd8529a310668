// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What type a column of texts has, as its values say.

#include <cstddef>
#include <iterator>
#include <string_view>

#include "formats/text/SMImportBaseComponent.h"

namespace velmora {

// The types that take all values seen so far, the first one first: integer (32 bits), float, date, time, date with or
// without time, string. Numbers with a needless zero in front ("007") and whole numbers of more than 15 digits are
// strings, since a number would not give the same digits back.
class TTypeGuess {
 public:
  void See(std::string_view text);  // a value that is not empty
  int Type() const { return seen_ ? kTypes[first_] : kSMString; }

 private:
  static constexpr int kTypes[] = {kSMInteger, kSMFloat, kSMDate, kSMTime, kSMDateTime, kSMString};

  void Refuse();

  bool seen_ = false;
  std::size_t first_ = 0;
  bool refused_[std::size(kTypes)] = {};
};

}  // namespace velmora
