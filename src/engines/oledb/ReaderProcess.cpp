#include "engines/oledb/ReaderProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <exception>
#include <fstream>
#include <new>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

#include "engines/oledb/ReaderWire.h"
#include "util/Errors.h"
#include "util/Format.h"

namespace velmora {

namespace {

constexpr char kNoProcess[] = "Cannot start a process to read %s: %s";
constexpr char kEnded[] =
    "Cannot read %s: the file is damaged or of a kind that %s cannot read (its reader ended by %s)";
constexpr char kSilent[] = "Cannot read %s: the file is damaged or too large (%s gave no answer for %d seconds)";
constexpr char kNoMemory[] = "Cannot read %s: the file is damaged or too large for the memory that %s may use";

enum class EQuestion : std::int64_t { Tables, Structure, Rows };
enum class EAnswer : std::int64_t { Found, Failed, NoMemory };

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
    for (;;) {
      const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
      if (left.count() <= 0) return false;
      pollfd wait{fd_, POLLIN, 0};
      const int ready = poll(&wait, 1, static_cast<int>(std::min<std::int64_t>(left.count(), 1000)));
      if (ready > 0 || (ready < 0 && errno != EINTR)) return true;
    }
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

std::uint64_t MemoryNow() {
  std::uint64_t pages = 0;
  std::ifstream("/proc/self/statm") >> pages;
  return pages * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
}

// The child shares nothing with the program but its end of the channel: no connection to a server, no lock, no
// terminal. It ends with its parent, and leaves Ctrl+C to it.
int KeepOnly(int channel) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  const int null = open("/dev/null", O_RDWR);
  for (const int standard : {0, 1, 2}) dup2(null, standard);
  constexpr int kChannel = 3;
  if (channel != kChannel) dup2(channel, kChannel);
  close_range(kChannel + 1, ~0U, 0);
  for (const int number : {SIGINT, SIGHUP}) signal(number, SIG_IGN);
  signal(SIGTERM, SIG_DFL);
  return kChannel;
}

void LimitMemory(std::uint64_t memory) {
  const rlimit no_core{0, 0};
  setrlimit(RLIMIT_CORE, &no_core);
  if (!kCanLimitMemory) return;
  const rlim_t bound = MemoryNow() + memory;
  const rlimit limit{bound, bound};
  setrlimit(RLIMIT_AS, &limit);
}

// The answer to one call of the reader.
template <class Work>
std::string AnswerTo(Work&& work) {
  TWireWriter answer;
  try {
    answer.Number(static_cast<std::int64_t>(EAnswer::Found));
    work(answer);
    return answer.Take();
  } catch (const std::bad_alloc&) {
    TWireWriter failure;
    failure.Number(static_cast<std::int64_t>(EAnswer::NoMemory));
    return failure.Take();
  } catch (const std::exception& error) {
    TWireWriter failure;
    failure.Number(static_cast<std::int64_t>(EAnswer::Failed));
    failure.Text(error.what());
    return failure.Take();
  }
}

void Answer(TFileReader& reader, const std::string& question, TWireWriter& answer) {
  TWireReader words(question);
  const auto kind = static_cast<EQuestion>(words.Number());
  if (kind == EQuestion::Tables) return answer.Tables(reader.Tables());
  const std::string table = words.Text();
  if (kind == EQuestion::Structure) return answer.Structure(reader.Structure(table));
  answer.Rows(reader.Rows(table, words.Number()));
}

[[noreturn]] void RunChild(int channel, const TFileReaderMaker& open_file, std::uint64_t memory) {
  channel = KeepOnly(channel);
  LimitMemory(memory);
  std::unique_ptr<TFileReader> reader;
  if (!SendMessage(channel, AnswerTo([&](TWireWriter&) { reader = open_file(); })) || !reader) _exit(0);
  TReceiver receiver(channel, std::nullopt);
  std::string question;
  while (receiver.Message(question) == EWait::Ready)
    if (!SendMessage(channel, AnswerTo([&](TWireWriter& answer) { Answer(*reader, question, answer); }))) break;
  _exit(0);
}

// --- The parent

class TReaderProcess final : public TFileReader {
 public:
  TReaderProcess(TFileReaderMaker open, std::string path, std::string library, const TReaderLimits& limits)
      : open_(std::move(open)), path_(std::move(path)), library_(std::move(library)), limits_(limits) {
    Start();
  }
  ~TReaderProcess() override { End(); }
  TReaderProcess(const TReaderProcess&) = delete;
  TReaderProcess& operator=(const TReaderProcess&) = delete;

  std::vector<TOLEDBTableRow> Tables() override {
    const std::string answer = Ask(EQuestion::Tables, {}, 0);
    return Words(answer).Tables();
  }
  TFileTable Structure(const std::string& table) override {
    const std::string answer = Ask(EQuestion::Structure, table, 0);
    return Words(answer).Structure();
  }
  TFileRows Rows(const std::string& table, std::int64_t limit) override {
    const std::string answer = Ask(EQuestion::Rows, table, limit);
    return Words(answer).Rows();
  }

 private:
  void Start();
  int End();  // its wait status
  std::string Ask(EQuestion kind, const std::string& table, std::int64_t limit);
  std::string Receive();
  static TWireReader Words(const std::string& answer) {
    TWireReader words(answer);
    words.Number();  // that it was found
    return words;
  }
  [[noreturn]] void RaiseEnded();

  TFileReaderMaker open_;
  std::string path_;
  std::string library_;
  TReaderLimits limits_;
  int channel_ = -1;
  pid_t child_ = -1;
};

void TReaderProcess::Start() {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
    RaiseError(Format(kNoProcess, path_, std::generic_category().message(errno)));
  child_ = fork();
  if (child_ == 0) RunChild(ends[1], open_, limits_.memory);
  const int error = errno;
  close(ends[1]);
  channel_ = ends[0];
  if (child_ < 0) {
    End();
    RaiseError(Format(kNoProcess, path_, std::generic_category().message(error)));
  }
  try {
    Receive();
  } catch (...) {
    End();
    throw;
  }
}

int TReaderProcess::End() {
  if (channel_ >= 0) close(std::exchange(channel_, -1));
  int status = 0;
  if (child_ > 0) {
    kill(child_, SIGKILL);
    while (waitpid(child_, &status, 0) < 0 && errno == EINTR) {
    }
  }
  child_ = -1;
  return status;
}

std::string TReaderProcess::Ask(EQuestion kind, const std::string& table, std::int64_t limit) {
  if (child_ < 0) Start();
  TWireWriter question;
  question.Number(static_cast<std::int64_t>(kind));
  question.Text(table);
  question.Number(limit);
  if (!SendMessage(channel_, question.Take())) RaiseEnded();
  return Receive();
}

std::string TReaderProcess::Receive() {
  std::string answer;
  switch (TReceiver(channel_, limits_.silence).Message(answer)) {
    case EWait::Ready:
      break;
    case EWait::Ended:
      RaiseEnded();
    case EWait::Silent:
      End();
      RaiseError(Format(kSilent, path_, library_, std::chrono::ceil<std::chrono::seconds>(limits_.silence).count()));
  }
  TWireReader words(answer);
  const auto found = static_cast<EAnswer>(words.Number());
  if (found == EAnswer::NoMemory) RaiseError(Format(kNoMemory, path_, library_));
  if (found == EAnswer::Failed) RaiseError(words.Text());
  return answer;
}

// The channel closes a moment before the status is there; a process that is only killed here did not end by itself.
void TReaderProcess::RaiseEnded() {
  int status = 0;
  close(std::exchange(channel_, -1));
  while (waitpid(child_, &status, 0) < 0 && errno == EINTR) {
  }
  child_ = -1;
  const std::string end =
      WIFSIGNALED(status) ? Format("signal %d", WTERMSIG(status)) : Format("status %d", WEXITSTATUS(status));
  RaiseError(Format(kEnded, path_, library_, end));
}

}  // namespace

TReaderLimits ReaderLimits(std::uint64_t size) {
  constexpr std::uint64_t kMegabyte = 1024 * 1024;
  return {.silence = std::chrono::seconds(20 + std::min<std::uint64_t>(size / kMegabyte, 600)),
          .memory = 2048 * kMegabyte + 32 * size};
}

std::unique_ptr<TFileReader> ReadInOwnProcess(TFileReaderMaker open, const std::string& path,
                                              const std::string& library, const TReaderLimits& limits) {
  return std::make_unique<TReaderProcess>(std::move(open), path, library, limits);
}

}  // namespace velmora
