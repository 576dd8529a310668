// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What is done aside (util/Aside.h), as a program with windows has it done.

#include <exception>
#include <future>
#include <list>
#include <thread>

#include "util/Aside.h"

namespace velmora::testing {

// Each work on a thread of its own. The one after `before_left` others is left: it comes to its end when this ends,
// when what asked for it is long gone.
class TElsewhere final : public TAside {
 public:
  explicit TElsewhere(int before_left = -1) : before_left_(before_left) {}
  ~TElsewhere() override {
    left_ = true;
    gate_.set_value();
    for (std::thread& thread : threads_) thread.join();
  }
  TElsewhere(const TElsewhere&) = delete;
  TElsewhere& operator=(const TElsewhere&) = delete;

  void Do(ESlow /*kind*/, const std::function<void()>& work) override {
    ++done;
    if (before_left_-- == 0) {
      threads_.emplace_back([this, work = work]() mutable {
        opened_.wait();
        const TLeftMark mark(left_);
        try {
          std::exchange(work, nullptr)();
        } catch (const EVelmora&) {
        }
      });
      throw ECancelled();
    }
    std::exception_ptr error;
    std::thread([&error, work] {
      try {
        work();
      } catch (...) {
        error = std::current_exception();
      }
    }).join();
    if (error) std::rethrow_exception(error);
  }

  int done = 0;

 private:
  int before_left_;
  std::atomic<bool> left_ = false;
  std::promise<void> gate_;
  std::shared_future<void> opened_ = gate_.get_future().share();
  std::list<std::thread> threads_;
};

}  // namespace velmora::testing
