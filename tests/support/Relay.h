// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace velmora::testing {

// What becomes of a connection at a statement.
enum class EFate {
  Pass,
  CutBefore,  // the server never gets it
  CutWithin,  // the client gets half of what comes of the answer at once
  CutAfter    // the server has done it, and the client gets nothing of the answer
};

// Stands between clients and a MySQL server, both on loopback, and reads along: `watch` is told each statement before
// the server gets it, on the relay's own thread, and may do what it likes to the server. Without TLS only.
class TRelay {
 public:
  TRelay(int server_port, std::function<EFate(const std::string& statement)> watch);
  ~TRelay();  // cuts what is left
  TRelay(const TRelay&) = delete;
  TRelay& operator=(const TRelay&) = delete;

  int Port() const { return port_; }
  void LeadTo(int server_port) { server_port_ = server_port; }  // who connects from now on

 private:
  struct TLink {
    int client;
    int server;
    std::string sent;  // by the client, not yet a whole packet
    EFate fate = EFate::Pass;
  };

  void Serve();
  void Accept();
  static bool FromClient(TLink& link, const std::function<EFate(const std::string&)>& watch);
  static bool FromServer(TLink& link);

  std::atomic<int> server_port_;
  std::function<EFate(const std::string&)> watch_;
  int listener_;
  int port_ = 0;
  int stop_[2] = {-1, -1};
  std::vector<TLink> links_;
  std::thread thread_;
};

}  // namespace velmora::testing
