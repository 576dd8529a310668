// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/text/TextFile.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <system_error>

#include "util/Aside.h"
#include "util/Errors.h"
#include "util/Files.h"
#include "util/Format.h"
#include "util/InputFile.h"
#include "util/Text.h"

namespace velmora {
namespace {

constexpr char kCannotRead[] = "Cannot read %s: %s";
constexpr std::size_t kDateSize = 10;  // yyyy-mm-dd

// Windows-1252 from 80 to 9F; the five bytes that it leaves open stand for the control characters of their numbers.
constexpr std::array<std::uint16_t, 32> kWindows1252 = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                                        0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                                        0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                                        0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

// A folder is gone through unseen, and a FIFO among its tables would hold us until somebody writes to it.
std::string TextOf(const std::string& path) {
  std::error_code error;
  const std::filesystem::file_status status = std::filesystem::status(path, error);
  if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status))
    RaiseError(Format(kCannotRead, path, kNoRegularFile));
  return ReadFileText(path);
}

bool IsAscii(char c) { return static_cast<unsigned char>(c) < 0x80; }

bool IsUtf8(std::string_view text) {
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t size = IsAscii(text[i]) ? 1 : CharSize(text, i);
    if (size == 1 && !IsAscii(text[i])) return false;
    i += size;
  }
  return true;
}

std::string FromWindows1252(std::string_view bytes) {
  std::string text;
  for (char c : bytes) {
    unsigned code = static_cast<unsigned char>(c);
    if (code >= 0x80 && code < 0xA0) code = kWindows1252[code - 0x80];
    if (code < 0x80) {
      text += c;
      continue;
    }
    if (code >= 0x800) text += static_cast<char>(0xE0 | code >> 12);
    text += static_cast<char>(code >= 0x800 ? 0x80 | (code >> 6 & 0x3F) : 0xC0 | code >> 6);
    text += static_cast<char>(0x80 | (code & 0x3F));
  }
  return text;
}

// Gives each line of `text` to `take`, without its end; a last line without an end counts.
template <class Take>
void WalkLines(std::string_view text, Take take) {
  for (std::size_t from = 0; from < text.size();) {
    std::size_t end = from;
    while (end < text.size() && text[end] != '\n' && text[end] != '\r') ++end;
    take(text.substr(from, end - from));
    from = end + (text.substr(end, 2) == "\r\n" ? 2 : 1);
  }
}

// The number that exactly these digits make.
std::optional<int> Digits(std::string_view text, std::size_t at, std::size_t count) {
  int number = 0;
  for (const char c : text.substr(at, count)) {
    if (c < '0' || c > '9') return std::nullopt;
    number = number * 10 + (c - '0');
  }
  return number;
}

}  // namespace

TTextLines::TTextLines(const std::string& path) : text_(TextOf(path)) {
  std::size_t count = 0;
  WalkLines(text_, [&count](std::string_view) { ++count; });
  lines_.reserve(count);  // growing would hold them twice
  WalkLines(text_, [this](std::string_view line) {
    StopIfLeft();
    lines_.push_back(IsUtf8(line) ? line : decoded_.emplace_back(FromWindows1252(line)));
  });
}

std::string_view TTextLines::Line(std::size_t index) const {
  StopIfLeft();
  if (index >= lines_.size()) throw EListError(static_cast<std::int64_t>(index));
  return lines_[index];
}

void TTextLines::DropEmptyEnd() {
  while (!lines_.empty() && lines_.back().empty()) lines_.pop_back();
}

std::optional<TDateTime> TextToDate(std::string_view text) {
  if (text.size() != kDateSize || text[4] != '-' || text[7] != '-') return std::nullopt;
  const auto year = Digits(text, 0, 4), month = Digits(text, 5, 2), day = Digits(text, 8, 2);
  if (!year || !month || !day) return std::nullopt;
  try {
    return EncodeDate(*year, *month, *day);
  } catch (const EConvertError&) {  // the 30th of February
    return std::nullopt;
  }
}

std::optional<TDateTime> TextToTime(std::string_view text) {
  const bool seconds = text.size() == 8 && text[5] == ':';
  if ((text.size() != 5 && !seconds) || text[2] != ':') return std::nullopt;
  const auto hour = Digits(text, 0, 2), minute = Digits(text, 3, 2);
  const auto second = seconds ? Digits(text, 6, 2) : 0;
  if (!hour || !minute || !second) return std::nullopt;
  if (*hour > 23 || *minute > 59 || *second > 59) return std::nullopt;
  return EncodeTime(*hour, *minute, *second);
}

std::optional<TDateTime> TextToDateTime(std::string_view text) {
  if (text.size() < kDateSize) return TextToTime(text);
  const auto date = TextToDate(text.substr(0, kDateSize));
  if (!date || text.size() == kDateSize) return date;
  const auto time = text[kDateSize] == ' ' ? TextToTime(text.substr(kDateSize + 1)) : std::nullopt;
  return time ? std::optional(*date + *time) : std::nullopt;
}

std::optional<std::int32_t> TextToInteger(std::string_view text) {
  const auto value = text.starts_with(' ') ? std::nullopt : TryStrToInt(text);
  if (!value || *value != static_cast<std::int32_t>(*value)) return std::nullopt;
  return static_cast<std::int32_t>(*value);
}

void CutToFileNames(TStringList& paths) {
  for (std::string& path : paths) path.erase(0, LastPos("/", path));
}

}  // namespace velmora
