// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include "support/ServerProcess.h"

namespace velmora::testing {

// The name of the server that tests run on, empty for the system's own.
std::string ChosenServer();
// True when the servers of tests are MySQL's, whose words for tests' own needs are others than MariaDB's.
bool OnMySQL();
std::string UserName();  // of this process's user at the system
// A table for a "from" that all of them know: the numbers from 1 in its column seq, in this order.
std::string Numbers(int last);

// A server of the test program's own: on loopback, with its data in a folder of its own, gone with it. The user is
// root, without a password. Faults are std::runtime_error with the end of the server's log.
//
// It is the system's MariaDB, or what the environment variable VELMORA_TEST_SERVER or `name` names of what
// scripts/fetch-server has brought.
//
// Should the program die, the server dies with it, and its folder is cleared away by the next server that is started.
class TPrivateServer {
 public:
  // Started, with these options besides the usual ones.
  explicit TPrivateServer(std::vector<std::string> options = {}, std::string name = ChosenServer());
  ~TPrivateServer();  // ended
  TPrivateServer(const TPrivateServer&) = delete;
  TPrivateServer& operator=(const TPrivateServer&) = delete;

  // The one that tests share: started by the first call, ended with the program. Who stops it starts it again.
  static TPrivateServer& Shared();

  const std::string& Socket() const { return socket_; }
  int Port() const { return port_; }

  void Kill();                                           // as if the machine had lost its power
  void Stop();                                           // as an administrator does it
  void Freeze(bool frozen) { process_.Freeze(frozen); }  // it hangs, and goes on
  void Restart();                                        // with the same data, port and socket, whether it runs or not

 private:
  void Start();
  void Launch();
  bool Ready();  // waits; false when the server ended instead
  std::string LogEnd() const;
  void RemoveFolder();

  std::vector<std::string> options_;
  std::string name_;
  std::string folder_;
  std::string socket_;
  int lock_ = -1;
  int port_ = 0;
  TServerProcess process_;
};

// A port of 127.0.0.1 on which nothing listens at the moment.
int FreePort();

}  // namespace velmora::testing
