#include "support/tds/TdsBytes.h"

#include "util/Text.h"

namespace velmora::testing {

std::string ToUtf16(std::string_view utf8) {
  TTdsWriter out;
  for (std::size_t at = 0; at < utf8.size();) {
    const std::size_t size = CharSize(utf8, at);
    const auto first = static_cast<unsigned char>(utf8[at]);
    unsigned code = size == 1 ? first : first & (0x7Fu >> size);
    for (std::size_t i = 1; i < size; ++i) code = code << 6 | (static_cast<unsigned char>(utf8[at + i]) & 0x3Fu);
    at += size;
    if (code < 0x10000)
      out.U16(code);
    else
      out.U16(0xD800 + ((code - 0x10000) >> 10)).U16(0xDC00 + (code & 0x3FF));
  }
  return out.Bytes();
}

namespace {

void AppendUtf8(std::string& out, unsigned code) {
  if (code < 0x80) {
    out += static_cast<char>(code);
    return;
  }
  const int more = code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
  out += static_cast<char>((0xFF00u >> (more + 1) & 0xFFu) | code >> (6 * more));
  for (int i = more - 1; i >= 0; --i) out += static_cast<char>(0x80u | (code >> (6 * i) & 0x3Fu));
}

}  // namespace

std::string FromUtf16(std::string_view utf16) {
  std::string out;
  TTdsReader in(utf16);
  while (!in.AtEnd()) {
    const unsigned unit = in.U16();
    const bool pair = unit >= 0xD800 && unit < 0xDC00 && !in.AtEnd();
    AppendUtf8(out, pair ? 0x10000 + ((unit & 0x3FFu) << 10) + (in.U16() & 0x3FFu) : unit);
  }
  return out;
}

TTdsWriter& TTdsWriter::Short(std::string_view utf8) {
  const std::string text = ToUtf16(utf8);
  return U8(static_cast<unsigned>(text.size() / 2)).Raw(text);
}

TTdsWriter& TTdsWriter::Long(std::string_view utf8) {
  const std::string text = ToUtf16(utf8);
  return U16(text.size() / 2).Raw(text);
}

}  // namespace velmora::testing
