// SPDX-License-Identifier: GPL-3.0-or-later
#include "crash/CrashWatch.h"

#include <cxxabi.h>
#include <dlfcn.h>
#include <execinfo.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <exception>
#include <memory>
#include <typeinfo>

#include "crash/BuildId.h"
#include "crash/CrashNotes.h"
#include "crash/CrashReports.h"
#include "crash/CrashStack.h"
#include "util/Errors.h"
#include "util/Files.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

struct TFatalSignal {
  int number;
  std::string_view text;
};
constexpr std::array<TFatalSignal, 7> kFatalSignals = {{{SIGSEGV, "SIGSEGV: memory that is not the program's"},
                                                        {SIGBUS, "SIGBUS: memory or a mapped file that is not there"},
                                                        {SIGFPE, "SIGFPE: arithmetic"},
                                                        {SIGILL, "SIGILL: no instruction of this processor"},
                                                        {SIGTRAP, "SIGTRAP: a trap"},
                                                        {SIGSYS, "SIGSYS: a system call that is not allowed"},
                                                        {SIGABRT, "SIGABRT: the program gave up"}}};

// The address sanitizer tells more of a fault than a report could: its own handlers stay.
#ifdef __SANITIZE_ADDRESS__
constexpr bool kToldBySanitizer = true;
#else
constexpr bool kToldBySanitizer = false;
#endif

constexpr unsigned kSecondsToReport = 20;  // then the program ends without a whole report
constexpr std::size_t kMostFrames = 128;
constexpr std::size_t kLongestReason = 500;

// All that a report needs is made beforehand: a handler may neither take memory nor lock anything. Never freed.
struct TPrepared {
  std::string heading;
  std::string path_beginning;  // "FOLDER/velmora-cli-"
  std::string program;
  pid_t process;  // a process that was made of this one and crashes, as readers of damaged files do, is its maker's to
                  // tell
};
const TPrepared* prepared = nullptr;

std::array<char, kLongestReason> reason;
std::atomic<std::size_t> reason_length = 0;
std::atomic<pid_t> reporter = 0;  // the thread that writes a report

// --- Texts without memory
// A text of bounded length, cut where it is full.
class TShortText {
 public:
  TShortText& operator<<(std::string_view text) {
    const std::size_t length = std::min(text.size(), bytes_.size() - 1 - length_);
    std::copy_n(text.begin(), length, bytes_.begin() + static_cast<std::ptrdiff_t>(length_));
    length_ += length;
    return *this;
  }
  TShortText& Number(std::uint64_t number, unsigned base = 10, std::size_t width = 1) {
    std::array<char, 64> digits;
    std::size_t at = digits.size();
    do {
      digits[--at] = "0123456789abcdef"[number % base];
      number /= base;
    } while (number > 0 || digits.size() - at < width);
    return *this << std::string_view(digits.data() + at, digits.size() - at);
  }
  const char* Path() const { return bytes_.data(); }  // the bytes behind the text are 0
  std::string_view View() const { return {bytes_.data(), length_}; }

 private:
  std::array<char, 1024> bytes_ = {};
  std::size_t length_ = 0;
};

void Write(int file, std::string_view text) {
  while (!text.empty()) {
    const ssize_t done = write(file, text.data(), text.size());
    if (done < 0 && errno == EINTR) continue;
    if (done <= 0) return;
    text.remove_prefix(static_cast<std::size_t>(done));
  }
}

void WriteNumber(TShortText& text, std::int64_t number) {
  if (number < 0) text << "-";
  text.Number(static_cast<std::uint64_t>(number < 0 ? -number : number));
}

// Days since 1970 as a date of the calendar that runs from March, in which the odd day of leap years is the last one.
void WriteDate(TShortText& text, std::int64_t days) {
  const std::int64_t shifted = days + 719468;
  const std::int64_t era = shifted / 146097;
  const std::int64_t day_of_era = shifted % 146097;
  const std::int64_t year = (day_of_era - day_of_era / 1460 + day_of_era / 36524 - day_of_era / 146096) / 365;
  const std::int64_t day = day_of_era - (365 * year + year / 4 - year / 100);
  const std::int64_t month = (5 * day + 2) / 153;
  const auto part = [&text](std::int64_t value, std::size_t width) {
    text.Number(static_cast<std::uint64_t>(value), 10, width);
  };
  part(year + era * 400 + (month >= 10 ? 1 : 0), 4);
  part(month < 10 ? month + 3 : month - 9, 2);
  part(day - (153 * month + 2) / 5 + 1, 2);
}

// "20261122-190145", in UTC.
void WriteTime(TShortText& text) {
  timespec now = {};
  clock_gettime(CLOCK_REALTIME, &now);
  const auto seconds = static_cast<std::int64_t>(now.tv_sec);
  WriteDate(text, seconds / 86400);
  const auto of_day = static_cast<std::uint64_t>(seconds % 86400);
  text << "-";
  text.Number(of_day / 3600, 10, 2).Number(of_day / 60 % 60, 10, 2).Number(of_day % 60, 10, 2);
}

// --- The parts of a report
void WriteReason(int file, int signal, const siginfo_t* info) {
  TShortText text;
  text << "Reason: ";
  for (const TFatalSignal& row : kFatalSignals)
    if (row.number == signal) text << row.text;
  if (info->si_code <= 0 && info->si_pid != getpid()) {
    text << ", sent by process ";
    text.Number(static_cast<std::uint64_t>(info->si_pid));
  } else if (info->si_code > 0 && (signal == SIGSEGV || signal == SIGBUS)) {
    text << ", address 0x";
    text.Number(reinterpret_cast<std::uintptr_t>(info->si_addr), 16);
    text << ", code ";
    WriteNumber(text, info->si_code);
  }
  text << "\n";
  if (reason_length > 0) text << "Told before: " << std::string_view(reason.data(), reason_length) << "\n";
  Write(file, text.View());
}

// The words with which the C library aborts, such as those of a failed assertion. It keeps them for collectors of core
// files, in a place that is no part of its public interface: where it is not there, the words are on standard error
// alone. https://sourceware.org/git/?p=glibc.git;a=blob;f=include/stdlib.h (struct abort_msg_s)
struct TAbortMessage {
  unsigned size;  // of the mapping
  char text[1];
};
const TAbortMessage* const* abort_message = nullptr;

void WriteAbortMessage(int file) {
  if (abort_message == nullptr || *abort_message == nullptr) return;
  const char* text = (*abort_message)->text;
  TShortText line;
  line << "Words of the C library: " << std::string_view(text, strnlen(text, kLongestReason));
  Write(file, line.View());
  if (!line.View().ends_with('\n')) Write(file, "\n");
}

void WriteStack(int file) {
  Write(file, "\nStack of the thread that ended:\n");
  std::array<void*, kMostFrames> frames;
  const int count = backtrace(frames.data(), static_cast<int>(frames.size()));
  backtrace_symbols_fd(frames.data(), count, file);
}

void WriteNotes(int file) {
  Write(file, "\nLast notes, values left out:\n");
  const auto write_line = [](void* context, std::string_view line) {
    const int to = *static_cast<int*>(context);
    Write(to, line);
    Write(to, "\n");
  };
  EachCrashNote(write_line, &file);
}

// "559c1a2b3000-559c1a2c0000 r--p 00000000 08:01 1234   /usr/lib/libz.so.1": the first mapping of a program or library.
bool IsFirstMapping(std::string_view line) {
  constexpr std::string_view kReplaced = " (deleted)";  // by an update, while the program runs
  if (line.ends_with(kReplaced)) line.remove_suffix(kReplaced.size());
  const std::size_t offset = line.find(' ', line.find(' ') + 1);
  const bool first = offset != std::string_view::npos && line.substr(offset).starts_with(" 00000000 ");
  return first && line.find('/') != std::string_view::npos &&
         (line.find(".so") != std::string_view::npos || line.ends_with(prepared->program));
}

void WriteLibraries(int file) {
  Write(file, "\nLoaded files and where they begin:\n");
  const int maps = open("/proc/self/maps", O_RDONLY | O_CLOEXEC);
  if (maps < 0) return;
  std::array<char, 8192> buffer;
  std::size_t held = 0;
  for (;;) {
    const ssize_t got = read(maps, buffer.data() + held, buffer.size() - held);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) break;
    std::string_view text(buffer.data(), held + static_cast<std::size_t>(got));
    for (std::size_t end; (end = text.find('\n')) != std::string_view::npos; text.remove_prefix(end + 1))
      if (const std::string_view line = text.substr(0, end); IsFirstMapping(line)) {
        TShortText shown;
        shown << line.substr(0, line.find('-')) << " " << line.substr(line.find('/')) << "\n";
        Write(file, shown.View());
      }
    held = text.size() < buffer.size() ? text.size() : 0;  // a line that is longer than all paths is no line
    std::copy(text.begin(), text.end(), buffer.begin());
  }
  close(maps);
}

void WriteReport(int file, int signal, const siginfo_t* info) {
  Write(file, prepared->heading);
  WriteReason(file, signal, info);
  WriteAbortMessage(file);
  WriteNotes(file);
  WriteLibraries(file);
  WriteStack(file);  // the last: walking over a spoiled stack, or beside a library that is being loaded, may never end
}

void MakeFolders(std::string_view path) {
  for (std::size_t end = path.find('/', 1); end != std::string_view::npos; end = path.find('/', end + 1)) {
    TShortText folder;
    folder << path.substr(0, end);
    mkdir(folder.Path(), 0700);
  }
}

// The file of the report, or -1 with the reason in errno.
int OpenReport(TShortText& path) {
  if (prepared->path_beginning.empty()) {
    errno = ENOENT;
    return -1;
  }
  path << prepared->path_beginning;
  WriteTime(path);
  path << "-";
  path.Number(static_cast<std::uint64_t>(getpid()));
  path << kCrashReportEnding;
  MakeFolders(path.View());
  if (!path.View().ends_with(kCrashReportEnding)) {  // cut
    errno = ENAMETOOLONG;
    return -1;
  }
  return open(path.Path(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600);
}

void Tell(std::string_view text) {
  TShortText line;
  line << prepared->program << ": " << text;
  Write(STDERR_FILENO, line.View());
}

void Report(int signal, const siginfo_t* info) {
  TShortText path;
  const int file = OpenReport(path);
  if (file < 0) {
    Tell("a fatal error has ended the program. Its report, which could not be written to a file:\n");
    WriteReport(STDERR_FILENO, signal, info);
    return;
  }
  Tell("a fatal error has ended the program. A report, without passwords and data, is in ");
  Write(STDERR_FILENO, path.View());
  Write(STDERR_FILENO, "\n");
  WriteReport(file, signal, info);
  fsync(file);
  close(file);
}

void EndBy(int number) {
  ::signal(number, SIG_DFL);
  raise(number);
}

// A report that hangs is given up; the program still ends by the signal of its fault.
std::atomic<int> fault = 0;
void OnAlarm(int) { EndBy(fault); }

void WaitNoLonger(int number) {
  fault = number;
  ::signal(SIGALRM, OnAlarm);
  sigset_t alarms;
  sigemptyset(&alarms);
  sigaddset(&alarms, SIGALRM);
  pthread_sigmask(SIG_UNBLOCK, &alarms, nullptr);
  alarm(kSecondsToReport);
}

void HandleFatal(int number, siginfo_t* info, void*) {
  if (getpid() != prepared->process) return EndBy(number);
  pid_t busy = 0;
  const pid_t self = gettid();
  if (!reporter.compare_exchange_strong(busy, self)) {
    if (busy == self) EndBy(number);  // the report itself has failed
    for (;;) pause();                 // another thread's report ends this one, too
  }
  WaitNoLonger(number);
  Report(number, info);
  EndBy(number);
}

// --- Preparations
std::string Demangled(const char* name) {
  int status = 0;
  const std::unique_ptr<char, decltype(&std::free)> text(abi::__cxa_demangle(name, nullptr, nullptr, &status),
                                                         &std::free);
  return status == 0 && text != nullptr ? text.get() : name;
}

[[noreturn]] void OnTerminate() {
  static std::atomic_flag entered;
  if (entered.test_and_set()) std::abort();  // what tells the reason has failed itself, as for want of memory
  try {
    if (const std::exception_ptr error = std::current_exception()) std::rethrow_exception(error);
    TellCrashReason("std::terminate without an exception");
  } catch (const std::exception& error) {
    TellCrashReason("exception that nobody took: " + Demangled(typeid(error).name()) + ": " + error.what());
  } catch (...) {
    const std::type_info* type = abi::__cxa_current_exception_type();
    TellCrashReason("exception that nobody took: " + Demangled(type == nullptr ? "" : type->name()));
  }
  std::abort();
}

// The value of PRETTY_NAME, as in "Debian GNU/Linux 12 (bookworm)".
std::string Distribution() {
  try {
    std::string name;
    return Between(ReadFileText("/etc/os-release"), "PRETTY_NAME=\"", "\"", false, name) ? name : "";
  } catch (const EVelmora&) {
    return "";
  }
}

std::string Heading(const TCrashWatch& watch) {
  utsname system = {};
  uname(&system);
  std::string libraries;
  for (const std::string& library : watch.libraries) libraries += ", " + library;
  return Format("Crash report of %s %s\nBuild: %s, C++ library %d%s\nBuild id: %s\nSystem: %s %s %s, %s\n",
                watch.program, watch.version, __VERSION__, _GLIBCXX_RELEASE, libraries, BuildId(), system.sysname,
                system.release, system.machine, Distribution());
}

}  // namespace

void TellCrashReason(std::string_view told) {
  const std::string shown = ShownText(WithoutValues(told));
  const std::size_t length = std::min(shown.size(), reason.size());
  std::copy_n(shown.begin(), length, reason.begin());
  reason_length = length;
}

void WatchForCrashes(const TCrashWatch& watch) {
  if constexpr (kToldBySanitizer) return;
  if (!watch.folder.empty()) RemoveOldReports(watch.folder);
  const std::string beginning = watch.folder.empty() ? "" : JoinPath(watch.folder, watch.program + "-");
  // A program can also crash while it takes itself apart.
  prepared = std::make_unique<TPrepared>(TPrepared{Heading(watch), beginning, watch.program, getpid()}).release();
  abort_message = static_cast<const TAbortMessage* const*>(dlvsym(RTLD_DEFAULT, "__abort_msg", "GLIBC_PRIVATE"));
  std::array<void*, 1> frame;
  backtrace(frame.data(), 1);  // which loads a library the first time
  static_cast<void>(std::make_unique<TCrashStack>().release());
  std::set_terminate(OnTerminate);
  struct sigaction action = {};
  action.sa_sigaction = HandleFatal;
  action.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_NODEFER;
  sigemptyset(&action.sa_mask);
  for (const TFatalSignal& row : kFatalSignals) sigaction(row.number, &action, nullptr);
}

}  // namespace velmora
