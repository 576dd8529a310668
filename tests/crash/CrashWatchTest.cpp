// SPDX-License-Identifier: GPL-3.0-or-later
#include "crash/CrashWatch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <thread>

#include "crash/BuildId.h"
#include "crash/CrashNotes.h"
#include "crash/CrashReports.h"
#include "crash/CrashStack.h"
#include "support/ScratchFolder.h"
#include "util/Files.h"

namespace velmora {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using testing::TScratchFolder;

#ifndef __SANITIZE_ADDRESS__  // whose own handlers stay
struct TEnd {
  const char* name;
  void (*end)();
  int signal;
  const char* told;  // a part of the report
};

volatile int zero = 0;
int* volatile nowhere = nullptr;

// Made before the watch, and so the later of the two to go.
struct TFaultAtEnd {
  bool wanted = false;
  ~TFaultAtEnd() {
    if (wanted) *nowhere = 1;
  }
};
TFaultAtEnd fault_at_end;

// Not to be turned into a loop.
int EatStack(volatile char* above) {
  volatile char here[1024] = {};
  here[0] = above[0];
  return above == nullptr ? 0 : EatStack(here) + here[0];
}

const TEnd kEnds[] = {
    {"a null pointer", [] { *nowhere = 1; }, SIGSEGV, "address 0x0"},
    {"a division by zero", [] { zero = 100 / zero; }, SIGFPE, "SIGFPE"},
    {"a stack that is used up",
     [] {
       volatile char first[1] = {};
       zero = EatStack(first);
     },
     SIGSEGV, "SIGSEGV"},
    {"a stack of another thread",
     [] {
       std::thread([] {
         const TCrashStack stack;
         volatile char first[1] = {};
         zero = EatStack(first);
       }).join();
     },
     SIGSEGV, "SIGSEGV"},
    {"a signal of another process",
     [] {
       const pid_t self = getpid();
       if (fork() == 0) {
         kill(self, SIGBUS);
         _exit(0);
       }
       pause();
     },
     SIGBUS, "sent by process"},
    {"an exception", [] { throw std::runtime_error("no key 'tom''s secret' here"); }, SIGABRT,
     "std::runtime_error: no key '...\n"},
    {"what is no exception of the library", [] { throw 3; }, SIGABRT, "nobody took: int"},
    {"an abort with words", [] { __assert_fail("rows > 0", "Rows.cpp", 12, "Count"); }, SIGABRT, "`rows > 0' failed"},
    {"a fault while the program ends",
     [] {
       fault_at_end.wanted = true;
       std::exit(0);
     },
     SIGSEGV, "address 0x0"},
    {"a fault in another thread", [] { std::thread([] { *nowhere = 1; }).join(); }, SIGSEGV, "SIGSEGV"},
    {"faults in several threads",
     [] {
       std::vector<std::thread> threads;
       for (int i = 0; i < 8; ++i) threads.emplace_back([] { *nowhere = 1; });
       for (std::thread& thread : threads) thread.join();
     },
     SIGSEGV, "SIGSEGV"},
};

// Gives the signal by which a process that watches for crashes has ended.
int EndOfChild(const std::string& folder, void (*end)()) noexcept {
  const pid_t child = fork();
  if (child == 0) {
    const rlimit none = {0, 0};
    setrlimit(RLIMIT_CORE, &none);
    if (std::freopen("/dev/null", "w", stderr) == nullptr) _exit(3);
    WatchForCrashes({"test_crash", "1.2", folder, {"Library 3.4"}});
    NoteForCrash("reading row 'tom' of t");
    end();
    _exit(4);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFSIGNALED(status) ? WTERMSIG(status) : -WEXITSTATUS(status);
}

TEST(CrashWatch, WritesAReportAndEndsByTheSameSignal) {
  for (const TEnd& row : kEnds) {
    SCOPED_TRACE(row.name);
    const TScratchFolder scratch;
    const std::string folder = scratch / "state/crashes";
    EXPECT_EQ(EndOfChild(folder, row.end), row.signal);
    const std::vector<TCrashReport> reports = NewCrashReports(folder);
    ASSERT_EQ(reports.size(), 1u);
    const std::string& text = reports.front().text;
    for (const char* part : {"Crash report of test_crash 1.2\n", "Library 3.4", "\nBuild id: ", row.told,
                             "reading row '...\n", "/libc.so.6\n", "/test_crash\n"})
      EXPECT_THAT(text, HasSubstr(part));
    EXPECT_THAT(text, Not(HasSubstr("tom")));
  }
}

TEST(BuildId, IsWhatToolsReadInTheFile) {
  const std::string command = "readelf -n /proc/" + std::to_string(getpid()) + "/exe";
  const std::unique_ptr<FILE, int (*)(FILE*)> tool(popen(command.c_str(), "r"), pclose);
  std::array<char, 4096> told = {};
  ASSERT_GT(fread(told.data(), 1, told.size() - 1, tool.get()), 0u);
  EXPECT_NE(BuildId(), "");
  EXPECT_THAT(told.data(), HasSubstr("Build ID: " + BuildId() + "\n"));
}

TEST(CrashWatch, AProcessMadeOfTheWatchedOneIsNotItsConcern) {
  const TScratchFolder scratch;
  EXPECT_EQ(EndOfChild(scratch / "c",
                       [] {
                         const pid_t child = fork();
                         if (child == 0) *nowhere = 1;
                         int status = 0;
                         waitpid(child, &status, 0);
                         _exit(WIFSIGNALED(status) ? WTERMSIG(status) : 0);
                       }),
            -SIGSEGV);
  EXPECT_TRUE(NewCrashReports(scratch / "c").empty());
}
#endif

TEST(CrashReports, AreOfferedOnceTheNewestFirstAndSomeAreKept) {
  const TScratchFolder scratch;
  for (int i = 10; i < 40; ++i)
    WriteFileText(scratch / ((i % 2 == 0 ? "velmora-202611" : "velmora-cli-202611") + std::to_string(i) + "-120000-7" +
                             kCrashReportEnding),
                  "at _ZN7velmora4TextEv+0x1, day " + std::to_string(i));
  const std::string folder = scratch.Path();
  RemoveOldReports(folder);
  const std::vector<TCrashReport> reports = NewCrashReports(folder);
  ASSERT_EQ(reports.size(), static_cast<std::size_t>(kMostCrashReports));
  EXPECT_EQ(reports.front().text, "at velmora::Text()+0x1, day 39");
  EXPECT_EQ(reports.back().text, "at velmora::Text()+0x1, day 20");
  for (const TCrashReport& report : reports) MarkAsShown(report);
  EXPECT_TRUE(NewCrashReports(folder).empty());
  WriteFileText(scratch / "velmora-20261101-120000-7.crash.txt", "older, and not shown");
  RemoveOldReports(folder);
  EXPECT_EQ(NewCrashReports(folder).size(), 1u);
  EXPECT_TRUE(NewCrashReports(scratch / "none").empty());
}

TEST(CrashNotes, HoldNoValues) {
  const std::pair<const char*, const char*> kLines[] = {
      {"can't read table t of the target's", "can't read table t of the target's"},
      {"Duplicate entry 'o'neil' for key 'k'", "Duplicate entry '..."},
      {"line 12: update t set a = 'tom', b = 'cut off, as it is lo...: values", "line 12: update t set a = '..."},
      {"Incorrect value: \"it's\" at row 1", "Incorrect value: \"..."},
      {"error 1062, card 4111111111111111, password 0x7365, host t4711000.example",
       "error 1062, card ..., password ..., host t4711000.example"},
      {"set @a = N'secret'", "set @a = N'..."},
      {"'", "'..."},
      {"", ""},
  };
  for (const auto& [line, kept] : kLines) EXPECT_EQ(WithoutValues(line), kept);
}

}  // namespace
}  // namespace velmora
