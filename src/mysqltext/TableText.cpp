// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqltext/TableText.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "mysqltext/ElementText.h"
#include "mysqltext/KeyText.h"
#include "mysqltext/Lexer.h"
#include "mysqltext/TableOptions.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr const char* kExpected = "line %d: %s expected, but %s found";
constexpr const char* kNothing = "the end";
constexpr std::size_t kShownLength = 40;

bool IsDoubleQuoted(const TToken& token) { return token.kind == EToken::String && token.text.front() == '"'; }

class TTableReader {
 public:
  TTableReader(std::string_view text, TTokens tokens) : text_(text), tokens_(tokens) {}

  // Whether the text was printed with names in double quotes: then that of the table is.
  bool HasQuotedNames();
  TTableText Read();

 private:
  void ReadHead();
  void ReadName();
  void ReadElements();
  void ReadElement();
  std::size_t ElementEnd() const;
  TElementText ElementText(EElement kind, TTokens element) const;  // of the tokens from at_ on
  void CheckElement(const TElementHead& head, TTokens element);
  void ReadOptions();
  void ReadPartitioning();
  void ReadEnd();

  const TToken& Now() const { return tokens_[at_]; }
  const TToken& Next() const { return TokenAt(tokens_, at_ + 1); }
  bool Take(std::string_view word);
  void Expect(std::string_view word);
  [[noreturn]] void Fail(std::string_view expected) const;

  std::string_view text_;
  TTokens tokens_;
  std::size_t at_ = 0;
  TTableText table_;
};

bool TTableReader::Take(std::string_view word) {
  if (!Now().Is(word)) return false;
  ++at_;
  return true;
}

void TTableReader::Expect(std::string_view word) {
  if (!Take(word)) Fail("\"" + std::string(word) + "\"");
}

void TTableReader::Fail(std::string_view expected) const {
  const TToken& token = Now();
  const bool end = token.kind == EToken::End;
  RaiseError(Format(kExpected, LineOf(text_, token.start), expected,
                    end ? kNothing : "\"" + CutChars(token.text, kShownLength) + "\""));
}

void TTableReader::ReadHead() {
  Expect("create");
  if (Take("or")) Expect("replace");
  table_.temporary = Take("temporary");
  Expect("table");
  if (!Take("if")) return;
  Expect("not");
  Expect("exists");
}

bool TTableReader::HasQuotedNames() {
  ReadHead();
  const bool result = IsDoubleQuoted(Now());
  at_ = 0;
  return result;
}

void TTableReader::ReadName() {
  do {
    if (!IsName(Now())) Fail("a name");
    table_.name = NameOf(Now());
    ++at_;
  } while (Take("."));
}

TTableText TTableReader::Read() {
  ReadHead();
  ReadName();
  ReadElements();
  ReadOptions();
  ReadPartitioning();
  ReadEnd();
  return std::move(table_);
}

void TTableReader::ReadElements() {
  constexpr std::size_t kUsual = 16;
  Expect("(");
  table_.elements.reserve(kUsual);
  do ReadElement();
  while (Take(","));
  Expect(")");
}

// The comma or bracket that ends the element which begins here.
std::size_t TTableReader::ElementEnd() const {
  std::size_t depth = 0;
  std::size_t at = at_;
  for (; tokens_[at].kind != EToken::End; ++at) {
    if (tokens_[at].kind != EToken::Symbol) continue;
    const char c = tokens_[at].text.front();
    if (c == '(') ++depth;
    if (depth == 0 && (c == ',' || c == ')')) break;
    if (c == ')') --depth;
  }
  return at;
}

void TTableReader::ReadElement() {
  const std::size_t end = ElementEnd();
  const TTokens element = tokens_.subspan(at_, end - at_);
  std::optional<TElementHead> head = ReadElementHead(element);
  if (!head) Fail("a column, key or constraint");
  CheckElement(*head, element);
  table_.elements.push_back({head->kind, std::move(head->name), ElementText(head->kind, element)});
  at_ = end;
}

TElementText TTableReader::ElementText(EElement kind, TTokens element) const {
  const std::size_t end = at_ + element.size();
  TElementText text =
      IsPlain(text_, tokens_, at_, end) ? TElementText(text_, element) : TElementText(TextOf(text_, tokens_, at_, end));
  return WithHexLiterals(kind, std::move(text));
}

// What the readers of single elements rely on.
void TTableReader::CheckElement(const TElementHead& head, TTokens element) {
  const auto has = [&](std::string_view word) {
    return std::any_of(element.begin(), element.end(), [&](const TToken& token) { return token.Is(word); });
  };
  const std::size_t begin = at_;
  at_ += head.body;
  if (head.kind == EElement::Column) {
    if (element.size() <= head.body || Now().kind != EToken::Word) Fail("a type");
  } else if (!has("(")) {
    Fail("\"(\"");
  } else if (head.kind == EElement::ForeignKey && !has("references")) {
    Fail("a foreign key");
  }
  at_ = begin;
}

void TTableReader::ReadOptions() {
  while (Now().kind != EToken::End && !Now().Is(";") && !IsKeyword(Now(), "partition")) {
    if (Take(",")) continue;
    if (IsKeyword(Now(), "with") && IsKeyword(Next(), "system")) {
      at_ += 2;
      Expect("versioning");
      table_.system_versioned = true;
      continue;
    }
    std::optional<TTableOption> option = ReadTableOption(text_, tokens_, at_);
    if (!option) Fail("a table option");
    table_.options.push_back(std::move(*option));
  }
}

void TTableReader::ReadPartitioning() {
  if (!IsKeyword(Now(), "partition")) return;
  const std::size_t first = at_++;
  Expect("by");
  int depth = 0;
  for (; Now().kind != EToken::End && !(depth == 0 && Now().Is(";")); ++at_) {
    if (Now().Is("(")) ++depth;
    if (Now().Is(")") && --depth < 0) Fail(kNothing);
  }
  if (depth > 0) Fail("\")\"");
  table_.partitioning = TextOf(text_, tokens_, first, at_);
}

void TTableReader::ReadEnd() {
  while (Take(";")) {
  }
  if (Now().kind != EToken::End) Fail(kNothing);
}

bool IgnoresCase(EElement kind) { return kind != EElement::ForeignKey && kind != EElement::Check; }

}  // namespace

const TElement* TTableText::Find(EElement kind, std::string_view wanted) const {
  for (const TElement& element : elements)
    if (element.kind == kind && (IgnoresCase(kind) ? SameText(element.name, wanted) : element.name == wanted))
      return &element;
  return nullptr;
}

const TTableOption* TTableText::FindOption(std::string_view wanted) const {
  for (const TTableOption& option : options)
    if (option.name == wanted) return &option;
  return nullptr;
}

std::string WithBackticks(std::string_view text, TTokens tokens) {
  std::string result;
  std::size_t copied = 0;
  for (const TToken& token : tokens) {
    if (!IsDoubleQuoted(token)) continue;
    result += text.substr(copied, token.start - copied);
    result += QuotedName(NameOf(token));
    copied = token.End();
  }
  return result += text.substr(copied);
}

void TTableText::ForgetReadings() const {
  for (const TElement& element : elements) element.text.Forget();
}

TTableText ReadTableText(std::string_view ddl) { return ReadTableText(ddl, Tokens(ddl)); }

TTableText ReadTableText(std::string_view ddl, TTokens tokens) {
  TTableReader reader(ddl, tokens);
  if (!reader.HasQuotedNames()) return reader.Read();
  // A server that quotes the table's name in this way quotes every name so, and no text.
  const std::string text = WithBackticks(ddl, tokens);
  return TTableReader(text, Tokens(text)).Read();
}

std::string CreationTextOf(const TTableText& table, bool without_foreign_keys) {
  std::string result = table.temporary ? "CREATE TEMPORARY TABLE " : "CREATE TABLE ";
  result += QuotedName(table.name);
  const char* separator = " (\n  ";
  for (const TElement& element : table.elements) {
    if (without_foreign_keys && element.kind == EElement::ForeignKey) continue;
    result += separator;
    result += element.text.Str();
    separator = ",\n  ";
  }
  result += "\n)";
  for (const TTableOption& option : table.options) result += " " + OptionText(option);
  if (table.system_versioned) result += " WITH SYSTEM VERSIONING";
  if (!table.partitioning.empty()) result += "\n " + table.partitioning;
  return result;
}

}  // namespace velmora
