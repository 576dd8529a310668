// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/plan/TableStatement.h"

#include <algorithm>
#include <initializer_list>

#include "mysqltext/KeyText.h"
#include "mysqltext/Lexer.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kOtherDatabase[] = "it names the database %s, which is not the file's own";
constexpr char kOutside[] = "it says %s, which reaches outside of its database";
constexpr char kRowsOfQuery[] = "it takes rows or columns from a query (%s)";
constexpr char kForeignEngine[] = "engine %s may reach outside of its database";

// Engines whose tables are what their own database holds.
constexpr std::string_view kOwnEngines[] = {
    "innodb",  "innobase",   "myisam",    "aria",       "maria",  "memory", "heap",       "csv",
    "archive", "mroonga",    "blackhole", "rocksdb",    "tokudb", "ndb",    "ndbcluster", "columnstore",
    "merge",   "mrg_myisam", "bdb",       "berkeleydb", "isam",   "falcon", "pbxt",       "xtradb"};

// Tablespaces that every server has, and that hold tables of any database.
constexpr std::string_view kOwnTablespaces[] = {"innodb_file_per_table"};

template <class Words>
bool IsOneOf(std::string_view word, const Words& words) {
  return std::any_of(std::begin(words), std::end(words), [word](std::string_view one) { return SameText(word, one); });
}

bool IsAny(const TToken& token, std::initializer_list<std::string_view> words) {
  return token.kind == EToken::Word && IsOneOf(token.text, words);
}

// What a bare name, or one in quotes, stands for as the value of an option.
std::string ValueText(const TToken& token) { return token.kind == EToken::String ? ValueOf(token) : NameOf(token); }

// --- What a statement is about

class TStatementScanner {
 public:
  explicit TStatementScanner(TTokens tokens) : tokens_(tokens) {}

  TTableStatement Read() {
    if (Take("use")) return ReadDatabase(ETableStatement::Use);
    if (Take("create")) return ReadCreate();
    if (Take("alter")) return ReadAlter();
    if (Take("drop")) return ReadDrop();
    if (Take("rename") && TakeAny({"table", "tables"})) return ReadRename();
    return {};
  }

 private:
  const TToken& Now() const { return TokenAt(tokens_, at_); }
  bool AtEnd() const { return Now().kind == EToken::End; }

  bool Take(std::string_view word) {
    if (!Now().Is(word)) return false;
    ++at_;
    return true;
  }

  bool TakeAny(std::initializer_list<std::string_view> words) {
    if (!IsAny(Now(), words)) return false;
    ++at_;
    return true;
  }

  void PassIfExists() {
    if (!Take("if")) return;
    Take("not");
    Take("exists");
  }

  // Nothing is added where there is no name: the server will say so.
  void TakeName(std::vector<TTableName>& names) {
    if (!IsName(Now())) return;
    TTableName name{{}, NameOf(Now())};
    ++at_;
    if (Take(".")) {
      name.database = name.table;
      name.table = ValueText(Now());
      if (!AtEnd()) ++at_;
    }
    names.push_back(std::move(name));
  }

  TTableStatement ReadDatabase(ETableStatement kind) {
    PassIfExists();
    return {kind, AtEnd() ? std::string() : ValueText(Now()), {}, {}};
  }

  TTableStatement ReadCreate() {
    TTableStatement statement;
    const bool replaces = Take("or") && Take("replace");
    if (TakeAny({"database", "schema"})) return ReadDatabase(ETableStatement::CreateDatabase);
    if (Take("table")) {
      statement.kind = replaces ? ETableStatement::ReplaceTable : ETableStatement::CreateTable;
      PassIfExists();
      TakeName(statement.changes);
      Take("(");
      if (Take("like")) TakeName(statement.reads);
      return statement;
    }
    while (TakeAny({"online", "offline", "unique", "fulltext", "spatial", "vector"})) {
    }
    if (!Take("index")) return {};
    return ReadIndex(ETableStatement::CreateIndex);
  }

  // The name of the index may be any word but "on".
  TTableStatement ReadIndex(ETableStatement kind) {
    TTableStatement statement;
    statement.kind = kind;
    PassIfExists();
    if (!AtEnd()) ++at_;
    while (!AtEnd() && !Take("on")) ++at_;
    TakeName(statement.changes);
    return statement;
  }

  TTableStatement ReadAlter() {
    while (TakeAny({"online", "offline", "ignore"})) {
    }
    if (!Take("table")) return {};
    TTableStatement statement;
    statement.kind = ETableStatement::AlterTable;
    PassIfExists();
    TakeName(statement.changes);
    int depth = 0;
    while (!AtEnd())
      if (Take("("))
        ++depth;
      else if (Take(")"))
        --depth;
      else if (depth == 0 && Take("rename"))
        TakeNewName(statement);
      else if (depth == 0 && Take("table"))
        TakeName(statement.changes);  // exchange or convert partition
      else
        ++at_;
    return statement;
  }

  void TakeNewName(TTableStatement& statement) {
    if (IsAny(Now(), {"column", "index", "key"})) return;
    if (!TakeAny({"to", "as"})) Take("=");
    TakeName(statement.changes);
  }

  TTableStatement ReadDrop() {
    TakeAny({"online", "offline"});
    if (Take("index")) return ReadIndex(ETableStatement::DropIndex);
    if (!TakeAny({"table", "tables"})) return {};
    TTableStatement statement;
    statement.kind = ETableStatement::DropTable;
    PassIfExists();
    do TakeName(statement.changes);
    while (Take(","));
    return statement;
  }

  TTableStatement ReadRename() {
    TTableStatement statement;
    statement.kind = ETableStatement::RenameTable;
    PassIfExists();
    do {
      TakeName(statement.changes);
      while (!AtEnd() && !Now().Is(",") && !Take("to")) ++at_;
      TakeName(statement.changes);
    } while (Take(","));
    return statement;
  }

  TTokens tokens_;
  std::size_t at_ = 0;
};

// --- What reaches outside

class TOutsideFinder {
 public:
  TOutsideFinder(TTokens tokens, const TTableStatement& statement) : tokens_(tokens), statement_(statement) {}

  void Check() {
    for (at_ = 0; Now().kind != EToken::End; ++at_) {
      if (Now().Is("(")) ++depth_;
      if (Now().Is(")")) --depth_;
      if (Now().kind == EToken::Word) CheckWord();
    }
  }

 private:
  const TToken& Now() const { return TokenAt(tokens_, at_); }
  const TToken& Next() const { return TokenAt(tokens_, at_ + 1); }
  bool IsCreate() const {
    return statement_.kind == ETableStatement::CreateTable || statement_.kind == ETableStatement::ReplaceTable;
  }

  void CheckWord() {
    const std::string word(Now().text);
    if (IsAny(Now(), {"data", "index"}) && IsKeyword(Next(), "directory"))
      RaiseError(Format(kOutside, word + " directory"));
    if (Now().Is("select")) RaiseError(Format(kRowsOfQuery, word));
    if (Now().Is("union")) RaiseError(Format(kOutside, word));
    if (IsCreate()) CheckRows(word);
    partitions_ = partitions_ || Now().Is("partition");
    if (depth_ == 0 || partitions_) CheckOption(word);
  }

  // Other forms of a query: "table t", "values row(1)".
  void CheckRows(const std::string& word) {
    const bool values = Now().Is("values") && !IsAny(Next(), {"less", "in"});
    const bool table = Now().Is("table") && seen_table_;
    seen_table_ = seen_table_ || Now().Is("table");
    if (values || table) RaiseError(Format(kRowsOfQuery, word));
  }

  // A column of such a name stands in brackets, or after a word that says what becomes of it.
  void CheckOption(const std::string& word) {
    const TToken& value = TokenAt(tokens_, at_ + (Next().Is("=") ? 2 : 1));
    const bool is_value = Next().Is("=") || value.kind == EToken::String;
    if (Now().Is("connection") && is_value) RaiseError(Format(kOutside, word));
    if (depth_ > 0 && !is_value && !IsName(value)) return;
    if (at_ > 0 && IsAny(TokenAt(tokens_, at_ - 1),
                         {"add", "column", "drop", "modify", "change", "alter", "after", "exists", "by"}))
      return;
    if (IsAny(Now(), {"engine", "type"}) && !IsOneOf(ValueText(value), kOwnEngines) && IsEngineValue(value))
      RaiseError(Format(kForeignEngine, ValueText(value)));
    if (Now().Is("tablespace") && !IsOneOf(ValueText(value), kOwnTablespaces)) RaiseError(Format(kOutside, word));
  }

  // "type" is also a word of keys and partitions: there a way to search, or a function, follows.
  bool IsEngineValue(const TToken& value) const {
    if (Now().Is("engine")) return IsName(value) || value.kind == EToken::String;
    return depth_ == 0 && Next().Is("=") && !IsAny(value, {"btree", "hash", "rtree"});
  }

  TTokens tokens_;
  const TTableStatement& statement_;
  std::size_t at_ = 0;
  int depth_ = 0;
  bool seen_table_ = false;
  bool partitions_ = false;
};

// --- Databases in front of names

// In an expression a table stands in front of a column.
bool IsOwnColumn(TTokens tokens, std::size_t at, int depth, const TTableStatement& statement) {
  if (depth == 0 || statement.changes.empty() || TokenAt(tokens, at + 3).Is("(")) return false;
  const bool names_table = at > 0 && IsAny(TokenAt(tokens, at - 1), {"references", "like", "table", "for"});
  const bool is_argument =
      at > 1 && TokenAt(tokens, at - 1).Is("(") && IsAny(TokenAt(tokens, at - 2), {"nextval", "lastval", "setval"});
  return !names_table && !is_argument && SameText(NameOf(tokens[at]), statement.changes.front().table);
}

// Where databases stand that are to be left out, as places of their tokens.
std::vector<std::size_t> OwnDatabases(TTokens tokens, const TTableStatement& statement, const std::string& own) {
  std::vector<std::size_t> places;
  int depth = 0;
  for (std::size_t at = 0; at < tokens.size(); ++at) {
    if (tokens[at].Is("(")) ++depth;
    if (tokens[at].Is(")")) --depth;
    if (!IsName(tokens[at]) || !TokenAt(tokens, at + 1).Is(".")) continue;
    if (!own.empty() && NameOf(tokens[at]) == own)
      places.push_back(at++);
    else if (IsOwnColumn(tokens, at, depth, statement))
      at += 2;
    else
      RaiseError(Format(kOtherDatabase, NameOf(tokens[at])));
  }
  return places;
}

}  // namespace

TTableStatement ReadTableStatement(std::string_view statement) {
  const std::vector<TToken> tokens = Tokens(statement);
  return TStatementScanner(tokens).Read();
}

std::string TextForScratch(std::string_view statement, const std::string& own) {
  const std::vector<TToken> tokens = Tokens(statement);
  const TTableStatement read = TStatementScanner(tokens).Read();
  TOutsideFinder(tokens, read).Check();
  std::string text;
  std::size_t copied = 0;
  for (const std::size_t at : OwnDatabases(tokens, read, own)) {
    text += statement.substr(copied, tokens[at].start - copied);
    copied = tokens[at + 1].End();
  }
  text += statement.substr(copied);
  if (text.starts_with("/*")) return text;  // a mark of a version, which says whether there is anything to run
  const std::vector<TToken> rest = Tokens(text);
  return TextOf(text, rest, 0, rest.size() - 1);
}

}  // namespace velmora
