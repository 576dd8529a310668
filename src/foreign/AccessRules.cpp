// SPDX-License-Identifier: GPL-3.0-or-later
#include "foreign/AccessRules.h"

#include <optional>

#include "util/Format.h"
#include "util/Lists.h"
#include "util/Text.h"

namespace velmora {

namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsLetter(char c) {
  const char lower = LowerChar(c);
  return (lower >= 'a' && lower <= 'z') || c == '_' || static_cast<signed char>(c) < 0;
}

// "*" stands for any letters, "?" for one, "#" for a digit.
std::string PlainPattern(std::string_view pattern) {
  std::string plain;
  bool in_set = false;
  for (const char c : pattern) {
    if (!in_set && c == '*')
      plain += '%';
    else if (!in_set && c == '?')
      plain += '_';
    else if (!in_set && c == '#')
      plain += "[0-9]";
    else if (!in_set && (c == '%' || c == '_'))
      plain += std::string("[") + c + "]";
    else
      plain += c;
    in_set = c == '[' || (in_set && c != ']');
  }
  return plain;
}

// Month, day and year as "2024-05-31"; nothing for a moment with a time, and for what is no day.
std::optional<std::string> PlainDay(std::string_view text) {
  TStringList parts;
  SplitText("/", std::string(text), parts);
  constexpr std::size_t kYearDigits = 4;
  if (parts.size() != 3 || parts[2].size() != kYearDigits) return std::nullopt;
  for (std::string& part : parts) {
    if (part.empty() || part.find_first_not_of("0123456789") != std::string::npos) return std::nullopt;
    if (part.size() == 1) part.insert(0, 1, '0');
  }
  return parts[2] + "-" + parts[0] + "-" + parts[1];
}

class TRuleReader {
 public:
  TRuleReader(std::string_view rule, bool of_column) : rule_(rule), alone_(of_column), of_column_(of_column) {}

  std::string Read() {
    while (at_ < rule_.size()) Next();
    return std::move(made_);
  }

 private:
  void Next() {
    const char c = rule_[at_];
    const char after = at_ + 1 < rule_.size() ? rule_[at_ + 1] : ' ';
    if (c == '"' || c == '\'') return Text();
    if (c == '#') return Day();
    if (c == '[') return Take(rule_.find(']', at_));
    if (IsLetter(c)) return Word();
    if (IsDigit(c) || ((c == '-' || c == '.') && IsDigit(after) && alone_)) return Number();
    if (c != ' ' && c != '(') alone_ = false;
    Take(at_);
  }

  // Up to the character at `last`, or all where that is none.
  void Take(std::size_t last) {
    const std::size_t end = last == std::string_view::npos ? rule_.size() : last + 1;
    made_ += rule_.substr(at_, end - at_);
    if (end - at_ > 1) alone_ = false;
    at_ = end;
  }

  void BeginValue() {
    if (alone_) made_ += "= ";
    alone_ = false;
  }

  void Text() {
    const char quote = rule_[at_];
    std::size_t end = at_;
    do end = rule_.find(quote, end + 1) + 1;
    while (end != 0 && end < rule_.size() && rule_[end] == quote);
    if (end == 0) return Take(std::string_view::npos);
    const std::string_view inside = rule_.substr(at_ + 1, end - at_ - 2);
    const std::string text = StrReplace(inside, std::string(2, quote), std::string(1, quote));
    BeginValue();
    made_ += "'" + StrReplace(word_ == "like" ? PlainPattern(text) : text, "'", "''") + "'";
    at_ = end;
  }

  void Day() {
    const std::size_t end = rule_.find('#', at_ + 1);
    const auto day = end == std::string_view::npos ? std::nullopt : PlainDay(rule_.substr(at_ + 1, end - at_ - 1));
    if (!day) return Take(end);
    BeginValue();
    made_ += "'" + *day + "'";
    at_ = end + 1;
  }

  void Number() {
    BeginValue();
    std::size_t end = at_ + 1;
    while (end < rule_.size() && (IsDigit(rule_[end]) || rule_[end] == '.')) ++end;
    Take(end - 1);
  }

  void Word() {
    std::size_t end = at_ + 1;
    while (end < rule_.size() && (IsLetter(rule_[end]) || IsDigit(rule_[end]))) ++end;
    word_ = LowerText(rule_.substr(at_, end - at_));
    if (word_ == "null" && alone_) made_ += "Is ";
    const bool joins = word_ == "or" || (word_ == "and" && !between_);
    const bool alone = of_column_ && (joins || (word_ == "not" && alone_));
    between_ = word_ == "between" || (between_ && word_ != "and");
    Take(end - 1);
    alone_ = alone;
  }

  std::string_view rule_;
  std::size_t at_ = 0;
  std::string word_;      // the last one, in lower case
  bool between_ = false;  // an "And" that follows belongs to it
  bool alone_;            // a value here would have nothing in front that compares
  bool of_column_;
  std::string made_;
};

}  // namespace

std::string PlainCondition(std::string_view rule, bool of_column) { return TRuleReader(rule, of_column).Read(); }

}  // namespace velmora
