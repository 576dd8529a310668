// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The in-memory tables of the sync engine: the actions found by the last comparison, and the lines of every script.

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace velmora {

inline constexpr std::size_t kActionNameWidth = 50;  // of `table` and `item`, in characters

struct TActionRow {
  int id = 0;
  std::string table;
  std::string item;  // empty when the action concerns the whole table
  int action_id = 0;
  std::string description;

  std::string Action() const;  // the action's word; raises "Unhandled sync action"
};

// Rows in the order of insertion, which is that of their ids. An id is never given again, so that a node of an older
// tree cannot find a newer row.
class TActionTable {
 public:
  // Appends a row and gives it its id; names longer than kActionNameWidth are cut. Gives the row.
  const TActionRow& Append(int action_id, const std::string& table, const std::string& item,
                           const std::string& description);
  void Clear() { rows_.clear(); }
  bool Delete(int id) { return rows_.erase(id) != 0; }  // false when there is no such row

  void Restore(const TActionRow& row) { rows_.insert_or_assign(row.id, row); }  // one that was deleted, in its place

  bool Empty() const { return rows_.empty(); }
  std::size_t Count() const { return rows_.size(); }
  const TActionRow* Find(int id) const;  // null when there is none
  // A walk that stands deletions: from the row of an id, there or not, to the next one. Null at the end.
  const TActionRow* First() const { return After(0); }
  const TActionRow* After(int id) const;
  std::vector<TActionRow> Rows() const;

 private:
  std::map<int, TActionRow> rows_;
  int next_id_ = 1;
};

struct TScriptRow {
  int id = 0;
  std::string sql;
};

struct TdmData {
  TActionTable mtActions;
  std::vector<TScriptRow> mtScript;  // only grows: nothing reads or empties it

  void AppendScript(const std::string& sql);
};

}  // namespace velmora
