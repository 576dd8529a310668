#pragma once

// The packets and tokens of the protocol.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "support/tds/TdsBytes.h"
#include "support/tds/TdsCatalog.h"

namespace velmora::testing {

// Types of packets.
enum ETdsPacket : unsigned {
  kBatch = 1,
  kRpc = 3,
  kReply = 4,
  kAttention = 6,
  kTransaction = 14,
  kLogin = 16,
  kPrelogin = 18
};

struct TTdsRequest {
  unsigned type = 0;
  std::string body;
};

// One request out of its packets; none when the other end has closed.
std::optional<TTdsRequest> ReceiveRequest(int connection);
void SendReply(int connection, const std::string& tokens);

struct TTdsLogin {
  std::string user, password, database;
  int version = 0;       // 0x704 and so on
  bool trusted = false;  // asks for the login of the operating system
};
TTdsLogin ReadLogin(const std::string& body);

struct TTdsError {
  int number = 0;
  int severity = 16;
  std::string text;
};

// Bits of the state in a DONE.
enum ETdsDone : unsigned { kDoneMore = 1, kDoneError = 2, kDoneCount = 16, kDoneAttention = 32 };

// Kinds of change.
enum ETdsTransaction : unsigned { kBegun = 8, kCommitted = 9, kRolledBack = 10 };

// The tokens of one reply.
class TTdsReply {
 public:
  explicit TTdsReply(int version) : version_(version) {}

  void LoginAccepted();
  void DatabaseChanged(const std::string& database);
  void TransactionChanged(ETdsTransaction kind);
  void Error(const TTdsError& error) { Message(0xAA, error); }
  void Rows(const TTdsResult& result);
  void ReturnStatus(int status);
  void Done(unsigned state, std::int64_t count = 0, bool procedure = false);

  const std::string& Tokens() const { return out_.Bytes(); }

 private:
  void Message(unsigned token, const TTdsError& message);
  void Sized(unsigned token, const TTdsWriter& body);

  int version_;
  TTdsWriter out_;
};

}  // namespace velmora::testing
