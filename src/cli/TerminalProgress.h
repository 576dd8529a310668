#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>

#include "sync/Progress.h"

namespace velmora {

// Progress as one line of a terminal that is written over: a bar, the share done, the pass and its count.
class TTerminalProgress final : public TProgress {
 public:
  explicit TTerminalProgress(std::ostream& terminal) : terminal_(terminal) {}
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
  void Paint();

  std::ostream& terminal_;
  std::string title_;
  std::string detail_text_;
  std::int64_t total_ = 0;
  std::int64_t total_max_ = 0;
  std::int64_t detail_ = 0;
  std::int64_t detail_max_ = 0;
  std::string painted_;
};

}  // namespace velmora
