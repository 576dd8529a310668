// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/ServerProcess.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <thread>

namespace velmora::testing {

using namespace std::chrono_literals;

std::string FindProgram(const std::string& name, const std::string& package, const std::string& folders) {
  const std::string path = getenv("PATH") != nullptr ? getenv("PATH") : "";
  std::istringstream places(path + ":/usr/sbin:/usr/bin:" + folders);
  for (std::string folder; std::getline(places, folder, ':');) {
    const std::string program = folder + "/" + name;
    if (!folder.empty() && access(program.c_str(), X_OK) == 0) return program;
  }
  throw std::runtime_error("private server: " + name + " is missing; ./setup brings it, from the package " + package);
}

pid_t SpawnServer(const std::vector<std::string>& command, const std::string& log) {
  std::vector<char*> arguments;
  arguments.reserve(command.size() + 1);
  for (const std::string& argument : command) arguments.push_back(const_cast<char*>(argument.c_str()));
  arguments.push_back(nullptr);
  const pid_t parent = getpid();
  const pid_t child = fork();
  if (child < 0) throw std::runtime_error("private server: fork failed");
  if (child > 0) return child;
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  const int out = open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
  dup2(out, STDOUT_FILENO);
  dup2(out, STDERR_FILENO);
  if (getppid() == parent) execv(arguments[0], arguments.data());
  _exit(127);
}

std::string FileEnd(const std::string& path) {
  std::ifstream file(path);
  std::string text((std::istreambuf_iterator<char>(file)), {});
  constexpr std::size_t kShown = 3000;
  return text.size() > kShown ? text.substr(text.size() - kShown) : text;
}

bool TServerProcess::Running() {
  if (pid_ != 0 && waitpid(pid_, nullptr, WNOHANG) != 0) pid_ = 0;
  return pid_ != 0;
}

void TServerProcess::Kill() {
  if (pid_ == 0) return;
  kill(pid_, SIGKILL);
  waitpid(pid_, nullptr, 0);
  pid_ = 0;
}

void TServerProcess::Freeze(bool frozen) const {
  if (pid_ != 0) kill(pid_, frozen ? SIGSTOP : SIGCONT);
}

void TServerProcess::Stop() {
  constexpr auto kPoll = 10ms;
  constexpr auto kGrace = 10s;
  if (pid_ == 0) return;
  kill(pid_, SIGTERM);
  for (auto waited = 0ms; waited < kGrace; waited += kPoll) {
    if (!Running()) return;
    std::this_thread::sleep_for(kPoll);
  }
  Kill();
}

}  // namespace velmora::testing
