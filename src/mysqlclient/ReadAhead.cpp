// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqlclient/ReadAhead.h"

#include <algorithm>

namespace velmora {

bool TReadAhead::Ask(std::string_view sql, TLine& line) {
  if (TakeSent(sql, line)) {
    // In pieces: to be woken for each statement costs a server more than to take it from what it has read.
    if (sent_.size() <= kWindow / 2) SendExpected({}, line);
    return true;
  }
  if (TakeExpected(sql))
    SendExpected(sql, line);
  else
    line.SendOnly({sql});
  return !sent_.empty();
}

void TReadAhead::Forget() {
  expected_.clear();
  sent_.clear();
  sent_bytes_ = 0;
}

// Nothing stays on its way where it is not found.
bool TReadAhead::TakeSent(std::string_view sql, TLine& line) {
  const auto found = std::find(sent_.begin(), sent_.end(), sql);
  const bool is_sent = found != sent_.end();
  Skip(static_cast<std::size_t>(found - sent_.begin()), line);
  if (!is_sent) return false;
  sent_bytes_ -= sent_.front().size();
  sent_.pop_front();
  return true;
}

// What was expected before it is not asked for any more.
bool TReadAhead::TakeExpected(std::string_view sql) {
  const auto found = std::find(expected_.begin(), expected_.end(), sql);
  if (found == expected_.end()) return false;
  expected_.erase(expected_.begin(), found + 1);
  return true;
}

void TReadAhead::Skip(std::size_t count, TLine& line) {
  for (; count > 0; --count) {
    sent_bytes_ -= sent_.front().size();
    sent_.pop_front();
    line.SkipReply();
  }
}

// What is asked for, unless it is empty, and what is expected after it.
void TReadAhead::SendExpected(std::string_view first, TLine& line) {
  std::vector<std::string_view> together;
  if (!first.empty()) together.push_back(first);
  while (!expected_.empty() && sent_.size() < kWindow && sent_bytes_ + expected_.front().size() <= kLongestAhead) {
    sent_bytes_ += expected_.front().size();
    sent_.push_back(std::move(expected_.front()));
    expected_.pop_front();
    together.push_back(sent_.back());
  }
  if (!together.empty()) line.SendOnly(together);
}

}  // namespace velmora
