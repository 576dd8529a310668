// SPDX-License-Identifier: GPL-3.0-or-later
#include "persist/RecentList.h"

#include <algorithm>
#include <cstddef>

#include "util/Format.h"

namespace velmora {

void TRecentList::RecentShow(const TStringList& list) {
  const auto count = static_cast<std::ptrdiff_t>(std::min(list.size(), kRecentRoom));
  paths_ = TStringList(list.begin(), list.begin() + count);
}

void TRecentList::RecentAdd(const std::string& path) {
  TStringList list;
  RecentRead(list);
  const std::ptrdiff_t index = IndexOf(list, path);
  if (index != kNotInList) list.erase(list.begin() + index);
  list.insert(list.begin(), path);
  RecentShow(list);
}

std::string TRecentList::Caption(std::size_t index) const { return Format("&%d %s", index + 1, Path(index)); }

}  // namespace velmora
