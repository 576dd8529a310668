// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/TerminalRun.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <stdexcept>
#include <string_view>

namespace velmora::testing {

namespace {

using TTime = std::chrono::steady_clock;

constexpr auto kPatience = std::chrono::seconds(20);
constexpr int kGlance = 20;  // milliseconds
constexpr int kStuck = -1000;

}  // namespace

TTerminalRun::TTerminalRun(const std::vector<std::string>& command) {
  std::vector<char*> arguments;
  for (const std::string& argument : command) arguments.push_back(const_cast<char*>(argument.c_str()));
  arguments.push_back(nullptr);
  Start([this, &arguments] {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) dup2(terminal_, stream);
    execv(arguments[0], arguments.data());
    return 127;
  });
}

TTerminalRun::TTerminalRun(const std::function<int()>& body) { Start(body); }

void TTerminalRun::Start(const std::function<int()>& body) {
  keyboard_ = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  std::array<char, 64> name{};
  if (keyboard_ < 0 || grantpt(keyboard_) != 0 || unlockpt(keyboard_) != 0 ||
      ptsname_r(keyboard_, name.data(), name.size()) != 0)
    throw std::runtime_error("no terminal");
  terminal_ = open(name.data(), O_RDWR | O_NOCTTY | O_CLOEXEC);
  first_ = Settings();
  child_ = fork();
  if (terminal_ < 0 || child_ < 0) throw std::runtime_error("no process on a terminal");
  if (child_ > 0) return;
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  setsid();
  ioctl(terminal_, TIOCSCTTY, 0);
  _exit(body());
}

TTerminalRun::~TTerminalRun() {
  if (child_ > 0) {
    kill(child_, SIGKILL);
    waitpid(child_, nullptr, 0);
  }
  close(terminal_);
  close(keyboard_);
}

bool TTerminalRun::Look(int milliseconds) {
  pollfd polled{keyboard_, POLLIN, 0};
  if (poll(&polled, 1, milliseconds) <= 0) return false;
  std::array<char, 4096> buffer{};
  const ssize_t count = read(keyboard_, buffer.data(), buffer.size());
  if (count > 0) shown_.append(buffer.data(), static_cast<std::size_t>(count));
  return count > 0;
}

bool TTerminalRun::Await(const std::string& text) {
  for (const auto end = TTime::now() + kPatience; TTime::now() < end;) {
    if (shown_.find(text) != std::string::npos) return true;
    Look(kGlance);
  }
  return false;
}

void TTerminalRun::Type(const std::string& keys) const {
  if (write(keyboard_, keys.data(), keys.size()) != static_cast<ssize_t>(keys.size()))
    throw std::runtime_error("the terminal takes no keys");
}

termios TTerminalRun::Settings() const {
  termios settings{};
  if (tcgetattr(terminal_, &settings) != 0) throw std::runtime_error("the terminal has no settings");
  return settings;
}

int TTerminalRun::End() {
  int status = 0;
  for (const auto end = TTime::now() + kPatience; waitpid(child_, &status, WNOHANG) == 0;) {
    if (TTime::now() > end) return kStuck;  // the destructor ends it
    Look(kGlance);
  }
  child_ = 0;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

const std::string& TTerminalRun::Shown() {
  while (Look(0)) {
  }
  return shown_;
}

std::string TTerminalRun::Screen(const std::string& shown) {
  constexpr std::string_view kClearLine = "\x1b[K";
  std::string lines, line;
  std::size_t column = 0;
  for (std::size_t i = 0; i < shown.size(); ++i) {
    if (shown[i] == '\r') {
      column = 0;
    } else if (shown[i] == '\b') {
      column -= std::min<std::size_t>(column, 1);
    } else if (shown[i] == '\n') {
      lines += line + '\n';
      line.clear();
      column = 0;
    } else if (shown.compare(i, kClearLine.size(), kClearLine) == 0) {
      line.resize(column);
      i += kClearLine.size() - 1;
    } else {
      line.replace(std::min(column, line.size()), 1, 1, shown[i]);
      ++column;
    }
  }
  return lines + line;
}

}  // namespace velmora::testing
