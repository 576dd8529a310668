// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqlclient/Waiting.h"

#include <utility>

#include "crash/CrashStack.h"
#include "mysqlclient/MyConnection.h"
#include "util/Errors.h"

namespace velmora {

namespace {

using TSteady = std::chrono::steady_clock;
using std::chrono::microseconds;
using std::chrono::milliseconds;

constexpr microseconds kSpin{20};     // a quick answer is there before a thread could be put to sleep and woken
constexpr milliseconds kQuick{15};    // and one like this before anybody sees that the window stands still
constexpr milliseconds kTick{10};     // between two looks at the messages
constexpr milliseconds kGrace{3000};  // for a statement that was broken off to come back
constexpr char kGivenUp[] = "Cancelled: the login was given up";

std::atomic<int> left = 0;

template <class Done>
bool SpinUntil(Done done) {
  if (done()) return true;
  for (const auto end = TSteady::now() + kSpin; TSteady::now() < end; std::this_thread::yield())
    if (done()) return true;
  return false;
}

}  // namespace

// --- The thread

struct TServerThread::TShared {
  enum class EPhase { Idle, Work, Back, Quit };

  void Serve();
  bool Finish();
  void SetPhase(EPhase phase) {
    {
      const std::lock_guard lock(mutex);
      state = phase;
    }
    changed.notify_all();
  }
  bool IsCalled() const { return state == EPhase::Work || state == EPhase::Quit; }
  bool IsBack() const { return state != EPhase::Work; }

  std::mutex mutex;
  std::condition_variable changed;
  std::atomic<EPhase> state = EPhase::Idle;
  std::function<void()> work;
  std::exception_ptr error;
  bool is_left = false;  // guarded by the mutex
};

void TServerThread::TShared::Serve() {
  for (;;) {
    if (!SpinUntil([this] { return IsCalled(); })) {
      std::unique_lock lock(mutex);
      changed.wait(lock, [this] { return IsCalled(); });
    }
    if (state == EPhase::Quit) return;
    try {
      work();
    } catch (...) {
      error = std::current_exception();
    }
    work = nullptr;  // with what it holds, before anybody hears that it is done
    if (!Finish()) return;
  }
}

// False when nobody hears of it.
bool TServerThread::TShared::Finish() {
  {
    const std::lock_guard lock(mutex);
    if (is_left) {
      error = nullptr;
      --left;
      return false;
    }
    state = EPhase::Back;
  }
  changed.notify_all();
  return true;
}

TServerThread::~TServerThread() {
  if (!thread_.joinable()) return;
  CameBack(microseconds::max());
  shared_->SetPhase(TShared::EPhase::Quit);
  thread_.join();
}

void TServerThread::Start(std::function<void()> work) {
  if (!shared_) {
    shared_ = std::make_shared<TShared>();
    thread_ = std::thread([shared = shared_] {
      const TCrashStack stack;
      shared->Serve();
    });
  }
  shared_->work = std::move(work);
  shared_->error = nullptr;
  shared_->SetPhase(TShared::EPhase::Work);
}

bool TServerThread::CameBack(microseconds within) {
  const auto back = [this] { return shared_->IsBack(); };
  if (SpinUntil(back)) return true;
  std::unique_lock lock(shared_->mutex);
  if (within != microseconds::max()) return shared_->changed.wait_for(lock, within, back);
  shared_->changed.wait(lock, back);
  return true;
}

bool TServerThread::Failed() const { return shared_->error != nullptr; }

void TServerThread::PassOnError() {
  if (shared_->error) std::rethrow_exception(std::exchange(shared_->error, nullptr));
}

void TServerThread::Leave() {
  const std::shared_ptr<TShared> shared = std::exchange(shared_, nullptr);
  std::unique_lock lock(shared->mutex);
  if (shared->IsBack()) {
    lock.unlock();
    shared->SetPhase(TShared::EPhase::Quit);
    thread_.join();
    return;
  }
  shared->is_left = true;
  ++left;
  thread_.detach();
}

bool TServerThread::IsHere() const { return thread_.get_id() == std::this_thread::get_id(); }

int TServerThread::Left() { return left; }

// --- The wait

struct TWaiting::TCall {
  TServerThread& thread;
  TMyConnection* connection;
  TSteady::time_point since = TSteady::now();
  bool given_up = false;
  TServerThread breaker = {};
  bool breaks_off = false;
};

std::optional<milliseconds> TWaiting::Waited() const {
  if (call_ == nullptr) return std::nullopt;
  return std::chrono::duration_cast<milliseconds>(TSteady::now() - call_->since);
}

void TWaiting::Cancel() {
  if (call_ == nullptr) return;
  if (call_->connection == nullptr) {
    call_->given_up = true;
  } else if (std::exchange(call_->breaks_off, true)) {
    call_->connection->Sever();
  } else {
    TMyConnection* connection = call_->connection;
    TServerThread* thread = &call_->thread;
    call_->breaker.Start([=] { connection->BreakOff([=] { return thread->CameBack(kGrace); }); });
  }
}

void TWaiting::Do(TServerThread& thread, TMyConnection* connection, std::function<void()> work) {
  if (!Wait(thread, connection, std::move(work))) throw EMySqlException(kGivenUp);
}

bool TWaiting::DoOrLeave(TServerThread& thread, std::function<void()> work) {
  return Wait(thread, nullptr, std::move(work));
}

// False where it was given up.
bool TWaiting::Wait(TServerThread& thread, TMyConnection* connection, std::function<void()> work) {
  thread.Start(std::move(work));
  if (!thread.CameBack(kQuick)) {
    TCall call{thread, connection};
    TCall* outer = std::exchange(call_, &call);
    Pump(call);
    call_ = outer;
    if (over_) over_(call.given_up || thread.Failed());
    if (call.given_up) {
      thread.Leave();
      return false;
    }
  }
  thread.PassOnError();
  return true;
}

// Whoever breaks the call off has to be done as well: his word might reach the next statement.
void TWaiting::Pump(TCall& call) {
  while (!call.given_up && !call.thread.CameBack(kTick)) pump_();
  while (call.breaks_off && !call.breaker.CameBack(kTick)) pump_();
}

}  // namespace velmora
