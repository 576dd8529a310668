// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The views of one side, with the names in their queries led back to its tables and views.

#include <map>
#include <string>
#include <utility>

#include "exact/objects/ObjectChanges.h"
#include "exact/objects/ViewQuery.h"

namespace velmora {

class TViewNames {
 public:
  // `side` outlives this. Nothing of it is read before it is needed.
  explicit TViewNames(const TDatabaseObjects& side);
  TViewNames(const TViewNames&) = delete;
  TViewNames& operator=(const TViewNames&) = delete;

  // What the query of a view of this side says, as ResolvedMeaning has it; empty where that is not certain.
  std::string Meaning(const TObjectText& view) const;

 private:
  TListedColumns ColumnsOf(const std::string& table) const;
  TListedColumns ReadColumns(const std::string& table) const;
  const TOtherObject* Find(const std::string& kind, const std::string& name) const;

  const TDatabaseObjects& side_;
  mutable std::map<std::string, TListedColumns> columns_;  // of tables and views, once they were asked for
  TQuerySide known_;
  mutable std::map<std::pair<std::string, std::string>, const TOtherObject*> objects_;  // by kind and name
  mutable int depth_ = 0;                                                               // of views over views
};

}  // namespace velmora
