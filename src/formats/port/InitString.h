// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Initialisation strings of OLE DB providers: "Provider=MSDASQL;Data Source=shop". Their form is published with the
// OLE DB documentation ("Connection String Syntax").

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velmora {

// Keys ignore case; blanks around keys and bare values do not count. A value that holds a semicolon, or begins or ends
// with a blank, stands in double or single quotes, which are doubled inside; "" is the empty value. "==" in a key is
// one "=". Of equal keys the last counts.
class TInitString {
 public:
  TInitString() = default;
  // Raises an error that names the position of the fault (from 1) and what to do, and never shows a value: a part
  // without "=", an empty key, a quoted value without its end or with something after it, a NUL.
  explicit TInitString(std::string_view text);

  bool Has(std::string_view key) const;
  std::string Value(std::string_view key) const;  // empty when the key is not there
  void Set(std::string_view key, std::string value);

 private:
  const std::string* Find(std::string_view key) const;  // null when the key is not there

  std::vector<std::pair<std::string, std::string>> values_;  // in the order of their first mention
};

// `value` as it may stand after "key=": as it is, or in double quotes where it would be read as something else.
std::string InitValue(std::string_view value);

}  // namespace velmora
