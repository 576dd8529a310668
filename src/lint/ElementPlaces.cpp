// SPDX-License-Identifier: GPL-3.0-or-later
#include "lint/ElementPlaces.h"

#include <optional>
#include <tuple>

#include "exact/plan/TableStatement.h"
#include "mysqltext/KeyText.h"
#include "mysqltext/Lexer.h"
#include "util/Errors.h"
#include "util/Text.h"

namespace velmora {

namespace {

// Parts of a statement, from one comma to the next.
std::vector<TTokenRange> PartsFrom(TTokens tokens, std::size_t at) {
  std::vector<TTokenRange> parts;
  TTokenRange part{at, at};
  for (; at < tokens.size() && tokens[at].kind != EToken::End; at = part.last) {
    if (tokens[at].Is(",")) {
      parts.push_back(part);
      part = {at + 1, at + 1};
    } else {
      part.last = AfterValue(tokens, at);
    }
  }
  parts.push_back(part);
  return parts;
}

// Where a clause of "alter table" begins to speak of its element; the former name of one that gets another is passed.
std::size_t AfterVerb(TTokens tokens, TTokenRange clause) {
  std::size_t at = clause.first;
  const auto is = [&](std::string_view word) { return IsKeyword(TokenAt(tokens, at), word); };
  const bool renames = is("change");
  if (!renames && !is("add") && !is("modify")) return clause.last;
  ++at;
  if (is("column")) ++at;
  if (is("if")) at += std::size_t{IsKeyword(TokenAt(tokens, at + 1), "not") ? 3U : 2U};
  return renames ? at + 1 : at;
}

class TStatementElements {
 public:
  explicit TStatementElements(std::string_view text) : text_(text), tokens_(Tokens(text)) {}

  // The line within the statement; nothing where the element is not written there.
  std::optional<int> LineOf(EElement kind, const std::string& name) {
    const TTokens all(tokens_);
    if (std::optional<int> line = OfIndex(kind, name)) return line;
    const bool alters = IsKeyword(TokenAt(all, 0), "alter");
    const std::size_t open = NextBracket(all, 0);
    for (const TTokenRange part : alters ? PartsFrom(all, AfterTable()) : ListParts(all, open)) {
      TTokenRange element{alters ? AfterVerb(all, part) : part.first, part.last};
      const bool list = alters && TokenAt(all, element.first).Is("(");
      const std::vector<TTokenRange> several = list ? ListParts(all, element.first) : std::vector<TTokenRange>{element};
      for (const TTokenRange one : several)
        if (Is(one, kind, name)) return velmora::LineOf(text_, all[one.first].start);
    }
    return std::nullopt;
  }

 private:
  // After "alter [ignore] table [if exists] name".
  std::size_t AfterTable() const {
    const TTokens all(tokens_);
    std::size_t at = 0;
    while (at < all.size() && !IsKeyword(all[at], "table")) ++at;
    if (IsKeyword(TokenAt(all, ++at), "if")) at += 2;
    return TokenAt(all, at + 1).Is(".") ? at + 3 : at + 1;
  }

  // create [unique] index name on ...
  std::optional<int> OfIndex(EElement kind, const std::string& name) const {
    constexpr std::size_t kMostWords = 5;
    const TTokens all(tokens_);
    if (!IsKeyword(TokenAt(all, 0), "create") || !IsKey(kind)) return std::nullopt;
    for (std::size_t at = 1; at < kMostWords && !TokenAt(all, at).Is("("); ++at) {
      if (!IsKeyword(TokenAt(all, at), "index")) continue;
      at += std::size_t{IsKeyword(TokenAt(all, at + 1), "if") ? 4U : 1U};
      const TToken& written = TokenAt(all, at);
      if (IsName(written) && SameText(NameOf(written), name)) return velmora::LineOf(text_, written.start);
      break;
    }
    return std::nullopt;
  }

  bool Is(TTokenRange range, EElement kind, const std::string& name) const {
    if (range.first >= range.last || range.last > tokens_.size()) return false;
    const auto head = ReadElementHead(TTokens(tokens_).subspan(range.first, range.last - range.first));
    return head && head->kind == kind && SameText(head->name, name);
  }

  std::string_view text_;
  std::vector<TToken> tokens_;
};

}  // namespace

TElementPlaces::TElementPlaces(const TStructureScript& script) : script_(script) {
  for (const TStructureStatement& statement : script.statements) {
    try {
      const TTableStatement about = ReadTableStatement(statement.text);
      if (about.kind == ETableStatement::DropTable) continue;
      for (const TTableName& name : about.changes) statements_[LowerText(name.table)].push_back(&statement);
    } catch (const EVelmora&) {
      // What cannot be read has no place.
    }
  }
}

TSourceLine TElementPlaces::PlaceOf(const TFinding& finding) const {
  const auto found = statements_.find(LowerText(finding.table));
  if (found == statements_.end()) return {};
  TSourceLine place;
  if (!finding.element.empty()) place = InStatements(finding.table, finding.kind, finding.element);
  if (place.line == 0 && !finding.columns.empty())
    place = InStatements(finding.table, EElement::Column, finding.columns.front());
  return place.line > 0 ? place : At(*found->second.front(), 1);
}

TSourceLine TElementPlaces::InStatements(const std::string& table, EElement kind, const std::string& name) const {
  const std::vector<const TStructureStatement*>& statements = statements_.at(LowerText(table));
  for (std::size_t i = statements.size(); i-- > 0;) {
    const TStructureStatement* statement = statements[i];
    try {
      const std::optional<int> line = TStatementElements(statement->text).LineOf(kind, name);
      if (line) return At(*statement, static_cast<std::size_t>(*line));
    } catch (const EVelmora&) {
      // The one before it may say it.
    }
  }
  return {};
}

TSourceLine TElementPlaces::At(const TStructureStatement& statement, std::size_t line) const {
  return {statement.file.empty() ? script_.file : std::string(statement.file), statement.line + line - 1};
}

}  // namespace velmora
