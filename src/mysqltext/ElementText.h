// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Looks into an element's own text, and the few ways in which it is ever rewritten.

#include <string>
#include <string_view>
#include <vector>

#include "mysqltext/TableText.h"

namespace velmora {

// The key's text without the parts that are the column `name`; empty when none is left.
std::string KeyTextWithout(const TElementText& key, std::string_view name);

// A key's text without what says whether queries use it, and that: "ignored", "invisible"; empty for one that is used.
struct TKeyUse {
  std::string text;
  std::string word;
};
TKeyUse SplitKeyUse(const TElementText& key);

// Defaults name sequences with their database. Those of the one database become those of the other one.
void MoveSequences(TTableText& table, const std::string& from, const std::string& to);

// The element's text with its literals of bytes in hexadecimal: defaults of binary columns, and texts with a set before
// them that are no UTF-8. Servers print these as they are, which no text file, window or client with a character
// set of its own hands on. Other literals stay as they are.
TElementText WithHexLiterals(EElement kind, TElementText element);

// The column's text, which stands in `from`, so that it means the same in `to`: with a character set of its own where
// the two tables hand down different ones.
std::string PinnedColumnText(const TElementText& column, const TTableText& from, const TTableText& to);

}  // namespace velmora
