// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Names of databases as a list of targets gives them: "tenant_*", in which * stands for any letters, none included, and
// ? for one. All else stands for itself, "_" and "%" too.

#include <string>
#include <string_view>

namespace velmora {

class TNamePattern {
 public:
  // As it stands in an address: %XX is the byte of that number, so that %2A is a "*" of the name. Raises for a "%"
  // that two hexadecimal digits do not follow.
  explicit TNamePattern(std::string_view encoded);
  TNamePattern() = default;

  bool Any() const { return !wild_.empty(); }  // has a * or ?
  bool Matches(std::string_view name) const;   // letter case counts

 private:
  std::string text_;
  std::string wild_;  // '*' or '?' at the places of those, otherwise blanks; empty where there are none
};

// A name as an address has it.
std::string PercentEncoded(std::string_view name);

}  // namespace velmora
