#pragma once

// A MySQL server that plays a script, byte for byte, and the bytes that such scripts are made of.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "mysqlnet/MySqlVio.h"

namespace velmora::testing {

std::string Int(std::uint64_t value, std::size_t bytes);  // the lowest byte first
std::string Text(const std::string& text);                // length in one byte, text
std::string Zeros(std::size_t count);
std::string Packet(int number, const std::string& payload);
std::string ErrorPacket(int number, int error, const std::string& text);

inline const std::string kScramble = "abcdefghijklmnopqrst";
inline constexpr std::uint32_t kOldServer = 0x202C;     // 4.0: long flag, database, compression, transactions
inline constexpr std::uint32_t kNewPasswords = 0xA02C;  // the same with the passwords of 4.1
inline constexpr std::uint32_t kFirst41 = 0xE02C;       // 4.1.0: its protocol without the current handshake
inline constexpr std::uint32_t kCurrent = 0x108EF7FFU;  // a server of today, without TLS and the later end of rows

// Greetings, as packet 0. The short one has 8 bytes of scramble, the old one 20.
std::string ShortGreeting(std::uint32_t capabilities);
std::string OldGreeting(std::uint32_t capabilities);
std::string CurrentGreeting(std::uint32_t capabilities, const std::string& plugin = "mysql_native_password");

// The client's answer to the last one.
std::string CurrentLogin(std::uint32_t flags, const std::string& user, const std::string& token,
                         const std::string& database, const std::string& plugin = "mysql_native_password");

// What server and client say in turn. Whoever speaks out of turn or says something else is a fault.
class TDialogue {
 public:
  TDialogue() : state_(std::make_shared<TState>()) {}

  TDialogue& Server(const std::string& bytes);
  TDialogue& Client(const std::string& bytes);
  // The server ends after so many bytes.
  TDialogue& CutAt(std::size_t bytes);

  std::unique_ptr<TMySqlVio> NewVio() const;
  std::size_t ServerBytes() const;
  std::string Fault() const;  // the first one; empty: as in the script, up to where the client ended
  bool Done() const;          // all was said
  bool SaidGoodbye() const { return state_->goodbye; }
  const std::vector<int>& Timeouts() const { return state_->timeouts; }

 private:
  class TVio;
  struct TTurn {
    bool server;
    std::string bytes;
  };
  struct TState {
    std::vector<TTurn> turns;
    std::size_t turn = 0;
    std::size_t position = 0;
    std::size_t left = static_cast<std::size_t>(-1);
    std::string fault;
    bool goodbye = false;
    std::vector<int> timeouts;
  };

  TDialogue& Add(bool server, const std::string& bytes);

  std::shared_ptr<TState> state_;
};

// Gives recorded bytes and keeps what it is sent.
class TMemoryVio final : public TMySqlVio {
 public:
  TMemoryVio(std::string given, std::string& sent) : given_(std::move(given)), sent_(sent) {}

  void SetTimeout(int) override {}
  void Connect() override {}
  void Close() override {}
  std::size_t Read(char* buffer, std::size_t offset, std::size_t count) override;
  std::size_t Write(const char* buffer, std::size_t offset, std::size_t count) override;

 private:
  std::string given_;
  std::size_t position_ = 0;
  std::string& sent_;
};

}  // namespace velmora::testing
