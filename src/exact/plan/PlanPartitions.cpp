#include "exact/plan/PlanPartitions.h"

#include <algorithm>

#include "mysqltext/KeyText.h"
#include "mysqltext/Lexer.h"
#include "util/Text.h"

namespace velmora {

const TChange* PartitionChange(const TTableWork& work) {
  const auto found = std::find_if(work.changes.begin(), work.changes.end(),
                                  [](const TChange* change) { return IsPartitionChange(*change); });
  return found == work.changes.end() ? nullptr : *found;
}

std::vector<const TChange*> PartitionsDisturbed(const TTableWork& work) {
  std::vector<const TChange*> changes;
  if (work.target == nullptr || work.target->partitioning.empty()) return changes;
  const bool stays = PartitionChange(work) == nullptr;
  const auto tokens = Tokens(work.target->partitioning);
  for (const TChange* change : work.changes) {
    if (!IsReplaced(*change, work) && (stays || change->action != saDropColumn)) continue;
    const bool reads = std::any_of(tokens.begin(), tokens.end(), [change](const TToken& token) {
      return IsName(token) && SameText(NameOf(token), change->item);
    });
    if (reads) changes.push_back(change);
  }
  return changes;
}

bool RemovesPartitioning(const TTableWork& work) {
  const TChange* own = PartitionChange(work);
  return (own != nullptr && own->new_text.Empty()) || !PartitionsDisturbed(work).empty();
}

void SetPartitioning(const TTableWork& work, TAlter& alter) {
  const TChange* own = PartitionChange(work);
  if (own == nullptr && !PartitionsDisturbed(work).empty()) alter.AtEnd(work.target->partitioning);
  if (own == nullptr || own->new_text.Empty()) return;
  alter.AtEnd(own->new_text.Str());
  alter.Makes(*own);
}

}  // namespace velmora
