// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/objects/TableMentions.h"

#include <algorithm>
#include <initializer_list>
#include <utility>

#include "mysqltext/KeyText.h"

namespace velmora {

namespace {

bool IsAnyOf(const TToken& token, std::initializer_list<std::string_view> words) {
  return std::ranges::any_of(words, [&token](std::string_view word) { return token.Is(word); });
}

class TReader {
 public:
  explicit TReader(TTokens tokens) : tokens_(tokens) {}

  void Read() {
    for (; at_ < tokens_.size(); ++at_) {
      const EExpected expected = std::exchange(expected_, EExpected::Nothing);
      if (std::exchange(may_be_called_, false) && TakeAlias()) continue;
      if (expected == EExpected::Nothing || !TakeName(expected)) Follow(expected);
    }
  }

  std::vector<TTableMention> names;
  std::vector<std::size_t> aliases;

 private:
  enum class EExpected { Nothing, Source, Written };  // a table to read from, or the one that a statement is about

  // Within as many brackets.
  struct TLevel {
    bool reads = false;  // a query or a deletion has begun, whose "from" names tables: not that of "extract(a from b)"
    bool deletes = false;    // "using" names more
    bool tables = false;     // all that stands here is a part of a list of tables
    bool lists = false;      // tables are listed here
    bool called = false;     // behind its bracket an alias may stand
    bool announces = false;  // names of "with" stand here
  };

  // Whether the token is a part of what is expected.
  bool TakeName(EExpected expected) {
    const TToken& token = tokens_[at_];
    if (IsAnyOf(token, {"low_priority", "delayed", "high_priority", "quick", "ignore", "into", "table", "if", "not",
                        "exists", "only"})) {
      expected_ = expected;
      return true;
    }
    if (!IsName(token) || IsAnyOf(token, {"select", "with", "values", "lateral"})) return false;
    const bool qualified = TokenAt(tokens_, at_ + 1).Is(".") && IsName(TokenAt(tokens_, at_ + 2));
    if (qualified) at_ += 2;
    const bool call = expected == EExpected::Source && TokenAt(tokens_, at_ + 1).Is("(");  // json_table(...)
    if (!call) names.push_back({at_, qualified});
    may_be_called_ = !call && expected == EExpected::Source;
    call_ = call;
    return true;
  }

  // Behind a table, where nothing else is known that may stand there.
  bool TakeAlias() {
    const TToken& token = tokens_[at_];
    call_ = token.Is("partition") && TokenAt(tokens_, at_ + 1).Is("(");
    may_be_called_ = token.Is("as");
    if (call_ || may_be_called_) return true;
    if (!IsName(token) || EndsTable(token)) return false;
    aliases.push_back(at_);
    return true;
  }
  static bool EndsTable(const TToken& token) {
    return IsAnyOf(token,
                   {"join",  "inner",     "left",   "right",    "cross", "natural", "on",  "using", "straight_join",
                    "use",   "force",     "ignore", "for",      "where", "group",   "set", "lock",  "having",
                    "order", "intersect", "limit",  "union",    "with",  "window",  "do",  "into",  "except",
                    "then",  "procedure", "values", "returning"});
  }

  // "with c (a) as (...), d as (...)"
  void Announce() {
    const std::size_t at = at_ + 1;
    const std::size_t as = TokenAt(tokens_, at + 1).Is("(") ? AfterGroup(tokens_, at + 1) : at + 1;
    const bool query = TokenAt(tokens_, as).Is("as") && TokenAt(tokens_, as + 1).Is("(");
    if (query && IsName(TokenAt(tokens_, at))) aliases.push_back(at);
  }

  void Follow(EExpected expected) {
    const TToken& token = tokens_[at_];
    TLevel& level = levels_.back();
    const bool call = std::exchange(call_, false);
    level.announces = token.Is("with") || (level.announces && !token.Is("select"));
    if (level.announces && IsAnyOf(token, {"with", "recursive", ","})) Announce();
    if (token.Is(";")) {
      levels_.assign(1, {});
    } else if (token.Is("(")) {
      const bool tables = expected == EExpected::Source;
      levels_.push_back({.tables = tables, .lists = tables, .called = tables || call});
      Expect(tables);
    } else if (token.Is(")")) {
      may_be_called_ = level.called;
      if (levels_.size() > 1) levels_.pop_back();
    } else if (token.Is(",")) {
      Expect(level.lists);
    } else if (IsAnyOf(token, {"join", "straight_join"}) && !IsHint()) {
      List(level.reads || level.tables);
    } else if (token.Is("from")) {
      List(level.reads);
    } else if (IsAnyOf(token, {"select", "delete"})) {
      level.reads = true;
      level.deletes = token.Is("delete");
      level.lists = false;
    } else if (token.Is("using") && level.deletes) {
      List(true);
    } else {
      Write(token, level);
    }
  }

  // "use index for join (i)"
  bool IsHint() const { return at_ > 0 && tokens_[at_ - 1].Is("for"); }

  void Write(const TToken& token, TLevel& level) {
    const TToken& before = at_ > 0 ? tokens_[at_ - 1] : TokenAt({}, 0);
    if (token.Is("update") && !IsAnyOf(before, {"key", "for", "on"})) {
      level.reads = true;
      List(true);
    } else if (IsAnyOf(token, {"table", "tables"}) ||
               (IsAnyOf(token, {"insert", "replace"}) && !TokenAt(tokens_, at_ + 1).Is("("))) {
      expected_ = EExpected::Written;
    } else if (IsAnyOf(token, {"where", "group", "having", "window", "order", "limit", "set", "values", "union",
                               "except", "intersect", "into", "duplicate"})) {
      level.lists = false;
    }
  }

  void List(bool tables) {
    levels_.back().lists = tables;
    Expect(tables);
  }
  void Expect(bool source) { expected_ = source ? EExpected::Source : EExpected::Nothing; }

  TTokens tokens_;
  std::size_t at_ = 0;
  EExpected expected_ = EExpected::Nothing;  // of the next token
  bool may_be_called_ = false;               // the next token may be an alias
  bool call_ = false;                        // the next bracket ends what may be called by one
  std::vector<TLevel> levels_ = {{}};
};

}  // namespace

std::vector<TTableMention> TableMentions(TTokens tokens) {
  TReader reader(tokens);
  reader.Read();
  return std::move(reader.names);
}

std::vector<std::size_t> TableAliases(TTokens tokens) {
  TReader reader(tokens);
  reader.Read();
  return std::move(reader.aliases);
}

}  // namespace velmora
