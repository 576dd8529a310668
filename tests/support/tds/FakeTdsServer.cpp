// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/tds/FakeTdsServer.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "support/tds/TdsReply.h"
#include "util/Text.h"

namespace velmora::testing {

// One connection, from its login to its end.
class TFakeTdsServer::TSession {
 public:
  TSession(TFakeTdsServer& server, int connection) : server_(server), connection_(connection) {}

  void Serve() {
    for (int left = server_.served; left > 0 && !ended_; --left) {
      const std::optional<TTdsRequest> request = ReceiveRequest(connection_);
      if (!request) return;
      std::string tokens = Answer(*request);
      if (server_.tamper && request->type != kPrelogin && request->type != kLogin) {
        server_.tamper(tokens);
        ended_ = true;
      }
      SendReply(connection_, tokens);
    }
  }

 private:
  // Each gives the tokens of its reply.
  std::string Answer(const TTdsRequest& request) {
    // Version 12.0, no encryption, no instance, nothing more.
    static constexpr std::string_view kHello("\x00\x00\x0B\x00\x06\x01\x00\x11\x00\x01\xFF\x0C\x00\x00\x00\x00\x00\x02",
                                             18);
    if (request.type == kPrelogin) return std::string(kHello);
    if (request.type == kLogin) return Login(ReadLogin(request.body));
    if (request.type == kAttention) return TTdsReply().Done(kDoneAttention).Tokens();
    TTdsReader in(request.body);
    in.Raw(in.Number<std::uint32_t>() - 4);  // ALL_HEADERS
    if (request.type == kBatch) return Played(FromUtf16(in.Rest()));
    if (request.type == kRpc) return Procedure(in);
    return Transaction(in);
  }

  std::string Login(const TTdsLogin& login) {
    server_.Note("(login " + (login.trusted ? "trusted" : login.user) + " " + login.database + ")");
    const std::string database = login.database.empty() ? "master" : login.database;
    ended_ = true;
    if (login.trusted || login.user != server_.user || login.password != server_.password)
      return Refused(18456, "Login failed for user '" + login.user + "'.");
    if (std::ranges::find(server_.databases, database) == server_.databases.end())
      return Refused(4060, "Cannot open database \"" + database + "\" requested by the login. The login failed.");
    ended_ = false;
    return TTdsReply().LoginAccepted(database).Done(0).Tokens();
  }

  static std::string Refused(int number, const std::string& text) {
    return TTdsReply().Error(number, text).Done(kDoneError).Tokens();
  }

  std::string Played(const std::string& sql) {
    server_.Note(sql);
    const auto found = server_.answers.find(sql);
    if (found == server_.answers.end())
      return SameText(sql.substr(0, 6), "select") ? Refused(208, "No answer is known to " + sql)
                                                  : TTdsReply().Done(0).Tokens();
    const TPlayedAnswer& answer = found->second;
    if (answer.error != 0) return Refused(answer.error, answer.message);
    if (answer.columns.empty()) return TTdsReply().Done(kDoneCount, answer.affected).Tokens();
    return TTdsReply().Rows(answer).Done(kDoneCount, std::ssize(answer.rows)).Tokens();
  }

  // A call by name, with texts as its arguments: what drivers send for lists of tables and databases.
  std::string Procedure(TTdsReader& in) {
    constexpr unsigned kNVarChar = 0xE7, kNullSize = 0xFFFF, kCollationSize = 5;
    std::string call = "exec " + in.Text(in.U16());
    in.U16();  // options
    for (const char* separator = " "; !in.AtEnd();) {
      const std::string argument = in.Text(in.U8());
      in.U8();  // it is no result
      if (in.U8() != kNVarChar) return Refused(8009, "Only texts are taken as arguments.");
      in.Raw(2 + kCollationSize);
      const unsigned size = in.U16();
      if (size == kNullSize) continue;
      call += std::exchange(separator, ", ") + argument + "='" + in.Text(size / 2) + "'";
    }
    server_.Note(call);
    const auto found = server_.answers.find(call);
    if (found == server_.answers.end()) return Refused(2812, "No answer is known to " + call);
    return TTdsReply().Rows(found->second).ReturnStatus(0).Done(0, 0, true).Tokens();
  }

  // A request of the transaction manager.
  std::string Transaction(TTdsReader& in) {
    constexpr unsigned kBeginRequest = 5, kCommitRequest = 7;
    const unsigned kind = in.U16();
    TTdsReply reply;
    bool begin = kind == kBeginRequest;
    if (!begin) {
      server_.Note(kind == kCommitRequest ? "(commit)" : "(rollback)");
      reply.TransactionChanged(kind == kCommitRequest ? kCommitted : kRolledBack);
      in.Text(in.U8());  // the transaction's name
      begin = (in.U8() & 1) != 0;
    }
    if (begin) {
      server_.Note("(begin)");
      reply.TransactionChanged(kBegun);
    }
    return reply.Done(0).Tokens();
  }

  TFakeTdsServer& server_;
  int connection_;
  bool ended_ = false;
};

TFakeTdsServer::TFakeTdsServer() {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  auto* plain = reinterpret_cast<sockaddr*>(&address);
  listener_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (bind(listener_, plain, size) != 0 || listen(listener_, 16) != 0 || getsockname(listener_, plain, &size) != 0)
    throw std::runtime_error("no port to listen on");
  port_ = ntohs(address.sin_port);
  acceptor_ = std::thread([this] { Accept(); });
}

TFakeTdsServer::~TFakeTdsServer() {
  shutdown(listener_, SHUT_RDWR);
  acceptor_.join();
  for (const int connection : connections_) shutdown(connection, SHUT_RDWR);
  for (std::thread& session : sessions_) session.join();
  for (const int connection : connections_) close(connection);
  close(listener_);
}

void TFakeTdsServer::Accept() {
  for (int connection; (connection = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC)) >= 0;) {
    connections_.push_back(connection);
    sessions_.emplace_back([this, connection] {
      TSession(*this, connection).Serve();
      if (!then_silent) shutdown(connection, SHUT_RDWR);
    });
  }
}

void TFakeTdsServer::Note(const std::string& text) {
  const std::lock_guard lock(mutex_);
  received_.push_back(text);
}

std::vector<std::string> TFakeTdsServer::TakeReceived() {
  const std::lock_guard lock(mutex_);
  return std::exchange(received_, {});
}

}  // namespace velmora::testing
