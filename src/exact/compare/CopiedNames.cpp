// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/compare/CopiedNames.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "mysqltext/KeyText.h"
#include "mysqltext/Lexer.h"
#include "util/Text.h"

namespace velmora {

namespace {

bool IsConstraint(const TElement& element) {
  return element.kind == EElement::ForeignKey || element.kind == EElement::Check;
}

std::string_view Stripped(std::string_view name) {
  name.remove_prefix(std::min(name.find_first_not_of('_'), name.size()));
  return name;
}

const TElement* Named(const TTableText& table, EElement kind, std::string_view name) {
  const auto found = std::ranges::find_if(
      table.elements, [&](const TElement& element) { return element.kind == kind && SameText(element.name, name); });
  return found == table.elements.end() ? nullptr : &*found;
}

// One of the reference that the target does not have by its name; null where the reference has this one, too.
const TElement* Original(const TTableText& reference, const TTableText& target, const TElement& element) {
  if (Named(reference, element.kind, element.name) != nullptr) return nullptr;
  const auto is_it = [&](const TElement& wanted) {
    return wanted.kind == element.kind && !SameText(wanted.name, element.name) &&
           SameText(Stripped(wanted.name), Stripped(element.name)) &&
           Named(target, wanted.kind, wanted.name) == nullptr;
  };
  const auto found = std::ranges::find_if(reference.elements, is_it);
  return found == reference.elements.end() ? nullptr : &*found;
}

// The first of its names is its own.
TElement Renamed(TElement element, const std::string& name) {
  const std::string text = element.text.Str();
  for (const TToken& token : Tokens(text)) {
    if (!IsName(token) || NameOf(token) != element.name) continue;
    element.text = text.substr(0, token.start) + QuotedName(name) + text.substr(token.End());
    element.name = name;
    break;
  }
  return element;
}

// What only the name makes different.
bool TakeName(TElement& element, const TElement& wanted, TElementComparison& comparison) {
  TElement renamed = Renamed(element, wanted.name);
  if (!comparison.Same(wanted, renamed)) return false;
  element = std::move(renamed);
  return true;
}

// The key that a server has made for a foreign key has its name.
void TakeKeyName(const std::string& from, const std::string& to, const TTableText& reference, TTableText& target,
                 TElementComparison& comparison) {
  const TElement* wanted = Named(reference, EElement::Key, to);
  if (wanted == nullptr || Named(target, EElement::Key, to) != nullptr) return;
  for (TElement& element : target.elements)
    if (element.kind == EElement::Key && SameText(element.name, from)) TakeName(element, *wanted, comparison);
}

}  // namespace

std::unique_ptr<const TTableText> WithoutCopiedNames(const TTableText& reference, const TTableText& target,
                                                     TEquivalenceUse& use) {
  std::unique_ptr<TTableText> result;
  TElementComparison comparison(reference, target, use);
  for (std::size_t i = 0; i < target.elements.size(); ++i) {
    const TElement& element = target.elements[i];
    if (!IsConstraint(element)) continue;
    const TElement* wanted = Original(reference, target, element);
    if (wanted == nullptr) continue;
    if (result == nullptr) result = std::make_unique<TTableText>(target);
    if (!TakeName(result->elements[i], *wanted, comparison)) continue;
    use.Add(EEquivalence::CopiedName);
    if (element.kind == EElement::ForeignKey) TakeKeyName(element.name, wanted->name, reference, *result, comparison);
  }
  return result;
}

}  // namespace velmora
