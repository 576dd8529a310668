// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Character sets and collations that the one server has and the other one does not.

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "core/DBConn.h"
#include "exact/compare/Changes.h"

namespace velmora {

// Names of the reference's character sets and collations, in lower case, and what the target takes instead.
using TCollationMap = std::map<std::string, std::string>;

// Takes "a=b". Raises for what is not two names, and for collations of different character sets, which would change
// what a column holds.
void AddToCollationMap(const std::string& mapping, TCollationMap& map);

// Replaces the names wherever a creation text says "character set", "charset" or "collate".
void MapCollations(const TCollationMap& map, std::string& ddl);

// A server's character sets and collations, each of which it is asked for once. It outlives this object.
class TKnownSets {
 public:
  explicit TKnownSets(TDBConn& server) : server_(server) {}
  // Which of those that a text names the server does not know, as a sentence; empty for none. A server that answers no
  // queries is believed to know them all.
  std::string UnknownIn(const std::string& text);
  // Likewise of one collation by its name.
  std::string UnknownCollation(const std::string& name);
  // Believes that it knows the names in its own creation texts.
  void Believe(const std::map<std::string, std::string>& texts) { texts_ = &texts; }

 private:
  bool Knows(const std::string& name, bool collation);

  TDBConn& server_;
  const std::map<std::string, std::string>* texts_ = nullptr;
  std::map<std::pair<std::string, bool>, bool> known_;  // by name, and whether it is a collation
};

// Marks the changes as unsafe that bring in a name which `target` does not know. Only of names that none of the
// target's own `texts` holds is its server asked; a target that answers no queries is believed to know them all.
void MarkUnknownCollations(TDBConn& target, const std::map<std::string, std::string>& texts,
                           std::vector<TChange>& changes);

}  // namespace velmora
