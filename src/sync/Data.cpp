// SPDX-License-Identifier: GPL-3.0-or-later
#include "sync/Data.h"

#include <utility>

#include "sync/SyncActions.h"
#include "util/Text.h"

namespace velmora {

std::string TActionRow::Action() const { return std::string(SyncAction(action_id).word); }

const TActionRow& TActionTable::Append(int action_id, const std::string& table, const std::string& item,
                                       const std::string& description) {
  const int id = next_id_++;
  TActionRow row{id, CutChars(table, kActionNameWidth), CutChars(item, kActionNameWidth), action_id, description};
  return rows_.emplace_hint(rows_.end(), id, std::move(row))->second;
}

const TActionRow* TActionTable::Find(int id) const {
  const auto found = rows_.find(id);
  return found == rows_.end() ? nullptr : &found->second;
}

const TActionRow* TActionTable::After(int id) const {
  const auto next = rows_.upper_bound(id);
  return next == rows_.end() ? nullptr : &next->second;
}

std::vector<TActionRow> TActionTable::Rows() const {
  std::vector<TActionRow> rows;
  rows.reserve(rows_.size());
  for (const auto& [id, row] : rows_) rows.push_back(row);
  return rows;
}

void TdmData::AppendScript(const std::string& sql) {
  const int id = mtScript.empty() ? 1 : mtScript.back().id + 1;
  mtScript.push_back({id, sql});
}

}  // namespace velmora
