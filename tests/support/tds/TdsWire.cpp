// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/tds/TdsWire.h"

#include <iconv.h>

#include <algorithm>

#include "support/LoopbackServer.h"

namespace velmora::testing {

std::string Recoded(std::string_view text, const char* from, const char* to) {
  std::string in(text), out(2 * text.size(), '\0');
  char *source = in.data(), *target = out.data();
  std::size_t left = in.size(), room = out.size();
  const iconv_t recoder = iconv_open(to, from);
  const std::size_t result = iconv(recoder, &source, &left, &target, &room);
  iconv_close(recoder);
  if (result == static_cast<std::size_t>(-1)) throw std::runtime_error("no text of " + std::string(to) + ": " + in);
  out.resize(out.size() - room);
  return out;
}

TTdsWriter& TTdsWriter::Short(std::string_view utf8) {
  const std::string text = ToUtf16(utf8);
  return U8(text.size() / 2).Raw(text);
}

TTdsWriter& TTdsWriter::Long(std::string_view utf8) {
  const std::string text = ToUtf16(utf8);
  return U16(text.size() / 2).Raw(text);
}

namespace {

constexpr std::size_t kHead = 8, kPacketSize = 4096;

}  // namespace

std::optional<TTdsRequest> ReceiveRequest(int connection) {
  TTdsRequest request;
  for (bool last = false; !last;) {
    const std::string head = ReceiveAll(connection, kHead);
    if (head.size() < kHead) return {};
    const std::size_t size = static_cast<unsigned char>(head[2]) * 256u + static_cast<unsigned char>(head[3]);
    request.type = static_cast<unsigned char>(head[0]);
    last = (head[1] & 1) != 0;
    request.body += ReceiveAll(connection, size - kHead);
  }
  return request;
}

void SendReply(int connection, const std::string& tokens) {
  std::string packets;
  unsigned number = 0;
  for (std::size_t at = 0; at == 0 || at < tokens.size(); at += kPacketSize - kHead) {
    const std::size_t size = std::min(kPacketSize - kHead, tokens.size() - at), length = size + kHead;
    TTdsWriter head;
    head.U8(kReply).U8(at + size == tokens.size()).U8(length >> 8).U8(length).U16(0).U8(++number).U8(0);
    packets += head.Bytes() + tokens.substr(at, size);
  }
  SendAll(connection, packets);
}

}  // namespace velmora::testing
