// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqlnet/MySqlNet.h"

#include <zlib.h>

#include <algorithm>
#include <utility>

#include "mysqlnet/MySqlErrors.h"
#include "util/MySqlFacts.h"

namespace velmora {

namespace {

constexpr std::size_t kFrameHeader = NET_HEADER_SIZE + COMP_HEADER_SIZE;
constexpr std::size_t kFirstWriteBuffer = 8192;
constexpr std::size_t kFirstInflated = 100;
// What a length promises is not believed: memory grows with the bytes that come.
constexpr std::size_t kGrowth = 65536;
constexpr std::uint8_t kErrorMark = 255;
constexpr std::size_t kSqlState = 6;  // "#" and five characters
constexpr char kBadLength[] = "Length code %d is not valid";

std::uint8_t Byte(char c) { return static_cast<std::uint8_t>(c); }

std::uint64_t LittleEndian(const char* bytes, std::size_t count) {
  std::uint64_t number = 0;
  for (std::size_t i = count; i > 0; --i) number = number << 8 | Byte(bytes[i - 1]);
  return number;
}

void PutLittleEndian(char* to, std::uint64_t number, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) to[i] = static_cast<char>(number >> (8 * i) & 0xFF);
}

class TInflater {
 public:
  explicit TInflater(std::string& packed) {
    stream_.next_in = reinterpret_cast<Bytef*>(packed.data());
    stream_.avail_in = static_cast<uInt>(packed.size());
    result_ = inflateInit(&stream_);
  }
  ~TInflater() { inflateEnd(&stream_); }
  TInflater(const TInflater&) = delete;
  TInflater& operator=(const TInflater&) = delete;

  bool Going() const { return result_ == Z_OK; }
  void Fill(char* to, std::size_t count) {
    stream_.next_out = reinterpret_cast<Bytef*>(to);
    stream_.avail_out = static_cast<uInt>(count);
    result_ = inflate(&stream_, Z_SYNC_FLUSH);
    if (stream_.avail_out > 0 && result_ == Z_OK) result_ = Z_BUF_ERROR;  // there is no more to come
  }
  // The end mark may still be unread when the room was used up exactly.
  bool EndsAt(std::size_t length) {
    if (result_ == Z_OK) result_ = inflate(&stream_, Z_FINISH);
    return result_ == Z_STREAM_END && stream_.total_out == length;
  }

 private:
  z_stream stream_{};
  int result_;
};

}  // namespace

template <class... Args>
void TMySqlNet::Fail(int number, const Args&... args) {
  lost_ = true;
  throw ClientError(number, args...);
}

void TMySqlNet::FailMalformed() { Fail(kMalformedPacket); }

void TMySqlNet::FailMemory() { Fail(kNoMemoryLeft); }

void TMySqlNet::FailLost() {
  lost_ = true;
  const std::string fault = vio ? vio->Fault() : "";
  throw EMySqlException(kConnectionLost,
                        std::string(MySqlErrorText(kConnectionLost)) + (fault.empty() ? "" : ": " + fault));
}

// --- Writing

void TMySqlNet::StartCommand() {
  pkt_nr = compress_pkt_nr = 0;
  Clear();
}

void TMySqlNet::Clear() {
  if (buffer_.capacity() < kFirstWriteBuffer) buffer_.reserve(kFirstWriteBuffer);
  buffer_.assign(Room(), '\0');
  position_ = Room();
}

void TMySqlNet::WriteBytes(std::string_view bytes) { buffer_.append(bytes); }

void TMySqlNet::WriteInt2(std::uint32_t number) {
  buffer_.resize(buffer_.size() + 2);
  PutLittleEndian(buffer_.data() + buffer_.size() - 2, number, 2);
}

void TMySqlNet::WriteInt3(std::uint32_t number) {
  buffer_.resize(buffer_.size() + 3);
  PutLittleEndian(buffer_.data() + buffer_.size() - 3, number, 3);
}

void TMySqlNet::WriteInt4(std::uint32_t number) {
  buffer_.resize(buffer_.size() + 4);
  PutLittleEndian(buffer_.data() + buffer_.size() - 4, number, 4);
}

void TMySqlNet::WriteString(std::optional<std::string_view> text) {
  if (text) buffer_.append(*text);
  buffer_ += '\0';
}

void TMySqlNet::WriteFill(char byte, std::size_t count) { buffer_.append(count, byte); }

void TMySqlNet::DropLast() {
  if (buffer_.size() > Room()) buffer_.pop_back();
}

// Deliberate: without the current protocol a payload that fills its last packet gets no closing empty one, and with
// compression packets end three bytes early; only the servers of that time are spoken to in this way.
void TMySqlNet::Flush() {
  const std::size_t largest = compress && !current_protocol ? MAX_PACKET_LENGTH - COMP_HEADER_SIZE : MAX_PACKET_LENGTH;
  std::size_t position = Room();
  std::size_t length = 0;
  if (buffer_.size() <= position) SendChunk(position, 0);
  while (position < buffer_.size()) {
    length = std::min(buffer_.size() - position, largest);
    SendChunk(position, length);
    position += length;
  }
  if (current_protocol && length == MAX_PACKET_LENGTH) SendChunk(position, 0);
  Clear();
}

// The headers go in front of the payload: into the room that was left, or over what has been sent already.
void TMySqlNet::SendChunk(std::size_t position, std::size_t length) {
  const std::size_t start = position - NET_HEADER_SIZE;
  char* header = buffer_.data() + start;
  PutLittleEndian(header, length, 3);
  header[3] = static_cast<char>(pkt_nr++);
  std::size_t left = length + NET_HEADER_SIZE;
  if (!compress) {
    WriteFrame(header, left);
    return;
  }
  const std::size_t largest = current_protocol ? MAX_PACKET_LENGTH : left;
  for (std::size_t from = start; left > 0;) {
    const std::size_t unit = std::min(left, largest);
    SendUnit(from, unit);
    from += unit;
    left -= unit;
  }
}

// A frame: 3 bytes length of what follows the header, 1 byte sequence number, 3 bytes plain length, which is 0 when
// what follows is not compressed.
void TMySqlNet::SendUnit(std::size_t position, std::size_t length) {
  char* plain = buffer_.data() + position;
  std::size_t packed = length;
  if (length >= MIN_COMPRESS_LENGTH) {
    uLongf size = length * 120 / 100 + 12;
    frame_.resize(kFrameHeader + size);
    const auto* from = reinterpret_cast<const Bytef*>(plain);
    auto* to = reinterpret_cast<Bytef*>(frame_.data() + kFrameHeader);
    if (compress2(to, &size, from, length, Z_DEFAULT_COMPRESSION) == Z_OK && size < length) packed = size;
  }
  const bool stored = packed == length;
  char* frame = stored ? plain - kFrameHeader : frame_.data();
  PutLittleEndian(frame, packed, 3);
  frame[3] = static_cast<char>(compress_pkt_nr++);
  PutLittleEndian(frame + NET_HEADER_SIZE, stored ? 0 : length, COMP_HEADER_SIZE);
  WriteFrame(frame, kFrameHeader + packed);
}

void TMySqlNet::Hold() { holds_ = !compress; }

void TMySqlNet::Release() {
  holds_ = false;
  const std::string held = std::exchange(held_, {});
  if (!held.empty()) WriteFrame(held.data(), held.size());
}

void TMySqlNet::WriteFrame(const char* frame, std::size_t length) {
  if (holds_) {
    held_.append(frame, length);
    return;
  }
  if (!vio || vio->Write(frame, 0, length) != length) FailLost();
}

// --- Receiving

void TMySqlNet::ReadPacket() {
  buffer_.clear();
  position_ = 0;
  std::size_t length = 0;
  do {
    length = ReadHeader();
    if (buffer_.size() + length > longest_reply) Fail(kPacketTooLarge);
    ReadOnto(buffer_, length, &TMySqlNet::ReadExactly);
  } while (length == MAX_PACKET_LENGTH);
  CheckError(buffer_);
}

void TMySqlNet::ReadPacketInto(std::string& packet) {
  packet.clear();
  const std::size_t length = ReadHeader();
  if (length == MAX_PACKET_LENGTH) {
    lost_ = true;
    throw EMySqlException("Cannot retrieve huge data in FetchAll mode");
  }
  ReadOnto(packet, length, &TMySqlNet::ReadExactly);
  CheckError(packet);
}

void TMySqlNet::TakePacket(std::string packet) {
  buffer_ = std::move(packet);
  position_ = 0;
}

std::size_t TMySqlNet::ReadHeader() {
  char header[NET_HEADER_SIZE];
  ReadExactly(header, sizeof(header));
  CheckNumber(Byte(header[3]), pkt_nr, compress && current_protocol);
  return LittleEndian(header, 3);
}

void TMySqlNet::CheckNumber(std::uint8_t received, std::uint8_t& expected, bool any) {
  const std::uint8_t wanted = any ? received : expected;
  expected = static_cast<std::uint8_t>(wanted + 1);
  if (received != wanted) Fail(kPacketsOutOfOrder, received, wanted);
}

void TMySqlNet::ReadOnto(std::string& target, std::size_t count, TReader read) {
  while (count > 0) {
    const std::size_t held = target.size();
    const std::size_t step = std::min(count, std::max(held, kGrowth));
    target.resize(held + step);
    (this->*read)(target.data() + held, step);
    count -= step;
  }
}

void TMySqlNet::ReadExactly(char* to, std::size_t count) {
  if (!compress) {
    ReadTransport(to, count);
    return;
  }
  while (count > 0) {
    if (inflated_position_ == inflated_.size()) ReadFrame();
    const std::size_t ready = std::min(count, inflated_.size() - inflated_position_);
    std::copy_n(inflated_.data() + inflated_position_, ready, to);
    inflated_position_ += ready;
    to += ready;
    count -= ready;
  }
}

void TMySqlNet::ReadTransport(char* to, std::size_t count) {
  if (!vio || vio->Read(to, 0, count) != count) FailLost();
}

// Each frame is read when its bytes are wanted. That goes for one that follows a frame of the greatest length, too, so
// that a server cannot fill the memory with frames that nobody has asked for.
void TMySqlNet::ReadFrame() {
  inflated_.clear();
  inflated_position_ = 0;
  char header[kFrameHeader];
  ReadTransport(header, sizeof(header));
  CheckNumber(Byte(header[3]), compress_pkt_nr, false);
  const std::size_t length = LittleEndian(header, 3);
  const std::size_t plain_length = LittleEndian(header + NET_HEADER_SIZE, COMP_HEADER_SIZE);
  if (length == 0) FailMalformed();
  frame_.clear();
  ReadOnto(frame_, length, &TMySqlNet::ReadTransport);
  if (plain_length == 0)
    inflated_.swap(frame_);
  else
    Inflate(plain_length);
}

// What comes out must be as long as announced, which is also the most that a frame can bring.
void TMySqlNet::Inflate(std::size_t plain_length) {
  TInflater inflater(frame_);
  while (inflater.Going() && inflated_.size() < plain_length) {
    const std::size_t held = inflated_.size();
    inflated_.resize(std::min(plain_length, std::max({2 * held, 2 * frame_.size(), kFirstInflated})));
    inflater.Fill(inflated_.data() + held, inflated_.size() - held);
  }
  if (!inflater.EndsAt(plain_length)) Fail(kNotInflated);
}

// The only place where a server's error becomes an exception: mark, 2 bytes number, text.
void TMySqlNet::CheckError(std::string_view packet) {
  if (packet.empty() || Byte(packet[0]) != kErrorMark) return;
  if (packet.size() < 3) FailMalformed();
  const auto number = static_cast<int>(LittleEndian(packet.data() + 1, 2));
  std::string text(packet.substr(3));
  if (current_protocol && text.size() >= kSqlState && text[0] == '#') text.erase(0, kSqlState);
  std::ranges::replace(text, '\0', ' ');  // at which the message would end for whoever is shown it
  throw EMySqlException(number, text.empty() ? Format(kErrorWithoutText, number) : text);
}

// --- Taking to pieces

const char* TMySqlNet::Take(std::size_t count) {
  if (count > Rest()) FailMalformed();
  const char* taken = buffer_.data() + position_;
  position_ += count;
  return taken;
}

std::uint8_t TMySqlNet::ReadByte() { return Byte(*Take(1)); }

std::uint16_t TMySqlNet::ReadInt2() { return static_cast<std::uint16_t>(LittleEndian(Take(2), 2)); }

std::uint32_t TMySqlNet::ReadInt3() { return static_cast<std::uint32_t>(LittleEndian(Take(3), 3)); }

std::uint32_t TMySqlNet::ReadInt4() { return static_cast<std::uint32_t>(LittleEndian(Take(4), 4)); }

std::uint64_t TMySqlNet::ReadInt8() { return LittleEndian(Take(8), 8); }

std::string TMySqlNet::ReadString() {
  const std::size_t end = std::min(buffer_.find('\0', position_), buffer_.size());
  std::string text = buffer_.substr(position_, end - position_);
  position_ = std::min(end + 1, buffer_.size());
  return text;
}

std::uint64_t TMySqlNet::ReadFieldLength() {
  const std::uint8_t first = ReadByte();
  switch (first) {
    case 251:
      return NULL_LENGTH;
    case 252:
      return ReadInt2();
    case 253:
      return ReadInt3();
    case 254:
      return ReadInt8();
    case 255:
      lost_ = true;
      RaiseError(Format(kBadLength, 255));
    default:
      return first;
  }
}

std::string TMySqlNet::ReadBytes(std::size_t count) { return {Take(count), count}; }

std::string TMySqlNet::ReadRest() { return ReadBytes(Rest()); }

void TMySqlNet::Skip(std::size_t count) { Take(count); }

}  // namespace velmora
