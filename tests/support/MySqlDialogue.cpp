#include "support/MySqlDialogue.h"

#include <algorithm>

namespace velmora::testing {

std::string Int(std::uint64_t value, std::size_t bytes) {
  std::string text;
  for (std::size_t i = 0; i < bytes; ++i) text += static_cast<char>(value >> (8 * i) & 0xFF);
  return text;
}

std::string Text(const std::string& text) { return Int(text.size(), 1) + text; }

std::string Zeros(std::size_t count) { return std::string(count, '\0'); }

std::string Packet(int number, const std::string& payload) {
  return Int(payload.size(), 3) + Int(static_cast<std::uint64_t>(number), 1) + payload;
}

std::string ErrorPacket(int number, int error, const std::string& text) {
  return Packet(number, "\xFF" + Int(static_cast<std::uint64_t>(error), 2) + text);
}

namespace {

std::string GreetingStart(std::uint32_t capabilities, const std::string& version) {
  return "\x0A" + version + Zeros(1) + Int(77, 4) + kScramble.substr(0, 8) + Zeros(1) + Int(capabilities & 0xFFFF, 2) +
         "\x08" + Int(2, 2);
}

}  // namespace

std::string ShortGreeting(std::uint32_t capabilities) {
  return Packet(0, GreetingStart(capabilities, "4.0.12") + Zeros(13));
}

std::string OldGreeting(std::uint32_t capabilities) {
  return Packet(0, GreetingStart(capabilities, "4.1.0") + Zeros(13) + kScramble.substr(8) + Zeros(1));
}

std::string CurrentGreeting(std::uint32_t capabilities, const std::string& plugin) {
  return Packet(0, GreetingStart(capabilities, "8.0.33") + Int(capabilities >> 16, 2) + Int(21, 1) + Zeros(10) +
                       kScramble.substr(8) + Zeros(1) + plugin + Zeros(1));
}

std::string CurrentLogin(std::uint32_t flags, const std::string& user, const std::string& token,
                         const std::string& database, const std::string& plugin) {
  return Int(flags, 4) + Int(1 << 30, 4) + Int(45, 1) + Zeros(23) + user + Zeros(1) + Text(token) +
         (database.empty() ? "" : database + Zeros(1)) + plugin + Zeros(1);
}

// --- Dialogues

class TDialogue::TVio final : public TMySqlVio {
 public:
  explicit TVio(std::shared_ptr<TState> state) : state_(std::move(state)) {}

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
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (const char c : bytes.substr(0, 400)) {
      const auto value = static_cast<unsigned char>(c);
      text += kDigits[value >> 4];
      text += kDigits[value & 15];
      text += ' ';
    }
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

TDialogue& TDialogue::Server(const std::string& bytes) { return Add(true, bytes); }

TDialogue& TDialogue::Client(const std::string& bytes) { return Add(false, bytes); }

TDialogue& TDialogue::CutAt(std::size_t bytes) {
  state_->left = bytes;
  return *this;
}

std::unique_ptr<TMySqlVio> TDialogue::NewVio() const { return std::make_unique<TVio>(state_); }

std::size_t TDialogue::ServerBytes() const {
  std::size_t count = 0;
  for (const TTurn& turn : state_->turns)
    if (turn.server) count += turn.bytes.size();
  return count;
}

std::string TDialogue::Fault() const { return state_->fault; }

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
