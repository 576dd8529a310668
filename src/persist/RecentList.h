// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <string>

#include "util/Lists.h"

namespace velmora {

inline constexpr std::size_t kRecentRoom = 5;

// The recent tasks, latest first, at most kRecentRoom.
class TRecentList {
 public:
  void RecentRead(TStringList& list) const { list = paths_; }
  void RecentShow(const TStringList& list);  // drops what there is no room for
  // The path goes to the head; one that differs in the case of its letters alone is taken out.
  void RecentAdd(const std::string& path);

  std::size_t Count() const { return paths_.size(); }
  const std::string& Path(std::size_t index) const { return paths_.at(index); }
  std::string Caption(std::size_t index) const;  // "&%d %s" with the number, from 1, and the path

 private:
  TStringList paths_;
};

}  // namespace velmora
