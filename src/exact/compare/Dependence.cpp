#include "exact/compare/Dependence.h"

#include <algorithm>
#include <vector>

#include "exact/compare/Changes.h"
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

bool Touches(const TChange& change, const TElement& foreign_key) {
  if (change.kind == EElement::ForeignKey) return SameText(change.item, foreign_key.name);
  const std::vector<std::string>& columns = foreign_key.text.ForeignKey().columns;
  return change.kind == EElement::Column && !change.moved_only &&
         std::any_of(columns.begin(), columns.end(), [&](auto& column) { return SameText(column, change.item); });
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

}  // namespace velmora
