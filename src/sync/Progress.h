// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The port to whoever shows how far a long operation is: a window, a terminal, nobody. It is told and never asked, and
// the operation that starts it ends it by Finish.

#include <cstdint>
#include <string>

namespace velmora {

class TProgress {
 public:
  virtual ~TProgress() = default;

  // Starts the report, or changes the shape of one under way. The bars begin at 0.
  virtual void ShowSimple(const std::string& title) = 0;                     // a title alone
  virtual void ShowOneBar(const std::string& title, std::int64_t max) = 0;   // with the total bar
  virtual void ShowTwoBars(const std::string& title, std::int64_t max) = 0;  // with the total and the detail bar
  virtual void SetTitle(const std::string& title) = 0;

  virtual void StartDetail(const std::string& text, std::int64_t max) = 0;  // a new section of the detail bar
  virtual void StepDetail() = 0;                                            // one step of both bars
  virtual void StepTotal() = 0;

  virtual void SetDetailMax(std::int64_t max) = 0;
  virtual void SetDetailPosition(std::int64_t position) = 0;
  virtual void SetDetailText(const std::string& text) = 0;

  virtual void Finish() = 0;  // a second one does nothing
};

class TNoProgress final : public TProgress {
 public:
  void ShowSimple(const std::string&) override {}
  void ShowOneBar(const std::string&, std::int64_t) override {}
  void ShowTwoBars(const std::string&, std::int64_t) override {}
  void SetTitle(const std::string&) override {}
  void StartDetail(const std::string&, std::int64_t) override {}
  void StepDetail() override {}
  void StepTotal() override {}
  void SetDetailMax(std::int64_t) override {}
  void SetDetailPosition(std::int64_t) override {}
  void SetDetailText(const std::string&) override {}
  void Finish() override {}
};

}  // namespace velmora
