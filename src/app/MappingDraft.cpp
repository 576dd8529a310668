// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/MappingDraft.h"

#include <algorithm>

#include "util/Counted.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kSecondRule[] = "There is a rule for it already: %s";
constexpr char kByRule[] = "by the rule %s";
constexpr char kUnknownType[] = "by the usual table again";
constexpr char kNotThere[] = "accepted, but the source has no such element";
constexpr char kNotCompared[] = "accepted earlier";

bool HasLevel(const TMadeColumn& column, EMappingShown shown) {
  switch (shown) {
    case EMappingShown::Warnings:
      return column.level != EMadeLevel::Info;
    case EMappingShown::Refused:
      return column.level == EMadeLevel::Refused;
    default:
      return true;
  }
}

}  // namespace

TMappingDraft::TMappingDraft(TForeignWishes wishes, const TFindings& found)
    : wishes_(std::move(wishes)), columns_(found.mapping) {
  FindRules();
  for (const TUnmadeElement& element : found.unmade)
    elements_.push_back({element.Name(), element.kind, element.reason, false});
  for (const TUnmadeElement& element : found.accepted)
    elements_.push_back({element.Name(), element.kind, element.reason, true});
  for (const std::string& name : wishes_.accepted)
    if (std::ranges::none_of(elements_, [&](const auto& element) { return SameElement(element.name, name); }))
      elements_.push_back({name, "", Compared() ? kNotThere : kNotCompared, true});
}

// --- Columns

std::vector<std::size_t> TMappingDraft::Shown(EMappingShown shown, const std::string& filter) const {
  TStringList words;
  SplitPlain(' ', LowerText(filter), words);
  std::vector<std::size_t> places;
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    const TMadeColumn& column = columns_[i];
    if (!HasLevel(column, shown)) continue;
    if (shown == EMappingShown::ByRules && RuleOf(column) == nullptr) continue;
    const std::string text =
        LowerText(column.Place() + " " + column.source + " " + TypeOf(column) + " " + TextOf(column));
    if (std::ranges::all_of(words, [&](const std::string& word) { return text.find(word) != std::string::npos; }))
      places.push_back(i);
  }
  return places;
}

std::string TMappingDraft::TypeOf(const TMadeColumn& column) const {
  if (const TMapRule* rule = RuleOf(column)) return rule->type;
  return column.rule.empty() ? column.type : std::string();
}

std::string TMappingDraft::TextOf(const TMadeColumn& column) const {
  const TMapRule* rule = RuleOf(column);
  if (rule == nullptr) return column.rule.empty() ? column.text : kUnknownType;
  const std::string told = Format(kByRule, rule->what);
  return column.text.empty() || column.rule.empty() ? told : told + "; " + column.text;
}

std::optional<std::size_t> TMappingDraft::OwnRule(const TMadeColumn& column) const {
  TStringList places;  // the names that are no type's
  for (const std::string& name : column.names)
    if (name == column.source)
      break;
    else
      places.push_back(name);
  const TMapRule* rule = FindMapRule(wishes_.rules, places);
  if (rule == nullptr) return std::nullopt;
  return static_cast<std::size_t>(rule - wishes_.rules.data());
}

const TMadeColumn* TMappingDraft::Find(const std::string& table, const std::string& column) const {
  const auto found = std::ranges::find_if(columns_, [&](const TMadeColumn& made) {
    return !made.column.empty() && SameText(made.table, table) && SameText(made.column, column);
  });
  return found == columns_.end() ? nullptr : &*found;
}

// --- Rules

const TMapRule* TMappingDraft::RuleOf(const TMadeColumn& column) const {
  return deciding_[static_cast<std::size_t>(&column - columns_.data())];
}

void TMappingDraft::FindRules() {
  deciding_.clear();
  for (const TMadeColumn& column : columns_) deciding_.push_back(FindMapRule(wishes_.rules, column.names));
}

std::string TMappingDraft::UseOf(std::size_t place) const {
  if (!Compared()) return {};
  const auto used = std::ranges::count(deciding_, &wishes_.rules.at(place));
  return used == 0 ? "no column" : Counted(static_cast<std::size_t>(used), "column");
}

void TMappingDraft::PutRule(const TMapRule& rule, std::optional<std::size_t> place) {
  const TMapRule read = ReadMapRule(MapRuleText(rule));
  const TMapRule* there = FindMapRule(wishes_.rules, {read.what});
  if (there != nullptr && (!place || there != &wishes_.rules.at(*place)))
    RaiseError(Format(kSecondRule, MapRuleText(*there)));
  if (place)
    wishes_.rules.at(*place) = read;
  else
    wishes_.rules.push_back(read);
  FindRules();
}

void TMappingDraft::RemoveRule(std::size_t place) {
  wishes_.rules.erase(wishes_.rules.begin() + static_cast<std::ptrdiff_t>(place));
  FindRules();
}

// --- Elements

void TMappingDraft::Accept(std::size_t place, bool accepted) {
  const std::string name = elements_.at(place).name;
  for (TDraftElement& element : elements_)
    if (SameElement(element.name, name)) element.accepted = accepted;
  std::erase_if(wishes_.accepted, [&](const std::string& other) { return SameElement(other, name); });
  if (accepted) wishes_.accepted.push_back(name);
}

}  // namespace velmora
