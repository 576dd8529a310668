// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqltext/ElementFinder.h"

#include "util/Text.h"

namespace velmora {

namespace {

constexpr std::size_t kIndexedFrom = 64;  // elements: fewer are gone through before an index of them is made

std::string KeyOf(EElement kind, std::string_view name) {
  return static_cast<char>(kind) + LowerText(std::string(name));
}

}  // namespace

const TElement* TElementFinder::Find(EElement kind, std::string_view name) {
  const std::vector<TElement>& elements = table_.elements;
  if (next_ < elements.size() && elements[next_].kind == kind && !name.empty() && elements[next_].name == name)
    return &elements[next_++];
  const TElement* found = elements.size() < kIndexedFrom ? table_.Find(kind, name) : FindIndexed(kind, name);
  if (found != nullptr) next_ = static_cast<std::size_t>(found - elements.data()) + 1;
  return found;
}

const TElement* TElementFinder::FindIndexed(EElement kind, std::string_view name) {
  if (index_.empty())
    for (const TElement& element : table_.elements) index_.emplace(KeyOf(element.kind, element.name), &element);
  const auto found = index_.find(KeyOf(kind, name));
  if (found == index_.end()) return nullptr;
  const bool by_case = kind == EElement::ForeignKey || kind == EElement::Check;
  return !by_case || found->second->name == name ? found->second : table_.Find(kind, name);
}

}  // namespace velmora
