// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqltext/Charsets.h"

#include <iconv.h>

#include <algorithm>
#include <array>
#include <cstdint>

#include "mysqltext/TableText.h"
#include "util/Text.h"

namespace velmora {

namespace {

struct TOwnCollation {
  std::string_view charset;
  std::string_view collation;  // of a set that has the same one everywhere
};
constexpr std::array<TOwnCollation, 36> kOwnCollations = {
    {{"armscii8", "armscii8_general_ci"}, {"ascii", "ascii_general_ci"},
     {"big5", "big5_chinese_ci"},         {"binary", "binary"},
     {"cp1250", "cp1250_general_ci"},     {"cp1251", "cp1251_general_ci"},
     {"cp1256", "cp1256_general_ci"},     {"cp1257", "cp1257_general_ci"},
     {"cp850", "cp850_general_ci"},       {"cp852", "cp852_general_ci"},
     {"cp866", "cp866_general_ci"},       {"cp932", "cp932_japanese_ci"},
     {"dec8", "dec8_swedish_ci"},         {"eucjpms", "eucjpms_japanese_ci"},
     {"euckr", "euckr_korean_ci"},        {"gb18030", "gb18030_chinese_ci"},
     {"gb2312", "gb2312_chinese_ci"},     {"gbk", "gbk_chinese_ci"},
     {"geostd8", "geostd8_general_ci"},   {"greek", "greek_general_ci"},
     {"hebrew", "hebrew_general_ci"},     {"hp8", "hp8_english_ci"},
     {"keybcs2", "keybcs2_general_ci"},   {"koi8r", "koi8r_general_ci"},
     {"koi8u", "koi8u_general_ci"},       {"latin1", "latin1_swedish_ci"},
     {"latin2", "latin2_general_ci"},     {"latin5", "latin5_turkish_ci"},
     {"latin7", "latin7_general_ci"},     {"macce", "macce_general_ci"},
     {"macroman", "macroman_general_ci"}, {"sjis", "sjis_japanese_ci"},
     {"swe7", "swe7_swedish_ci"},         {"tis620", "tis620_thai_ci"},
     {"ujis", "ujis_japanese_ci"},        {"utf16le", "utf16le_general_ci"}}};

// Sets whose letters may take more than one byte, and two that are asked for by name.
constexpr std::array<TLetterBytes, 18> kLetterBytes{{{"utf8mb4", 1, 4},
                                                     {"utf8mb3", 1, 3},
                                                     {"utf8", 1, 3},
                                                     {"ucs2", 2, 2},
                                                     {"utf16", 2, 4},
                                                     {"utf16le", 2, 4},
                                                     {"utf32", 4, 4},
                                                     {"gb18030", 1, 4},
                                                     {"gbk", 1, 2},
                                                     {"gb2312", 1, 2},
                                                     {"big5", 1, 2},
                                                     {"sjis", 1, 2},
                                                     {"cp932", 1, 2},
                                                     {"euckr", 1, 2},
                                                     {"ujis", 1, 3},
                                                     {"eucjpms", 1, 3},
                                                     {"binary", 1, 1},
                                                     {"ascii", 1, 1}}};

// Sets by the names that the system's converter has for them.
struct TSystemName {
  std::string_view charset;
  const char* name;
};
constexpr std::array<TSystemName, 33> kSystemNames{
    {{"utf8mb4", "UTF-8"},      {"utf8mb3", "UTF-8"},     {"utf8", "UTF-8"},
     {"latin1", "CP1252"},      {"latin2", "ISO-8859-2"}, {"latin5", "ISO-8859-9"},
     {"latin7", "ISO-8859-13"}, {"greek", "ISO-8859-7"},  {"hebrew", "ISO-8859-8"},
     {"cp1250", "CP1250"},      {"cp1251", "CP1251"},     {"cp1256", "CP1256"},
     {"cp1257", "CP1257"},      {"cp850", "CP850"},       {"cp852", "CP852"},
     {"cp866", "CP866"},        {"koi8r", "KOI8-R"},      {"koi8u", "KOI8-U"},
     {"macroman", "MACINTOSH"}, {"tis620", "TIS-620"},    {"sjis", "SJIS"},
     {"cp932", "CP932"},        {"ujis", "EUC-JP"},       {"eucjpms", "EUC-JP-MS"},
     {"euckr", "EUC-KR"},       {"gb2312", "GB2312"},     {"gbk", "GBK"},
     {"gb18030", "GB18030"},    {"big5", "BIG5"},         {"ucs2", "UCS-2BE"},
     {"utf16", "UTF-16BE"},     {"utf16le", "UTF-16LE"},  {"utf32", "UTF-32BE"}}};

// What the system gives for a converter that it has not.
iconv_t NoConverter() {
  return reinterpret_cast<iconv_t>(static_cast<std::intptr_t>(-1));  // NOLINT(performance-no-int-to-ptr): its own word
}

// Collations that one server or another gives to a Unicode set by itself: MySQL up to 5.7 and MariaDB up to 10.11,
// MySQL from 8.0 (MySQL 8.4 Reference Manual, 12.2 Character Sets and Collations in MySQL), MariaDB 11.8.
constexpr std::array<std::string_view, 3> kUnicodeOwn = {"_general_ci", "_0900_ai_ci", "_uca1400_ai_ci"};

bool IsUnicode(std::string_view charset) { return InList(charset, {"utf8mb4", "utf8mb3", "ucs2", "utf16", "utf32"}); }

bool IsSomeServersOwn(const TCharset& charset) {
  if (!IsUnicode(charset.charset) || !charset.collation.starts_with(charset.charset)) return false;
  const std::string_view rest = std::string_view(charset.collation).substr(charset.charset.size());
  return std::find(kUnicodeOwn.begin(), kUnicodeOwn.end(), rest) != kUnicodeOwn.end();
}

}  // namespace

std::string CharsetName(std::string_view written) {
  std::string name = LowerText(written);
  return name == "utf8" ? "utf8mb3" : name;
}

std::string CollationName(std::string_view written) {
  std::string name = LowerText(written);
  constexpr std::string_view kOld = "utf8_";
  return name.starts_with(kOld) ? "utf8mb3_" + name.substr(kOld.size()) : name;
}

TLetterBytes LetterBytes(std::string_view charset) {
  for (const auto& row : kLetterBytes)
    if (row.charset == charset) return row;
  return {charset, 1, 1};
}

std::optional<std::string> LettersOf(std::string_view bytes, std::string_view charset) {
  const auto ascii = [](char c) { return static_cast<signed char>(c) >= 0; };
  if (LetterBytes(charset).least == 1 && std::all_of(bytes.begin(), bytes.end(), ascii)) return std::string(bytes);
  const auto row =
      std::find_if(kSystemNames.begin(), kSystemNames.end(), [&](auto& r) { return r.charset == charset; });
  const iconv_t converter = row == kSystemNames.end() ? NoConverter() : iconv_open("UTF-8", row->name);
  if (converter == NoConverter()) return std::nullopt;
  constexpr std::size_t kMostGrowth = 4;
  std::string letters(bytes.size() * kMostGrowth, '\0');
  char* from = const_cast<char*>(bytes.data());  // never written to
  char* to = letters.data();
  std::size_t left = bytes.size();
  std::size_t space = letters.size();
  const bool converted = iconv(converter, &from, &left, &to, &space) != static_cast<std::size_t>(-1);
  iconv_close(converter);
  letters.resize(letters.size() - space);
  return converted ? std::optional(std::move(letters)) : std::nullopt;
}

std::string PrintedText(std::string value) {
  constexpr std::size_t kBytes = 4;
  const auto byte = [&value](std::size_t at) { return static_cast<unsigned char>(value[at]); };
  for (std::size_t at = 0; at + kBytes <= value.size(); ++at) {
    if (byte(at) < 0xF0 || byte(at) > 0xF4) continue;
    const auto first = value.begin() + static_cast<std::ptrdiff_t>(at);
    const bool letter = std::all_of(first + 1, first + kBytes, [](char c) { return (c & 0xC0) == 0x80; });
    if (letter) value.replace(at, kBytes, "?");
  }
  return value;
}

bool MayBeOneText(const std::string& a, const std::string& b) {
  return a == b || (a.find('?') != std::string::npos && a == PrintedText(b)) ||
         (b.find('?') != std::string::npos && b == PrintedText(a));
}

TCharset NamedCharset(std::string_view charset, std::string_view collation) {
  TCharset result{std::string(charset), std::string(collation)};
  if (result.charset.empty()) result.charset = result.collation.substr(0, result.collation.find('_'));
  if (!result.collation.empty()) return result;
  for (const TOwnCollation& row : kOwnCollations)
    if (row.charset == charset) result.collation = row.collation;
  return result;
}

TCharset TableCharset(const TTableText& table) {
  const TTableOption* charset = table.FindOption("DEFAULT CHARSET");
  const TTableOption* collation = table.FindOption("COLLATE");
  const auto value = [](const TTableOption* option) {
    return option == nullptr ? std::string() : std::string(TrimView(option->value));
  };
  const auto unquoted = [](std::string text) {
    if (text.size() < 2 || std::string_view("`'\"").find(text.front()) == std::string_view::npos) return text;
    return text.substr(1, text.size() - 2);
  };
  return NamedCharset(CharsetName(unquoted(value(charset))), CollationName(unquoted(value(collation))));
}

bool SameCharset(const TCharset& a, const TCharset& b) {
  if (a.charset != b.charset) return false;
  if (a.collation.empty()) return b.collation.empty() || IsSomeServersOwn(b);
  return b.collation.empty() ? IsSomeServersOwn(a) : a.collation == b.collation;
}

}  // namespace velmora
