// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/plan/PlanPartitions.h"

#include <algorithm>

#include "exact/compare/GeneratedKey.h"
#include "exact/plan/PlanFilling.h"
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

// Servers do not partition a table in the statement in which its generated key goes, nor before it has the columns of
// its own one.
void SetPartitioning(const TTableWork& work, TTableAlters& alters) {
  if (work.reference == nullptr) return;
  const TElement* key = work.reference->Find(EElement::PrimaryKey, "PRIMARY");
  const bool waits = HasGeneratedKey(*work.target) || (key != nullptr && NamesFilledColumn(key->text, work));
  TAlter& alter = waits ? alters.later : alters.main;
  const TChange* own = PartitionChange(work);
  if (own == nullptr && !PartitionsDisturbed(work).empty()) alter.AtEnd(work.target->partitioning);
  if (own == nullptr || own->new_text.Empty()) return;
  alter.AtEnd(own->new_text.Str());
  alter.Makes(*own);
}

}  // namespace velmora
