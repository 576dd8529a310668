#include "support/tds/TdsTypes.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iterator>

#include "util/Text.h"

namespace velmora::testing {

namespace {

constexpr TTdsTypeRow kTypes[] = {
    {"tinyint", 0x26, 1, 3, 0},
    {"smallint", 0x26, 2, 5, 0},
    {"int", 0x26, 4, 10, 0},
    {"bigint", 0x26, 8, 19, 0},
    {"bit", 0x68, 1, -1, -1},
    {"real", 0x6D, 4, 24, -1},
    {"float", 0x6D, 8, 53, -1},
    {"smallmoney", 0x6E, 4, 10, 4},
    {"money", 0x6E, 8, 19, 4},
    {"smalldatetime", 0x6F, 4, -1, -1},
    {"datetime", 0x6F, 8, -1, -1},
    {"date", 0x28, 3, -1, -1},
    {"uniqueidentifier", 0x24, 16, -1, -1},
    {"decimal", 0x6A, 17, 0, 0},
    {"numeric", 0x6C, 17, 0, 0},
    {"char", 0xAF, 0, -1, -1},
    {"varchar", 0xA7, 0, -1, -1},
    {"nchar", 0xEF, 0, -1, -1},
    {"nvarchar", 0xE7, 0, -1, -1},
    {"binary", 0xAD, 0, -1, -1},
    {"varbinary", 0xA5, 0, -1, -1},
    {"timestamp", 0xAD, 8, -1, -1},
    {"text", 0x23, 2147483647, -1, -1},
    {"ntext", 0x63, 2147483646, -1, -1},
    {"image", 0x22, 2147483647, -1, -1},
};

constexpr std::string_view kCollation("\x09\x04\xD0\x00\x34", 5);  // Latin 1 (code page 1252), ignoring case

const TTdsTypeRow* RowOf(std::string_view name) {
  const auto* row = std::find_if(std::begin(kTypes), std::end(kTypes), [&](const auto& r) { return r.name == name; });
  if (row == std::end(kTypes)) throw std::runtime_error("unknown type " + std::string(name));
  return row;
}

// Digits without a point, as a number of `size` bytes.
std::string Magnitude(std::string_view digits, std::size_t size) {
  std::string bytes(size, '\0');
  for (const char digit : digits) {
    unsigned carry = static_cast<unsigned>(digit - '0');
    for (char& byte : bytes) {
      carry += static_cast<unsigned char>(byte) * 10u;
      byte = static_cast<char>(carry);
      carry >>= 8;
    }
  }
  return bytes;
}

// "-1.5" with scale 3 is "1500", and negative.
std::string Digits(std::string_view number, std::size_t scale, bool& negative) {
  negative = !number.empty() && number[0] == '-';
  if (negative) number.remove_prefix(1);
  std::string whole(number.substr(0, number.find('.')));
  std::string fraction(whole.size() < number.size() ? number.substr(whole.size() + 1) : "");
  fraction.resize(scale, '0');
  return whole + fraction;
}

std::string Latin1(const std::string& utf8) {
  std::string out;
  const std::string wide = ToUtf16(utf8);
  for (TTdsReader units(wide); !units.AtEnd();) {
    const unsigned unit = units.U16();
    out += unit < 0x100 ? static_cast<char>(unit) : '?';
  }
  return out;
}

// Days from 1 January 0001, by the Gregorian calendar.
int DayNumber(int year, int month, int day) {
  if (month < 3) --year, month += 12;
  return 365 * year + year / 4 - year / 100 + year / 400 + (153 * (month - 3) + 2) / 5 + day - 307;
}

// 16 bytes of "6F9619FF-8B86-D011-B42D-00CF4FC964FF"; the first three groups go lowest byte first.
std::string Guid(std::string text) {
  static constexpr std::size_t kOrder[] = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};
  text = StrReplace(text, "-", "");
  std::string bytes;
  for (const std::size_t at : kOrder) bytes += static_cast<char>(std::stoi(text.substr(2 * at, 2), nullptr, 16));
  return bytes;
}

template <class T>
std::string BytesOf(T number) {
  return TTdsWriter().Raw({reinterpret_cast<const char*>(&number), sizeof number}).Bytes();
}

}  // namespace

TTdsType::TTdsType(std::string_view declared) {
  const std::string text = LowerText(declared);
  const std::string name = text.substr(0, text.find_first_of(" ("));
  row_ = RowOf(name);
  identity_ = text.find(" identity") != std::string::npos;
  if (name.size() < text.size() && text[name.size()] == '(') {
    std::sscanf(text.c_str() + name.size(), "(%d,%d)", &first_, &second_);
    max_ = first_ < 0 || text.find("(max)") != std::string::npos;
  }
}

bool TTdsType::Binary() const { return row_->token == 0xAD || row_->token == 0xA5 || row_->token == 0x22; }

bool TTdsType::Wide() const { return row_->token == 0xEF || row_->token == 0xE7 || row_->token == 0x63; }

std::optional<int> TTdsType::Characters() const {
  if (max_) return -1;
  if (Long()) return Wide() ? row_->size / 2 : row_->size;
  return row_->size == 0 ? std::optional(first_) : std::nullopt;
}

std::optional<int> TTdsType::Precision() const {
  if (row_->precision < 0) return {};
  return row_->precision == 0 ? first_ : row_->precision;
}

std::optional<int> TTdsType::Scale() const {
  if (row_->scale < 0) return {};
  return row_->precision == 0 ? second_ : row_->scale;
}

TTdsType TTdsType::For(int version) const {
  if (max_ && version < 0x702) return TTdsType(Binary() ? "image" : Wide() ? "ntext" : "text");
  if (row_->token == 0x28 && version < 0x703) return TTdsType("nvarchar(10)");
  return *this;
}

void TTdsType::PutInfo(TTdsWriter& out, int version) const {
  const TTdsType type = For(version);
  const TTdsTypeRow& row = *type.row_;
  out.U8(row.token);
  if (type.Long()) {
    out.U32(static_cast<std::size_t>(row.size)).Raw(type.Binary() ? "" : kCollation);
    if (version >= 0x702) out.U8(1);
    out.Long("t");  // the table
  } else if (row.token >= 0xA0) {
    const int size = row.size > 0 ? row.size : type.Wide() ? 2 * type.first_ : type.first_;
    out.U16(type.max_ ? 0xFFFF : static_cast<std::size_t>(size)).Raw(type.Binary() ? "" : kCollation);
  } else if (row.token != 0x28) {
    out.U8(static_cast<unsigned>(row.size));
    if (row.precision == 0) out.U8(static_cast<unsigned>(type.first_)).U8(static_cast<unsigned>(type.second_));
  }
}

void TTdsType::PutValue(TTdsWriter& out, int version, const std::optional<std::string>& value) const {
  const TTdsType type = For(version);
  const std::string bytes = value ? type.Encoded(*value) : "";
  if (type.Long()) {
    if (!value) return void(out.U8(0));
    out.U8(16).Raw(std::string(16, 'p')).Raw(std::string(8, 's')).U32(bytes.size()).Raw(bytes);
  } else if (type.max_) {
    if (!value) return void(out.Number(std::uint64_t{0xFFFFFFFFFFFFFFFF}));
    out.Number(std::uint64_t{bytes.size()});
    for (std::size_t at = 0; at < bytes.size(); at += 1000)
      out.U32(std::min<std::size_t>(1000, bytes.size() - at)).Raw(std::string_view(bytes).substr(at, 1000));
    out.U32(0);
  } else if (type.row_->token >= 0xA0) {
    out.U16(value ? bytes.size() : 0xFFFF).Raw(bytes);
  } else {
    out.U8(static_cast<unsigned>(bytes.size())).Raw(bytes);
  }
}

std::string TTdsType::Encoded(const std::string& value) const {
  if (Binary()) return value;
  if (Wide()) return ToUtf16(value);
  if (row_->token == 0x6F || row_->token == 0x28) return EncodedTime(value);
  if (row_->token >= 0xA0 || row_->token == 0x23) return Latin1(value);
  if (row_->token == 0x24) return Guid(value);
  return EncodedNumber(value);
}

std::string TTdsType::EncodedNumber(const std::string& value) const {
  const auto size = static_cast<std::size_t>(row_->size);
  if (row_->token == 0x26 || row_->token == 0x68) return BytesOf(std::stoll(value)).substr(0, size);
  if (row_->token == 0x6D) return size == 4 ? BytesOf(std::stof(value)) : BytesOf(std::stod(value));
  bool negative = false;
  const std::string digits = Digits(value, row_->token == 0x6E ? 4 : static_cast<std::size_t>(second_), negative);
  if (row_->token != 0x6E) return (negative ? '\0' : '\1') + Magnitude(digits, 16);
  const std::uint64_t money = negative ? 0 - std::stoull(digits) : std::stoull(digits);
  return size == 4 ? BytesOf(money).substr(0, 4) : BytesOf(money).substr(4) + BytesOf(money).substr(0, 4);
}

// "2001-02-03", "2001-02-03 04:05:06.789"
std::string TTdsType::EncodedTime(const std::string& value) const {
  int year = 1900, month = 1, day = 1, hour = 0, minute = 0;
  double second = 0;
  std::sscanf(value.c_str(), "%d-%d-%d %d:%d:%lf", &year, &month, &day, &hour, &minute, &second);
  const int days = DayNumber(year, month, day);
  if (row_->token == 0x28) return BytesOf(days).substr(0, 3);
  const int since_1900 = days - DayNumber(1900, 1, 1);
  if (row_->size == 4) return BytesOf(since_1900).substr(0, 2) + BytesOf(hour * 60 + minute).substr(0, 2);
  return BytesOf(since_1900) + BytesOf(static_cast<int>(std::lround(((hour * 60 + minute) * 60 + second) * 300)));
}

}  // namespace velmora::testing
