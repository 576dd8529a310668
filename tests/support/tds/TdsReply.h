// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Logins as they come, and the tokens of replies.

#include <cstdint>
#include <string>

#include "support/PlayedAnswers.h"
#include "support/tds/TdsWire.h"

namespace velmora::testing {

struct TTdsLogin {
  std::string user, password, database;
  bool trusted = false;  // asks for the login of the operating system
};
TTdsLogin ReadLogin(const std::string& body);

// Bits of the state in a DONE.
enum ETdsDone : unsigned { kDoneError = 2, kDoneCount = 16, kDoneAttention = 32 };

// Kinds of change.
enum ETdsTransaction : unsigned { kBegun = 8, kCommitted = 9, kRolledBack = 10 };

// The tokens of one reply, by version 7.4 of the protocol.
class TTdsReply {
 public:
  TTdsReply& LoginAccepted(const std::string& database);
  TTdsReply& TransactionChanged(ETdsTransaction kind);
  TTdsReply& Error(int number, const std::string& text) { return Message(0xAA, number, 16, text); }
  TTdsReply& Rows(const TPlayedAnswer& answer);
  TTdsReply& ReturnStatus(int status);
  TTdsReply& Done(unsigned state, std::int64_t count = 0, bool procedure = false);

  const std::string& Tokens() const { return out_.Bytes(); }

 private:
  TTdsReply& Message(unsigned token, int number, unsigned severity, const std::string& text);
  TTdsReply& Sized(unsigned token, const TTdsWriter& body);

  TTdsWriter out_;
};

}  // namespace velmora::testing
