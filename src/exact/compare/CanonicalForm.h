// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Elements in the form in which they are compared: attributes in places of their own, keywords and references in lower
// case, quotes undone. What two spellings of one thing share whatever the settings is settled here; Equivalences.h has
// what can be switched.

#include <array>
#include <string>
#include <vector>

#include "exact/compare/Equivalences.h"
#include "mysqltext/Charsets.h"
#include "mysqltext/Lexer.h"
#include "mysqltext/TableText.h"

namespace velmora {

// A word or name (in lower case; Name where case counts), a text (its value after prefix and quote), number or symbol.
struct TCanonicalToken {
  EToken kind = EToken::Word;
  std::string text;
  bool printed = false;  // a text in which servers print "?" for letters of four bytes
  bool operator==(const TCanonicalToken& other) const {
    const bool texts = printed && other.printed && MayBeOneText(text, other.text);
    return kind == other.kind && (text == other.text || texts);
  }
};
using TCanonicalTokens = std::vector<TCanonicalToken>;

enum class ESlot {
  Type,
  Arguments,
  Sign,  // unsigned, zerofill
  Null,
  Default,
  OnUpdate,
  Generated,
  Check,
  Flags,
  Comment,
  Columns,
  Using,
  KeyBlockSize,
  References,
  DeleteRule,
  UpdateRule,
  Rest,
  kCount
};

struct TCanonicalForm {
  std::string name;  // as it stands; empty where the text has none
  std::string type;  // of a column
  std::array<TCanonicalTokens, static_cast<std::size_t>(ESlot::kCount)> slots;
  TCharset own;        // as named by a column
  TCharset effective;  // of a column that has letters
  TCharset table;
  bool btree_is_own = true;  // as TInheritance has it

  TCanonicalTokens& operator[](ESlot slot) { return slots[static_cast<std::size_t>(slot)]; }
  const TCanonicalTokens& operator[](ESlot slot) const { return slots[static_cast<std::size_t>(slot)]; }
};

TCanonicalForm CanonicalForm(const TElement& element, const TInheritance& table);
// The name of an engine as it counts: lower case, "heap" is "memory"; empty for none.
std::string EngineOf(const TTableText& table);
// A table's partitioning.
TCanonicalTokens CanonicalPartitioning(const TTableText& table);

}  // namespace velmora
