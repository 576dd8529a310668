// SPDX-License-Identifier: GPL-3.0-or-later
#include "fleet/Lanes.h"

#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>

#include "crash/CrashStack.h"

namespace velmora {

namespace {

// Servers that are waited for side by side: as many may be silent before one that answers has to wait.
constexpr std::size_t kMostThreads = 512;

}  // namespace

// One run: threads come as they are needed, and all that they share is guarded by one mutex.
class TLanes::TRun {
 public:
  TRun(TLanes& lanes, const TWork& work) : lanes_(lanes), work_(work), queues_(lanes.lanes_.size()) {}

  void Add(std::size_t lane, std::size_t piece) {
    queues_[lane].waiting.push_back(piece);
    ++left_;
  }

  void Work() {
    std::vector<std::thread> threads;
    {
      std::unique_lock lock(mutex_);
      for (std::size_t lane = 0; lane < queues_.size(); ++lane) Offer(lane);
      while (left_ > 0) {
        while (ready_.size() > idle_ && threads.size() < kMostThreads && !ended_ && AddThread(threads)) {
        }
        changed_.wait(lock);
        if (ended_ && under_way_ == 0) break;
      }
      ended_ = true;
      woken_.notify_all();
    }
    for (std::thread& thread : threads) thread.join();
    if (error_) std::rethrow_exception(error_);
  }

 private:
  struct TQueue {
    std::deque<std::size_t> waiting;
    std::size_t under_way = 0;
    std::size_t offers = 0;  // how often it stands in `ready_`
  };

  // As many times as there is room for in the lane.
  void Offer(std::size_t lane) {
    TQueue& queue = queues_[lane];
    const TLane& of = lanes_.lanes_[lane];
    const std::size_t width = of.reached || of.lost ? lanes_.width_ : 1;
    while (queue.offers < queue.waiting.size() && queue.under_way + queue.offers < width) {
      ready_.push_back(lane);
      ++queue.offers;
    }
  }

  // False where the system gives no more: those that there are do the work.
  bool AddThread(std::vector<std::thread>& threads) {
    try {
      threads.emplace_back([this] { Serve(); });
      ++idle_;
      return true;
    } catch (const std::system_error&) {
      if (threads.empty()) RaiseError("No thread can be started");
      return false;
    }
  }

  void Serve() {
    const TCrashStack stack;
    std::unique_lock lock(mutex_);
    for (;;) {
      woken_.wait(lock, [this] { return ended_ || !ready_.empty(); });
      if (ended_) return;
      const std::size_t lane = ready_.front();
      ready_.pop_front();
      TQueue& queue = queues_[lane];
      --queue.offers;
      const std::size_t piece = queue.waiting.front();
      queue.waiting.pop_front();
      ++queue.under_way;
      ++under_way_;
      --idle_;
      const std::optional<std::string> lost = lanes_.lanes_[lane].lost;
      lock.unlock();
      Do(piece, lost, lane);
      lock.lock();
      ++idle_;
      --under_way_;
      --queue.under_way;
      --left_;
      Offer(lane);
      woken_.notify_all();
      changed_.notify_all();
    }
  }

  void Do(std::size_t piece, std::optional<std::string> lost, std::size_t lane) {
    try {
      if (work_.stopped && work_.stopped()) return End();
      if (!lost) lost = Try(piece, lane);
      if (lost) work_.give_up(piece, *lost);
    } catch (...) {
      End(std::current_exception());
    }
  }

  // Gives why the lane's server cannot be reached, if that is so.
  std::optional<std::string> Try(std::size_t piece, std::size_t lane) {
    std::optional<std::string> lost;
    try {
      work_.run(piece);
    } catch (const EUnreachable& error) {
      lost = error.what();
    }
    const std::lock_guard lock(mutex_);
    TLane& of = lanes_.lanes_[lane];
    if (!lost) of.reached = true;
    if (lost && !of.lost) of.lost = lost;
    return lost;
  }

  void End(const std::exception_ptr& error = nullptr) {
    const std::lock_guard lock(mutex_);
    if (error && !error_) error_ = error;
    ended_ = true;
  }

  TLanes& lanes_;
  const TWork& work_;
  std::mutex mutex_;  // of all below, and of the lanes' states
  std::condition_variable woken_, changed_;
  std::vector<TQueue> queues_;
  std::deque<std::size_t> ready_;
  std::size_t left_ = 0;  // pieces that have not come to their end
  std::size_t under_way_ = 0;
  std::size_t idle_ = 0;  // threads that look for work
  bool ended_ = false;
  std::exception_ptr error_;
};

std::size_t TLanes::LaneOf(const std::string& server) {
  const auto [lane, fresh] = names_.try_emplace(server, lanes_.size());
  if (fresh) lanes_.emplace_back();
  return lane->second;
}

void TLanes::Run(const std::vector<std::size_t>& lanes, const TWork& work) {
  TRun run(*this, work);
  for (std::size_t piece = 0; piece < lanes.size(); ++piece) run.Add(lanes[piece], piece);
  run.Work();
}

}  // namespace velmora
