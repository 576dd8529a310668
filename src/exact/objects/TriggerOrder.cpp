// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/objects/TriggerOrder.h"

#include <algorithm>
#include <map>
#include <utility>

#include "exact/compare/Changes.h"
#include "mysqltext/Lexer.h"

namespace velmora {

namespace {

using TGroup = std::vector<TOrderedTrigger*>;

// Those that keep their places: a longest run of them that rises in the target, too.
TGroup LongestRise(const TGroup& group) {
  std::vector<std::size_t> places;
  for (const TOrderedTrigger* trigger : group) places.push_back(trigger->there_place);
  TGroup rise;
  for (const std::size_t i : LongestIncreasing(places)) rise.push_back(group[i]);
  return rise;
}

// Where it stands now, said by one that both have.
void SayOldPlaces(const TGroup& there) {
  for (std::size_t i = 0; i < there.size() && there.size() > 1; ++i)
    there[i]->place.old =
        i > 0 ? "follows " + QuotedName(there[i - 1]->name) : "precedes " + QuotedName(there[1]->name);
}

bool FiresHere(const TOrderedTrigger& trigger) {
  return trigger.there != nullptr && trigger.there->table == trigger.wanted->table &&
         trigger.there->moment == trigger.wanted->moment;
}

void OrderGroup(TGroup& group) {
  TGroup staying;
  for (TOrderedTrigger* trigger : group)
    if (!trigger->recreated) staying.push_back(trigger);
  const TGroup kept = LongestRise(staying);
  for (TOrderedTrigger* trigger : staying) trigger->moved = std::ranges::find(kept, trigger) == kept.end();
  for (std::size_t i = 0; i < group.size(); ++i) {
    TTriggerPlace& place = group[i]->place;
    place.rank = i;
    for (std::size_t j = i; j-- > 0;) {
      place.before.push_back(group[j]->name);
      if (!FiresHere(*group[j])) place.added.push_back(group[j]->name);
    }
    const auto next =
        std::find_if(group.begin() + static_cast<std::ptrdiff_t>(i) + 1, group.end(),
                     [&](TOrderedTrigger* other) { return std::ranges::find(kept, other) != kept.end(); });
    if (next != group.end()) place.next = (*next)->name;
  }
}

}  // namespace

void OrderTriggers(std::vector<TOrderedTrigger>& triggers) {
  std::map<std::pair<std::string, std::string>, TGroup> wanted, there;
  for (TOrderedTrigger& trigger : triggers) {
    wanted[{trigger.wanted->table, trigger.wanted->moment}].push_back(&trigger);
    if (trigger.there != nullptr) there[{trigger.there->table, trigger.there->moment}].push_back(&trigger);
  }
  for (auto& [key, group] : there) {
    std::ranges::sort(group, {}, [](const TOrderedTrigger* trigger) {
      return std::pair(trigger->there_order, trigger->there_place);
    });
    for (std::size_t i = 0; i < group.size(); ++i) group[i]->there_place = i;
    SayOldPlaces(group);
  }
  for (auto& [key, group] : wanted) {
    std::ranges::stable_sort(group, {}, &TOrderedTrigger::wanted_order);
    if (group.size() > 1) OrderGroup(group);
  }
}

}  // namespace velmora
