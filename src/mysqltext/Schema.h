// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The tables of one side of a comparison.

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

#include "mysqltext/TableText.h"

namespace velmora {

// Tables by name as one side has them.
class TSchema {
 public:
  void Add(TTableText table);
  const TTableText* Find(const std::string& name) const;  // exact name; null when there is none
  TTableText* Find(const std::string& name);
  void Remove(const std::string& name);
  // In order of addition, but that the last one takes the place of one that is removed.
  const std::vector<TTableText>& Tables() const { return tables_; }

 private:
  std::vector<TTableText> tables_;
  std::unordered_map<std::string, std::size_t> index_;
};

}  // namespace velmora
