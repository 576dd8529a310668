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
};

enum class ENameCase { Keep, Lower };

struct TForeignWishes {
  std::vector<TMapRule> rules{};
  TStringList accepted{};         // "TABLE.ELEMENT": what has no form in MySQL and need not have one
  bool strict_types = false;      // a type that holds all values is a difference, too
  bool drop_obsolete = false;     // tables that the target alone has go
  bool accept_timestamp = false;  // timestamp stands for datetime, though it ends in 2038
  ENameCase names = ENameCase::Keep;
};

// "WHAT=TYPE". Raises where either is missing, and for what is no type of MySQL's.
TMapRule ReadMapRule(const std::string& text);
std::string MapRuleText(const TMapRule& rule);

}  // namespace velmora
