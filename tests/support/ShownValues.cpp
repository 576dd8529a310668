// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/ShownValues.h"

#include "util/Text.h"

namespace velmora::testing {
namespace {

std::string Shortened(const std::string& text) {
  constexpr std::size_t kMany = 10;
  std::string shown;
  for (std::size_t at = 0; at < text.size();) {
    const std::string one = text.substr(at, CharSize(text, at));
    std::size_t count = 1;
    while (text.compare(at + count * one.size(), one.size(), one) == 0) ++count;
    const std::string part = ShownText(text.substr(at, one.size() * (count < kMany ? count : 1)));
    shown += count < kMany ? part : "{" + part + "*" + std::to_string(count) + "}";
    at += count * one.size();
  }
  return shown;
}

}  // namespace

std::string ShownValue(const TVariant& value) {
  static constexpr const char* kKinds[] = {"null", "truth ", "int ", "float ", "moment ", "text "};
  const std::string text = VarToText(value);
  return kKinds[value.index()] + (std::holds_alternative<std::string>(value) ? Shortened(text) : text);
}

std::string ShownRow(const std::vector<TVariant>& row) {
  std::string text;
  for (const TVariant& value : row) text += (text.empty() ? "" : "|") + ShownValue(value);
  return text;
}

}  // namespace velmora::testing
