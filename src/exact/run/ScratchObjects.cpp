#include "exact/run/ScratchObjects.h"

#include <algorithm>

#include "util/Errors.h"

namespace velmora {

namespace {

constexpr char kEvent[] = "event";

TDatabaseObjects WithoutEvents(TDatabaseObjects objects) {
  std::erase_if(objects.objects, [](const TOtherObject& object) { return object.kind == kEvent; });
  return objects;
}

}  // namespace

// They are new there, in the order in which new ones are made.
void TScratchObjects::Copy(const TDatabaseObjects& target) {
  TObjectComparison copies = CompareObjects(WithoutEvents(target), {});
  for (const TObjectDifference& unread : copies.differences) missing_.insert(unread.kind + " " + unread.name);
  for (const TPlanStatement& statement : MakeObjectPlan(copies.changes, server_).after) {
    try {
      scratch_.Run(statement.text);
    } catch (const EMySqlException&) {
      if (!scratch_.Connected()) throw;
      missing_.insert(statement.object);
    }
  }
}

bool TScratchObjects::Tries(const TPlanStatement& statement) const {
  if (statement.object.starts_with(kEvent)) return false;
  return !statement.text.starts_with("drop") || !missing_.contains(statement.object);
}

std::vector<TObjectChange> TScratchObjects::Left(const TDatabaseObjects& wanted, const TDefinerWishes& wishes) {
  std::vector<TObjectChange> left =
      CompareObjects(WithoutEvents(wanted), WithoutEvents(scratch_.Objects()), wishes).changes;
  std::erase_if(left, [this](const TObjectChange& change) { return missing_.contains(change.Object()); });
  return left;
}

}  // namespace velmora
