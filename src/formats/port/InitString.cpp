// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/port/InitString.h"

#include <algorithm>

#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kNul[] = "a NUL character cannot be part of it";
constexpr char kNoEquals[] = "a part has no \"=\": write key=value;key=value, and a value that holds \";\" in quotes";
constexpr char kNoKey[] = "the name before \"=\" is missing";
constexpr char kNotClosed[] = "the quote that opens here is not closed; a quote within a quoted value is doubled";
constexpr char kAfterQuote[] = "only \";\" may follow a quoted value; a quote within one is doubled";

constexpr bool IsBlank(char c) { return static_cast<unsigned char>(c) <= ' '; }
constexpr bool IsQuote(char c) { return c == '"' || c == '\''; }

// Takes the text apart from left to right. Messages show positions alone, since a value may be a password.
class TPartReader {
 public:
  explicit TPartReader(std::string_view text) : text_(text) {
    if (const std::size_t nul = text.find('\0'); nul != std::string_view::npos) RaiseAt(nul, kNul);
  }

  bool AtEnd() {
    while (!Ended() && (IsBlank(text_[at_]) || text_[at_] == ';')) ++at_;
    return Ended();
  }

  std::string TakeKey() {
    const std::size_t start = at_;
    std::string key;
    for (;; ++at_) {
      if (Ended() || text_[at_] == ';') RaiseAt(start, kNoEquals);
      if (text_[at_] == '=') {
        ++at_;
        if (Ended() || text_[at_] != '=') break;
      }
      key += text_[at_];
    }
    key = Trim(key);
    if (key.empty()) RaiseAt(start, kNoKey);
    return key;
  }

  std::string TakeValue() {
    SkipBlanks();
    if (!Ended() && IsQuote(text_[at_])) return TakeQuoted();
    const std::size_t end = std::min(text_.find(';', at_), text_.size());
    const std::string_view value = text_.substr(at_, end - at_);
    at_ = end;
    return Trim(value);
  }

 private:
  std::string TakeQuoted() {
    const std::size_t start = at_;
    const char quote = text_[at_++];
    std::string value;
    for (;; ++at_) {
      if (Ended()) RaiseAt(start, kNotClosed);
      if (text_[at_] == quote) {
        ++at_;
        if (Ended() || text_[at_] != quote) break;
      }
      value += text_[at_];
    }
    SkipBlanks();
    if (!Ended() && text_[at_] != ';') RaiseAt(at_, kAfterQuote);
    return value;
  }

  bool Ended() const { return at_ >= text_.size(); }
  void SkipBlanks() {
    while (!Ended() && IsBlank(text_[at_])) ++at_;
  }
  [[noreturn]] static void RaiseAt(std::size_t index, const char* fault) {
    RaiseError(Format("Connection string, position %d: %s", index + 1, fault));
  }

  std::string_view text_;
  std::size_t at_ = 0;
};

}  // namespace

TInitString::TInitString(std::string_view text) {
  TPartReader reader(text);
  while (!reader.AtEnd()) {
    const std::string key = reader.TakeKey();
    Set(key, reader.TakeValue());
  }
}

const std::string* TInitString::Find(std::string_view key) const {
  const auto found = std::ranges::find_if(values_, [&](const auto& each) { return SameText(each.first, key); });
  return found == values_.end() ? nullptr : &found->second;
}

bool TInitString::Has(std::string_view key) const { return Find(key) != nullptr; }

std::string TInitString::Value(std::string_view key) const {
  const std::string* value = Find(key);
  return value == nullptr ? std::string() : *value;
}

void TInitString::Set(std::string_view key, std::string value) {
  const auto found = std::ranges::find_if(values_, [&](const auto& each) { return SameText(each.first, key); });
  if (found == values_.end())
    values_.emplace_back(key, std::move(value));
  else
    found->second = std::move(value);
}

std::string InitValue(std::string_view value) {
  if (value.empty()) return {};
  const bool plain = value.find(';') == std::string_view::npos && !IsQuote(value.front()) && value.front() != '=' &&
                     !IsBlank(value.front()) && !IsBlank(value.back());
  return plain ? std::string(value) : "\"" + StrReplace(value, "\"", "\"\"") + "\"";
}

}  // namespace velmora
