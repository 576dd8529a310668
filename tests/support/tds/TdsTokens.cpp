#include "support/tds/TdsTokens.h"

#include <algorithm>

#include "support/LoopbackServer.h"

namespace velmora::testing {

namespace {

constexpr std::size_t kHead = 8, kPacketSize = 4096;
constexpr char kTransactionId[] = "8 bytes.";

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
    const std::size_t size = std::min(kPacketSize - kHead, tokens.size() - at);
    const unsigned last = at + size == tokens.size() ? 1 : 0, length = static_cast<unsigned>(size + kHead);
    TTdsWriter head;
    head.U8(kReply).U8(last).U8(length >> 8).U8(length & 0xFF).U16(0).U8(++number & 0xFF).U8(0);
    packets += head.Bytes() + tokens.substr(at, size);
  }
  SendAll(connection, packets);
}

TTdsLogin ReadLogin(const std::string& body) {
  TTdsReader in(body);
  in.Raw(4);
  TTdsLogin login;
  const auto version = in.Number<std::uint32_t>();
  login.version = 0x700 | (version >> 24 & 0xF);
  in.Raw(17);
  login.trusted = (in.U8() & 0x80) != 0;
  const auto field = [&](std::size_t at) {
    TTdsReader place(std::string_view(body).substr(at));
    const unsigned from = place.U16();
    return body.substr(from, 2 * place.U16());
  };
  login.user = FromUtf16(field(40));
  login.database = FromUtf16(field(68));
  std::string hidden = field(44);
  for (char& c : hidden) {
    const unsigned bits = static_cast<unsigned char>(c) ^ 0xA5u;
    c = static_cast<char>(bits << 4 | bits >> 4);
  }
  login.password = FromUtf16(hidden);
  return login;
}

void TTdsReply::Sized(unsigned token, const TTdsWriter& body) {
  out_.U8(token).U16(body.Bytes().size()).Raw(body.Bytes());
}

void TTdsReply::LoginAccepted() {
  static constexpr std::string_view kVersions[] = {
      {"\x71\0\0\x01", 4}, "\x72\x09\0\x02", "\x73\x0B\0\x03", "\x74\0\0\x04"};
  const auto minor = static_cast<std::size_t>(version_ - 0x701);
  Sized(0xE3, TTdsWriter().U8(4).Short("4096").Short("4096"));
  Sized(0xAD, TTdsWriter().U8(1).Raw({kVersions[minor].data(), 4}).Short("Test server").U8(12).U8(0).U8(0).U8(0));
}

void TTdsReply::DatabaseChanged(const std::string& database) {
  Sized(0xE3, TTdsWriter().U8(1).Short(database).Short("master"));
  Message(0xAB, {5701, 0, "Changed database context to '" + database + "'."});
}

void TTdsReply::TransactionChanged(ETdsTransaction kind) {
  const std::string_view id(kTransactionId, 8), none;
  const auto bytes = [](std::string_view value) { return static_cast<char>(value.size()) + std::string(value); };
  Sized(0xE3, TTdsWriter().U8(kind).Raw(bytes(kind == kBegun ? id : none)).Raw(bytes(kind == kBegun ? none : id)));
}

void TTdsReply::Message(unsigned token, const TTdsError& message) {
  TTdsWriter body;
  body.Number(message.number)
      .U8(1)
      .U8(static_cast<unsigned>(message.severity))
      .Long(message.text)
      .Short("fake")
      .Short("");
  version_ >= 0x702 ? body.U32(1) : body.U16(1);
  Sized(token, body);
}

void TTdsReply::Rows(const TTdsResult& result) {
  out_.U8(0x81).U16(result.columns.size());
  for (const TTdsColumn& column : result.columns) {
    version_ >= 0x702 ? out_.U32(0) : out_.U16(0);
    out_.U16(0x09 | (column.type.Identity() ? 0x10 : 0));  // nullable, writable, identity
    column.type.PutInfo(out_, version_);
    out_.Short(column.name);
  }
  for (const auto& row : result.rows) {
    out_.U8(0xD1);
    for (std::size_t i = 0; i < row.size(); ++i) result.columns[i].type.PutValue(out_, version_, row[i]);
  }
}

void TTdsReply::ReturnStatus(int status) { out_.U8(0x79).Number(status); }

void TTdsReply::Done(unsigned state, std::int64_t count, bool procedure) {
  out_.U8(procedure ? 0xFE : 0xFD).U16(state).U16(0xC1);
  version_ >= 0x702 ? out_.Number(count) : out_.Number(static_cast<std::int32_t>(count));
}

}  // namespace velmora::testing
