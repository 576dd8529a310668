// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "util/Lists.h"

namespace velmora {

// Statements that are sent before the reply to an earlier one was read. A server answers in order, so that what is on
// its way is a queue; whoever asks out of turn waits until the replies before his are thrown away.
class TReadAhead {
 public:
  // The wire below.
  class TLine {
   public:
    virtual ~TLine() = default;
    // All of them in one piece, as far as the wire can; they live until the call ends.
    virtual void SendOnly(const std::vector<std::string_view>& statements) = 0;
    // Takes the oldest reply off the wire. A statement that failed is passed over; a lost wire raises.
    virtual void SkipReply() = 0;
  };

  static constexpr std::size_t kWindow = 64;           // statements on their way after the one that is asked for
  static constexpr std::size_t kLongestAhead = 16384;  // bytes of them: what a server surely takes while it answers

  // These will be asked for next, in this order. What is on its way stays.
  void Expect(const TStringList& statements) { expected_.assign(statements.begin(), statements.end()); }
  // Sends as many of them as may be on their way, without anybody having asked.
  void Begin(TLine& line) { SendExpected({}, line); }
  // Sees to it that the next reply on the wire is that of `sql`, and sends what is expected after it. True when
  // other statements are on the wire already, so that the reply is not that of what was sent last.
  bool Ask(std::string_view sql, TLine& line);
  // The wire is closed.
  void Forget();

 private:
  bool TakeSent(std::string_view sql, TLine& line);
  bool TakeExpected(std::string_view sql);
  void Skip(std::size_t count, TLine& line);
  void SendExpected(std::string_view first, TLine& line);

  std::deque<std::string> expected_;
  std::deque<std::string> sent_;
  std::size_t sent_bytes_ = 0;
};

}  // namespace velmora
