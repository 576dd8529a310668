// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// One connection to a MySQL server: login, commands, and the first reply to a query. What rows a query gives is read
// by TMySqlResultSet. Another holder of rows, `TRows`, and prepared statements are not built.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "mysqlnet/MySqlNet.h"
#include "mysqlnet/MySqlVioTls.h"

namespace velmora {

// Capabilities that client and server tell each other, by their published numbers.
enum EMySqlCapability : std::uint32_t {
  kLongPassword = 0x1,
  kLongFlag = 0x4,
  kConnectWithDatabase = 0x8,
  kCompression = 0x20,
  kLocalFiles = 0x80,
  kCurrentProtocol = 0x200,
  kTls = 0x800,
  kTransactions = 0x2000,
  kProtocol41 = 0x4000,
  kSecureConnection = 0x8000,
  kMultiResults = 0x20000,
  kPluginAuth = 0x80000,
  kDeprecateEof = 0x1000000,
  kFurtherFactors = 0x10000000
};

enum EMySqlStatus : std::uint16_t { kInTransaction = 1, kAutocommit = 2, kMoreResults = 8 };

enum EMySqlCommand : std::uint8_t { kQuit = 1, kQuery = 3 };

// What a login may show to whoever answers. Without `guarded` it shows what the server asks for. With it, and where
// others may read the line, no password leaves that could be turned back into what it was, but for the exceptions.
struct TMySqlLoginRules {
  bool guarded = false;
  bool ask_for_key = false;     // the key that the server sends may seal the password
  std::string public_key = {};  // one that may do so anyhow, and is not asked for then (PEM)
  bool old_logins = false;      // the schemes before 4.1; and the password as it is, whatever the line
};

// Servers before 4.1 and those of its first days are greeted in their own way. With `current_protocol` on, servers that
// announce the handshake in use since then get that one, and with it TLS, ways to log in by name, and a character set.
//
// Errors of the server and of the packet channel are EMySqlException, those of the transport SocketException. After a
// failed Connect there is no transport. A session that is `net.Lost()` can only be closed.
class TMySqlSession {
 public:
  TMySqlSession() = default;
  ~TMySqlSession() { Close(); }
  TMySqlSession(const TMySqlSession&) = delete;
  TMySqlSession& operator=(const TMySqlSession&) = delete;

  // --- Set by the caller; the first five are what an empty argument of Connect stands for
  std::string host;
  std::string user;
  std::string password;
  std::string database;
  int port = 0;
  std::uint32_t client_flag = 0;  // capabilities asked for, and after Connect those in force
  int protocol = 0;               // 0 and 1 TCP, 3 named pipe; otherwise the caller has set `net.vio`
  int connect_timeout = 0;        // seconds, as for TMySqlVio
  int command_timeout = 0;
  bool current_protocol = false;
  std::uint8_t charset = 45;               // of the current handshake; this one is utf8mb4
  TMySqlLoginRules login_rules;            // who breaks them gets 2061 from Connect
  TMySqlTls tls;                           // of the current handshake; other servers have none, if it is required
  std::string local_file;                  // the one file that the server may ask for, once; empty: none
  std::size_t max_result_size = 1U << 30;  // bytes of rows that a result may keep in memory

  // --- Told by the server
  TMySqlNet net;
  std::string server_version;
  std::uint32_t thread_id = 0;
  std::uint16_t server_capabilities = 0;
  std::uint8_t server_language = 0;
  std::uint16_t server_status = 2;
  std::string scramble;  // 20 bytes, or the 8 that the server knows
  std::uint64_t affected_rows = 0;
  std::uint64_t insert_id = 0;
  std::uint64_t field_count = 0;
  std::uint64_t extra_info = 0;  // what a result's head says after the number of fields
  std::uint16_t warning_count = 0;
  std::string info;         // the last message
  bool has_result = false;  // rows are still to be read

  // Empty texts and port 0 take the stored values; `pipe` is the socket's path for protocol 3. On a connected session
  // the old connection is closed first.
  void Connect(const std::string& host, const std::string& user, const std::string& password,
               const std::string& database, int port, std::uint32_t flags, const std::string& pipe);
  // Takes leave of the server where that makes sense, closes and frees the transport. Raises nothing.
  void Close();
  // Sends a command with the first `length` bytes of `data`. Unless `skip_check`, its reply is read: an error is
  // raised. Does nothing at all without a transport; raises 2014 while rows are still to be read.
  void SimpleCommand(std::uint8_t command, std::string_view data, bool skip_check, std::size_t length);
  // After several commands that were sent without reading: the reply that is read next is that of the oldest one.
  // Not with compression, whose frames are numbered through one command.
  void AwaitReply();
  // Reads the reply to a query up to where its columns begin, if it has any; otherwise up to its end.
  void ReadQueryResult();

  // The columns and ends of results have the form in use since 4.1.
  bool UsesProtocol41() const { return current_ || (client_flag & kProtocol41) != 0; }
  bool IsEncrypted() const { return current_ && (client_flag & kTls) != 0; }
  bool HasDeprecatedEof() const { return current_ && (client_flag & kDeprecateEof) != 0; }
  // After the result that was read stands another one.
  bool HasMoreResults() const { return UsesProtocol41() && (server_status & kMoreResults) != 0; }

 private:
  friend class TMySqlCurrentHandshake;
  friend class TMySqlResultSet;

  // What this connection was made with.
  struct TLogin {
    std::string user;
    std::string password;
    std::string database;
  };

  void ResetReply();
  void OpenTransport(const std::string& pipe);
  void ResetTold();
  void ReadGreeting();
  void LogIn(std::uint32_t flags);
  void SendLogin();
  void WritePassword();
  void CheckAuth();
  void AllowOldLogin() const;
  void AnswerLongRequest();
  void ReadOk();
  void SendLocalFile(const std::string& name);
  void EndLocalFile();
  [[noreturn]] void RefuseLocalFile(const std::string& name);

  TLogin login_;
  bool connected_ = false;
  bool has_full_scramble_ = false;
  bool current_ = false;  // the current handshake was used
};

}  // namespace velmora
