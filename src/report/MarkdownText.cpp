// SPDX-License-Identifier: GPL-3.0-or-later
#include "report/MarkdownText.h"

#include "util/Text.h"

namespace velmora {

std::string PlainMarkdown(std::string_view text) {
  constexpr std::string_view kSpecial = "\\`*_{}[]#|~&";
  std::string plain;
  const std::string shown = ShownText(text);
  for (std::size_t at = 0; at < shown.size(); ++at) {
    const char c = shown[at];
    if (c == '<')
      plain += "&lt;";
    else
      plain += (kSpecial.find(c) != std::string_view::npos ? "\\" : "") + std::string(1, c);
    if (c == '@' || c == '#' || shown.compare(at, 3, "://") == 0) plain += "&#8203;";
  }
  return plain;
}

}  // namespace velmora
