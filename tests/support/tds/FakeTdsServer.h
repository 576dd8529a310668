// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A server of the Tabular Data Stream protocol, version 7.4 without encryption, for tests that go through a real
// driver. It has no tables: it gives the answers that a test has laid out, and notes what it is asked.

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "support/PlayedAnswers.h"

namespace velmora::testing {

class TFakeTdsServer {
 public:
  TFakeTdsServer();  // listens on a free port of the loopback interface, and begins to serve
  ~TFakeTdsServer();
  TFakeTdsServer(const TFakeTdsServer&) = delete;
  TFakeTdsServer& operator=(const TFakeTdsServer&) = delete;

  int Port() const { return port_; }

  // What came, in order: the texts of batches; procedures as "exec name @a='value', ..."; requests of the transaction
  // manager as "(begin)", "(commit)", "(rollback)"; logins as "(login user database)".
  // Each call gives what is new.
  std::vector<std::string> TakeReceived();

  // Set before the first connection.
  std::string user = "sa", password = "Zwölf;{=}";
  std::vector<std::string> databases = {"master", "shop", "archive"};
  // By batch, or procedure, as they are noted. Other statements do nothing, and other queries are refused.
  TPlayedAnswers answers;

  // How many requests of a connection are answered, and whether it is closed after them or falls silent. The first two
  // are those of the login.
  std::atomic<int> served{1 << 30};
  std::atomic<bool> then_silent{false};
  // Changes the tokens of a reply to a statement before they leave; the connection is closed after them.
  std::function<void(std::string& tokens)> tamper;

 private:
  class TSession;
  void Accept();
  void Note(const std::string& text);

  int listener_ = -1;
  int port_ = 0;
  std::mutex mutex_;
  std::vector<std::string> received_;
  std::vector<int> connections_;
  std::vector<std::thread> sessions_;
  std::thread acceptor_;
};

}  // namespace velmora::testing
