// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/compare/Dependence.h"

#include <algorithm>
#include <vector>

#include "exact/compare/Changes.h"
#include "mysqltext/Lexer.h"
#include "util/Text.h"

namespace velmora {

namespace {

std::vector<const TElement*> ForeignKeysTo(const TTableText* table, const std::unordered_set<std::string>& others) {
  std::vector<const TElement*> found;
  if (table == nullptr) return found;
  for (const TElement& element : table->elements)
    if (element.kind == EElement::ForeignKey && others.contains(element.text.ForeignKey().table))
      found.push_back(&element);
  return found;
}

bool Holds(const std::vector<std::string>& names, const std::string& name) {
  return std::any_of(names.begin(), names.end(), [&](auto& other) { return SameText(other, name); });
}

bool Touches(const TChange& change, const TElement& foreign_key) {
  if (change.kind == EElement::ForeignKey) return SameText(change.item, foreign_key.name);
  return change.kind == EElement::Column && !change.moved_only &&
         Holds(foreign_key.text.ForeignKey().columns, change.item);
}

// Whether what changes is one of these columns, or a key that they may need.
bool ChangesOneOf(const TChange& change, const std::vector<std::string>& columns) {
  if (change.old_text.Empty() || change.moved_only) return false;
  if (change.kind == EElement::Column) return Holds(columns, change.item);
  if (!IsKey(change.kind)) return false;
  const std::vector<TKeyPart>& parts = change.old_text.KeyParts();
  return !parts.empty() && Holds(columns, parts.front().column);
}

bool MayReferTo(const TStayingTable& other, const std::string& table) {
  if (other.table) return !ForeignKeysTo(&*other.table, {table}).empty();
  return other.text.find("REFERENCES `" + table + "` (") != std::string::npos ||
         other.text.find("REFERENCES " + QuotedName(table) + " (") != std::string::npos;
}

// Of a table that cannot be read nobody knows to which columns it refers.
bool ReachesInto(const TStayingTable& other, const std::string& table, const TChange& change) {
  if (!other.table)
    return !change.old_text.Empty() && !change.moved_only && (change.kind == EElement::Column || IsKey(change.kind));
  const auto keys = ForeignKeysTo(&*other.table, {table});
  return std::any_of(keys.begin(), keys.end(),
                     [&](auto* key) { return ChangesOneOf(change, key->text.ForeignKey().references); });
}

}  // namespace

std::string ChangesBeside(const TTableText* reference, const TTableText* target,
                          const std::unordered_set<std::string>& others) {
  const auto wanted = ForeignKeysTo(reference, others);
  if (wanted.empty()) return {};
  if (target == nullptr) return wanted.front()->text.ForeignKey().table;
  TEquivalenceUse use;
  const std::vector<TChange> changes = CompareTableTexts(*reference, *target, use);
  for (const TElement* key : wanted)
    for (const TChange& change : changes)
      if (Touches(change, *key)) return key->text.ForeignKey().table;
  return {};
}

std::string ChangesBelow(const TTableText* reference, const TTableText* target,
                         const std::vector<TStayingTable>& others) {
  if (reference == nullptr || target == nullptr) return {};
  for (const TStayingTable& other : others) {
    if (!MayReferTo(other, target->name)) continue;
    TEquivalenceUse use;
    for (const TChange& change : CompareTableTexts(*reference, *target, use))
      if (ReachesInto(other, target->name, change)) return other.name;
  }
  return {};
}

}  // namespace velmora
