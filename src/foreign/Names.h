// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Names of a source in MySQL: not too long, of letters that it takes, and unlike their neighbours.

#include <algorithm>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>

#include "util/Text.h"

namespace velmora {

inline constexpr std::size_t kLongestName = 64;  // letters

// As MySQL takes it: letters that need four bytes become "_", blanks at the end go, what is longer than 64 letters
// keeps the first 55 and gets a number of its own, the same in each run. `nameless` is for what is empty.
std::string MakeName(std::string_view name, std::string_view nameless);
// The same for columns: some names are the storage's own.
std::string MakeColumnName(std::string_view name, std::string_view nameless);
// The same for tables: some beginnings say where a file is.
std::string MakeTableName(std::string_view name, std::string_view nameless);
// The same for keys and references: the primary key alone is called as it is.
std::string MakeKeyName(std::string_view name, std::string_view nameless);

// Names of one table or database, which are told apart ignoring case, that of all letters.
class TNames {
 public:
  std::string Take(const std::string& name);  // or with "_2", "_3" at its end

 private:
  std::set<std::u32string> taken_;
  std::map<std::u32string, int> last_;  // numbers, by what stands in front of them
};

// The element of this very name, as `name_of` gives it, or else the first one that differs from it in case alone: of
// some sources "Id" and "ID" are two columns. The end where there is none.
template <class TRange, class TNameOf = std::identity>
auto FindNamed(TRange& range, std::string_view name, TNameOf name_of = {}) {
  const auto exact = std::ranges::find(range, name, name_of);
  if (exact != std::ranges::end(range)) return exact;
  return std::ranges::find_if(
      range, [&](const std::string& other) { return SameText(other, name); }, name_of);
}

}  // namespace velmora
