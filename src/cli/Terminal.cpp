// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/Terminal.h"

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>

#include "util/Errors.h"

namespace velmora {

namespace {

constexpr char kTerminal[] = "/dev/tty";
constexpr char kInterrupt = 3;   // Ctrl+C
constexpr char kEraseLine = 21;  // Ctrl+U
constexpr char kEndOfInput = 4;  // Ctrl+D
constexpr char kErase[] = "\b\x7f";

class TTerminal {
 public:
  explicit TTerminal(bool secret) : file_(open(kTerminal, O_RDWR | O_CLOEXEC)) {
    if (file_ < 0) RaiseError("There is no terminal to ask on");
    if (!secret) return;
    if (tcgetattr(file_, &before_) != 0) RaiseError("The terminal cannot be asked without showing the answer");
    changed_ = true;
    termios silent = before_;
    silent.c_lflag &= ~static_cast<tcflag_t>(ECHO | ISIG | ICANON);
    tcsetattr(file_, TCSAFLUSH, &silent);
  }
  ~TTerminal() {
    if (changed_) tcsetattr(file_, TCSAFLUSH, &before_);
    close(file_);
  }
  TTerminal(const TTerminal&) = delete;
  TTerminal& operator=(const TTerminal&) = delete;

  void Write(std::string_view text) const {
    if (write(file_, text.data(), text.size()) < 0) RaiseError("Cannot write to the terminal");
  }
  std::string ReadLine() const {
    std::string line;
    for (char c = 0; ReadByte(c);) {
      if (c == '\n' || c == '\r') return line;
      if (changed_ && (c == kInterrupt || c == kEndOfInput)) break;
      if (changed_ && (c == kErase[0] || c == kErase[1])) {
        while (!line.empty() && (line.back() & 0xC0) == 0x80) line.pop_back();  // a character is several bytes
        if (!line.empty()) line.pop_back();
      } else if (changed_ && c == kEraseLine) {
        line.clear();
      } else {
        line += c;
      }
    }
    throw EAbort();
  }

 private:
  bool ReadByte(char& c) const {
    ssize_t count = 0;
    do count = read(file_, &c, 1);
    while (count < 0 && errno == EINTR);
    return count == 1;
  }

  int file_;
  bool changed_ = false;
  termios before_{};
};

}  // namespace

bool HasTerminal() {
  const int file = open(kTerminal, O_RDWR | O_CLOEXEC);
  if (file < 0) return false;
  close(file);
  return true;
}

std::string AskOnTerminal(const std::string& question, bool secret) {
  const TTerminal terminal(secret);
  terminal.Write(question);
  std::string line;
  RunGuarded([&] { line = terminal.ReadLine(); },
             [&] {
               if (secret) terminal.Write("\n");
             });
  return line;
}

}  // namespace velmora
