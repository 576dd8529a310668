// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <sys/types.h>
#include <termios.h>

#include <functional>
#include <string>
#include <vector>

namespace velmora::testing {

// A process whose controlling terminal is a new one, with somebody who looks at it and types. Ended with this object.
class TTerminalRun {
 public:
  explicit TTerminalRun(const std::vector<std::string>& command);  // with its standard streams on the terminal
  // A copy of the test's own process that does `body`; its exit status is what that gives.
  explicit TTerminalRun(const std::function<int()>& body);
  ~TTerminalRun();
  TTerminalRun(const TTerminalRun&) = delete;
  TTerminalRun& operator=(const TTerminalRun&) = delete;

  // Waits until `text` has been shown. False when that does not happen within seconds.
  bool Await(const std::string& text);
  void Type(const std::string& keys) const;
  termios Settings() const;
  termios FirstSettings() const { return first_; }  // before the program began
  int End();                   // waits; the exit status, or less than 0 the signal that ended it, or -1000
  const std::string& Shown();  // all that was written so far, as it came
  static std::string Screen(const std::string& shown);  // what is to be seen of it: lines, the last written over

 private:
  void Start(const std::function<int()>& body);
  bool Look(int milliseconds);  // false when nothing comes

  int keyboard_ = -1;
  int terminal_ = -1;  // held open so that its settings outlive the process
  termios first_{};
  pid_t child_ = 0;
  std::string shown_;
};

}  // namespace velmora::testing
