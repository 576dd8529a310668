#pragma once

// A server of the Tabular Data Stream protocol, versions 7.1 to 7.4 without encryption, for tests that go through a
// real driver: logins, statements, transactions, listing of databases and tables.

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "support/ScratchFolder.h"
#include "support/tds/TdsCatalog.h"
#include "support/tds/TdsTokens.h"

namespace velmora::testing {

class TFakeTdsServer {
 public:
  TFakeTdsServer();  // listens on a free port of the loopback interface, and begins to serve
  ~TFakeTdsServer();
  TFakeTdsServer(const TFakeTdsServer&) = delete;
  TFakeTdsServer& operator=(const TFakeTdsServer&) = delete;

  int Port() const { return port_; }
  TTdsTable Table(const std::string& name) { return {catalog_, name}; }
  TTdsCatalog& Catalog() { return catalog_; }

  // What came, in order: the texts of batches; procedures as "exec name @a=value, ..."; requests of the transaction
  // manager as "(begin)", "(commit)", "(rollback)"; logins as "(login version user database)".
  std::vector<std::string> Received() const;

  // Set before the first connection.
  std::string user = "sa", password = "Zwölf;{=}";
  std::vector<std::string> databases = {"master", "shop", "archive"};
  std::atomic<int> newest{0x704};  // version of the protocol that it speaks, for 7.4
  // The error that a statement with this text in it gets.
  std::string refused;  // empty: none
  TTdsError refusal;

  // How many requests of a connection are answered, and whether it is closed behind them or falls silent. The first two
  // are those of the login.
  std::atomic<int> answers{1 << 30};
  std::atomic<bool> then_silent{false};
  // Changes the tokens of a reply to a statement before they leave; the connection is closed behind them.
  std::function<void(std::string& tokens)> tamper;

 private:
  friend class TTdsSession;
  void Accept();
  void Note(const std::string& text);

  TScratchFolder folder_;
  TTdsCatalog catalog_;
  int listener_ = -1;
  int port_ = 0;
  mutable std::mutex mutex_;
  std::vector<std::string> received_;
  std::vector<int> connections_;
  std::vector<std::thread> sessions_;
  std::thread acceptor_;
};

}  // namespace velmora::testing
