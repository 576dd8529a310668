// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqltext/LexicalRules.h"

#include <algorithm>
#include <array>

namespace velmora {

namespace {

constexpr std::size_t kNone = std::string_view::npos;
constexpr std::string_view kVersionOfNobody = "999999";  // dumps use it to speak to clients alone

using TStops = std::array<bool, 256>;

constexpr TStops StopsAt(std::string_view characters) {
  TStops stops{};
  for (const char c : characters) stops[static_cast<unsigned char>(c)] = true;
  return stops;
}

constexpr TStops kSingleStops = StopsAt("'\\");
constexpr TStops kDoubleStops = StopsAt("\"\\");

// The first stop at or after `from`; at least the size of the text when there is none.
std::size_t FindStop(const TStops& stops, std::string_view text, std::size_t from) {
  while (from < text.size() && !stops[static_cast<unsigned char>(text[from])]) ++from;
  return from;
}

bool StandsAt(std::string_view text, std::size_t at, std::string_view mark) {
  return text.substr(at, mark.size()) == mark;
}

bool OpensLineComment(std::string_view text, std::size_t at) {
  if (text[at] == '#') return true;
  return StandsAt(text, at, "--") && (at + 2 == text.size() || IsBlank(text[at + 2]));
}

}  // namespace

std::size_t QuotedEnd(std::string_view text, std::size_t open) {
  const char quote = text[open];
  if (quote == '`') {
    const std::size_t end = text.find(quote, open + 1);
    return end == kNone ? kNone : end + 1;
  }
  const TStops& stops = quote == '"' ? kDoubleStops : kSingleStops;
  std::size_t end = FindStop(stops, text, open + 1);
  while (end < text.size() && text[end] == '\\') end = FindStop(stops, text, end + 2);
  return end < text.size() ? end + 1 : kNone;
}

std::size_t CommentEnd(std::string_view text, std::size_t at) {
  if (at >= text.size()) return at;
  if (StandsAt(text, at, "/*")) {
    const std::size_t end = text.find("*/", at + 2);
    return end == kNone ? kNone : end + 2;
  }
  return OpensLineComment(text, at) ? std::min(text.find('\n', at), text.size()) : at;
}

std::size_t MarkOpening(std::string_view text, std::size_t at) {
  return StandsAt(text, at, "/*!") ? 3 : StandsAt(text, at, "/*M!") ? 4 : 0;
}

std::size_t VersionMark(std::string_view text, std::size_t at, std::size_t least_digits) {
  const std::size_t opening = MarkOpening(text, at);
  if (opening == 0) return 0;
  const std::string_view digits = text.substr(at + opening, kVersionOfNobody.size());
  const auto end = std::find_if(digits.begin(), digits.end(), [](char c) { return c < '0' || c > '9'; });
  const auto count = static_cast<std::size_t>(end - digits.begin());
  return count < least_digits || digits == kVersionOfNobody ? 0 : opening + count;
}

bool ClosesComment(std::string_view text, std::size_t at) { return StandsAt(text, at, "*/"); }

}  // namespace velmora
