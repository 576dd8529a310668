// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>

#include "sync/Progress.h"

namespace velmora {

// Progress as one line of a terminal that is written over: a bar, the share done, the pass and its count. The line is
// at most 79 characters wide, shows letters of strangers as ShownText does, and is painted at most 200 times a bar.
// Both bars of ShowTwoBars are one here: the total's, with the detail's count beside it. Finish, the destructor too,
// takes the line away; nothing is written for a progress that was never shown.
class TTerminalProgress final : public TProgress {
 public:
  explicit TTerminalProgress(std::ostream& terminal) : terminal_(terminal) {}  // not owned, must live as long
  ~TTerminalProgress() override { Finish(); }

  void ShowSimple(const std::string& title) override;
  void ShowOneBar(const std::string& title, std::int64_t max) override;
  void ShowTwoBars(const std::string& title, std::int64_t max) override;
  void SetTitle(const std::string& title) override;
  void StartDetail(const std::string& text, std::int64_t max) override;
  void StepDetail() override;
  void StepTotal() override;
  void SetDetailMax(std::int64_t max) override { detail_max_ = max; }
  void SetDetailPosition(std::int64_t position) override { detail_ = position; }
  void SetDetailText(const std::string& /*text*/) override {}
  void Finish() override;

 private:
  void Paint();  // nothing where the line would be the one that is shown

  std::ostream& terminal_;
  std::string title_;
  std::string detail_text_;
  std::int64_t total_ = 0;
  std::int64_t total_max_ = 0;
  std::int64_t detail_ = 0;
  std::int64_t detail_max_ = 0;
  std::string painted_;  // what the terminal shows; empty for nothing
};

}  // namespace velmora
