// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace velmora::testing {

// The path of a program that may stand outside the search path of a normal user; `folders`, parted by ":", are looked
// into last. Raises std::runtime_error that names `package` where there is none.
std::string FindProgram(const std::string& name, const std::string& package, const std::string& folders = {});

// Runs a program with its output at the end of `log`. It dies with this process. Gives its id.
pid_t SpawnServer(const std::vector<std::string>& command, const std::string& log);

std::string FileEnd(const std::string& path);  // the last few thousand bytes, empty without a file

// A server of the test program's own, ended with this object.
class TServerProcess {
 public:
  TServerProcess() = default;
  ~TServerProcess() { Stop(); }
  TServerProcess(const TServerProcess&) = delete;
  TServerProcess& operator=(const TServerProcess&) = delete;

  void Start(const std::vector<std::string>& command, const std::string& log) { pid_ = SpawnServer(command, log); }
  bool Running();
  void Kill();                     // as if the machine had lost its power
  void Stop();                     // as an administrator does it
  void Freeze(bool frozen) const;  // it hangs, and goes on

 private:
  pid_t pid_ = 0;
};

}  // namespace velmora::testing
