// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/text/TypeGuess.h"

#include <algorithm>
#include <cstddef>

#include "formats/text/TextFile.h"
#include "util/Format.h"

namespace velmora {

namespace {

constexpr std::size_t kExactDigits = 15;  // of a whole number, in a float

constexpr bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// Whether a number would lose something that the text says.
bool IsCode(std::string_view text) {
  if (text.starts_with('-') || text.starts_with('+')) text.remove_prefix(1);
  if (text.size() > 1 && text[0] == '0' && IsDigit(text[1])) return true;
  return text.size() > kExactDigits && std::ranges::all_of(text, IsDigit);
}

bool IsOfType(std::string_view text, int type) {
  switch (type) {
    case kSMInteger:
      return !text.starts_with('$') && !IsCode(text) && TextToInteger(text);
    case kSMFloat:
      return !IsCode(text) && TryStrToFloat(text);
    case kSMDate:
      return TextToDate(text).has_value();
    case kSMTime:
      return TextToTime(text).has_value();
    case kSMDateTime:
      return TextToDateTime(text) && !TextToTime(text);
    default:
      return true;
  }
}

}  // namespace

void TTypeGuess::See(std::string_view text) {
  seen_ = true;
  while (first_ + 1 < std::size(kTypes) && !IsOfType(text, kTypes[first_])) Refuse();
  for (std::size_t i = first_ + 1; i + 1 < std::size(kTypes); ++i)
    refused_[i] = refused_[i] || !IsOfType(text, kTypes[i]);
}

void TTypeGuess::Refuse() {
  do ++first_;
  while (refused_[first_]);
}

}  // namespace velmora
