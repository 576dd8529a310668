// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/tds/TdsTypes.h"

#include <algorithm>
#include <cstdio>
#include <iterator>

namespace velmora::testing {

namespace {

enum class ELetters { None, Narrow, Wide };
// What stands in front of a value.
enum class ESize {
  Byte,   // its size, and of its type the greatest size
  Days,   // its size, and of its type nothing
  Exact,  // its size, and of its type the greatest size, precision and scale
  Word,   // its size in two bytes, and of its type the declared one
  Text    // a text pointer and its size in four bytes
};

constexpr std::string_view kCollation("\x09\x04\xD0\x00\x34", 5);  // Latin 1 (code page 1252), ignoring case

}  // namespace

struct TTdsType::TRow {
  std::string_view name;
  unsigned token;
  ESize form;
  unsigned size;  // the greatest of a value; 0: as declared
  ELetters letters = ELetters::None;
};

constexpr TTdsType::TRow TTdsType::kRows[] = {
    {"tinyint", 0x26, ESize::Byte, 1},
    {"smallint", 0x26, ESize::Byte, 2},
    {"int", 0x26, ESize::Byte, 4},
    {"bigint", 0x26, ESize::Byte, 8},
    {"bit", 0x68, ESize::Byte, 1},
    {"real", 0x6D, ESize::Byte, 4},
    {"float", 0x6D, ESize::Byte, 8},
    {"smallmoney", 0x6E, ESize::Byte, 4},
    {"money", 0x6E, ESize::Byte, 8},
    {"smalldatetime", 0x6F, ESize::Byte, 4},
    {"datetime", 0x6F, ESize::Byte, 8},
    {"uniqueidentifier", 0x24, ESize::Byte, 16},
    {"date", 0x28, ESize::Days, 3},
    {"decimal", 0x6A, ESize::Exact, 17},
    {"numeric", 0x6C, ESize::Exact, 17},
    {"char", 0xAF, ESize::Word, 0, ELetters::Narrow},
    {"varchar", 0xA7, ESize::Word, 0, ELetters::Narrow},
    {"nchar", 0xEF, ESize::Word, 0, ELetters::Wide},
    {"nvarchar", 0xE7, ESize::Word, 0, ELetters::Wide},
    {"binary", 0xAD, ESize::Word, 0},
    {"varbinary", 0xA5, ESize::Word, 0},
    {"text", 0x23, ESize::Text, 2147483647, ELetters::Narrow},
    {"ntext", 0x63, ESize::Text, 2147483646, ELetters::Wide},
    {"image", 0x22, ESize::Text, 2147483647},
};

TTdsType::TTdsType(std::string_view declared) {
  const std::size_t bracket = std::min(declared.find('('), declared.size());
  row_ = std::ranges::find(kRows, declared.substr(0, bracket), &TRow::name);
  if (row_ == std::end(kRows)) throw std::runtime_error("unknown type " + std::string(declared));
  max_ = declared.ends_with("(max)");
  std::sscanf(std::string(declared.substr(bracket)).c_str(), "(%d,%d)", &first_, &second_);
}

void TTdsType::PutInfo(TTdsWriter& out) const {
  const std::string_view collation = row_->letters == ELetters::None ? "" : kCollation;
  const int declared = row_->letters == ELetters::Wide ? 2 * first_ : first_;
  out.U8(row_->token);
  if (row_->form == ESize::Byte) out.U8(row_->size);
  if (row_->form == ESize::Exact)
    out.U8(row_->size).Number(static_cast<char>(first_)).Number(static_cast<char>(second_));
  if (row_->form == ESize::Word) out.U16(max_ ? 0xFFFF : static_cast<std::size_t>(declared)).Raw(collation);
  if (row_->form == ESize::Text) out.U32(row_->size).Raw(collation).U8(1).Long("t");  // one name: the table's
}

void TTdsType::PutValue(TTdsWriter& out, const std::optional<std::string>& value) const {
  const std::string bytes = value ? Encoded(*value) : "";
  if (row_->form == ESize::Text) {
    if (!value) return void(out.U8(0));
    out.U8(16).Raw(std::string(16, 'p')).Raw(std::string(8, 's')).U32(bytes.size()).Raw(bytes);
  } else if (max_) {
    if (!value) return void(out.Number(std::uint64_t{0xFFFFFFFFFFFFFFFF}));
    out.Number(std::uint64_t{bytes.size()});
    if (!bytes.empty()) out.U32(bytes.size()).Raw(bytes);
    out.U32(0);
  } else if (row_->form == ESize::Word) {
    out.U16(value ? bytes.size() : 0xFFFF).Raw(bytes);
  } else {
    out.U8(bytes.size()).Raw(bytes);
  }
}

std::string TTdsType::Encoded(const std::string& value) const {
  constexpr unsigned kInteger = 0x26, kBit = 0x68;
  if (row_->letters == ELetters::Wide) return ToUtf16(value);
  if (row_->letters == ELetters::Narrow) return Recoded(value, "UTF-8", "CP1252");
  if (row_->token == kInteger || row_->token == kBit)
    return TTdsWriter().Number(std::stoll(value)).Bytes().substr(0, row_->size);
  return value;
}

}  // namespace velmora::testing
