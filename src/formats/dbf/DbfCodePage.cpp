#include "formats/dbf/DbfCodePage.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <iterator>
#include <system_error>

#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {
namespace {

constexpr char kCannotConvert[] = "Cannot convert from %s: %s";
constexpr std::string_view kNoLetter = "\xEF\xBF\xBD";

struct TPageRow {
  const char* name;
  std::string_view numbers;
};

// Several numbers stand for one page, since dBASE has one per language and page.
constexpr TPageRow kPages[] = {
    {"CP437", "\x01\x09\x0B\x0D\x0F\x11\x15\x18\x19\x1B"},
    {"CP737", "\x6A\x86"},
    {"CP850", "\x02\x0A\x0E\x10\x12\x14\x16\x1A\x1D\x25\x37"},
    {"CP852", "\x1F\x22\x23\x40\x64\x87"},
    {"CP857", "\x6B\x88"},
    {"CP860", "\x24"},
    {"CP861", "\x67"},
    {"CP863", "\x1C\x6C"},
    {"CP865", "\x08\x17\x66"},
    {"CP866", "\x26\x65"},
    {"CP874", "\x50\x7C"},
    {"CP932", "\x13\x7B"},
    {"CP936", "\x4D\x7A"},
    {"CP949", "\x4E\x79"},
    {"CP950", "\x4F\x78"},
    {"CP1250", "\xC8"},
    {"CP1251", "\xC9"},
    {"CP1252", "\x03\x57\x58\x59"},
    {"CP1253", "\xCB"},
    {"CP1254", "\xCA"},
    {"CP1255", "\x7D"},
    {"CP1256", "\x7E"},
    {"CP1257", "\xCC"},
    {"MACINTOSH", "\x04"},
    {"MAC-CYRILLIC", "\x96"},
    {"MAC-CENTRALEUROPE", "\x97"},
};

bool IsAscii(std::string_view bytes) {
  return std::ranges::all_of(bytes, [](unsigned char byte) { return byte < 0x80; });
}

}  // namespace

TDbfCodePage::TDbfCodePage(std::uint8_t number, const char* unstated) {
  const auto* row = std::ranges::find_if(kPages, [number](const TPageRow& page) {
    return page.numbers.find(static_cast<char>(number)) != std::string_view::npos;
  });
  name_ = row == std::end(kPages) ? unstated : row->name;
}

std::string TDbfCodePage::Decode(std::string_view bytes) const {
  if (IsAscii(bytes)) return std::string(bytes);
  if (!converter_) {
    const iconv_t converter = iconv_open("UTF-8", name_.c_str());
    if (reinterpret_cast<std::intptr_t>(converter) == -1)
      RaiseError(Format(kCannotConvert, name_, std::generic_category().message(errno)));
    converter_.reset(converter);
  }
  iconv(converter_.get(), nullptr, nullptr, nullptr, nullptr);
  std::string text;
  std::array<char, 1024> room{};
  char* from = const_cast<char*>(bytes.data());  // never written to
  std::size_t left = bytes.size();
  // Without bytes to read the converter lets go of a letter that it has kept for what might follow.
  const auto convert = [&](char** source) {
    char* to = room.data();
    std::size_t space = room.size();
    const bool done = iconv(converter_.get(), source, &left, &to, &space) != static_cast<std::size_t>(-1);
    const int error = done ? 0 : errno;
    text.append(room.data(), to);
    return error;
  };
  while (left > 0) {
    const int error = convert(&from);
    if (error == 0 || error == E2BIG) continue;
    convert(nullptr);
    text += kNoLetter;
    ++from;
    --left;
  }
  convert(nullptr);
  return text;
}

std::optional<std::string> CodePageNamed(std::string_view text) {
  std::string name = LowerText(Trim(text));
  for (const std::string_view word : {"ansi ", "oem ", "windows-", "cp"})
    if (name.starts_with(word)) name = Trim(name.substr(word.size()));
  if (name == "65001" || name == "utf8") name = "utf-8";
  constexpr std::string_view kIso = "8859";
  if (name.starts_with(kIso)) {
    const std::string part = name.substr(kIso.size());
    name = "iso-8859-" + (part.starts_with('-') ? part.substr(1) : part);
  } else if (!name.empty() && name.find_first_not_of("0123456789") == std::string::npos) {
    name = "cp" + name;
  }
  // What would follow a slash is not for names: how letters are made fit.
  if (name.empty() || name.find('/') != std::string::npos) return std::nullopt;
  const iconv_t converter = iconv_open("UTF-8", name.c_str());
  if (reinterpret_cast<std::intptr_t>(converter) == -1) return std::nullopt;
  iconv_close(converter);
  return name;
}

}  // namespace velmora
