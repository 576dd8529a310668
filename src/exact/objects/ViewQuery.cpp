#include "exact/objects/ViewQuery.h"

#include <algorithm>
#include <utility>

#include "exact/objects/QueryExpressions.h"
#include "mysqltext/KeyText.h"
#include "mysqltext/Lexer.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kUnreadable[] = "line %d: not a query that is known";
constexpr int kMaxDepth = 60;  // of queries and of joins in brackets
constexpr std::size_t kLongestAlias = 64;

struct TItem {
  std::string meaning;
  std::string alias;  // empty for "*"
};

// What a "select" consists of, each with its end: its words are left out.
struct TClauses {
  TTokenRange items, from, where, group, having, window, order, limit;
  std::string end;  // for update, ...
};

// Words of which servers print some by themselves: in them letter case says nothing. In others it may, as in names of
// tables.
bool IsFixedWord(std::string_view lower) {
  return InList(lower, {"select", "distinct", "as",   "from",  "where",  "and",   "or",    "not",    "in",    "is",
                        "null",   "like",     "case", "when",  "then",   "else",  "end",   "group",  "order", "by",
                        "having", "limit",    "join", "inner", "left",   "right", "outer", "cross",  "on",    "using",
                        "union",  "all",      "asc",  "desc",  "exists", "with",  "over",  "between"});
}

std::string PlainTokens(TTokens tokens, const std::vector<std::string>& columns) {
  std::string meaning = "tokens";
  for (const std::string& column : columns) meaning += " " + QuotedName(column);
  for (const TToken& token : tokens) {
    const std::string lower = LowerText(token.text);
    if (token.kind == EToken::Word)
      meaning += " " + (IsFixedWord(lower) ? lower : QuotedName(token.text));
    else if (token.kind == EToken::Name)
      meaning += " " + QuotedName(NameOf(token));
    else if (token.kind == EToken::String)
      meaning += " " + LowerText(PrefixOf(token)) + QuotedText(ValueOf(token));
    else
      meaning += " " + std::string(token.text);
  }
  return meaning;
}

class TQueryReader {
 public:
  TQueryReader(std::string_view text, TTokens tokens, const std::vector<std::string>& columns)
      : text_(text), tokens_(tokens), columns_(columns) {}

  std::string Read() { return Query({0, tokens_.size() - 1}, true); }
  const std::vector<TItem>& Columns() const { return items_; }  // of what was read

 private:
  [[noreturn]] void Unreadable(std::size_t at) const {
    RaiseError(Format(kUnreadable, LineOf(text_, TokenAt(tokens_, at).start)));
  }

  const TToken& Token(std::size_t at) const { return TokenAt(tokens_, at); }
  bool Is(std::size_t at, std::string_view word) const { return IsKeyword(Token(at), word); }

  // `closed`: nothing of a query around it can be named in it.
  std::string Query(TTokenRange range, bool closed) {
    if (++depth_ > kMaxDepth) Unreadable(range.first);
    std::string meaning;
    if (Is(range.first, "with")) meaning = With(range);
    meaning += Terms(range, closed);
    --depth_;
    return meaning;
  }

  // "with c (a) as (...), d as (...)", which is taken off the range.
  std::string With(TTokenRange& range) {
    std::string meaning = "with ";
    const bool recursive = Is(++range.first, "recursive");
    if (recursive) ++range.first;
    if (recursive) meaning += "recursive ";
    do {
      meaning += QuotedName(NameOf(Token(range.first++))) + " ";
      std::vector<std::string> columns = TakeNames(range.first);
      if (!Is(range.first, "as") || !Token(range.first + 1).Is("(")) Unreadable(range.first);
      const std::size_t end = AfterGroup(tokens_, range.first + 1);
      if (end > range.last) Unreadable(range.first);
      std::swap(columns, columns_);
      meaning += "as (" + Query({range.first + 2, end - 1}, true) + ") ";
      std::swap(columns, columns_);
      range.first = end;
    } while (Token(range.first).Is(",") && ++range.first > 0);
    return meaning;
  }

  // Names in brackets, if there are any.
  std::vector<std::string> TakeNames(std::size_t& at) const {
    std::vector<std::string> names;
    if (!Token(at).Is("(")) return names;
    for (const TTokenRange part : ListParts(tokens_, at)) names.push_back(NameOf(Token(part.first)));
    at = AfterGroup(tokens_, at);
    return names;
  }

  // "select" by "select" of a union, which may be one.
  std::string Terms(TTokenRange range, bool closed) {
    std::vector<TTokenRange> terms;
    std::vector<std::string> words;
    std::size_t first = range.first;
    for (;;) {
      std::size_t end = range.last;
      for (const std::string_view word : {"union", "except", "intersect"})
        end = std::min(end, FindWords(tokens_, {first, range.last}, {word}));
      terms.push_back({first, end});
      if (end == range.last) break;
      words.push_back(LowerText(Token(end).text));
      first = end + 1;
      if (Is(first, "all")) words.back() += " all";
      if (Is(first, "all") || Is(first, "distinct")) ++first;
    }
    if (terms.size() == 1) return Term(range, closed, true);
    return Union(terms, words, closed);
  }

  // What orders and limits the whole stands behind the last one.
  std::string Union(std::vector<TTokenRange> terms, const std::vector<std::string>& words, bool closed) {
    TTokenRange& last = terms.back();
    const std::size_t whole_end = last.last;
    const std::size_t order = FindWords(tokens_, last, {"order", "by"});
    const std::size_t limit = FindWords(tokens_, last, {"limit"});
    last.last = std::min(order, limit);
    std::string meaning;
    std::vector<TItem> items;
    for (std::size_t i = 0; i < terms.size(); ++i) {
      if (i > 0) meaning += " " + words[i - 1] + " ";
      meaning += "(" + Term(terms[i], closed, i == 0) + ")";
      if (i == 0) items = items_;
    }
    items_ = items;
    for (TItem& item : items) item.meaning = QuotedName(LowerText(item.alias));  // its order names columns alone
    if (order < whole_end) meaning += " order " + Order({order + 2, limit}, Names(), items);
    if (limit < whole_end) meaning += Limit({limit + 1, whole_end});
    return meaning;
  }

  // `first`: its columns are those of the whole.
  std::string Term(TTokenRange range, bool closed, bool first) {
    if (Token(range.first).Is("(")) {
      const std::size_t end = AfterGroup(tokens_, range.first);
      if (end == range.last) return Query({range.first + 1, end - 1}, closed);
      if (end > range.last) Unreadable(range.first);
      return "(" + Query({range.first + 1, end - 1}, closed) + ")" + Tail({end, range.last});
    }
    if (!Is(range.first, "select")) Unreadable(range.first);
    return Select({range.first + 1, range.last}, closed, first);
  }

  // What may follow a query in brackets.
  std::string Tail(TTokenRange range) {
    const std::size_t order = FindWords(tokens_, range, {"order", "by"});
    const std::size_t limit = FindWords(tokens_, range, {"limit"});
    if (std::min(order, limit) != range.first) Unreadable(range.first);
    std::string meaning;
    if (order < range.last) meaning += " order " + Order({order + 2, limit}, Names(), {});
    if (limit < range.last) meaning += Limit({limit + 1, range.last});
    return meaning;
  }

  TClauses ClausesOf(TTokenRange range) const {
    struct TClauseWords {
      std::initializer_list<std::string_view> words;
      TTokenRange TClauses::*clause;
    };
    static const TClauseWords kClauses[] = {{{"from"}, &TClauses::from},         {{"where"}, &TClauses::where},
                                            {{"group", "by"}, &TClauses::group}, {{"having"}, &TClauses::having},
                                            {{"window"}, &TClauses::window},     {{"order", "by"}, &TClauses::order},
                                            {{"limit"}, &TClauses::limit}};
    TClauses clauses;
    std::size_t end = range.last;
    for (const auto& words : {std::initializer_list<std::string_view>{"for", "update"},
                              {"lock", "in"},
                              {"for", "share"},
                              {"into"},
                              {"procedure"}})
      end = std::min(end, FindWords(tokens_, range, words));
    if (end < range.last) Unreadable(end);
    std::size_t from = range.first;
    TTokenRange TClauses::*open = &TClauses::items;
    for (const TClauseWords& row : kClauses) {
      const std::size_t at = FindWords(tokens_, {from, end}, row.words);
      if (at == end) continue;
      clauses.*open = {from, at};
      open = row.clause;
      from = at + row.words.size();
    }
    clauses.*open = {from, end};
    return clauses;
  }

  std::string Select(TTokenRange range, bool closed, bool first) {
    const TClauses clauses = ClausesOf(range);
    std::string meaning = "select" + Modifiers(clauses, range.first);
    std::vector<std::string> tables;
    const std::string from = From(clauses.from, tables);
    TQueryNames names = Names();
    if (closed && tables.size() == 1) names.table = tables[0];
    std::vector<TItem> items = Items({range.first, clauses.items.last}, names, closed);
    if (first && !columns_.empty()) NameItems(items);
    for (const TItem& item : items)
      meaning += " " + item.meaning + (closed ? " as " + QuotedName(item.alias) : "") + ",";
    if (!from.empty()) meaning += " from " + from;
    if (!Empty(clauses.where)) meaning += " where " + ExpressionMeaning(tokens_, clauses.where, names, true);
    if (!Empty(clauses.group)) meaning += " group " + Group(clauses.group, names, items);
    if (!Empty(clauses.having))
      meaning += " having " + ExpressionMeaning(tokens_, clauses.having, Careful(names, items), true);
    if (!Empty(clauses.window)) meaning += " window " + ExpressionMeaning(tokens_, clauses.window, names);
    if (!Empty(clauses.order)) meaning += " order " + Order(clauses.order, Careful(names, items), items);
    if (!Empty(clauses.limit)) meaning += Limit(clauses.limit);
    items_ = std::move(items);
    return meaning;
  }

  static bool Empty(TTokenRange range) { return range.first >= range.last; }

  TQueryNames Names() {
    // Of one that is asked whether it has rows, servers may say "limit 1".
    return {{}, {}, [this](TTokenRange range, bool exists) {
              const bool limited = exists && range.last >= range.first + 2 && Is(range.last - 2, "limit") &&
                                   Token(range.last - 1).text == "1";
              if (limited) range.last -= 2;
              const std::vector<std::string> outer = std::exchange(columns_, {});
              std::string meaning = Query(range, false);
              columns_ = outer;
              return meaning;
            }};
  }

  // Where an alias may be meant as well as a column, what stands before a column counts.
  static TQueryNames Careful(TQueryNames names, const std::vector<TItem>& items) {
    for (const TItem& item : items)
      if (item.meaning != QuotedName(LowerText(item.alias))) names.hidden.insert(LowerText(item.alias));
    return names;
  }

  // "distinct", "straight_join", ..., which are taken off the items.
  std::string Modifiers(const TClauses& clauses, std::size_t& first) const {
    std::string meaning;
    for (; first < clauses.items.last; ++first) {
      const std::string word = LowerText(Token(first).text);
      const bool modifies =
          Token(first).kind == EToken::Word &&
          InList(word, {"distinct", "distinctrow", "straight_join", "high_priority", "sql_cache", "sql_no_cache",
                        "sql_small_result", "sql_big_result", "sql_buffer_result", "sql_calc_found_rows", "all"});
      if (!modifies) break;
      if (word != "all") meaning += " " + (word == "distinctrow" ? "distinct" : word);
    }
    return meaning;
  }

  // --- Columns

  std::vector<TItem> Items(TTokenRange range, const TQueryNames& names, bool named) {
    std::vector<TItem> items;
    for (TTokenRange part : PartsOf(tokens_, range)) {
      if (Empty(part)) Unreadable(part.first);
      if (Token(part.last - 1).Is("*")) {
        items.push_back({ExpressionMeaning(tokens_, part, Names()), {}});
        continue;
      }
      std::string alias = TakeAlias(part);
      if (alias.empty() && named) alias = OwnAlias(part);
      items.push_back({ExpressionMeaning(tokens_, part, names), std::move(alias)});
    }
    return items;
  }

  // Taken off the range; empty for none.
  std::string TakeAlias(TTokenRange& part) const {
    if (part.last - part.first < 2) return {};
    const TToken& last = Token(part.last - 1);
    if (!IsName(last) && last.kind != EToken::String) return {};
    std::string alias = last.kind == EToken::String ? ValueOf(last) : NameOf(last);
    const TToken& before = Token(part.last - 2);
    const bool said = before.Is("as");
    const bool operand = before.kind == EToken::Name || before.kind == EToken::Number || before.Is(")") ||
                         before.kind == EToken::String || IsPlainWord(part);
    const bool word = last.kind == EToken::Word && (last.Is("end") || last.Is("null"));
    if (!said && (!operand || word || last.kind == EToken::String)) return {};
    part.last -= said ? 2 : 1;
    return alias;
  }
  // "a x", "t.a x"; "case ... end x"
  bool IsPlainWord(TTokenRange part) const {
    const TToken& before = Token(part.last - 2);
    if (before.kind != EToken::Word) return false;
    return part.last - part.first == 2 || Token(part.last - 3).Is(".") || before.Is("end");
  }

  // What servers call a column that has no name.
  std::string OwnAlias(TTokenRange part) const {
    const TToken& last = Token(part.last - 1);
    if (part.last - part.first == 1 && last.kind == EToken::String) return ValueOf(last);
    const bool column = part.last - part.first == 1 || Token(part.last - 2).Is(".");
    if (column && IsName(last)) return NameOf(last);
    const std::string text(text_.substr(Token(part.first).start, last.End() - Token(part.first).start));
    return text.size() > kLongestAlias ? std::string() : text;
  }

  void NameItems(std::vector<TItem>& items) const {
    const bool stars = std::ranges::any_of(items, [](const TItem& item) { return item.meaning.ends_with('*'); });
    if (stars || items.size() != columns_.size()) Unreadable(0);
    for (std::size_t i = 0; i < items.size(); ++i) items[i].alias = columns_[i];
  }

  // --- Order

  // A number is the place of a column; an alias goes before a column of its name.
  std::string Resolved(TTokenRange part, const TQueryNames& names, const std::vector<TItem>& items, bool aliases) {
    if (part.last == part.first + 1) {
      const TToken& token = Token(part.first);
      const auto place = token.kind == EToken::Number ? TryStrToInt(std::string(token.text)) : std::nullopt;
      const bool column = place && *place > 0 && static_cast<std::size_t>(*place) <= items.size();
      if (column) return items[static_cast<std::size_t>(*place) - 1].meaning;
      if (IsName(token) && aliases)
        for (const TItem& item : items)
          if (SameText(item.alias, NameOf(token))) return item.meaning;
    }
    return ExpressionMeaning(tokens_, part, names);
  }

  std::string Order(TTokenRange range, const TQueryNames& names, const std::vector<TItem>& items) {
    return OrderMeaning(tokens_, range, [&](TTokenRange part) { return Resolved(part, names, items, true); });
  }

  std::string Group(TTokenRange range, const TQueryNames& names, const std::vector<TItem>& items) {
    const TQueryNames careful = Careful(names, items);
    std::string end;
    if (range.last >= range.first + 2 && Is(range.last - 2, "with") && Is(range.last - 1, "rollup")) {
      range.last -= 2;
      end = " with rollup";
    }
    return OrderMeaning(tokens_, range, [&](TTokenRange part) { return Resolved(part, careful, items, false); }) + end;
  }

  // "limit 5, 10", "limit 10 offset 5"
  std::string Limit(TTokenRange range) const {
    const std::size_t size = range.last - range.first;
    std::string count(Token(range.first).text);
    std::string offset = "0";
    if (size == 3 && (Token(range.first + 1).Is(",") || Is(range.first + 1, "offset"))) {
      offset = Token(range.first + 2).text;
      if (Token(range.first + 1).Is(",")) std::swap(count, offset);
    } else if (size != 1) {
      Unreadable(range.first);
    }
    return " limit " + count + " offset " + offset;
  }

  // --- Tables

  std::string From(TTokenRange range, std::vector<std::string>& tables) {
    if (Empty(range) || (range.last == range.first + 1 && Is(range.first, "dual"))) return {};
    std::size_t at = range.first;
    std::string meaning = Tables(at, range.last, tables);
    if (at < range.last) Unreadable(at);
    return meaning;
  }

  std::string Tables(std::size_t& at, std::size_t last, std::vector<std::string>& tables) {
    if (++depth_ > kMaxDepth) Unreadable(at);
    std::string meaning = Joins(at, last, tables);
    while (at < last && Token(at).Is(",")) meaning = Format("(%s join %s)", meaning, Joins(++at, last, tables));
    --depth_;
    return meaning;
  }

  // "a join b on c left join d on e", from left to right.
  std::string Joins(std::size_t& at, std::size_t last, std::vector<std::string>& tables) {
    std::string left = Table(at, last, tables);
    for (std::string kind; at < last && !(kind = TakeJoin(at)).empty();) {
      std::string right = Table(at, last, tables);
      if (kind == "right join") {
        std::swap(left, right);
        kind = "left join";
      }
      left = Format("(%s %s %s%s)", left, kind, right, JoinCondition(at, last));
    }
    return left;
  }

  std::string TakeJoin(std::size_t& at) const {
    std::string kind;
    const std::size_t before = at;
    if (Is(at, "natural")) kind = "natural ";
    if (!kind.empty()) ++at;
    if (Is(at, "inner") || Is(at, "cross")) {
      ++at;
    } else if (Is(at, "left") || Is(at, "right")) {
      kind += LowerText(Token(at++).text) + " ";
      if (Is(at, "outer")) ++at;
    } else if (Is(at, "straight_join")) {
      ++at;
      return "straight_join";
    }
    if (!Is(at, "join")) {
      at = before;
      return {};
    }
    ++at;
    return kind + "join";
  }

  std::string JoinCondition(std::size_t& at, std::size_t last) {
    if (Is(at, "using")) {
      std::string list = " using";
      for (const std::string& name : TakeNames(++at)) list += " " + QuotedName(LowerText(name));
      return list;
    }
    if (at >= last || !Is(at, "on")) return {};
    const std::size_t first = ++at;
    while (at < last && !EndsCondition(at)) at = Token(at).Is("(") ? AfterGroup(tokens_, at) : at + 1;
    if (at > last) Unreadable(first);
    return " on " + ExpressionMeaning(tokens_, {first, at}, Names(), true);
  }
  bool EndsCondition(std::size_t at) const {
    const bool call = Token(at + 1).Is("(");
    return Token(at).Is(",") || Is(at, "join") || Is(at, "inner") || Is(at, "cross") || Is(at, "straight_join") ||
           Is(at, "natural") || Is(at, "on") || ((Is(at, "left") || Is(at, "right")) && !call);
  }

  std::string Table(std::size_t& at, std::size_t last, std::vector<std::string>& tables) {
    if (at >= last) Unreadable(at);
    if (Token(at).Is("(")) return Bracket(at, last, tables);
    if (!IsName(Token(at)) || Token(at + 1).Is("(")) Unreadable(at);
    std::string name = NameOf(Token(at++));
    std::string meaning = QuotedName(name);
    while (at < last && Token(at).Is(".")) {
      name = NameOf(Token(at + 1));
      meaning += "." + QuotedName(name);
      at += 2;
    }
    if (Is(at, "partition") && Token(at + 1).Is("(")) {
      meaning += " partition";
      for (const std::string& part : TakeNames(++at)) meaning += " " + QuotedName(LowerText(part));
    }
    const std::string alias = TableAlias(at, last);
    if (!alias.empty() && alias != name) meaning += " as " + QuotedName(alias);
    tables.push_back(alias.empty() ? name : alias);
    return meaning + Hints(at, last);
  }

  std::string TableAlias(std::size_t& at, std::size_t last) const {
    if (at < last && Is(at, "as")) ++at;
    const bool word = at < last && Token(at).kind == EToken::Word &&
                      !InList(LowerText(Token(at).text), {"join", "inner", "left", "right", "cross", "natural", "on",
                                                          "using", "straight_join", "use", "force", "ignore", "for"});
    return at < last && (word || Token(at).kind == EToken::Name) ? NameOf(Token(at++)) : std::string();
  }

  // use index (a)
  std::string Hints(std::size_t& at, std::size_t last) const {
    std::string meaning;
    while (at < last && (Is(at, "use") || Is(at, "force") || Is(at, "ignore"))) {
      for (; at < last && !Token(at).Is("("); ++at)
        meaning += " " + (Is(at, "key") ? "index" : LowerText(Token(at).text));
      for (const std::string& name : TakeNames(at)) meaning += " " + QuotedName(LowerText(name));
    }
    return meaning;
  }

  std::string Bracket(std::size_t& at, std::size_t last, std::vector<std::string>& tables) {
    const std::size_t open = at;
    const std::size_t end = AfterGroup(tokens_, open);
    if (end > last) Unreadable(open);
    if (!StartsQuery(tokens_, open + 1)) {
      std::string meaning = Tables(++at, end - 1, tables);
      if (at + 1 != end) Unreadable(at);
      at = end;
      return meaning;
    }
    at = end;
    const std::string alias = TableAlias(at, last);
    if (alias.empty()) Unreadable(open);
    std::vector<std::string> columns = TakeNames(at);
    std::swap(columns, columns_);
    std::string meaning = "(" + Query({open + 1, end - 1}, true) + ") as " + QuotedName(alias);
    std::swap(columns, columns_);
    tables.push_back(alias);
    return meaning;
  }

  std::string_view text_;
  TTokens tokens_;
  std::vector<std::string> columns_;  // that the query under way gets from outside
  std::vector<TItem> items_;          // of the last "select"
  int depth_ = 0;
};

}  // namespace

std::string QueryMeaning(std::string_view query, const std::vector<std::string>& columns) {
  const std::vector<TToken> tokens = Tokens(query);
  try {
    return TQueryReader(query, tokens, columns).Read();
  } catch (const EVelmora&) {  // what is not known says what its tokens say
    return PlainTokens(tokens, columns);
  }
}

std::vector<std::string> QueryColumns(std::string_view query) {
  const std::vector<TToken> tokens = Tokens(query);
  std::vector<std::string> names;
  try {
    TQueryReader reader(query, tokens, {});
    reader.Read();
    for (const TItem& item : reader.Columns()) names.push_back(item.alias);
  } catch (const EVelmora&) {
    names.clear();
  }
  if (std::ranges::find(names, "") != names.end()) names.clear();
  return names;
}

}  // namespace velmora
