// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/OneLine.h"

namespace velmora {

std::string OnOneLine(const std::string& text) {
  std::string line;
  bool blank = false;
  for (const char c : text) {
    if (c == ' ' || (c >= '\t' && c <= '\r')) {
      blank = !line.empty();
      continue;
    }
    if (blank) line += ' ';
    blank = false;
    line += c;
  }
  return line;
}

}  // namespace velmora
