// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqltext/Schema.h"

#include <utility>

namespace velmora {

void TSchema::Add(TTableText table) {
  const auto [place, is_new] = index_.emplace(table.name, tables_.size());
  if (is_new)
    tables_.push_back(std::move(table));
  else
    tables_[place->second] = std::move(table);
}

const TTableText* TSchema::Find(const std::string& name) const {
  const auto place = index_.find(name);
  return place == index_.end() ? nullptr : &tables_[place->second];
}

TTableText* TSchema::Find(const std::string& name) {
  const auto place = index_.find(name);
  return place == index_.end() ? nullptr : &tables_[place->second];
}

void TSchema::Remove(const std::string& name) {
  const auto place = index_.find(name);
  if (place == index_.end()) return;
  const std::size_t at = place->second;
  index_.erase(place);
  if (at + 1 < tables_.size()) {
    tables_[at] = std::move(tables_.back());
    index_[tables_[at].name] = at;
  }
  tables_.pop_back();
}

}  // namespace velmora
