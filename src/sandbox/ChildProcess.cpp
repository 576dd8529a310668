// SPDX-License-Identifier: GPL-3.0-or-later
#include "sandbox/ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <exception>
#include <fstream>
#include <new>
#include <optional>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>

#include "sandbox/ChildWait.h"
#include "sandbox/WireFormat.h"
#include "util/Errors.h"
#include "util/Format.h"

namespace velmora {

namespace {

constexpr char kNoProcess[] = "Cannot start a process: %s";
constexpr char kBySignal[] = "%s (its process ended by signal %d)";
constexpr char kByStatus[] = "%s (its process ended with status %d)";
constexpr char kNoAnswer[] = "%s (no answer for %d seconds)";

enum class EAnswer : std::int64_t { Found, Failed, Aborted, NoMemory };

// --- Messages: their length, then their bytes.

bool SendAll(int fd, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t sent = send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent < 0 && errno == EINTR) continue;
    if (sent <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(sent));
  }
  return true;
}

bool SendMessage(int fd, const std::string& message) {
  TWireWriter length;
  length.Number(static_cast<std::int64_t>(message.size()));
  return SendAll(fd, length.Take()) && SendAll(fd, message);
}

enum class EWait { Ready, Ended, Silent };

// `silence` bounds the wait for each next piece; none waits for ever.
class TReceiver {
 public:
  TReceiver(int fd, std::optional<std::chrono::milliseconds> silence) : fd_(fd), silence_(silence) {}

  EWait Message(std::string& message) {
    std::string head;
    if (const EWait wait = Exactly(sizeof(std::int64_t), head); wait != EWait::Ready) return wait;
    const std::int64_t length = TWireReader(head).Number();
    return length < 0 ? EWait::Ended : Exactly(static_cast<std::size_t>(length), message);
  }

 private:
  // Grows with what has come, not with what was announced.
  EWait Exactly(std::size_t count, std::string& bytes) {
    std::array<char, 65536> piece;
    bytes.clear();
    while (bytes.size() < count) {
      if (!Readable()) return EWait::Silent;
      const ssize_t got = recv(fd_, piece.data(), std::min(piece.size(), count - bytes.size()), 0);
      if (got < 0 && errno == EINTR) continue;
      if (got <= 0) return EWait::Ended;
      bytes.append(piece.data(), static_cast<std::size_t>(got));
    }
    return EWait::Ready;
  }

  bool Readable() const {
    if (!silence_) return true;
    const auto end = std::chrono::steady_clock::now() + *silence_;
    bool ready = false;
    ChildWait().WaitFor([&](std::chrono::milliseconds within) {
      const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
      if (left.count() <= 0) return true;
      pollfd wait{fd_, POLLIN, 0};
      const int found = poll(&wait, 1, static_cast<int>(std::min(left, within).count()));
      ready = found > 0 || (found < 0 && errno != EINTR);
      return ready;
    });
    return ready;
  }

  int fd_;
  std::optional<std::chrono::milliseconds> silence_;
};

// --- The child

// Sanitizers keep a map of all memory, which no limit would leave room for.
#if defined(__SANITIZE_ADDRESS__)
constexpr bool kCanLimitMemory = false;
#else
constexpr bool kCanLimitMemory = true;
#endif

// 0 where the system does not tell.
std::uint64_t MemoryNow() {
  std::uint64_t pages = 0;
  std::ifstream("/proc/self/statm") >> pages;
  return pages * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
}

// The child shares nothing with the program but its end of the channel: no connection to a server, no lock, no
// terminal. It ends with its parent, and leaves Ctrl+C to it.
int KeepOnly(int channel) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  constexpr int kChannel = 3;
  // First, since where a standard file was closed the channel may have its number.
  if (channel != kChannel) dup2(channel, kChannel);
  const int null = open("/dev/null", O_RDWR);
  for (const int standard : {0, 1, 2}) dup2(null, standard);
  close_range(kChannel + 1, ~0U, 0);
  for (const int number : {SIGINT, SIGHUP}) signal(number, SIG_IGN);
  signal(SIGTERM, SIG_DFL);
  return kChannel;
}

void LimitMemory(std::uint64_t memory) {
  const rlimit no_core{0, 0};
  setrlimit(RLIMIT_CORE, &no_core);
  const std::uint64_t now = MemoryNow();
  if (!kCanLimitMemory || now == 0) return;
  const rlimit limit{now + memory, now + memory};
  setrlimit(RLIMIT_AS, &limit);
}

// The message that a call leads to: what it gave, or how it failed.
template <class Work>
std::string AnswerTo(Work&& work) {
  const auto answer = [](EAnswer kind, std::string_view text) {
    TWireWriter words;
    words.Number(static_cast<std::int64_t>(kind));
    words.Raw(text);
    return words.Take();
  };
  try {
    return answer(EAnswer::Found, work());
  } catch (const std::bad_alloc&) {
    return answer(EAnswer::NoMemory, {});
  } catch (const EAbort& error) {
    return answer(EAnswer::Aborted, error.what());
  } catch (const std::exception& error) {
    return answer(EAnswer::Failed, error.what());
  }
}

void Serve(int channel, const std::function<TChildProcess::TAnswerer()>& start) {
  TChildProcess::TAnswerer answerer;
  const auto begin = [&] {
    answerer = start();
    return std::string();
  };
  if (!SendMessage(channel, AnswerTo(begin)) || !answerer) return;
  TReceiver receiver(channel, std::nullopt);
  std::string question;
  while (receiver.Message(question) == EWait::Ready)
    if (!SendMessage(channel, AnswerTo([&] { return answerer(question); }))) return;
}

}  // namespace

TChildProcess::TChildProcess(std::function<TAnswerer()> start, TChildFaults faults, const TChildLimits& limits,
                             EChildEnd end)
    : start_(std::move(start)), faults_(std::move(faults)), limits_(limits), end_(end) {}

void TChildProcess::Start() {
  if (Running()) return;
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
    RaiseError(Format(kNoProcess, std::generic_category().message(errno)));
  child_ = fork();
  if (child_ == 0) {
    const int channel = KeepOnly(ends[1]);
    LimitMemory(limits_.memory);
    Serve(channel, start_);
    _exit(0);
  }
  const int error = errno;
  close(ends[1]);
  channel_ = ends[0];
  if (child_ < 0) {
    End();
    RaiseError(Format(kNoProcess, std::generic_category().message(error)));
  }
  try {
    Receive();
  } catch (...) {
    End();
    throw;
  }
}

// Waits for the child to end by itself, as it does when the channel is closed; false when it takes too long.
bool TChildProcess::WaitForGoodbye() const {
  constexpr int kRounds = 200;
  for (int i = 0; i < kRounds; ++i) {
    siginfo_t info{};
    if (waitid(P_PID, static_cast<id_t>(child_), &info, WEXITED | WNOWAIT | WNOHANG) == 0 && info.si_pid == child_)
      return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return false;
}

void TChildProcess::End() {
  if (channel_ >= 0) close(std::exchange(channel_, -1));
  if (child_ <= 0) return;
  if (end_ == EChildEnd::AtOnce || !WaitForGoodbye()) kill(child_, SIGKILL);
  while (waitpid(child_, nullptr, 0) < 0 && errno == EINTR) {
  }
  child_ = -1;
}

std::string TChildProcess::Ask(const std::string& question) {
  Start();
  if (!SendMessage(channel_, question)) RaiseEnded();
  return Receive();
}

std::string TChildProcess::Receive() {
  std::string answer;
  EWait wait = EWait::Ended;
  try {
    wait = TReceiver(channel_, limits_.silence).Message(answer);
  } catch (...) {  // nobody waits for the rest of the answer
    End();
    throw;
  }
  switch (wait) {
    case EWait::Ready:
      break;
    case EWait::Ended:
      RaiseEnded();
    case EWait::Silent:
      kill(child_, SIGKILL);
      End();
      RaiseError(Format(kNoAnswer, faults_.silent, std::chrono::ceil<std::chrono::seconds>(limits_.silence).count()));
  }
  TWireReader words(answer);
  switch (static_cast<EAnswer>(words.Number())) {
    case EAnswer::Found:
      return std::string(words.Rest());
    case EAnswer::NoMemory:
      RaiseError(faults_.no_memory);
    case EAnswer::Aborted:
      throw EAbort();
    case EAnswer::Failed:
      break;
  }
  RaiseError(std::string(words.Rest()));
}

// Its status tells how the child ended by itself. One that only closed the channel would be waited for in vain.
void TChildProcess::RaiseEnded() {
  int status = 0;
  close(std::exchange(channel_, -1));
  if (!WaitForGoodbye()) kill(child_, SIGKILL);
  while (waitpid(child_, &status, 0) < 0 && errno == EINTR) {
  }
  child_ = -1;
  if (WIFSIGNALED(status)) RaiseError(Format(kBySignal, faults_.ended, WTERMSIG(status)));
  RaiseError(Format(kByStatus, faults_.ended, WEXITSTATUS(status)));
}

}  // namespace velmora
