// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The companion as a program of its own, since a signal goes to a process.

#include <signal.h>  // NOLINT(modernize-deprecated-headers): for kill
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <vector>

#include "support/Transcript.h"
#include "util/Files.h"

namespace velmora::testing {

class TCompanionProcess {
 public:
  // What it says goes to files in that folder.
  explicit TCompanionProcess(const std::string& folder)
      : out_(JoinPath(folder, "out")), err_(JoinPath(folder, "err")) {}
  ~TCompanionProcess() {
    if (child_ == 0) return;
    kill(child_, SIGKILL);  // a failed assertion left it
    waitpid(child_, nullptr, 0);
  }
  TCompanionProcess(const TCompanionProcess&) = delete;
  TCompanionProcess& operator=(const TCompanionProcess&) = delete;

  // Nothing is under way before it.
  void Start(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), VELMORA_CLI);
    std::vector<char*> words;
    for (std::string& argument : arguments) words.push_back(argument.data());
    words.push_back(nullptr);
    child_ = fork();
    if (child_ != 0) return;
    if (freopen(out_.c_str(), "w", stdout) == nullptr || freopen(err_.c_str(), "w", stderr) == nullptr) _exit(99);
    execv(words[0], words.data());
    _exit(98);
  }
  void Signal(int signal) const { kill(child_, signal); }
  std::string Told() const { return ReadFileText(err_); }
  // Its status is -1 where a signal ended it.
  TAnswer End() {
    int status = 0;
    waitpid(child_, &status, 0);
    child_ = 0;
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, ReadFileText(out_), Told()};
  }

 private:
  std::string out_;
  std::string err_;
  pid_t child_ = 0;
};

}  // namespace velmora::testing
