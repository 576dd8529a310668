// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/objects/RunAs.h"

#include <utility>

#include "exact/objects/ObjectContext.h"
#include "exact/objects/TableMentions.h"
#include "mysqltext/KeyText.h"
#include "util/Errors.h"

namespace velmora {

namespace {

constexpr char kView[] = "view";
constexpr char kFunction[] = "function";

bool RunsAsDefiner(const TObjectText& text) {
  const TObjectElement* security = text.Find("sql security");
  return security == nullptr || security->text != "invoker";
}

// Of the own database, or told without one.
bool IsOwn(TTokens tokens, std::size_t name, const std::string& database) {
  const bool qualified = name >= 2 && tokens[name - 1].Is(".");
  return !qualified || (IsName(tokens[name - 2]) && NameOf(tokens[name - 2]) == database);
}

}  // namespace

TRunAs::TRunAs(const TDatabaseObjects& target, const std::vector<TObjectChange>& changes, std::string database)
    : target_(target), database_(std::move(database)) {
  for (const TObjectChange& change : changes) changes_.emplace(ObjectKey(change.kind, change.name), &change);
  for (const TOtherObject& object : target.objects) there_.emplace(ObjectKey(object.kind, object.name), &object);
}

std::vector<TRunsAs> TRunAs::NamedBy(const TObjectChange& view) const {
  std::vector<TRunsAs> named;
  const std::vector<TToken> tokens = TokensByMode(view.new_text->body, false);
  for (std::size_t at = 0; at + 1 < tokens.size(); ++at)
    if (IsName(tokens[at]) && tokens[at + 1].Is("(") && IsOwn(tokens, at, database_))
      Take(kFunction, NameOf(tokens[at]), named);
  for (const TTableMention& mention : TableMentions(tokens))
    if (IsOwn(tokens, mention.at, database_)) Take(kView, NameOf(tokens[mention.at]), named);
  return named;
}

// What cannot be read says nothing.
void TRunAs::Take(const std::string& kind, const std::string& name, std::vector<TRunsAs>& named) const {
  const TObjectKey key = ObjectKey(kind, name);
  if (const auto change = changes_.find(key); change != changes_.end()) {
    const TObjectText* text = change->second->new_text.get();
    if (text != nullptr && RunsAsDefiner(*text)) named.push_back({kind, name, change->second->definer});
    return;
  }
  const auto there = there_.find(key);
  if (there == there_.end()) return;
  try {
    const TObjectText text = ReadObject(*there->second, target_.database);
    if (RunsAsDefiner(text)) named.push_back({kind, name, text.definer});
  } catch (const EVelmora&) {
  }
}

}  // namespace velmora
