// SPDX-License-Identifier: GPL-3.0-or-later
#include "fleet/NamePattern.h"

#include <algorithm>
#include <cctype>

#include "app/SourceText.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

TNamePattern::TNamePattern(std::string_view encoded) {
  for (std::size_t at = 0; at < encoded.size();) {
    const std::size_t end = std::min(encoded.find_first_of("*?", at), encoded.size());
    text_ += PercentDecoded(encoded.substr(at, end - at));
    wild_.resize(text_.size(), ' ');
    if (end < encoded.size()) (text_ += encoded[end], wild_ += encoded[end]);
    at = end + 1;
  }
  if (wild_.find_first_of("*?") == std::string::npos) wild_.clear();
}

// The last * takes one letter more whenever what follows it does not fit.
bool TNamePattern::Matches(std::string_view name) const {
  if (!Any()) return name == text_;
  std::size_t at = 0, place = 0;
  std::size_t star = std::string::npos, taken = 0;
  while (place < name.size()) {
    if (at < text_.size() && wild_[at] == '*') {
      star = ++at;
      taken = place;
    } else if (at < text_.size() && wild_[at] == '?') {
      ++at;
      place += CharSize(name, place);
    } else if (at < text_.size() && text_[at] == name[place]) {
      ++at;
      ++place;
    } else if (star != std::string::npos) {
      at = star;
      place = taken += CharSize(name, taken);
    } else {
      return false;
    }
  }
  return wild_.find_first_not_of('*', at) == std::string::npos;
}

std::string PercentEncoded(std::string_view name) {
  std::string encoded;
  for (const char c : name) {
    const bool plain = std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_' || c == '-' || c == '.';
    encoded += plain ? std::string(1, c) : Format("%%%02X", static_cast<int>(static_cast<unsigned char>(c)));
  }
  return encoded;
}

}  // namespace velmora
