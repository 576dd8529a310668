// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What the user asks for when a reference is not MySQL.

#include <string>
#include <vector>

#include "util/Lists.h"

namespace velmora {

// A type of the user's own for one column ("orders.total"), or for a type of the source: "number(10,2)" is taken before
// "number". Case and blanks do not count.
struct TMapRule {
  std::string what;
  std::string type;  // MySQL's
  bool operator==(const TMapRule&) const = default;
};

enum class ENameCase { Keep, Lower };

struct TForeignWishes {
  std::vector<TMapRule> rules{};
  TStringList accepted{};         // "TABLE.ELEMENT": what has no form in MySQL and need not have one
  bool strict_types = false;      // a type that holds all values is a difference, too
  bool drop_obsolete = false;     // tables that the target alone has go
  bool accept_timestamp = false;  // timestamp stands for datetime, though it ends in 2038
  bool whole_numbers = false;     // decimals without digits behind the point become integers
  std::string collation{};        // of new tables and columns; empty for the server's own of utf8mb4
  ENameCase names = ENameCase::Keep;

  bool operator==(const TForeignWishes&) const = default;
  bool Any() const { return *this != TForeignWishes(); }
};

// One wish a line, as a task file keeps them: "map WHAT=TYPE", "accept TABLE.ELEMENT", "strict-types", "drop-obsolete",
// "accept-timestamp", "whole-numbers", "collation NAME", "names lower"; empty for none.
std::string ForeignWishesText(const TForeignWishes& wishes);
// Raises for a line that is none of these.
TForeignWishes ReadForeignWishes(const std::string& text);
// What is asked for now, before what `kept` has.
TForeignWishes JoinWishes(TForeignWishes now, const TForeignWishes& kept);

// "WHAT=TYPE". Raises where either is missing, and for what is no type of MySQL's.
TMapRule ReadMapRule(const std::string& text);
std::string MapRuleText(const TMapRule& rule);
// The rule for the first of these names that has one; null for none.
const TMapRule* FindMapRule(const std::vector<TMapRule>& rules, const TStringList& names);

// Whether these are names of one element, "TABLE.ELEMENT". Case does not count, and any white space is one blank.
bool SameElement(const std::string& a, const std::string& b);

// The name of a collation, in lower case. Raises for what is none, and for those of character sets in which not every
// letter has a place.
std::string ReadCollation(const std::string& text);

}  // namespace velmora
