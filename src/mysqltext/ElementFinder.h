// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>

#include "mysqltext/TableText.h"

namespace velmora {

// Finds what TTableText::Find finds, in one walk over another table with mostly the same elements: at once where they
// come in the same order, and otherwise without going through all of a wide table each time.
class TElementFinder {
 public:
  explicit TElementFinder(const TTableText& table) : table_(table) {}  // which outlives this object, unchanged

  const TElement* Find(EElement kind, std::string_view name);

 private:
  const TElement* FindIndexed(EElement kind, std::string_view name);

  const TTableText& table_;
  std::size_t next_ = 0;  // behind the one that was found last
  std::unordered_map<std::string, const TElement*> index_;
};

}  // namespace velmora
