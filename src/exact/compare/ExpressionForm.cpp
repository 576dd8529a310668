// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/compare/ExpressionForm.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>
#include <vector>

#include "exact/compare/ServerDefaults.h"
#include "mysqltext/Charsets.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kUnreadable[] = "not an expression that is known";
constexpr int kMaxDepth = 400;  // of brackets and of operators in a row, which nest as brackets do

struct TNode {
  std::string op;  // of a leaf what it says
  std::vector<TNode> args{};
};

struct TPair {
  std::string_view one;
  std::string_view other;
};

template <std::size_t N>
std::string_view Mapped(const std::array<TPair, N>& rows, std::string_view word) {
  const auto row = std::find_if(rows.begin(), rows.end(), [word](const TPair& pair) { return pair.one == word; });
  return row == rows.end() ? std::string_view() : row->other;
}

constexpr std::array<TPair, 8> kOpposites = {
    {{"=", "<>"}, {"<>", "="}, {"<", ">="}, {">=", "<"}, {">", "<="}, {"<=", ">"}, {"xor", "xnor"}, {"xnor", "xor"}}};
constexpr std::array<TPair, 24> kSynonyms = {{{"ucase", "upper"},
                                              {"lcase", "lower"},
                                              {"octet_length", "length"},
                                              {"character_length", "char_length"},
                                              {"substring", "substr"},
                                              {"mid", "substr"},
                                              {"power", "pow"},
                                              {"ceil", "ceiling"},
                                              {"dayofmonth", "day"},
                                              {"sha1", "sha"},
                                              {"nvl", "ifnull"},
                                              {"current_timestamp", "now"},
                                              {"localtime", "now"},
                                              {"localtimestamp", "now"},
                                              {"current_date", "curdate"},
                                              {"current_time", "curtime"},
                                              {"current_user", "current_user"},
                                              {"session_user", "user"},
                                              {"system_user", "user"},
                                              {"schema", "database"},
                                              {"now", "now"},
                                              {"curdate", "curdate"},
                                              {"curtime", "curtime"},
                                              {"rlike", "regexp"}}};
// Calls without brackets.
constexpr std::string_view kBareCalls[] = {"current_timestamp", "localtime",    "localtimestamp",
                                           "current_date",      "current_time", "current_user",
                                           "utc_date",          "utc_time",     "utc_timestamp"};
// Functions that every server prints by one name, or by one of its synonyms above.
constexpr std::string_view kFunctions =
    " upper lower length char_length substr pow ceiling day sha ifnull now curdate curtime current_user "
    "user database nullif coalesce if concat concat_ws ltrim rtrim trim left right year month "
    "unix_timestamp bit_length replace reverse md5 sha2 hex unhex abs round floor truncate sign sqrt "
    "greatest least to_days lpad rpad repeat space ascii ord conv crc32 inet_aton inet6_aton "
    "substring_index field elt find_in_set strcmp locate quote last_day weekday quarter hour minute "
    "second microsecond uuid log ln exp json_extract json_valid json_unquote json_object json_array "
    "soundex to_base64 datediff cast regexp_like ";
// What says true or false, and not a number.
constexpr std::string_view kTruths[] = {"=",   "<>",       "<",       "<=",   ">",     ">=",     "<=>",
                                        "and", "or",       "xor",     "xnor", "not",   "isnull", "is true",
                                        "in",  "is false", "between", "like", "regexp"};

bool IsOneOf(std::string_view word, std::span<const std::string_view> words) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

bool IsTruth(const TNode& node) { return !node.args.empty() && IsOneOf(node.op, kTruths); }

bool IsEqualRows(const TNode& left, const TNode& right) {
  return left.op == "row" && right.op == "row" && left.args.size() == right.args.size() && left.args.size() > 1;
}

TNode Not(TNode node);

TNode Compared(std::string op, TNode left, TNode right) {
  // "= any" is "in", "<> all" is "not in".
  if (op == "=" && right.args.size() == 1 && InList(right.op, {"any", "some"}))
    return {"=", {std::move(left), std::move(right.args[0])}};
  if (op == "<>" && right.args.size() == 1 && right.op == "all")
    return {"<>", {std::move(left), std::move(right.args[0])}};
  if (op == "=" && IsEqualRows(left, right)) {
    TNode all{"and"};
    for (std::size_t i = 0; i < left.args.size(); ++i)
      all.args.push_back(Compared("=", std::move(left.args[i]), std::move(right.args[i])));
    return all;
  }
  const bool turned = (op == "=" || op == "<>") && left.args.empty() && left.op == "0";
  if (turned) std::swap(left, right);
  return {std::move(op), {std::move(left), std::move(right)}};
}

bool IsColumn(const TNode& node) { return node.args.empty() && node.op.starts_with('`'); }

// Columns that are equal are so in any order: servers turn them round where they turn a join round.
void PutInOrder(TNode& node) {
  const auto equal = [](const TNode& one) { return one.op == "=" && IsColumn(one.args[0]) && IsColumn(one.args[1]); };
  if (node.args.size() == 2 && equal(node) && node.args[1].op < node.args[0].op) std::swap(node.args[0], node.args[1]);
  if (node.op != "and" || !std::ranges::all_of(node.args, equal)) return;
  for (TNode& arg : node.args) PutInOrder(arg);
  std::ranges::sort(node.args, [](const TNode& one, const TNode& other) {
    return std::pair(one.args[0].op, one.args[1].op) < std::pair(other.args[0].op, other.args[1].op);
  });
}

TNode Truth(TNode node) { return IsTruth(node) ? std::move(node) : Compared("<>", std::move(node), {"0"}); }

// Servers take "not" inwards.
TNode Not(TNode node) {
  if (!IsTruth(node)) return Compared("=", std::move(node), {"0"});
  if (node.op == "not") return std::move(node.args[0]);
  if (const std::string_view opposite = Mapped(kOpposites, node.op); !opposite.empty()) {
    node.op = opposite;
    return node;
  }
  if (node.op == "and" || node.op == "or") {
    node.op = node.op == "and" ? "or" : "and";
    for (TNode& arg : node.args) arg = Not(std::move(arg));
    return node;
  }
  return {"not", {std::move(node)}};
}

// Servers move a "not" to either side, so that both are without one.
TNode Exclusive(TNode left, TNode right) {
  TNode node{"xor"};
  for (TNode* side : {&left, &right}) {
    *side = Truth(std::move(*side));
    if (InList(side->op, {"<>", ">=", ">", "or", "not", "xnor"})) {
      *side = Not(std::move(*side));
      node.op = Mapped(kOpposites, node.op);
    }
    node.args.push_back(std::move(*side));
  }
  return node;
}

// Asked of what is never null, it is that or its opposite.
TNode Asked(const std::string& what, TNode node) {
  const TNode& inner = node.op == "not" ? node.args[0] : node;
  if (!InList(inner.op, {"is true", "is false", "isnull"})) return {"is " + what, {std::move(node)}};
  return what == "true" ? std::move(node) : Not(std::move(node));
}

// Of what holds or not: "is true" says nothing, and "is false" what "not" says.
TNode Condition(TNode node) {
  if (node.op == "is true" && !node.args.empty()) return Condition(std::move(node.args[0]));
  if (node.op == "is false" && !node.args.empty()) return Not(std::move(node.args[0]));
  if (node.op == "and" || node.op == "or")
    for (TNode& arg : node.args) arg = Condition(std::move(arg));
  return Truth(std::move(node));
}

bool IsNumber(std::string_view leaf) {
  if (leaf.starts_with('-')) leaf.remove_prefix(1);
  return !leaf.empty() && leaf[0] >= '0' && leaf[0] <= '9' && !leaf.starts_with("0x");
}

TNode Negative(TNode node) {
  if (!node.args.empty() || !IsNumber(node.op)) return {"-", {std::move(node)}};
  if (node.op.starts_with('-'))
    node.op.erase(0, 1);
  else if (node.op != "0")
    node.op.insert(0, 1, '-');
  return node;
}

bool HoldsColumn(const TNode& node) {
  if (node.args.empty()) return node.op.starts_with('`') || node.op.ends_with("()");
  return std::any_of(node.args.begin(), node.args.end(), HoldsColumn);
}

// Of constants alone: MySQL prints what comes of them.
bool MayBeFolded(const TNode& node) {
  return !node.args.empty() && (!HoldsColumn(node) || std::any_of(node.args.begin(), node.args.end(), MayBeFolded));
}

TNode AsList(const std::string& op, TNode node) {
  if (node.op == op && !node.args.empty()) return node;
  TNode list{op};
  list.args.push_back(Truth(std::move(node)));
  return list;
}

// "and" within "and" is one list.
TNode Joined(const std::string& op, TNode left, TNode right) {
  TNode result = AsList(op, std::move(left));
  TNode more = AsList(op, std::move(right));
  std::move(more.args.begin(), more.args.end(), std::back_inserter(result.args));
  return result;
}

void Print(const TNode& node, std::string& text) {
  if (node.args.empty()) {
    text += node.op;
    return;
  }
  text += "(" + node.op;
  for (const TNode& arg : node.args) {
    text += ' ';
    Print(arg, text);
  }
  text += ')';
}

std::string Hexadecimal(std::string_view digits, bool bits) {
  std::string text = LowerText(digits);
  if (bits) {
    std::string wide;
    text.insert(0, (8 - text.size() % 8) % 8, '0');
    for (std::size_t at = 0; at < text.size(); at += 4) {
      int value = 0;
      for (std::size_t bit = 0; bit < 4; ++bit) value = value * 2 + (text[at + bit] == '1' ? 1 : 0);
      wide += "0123456789abcdef"[value];
    }
    text = wide;
  }
  return "0x" + std::string(text.size() % 2, '0') + text;
}

class TExpressionReader {
 public:
  TExpressionReader(TTokens tokens, const TExpressionReading& reading) : tokens_(tokens), reading_(reading) {}

  TExpressionForm Read() {
    TExpressionForm form;
    TNode node = ReadOr();
    if (at_ < tokens_.size()) RaiseError(kUnreadable);
    if (reading_.condition) node = Condition(std::move(node));
    if (reading_.joins) PutInOrder(node);
    Print(node, form.text);
    form.known = known_ && !MayBeFolded(node);
    return form;
  }

 private:
  // --- Tokens

  const TToken& Token(std::size_t ahead = 0) const { return TokenAt(tokens_, at_ + ahead); }
  bool Is(std::string_view word) const { return Token().Is(word) && Token().kind != EToken::Name; }
  bool TakeIf(std::string_view word) {
    if (at_ >= tokens_.size() || !Is(word)) return false;
    ++at_;
    return true;
  }
  void Take(std::string_view word) {
    if (!TakeIf(word)) RaiseError(kUnreadable);
  }
  std::string TakeOneOf(std::span<const std::string_view> words) {
    for (const std::string_view word : words)
      if (TakeIf(word)) return std::string(word);
    return {};
  }
  std::string TakeWord() {
    if (Token().kind != EToken::Word) RaiseError(kUnreadable);
    return LowerText(tokens_[at_++].text);
  }

  void Deepen() {
    if (++depth_ > kMaxDepth) RaiseError(kUnreadable);
  }

  // --- Conditions

  TNode ReadOr() {
    Deepen();
    TNode left = ReadXor();
    while (TakeIf("or") || TakeIf("||")) left = Joined("or", std::move(left), ReadXor());
    --depth_;
    return left;
  }
  TNode ReadXor() {
    const int outer = depth_;
    TNode left = ReadAnd();
    while (TakeIf("xor")) {
      Deepen();
      TNode right = ReadAnd();
      left = Exclusive(std::move(left), std::move(right));
    }
    depth_ = outer;
    return left;
  }
  TNode ReadAnd() {
    TNode left = ReadNot();
    while (TakeIf("and") || TakeIf("&&")) left = Joined("and", std::move(left), ReadNot());
    return left;
  }
  TNode ReadNot() {
    Deepen();
    const bool negated = TakeIf("not");
    TNode node = negated ? Not(ReadNot()) : ReadComparison();
    --depth_;
    return node;
  }

  TNode ReadComparison() {
    static constexpr std::string_view kComparisons[] = {"=", "<=>", "<>", "!=", "<=", ">=", "<", ">"};
    const int outer = depth_;
    TNode left = ReadPredicate();
    for (;; Deepen())
      if (TakeIf("is"))
        left = ReadIs(std::move(left));
      else if (std::string op = TakeOneOf(kComparisons); !op.empty())
        left = Compared(op == "!=" ? "<>" : op, std::move(left), ReadPredicate());
      else
        break;
    depth_ = outer;
    return left;
  }
  TNode ReadIs(TNode left) {
    const bool negated = TakeIf("not");
    const std::string what = TakeWord();
    if (what == "null" || what == "unknown")
      left = {"isnull", {std::move(left)}};
    else if (what == "true" || what == "false")
      left = Asked(what, Truth(std::move(left)));
    else
      RaiseError(kUnreadable);
    return negated ? Not(std::move(left)) : left;
  }

  TNode ReadPredicate() {
    TNode left = ReadBits();
    const bool negated = Is("not");
    if (negated) ++at_;
    if (TakeIf("in"))
      left = ReadIn(std::move(left));
    else if (TakeIf("between"))
      left = ReadBetween(std::move(left));
    else if (TakeIf("like"))
      left = ReadLike(std::move(left));
    else if (TakeIf("regexp") || TakeIf("rlike"))
      left = {"regexp", {std::move(left), ReadBits()}};
    else if (negated)
      RaiseError(kUnreadable);
    return negated ? Not(std::move(left)) : left;
  }
  TNode ReadIn(TNode left) {
    std::vector<TNode> values = ReadArguments();
    if (values.empty()) RaiseError(kUnreadable);
    if (values.size() == 1) return Compared("=", std::move(left), std::move(values[0]));
    values.insert(values.begin(), std::move(left));
    return {"in", std::move(values)};
  }
  TNode ReadBetween(TNode left) {
    TNode from = ReadBits();
    Take("and");
    TNode to = ReadPredicate();
    return {"between", {std::move(left), std::move(from), std::move(to)}};
  }
  TNode ReadLike(TNode left) {
    TNode node{"like", {std::move(left), ReadUnary()}};
    if (TakeIf("escape")) node.args.push_back(ReadUnary());
    return node;
  }

  // --- Numbers

  // Operators that bind alike; the first row least closely.
  static constexpr std::size_t kLevels = 6;
  static constexpr std::size_t kTimesLevel = 4;
  static std::span<const std::string_view> Operators(std::size_t level) {
    static constexpr std::string_view kOr[] = {"|"};
    static constexpr std::string_view kAnd[] = {"&"};
    static constexpr std::string_view kShift[] = {"<<", ">>"};
    static constexpr std::string_view kAdd[] = {"+", "-"};
    static constexpr std::string_view kTimes[] = {"*", "/", "div", "mod", "%"};
    static constexpr std::string_view kPower[] = {"^"};
    static constexpr std::array<std::span<const std::string_view>, kLevels> kAll = {kOr,  kAnd,   kShift,
                                                                                    kAdd, kTimes, kPower};
    return kAll[level];
  }

  TNode ReadBits(std::size_t level = 0) {
    if (level == kLevels) return ReadUnary();
    const int outer = depth_;
    TNode left = ReadBits(level + 1);
    for (std::string op; !(op = TakeOneOf(Operators(level))).empty(); Deepen())
      if ((op == "+" || op == "-") && TakeIf("interval"))
        left = ReadInterval(op, std::move(left));
      else
        left = {op == "%" ? "mod" : op, {std::move(left), ReadBits(level + 1)}};
    depth_ = outer;
    return left;
  }
  TNode ReadInterval(const std::string& op, TNode left) {
    TNode count = ReadOr();
    return {op + " interval " + TakeWord(), {std::move(left), std::move(count)}};
  }

  // "interval 1 day + a"; or the function interval(a, 1, 10).
  TNode ReadLeadingInterval() {
    const bool call = Is("(") && TokenAt(tokens_, AfterGroup(tokens_, at_)).kind != EToken::Word;
    if (call) return {"interval", ReadArguments()};
    TNode count = ReadOr();
    std::string unit = TakeWord();
    Take("+");
    return {"+ interval " + unit, {ReadBits(kTimesLevel), std::move(count)}};
  }

  TNode ReadUnary() {
    const int outer = depth_;
    Deepen();
    TNode node = ReadSigned();
    depth_ = outer;
    return node;
  }
  TNode ReadSigned() {
    if (TakeIf("-")) return Negative(ReadUnary());
    if (TakeIf("+")) return ReadUnary();
    if (TakeIf("~")) return {"~", {ReadUnary()}};
    if (TakeIf("!")) return Not(ReadUnary());
    if (Is("binary") && !Token(1).Is("(") && ++at_) return {"cast", {ReadUnary(), {"char charset binary"}}};
    TNode node = ReadSimple();
    for (;; Deepen())
      if (TakeIf("collate"))
        node = {"collate " + TakeWord(), {std::move(node)}};
      else if (TakeIf("->"))
        node = {"json_extract", {std::move(node), ReadSimple()}};
      else if (TakeIf("->>"))
        node = {"json_unquote", {{"json_extract", {std::move(node), ReadSimple()}}}};
      else
        return node;
  }

  // --- Values

  TNode ReadSimple() {
    if (at_ >= tokens_.size()) RaiseError(kUnreadable);
    const TToken& token = Token();
    if (TakeIf("(")) {
      TNode node = ReadOr();
      Take(")");
      return node;
    }
    if (token.kind == EToken::Number) return ReadNumber();
    if (token.kind == EToken::String) return ReadText();
    if (!IsName(token)) RaiseError(kUnreadable);
    if (TakeIf("case")) return ReadCase();
    if (TakeIf("interval")) return ReadLeadingInterval();
    if (token.kind == EToken::Word && Token(1).Is("(")) return ReadCall();
    const bool bytes = Token(1).kind == EToken::String && SameText(PrefixOf(Token(1)), "x");
    if (bytes && token.kind == EToken::Word && token.text.starts_with('_')) return ReadBytesOfSet();
    return ReadColumn();
  }

  TNode ReadNumber() {
    std::string text = LowerText(tokens_[at_++].text);
    if (text.starts_with("0x") || text.starts_with("0b")) return {Hexadecimal(text.substr(2), text[1] == 'b')};
    const bool digits = text.find_first_not_of("0123456789") == std::string::npos;
    if (digits) text.erase(0, std::min(text.find_first_not_of('0'), text.size() - 1));
    known_ = known_ && !text.starts_with('.') && text.find(".e") == std::string::npos && !text.ends_with('.');
    if (text.starts_with('.')) text.insert(0, 1, '0');
    return {std::move(text)};
  }

  TNode ReadText() {
    const std::string prefix = LowerText(PrefixOf(Token()));
    std::string value = ValueOf(Token());
    ++at_;
    // MariaDB takes x'41' for letters where it takes 0x41 for a number.
    if (prefix == "x" && reading_.keeps_qualifiers) return {"x" + Hexadecimal(value, false)};
    if (prefix == "x" || prefix == "b") return {Hexadecimal(value, prefix == "b")};
    while (Token().kind == EToken::String && PrefixOf(Token()).empty()) value += ValueOf(tokens_[at_++]);
    const bool counts = reading_.keeps_qualifiers;  // in queries the set is that of a column, too
    const bool any_set = prefix.empty() || prefix == "n" || prefix.starts_with(counts ? "_utf8mb4" : "_utf8");
    const bool as_written = any_set || counts || prefix == "_binary";
    const auto letters = as_written ? std::nullopt : LettersOf(value, CharsetName(prefix.substr(1)));
    const bool plain = any_set || letters;
    value = letters.value_or(value);
    known_ = known_ && plain;
    return {(plain ? "" : prefix) + QuotedText(value)};
  }

  // _latin1 x'e9'
  TNode ReadBytesOfSet() {
    const std::string set = LowerText(Token().text.substr(1));
    const std::string bytes = BytesOf(ValueOf(Token(1)), 4);
    at_ += 2;
    const auto letters = LettersOf(bytes, CharsetName(set));
    known_ = known_ && letters;
    return {letters ? QuotedText(*letters) : "_" + set + QuotedText(bytes)};
  }

  TNode ReadColumn() {
    const bool word = Token().kind == EToken::Word;
    std::string name = LowerText(NameOf(tokens_[at_++]));
    if (word && (name == "true" || name == "false")) return {name == "true" ? "1" : "0"};
    if (word && name == "null") return {"null"};
    if (word && Token().kind == EToken::String) RaiseError(kUnreadable);  // date'2020-01-01'
    if (word && IsOneOf(name, kBareCalls)) return Call(name, {});
    if (reading_.column) return ReadNamedColumn();
    std::string qualifiers;  // in which letter case may count
    std::string written = NameOf(tokens_[at_ - 1]);
    while (TakeIf(".")) {
      if (!IsName(Token())) RaiseError(kUnreadable);
      if (reading_.keeps_qualifiers) qualifiers += QuotedName(written) + ".";
      written = NameOf(tokens_[at_++]);
      name = LowerText(written);
    }
    return {qualifiers + QuotedName(name)};
  }

  TNode ReadNamedColumn() {
    std::vector<std::string> names = {NameOf(tokens_[at_ - 1])};
    while (TakeIf(".")) {
      if (!IsName(Token())) RaiseError(kUnreadable);
      names.push_back(NameOf(tokens_[at_++]));
    }
    return {reading_.column(names, aggregates_ > 0)};
  }

  TNode ReadCase() {
    TNode node{"case"};
    const bool simple = !Is("when");
    if (simple) node.args.push_back(ReadOr());
    while (TakeIf("when")) {
      TNode condition = ReadOr();
      node.args.push_back(simple ? std::move(condition) : Truth(std::move(condition)));
      Take("then");
      node.args.push_back(ReadOr());
    }
    if (TakeIf("else")) node.args.push_back({"else", {ReadOr()}});
    Take("end");
    return node;
  }

  // --- Calls

  std::vector<TNode> ReadArguments() {
    std::vector<TNode> args;
    Take("(");
    if (TakeIf(")")) return args;
    do args.push_back(ReadOr());
    while (TakeIf(","));
    Take(")");
    return args;
  }

  TNode ReadCall() {
    const std::string name = TakeWord();
    if (name == "cast" || name == "convert") return ReadCast(name == "cast");
    if (name == "trim") return ReadTrim();
    if (name == "extract") return ReadExtract();
    if (name == "position") return ReadPosition();
    if (InList(name, {"substring", "substr", "mid"})) return ReadSubstring();
    if (InList(name, {"date_add", "adddate", "date_sub", "subdate"})) return ReadDateChange(name);
    if (name == "timestampadd") return ReadTimestampAdd();
    const bool aggregates = IsAggregate(name);
    if (aggregates) ++aggregates_;
    std::vector<TNode> args = ReadArguments();
    if (aggregates) --aggregates_;
    return Call(name, std::move(args));
  }
  static bool IsAggregate(std::string_view name) {
    constexpr std::string_view kDistinct = "distinct ";
    if (name.starts_with(kDistinct)) name.remove_prefix(kDistinct.size());
    return InList(std::string(name), {"sum", "count", "avg", "min", "max", "group_concat", "std", "stddev",
                                      "stddev_pop", "stddev_samp", "variance", "var_pop", "var_samp", "bit_and",
                                      "bit_or", "bit_xor", "json_arrayagg", "json_objectagg"});
  }

  TNode Call(const std::string& name, std::vector<TNode> args) {
    if (args.size() == 2) {
      if (name == "mod") return {"mod", std::move(args)};
      if (name == "instr") return {"locate", {std::move(args[1]), std::move(args[0])}};
      if (name == "regexp_like") return {"regexp", std::move(args)};
      if (name == "from_unixtime") return {"date_format", {{name, {std::move(args[0])}}, std::move(args[1])}};
      if (name == "datediff") return {"-", {{"to_days", {std::move(args[0])}}, {"to_days", {std::move(args[1])}}}};
    }
    if (args.size() == 1) {
      if (name == "isnull") return {"isnull", std::move(args)};
      if (name == "date" || name == "time") return {"cast", {std::move(args[0]), {name}}};
      if (name == "timestamp") return {"cast", {std::move(args[0]), {"datetime"}}};
      if (name == "bin" || name == "oct") return {"conv", {std::move(args[0]), {"10"}, {name == "bin" ? "2" : "8"}}};
      if (name == "round" || name == "yearweek") args.push_back({"0"});
    }
    if (name == "if" && !args.empty()) args[0] = Truth(std::move(args[0]));
    // To MariaDB of today it is the time of day: one cannot tell.
    const bool open = reading_.keeps_qualifiers && name == "localtime";
    const std::string_view synonym = open ? name : Mapped(kSynonyms, name);
    const std::string printed = synonym.empty() ? name : std::string(synonym);
    known_ = known_ && kFunctions.find(" " + printed + " ") != std::string_view::npos;
    if (args.empty() || (args.size() == 1 && printed == "now" && args[0].op == "0")) return {printed + "()"};
    return {printed, std::move(args)};
  }

  // cast(a as type), convert(a, type), convert(a using set)
  TNode ReadCast(bool is_cast) {
    Take("(");
    TNode value = ReadOr();
    if (!is_cast && TakeIf("using")) {
      TNode node{"convert " + TakeWord(), {std::move(value)}};
      Take(")");
      return node;
    }
    Take(is_cast ? "as" : ",");
    TNode node{"cast", {std::move(value), {ReadType()}}};
    Take(")");
    return node;
  }
  std::string ReadType() {
    const std::string first = TakeWord();
    std::string type = first;
    if (first == "binary" && !Is("(")) return "char charset binary";
    if (first == "signed" || first == "unsigned") {
      if (!TakeIf("integer")) TakeIf("int");
      return type;
    }
    for (int depth = 0; at_ < tokens_.size() && (depth > 0 || !Is(")")); ++at_) {
      if (Is("(")) ++depth;
      if (Is(")")) --depth;
      type += " " + LowerText(Token().text);
    }
    type = PrintedType(first, StrReplace(type, " character set ", " charset "));
    // Servers add the connection's character set, which nobody knows later.
    const bool plain = InList(first, {"date", "time", "datetime", "decimal", "double", "float"});
    known_ = known_ && (plain || type == "char charset binary");
    return type;
  }

  // As servers print it: sizes that go without saying, bytes as letters of the set "binary". Queries come by
  // connections whose set is utf8mb4.
  std::string PrintedType(const std::string& first, const std::string& type) const {
    constexpr std::string_view kOurSet = " charset utf8mb4";
    if (type == "decimal") return "decimal ( 10 , 0 )";
    if (first == "binary") return StrReplace(type, "binary", "char") + " charset binary";
    if (reading_.column && first == "char" && type.ends_with(kOurSet))
      return type.substr(0, type.size() - kOurSet.size());
    return type;
  }

  TNode ReadTrim() {
    static constexpr std::string_view kSides[] = {"both", "leading", "trailing"};
    Take("(");
    const std::string side = TakeOneOf(kSides);
    TNode what{"' '"};
    if (!Is("from")) what = ReadOr();
    const bool from = TakeIf("from");
    TNode text = from ? ReadOr() : std::exchange(what, {"' '"});
    Take(")");
    const bool blanks = what.op == "' '" && what.args.empty();
    const std::string name = side == "leading" ? "ltrim" : side == "trailing" ? "rtrim" : "trim";
    if (blanks) return {name, {std::move(text)}};
    return {name, {std::move(text), std::move(what)}};
  }
  TNode ReadExtract() {
    Take("(");
    const std::string unit = TakeWord();
    Take("from");
    TNode node{"extract " + unit, {ReadOr()}};
    Take(")");
    return node;
  }
  TNode ReadPosition() {
    Take("(");
    TNode what = ReadBits();
    Take("in");
    TNode node{"locate", {std::move(what), ReadOr()}};
    Take(")");
    return node;
  }
  TNode ReadSubstring() {
    Take("(");
    TNode node{"substr", {ReadOr()}};
    while (TakeIf(",") || TakeIf("from") || TakeIf("for")) node.args.push_back(ReadOr());
    Take(")");
    return node;
  }
  TNode ReadDateChange(const std::string& name) {
    Take("(");
    TNode date = ReadOr();
    Take(",");
    const std::string op = name.find("add") != std::string::npos ? "+" : "-";
    const bool unit = TakeIf("interval");
    TNode node = unit ? ReadInterval(op, std::move(date)) : TNode{op + " interval day", {std::move(date), ReadOr()}};
    Take(")");
    return node;
  }

  TNode ReadTimestampAdd() {
    Take("(");
    const std::string unit = TakeWord();
    Take(",");
    TNode count = ReadOr();
    Take(",");
    TNode node{"+ interval " + unit, {ReadOr(), std::move(count)}};
    Take(")");
    return node;
  }

  TTokens tokens_;
  const TExpressionReading& reading_;
  std::size_t at_ = 0;
  int depth_ = 0;
  int aggregates_ = 0;  // calls around
  bool known_ = true;
};

}  // namespace

bool IsSharedFunction(std::string_view name) {
  static constexpr std::string_view kWords =
      " in and or xor not is between like when then else case div mod as interval cast convert trim extract position "
      "substring mid date_add date_sub adddate subdate timestampadd char rand signed unsigned decimal binary regexp "
      "hash key range columns list values than linear by to_seconds partition subpartition partitions isnull instr "
      "date "
      "time ";
  if (name == "regexp_like") return false;  // MySQL's name of what both have as an operator
  const std::string_view synonym = Mapped(kSynonyms, name);
  const std::string word = " " + std::string(synonym.empty() ? name : synonym) + " ";
  return kFunctions.find(word) != std::string_view::npos || kWords.find(word) != std::string_view::npos;
}

std::optional<TExpressionForm> ReadExpressionForm(TTokens tokens, const TExpressionReading& reading) {
  try {
    return TExpressionReader(tokens, reading).Read();
  } catch (const EVelmora&) {
    return std::nullopt;
  }
}

}  // namespace velmora
