// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The port to a MySQL client: a connection and its queries, exactly as the engine needs them. A backend is a client
// library, a native client or a file that stands for a server; it turns its own errors into EVelmora, text unchanged,
// those of a server into EMySqlException with their number.

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "core/ClientConnection.h"
#include "core/ClientRows.h"
#include "util/Lists.h"
#include "util/MySqlFacts.h"

namespace velmora {

class TMyQuery;
class TWaiting;

// By how much is asked of the server.
enum class ETls {
  Off,
  Preferred,  // where the server offers it, whoever it is; not on the local socket, which nobody else reads
  VerifyCa,   // or there is no connection; the server's certificate must be valid, for whatever name it is
  Required    // the same, and it must name the server
};

struct TMyOptions {
  bool Direct = true;     // speaks the protocol by itself where the backend can
  bool Compress = false;  // compressed frames
  bool Embedded = false;  // a server within the process
  ETls Tls = ETls::Preferred;
  bool TimesAsSent = false;  // see TMyValueReader; otherwise a moment stands for every time that it can come near to
  bool ReadAhead = true;     // sends statements that are expected before they are run, where the backend can
  int Connections = 1;       // at most so many read the creation texts of many tables side by side
  std::string CaFile;        // certificates to trust; empty means those of the system
  std::string CertFile;      // our own certificate for servers that ask for one; empty means none
  std::string KeyFile;       // its private key; empty means that it stands in CertFile
  std::string Socket;        // path of the local server's socket; empty means a usual one where there is one, else TCP
  // Over a line that others may read, a password leaves only in a form that nobody can turn back into it, unless
  bool GetServerPublicKey = false;  // the key that the server itself sends may seal it,
  std::string ServerPublicKey;      // this file's key does (PEM; empty means none),
  bool AllowOldLogin = false;       // or it may go as it is, and by the scheme of servers before 4.1
  int ReadTimeout = 600;  // seconds of silence in a login or an answer with rows before it is given up; 0 is for ever
};

// What of the options has a name for users: that of the companion's option "--NAME".
template <class TField>
struct TMyOptionName {
  const char* name;
  TField TMyOptions::*field;
};
inline constexpr const char* kTlsModes[] = {"off", "preferred", "verify-ca", "required"};  // by ETls
inline constexpr TMyOptionName<std::string> kMyTextOptions[] = {{"tls-ca", &TMyOptions::CaFile},
                                                                {"tls-cert", &TMyOptions::CertFile},
                                                                {"tls-key", &TMyOptions::KeyFile},
                                                                {"socket", &TMyOptions::Socket},
                                                                {"server-public-key", &TMyOptions::ServerPublicKey}};
inline constexpr TMyOptionName<bool> kMyFlagOptions[] = {{"get-server-public-key", &TMyOptions::GetServerPublicKey},
                                                         {"allow-old-login", &TMyOptions::AllowOldLogin}};

// The password of an account that came without one, for as long as the program runs: asked for when a server has
// refused the account, and kept once a server has taken it. Connections that are made of one another share it.
class TLatePassword {
 public:
  // `ask` gets "USER@HOST"; an empty answer leaves the refusal as it is.
  explicit TLatePassword(std::function<std::string(const std::string& account)> ask) : ask_(std::move(ask)) {}

  const std::string& Known() const { return known_; }  // empty until one is kept
  std::string Ask(const std::string& account) const { return ask_(account); }
  void Keep(const std::string& password) { known_ = password; }

 private:
  std::function<std::string(const std::string& account)> ask_;
  std::string known_;
};

// Created unconnected. Parameters are read while connecting and may be changed at any time. A backend's destructor
// disconnects and raises nothing; queries must be gone by then.
class TMyConnection : public TClientConnection {
 public:
  TMyConnection() = default;
  TMyConnection(const TMyConnection&) = delete;
  TMyConnection& operator=(const TMyConnection&) = delete;

  std::string Server;     // empty or "localhost" means the local server
  int Port = kMySqlPort;  // a local server is reached there by TCP, unless Options.Socket is set; 0: none is given
  std::string Database;   // empty means none
  std::string Username;
  std::string Password;
  int ConnectionTimeout = 15;  // seconds
  int IsolationLevel = 0;  // 0 is the server's own; from 1 read uncommitted, read committed, repeatable, serializable
  TMyOptions Options;
  std::function<void(const std::string& text)>
      Notice;                                   // called with what a user should know of the connection; optional
  std::shared_ptr<TLatePassword> LatePassword;  // where Password is empty; null means that nobody can be asked
  // How this thread waits for the server, where others need it meanwhile; null: it waits in the call. As set before
  // connecting.
  std::shared_ptr<TWaiting> Waiting;

  virtual bool InTransaction() const = 0;
  virtual void StartTransaction() = 0;
  virtual void Commit() = 0;
  virtual void Rollback() = 0;

  virtual std::unique_ptr<TMyQuery> NewQuery() = 0;
  // An unconnected one of the same backend and options; parameters and event are the caller's to set.
  virtual std::unique_ptr<TMyConnection> NewConnection() const = 0;
  // The same with the parameters of this one, but for the database: another way to the same server.
  std::unique_ptr<TMyConnection> NewSibling() const;

  // Makes sure that CancelRunning can tell which server it has to reach; a transaction does so, too. For a connection
  // at rest; nothing happens while not connected.
  virtual void PrepareToCancel() {}

  // Of a connected server: what `select version()` gives, as a rule without asking.
  virtual std::string ServerVersion();

  // Where the server was reached: a socket's path, or HOST:PORT; empty while not connected.
  virtual std::string ReachedAt() const { return {}; }

  // Two calls for other threads while one waits for a statement; both do nothing on a connection that is not open.
  // Asks the server, by a connection of its own, to break off the statement that runs, which then ends with the
  // server's error for that; one that has just ended is not touched. Returns when the server has taken the word, and
  // raises when that can't be had within seconds, or when the second connection may have reached another server.
  virtual void CancelRunning() {}
  // Ends the connection below the client, at once and without a word to the server: whoever waits gets the error of a
  // lost connection, and what the statement does to its end is not known.
  virtual void Sever() {}
  // For other threads, too: CancelRunning and, where that raises or `came_back` then says that the statement is still
  // under way, Sever. Raises nothing that `came_back` does not.
  void BreakOff(const std::function<bool()>& came_back);

  // A hint: these statements will be run next, in this order, and they change nothing. The answers of a backend that
  // reads ahead do not differ from those of one that does not, and the error of one that nobody runs never shows.
  // `at_once`: the server may begin with them while something else is done.
  virtual void ExpectStatements(const TStringList& /*statements*/, bool /*at_once*/ = false) {}

 protected:
  void CheckConnected() const;  // raises "Not connected"
  void CopyOptions(const TMyConnection& source);

 private:
  void Login() final;
};

// One statement and its rows. As a dataset it is open from Open to Close. A query may be used again and again.
class TMyQuery : public TClientRows {
 public:
  explicit TMyQuery(TMyConnection& connection) : connection_(connection) {}

  std::string SQL;
  bool UniDirectional = false;  // rows are read forward only and not kept
  bool FetchAll = true;         // all rows come with Open; otherwise in blocks of FetchRows
  int FetchRows = 25;

  TMyConnection& Connection() const { return connection_; }
  // Runs SQL and stands on the first row; open rows are closed first. A statement without a result has no fields.
  void Open();
  // Runs SQL and throws rows away, if it gives any.
  void Execute();
  std::int64_t RowsAffected() const { return rows_affected_; }  // of the last Execute

 private:
  virtual std::unique_ptr<TDataset> DoOpen() = 0;  // never null
  virtual std::int64_t DoExecute() = 0;            // gives the rows affected

  TMyConnection& connection_;
  std::int64_t rows_affected_ = 0;
};

}  // namespace velmora
