// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/TnsNames.h"

#include <algorithm>
#include <cstddef>

#include "util/Files.h"

namespace velmora {

namespace {

bool IsLetterOrDigit(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'); }

bool IsInName(char c) { return IsLetterOrDigit(c) || std::string_view("_-.#$").find(c) != std::string_view::npos; }

// Takes the name that begins at `at`, which moves past it.
std::string_view NameAt(std::string_view text, std::size_t& at) {
  const auto* begin = text.begin() + at;
  const auto* end = std::find_if_not(begin, text.end(), IsInName);
  at = static_cast<std::size_t>(end - text.begin());
  return {begin, end};
}

}  // namespace

TStringList TnsNames(std::string_view text) {
  TStringList names;
  bool comment = false;
  bool quoted = false;
  std::ptrdiff_t depth = 0;
  text = text.substr(0, text.find('\0'));
  // Deliberate: a ")" too many ends the scan, and quotes go on over the ends of lines.
  for (std::size_t at = 0; at < text.size() && depth >= 0;) {
    const char c = text[at];
    if (!comment && !quoted && depth == 0 && IsLetterOrDigit(c)) {
      names.emplace_back(NameAt(text, at));
      continue;
    }
    if (c == '\n' || c == '\r') {
      comment = false;
    } else if (c == '\'' && !comment) {
      quoted = !quoted;
    } else if (!comment && !quoted) {
      comment = c == '#';
      depth += c == '(' ? 1 : c == ')' ? -1 : 0;
    }
    ++at;
  }
  return names;
}

TStringList OracleServices(const std::string& machine_values) {
  const std::string home = ReadRegStringHKLM(kOracleHome, machine_values);
  if (home.empty()) return {};
  return TnsNames(ReadFileText(JoinPath(JoinPath(JoinPath(home, "network"), "admin"), "tnsnames.ora")));
}

}  // namespace velmora
