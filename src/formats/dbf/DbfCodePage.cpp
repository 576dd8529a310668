// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/dbf/DbfCodePage.h"

#include <algorithm>
#include <iterator>

#include "util/Text.h"

namespace velmora {
namespace {

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

}  // namespace

TCodePage DbfCodePage(std::uint8_t number, const char* unstated) {
  const auto* row = std::ranges::find_if(kPages, [number](const TPageRow& page) {
    return page.numbers.find(static_cast<char>(number)) != std::string_view::npos;
  });
  return TCodePage(row == std::end(kPages) ? unstated : row->name);
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
  if (!TCodePage(name).Known()) return std::nullopt;
  return name;
}

}  // namespace velmora
