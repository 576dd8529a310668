// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/objects/Dependents.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <unordered_map>
#include <utility>

#include "exact/compare/Safety.h"
#include "exact/objects/ObjectContext.h"
#include "mysqltext/KeyText.h"
#include "mysqltext/Lexer.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kBreaks[] = "named by %s, which would no longer work";
constexpr std::size_t kMostShown = 10;

bool Concerns(const TChange& change) {
  if (change.action == saDropTable) return true;
  return change.action == saDropColumn || (change.action == saModifyColumn && !change.moved_only);
}

class TNamed {
 public:
  TNamed(const TDatabaseObjects& target, const std::vector<TObjectChange>& changes) {
    std::set<std::pair<std::string, std::string>> changed;
    for (const TObjectChange& change : changes)
      if (change.old_text != nullptr) changed.emplace(change.kind, change.old_object.name);
    for (const TOtherObject& object : target.objects)
      if (IsScriptedKind(object.kind) && !changed.contains({object.kind, object.name})) Add(object);
  }

  // "view v, trigger g"
  std::string By(const std::string& table, const std::string& column) const {
    const std::vector<std::size_t>& of_table = Places(table);
    std::vector<std::size_t> both = of_table;
    if (!column.empty()) {
      both.clear();
      std::ranges::set_intersection(of_table, Places(column), std::back_inserter(both));
    }
    std::string list;
    for (std::size_t i = 0; i < both.size() && i < kMostShown; ++i) list += (i == 0 ? "" : ", ") + objects_[both[i]];
    return both.size() <= kMostShown ? list : list + Format(" and %d more", both.size() - kMostShown);
  }

 private:
  const std::vector<std::size_t>& Places(const std::string& name) const {
    static const std::vector<std::size_t> kNone;
    const auto found = places_.find(LowerText(name));
    return found == places_.end() ? kNone : found->second;
  }

  void Add(const TOtherObject& object) {
    for (const std::string& name : NamesSpokenOf(object)) places_[name].push_back(objects_.size());
    objects_.push_back(object.kind + " " + object.name);
  }

  TStringList objects_;
  std::unordered_map<std::string, std::vector<std::size_t>> places_;  // of these, by names in them
};

}  // namespace

void NameDependents(const TDatabaseObjects& target, const std::vector<TObjectChange>& objects,
                    std::vector<TChange>& changes) {
  if (target.objects.empty() || std::ranges::none_of(changes, Concerns)) return;
  const TNamed named(target, objects);
  for (TChange& change : changes) {
    if (!Concerns(change)) continue;
    change.named_by = named.By(change.table, change.action == saDropTable ? "" : change.item);
    if (change.named_by.empty() || change.action == saModifyColumn) continue;
    AddReason(change.unsafe, Format(kBreaks, change.named_by));
  }
}

std::set<std::string> NamesSpokenOf(const TOtherObject& object) {
  std::set<std::string> names;
  try {
    for (const TToken& token : TokensOf(object))
      if (IsName(token)) names.insert(LowerText(NameOf(token)));
  } catch (const EVelmora&) {  // that it cannot be read has been told
  }
  return names;
}

void FollowRename(const TRename& rename, TDatabaseObjects& objects) {
  if (!rename.OfTable()) return;
  for (TOtherObject& object : objects.objects) {
    if (object.kind != "trigger" || object.text.empty()) continue;
    try {
      TObjectText text = ReadObject(object, objects.database);
      if (text.table != rename.from) continue;
      text.table = rename.to;
      object.text = text.Creation({text.definer, false, text.order});
    } catch (const EVelmora&) {  // it is told of and left alone
    }
  }
}

}  // namespace velmora
