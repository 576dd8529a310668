// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/TerminalProgress.h"

#include <algorithm>
#include <ostream>

#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr std::int64_t kBarWidth = 24;
constexpr std::size_t kLineWidth = 79;
constexpr std::int64_t kPaints = 200;  // a bar is painted anew at most this often, whatever its maximum

constexpr char kClearLine[] = "\r\x1b[K";

}  // namespace

void TTerminalProgress::ShowSimple(const std::string& title) {
  total_max_ = 0;
  detail_text_.clear();
  SetTitle(title);
}

void TTerminalProgress::ShowOneBar(const std::string& title, std::int64_t max) {
  total_ = 0;
  total_max_ = max;
  detail_text_.clear();
  SetTitle(title);
}

void TTerminalProgress::ShowTwoBars(const std::string& title, std::int64_t max) { ShowOneBar(title, max); }

void TTerminalProgress::SetTitle(const std::string& title) {
  title_ = title;
  Paint();
}

void TTerminalProgress::StartDetail(const std::string& text, std::int64_t max) {
  detail_text_ = text;
  detail_ = 0;
  detail_max_ = max;
  Paint();
}

void TTerminalProgress::StepDetail() {
  ++detail_;
  StepTotal();
}

void TTerminalProgress::StepTotal() {
  ++total_;
  const std::int64_t stride = std::max<std::int64_t>(1, total_max_ / kPaints);
  if (total_ % stride == 0 || total_ == total_max_) Paint();
}

void TTerminalProgress::Finish() {
  if (painted_.empty()) return;
  terminal_ << kClearLine << std::flush;
  painted_.clear();
}

void TTerminalProgress::Paint() {
  std::string line = title_;
  if (total_max_ > 0) {
    const std::int64_t done = std::min(total_, total_max_);
    const std::int64_t filled = done * kBarWidth / total_max_;
    line = "[" + RepeatChar('#', filled) + RepeatChar('.', kBarWidth - filled) + "] " +
           Format("%3d%% ", done * 100 / total_max_) +
           (detail_text_.empty() ? title_ + Format(" %d/%d", done, total_max_)
                                 : detail_text_ + Format(" %d/%d", detail_, detail_max_));
  }
  line = CutChars(ShownText(line), kLineWidth);
  if (line == painted_) return;
  painted_ = line;
  terminal_ << kClearLine << line << std::flush;
}

}  // namespace velmora
