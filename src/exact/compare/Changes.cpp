// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/compare/Changes.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <unordered_map>
#include <utility>

#include "exact/compare/CopiedNames.h"
#include "exact/compare/GeneratedKey.h"
#include "exact/compare/OptionEquivalences.h"
#include "exact/compare/Safety.h"
#include "mysqltext/ElementText.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kNamelessElement[] = "Table %s: \"%s\" has no name by which it could be changed";
constexpr char kUnknownElement[] = "Table %s: \"%s\" is of a kind that cannot be changed";

constexpr std::size_t kNone = static_cast<std::size_t>(-1);

// Elements that share their names: a unique key and a plain one of one name are the same key, changed.
struct TGroup {
  bool (*holds)(EElement kind);
  TSyncAction add;
  TSyncAction modify;
  TSyncAction drop;
};

constexpr TGroup kColumns = {[](EElement kind) { return kind == EElement::Column; }, saAddColumn, saModifyColumn,
                             saDropColumn};

constexpr std::array<TGroup, 4> kOtherGroups{{
    {IsKey, saAddKey, saModifyKey, saDropKey},
    {[](EElement kind) { return kind == EElement::Check; }, saAddConstraint, saModifyConstraint, saDropConstraint},
    {[](EElement kind) { return kind == EElement::Period; }, saAddConstraint, saModifyConstraint, saDropConstraint},
    {[](EElement kind) { return kind == EElement::ForeignKey; }, saAddConstraint, saModifyConstraint, saDropConstraint},
}};

using TElements = std::vector<const TElement*>;

std::string OptionsText(const TTableText& table) {
  std::string text;
  for (const auto& option : table.options) text += (text.empty() ? "" : " ") + option.name + "=" + option.value;
  return text;
}

class TTableComparison {
 public:
  TTableComparison(const TTableText& reference, const TTableText& target, TEquivalenceUse& use)
      : reference_(reference), target_(target), use_(use), elements_(reference, target, use) {
    if (use.On(EEquivalence::GeneratedKey)) generated_ = WithGeneratedKey(reference, target);
    if (generated_ != nullptr) use.Add(EEquivalence::GeneratedKey);
  }

  std::vector<TChange> Run();

 private:
  void CompareOptions();
  void CompareColumns();
  bool CompareGroup(const TGroup& group);
  void ComparePartitioning();
  void CompareOthers() const;
  TElements ElementsOf(const TTableText& table, const TGroup& group) const;

  // For each element of the reference the place of its counterpart in the target, or kNone.
  std::vector<std::size_t> Match(const TElements& wanted, const TElements& there);
  std::size_t MatchNameless(const TElement& wanted, const TElements& there, const std::vector<bool>& taken);
  void Drop(const TGroup& group, const TElements& there, const std::vector<std::size_t>& matches);
  TChange Change(TSyncAction action, const TElement* from, const TElement* to) const;
  void Add(TChange change);
  bool Same(const TElement& wanted, const TElement& there);

  const TTableText& reference_;
  const TTableText& target_;
  TEquivalenceUse& use_;
  TElementComparison elements_;
  const TTableText* generated_ = nullptr;  // the table whose generated key is passed over
  std::vector<TChange> changes_;
};

TElements TTableComparison::ElementsOf(const TTableText& table, const TGroup& group) const {
  TElements elements;
  elements.reserve(table.elements.size());
  for (const auto& element : table.elements) {
    const bool passes = &table == generated_ && IsOfGeneratedKey(element);
    if (group.holds(element.kind) && !passes) elements.push_back(&element);
  }
  return elements;
}

// A generated key goes only with its column, and takes nothing over from the table but a block size.
bool TTableComparison::Same(const TElement& wanted, const TElement& there) {
  if (elements_.Same(wanted, there)) return true;
  const bool generated = wanted.kind == EElement::PrimaryKey && there.kind == EElement::PrimaryKey &&
                         use_.On(EEquivalence::GeneratedKey) && HasGeneratedKey(reference_) && HasGeneratedKey(target_);
  if (generated) use_.Add(EEquivalence::GeneratedKey);
  return generated;
}

std::vector<TChange> TTableComparison::Run() {
  CompareOthers();
  CompareOptions();
  CompareColumns();
  bool ordered = true;
  for (const auto& group : kOtherGroups) ordered = CompareGroup(group) && ordered;
  if (!ordered) use_.Add(EEquivalence::KeyOrder);
  ComparePartitioning();
  return std::move(changes_);
}

// What nobody knows how to change must be equal to the letter; otherwise no plan can make the tables equal.
void TTableComparison::CompareOthers() const {
  static constexpr TGroup kUnknown = {[](EElement kind) { return kind == EElement::Other; }, saAddConstraint,
                                      saModifyConstraint, saDropConstraint};
  TElements there = ElementsOf(target_, kUnknown);
  const auto refuse = [this](const TElement& element) {
    RaiseError(Format(kUnknownElement, reference_.name, element.text.Str()));
  };
  for (const TElement* wanted : ElementsOf(reference_, kUnknown)) {
    const auto same = std::find_if(there.begin(), there.end(), [&](const auto* e) { return e->text == wanted->text; });
    if (same == there.end()) refuse(*wanted);
    there.erase(same);
  }
  if (!there.empty()) refuse(*there.front());
}

void TTableComparison::CompareOptions() {
  if (SameOptions(reference_, target_, use_)) return;
  TChange change;
  change.action = saChangeTableType;
  change.item = kOptionsItem;
  change.old_text = OptionsText(target_);
  change.new_text = OptionsText(reference_);
  change.options = OptionsToSet(reference_, target_, use_);
  Add(std::move(change));
}

void TTableComparison::ComparePartitioning() {
  if (SamePartitioning(reference_, target_, use_)) return;
  TChange change;
  change.action = saChangeTableType;
  change.item = kPartitioningItem;
  change.old_text = target_.partitioning;
  change.new_text = reference_.partitioning;
  Add(std::move(change));
}

// Whether all have names, and the same ones in the same order.
bool NamedAlike(const TElements& wanted, const TElements& there) {
  return std::equal(wanted.begin(), wanted.end(), there.begin(), there.end(),
                    [](const auto* a, const auto* b) { return !a->name.empty() && SameText(a->name, b->name); });
}

std::vector<std::size_t> TTableComparison::Match(const TElements& wanted, const TElements& there) {
  std::vector<std::size_t> matches(wanted.size(), kNone);
  // So are the most, and need no index.
  if (NamedAlike(wanted, there)) {
    std::iota(matches.begin(), matches.end(), std::size_t{0});
    return matches;
  }
  std::unordered_map<std::string, std::size_t> places;
  for (std::size_t i = 0; i < there.size(); ++i)
    if (!there[i]->name.empty()) places.emplace(LowerText(there[i]->name), i);
  std::vector<bool> taken(there.size(), false);
  for (std::size_t i = 0; i < wanted.size(); ++i) {
    if (wanted[i]->name.empty())
      matches[i] = MatchNameless(*wanted[i], there, taken);
    else if (const auto place = places.find(LowerText(wanted[i]->name)); place != places.end())
      matches[i] = place->second;
    if (matches[i] != kNone) taken[matches[i]] = true;
  }
  return matches;
}

std::size_t TTableComparison::MatchNameless(const TElement& wanted, const TElements& there,
                                            const std::vector<bool>& taken) {
  for (std::size_t i = 0; i < there.size(); ++i)
    if (there[i]->name.empty() && !taken[i] && Same(wanted, *there[i])) return i;
  return kNone;
}

void TTableComparison::Drop(const TGroup& group, const TElements& there, const std::vector<std::size_t>& matches) {
  std::vector<bool> kept(there.size(), false);
  for (const std::size_t match : matches)
    if (match != kNone) kept[match] = true;
  for (std::size_t i = 0; i < there.size(); ++i) {
    if (kept[i]) continue;
    if (there[i]->name.empty()) RaiseError(Format(kNamelessElement, target_.name, there[i]->text.Str()));
    Add(Change(group.drop, there[i], nullptr));
  }
}

void TTableComparison::CompareColumns() {
  const TElements wanted = ElementsOf(reference_, kColumns);
  const TElements there = ElementsOf(target_, kColumns);
  const auto matches = Match(wanted, there);
  Drop(kColumns, there, matches);

  std::vector<std::size_t> common;
  for (std::size_t i = 0; i < wanted.size(); ++i)
    if (matches[i] != kNone) common.push_back(i);
  std::vector<std::size_t> order;
  order.reserve(common.size());
  for (const std::size_t i : common) order.push_back(matches[i]);
  std::vector<bool> stays(wanted.size(), false);
  for (const std::size_t place : LongestIncreasing(order)) stays[common[place]] = true;

  const auto place = [&wanted](std::size_t i) { return i == 0 ? std::string() : wanted[i - 1]->name; };
  const bool ordered = !use_.On(EEquivalence::ColumnOrder);
  std::vector<std::size_t> moved;
  for (const std::size_t i : common) {
    if (Same(*wanted[i], *there[matches[i]])) {
      if (!stays[i]) moved.push_back(i);
      continue;
    }
    TChange change = Change(saModifyColumn, there[matches[i]], wanted[i]);
    if (!stays[i] && ordered) change.after = place(i);
    Add(std::move(change));
  }
  if (!ordered && std::ranges::any_of(common, [&stays](std::size_t i) { return !stays[i]; }))
    use_.Add(EEquivalence::ColumnOrder);
  if (!ordered) moved.clear();
  for (const std::size_t i : moved) {
    TChange change = Change(saModifyColumn, there[matches[i]], wanted[i]);
    change.after = place(i);
    change.moved_only = true;
    Add(std::move(change));
  }
  for (std::size_t i = 0; i < wanted.size(); ++i) {
    if (matches[i] != kNone) continue;
    TChange change = Change(saAddColumn, nullptr, wanted[i]);
    change.after = place(i);
    Add(std::move(change));
  }
}

// Whether what both tables have comes in the same order.
bool TTableComparison::CompareGroup(const TGroup& group) {
  const TElements wanted = ElementsOf(reference_, group);
  const TElements there = ElementsOf(target_, group);
  if (wanted.empty() && there.empty()) return true;
  const auto matches = Match(wanted, there);
  Drop(group, there, matches);
  for (std::size_t i = 0; i < wanted.size(); ++i)
    if (matches[i] == kNone)
      Add(Change(group.add, nullptr, wanted[i]));
    else if (!wanted[i]->name.empty() && !Same(*wanted[i], *there[matches[i]]))
      Add(Change(group.modify, there[matches[i]], wanted[i]));
  std::vector<std::size_t> common = matches;
  std::erase(common, kNone);
  return std::is_sorted(common.begin(), common.end());
}

TChange TTableComparison::Change(TSyncAction action, const TElement* from, const TElement* to) const {
  TChange change;
  change.action = action;
  change.kind = to != nullptr ? to->kind : from->kind;
  change.item = from != nullptr ? from->name : to->name;
  if (from != nullptr) change.old_text = from->text;
  if (to != nullptr) change.new_text = to->text;
  if (change.kind == EElement::Column) ReadColumns(change, target_, reference_);
  return change;
}

void TTableComparison::Add(TChange change) {
  change.table = target_.name;
  change.unsafe = UnsafeChange(change, target_, reference_);
  changes_.push_back(std::move(change));
}

// Tables that one side was made of the other are mostly so.
bool WrittenAlike(const TTableText& a, const TTableText& b) {
  const auto same_element = [](const TElement& x, const TElement& y) {
    return x.kind == y.kind && x.name == y.name && x.text == y.text;
  };
  const auto same_option = [](const TTableOption& x, const TTableOption& y) {
    return x.name == y.name && x.value == y.value;
  };
  return a.name == b.name && a.partitioning == b.partitioning && a.temporary == b.temporary &&
         a.system_versioned == b.system_versioned && std::ranges::equal(a.options, b.options, same_option) &&
         std::ranges::equal(a.elements, b.elements, same_element);
}

}  // namespace

std::string TChange::LogText() const {
  if (action == saChangeTableType) return Format("Changed %s of table %s", item, table);
  if (moved_only) return Format("Moved column %s", item);
  return SyncAction(action).LogText(table, item);
}

std::string TChange::Description() const {
  std::string text;
  const auto line = [&text](std::string_view head, std::string_view value) {
    if (!value.empty()) text += Format("%s%s: %s", text.empty() ? "" : "\n", head, value);
  };
  line("Target", old_text.Str());
  line("Reference", new_text.Str());
  if (after) line("Place", after->empty() ? "first" : "after " + *after);
  line("Named by", named_by);
  line("Unsafe", unsafe);
  return text;
}

void ReadColumns(TChange& change, const TTableText& target, const TTableText& reference) {
  const auto read = [](const TElementText& text, const TTableText& table) {
    return text.Empty() ? nullptr : std::make_shared<const TColumnText>(ReadColumnText(text, table));
  };
  change.old_column = read(change.old_text, target);
  change.new_column = read(change.new_text, reference);
}

std::vector<TChange> CompareTableTexts(const TTableText& reference, const TTableText& target, TEquivalenceUse& use) {
  if (WrittenAlike(reference, target)) return {};
  if (use.On(EEquivalence::CopiedName))
    if (const std::unique_ptr<const TTableText> renamed = WithoutCopiedNames(reference, target, use))
      return TTableComparison(reference, *renamed, use).Run();
  return TTableComparison(reference, target, use).Run();
}

// Patience sorting: `ends` holds for each length the place of the smallest value that such a sequence can end on.
std::vector<std::size_t> LongestIncreasing(const std::vector<std::size_t>& order) {
  std::vector<std::size_t> ends;
  ends.reserve(order.size());
  std::vector<std::size_t> before(order.size(), kNone);
  for (std::size_t i = 0; i < order.size(); ++i) {
    const auto end = std::lower_bound(ends.begin(), ends.end(), order[i],
                                      [&order](std::size_t place, std::size_t value) { return order[place] < value; });
    if (end != ends.begin()) before[i] = *std::prev(end);
    if (end == ends.end())
      ends.push_back(i);
    else
      *end = i;
  }
  std::vector<std::size_t> places;
  for (std::size_t i = ends.empty() ? kNone : ends.back(); i != kNone; i = before[i]) places.push_back(i);
  std::reverse(places.begin(), places.end());
  return places;
}

}  // namespace velmora
