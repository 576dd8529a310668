// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqltext/Lexer.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "mysqltext/LexicalRules.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr const char* kUnclosedQuote = "line %d: unclosed %s quote";
constexpr const char* kUnclosedComment = "line %d: unclosed comment";
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr bool IsDigit(char c) { return c >= '0' && c <= '9'; }

constexpr std::array<bool, 256> WordCharacters() {
  std::array<bool, 256> result{};
  for (unsigned c = 0; c < result.size(); ++c)
    result[c] =
        c >= 0x80 || (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_' || c == '$';
  return result;
}
constexpr std::array<bool, 256> kWordCharacter = WordCharacters();
constexpr bool IsWordCharacter(char c) { return kWordCharacter[static_cast<unsigned char>(c)]; }

constexpr std::array<std::string_view, 12> kLongSymbols = {
    "<=>", "->>", ":=", "<>", "!=", "<=", ">=", "<<", ">>", "&&", "||", "->"};

bool AllOf(std::string_view text, bool (*is)(char)) { return std::all_of(text.begin(), text.end(), is); }
bool IsHexDigit(char c) { return IsDigit(c) || (LowerChar(c) >= 'a' && LowerChar(c) <= 'f'); }
bool IsBinaryDigit(char c) { return c == '0' || c == '1'; }
bool IsDecimalDigit(char c) { return IsDigit(c); }

constexpr bool IsLongSymbolStart(char c) {
  return c == '<' || c == '-' || c == ':' || c == '!' || c == '>' || c == '&' || c == '|';
}

// Whether `word`, which stands before a quote, belongs to it.
bool IsStringPrefix(std::string_view word) {
  if (word.front() == '_') return word.size() > 1;
  return word.size() == 1 && std::string_view("xXbBnN").find(word.front()) != std::string_view::npos;
}

class TLexer {
 public:
  explicit TLexer(std::string_view text) : text_(text) {}
  std::vector<TToken> Read();

 private:
  void SkipGap();
  bool SkipComment();
  void ReadToken();
  void ReadQuoted(EToken kind, std::size_t start, const char* quote_name);
  void ReadWordOrNumber();
  void ReadFraction();
  void ReadExponent();
  void ReadSymbol();
  bool StartsFraction() const;
  char At(std::size_t place) const { return place < text_.size() ? text_[place] : '\0'; }
  void Add(EToken kind, std::size_t start) { tokens_.push_back({kind, text_.substr(start, at_ - start), start}); }

  std::string_view text_;
  std::size_t at_ = 0;
  std::vector<std::size_t> marks_;  // where the open version comments begin
  std::vector<TToken> tokens_;
};

std::vector<TToken> TLexer::Read() {
  constexpr std::size_t kBytesPerToken = 5;  // of creation texts, blanks counted
  tokens_.reserve(text_.size() / kBytesPerToken + 2);
  if (text_.starts_with(kByteOrderMark)) at_ = kByteOrderMark.size();
  for (SkipGap(); at_ < text_.size(); SkipGap()) ReadToken();
  if (!marks_.empty()) RaiseError(Format(kUnclosedComment, LineOf(text_, marks_.back())));
  Add(EToken::End, at_);
  return std::move(tokens_);
}

void TLexer::SkipGap() {
  do {
    while (at_ < text_.size() && IsSpace(text_[at_])) ++at_;
  } while (at_ < text_.size() && SkipComment());
}

// Passes over a comment, or a mark of one whose content counts.
bool TLexer::SkipComment() {
  if (const char c = text_[at_]; c != '/' && c != '-' && c != '#' && c != '*') return false;
  if (!marks_.empty() && ClosesComment(text_, at_)) {
    marks_.pop_back();
    at_ += 2;
    return true;
  }
  if (const std::size_t mark = VersionMark(text_, at_, 0)) {
    marks_.push_back(at_);
    at_ += mark;
    return true;
  }
  const std::size_t end = CommentEnd(text_, at_);
  if (end == std::string_view::npos) RaiseError(Format(kUnclosedComment, LineOf(text_, at_)));
  return std::exchange(at_, end) != end;
}

void TLexer::ReadToken() {
  const char c = text_[at_];
  if (c == '`') return ReadQuoted(EToken::Name, at_, "back");
  if (c == '\'') return ReadQuoted(EToken::String, at_, "single");
  if (c == '"') return ReadQuoted(EToken::String, at_, "double");
  if (IsWordCharacter(c)) return ReadWordOrNumber();
  if (StartsFraction()) {
    const std::size_t start = at_;
    ReadFraction();
    ReadExponent();
    return Add(EToken::Number, start);
  }
  ReadSymbol();
}

// The quote stands at at_, the token begins at `start`. A doubled quote stands for one within.
void TLexer::ReadQuoted(EToken kind, std::size_t start, const char* quote_name) {
  const std::size_t open = at_;
  do at_ = QuotedEnd(text_, at_);
  while (at_ < text_.size() && text_[at_] == text_[open]);
  if (at_ == std::string_view::npos) RaiseError(Format(kUnclosedQuote, LineOf(text_, open), quote_name));
  Add(kind, start);
}

void TLexer::ReadWordOrNumber() {
  const std::size_t start = at_;
  while (at_ < text_.size() && IsWordCharacter(text_[at_])) ++at_;
  const std::string_view word = text_.substr(start, at_ - start);
  const char next = At(at_);
  if (!IsDigit(word.front())) {
    if (next == '\'' && IsStringPrefix(word)) return ReadQuoted(EToken::String, start, "single");
    if (next == '"' && IsStringPrefix(word)) return ReadQuoted(EToken::String, start, "double");
    return Add(EToken::Word, start);
  }
  const std::size_t digits =
      static_cast<std::size_t>(std::find_if_not(word.begin(), word.end(), IsDecimalDigit) - word.begin());
  if (digits == word.size()) {
    if (next == '.') ReadFraction();
    ReadExponent();
    return Add(EToken::Number, start);
  }
  const std::string_view rest = word.substr(digits + 1);
  const char letter = LowerChar(word[digits]);
  if (letter == 'e' && rest.empty() && (next == '+' || next == '-') && IsDigit(At(at_ + 1))) {
    at_ = start + digits;
    ReadExponent();
    return Add(EToken::Number, start);
  }
  const bool prefixed = word.front() == '0' && digits == 1 && !rest.empty();
  const bool number = (letter == 'e' && !rest.empty() && AllOf(rest, IsDecimalDigit)) ||
                      (letter == 'x' && prefixed && AllOf(rest, IsHexDigit)) ||
                      (letter == 'b' && prefixed && AllOf(rest, IsBinaryDigit));
  Add(number ? EToken::Number : EToken::Word, start);
}

// A point begins a number unless it stands after a name, as in t.1a.
bool TLexer::StartsFraction() const {
  if (text_[at_] != '.' || !IsDigit(At(at_ + 1))) return false;
  if (tokens_.empty() || tokens_.back().End() != at_) return true;
  return tokens_.back().kind == EToken::Symbol;
}

void TLexer::ReadFraction() {
  ++at_;
  while (IsDigit(At(at_))) ++at_;
}

void TLexer::ReadExponent() {
  if (LowerChar(At(at_)) != 'e') return;
  std::size_t digits = at_ + 1;
  if (At(digits) == '+' || At(digits) == '-') ++digits;
  if (!IsDigit(At(digits))) return;
  while (IsDigit(At(digits))) ++digits;
  at_ = digits;
}

void TLexer::ReadSymbol() {
  const std::size_t start = at_;
  std::size_t length = 1;
  if (IsLongSymbolStart(text_[at_]))
    for (const std::string_view symbol : kLongSymbols)
      if (text_.substr(at_, symbol.size()) == symbol) {
        length = symbol.size();
        break;
      }
  at_ += length;
  Add(EToken::Symbol, start);
}

// Writes what stands between tokens: marks of versions in pairs, all else as one blank.
class TGapWriter {
 public:
  explicit TGapWriter(std::string& out) : out_(out) {}

  void Write(std::string_view gap) {
    for (std::size_t at = 0; at < gap.size();) at = WriteStep(gap, at);
    Blank();
  }
  void WriteToken(std::string_view token) { out_ += token; }
  // What stands after the last token: only what closes the marks that are open.
  void Close(std::string_view gap) {
    for (std::size_t at = 0; at < gap.size() && open_ > 0;) at = WriteStep(gap, at);
    for (; open_ > 0; --open_) out_ += " */";
    blank_ = false;
  }

 private:
  std::size_t WriteStep(std::string_view gap, std::size_t at) {
    if (ClosesComment(gap, at)) {
      if (open_ > 0) {
        Blank();
        out_ += "*/";
        --open_;
      }
      return at + 2;
    }
    if (const std::size_t mark = VersionMark(gap, at, 0)) {
      Blank();
      out_ += gap.substr(at, mark);
      ++open_;
      return at + mark;
    }
    blank_ = true;
    const std::size_t end = CommentEnd(gap, at);
    return end == at ? at + 1 : std::min(end, gap.size());
  }
  void Blank() {
    if (blank_) out_ += ' ';
    blank_ = false;
  }

  std::string& out_;
  bool blank_ = false;
  int open_ = 0;
};

bool IsPlainGap(std::string_view gap) {
  return gap.empty() || gap == " " || std::all_of(gap.begin(), gap.end(), [](char c) { return c == ' ' || c == '\t'; });
}

std::string_view Gap(std::string_view text, TTokens tokens, std::size_t after) {
  return text.substr(tokens[after].End(), tokens[after + 1].start - tokens[after].End());
}

char Unescaped(char c) {
  switch (c) {
    case '0':
      return '\0';
    case 'b':
      return '\b';
    case 'n':
      return '\n';
    case 'r':
      return '\r';
    case 't':
      return '\t';
    case 'Z':
      return '\x1A';
    default:
      return c;
  }
}

std::string Undoubled(std::string_view inner, char quote) {
  std::string result;
  result.reserve(inner.size());
  for (std::size_t i = 0; i < inner.size(); ++i) {
    result += inner[i];
    if (inner[i] == quote) ++i;
  }
  return result;
}

}  // namespace

std::vector<TToken> Tokens(std::string_view text) { return TLexer(text).Read(); }

bool IsPlain(std::string_view text, TTokens tokens, std::size_t first, std::size_t last) {
  for (std::size_t i = first; i + 1 < last; ++i)
    if (!IsPlainGap(Gap(text, tokens, i))) return false;
  return true;
}

std::string TextOf(std::string_view text, TTokens tokens, std::size_t first, std::size_t last) {
  if (first >= last) return "";
  if (IsPlain(text, tokens, first, last))
    return std::string(text.substr(tokens[first].start, tokens[last - 1].End() - tokens[first].start));

  std::string result;
  TGapWriter writer(result);
  for (std::size_t i = first; i < last; ++i) {
    writer.WriteToken(tokens[i].text);
    if (i + 1 < last) writer.Write(Gap(text, tokens, i));
  }
  writer.Close(Gap(text, tokens, last - 1));
  return result;
}

int LineOf(std::string_view text, std::size_t place) {
  const std::string_view before = text.substr(0, place);
  return 1 + static_cast<int>(std::count(before.begin(), before.end(), '\n'));
}

std::string NameOf(const TToken& token) {
  if (token.kind == EToken::Word) return std::string(token.text);
  if (token.text.size() < 2) return "";
  const std::string_view inner = token.text.substr(1, token.text.size() - 2);
  if (inner.find(token.text.front()) == std::string_view::npos) return std::string(inner);
  return Undoubled(inner, token.text.front());
}

std::string_view PrefixOf(const TToken& token) {
  return token.text.substr(0, std::min(token.text.find_first_of("'\""), token.text.size()));
}

std::string ValueOf(const TToken& token) {
  const std::string_view quoted = token.text.substr(PrefixOf(token).size());
  if (quoted.size() < 2) return "";
  const char quote = quoted.front();
  const std::string_view inner = quoted.substr(1, quoted.size() - 2);
  std::string result;
  result.reserve(inner.size());
  for (std::size_t i = 0; i < inner.size(); ++i) {
    if (inner[i] == '\\' && i + 1 < inner.size()) {
      const char next = inner[++i];
      if (next == '%' || next == '_') result += '\\';  // these two stay escapes, for "like"
      result += Unescaped(next);
    } else {
      result += inner[i];
      if (inner[i] == quote) ++i;
    }
  }
  return result;
}

std::string QuotedName(std::string_view name) {
  std::string result = "`";
  for (const char c : name) result.append(c == '`' ? 2 : 1, c);
  return result += '`';
}

std::string QuotedText(std::string_view value) {
  std::string result = "'";
  for (const char c : value) {
    switch (c) {
      case '\'':
        result += "''";
        break;
      case '\\':
        result += "\\\\";
        break;
      case '\0':
        result += "\\0";
        break;
      case '\n':
        result += "\\n";
        break;
      case '\r':
        result += "\\r";
        break;
      case '\x1A':
        result += "\\Z";
        break;
      default:
        result += c;
    }
  }
  return result += '\'';
}

}  // namespace velmora
