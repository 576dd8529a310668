// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What a backend that talks to a MySQL server brings with it; TServerConnection makes a connection of it.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "mysqlclient/MySQLValues.h"
#include "util/Errors.h"
#include "util/Lists.h"

namespace velmora {

class TMyConnection;

// A way to a server.
struct TMyRoute {
  std::string socket = {};  // path of the local server's; empty: by TCP, to the two below
  std::string host = {};
  int port = 0;

  bool IsLocal() const { return !socket.empty(); }
  std::string Name() const { return IsLocal() ? socket : host + ":" + std::to_string(port); }
};
// The ways to the server of `connection`, to be tried in this order, each where the former reaches nobody. A port that
// is given is the only way, and so is a socket: there may be several servers, and another one must not be taken.
std::vector<TMyRoute> RoutesTo(const TMyConnection& connection);

// Seconds that reaching a server and its login may take; no more than the time that it may be silent afterwards, where
// that has an end. 0 is for ever.
int LoginTime(const TMyConnection& connection, int answer_time);
// The key of Options.ServerPublicKey, empty without one. Raises for a file that holds none, and if it cannot be read.
std::string ServerPublicKey(const TMyConnection& connection);

// The rows of a result, kept by the backend or still on the wire.
class TMyRows {
 public:
  TMyRows() = default;
  TMyRows(const TMyRows&) = delete;
  TMyRows& operator=(const TMyRows&) = delete;
  virtual ~TMyRows() = default;  // raises nothing

  virtual const std::vector<TMyColumn>& Columns() const = 0;
  virtual bool Next() = 0;  // to the next row, the first one at first; false after the last
  // Of the current row, until the next operation; nothing is null.
  virtual std::optional<std::string_view> Value(std::size_t column) const = 0;

  // Of rows that are kept: how many there are; the first is next.
  virtual std::size_t Count() const = 0;
  virtual void First() = 0;
  // Of rows on the wire: those that are still to come are thrown away.
  virtual void Skip() = 0;
};

// An error as a server or its client tells it; one that came without a text gets one that shows the number.
EMySqlException ToldError(int number, const std::string& text);

// Errors are EMySqlException. After one that leaves nobody to talk to, or no way to understand each other, the wire is
// not open.
class TMyWire {
 public:
  TMyWire() = default;
  TMyWire(const TMyWire&) = delete;
  TMyWire& operator=(const TMyWire&) = delete;
  virtual ~TMyWire() = default;  // closes, raises nothing

  // By `route`, with the other parameters and the options of `connection`. `answer_time` is how long the server
  // may be silent, in seconds; 0 is for ever. After a failure the wire is not open, and may be opened by another route.
  virtual void Open(const TMyConnection& connection, const TMyRoute& route, int answer_time) = 0;
  // How long the server may be silent in the answers to what is sent from now on.
  virtual void SetAnswerTime(int seconds) = 0;
  virtual bool IsUnchecked() const = 0;  // encrypted, and nobody has looked who the server is
  virtual bool IsOpen() const = 0;
  virtual void Close() = 0;  // raises nothing

  // Sends a statement and reads as much of the reply as says whether there are rows; they are then taken by Rows.
  virtual void Send(std::string_view sql) = 0;
  // A hint: these statements will be sent next, in this order; `at_once`: their answers may be begun with.
  virtual void Expect(const TStringList& /*statements*/, bool /*at_once*/) {}
  // Null when there are none. `keep`: all are read at once. Otherwise nothing else may be sent before the last one.
  virtual std::unique_ptr<TMyRows> Rows(bool keep) = 0;
  // After the last row, or where there are none: what else a procedure gives is thrown away.
  virtual void SkipFurther() = 0;

  virtual std::int64_t RowsAffected() const = 0;          // of a statement without rows
  virtual std::size_t WarningCount() const = 0;           // that the server has to what was answered last
  virtual std::optional<bool> InTransaction() const = 0;  // as the server has said last

  virtual std::string ServerVersion() const = 0;  // as `select version()` gives it
  virtual std::uint64_t ThreadId() const = 0;     // the server's number of this connection
  virtual int Handle() const = 0;                 // the system's number of the socket; -1: there is none
};

// The server is that of this machine, which may be reached by its socket.
bool IsLocalServer(const std::string& server);
inline constexpr int kNobodyAtSocket = 2002;  // the error of a local server that is not there
// What a server says before it hangs up, by the number of the error.
bool IsFarewell(int error);

}  // namespace velmora
