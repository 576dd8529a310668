// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/MySqlDialogue.h"

#include <algorithm>
#include <stdexcept>

#include "util/Format.h"

namespace velmora::testing {

std::string Int(std::uint64_t value, std::size_t bytes) {
  std::string text;
  for (std::size_t i = 0; i < bytes; ++i) text += static_cast<char>(value >> (8 * i) & 0xFF);
  return text;
}

std::string Packet(int number, const std::string& payload) {
  return Int(payload.size(), 3) + Int(static_cast<std::uint64_t>(number), 1) + payload;
}

namespace {

// What stands up to `end`, which goes too.
std::string_view TakenUpTo(std::string_view& text, char end) {
  const std::size_t size = std::min(text.find(end), text.size());
  const std::string_view taken = text.substr(0, size);
  text.remove_prefix(std::min(size + 1, text.size()));
  return taken;
}

std::string HexBytes(std::string_view digits) {
  std::string bytes;
  for (std::size_t i = 0; i < digits.size(); i += 2)
    bytes += static_cast<char>(std::stoi(std::string(digits.substr(i, 2)), nullptr, 16));
  return bytes;
}

// The first item of a notation, without what multiplies it.
std::string TakeItem(std::string_view& notation, const TWireNames& names) {
  const char first = notation.front();
  if (first != '\'' && first != '"' && first != '{') {
    const std::size_t size = std::min(notation.find_first_of(" *"), notation.size());
    const std::string_view digits = notation.substr(0, size);
    notation.remove_prefix(size);
    return HexBytes(digits);
  }
  notation.remove_prefix(1);
  const std::string_view text = TakenUpTo(notation, first == '{' ? '}' : first);
  if (first == '{') {
    const auto found = names.find(text);
    if (found == names.end()) throw std::runtime_error("no bytes have the name " + std::string(text));
    return found->second;
  }
  return (first == '"' ? Int(text.size(), 1) : "") + std::string(text);
}

}  // namespace

std::string Wire(std::string_view notation, const TWireNames& names) {
  std::string bytes;
  while (!notation.empty()) {
    if (notation.front() == ' ') {
      notation.remove_prefix(1);
      continue;
    }
    const std::string item = TakeItem(notation, names);
    const std::string_view times = TakenUpTo(notation, ' ');
    for (int i = times.empty() ? 1 : std::stoi(std::string(times.substr(1))); i > 0; --i) bytes += item;
  }
  return bytes;
}

// --- Dialogues

class TDialogue::TVio final : public TMySqlVio {
 public:
  explicit TVio(std::shared_ptr<TState> state) : state_(std::move(state)) {}

  bool IsPrivate() const override { return state_->is_private; }
  void SetTimeout(int seconds) override { state_->timeouts.push_back(seconds); }
  void Connect() override {}
  void Close() override {}

  std::size_t Read(char* buffer, std::size_t offset, std::size_t count) override {
    TState& state = *state_;
    std::size_t done = 0;
    while (done < count && state.left > 0 && state.turn < state.turns.size() && state.turns[state.turn].server) {
      const std::string& bytes = state.turns[state.turn].bytes;
      const std::size_t step = std::min({count - done, bytes.size() - state.position, state.left});
      bytes.copy(buffer + offset + done, step, state.position);
      done += step;
      state.left -= step;
      Go(step);
    }
    return done;
  }

  std::size_t Write(const char* buffer, std::size_t offset, std::size_t count) override {
    TState& state = *state_;
    const std::string bytes(buffer + offset, count);
    if (state.turn == state.turns.size() && bytes == Packet(0, "\x01")) {
      state.goodbye = true;
      return count;
    }
    if (state.left == 0) return 0;
    if (state.turn == state.turns.size() || state.turns[state.turn].server)
      Blame("the client spoke out of turn: " + Shown(bytes));
    else if (const std::string& wanted = state.turns[state.turn].bytes;
             wanted.compare(state.position, count, bytes) != 0)
      Blame("the client said\n" + Shown(bytes) + " in place of\n" + Shown(wanted.substr(state.position, count)));
    else
      Go(count);
    return count;
  }

 private:
  static std::string Shown(const std::string& bytes) {
    std::string text;
    for (const char c : bytes.substr(0, 400)) text += Format("%02x ", static_cast<unsigned char>(c));
    return text;
  }
  void Blame(const std::string& fault) {
    if (state_->fault.empty()) state_->fault = "turn " + std::to_string(state_->turn) + ": " + fault;
  }
  void Go(std::size_t step) {
    state_->position += step;
    if (state_->position < state_->turns[state_->turn].bytes.size()) return;
    ++state_->turn;
    state_->position = 0;
  }

  std::shared_ptr<TState> state_;
};

TDialogue& TDialogue::Add(bool server, const std::string& bytes) {
  std::vector<TTurn>& turns = state_->turns;
  if (!turns.empty() && turns.back().server == server)
    turns.back().bytes += bytes;
  else
    turns.push_back({server, bytes});
  return *this;
}

TDialogue& TDialogue::CutAt(std::size_t bytes) {
  state_->left = bytes;
  return *this;
}

TDialogue& TDialogue::OnPrivateLine(bool is_private) {
  state_->is_private = is_private;
  return *this;
}

std::unique_ptr<TMySqlVio> TDialogue::NewVio() const { return std::make_unique<TVio>(state_); }

std::size_t TDialogue::ServerBytes() const {
  std::size_t count = 0;
  for (const TTurn& turn : state_->turns)
    if (turn.server) count += turn.bytes.size();
  return count;
}

bool TDialogue::Done() const { return state_->turn == state_->turns.size() && state_->fault.empty(); }

// --- Memory

std::size_t TMemoryVio::Read(char* buffer, std::size_t offset, std::size_t count) {
  const std::size_t step = given_.copy(buffer + offset, count, position_);
  position_ += step;
  return step;
}

std::size_t TMemoryVio::Write(const char* buffer, std::size_t offset, std::size_t count) {
  sent_.append(buffer + offset, count);
  return count;
}

}  // namespace velmora::testing
