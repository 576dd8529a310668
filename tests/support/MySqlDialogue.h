// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A MySQL server that plays a script, byte for byte, and the bytes that such scripts are made of.

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "mysqlnet/MySqlVio.h"

namespace velmora::testing {

std::string Int(std::uint64_t value, std::size_t bytes);  // the lowest byte first
std::string Packet(int number, const std::string& payload);

// Bytes as a reader can take them in, parted by blanks: 0A FF00 in hex, 'text' as it stands, "text" with its length in
// front, {name} one of `names`, and *13 after hex or text for as many of it. Raises std::runtime_error otherwise.
using TWireNames = std::map<std::string, std::string, std::less<>>;
std::string Wire(std::string_view notation, const TWireNames& names = {});

// What server and client say in turn. Whoever speaks out of turn or says something else is a fault.
class TDialogue {
 public:
  TDialogue() : state_(std::make_shared<TState>()) {}

  TDialogue& Server(const std::string& bytes) { return Add(true, bytes); }
  TDialogue& Client(const std::string& bytes) { return Add(false, bytes); }
  TDialogue& CutAt(std::size_t bytes);        // the server ends after so many
  TDialogue& OnPrivateLine(bool is_private);  // that nobody else can read

  std::unique_ptr<TMySqlVio> NewVio() const;
  std::size_t ServerBytes() const;
  const std::string& Fault() const { return state_->fault; }  // empty: as in the script, up to where the client ended
  bool Done() const;                                          // all was said
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
    bool is_private = false;
    std::string fault;
    bool goodbye = false;
    std::vector<int> timeouts;
  };

  TDialogue& Add(bool server, const std::string& bytes);

  std::shared_ptr<TState> state_;
};

// A line that gives recorded bytes and keeps what it is sent.
class TMemoryVio : public TMySqlVio {
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
