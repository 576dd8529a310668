// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/objects/QueryExpressions.h"

#include <deque>
#include <utility>
#include <vector>

#include "exact/compare/ExpressionForm.h"
#include "mysqltext/Lexer.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kUnreadable[] = "an expression that is not known";

struct TSynonym {
  std::string_view name;
  std::string_view printed;
};
constexpr TSynonym kAggregates[] = {{"stddev", "std"}, {"stddev_pop", "std"}, {"var_pop", "variance"}};

// Reads an expression with what is no expression taken out of it: names stand for that meanwhile.
class TRewriter {
 public:
  TRewriter(TTokens tokens, const TQueryNames& names) : tokens_(tokens), names_(names) {}

  std::string Meaning(TTokenRange range, EExpression kind) {
    Rewrite(range);
    const bool joins = kind == EExpression::JoinCondition && names_.column;
    const auto form = ReadExpressionForm(written_, {true, kind != EExpression::Value, Columns(), joins});
    if (!form && names_.column) RaiseError(kUnreadable);
    std::string meaning = form ? form->text : Plain();
    for (std::size_t i = held_.size(); i-- > 0;) meaning = StrReplace(meaning, QuotedName(NameFor(i)), held_[i]);
    return meaning;
  }

 private:
  static constexpr char kHeld = '\x01';
  static std::string NameFor(std::size_t i) {
    return Format("%s%d%s", std::string(1, kHeld), i, std::string(1, kHeld));
  }

  // What is held stands for itself.
  std::function<std::string(const std::vector<std::string>&, bool)> Columns() const {
    if (!names_.column) return {};
    return [this](const std::vector<std::string>& names, bool aggregated) {
      return names[0].starts_with(kHeld) ? QuotedName(names[0]) : names_.column(names, aggregated);
    };
  }

  const TToken& Token(std::size_t at) const { return TokenAt(tokens_, at); }

  void Write(EToken kind, std::string text) {
    texts_.push_back(std::move(text));
    written_.push_back({kind, texts_.back()});
  }
  void Hold(std::string meaning) {
    Write(EToken::Name, QuotedName(NameFor(held_.size())));
    held_.push_back(std::move(meaning));
  }

  std::string Inner(TTokenRange range) const { return ExpressionMeaning(tokens_, range, names_); }
  std::string Order(TTokenRange range) const {
    return OrderMeaning(tokens_, range, [this](TTokenRange part) { return Inner(part); });
  }

  void Rewrite(TTokenRange range) {
    for (std::size_t at = range.first; at < range.last;) at = Step(at, range.last);
  }

  std::size_t Step(std::size_t at, std::size_t last) {
    const TToken& token = Token(at);
    const bool call = IsName(token) && Token(at + 1).Is("(") && !IsOperatorWord(token);
    if (call && at + 1 < last) return Call(at, last);
    if (token.Is("(")) return Group(at, last);
    const bool dated = token.Is("date") || token.Is("time") || token.Is("timestamp");
    if (dated && Token(at + 1).kind == EToken::String) {
      Hold(LowerText(token.text) + QuotedText(ValueOf(Token(at + 1))));
      return at + 2;
    }
    const bool qualifies = !names_.table.empty() && IsName(token) && NameOf(token) == names_.table &&
                           Token(at + 1).Is(".") && !Token(at + 3).Is(".") && !Token(at + 3).Is("(") &&
                           (at == 0 || !Token(at - 1).Is("."));
    if (qualifies && !names_.hidden.contains(LowerText(NameOf(Token(at + 2))))) return at + 2;
    written_.push_back(token);
    return at + 1;
  }

  // Words before a bracket that is none of a call.
  static bool IsOperatorWord(const TToken& token) {
    return token.kind == EToken::Word &&
           InList(LowerText(token.text), {"in",   "and",  "or",    "xor",      "not",    "is",    "between", "like",
                                          "when", "then", "else",  "case",     "div",    "some",  "escape",  "regexp",
                                          "any",  "all",  "rlike", "interval", "binary", "exists"});
  }

  // Of values in brackets that are compared as one.
  bool IsRow(std::size_t at, std::size_t end) const {
    return !IsPreceding(at, "in") && !IsPreceding(at, "interval") && PartsOf(tokens_, {at + 1, end - 1}).size() > 1;
  }
  bool IsPreceding(std::size_t at, std::string_view word) const { return at > 0 && IsKeyword(Token(at - 1), word); }

  std::size_t Group(std::size_t at, std::size_t last) {
    const std::size_t end = std::min(AfterGroup(tokens_, at), last);
    if (StartsQuery(tokens_, at + 1)) {
      const bool exists = IsPreceding(at, "exists");
      const bool bracket = exists || IsPreceding(at, "in") || IsPreceding(at, "any") || IsPreceding(at, "all") ||
                           IsPreceding(at, "some");
      if (bracket) Write(EToken::Symbol, "(");
      Hold((bracket ? "rows (" : "value (") + names_.query({at + 1, end - 1}, exists) + ")");
      if (bracket) Write(EToken::Symbol, ")");
      return end;
    }
    if (IsRow(at, end)) Write(EToken::Word, "row");
    written_.push_back(Token(at));
    Rewrite({at + 1, end - 1});
    written_.push_back(Token(end - 1));
    return end;
  }

  std::size_t Call(std::size_t at, std::size_t last) {
    const std::size_t end = std::min(AfterGroup(tokens_, at + 1), last);
    const bool window = end < last && Token(end).Is("over");
    std::string name = LowerText(NameOf(Token(at)));
    for (const TSynonym& row : kAggregates)
      if (row.name == name) name = row.printed;
    // Servers quote no name of their own functions.
    const bool own = names_.stored && !IsSharedFunction(name) && names_.stored(name);
    const bool stored = Token(at).kind == EToken::Name || own;
    if (stored) name.insert(0, "stored ");
    TTokenRange args = {at + 2, end - 1};
    if (Token(args.first).Is("distinct")) {
      if (name != "min" && name != "max") name = "distinct " + name;  // of these it says nothing
      ++args.first;
    }
    if (Token(args.first).Is("all")) ++args.first;
    const bool concat = Token(at).Is("group_concat");
    Write(EToken::Word, (window ? "over " : "") + name);
    Write(EToken::Symbol, "(");
    if (name == "timestampdiff") HoldUnit(args);
    const bool star = args.last == args.first + 1 && Token(args.first).Is("*");
    if (star)
      Write(EToken::Number, "0");  // of count(*), as servers print it
    else
      Rewrite(concat ? TTokenRange{args.first, ConcatenatedEnd(args)} : args);
    if (concat) Further(true, ConcatMeaning(args));
    const bool steps = window && (name == "lag" || name == "lead") && PartsOf(tokens_, args).size() == 1;
    if (steps) Further(true, "1");
    std::size_t after = end;
    if (window) after = Window(args, end, last);
    Write(EToken::Symbol, ")");
    return after;
  }

  // timestampdiff(day, a, b)
  void HoldUnit(TTokenRange& args) { Hold("unit " + LowerText(Token(args.first++).text)); }

  // One more value of the call.
  void Further(bool others, std::string meaning) {
    if (others) Write(EToken::Symbol, ",");
    Hold(std::move(meaning));
  }

  std::size_t ConcatenatedEnd(TTokenRange args) const {
    return std::min(FindWords(tokens_, args, {"order", "by"}), FindWords(tokens_, args, {"separator"}));
  }
  std::string ConcatMeaning(TTokenRange args) const {
    const std::size_t order = FindWords(tokens_, args, {"order", "by"});
    const std::size_t separator = FindWords(tokens_, args, {"separator"});
    std::string meaning = "order " + (order < separator ? Order({order + 2, separator}) : std::string());
    const bool given = separator + 1 < args.last;
    return meaning + " separator " + (given ? QuotedText(ValueOf(Token(separator + 1))) : "','");
  }

  // "over w", "over (partition by a order by b rows ...)"; gives the place after it.
  std::size_t Window(TTokenRange args, std::size_t over, std::size_t last) {
    const std::size_t at = over + 1;
    const bool named = !Token(at).Is("(");
    const std::size_t end = named ? at + 1 : std::min(AfterGroup(tokens_, at), last);
    const TWindow window = named ? NamedWindow(Token(at)) : ReadWindow({at + 1, end - 1});
    Further(args.first < args.last, "window" + window.partition + window.order + window.frame);
    return end;
  }

  struct TWindow {
    std::string partition, order, frame;
  };
  // One may begin with the name of another, which it adds to.
  TWindow ReadWindow(TTokenRange range) const {
    const std::size_t partition = FindWords(tokens_, range, {"partition", "by"});
    const std::size_t order = FindWords(tokens_, range, {"order", "by"});
    std::size_t frame = range.last;
    for (const std::string_view word : {"rows", "range", "groups"})
      frame = std::min(frame, FindWords(tokens_, range, {word}));
    const std::size_t first = std::min({partition, order, frame});
    TWindow window;
    if (first > range.first) window = NamedWindow(Token(range.first));
    if (first > range.first + 1) RaiseError(kUnreadable);
    if (partition < range.last) window.partition = " partition " + Order({partition + 2, std::min(order, frame)});
    if (order < frame) window.order = " order " + Order({order + 2, frame});
    if (frame < range.last) window.frame = Frame({frame, range.last});
    return window;
  }
  // Some servers print what it says in the place of its name.
  TWindow NamedWindow(const TToken& name) const {
    const auto found = names_.windows.find(LowerText(NameOf(name)));
    if (!IsName(name) || found == names_.windows.end()) RaiseError(kUnreadable);
    for (std::size_t at = found->second.first; at < found->second.last; ++at)  // which would be read again each time
      if (Token(at).Is("over")) RaiseError(kUnreadable);
    TQueryNames others = names_;
    others.windows.erase(found->first);
    return TRewriter(tokens_, others).ReadWindow(found->second);
  }
  // "rows 2 preceding" ends with the current row.
  std::string Frame(TTokenRange range) const {
    const bool both = Token(range.first + 1).Is("between");
    std::string frame = " " + LowerText(Token(range.first).text) + (both ? "" : " between");
    for (std::size_t at = range.first + 1; at < range.last; ++at) frame += " " + LowerText(Token(at).text);
    return both ? frame : frame + " and current row";
  }

  // What cannot be read keeps its tokens.
  std::string Plain() const {
    std::string meaning = "tokens";
    for (std::size_t i = 0; i < written_.size(); ++i) {
      const TToken& token = written_[i];
      const bool qualifies = TokenAt(written_, i + 1).Is(".") || (i > 0 && written_[i - 1].Is("."));
      if (token.kind == EToken::Word && !qualifies)
        meaning += " " + LowerText(token.text);
      else if (IsName(token))
        meaning += " " + QuotedName(NameOf(token));
      else if (token.kind == EToken::String)
        meaning += " " + LowerText(PrefixOf(token)) + QuotedText(ValueOf(token));
      else
        meaning += " " + std::string(token.text);
    }
    return meaning;
  }

  TTokens tokens_;
  const TQueryNames& names_;
  std::deque<std::string> texts_;
  std::vector<TToken> written_;
  std::vector<std::string> held_;
};

}  // namespace

std::string ExpressionMeaning(TTokens tokens, TTokenRange range, const TQueryNames& names, EExpression kind) {
  return TRewriter(tokens, names).Meaning(range, kind);
}

std::vector<TTokenRange> PartsOf(TTokens tokens, TTokenRange range) {
  std::vector<TTokenRange> parts(1, {range.first, range.first});
  for (std::size_t at = range.first; at < range.last;) {
    const bool comma = tokens[at].Is(",");
    at = std::min(tokens[at].Is("(") ? AfterGroup(tokens, at) : at + 1, range.last);
    if (comma)
      parts.push_back({at, at});
    else
      parts.back().last = at;
  }
  return parts;
}

std::size_t FindWords(TTokens tokens, TTokenRange range, std::initializer_list<std::string_view> words) {
  for (std::size_t at = range.first; at < range.last;) {
    std::size_t place = at;
    bool found = at == 0 || !tokens[at - 1].Is(".");
    for (const std::string_view word : words) found = found && place < range.last && IsKeyword(tokens[place++], word);
    if (found) return at;
    at = tokens[at].Is("(") ? std::min(AfterGroup(tokens, at), range.last) : at + 1;
  }
  return range.last;
}

std::string OrderMeaning(TTokens tokens, TTokenRange range, const std::function<std::string(TTokenRange)>& expression) {
  std::string meaning;
  for (TTokenRange part : PartsOf(tokens, range)) {
    if (part.first >= part.last) continue;
    const bool falling = tokens[part.last - 1].Is("desc");
    if (falling || tokens[part.last - 1].Is("asc")) --part.last;
    meaning += (meaning.empty() ? "" : ", ") + expression(part) + (falling ? " desc" : "");
  }
  return meaning;
}

bool StartsQuery(TTokens tokens, std::size_t at) {
  if (TokenAt(tokens, at).Is("(")) {
    const TToken& next = TokenAt(tokens, AfterGroup(tokens, at));
    const bool query_goes_on = next.kind == EToken::End || next.Is(")") || next.Is("union") || next.Is("except") ||
                               next.Is("intersect") || next.Is("order") || next.Is("limit");
    return query_goes_on && StartsQuery(tokens, at + 1);
  }
  return IsKeyword(TokenAt(tokens, at), "select") || IsKeyword(TokenAt(tokens, at), "with") ||
         (IsKeyword(TokenAt(tokens, at), "values") && !TokenAt(tokens, at + 1).Is("("));
}

}  // namespace velmora
