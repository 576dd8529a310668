// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The login in use since 4.1.1, for servers that announce it. For this folder only.

#include <cstdint>
#include <string>
#include <string_view>

#include "mysqlnet/MySqlSession.h"

namespace velmora {

class TMySqlCurrentHandshake {
 public:
  explicit TMySqlCurrentHandshake(TMySqlSession& session) : session_(session), net_(session.net) {}

  static bool IsAnnounced(std::uint16_t server_capabilities) { return (server_capabilities & kCurrentProtocol) != 0; }

  // With the greeting just read. Sets what capabilities are in force. Raises the server's refusal, 2012, 2026, 2059,
  // 2060, 2061.
  void Run(std::uint32_t flags);

 private:
  void ReadGreetingEnd();
  void ChooseCapabilities(std::uint32_t flags);
  void WriteHead();
  void StartTls();
  void SendResponse();
  void ReadReplies();
  void Switch();
  void ContinueSha2(std::string_view data);
  void SendPassword(char key_request);
  std::string Token() const;
  void Answer();
  void Send(std::string_view bytes);
  [[noreturn]] void Refuse();

  TMySqlSession& session_;
  TMySqlNet& net_;
  std::uint32_t capabilities_ = 0;  // the server's
  std::string plugin_;              // the way to log in
  std::string nonce_;
};

}  // namespace velmora
