// SPDX-License-Identifier: GPL-3.0-or-later
#include "foreign/Checks.h"

#include <algorithm>
#include <array>

#include "foreign/Names.h"
#include "mysqltext/Lexer.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr std::array<std::string_view, 8> kWords = {"and", "or", "not", "between", "in", "is", "null", "like"};
constexpr std::array<std::string_view, 12> kSigns = {"<>", "!=", "<=", ">=", "=", "<", ">", "(", ")", ",", "+", "-"};

bool IsNameStart(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || static_cast<signed char>(c) < 0;
}
bool IsDigit(char c) { return c >= '0' && c <= '9'; }

class TCheckReader {
 public:
  TCheckReader(const TForeignCheck& check, const TStringList& columns, const TStringList& names)
      : text_(TrimView(check.text)), column_(check.column), columns_(columns), names_(names) {}

  std::optional<std::string> Read() {
    while (!failed_ && Skip()) Next();
    if (failed_ || made_.empty() || depth_ != 0) return std::nullopt;
    return made_;
  }

 private:
  bool Skip() {
    while (at_ < text_.size() && static_cast<unsigned char>(text_[at_]) <= ' ') ++at_;
    return at_ < text_.size();
  }

  void Next() {
    const char c = text_[at_];
    if (c == '[')
      Name(Until(']'));
    else if (c == '`' || c == '"')
      Name(Until(c));
    else if (c == '\'' || ((c == 'N' || c == 'n') && text_.substr(at_ + 1).starts_with('\'')))
      Literal();
    else if (IsDigit(c) || (c == '.' && IsDigit(text_.substr(at_ + 1).empty() ? ' ' : text_[at_ + 1])))
      Number();
    else if (IsNameStart(c))
      Word();
    else
      Sign();
  }

  // What stands up to the sign, which is passed; a doubled one is part of it.
  std::string Until(char sign) {
    std::string inside;
    for (++at_; at_ < text_.size(); ++at_) {
      if (text_[at_] == sign && !text_.substr(at_ + 1).starts_with(sign)) {
        ++at_;
        return inside;
      }
      if (text_[at_] == sign) ++at_;
      inside += text_[at_];
    }
    failed_ = true;
    return inside;
  }

  void Add(const std::string& piece) {
    const bool tight = made_.empty() || made_.back() == '(' || piece == ")" || piece == ",";
    made_ += (tight ? "" : " ") + piece;
  }

  std::optional<std::string> ColumnOf(std::string_view name) const {
    const auto found = FindNamed(columns_, name);
    if (found == columns_.end()) return std::nullopt;
    return QuotedName(names_[static_cast<std::size_t>(found - columns_.begin())]);
  }

  // Two values side by side, as in "date '2024-05-31'", are none that MySQL would know.
  void Value(const std::string& text) {
    failed_ = failed_ || after_value_;
    after_value_ = true;
    Add(text);
  }

  void Name(std::string_view name) {
    const auto column = ColumnOf(name);
    if (!column) failed_ = true;
    Value(column.value_or(""));
  }

  void Literal() {
    if (text_[at_] != '\'') ++at_;
    const std::string value = Until('\'');
    // MySQL's patterns have no sets of letters, and "\" is an escape in them alone.
    if (word_ == "like" && value.find_first_of("[\\") != std::string::npos) failed_ = true;
    Value(QuotedText(value));
  }

  void Number() {
    const std::size_t start = at_;
    while (at_ < text_.size() && (IsDigit(text_[at_]) || text_[at_] == '.')) ++at_;
    const std::string number(text_.substr(start, at_ - start));
    if ((at_ < text_.size() && IsNameStart(text_[at_])) || !TryStrToFloat(number)) failed_ = true;
    Value(number);
  }

  // A bracket after a name makes it a function.
  void Word() {
    const std::size_t start = at_;
    while (at_ < text_.size() && (IsNameStart(text_[at_]) || IsDigit(text_[at_]) || text_[at_] == '$')) ++at_;
    const std::string word = word_ = LowerText(text_.substr(start, at_ - start));
    if (std::ranges::find(kWords, word) != kWords.end()) {
      // What a column's own check compares is the column.
      if (!column_.empty() && !after_value_ && word != "not" && word != "null") Name(column_);
      Add(word);
      after_value_ = word == "null";
      return;
    }
    if (Skip() && text_[at_] == '(') failed_ = true;
    Name(text_.substr(start, word.size()));
  }

  void Sign() {
    for (const std::string_view sign : kSigns) {
      if (!text_.substr(at_).starts_with(sign)) continue;
      at_ += sign.size();
      depth_ += sign == "(" ? 1 : sign == ")" ? -1 : 0;
      if (depth_ < 0) failed_ = true;
      const bool compares = sign.find_first_of("<>=") != std::string_view::npos;
      if (compares && !after_value_ && !column_.empty()) Name(column_);
      // "+" joins texts elsewhere, and dates are counted with in other units.
      if ((sign == "+" || sign == "-") && after_value_) failed_ = true;
      Add(std::string(sign));
      after_value_ = sign == ")";
      return;
    }
    failed_ = true;
  }

  std::string_view text_;
  std::string_view column_;
  const TStringList& columns_;
  const TStringList& names_;
  std::size_t at_ = 0;
  int depth_ = 0;
  std::string word_;  // the last one, in lower case
  bool after_value_ = false;
  bool failed_ = false;
  std::string made_;
};

}  // namespace

std::optional<std::string> MakeCheck(const TForeignCheck& check, const TStringList& columns, const TStringList& names) {
  return TCheckReader(check, columns, names).Read();
}

}  // namespace velmora
