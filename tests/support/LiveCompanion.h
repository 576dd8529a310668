#pragma once

// The companion against the shared server, within this process or as the program itself.

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "support/LiveRun.h"
#include "support/ScratchFolder.h"
#include "util/Files.h"

namespace velmora::testing {

class TLiveCompanion : public ::testing::Test {
 protected:
  ~TLiveCompanion() override {
    if (child_ == 0) return;
    kill(child_, SIGKILL);  // a failed assertion left it
    waitpid(child_, nullptr, 0);
  }

  std::string File(const std::string& name, const std::string& text) {
    WriteFileText(folder_ / name, text);
    return folder_ / name;
  }
  // Starts the program, since a signal goes to a process.
  void Start(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), VELMORA_CLI);
    arguments.insert(arguments.end(), {"--socket", TPrivateServer::Shared().Socket()});
    std::vector<char*> words;
    for (std::string& argument : arguments) words.push_back(argument.data());
    words.push_back(nullptr);
    child_ = fork();
    if (child_ != 0) return;
    if (freopen((folder_ / "out").c_str(), "w", stdout) == nullptr ||
        freopen((folder_ / "err").c_str(), "w", stderr) == nullptr)
      _exit(99);
    execv(words[0], words.data());
    _exit(98);
  }
  void Signal(int signal) const { kill(child_, signal); }
  std::string Told() const { return ReadFileText(folder_ / "err"); }
  TAnswer End() {
    int status = 0;
    waitpid(child_, &status, 0);
    child_ = 0;
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, ReadFileText(folder_ / "out"), Told()};
  }
  template <class Reached>
  static void WaitUntil(const std::string& what, Reached reached) {
    for (int i = 0; i < 3000; ++i) {
      if (reached()) return;
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    FAIL() << "never: " << what;
  }

  TScratchFolder folder_;
  pid_t child_ = 0;
};

}  // namespace velmora::testing
