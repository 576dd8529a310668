// SPDX-License-Identifier: GPL-3.0-or-later

// The tokenizer of the DDL parser. All routines share its state; `pos_` never leaves a word that was taken, so each
// round of any loop over words comes nearer to the end of the text.

#include "engines/mysql/DDLParser.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Lists.h"
#include "util/Text.h"

namespace velmora {
namespace {

constexpr char kWordExpected[] = "Word expected at offset %d.";
constexpr char kOtherWordExpected[] = "Word %s expected, but %s found.";
constexpr char kAnyWordExpected[] = "Any of words [%s] expected, but %s found.";
constexpr char kNoStopper[] = "No stopper ";
constexpr char kNoClosingBracket[] = "No closing bracket.";
constexpr char kUnexpectedToken[] = "Unexpected parse token %s at offset %d";

}  // namespace

bool TDDLParser::TokNext(bool in_quotes) {
  std::size_t start = 0;
  StrNextWord(text_, pos_, start, word_, in_quotes);
  pos_ = start + word_.size();
  peeked_ = 0;
  return !word_.empty();
}

TDDLParser::TWord TDDLParser::NextWord() {
  if (peeked_ != 0 && peeked_ == pos_) {
    pos_ += word_.size();
    peeked_ = 0;
  } else if (!TokNext(false)) {
    RaiseError(Format(kWordExpected, pos_));
  }
  return {word_};
}

TDDLParser::TWord TDDLParser::PeekWord() {
  if (peeked_ == 0 || peeked_ != pos_) {
    NextWord();
    pos_ -= word_.size();
    peeked_ = pos_;
  }
  return {word_};
}

TDDLParser::TWord TDDLParser::LastWord() const {
  std::size_t start = 0;
  std::string_view word;
  StrPrevWord(text_, pos_, start, word);
  return {word};
}

void TDDLParser::Expect(std::string_view keyword) {
  if (NextWord() != keyword) RaiseError(Format(kOtherWordExpected, keyword, word_));
}

void TDDLParser::ExpectAny(std::initializer_list<std::string_view> keywords) {
  if (!PeekWord().In(keywords)) {
    const TStringList list(keywords.begin(), keywords.end());
    RaiseError(Format(kAnyWordExpected, JoinList(list, ","), word_));
  }
  NextWord();
}

void TDDLParser::SkipIf(std::string_view keyword) {
  if (PeekWord() == keyword) NextWord();
}

void TDDLParser::ReadUntil(std::string_view stopper) {
  const std::size_t at = Pos(stopper, text_, pos_);
  if (at == 0) RaiseError(kNoStopper + std::string(stopper));
  word_ = text_.substr(pos_ - 1, at - pos_);
  pos_ = at;
  peeked_ = 0;
}

void TDDLParser::NextName() {
  NextWord();
  if (!word_.starts_with('`')) return;
  if (word_.ends_with('`')) {
    // Deliberate: a lone backtick both begins and ends the word, so a name with a blank in front is empty.
    word_ = word_.substr(1, word_.size() < 2 ? 0 : word_.size() - 2);
    return;
  }
  // A delimiter inside the name: its rest follows directly in the text.
  const std::size_t start = pos_ - word_.size() + 1;
  ReadUntil("`");
  word_ = text_.substr(start - 1, pos_ - start);
  ++pos_;
}

// Deliberate: brackets do not nest, and a comma inside quotes splits.
void TDDLParser::ReadBracketList(TBracketList& list) {
  const std::size_t close = Pos(")", text_, pos_);
  if (close == 0) RaiseError(kNoClosingBracket);
  list.text.assign(text_, pos_ - 1, close - pos_);
  pos_ = close + 1;
  std::erase(list.text, '`');
  list.items.clear();
  std::string_view rest = TrimView(list.text);
  if (rest.empty()) return;
  for (std::size_t comma = rest.find(','); comma != std::string_view::npos; comma = rest.find(',')) {
    list.items.push_back(TrimView(rest.substr(0, comma)));
    rest.remove_prefix(comma + 1);
  }
  list.items.push_back(TrimView(rest));
}

void TDDLParser::UnexpectedToken() const { RaiseError(Format(kUnexpectedToken, word_, pos_)); }

bool TDDLParser::AtClauseEnd() { return AtEnd() || PeekWord().In({",", ")"}); }

}  // namespace velmora
