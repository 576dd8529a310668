// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/Interrupt.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <optional>
#include <string_view>

#include "crash/CrashStack.h"
#include "mysqlclient/MyConnection.h"
#include "util/Errors.h"

namespace velmora {

namespace {

constexpr std::string_view kEnding = "\nvelmora-cli: ending after this statement; Ctrl+C again breaks it off\n";
constexpr std::string_view kBreakingOff = "\nvelmora-cli: breaking this statement off; Ctrl+C again ends at once\n";
constexpr std::string_view kToldToEnd = "\nvelmora-cli: told to end: ending after this statement\n";
constexpr std::string_view kToldToBreakOff = "\nvelmora-cli: told to end: breaking this statement off\n";
constexpr std::string_view kNoEnd = "velmora-cli: it does not end: breaking it off\n";
constexpr char kBreakOff = 'b';
constexpr char kEnd = 'e';
constexpr char kOver = 'o';
constexpr char kQuit = 'q';
constexpr int kLastGrace = 5;  // times the usual one: for a rollback and a report

// What handlers may touch: numbers, and calls that are safe in one.
std::atomic<bool> ending = false;
std::atomic<bool> end_breaks_off = false;
std::atomic<int> presses = 0;
std::atomic<int> waker = -1;
std::atomic<int> told_by = 0;  // the signal that has told the process to end after a statement
static_assert(std::atomic<bool>::is_always_lock_free && std::atomic<int>::is_always_lock_free);

void Tell(std::string_view text) {
  [[maybe_unused]] const ssize_t told = write(STDERR_FILENO, text.data(), text.size());
}

void Wake(int pipe, char word) { [[maybe_unused]] const ssize_t told = write(pipe, &word, 1); }

void OnInterrupt(int signal) {
  const int error = errno;
  ending = true;
  if (++presses == 1) {
    Tell(kEnding);
  } else {
    struct sigaction usual {};
    usual.sa_handler = SIG_DFL;
    sigaction(signal, &usual, nullptr);
    Tell(kBreakingOff);
    Wake(waker, kBreakOff);
  }
  errno = error;
}

void OnEnd(int signal) {
  const int error = errno;
  const bool break_off = end_breaks_off;
  if (!ending.exchange(true)) Tell(break_off ? kToldToBreakOff : kToldToEnd);
  if (break_off)
    Wake(waker, kBreakOff);
  else if (told_by.exchange(signal) == 0)
    Wake(waker, kEnd);
  errno = error;
}

// Starts a thread that no signal is handled on but those of faults.
template <class Body>
std::thread WithoutSignals(Body body) {
  sigset_t all, former;
  sigfillset(&all);
  for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS, SIGABRT}) sigdelset(&all, fault);
  pthread_sigmask(SIG_SETMASK, &all, &former);
  std::thread thread;
  const auto with_stack = [body] {
    const TCrashStack stack;
    body();
  };
  RunGuarded([&] { thread = std::thread(with_stack); }, [&] { pthread_sigmask(SIG_SETMASK, &former, nullptr); });
  return thread;
}

}  // namespace

TInterruptHost::TInterruptHost(TMyConnection* running, int grace, EToldToEnd told_to_end)
    : running_(running), grace_(grace), caught_{{{SIGINT, OnInterrupt}, {SIGTERM, OnEnd}, {SIGHUP, OnEnd}}} {
  if (pipe2(wake_, O_CLOEXEC) != 0) RaiseError("No pipe can be made");
  ending = false;
  end_breaks_off = told_to_end == EToldToEnd::BreakOff;
  presses = 0;
  told_by = 0;
  waker = wake_[1];
  watcher_ = WithoutSignals([this] { Watch(); });
  for (TCaught& caught : caught_) {
    sigaction(caught.signal, nullptr, &caught.former);
    if (caught.former.sa_handler == SIG_IGN) continue;
    struct sigaction action {};
    action.sa_handler = caught.handler;
    action.sa_flags = SA_RESTART;
    sigaction(caught.signal, &action, nullptr);
  }
}

TInterruptHost::~TInterruptHost() {
  for (const TCaught& caught : caught_) sigaction(caught.signal, &caught.former, nullptr);
  Wake(wake_[1], kQuit);
  watcher_.join();
  waker = -1;
  close(wake_[0]);
  close(wake_[1]);
}

void TInterruptHost::ProcessMessages() {
  if (!ending.exchange(false)) return;
  cancelling_ = true;
  RaiseError("Cancelled");
}

// Ends a wait of BreakOff, should there be one.
void TInterruptHost::RunsOn(TMyConnection* running) {
  if (running != nullptr) running->PrepareToCancel();
  Wake(wake_[1], kOver);
  const std::lock_guard lock(mutex_);
  running_ = running;
}

// The next word of a handler or of the work; nothing where none comes in so many milliseconds (-1: for ever).
std::optional<char> TInterruptHost::NextWord(int patience) const {
  pollfd words{wake_[0], POLLIN, 0};
  int ready = 0;
  do ready = poll(&words, 1, patience);
  while (ready < 0 && errno == EINTR);
  if (ready == 0) return std::nullopt;
  char word = kQuit;
  return read(wake_[0], &word, 1) == 1 ? word : kQuit;
}

void TInterruptHost::Watch() {
  for (std::optional<char> word = NextWord(-1); word != kQuit;) {
    std::optional<char> next;
    if (word == kBreakOff) next = BreakOff();
    if (word == kEnd) {
      next = NextWord(grace_);
      if (!next) Tell(kNoEnd);
      next = next.value_or(kBreakOff);
    }
    word = next ? next : NextWord(-1);
  }
}

// Gives the word that has come meanwhile.
std::optional<char> TInterruptHost::BreakOff() {
  cancelling_ = true;
  const std::lock_guard lock(mutex_);
  std::optional<char> came;  // the work goes on, or is done
  const auto came_back = [&] {
    came = NextWord(grace_);
    return came.has_value();
  };
  if (running_ != nullptr) running_->BreakOff(came_back);
  if (came) return came;
  if (told_by == 0) return std::nullopt;
  // What still waits elsewhere, in a login or for a file, has nothing under way that the end of the process would harm.
  if (const std::optional<char> word = NextWord(kLastGrace * grace_)) return word;
  signal(told_by, SIG_DFL);
  kill(getpid(), told_by);
  return std::nullopt;
}

}  // namespace velmora
