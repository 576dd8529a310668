// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Functions and views that run as their definers: servers look for these accounts when a view is made that names them.

#include <map>
#include <string>
#include <vector>

#include "exact/objects/ObjectChanges.h"

namespace velmora {

struct TRunsAs {
  std::string kind;  // "function" or "view"
  std::string name;
  std::string definer;  // "user@host" or a role
};

class TRunAs {
 public:
  // Of the target as `changes` leave it; both outlive this. `database` is the reference's, with which its texts may
  // qualify their names.
  TRunAs(const TDatabaseObjects& target, const std::vector<TObjectChange>& changes, std::string database);

  // What the new text of the view names of them.
  std::vector<TRunsAs> NamedBy(const TObjectChange& view) const;

 private:
  void Take(const std::string& kind, const std::string& name, std::vector<TRunsAs>& named) const;

  const TDatabaseObjects& target_;
  std::string database_;
  std::map<TObjectKey, const TObjectChange*> changes_;
  std::map<TObjectKey, const TOtherObject*> there_;
};

}  // namespace velmora
