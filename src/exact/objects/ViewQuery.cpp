// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/objects/ViewQuery.h"

#include <algorithm>
#include <map>
#include <utility>

#include "exact/objects/QueryExpressions.h"
#include "exact/objects/QueryNames.h"
#include "mysqltext/KeyText.h"
#include "mysqltext/Lexer.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Lists.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kUnreadable[] = "line %d: not a query that is known";
constexpr int kMaxDepth = 60;  // of queries and of joins in brackets
constexpr char kUnknownColumn[] = "whose column %s is, is not known";
constexpr char kReplacedAlias[] = "Name_exp_%d";  // for what is no name of a column
constexpr std::size_t kLongestAlias = 64;
constexpr std::string_view kNatural = "natural ";

struct TItem {
  std::string meaning;
  std::string alias;  // by which the query itself knows it; empty for "*"
  std::string name;   // of the column that it becomes: the alias, unless there is a list of names
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
  // Of a side that knows no columns names stay as they are.
  TQueryReader(std::string_view text, TTokens tokens, const std::vector<std::string>& columns, const TQuerySide& side)
      : text_(text), tokens_(tokens), columns_(columns), side_(side) {}

  std::string Read() { return Query({0, tokens_.size() - 1}, true); }
  const std::vector<TItem>& Columns() const { return items_; }  // of what was read

 private:
  [[noreturn]] void Unreadable(std::size_t at) const {
    RaiseError(Format(kUnreadable, LineOf(text_, TokenAt(tokens_, at).start)));
  }

  const TToken& Token(std::size_t at) const { return TokenAt(tokens_, at); }
  bool Is(std::size_t at, std::string_view word) const { return IsKeyword(Token(at), word); }

  bool Resolves() const { return side_.columns_of != nullptr; }

  // `closed`: nothing of a query around it can be named in it. `first`: its columns are those of the whole.
  std::string Query(TTokenRange range, bool closed, bool first = true) {
    if (++depth_ > kMaxDepth) Unreadable(range.first);
    const std::string name_within = std::exchange(announced_, {});
    const std::size_t known = named_queries_.size();
    std::string meaning;
    if (Is(range.first, "with")) meaning = With(range);
    meaning += Terms(range, {closed, first}, name_within);
    named_queries_.resize(known);
    --depth_;
    return meaning;
  }

  // One that sees no names of those around it, and gives its columns these names, if there are any.
  std::string ClosedQuery(TTokenRange range, std::vector<std::string> columns) {
    std::swap(columns, columns_);
    const auto outer = std::exchange(scopes_, {});
    const bool asked = std::exchange(asked_for_rows_, false);
    std::string meaning = Query(range, true);
    asked_for_rows_ = asked;
    scopes_ = outer;
    std::swap(columns, columns_);
    return meaning;
  }

  // "with c (a) as (...), d as (...)", which is taken off the range.
  std::string With(TTokenRange& range) {
    std::string meaning = "with ";
    const bool recursive = Is(++range.first, "recursive");
    if (recursive) ++range.first;
    if (recursive) meaning += "recursive ";
    do {
      const std::string name = NameOf(Token(range.first++));
      meaning += QuotedName(name) + " ";
      std::vector<std::string> columns = TakeNames(range.first);
      if (!Is(range.first, "as") || !Token(range.first + 1).Is("(")) Unreadable(range.first);
      const std::size_t end = AfterGroup(tokens_, range.first + 1);
      if (end > range.last) Unreadable(range.first);
      if (recursive) announced_ = name;
      meaning += "as (" + ClosedQuery({range.first + 2, end - 1}, std::move(columns)) + ") ";
      announced_.clear();
      named_queries_.push_back({name, ColumnsRead()});
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

  // Of the query that was read last.
  TListedColumns ColumnsRead() const {
    std::vector<TListedColumn> columns;
    for (const TItem& item : items_) columns.push_back({item.name});
    const bool known = std::ranges::all_of(items_, [](const TItem& item) { return !item.name.empty(); });
    return known ? TListedColumns(columns) : std::nullopt;
  }

  // "select" by "select" of a union, which may be one. `name_within`: by which the later ones know the first.
  struct TPlace {
    bool closed, first;  // as above
  };
  std::string Terms(TTokenRange range, TPlace place, const std::string& name_within) {
    std::vector<TTokenRange> terms;
    std::vector<std::string> words;
    Split(range, terms, words);
    if (terms.size() == 1) return Term(range, place.closed, place.first);
    return Union(terms, words, place, name_within);
  }

  static constexpr std::string_view kUnions[] = {"union", "except", "intersect"};
  std::size_t FindUnion(TTokenRange range) const {
    std::size_t end = range.last;
    for (const std::string_view word : kUnions) end = std::min(end, FindWords(tokens_, range, {word}));
    return end;
  }

  void Split(TTokenRange range, std::vector<TTokenRange>& terms, std::vector<std::string>& words, int depth = 0) const {
    if (depth > kMaxDepth) Unreadable(range.first);
    for (std::size_t first = range.first;;) {
      const std::size_t end = FindUnion({first, range.last});
      terms.push_back({first, end});
      if (end == range.last) break;
      words.push_back(LowerText(Token(end).text));
      first = end + 1;
      if (Is(first, "all")) words.back() += " all";
      if (Is(first, "all") || Is(first, "distinct")) ++first;
    }
    // "(a union b) union all c", as some servers print it, is so without brackets: they go from left to right.
    if (words.empty() || words[0].starts_with("intersect") || !IsPlainUnion(terms[0])) return;
    std::vector<TTokenRange> terms_within;
    std::vector<std::string> words_within;
    Split({terms[0].first + 1, terms[0].last - 1}, terms_within, words_within, depth + 1);
    terms.erase(terms.begin());
    terms.insert(terms.begin(), terms_within.begin(), terms_within.end());
    words.insert(words.begin(), words_within.begin(), words_within.end());
  }

  // One in brackets with nothing else in them.
  bool IsPlainUnion(TTokenRange term) const {
    if (!Token(term.first).Is("(") || AfterGroup(tokens_, term.first) != term.last) return false;
    const TTokenRange within = Inside(term);
    const bool ends = FindWords(tokens_, within, {"order", "by"}) < within.last ||
                      FindWords(tokens_, within, {"limit"}) < within.last;
    return !ends && !Is(within.first, "with") && FindUnion(within) < within.last;
  }

  // What orders and limits the whole stands behind the last one.
  std::string Union(std::vector<TTokenRange> terms, const std::vector<std::string>& words, TPlace place,
                    const std::string& name_within) {
    TTokenRange& last = terms.back();
    const std::size_t whole_end = last.last;
    const std::size_t order = FindWords(tokens_, last, {"order", "by"});
    const std::size_t limit = FindWords(tokens_, last, {"limit"});
    last.last = std::min(order, limit);
    std::string meaning;
    std::vector<TItem> items;
    for (std::size_t i = 0; i < terms.size(); ++i) {
      if (i > 0) meaning += " " + words[i - 1] + " ";
      meaning += "(" + Term(terms[i], place.closed, place.first && i == 0) + ")";
      if (i > 0) continue;
      items = items_;
      if (!name_within.empty()) named_queries_.push_back({name_within, ColumnsRead()});
    }
    items_ = items;
    return meaning + Ending(order, limit, whole_end);
  }

  // What orders and limits a whole, whose columns alone it can name: from the places of these words on.
  std::string Ending(std::size_t order, std::size_t limit, std::size_t end) {
    std::vector<TItem> items = items_;
    if (order < std::min(limit, end)) AskForNames(items, order);
    for (TItem& item : items) item.meaning = QuotedName(LowerText(item.name));
    std::string meaning;
    if (order < std::min(limit, end)) meaning += " order " + Order({order + 2, limit}, Names(), items);
    if (limit < end) meaning += Limit({limit + 1, end});
    return meaning;
  }

  // `first`: its columns are those of the whole.
  std::string Term(TTokenRange range, bool closed, bool first) {
    if (Token(range.first).Is("(")) {
      const std::size_t end = AfterGroup(tokens_, range.first);
      if (end == range.last) return Query({range.first + 1, end - 1}, closed, first);
      if (end > range.last) Unreadable(range.first);
      return "(" + Query({range.first + 1, end - 1}, closed, first) + ")" + Tail({end, range.last});
    }
    if (!Is(range.first, "select")) Unreadable(range.first);
    return Select({range.first + 1, range.last}, closed, first);
  }

  // What may follow a query in brackets.
  std::string Tail(TTokenRange range) {
    const std::size_t order = FindWords(tokens_, range, {"order", "by"});
    const std::size_t limit = FindWords(tokens_, range, {"limit"});
    if (std::min(order, limit) != range.first) Unreadable(range.first);
    return Ending(order, limit, range.last);
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
    const bool asked = std::exchange(asked_for_rows_, false);
    std::string meaning = "select" + Modifiers(clauses, range.first);
    TNamedTables tables;
    const std::string from = From(clauses.from, tables);
    scopes_.push_back({&tables});
    TQueryNames names = Names();
    const std::vector<std::string> all = tables.Names();
    if (closed && !Resolves() && all.size() == 1) names.table = all[0];
    names.windows = Windows(clauses.window);
    std::vector<TItem> items = Items({range.first, clauses.items.last}, names, closed && first, asked);
    if (first && !columns_.empty()) NameItems(items);
    for (const TItem& item : items)
      meaning += " " + item.meaning + (closed && first ? " as " + QuotedName(item.name) : "") + ",";
    if (!Empty(clauses.having) || !Empty(clauses.order) || !Empty(clauses.group)) AskForNames(items, range.first);
    if (!from.empty()) meaning += " from " + from;
    meaning += Rest(clauses, names, items);
    items_ = std::move(items);
    scopes_.pop_back();
    asked_for_rows_ = asked;
    return meaning;
  }

  // Where names stay as they are, they may be those that a list has replaced.
  void AskForNames(const std::vector<TItem>& items, std::size_t at) const {
    const auto replaced = [](const TItem& item) { return item.alias != item.name; };
    if (!Resolves() && std::ranges::any_of(items, replaced)) Unreadable(at);
  }

  // What stands after the tables.
  std::string Rest(const TClauses& clauses, const TQueryNames& names, const std::vector<TItem>& items) {
    constexpr EExpression kCondition = EExpression::Condition;
    std::string meaning;
    if (!Empty(clauses.where)) meaning += " where " + ExpressionMeaning(tokens_, clauses.where, names, kCondition);
    scopes_.back().items = &items;
    if (!Empty(clauses.group)) meaning += " group " + Group(clauses.group, names, items);
    if (!Empty(clauses.having))
      meaning += " having " + ExpressionMeaning(tokens_, clauses.having, Careful(names, items, true), kCondition);
    if (!Empty(clauses.order)) meaning += " order " + Order(clauses.order, Careful(names, items), items);
    if (!Empty(clauses.limit)) meaning += Limit(clauses.limit);
    return meaning;
  }

  // "window a as (...), b as (...)": what stands in their brackets.
  std::map<std::string, TTokenRange> Windows(TTokenRange range) const {
    std::map<std::string, TTokenRange> windows;
    if (Empty(range)) return windows;
    for (const TTokenRange part : PartsOf(tokens_, range)) {
      const std::size_t open = part.first + 2;
      const bool named = IsName(Token(part.first)) && Is(part.first + 1, "as") && Token(open).Is("(");
      if (!named || AfterGroup(tokens_, open) != part.last) Unreadable(part.first);
      windows.emplace(LowerText(NameOf(Token(part.first))), TTokenRange{open + 1, part.last - 1});
    }
    return windows;
  }

  static bool Empty(TTokenRange range) { return range.first >= range.last; }

  TQueryNames Names() {
    TQueryNames names;
    names.query = [this](TTokenRange range, bool exists) { return Within(range, exists); };
    names.stored = side_.has_function;
    if (Resolves())
      names.column = [this](const std::vector<std::string>& column, bool) { return ColumnMeaning(column); };
    return names;
  }

  // Of one that is asked whether it has rows, servers may say "limit 1".
  std::string Within(TTokenRange range, bool exists) {
    const bool limited =
        exists && range.last >= range.first + 2 && Is(range.last - 2, "limit") && Token(range.last - 1).text == "1";
    if (limited) range.last -= 2;
    const std::vector<std::string> outer = std::exchange(columns_, {});
    const bool asked = std::exchange(asked_for_rows_, exists);
    std::string meaning = Query(range, false);
    asked_for_rows_ = asked;
    columns_ = outer;
    return meaning;
  }

  // Where an alias may be meant as well as a column, what stands before a column counts.
  TQueryNames Careful(TQueryNames names, const std::vector<TItem>& items, bool having = false) {
    for (const TItem& item : items)
      if (item.meaning != QuotedName(LowerText(item.alias))) names.hidden.insert(LowerText(item.alias));
    if (Resolves())
      names.column = [this, &items, having](const std::vector<std::string>& column, bool aggregated) {
        return AliasOrColumn(column, items, having && !aggregated);
      };
    return names;
  }

  // --- Names, where they are resolved

  // A column's own name stands last. The innermost query that has it is meant.
  std::string ColumnMeaning(const std::vector<std::string>& names) const {
    const std::string table = names.size() > 1 ? names[names.size() - 2] : std::string();
    if (names.size() > 2) Unreadable(0);
    for (std::size_t level = scopes_.size(); level-- > 0;) {
      const auto column = scopes_[level].tables->Find(table, names.back());
      if (table.empty() && level + 1 < scopes_.size() && HasAlias(scopes_[level].items, names[0])) break;
      if (column) return MeaningOf(*column, level);
    }
    return RaiseUnknown(names.back());
  }
  // One that is meant perhaps, where a query stands in the condition or order of another.
  static bool HasAlias(const std::vector<TItem>* items, const std::string& name) {
    return items != nullptr &&
           std::ranges::any_of(*items, [&](const TItem& item) { return SameText(item.alias, name); });
  }
  static std::string MeaningOf(const TNamedColumn& column, std::size_t level) {
    const std::string meaning = QuotedName(column.table) + "." + QuotedName(LowerText(column.column.name));
    return level == 0 ? meaning : meaning + Format("^%d", level);
  }
  [[noreturn]] static std::string RaiseUnknown(const std::string& name) { RaiseError(Format(kUnknownColumn, name)); }

  // A "having" looks for an alias first, an expression of an order for a column.
  std::string AliasOrColumn(const std::vector<std::string>& names, const std::vector<TItem>& items,
                            bool alias_first) const {
    const auto item = std::ranges::find_if(
        items, [&](const TItem& one) { return names.size() == 1 && SameText(one.alias, names[0]); });
    const bool meant = item != items.end() && (alias_first || !scopes_.back().tables->Find({}, names[0]));
    return meant ? QuotedName(LowerText(item->name)) : ColumnMeaning(names);
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

  // `asked`: whether there are rows, for which servers print 1 in the place of "*".
  std::vector<TItem> Items(TTokenRange range, const TQueryNames& names, bool named, bool asked) {
    std::vector<TItem> items;
    for (TTokenRange part : PartsOf(tokens_, range)) {
      if (Empty(part)) Unreadable(part.first);
      if (Token(part.last - 1).Is("*")) {
        AddStar(part, asked, items);
        continue;
      }
      std::string alias = TakeAlias(part);
      if (alias.empty() && named) alias = OwnAlias(part, items.size() + 1);
      if (alias.empty() && named && Resolves()) Unreadable(part.first);
      items.push_back({ExpressionMeaning(tokens_, part, names), alias, alias});
    }
    return items;
  }

  // "*", "t.*"
  void AddStar(TTokenRange part, bool asked, std::vector<TItem>& items) {
    const std::size_t size = part.last - part.first;
    if (asked && size == 1) return items.push_back({"1", {}, {}});
    if (!Resolves()) {
      const std::string order =
          JoinList(scopes_.back().tables->Names(), " ");  // which joins that are turned round lose
      return items.push_back({ExpressionMeaning(tokens_, part, Names()) + " of " + order + " *", {}, {}});
    }
    if (size != 1 && (size != 3 || !Token(part.first + 1).Is("."))) Unreadable(part.first);
    const std::string table = size == 1 ? std::string() : NameOf(Token(part.first));
    for (const TNamedColumn& column : scopes_.back().tables->Star(table))
      items.push_back({MeaningOf(column, scopes_.size() - 1), column.column.name, column.column.name});
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
                         before.kind == EToken::String || (before.kind == EToken::Word && !AsksForMore(before));
    const bool word = last.kind == EToken::Word && (last.Is("end") || last.Is("null") || EndsInterval(part));
    if (!said && (!operand || word || last.kind == EToken::String)) return {};
    part.last -= said ? 2 : 1;
    return alias;
  }
  // Words after which no alias can stand.
  static bool AsksForMore(const TToken& word) {
    return InList(
        LowerText(word.text),
        {"and",  "or",   "xor",  "not",    "is",       "like",   "in",     "between", "regexp",  "rlike", "div",
         "mod",  "when", "then", "else",   "case",     "escape", "exists", "all",     "any",     "some",  "as",
         "over", "from", "of",   "binary", "interval", "row",    "member", "collate", "against", "using", "sounds"});
  }
  // "a + interval 1 day": each of them has its unit.
  bool EndsInterval(TTokenRange part) const {
    std::size_t intervals = 0, units = 0;
    for (std::size_t at = part.first; at < part.last; at = Token(at).Is("(") ? AfterGroup(tokens_, at) : at + 1) {
      if (Is(at, "interval")) ++intervals;
      if (at > part.first && IsUnit(Token(at)) && !Token(at - 1).Is(".")) ++units;
    }
    return intervals > 0 && units <= intervals && IsUnit(Token(part.last - 1));
  }
  static bool IsUnit(const TToken& token) {
    if (token.kind != EToken::Word) return false;
    const std::string word = LowerText(token.text);
    const std::string larger = word.substr(0, word.find('_'));  // hour_minute
    return InList(larger, {"microsecond", "second", "minute", "hour", "day", "week", "month", "quarter", "year"});
  }

  // What servers call a column that has no name; empty where that is not certain.
  std::string OwnAlias(TTokenRange part, std::size_t place) const {
    while (Token(part.first).Is("(") && AfterGroup(tokens_, part.first) == part.last && IsColumn(Inside(part)))
      part = Inside(part);
    const TToken& last = Token(part.last - 1);
    if (IsColumn(part)) return NameOf(last);
    const bool text = part.last - part.first == 1 && last.kind == EToken::String;
    const std::string written(text_.substr(Token(part.first).start, last.End() - Token(part.first).start));
    if (!text && !IsPlain(text_, tokens_, part.first, part.last)) return {};  // a comment may stay or go
    const std::string alias = text ? ValueOf(last) : written;
    const bool refused = CharCount(alias) > kLongestAlias || alias.ends_with(' ');
    return refused && depth_ == 1 ? Format(kReplacedAlias, place) : alias;
  }
  static TTokenRange Inside(TTokenRange part) { return {part.first + 1, part.last - 1}; }
  bool IsColumn(TTokenRange part) const {
    const bool column = part.last == part.first + 1 || Token(part.last - 2).Is(".");
    return column && IsName(Token(part.last - 1));
  }

  void NameItems(std::vector<TItem>& items) const {
    const bool stars = std::ranges::any_of(items, [](const TItem& item) { return item.meaning.ends_with('*'); });
    if (stars || items.size() != columns_.size()) Unreadable(0);
    for (std::size_t i = 0; i < items.size(); ++i) items[i].name = columns_[i];
  }

  // --- Order

  // A number is the place of a column; an alias goes before a column of its name.
  std::string Resolved(TTokenRange part, const TQueryNames& names, const std::vector<TItem>& items, bool aliases) {
    if (part.last == part.first + 1) {
      const TToken& token = Token(part.first);
      if (!aliases && Resolves() && IsName(token)) aliases = !scopes_.back().tables->Find({}, NameOf(token));
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

  std::string From(TTokenRange range, TNamedTables& tables) {
    if (Empty(range) || (range.last == range.first + 1 && Is(range.first, "dual"))) return {};
    std::size_t at = range.first;
    std::string meaning = Tables(at, range.last, tables);
    if (at < range.last) Unreadable(at);
    return meaning;
  }

  std::string Tables(std::size_t& at, std::size_t last, TNamedTables& tables) {
    if (++depth_ > kMaxDepth) Unreadable(at);
    std::string meaning = Joins(at, last, tables);
    while (at < last && Token(at).Is(",")) {
      TNamedTables more;
      meaning = Format("(%s join %s)", meaning, Joins(++at, last, more));
      tables.Join(more);
    }
    --depth_;
    return meaning;
  }

  // "a join b on c left join d on e", from left to right.
  std::string Joins(std::size_t& at, std::size_t last, TNamedTables& tables) {
    std::string left = Table(at, last, tables);
    for (std::string kind; at < last && !(kind = TakeJoin(at)).empty();) {
      TNamedTables more;
      std::string right = Table(at, last, more);
      const bool turned = kind.ends_with("right join");
      if (turned) std::swap(left, right);
      std::string condition = JoinCondition(at, last, kind, tables, more);
      if (turned) kind = StrReplace(kind, "right", "left");
      left = Format("(%s %s %s%s)", left, kind, right, condition);
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

  // Joins the tables of the right to those of the left.
  std::string JoinCondition(std::size_t& at, std::size_t last, std::string& kind, TNamedTables& left,
                            const TNamedTables& right) {
    const bool turned = kind.ends_with("right join");
    const bool natural = kind.starts_with(kNatural);
    const bool named = at < last && Is(at, "using");
    std::vector<std::string> names;
    if (named) names = TakeNames(++at);
    if (Resolves() && (natural || named)) {
      if (natural) kind.erase(0, kNatural.size());
      return AlikeCondition(left.JoinAlike(right, natural ? nullptr : &names, turned));
    }
    left.Join(right);
    std::string list = named ? " using" : "";
    for (const std::string& name : names) list += " " + QuotedName(LowerText(name));
    return named || at >= last || !Is(at, "on") ? list : OnCondition(++at, last, left);
  }

  std::string OnCondition(std::size_t& at, std::size_t last, const TNamedTables& tables) {
    const std::size_t first = at;
    while (at < last && !EndsCondition(at)) at = Token(at).Is("(") ? AfterGroup(tokens_, at) : at + 1;
    if (at > last) Unreadable(first);
    scopes_.push_back({&tables});
    std::string condition = ExpressionMeaning(tokens_, {first, at}, Names(), EExpression::JoinCondition);
    scopes_.pop_back();
    return " on " + condition;
  }

  // As a condition of those that are equal is written.
  std::string AlikeCondition(const std::vector<TColumnPair>& pairs) const {
    std::vector<std::string> equal;
    for (const TColumnPair& pair : pairs) {
      std::string left = MeaningOf(pair.left, scopes_.size()), right = MeaningOf(pair.right, scopes_.size());
      if (right < left) std::swap(left, right);
      equal.push_back(Format("(= %s %s)", left, right));
    }
    std::ranges::sort(equal);
    if (equal.size() < 2) return equal.empty() ? std::string() : " on " + equal[0];
    return " on (and " + JoinList(equal, " ") + ")";
  }
  bool EndsCondition(std::size_t at) const {
    const bool call = Token(at + 1).Is("(");
    return Token(at).Is(",") || Is(at, "join") || Is(at, "inner") || Is(at, "cross") || Is(at, "straight_join") ||
           Is(at, "natural") || Is(at, "on") || ((Is(at, "left") || Is(at, "right")) && !call);
  }

  std::string Table(std::size_t& at, std::size_t last, TNamedTables& tables) {
    if (at >= last) Unreadable(at);
    if (Token(at).Is("(")) return Bracket(at, last, tables);
    if (!IsName(Token(at)) || Token(at + 1).Is("(")) Unreadable(at);
    std::string name = NameOf(Token(at++));
    std::string meaning = QuotedName(name);
    const TListedColumns columns = at < last && Token(at).Is(".") ? std::nullopt : ColumnsOf(name);
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
    tables.Add(alias.empty() ? name : alias, columns);
    return meaning + Hints(at, last);
  }

  // A query of this name goes before a table.
  TListedColumns ColumnsOf(const std::string& name) const {
    if (!Resolves()) return std::nullopt;
    for (std::size_t i = named_queries_.size(); i-- > 0;) {
      const std::string& query = named_queries_[i].name;
      if (query == name) return named_queries_[i].columns;
      if (SameText(query, name)) RaiseUnknown(name);  // whether letter case counts hangs on the server
    }
    return side_.columns_of(name);
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

  std::string Bracket(std::size_t& at, std::size_t last, TNamedTables& tables) {
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
    std::string meaning = "(" + ClosedQuery({open + 1, end - 1}, std::move(columns)) + ") as " + QuotedName(alias);
    tables.Add(alias, ColumnsRead());
    return meaning;
  }

  std::string_view text_;
  TTokens tokens_;
  std::vector<std::string> columns_;  // that the query under way gets from outside
  const TQuerySide& side_;
  std::vector<TItem> items_;  // of the last "select"
  struct TScope {
    const TNamedTables* tables;
    const std::vector<TItem>* items = nullptr;  // where their aliases may be named
  };
  std::vector<TScope> scopes_;  // of the queries around, the innermost last
  struct TNamedQuery {
    std::string name;
    TListedColumns columns;
  };
  std::vector<TNamedQuery> named_queries_;  // by "with", that can be named here
  std::string announced_;                   // the name of the recursive one that is read next
  bool asked_for_rows_ = false;             // the query under way, and no more
  int depth_ = 0;
};

}  // namespace

std::string QueryMeaning(std::string_view query, const std::vector<std::string>& columns) {
  const std::vector<TToken> tokens = Tokens(query);
  try {
    return TQueryReader(query, tokens, columns, {}).Read();
  } catch (const EVelmora&) {  // what is not known says what its tokens say
    return PlainTokens(tokens, columns);
  }
}

std::string ResolvedMeaning(std::string_view query, const std::vector<std::string>& columns, const TQuerySide& side) {
  const std::vector<TToken> tokens = Tokens(query);
  return TQueryReader(query, tokens, columns, side).Read();
}

std::vector<std::string> QueryColumns(std::string_view query, const TQuerySide& side) {
  const std::vector<TToken> tokens = Tokens(query);
  std::vector<std::string> names;
  try {
    TQueryReader reader(query, tokens, {}, side);
    reader.Read();
    for (const TItem& item : reader.Columns()) names.push_back(item.name);
  } catch (const EVelmora&) {
    names.clear();
  }
  if (std::ranges::find(names, "") != names.end()) names.clear();
  return names;
}

}  // namespace velmora
