// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Bytes and packets of the Tabular Data Stream protocol ([MS-TDS], published by its maker as an open specification):
// numbers with the lowest byte first, texts as UTF-16 with their length in characters in front. Texts in memory are
// UTF-8.

#include <concepts>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace velmora::testing {

// By the names of iconv; raises std::runtime_error for what the other encoding lacks.
std::string Recoded(std::string_view text, const char* from, const char* to);
inline std::string ToUtf16(std::string_view utf8) { return Recoded(utf8, "UTF-8", "UTF-16LE"); }
inline std::string FromUtf16(std::string_view utf16) { return Recoded(utf16, "UTF-16LE", "UTF-8"); }

class TTdsWriter {
 public:
  template <std::integral T>
  TTdsWriter& Number(T number) {
    return Raw({reinterpret_cast<const char*>(&number), sizeof number});
  }
  TTdsWriter& U8(std::size_t number) { return Number(static_cast<std::uint8_t>(number)); }
  TTdsWriter& U16(std::size_t number) { return Number(static_cast<std::uint16_t>(number)); }
  TTdsWriter& U32(std::size_t number) { return Number(static_cast<std::uint32_t>(number)); }
  TTdsWriter& Raw(std::string_view bytes) {
    bytes_ += bytes;
    return *this;
  }
  TTdsWriter& Short(std::string_view utf8);  // B_VARCHAR
  TTdsWriter& Long(std::string_view utf8);   // US_VARCHAR

  const std::string& Bytes() const { return bytes_; }

 private:
  std::string bytes_;
};

// Raises std::out_of_range past the end.
class TTdsReader {
 public:
  explicit TTdsReader(std::string_view bytes) : bytes_(bytes) {}

  std::string_view Raw(std::size_t count) {
    if (count > bytes_.size() - at_) throw std::out_of_range("a request is cut short");
    at_ += count;
    return bytes_.substr(at_ - count, count);
  }
  template <std::integral T>
  T Number() {
    T number{};
    Raw(sizeof number).copy(reinterpret_cast<char*>(&number), sizeof number);
    return number;
  }
  unsigned U8() { return Number<std::uint8_t>(); }
  unsigned U16() { return Number<std::uint16_t>(); }
  std::string Text(std::size_t characters) { return FromUtf16(Raw(2 * characters)); }
  std::string_view Rest() { return Raw(bytes_.size() - at_); }
  bool AtEnd() const { return at_ == bytes_.size(); }

 private:
  std::string_view bytes_;
  std::size_t at_ = 0;
};

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

}  // namespace velmora::testing
