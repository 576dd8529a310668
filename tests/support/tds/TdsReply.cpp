// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/tds/TdsReply.h"

#include "support/tds/TdsTypes.h"

namespace velmora::testing {

TTdsLogin ReadLogin(const std::string& body) {
  constexpr std::size_t kFlags = 25, kUser = 40, kPassword = 44, kDatabase = 68;
  const auto field = [&](std::size_t at) {
    TTdsReader place(std::string_view(body).substr(at));
    const unsigned from = place.U16();
    return body.substr(from, 2 * place.U16());
  };
  std::string hidden = field(kPassword);
  for (char& c : hidden) {
    const unsigned bits = static_cast<unsigned char>(c) ^ 0xA5u;
    c = static_cast<char>(bits << 4 | bits >> 4);
  }
  return {FromUtf16(field(kUser)), FromUtf16(hidden), FromUtf16(field(kDatabase)), (body.at(kFlags) & 0x80) != 0};
}

TTdsReply& TTdsReply::Sized(unsigned token, const TTdsWriter& body) {
  out_.U8(token).U16(body.Bytes().size()).Raw(body.Bytes());
  return *this;
}

TTdsReply& TTdsReply::LoginAccepted(const std::string& database) {
  Sized(0xE3, TTdsWriter().U8(1).Short(database).Short("master"));
  Message(0xAB, 5701, 0, "Changed database context to '" + database + "'.");
  Sized(0xE3, TTdsWriter().U8(4).Short("4096").Short("4096"));  // size of packets
  const std::string_view version("\x74\0\0\x04", 4);
  return Sized(0xAD, TTdsWriter().U8(1).Raw(version).Short("Test server").U8(12).U8(0).U8(0).U8(0));
}

TTdsReply& TTdsReply::TransactionChanged(ETdsTransaction kind) {
  const std::string number =
                        "\x08"
                        "8 bytes.",
                    none(1, '\0');
  return Sized(0xE3, TTdsWriter().U8(kind).Raw(kind == kBegun ? number : none).Raw(kind == kBegun ? none : number));
}

TTdsReply& TTdsReply::Message(unsigned token, int number, unsigned severity, const std::string& text) {
  return Sized(token, TTdsWriter().Number(number).U8(1).U8(severity).Long(text).Short("fake").Short("").U32(1));
}

TTdsReply& TTdsReply::Rows(const TPlayedAnswer& answer) {
  constexpr unsigned kNullableAndWritable = 0x09;
  std::vector<TTdsType> types;
  out_.U8(0x81).U16(answer.columns.size());
  for (const TPlayedAnswer::TColumn& column : answer.columns) {
    out_.U32(0).U16(kNullableAndWritable);
    types.emplace_back(column.type).PutInfo(out_);
    out_.Short(column.name);
  }
  for (const TPlayedAnswer::TRow& row : answer.rows) {
    out_.U8(0xD1);
    for (std::size_t i = 0; i < row.size(); ++i) types[i].PutValue(out_, row[i]);
  }
  return *this;
}

TTdsReply& TTdsReply::ReturnStatus(int status) {
  out_.U8(0x79).Number(status);
  return *this;
}

TTdsReply& TTdsReply::Done(unsigned state, std::int64_t count, bool procedure) {
  out_.U8(procedure ? 0xFE : 0xFD).U16(state).U16(0xC1).Number(count);
  return *this;
}

}  // namespace velmora::testing
