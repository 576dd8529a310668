// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Packets of the MySQL protocol over a transport.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "mysqlnet/MySqlVio.h"

namespace velmora {

inline constexpr std::size_t NET_HEADER_SIZE = 4;             // 3 bytes length, 1 byte sequence number
inline constexpr std::size_t COMP_HEADER_SIZE = 3;            // the further length of a compressed frame
inline constexpr std::size_t MIN_COMPRESS_LENGTH = 50;        // what is shorter is not compressed
inline constexpr std::size_t MAX_PACKET_LENGTH = 0xFFFFFF;    // largest payload of one packet
inline constexpr std::uint32_t max_allowed_packet = 1 << 30;  // what the client announces to the server
inline constexpr std::uint64_t NULL_LENGTH = 0xFFFFFFFF;      // what ReadFieldLength gives for no value

// The packet channel of a connection. What is written gathers in one buffer until Flush sends it; what ReadPacket has
// read is taken from the same buffer. Without a lock: one thread at a time.
//
// All operations that send or receive raise EMySqlException. An error that the server has reported leaves the channel
// as it was. After any other one it is Lost: the connection has to be closed.
class TMySqlNet {
 public:
  std::unique_ptr<TMySqlVio> vio;  // may be absent until something is sent or received
  std::uint8_t pkt_nr = 0;         // sequence of plain packets
  std::uint8_t compress_pkt_nr = 0;
  bool compress = false;
  // As servers of today want it: a payload that fills its last packet is closed by an empty one, no compressed frame
  // holds more than MAX_PACKET_LENGTH bytes, and the SQLSTATE in front of a server's error text is cut off. The plain
  // packets inside compressed frames may be numbered in any way: servers number them anew whenever they flush.
  bool current_protocol = false;
  std::size_t longest_reply = max_allowed_packet;  // a longer payload is refused

  // --- Writing
  void StartCommand();  // Clear, and both sequences begin anew
  void Clear();         // an empty packet, with room in front for the headers
  void WriteBytes(std::string_view bytes);
  void WriteInt2(std::uint32_t number);  // these three write the low bytes, lowest first
  void WriteInt3(std::uint32_t number);
  void WriteInt4(std::uint32_t number);
  void WriteString(std::optional<std::string_view> text);  // and a NUL; no text is just the NUL
  void WriteFill(char byte, std::size_t count);
  void DropLast();  // takes the last byte off, if there is one
  void Flush();     // sends what the buffer holds, then Clear
  void Hold();      // from here on what is flushed waits, without compression
  void Release();   // and is sent in one piece

  // --- Receiving
  void ReadPacket();                         // one logical packet into the buffer; an error packet is raised
  void ReadPacketInto(std::string& packet);  // one packet into `packet`; a longer logical one is refused

  void TakePacket(std::string packet);  // one that ReadPacketInto has read, to be taken to pieces

  // --- Taking a packet that was read to pieces; all raise when it is too short
  std::uint8_t ReadByte();
  std::uint16_t ReadInt2();
  std::uint32_t ReadInt3();
  std::uint32_t ReadInt4();
  std::uint64_t ReadInt8();
  std::string ReadString();         // up to a NUL, which is skipped, or to the end
  std::uint64_t ReadFieldLength();  // a length-coded number
  std::string ReadBytes(std::size_t count);
  std::string ReadRest();
  void Skip(std::size_t count);
  std::string_view Packet() const { return buffer_; }  // the whole of it
  std::size_t Position() const { return position_; }
  std::size_t Rest() const { return buffer_.size() - position_; }

  bool Lost() const { return lost_; }
  [[noreturn]] void FailMalformed();  // raises 2027, and all is lost
  [[noreturn]] void FailMemory();     // the same with 2008

 private:
  using TReader = void (TMySqlNet::*)(char* to, std::size_t count);

  std::size_t Room() const { return compress ? 2 * NET_HEADER_SIZE + COMP_HEADER_SIZE : NET_HEADER_SIZE; }
  void SendChunk(std::size_t position, std::size_t length);
  void SendUnit(std::size_t position, std::size_t length);
  void WriteFrame(const char* frame, std::size_t length);

  std::size_t ReadHeader();  // gives the payload's length
  void ReadOnto(std::string& target, std::size_t count, TReader read);
  void ReadExactly(char* to, std::size_t count);
  void ReadTransport(char* to, std::size_t count);
  void ReadFrame();
  void Inflate(std::size_t plain_length);
  void CheckNumber(std::uint8_t received, std::uint8_t& expected, bool any);
  void CheckError(std::string_view packet);
  const char* Take(std::size_t count);

  template <class... Args>
  [[noreturn]] void Fail(int number, const Args&... args);
  [[noreturn]] void FailLost();

  std::string buffer_;
  std::size_t position_ = 0;
  bool holds_ = false;
  std::string held_;      // to be sent
  std::string frame_;     // as sent or received
  std::string inflated_;  // what frames have brought
  std::size_t inflated_position_ = 0;
  bool lost_ = false;
};

}  // namespace velmora
