// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/plan/PlanApply.h"

// The plan's statements, and "alter table" as people write it, carried out on tables in memory. It goes by the rules of
// servers where these matter for the result: columns that are placed go by the order of the clauses, keys follow a
// dropped column, and a new character set of the table leaves what columns had.

#include <algorithm>
#include <iterator>
#include <optional>
#include <utility>

#include "exact/compare/ServerCompletion.h"
#include "exact/plan/RenamePlan.h"
#include "mysqltext/Charsets.h"
#include "mysqltext/ColumnType.h"
#include "mysqltext/ElementText.h"
#include "mysqltext/KeyText.h"
#include "mysqltext/Lexer.h"
#include "mysqltext/TableOptions.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kNotUnderstood[] = "This statement cannot be followed: %s";
constexpr char kNoTable[] = "There is no table %s";
constexpr char kTableThere[] = "There is a table %s already";
constexpr char kNotThere[] = "Table %s has no %s %s";
constexpr char kThere[] = "Table %s has %s already";
constexpr char kColumnNeeded[] = "Table %s: foreign key %s needs column %s";
constexpr char kNoCharset[] =
    "Table %s gets a character set, and only the target knows which one its column %s has had before";
constexpr char kColumn[] = "column";

using TElements = std::vector<TElement>;

TElements::iterator FindColumn(TElements& columns, std::string_view name) {
  return std::find_if(columns.begin(), columns.end(), [name](const TElement& e) { return SameText(e.name, name); });
}

bool Starts(TTokens clause, std::initializer_list<std::string_view> words) {
  std::size_t at = 0;
  return std::all_of(words.begin(), words.end(),
                     [&](std::string_view word) { return IsKeyword(TokenAt(clause, at++), word); });
}

// Partitions are of their table's engine, and say so.
std::string WithEngine(const std::string& partitioning, const std::string& former, const std::string& engine) {
  std::string result;
  std::size_t done = 0;
  const auto tokens = Tokens(partitioning);
  for (std::size_t at = 0; at + 2 < tokens.size(); ++at) {
    const TToken& value = tokens[at + 2];
    if (!IsKeyword(tokens[at], "engine") || !tokens[at + 1].Is("=") || !SameText(value.text, former)) continue;
    result += partitioning.substr(done, value.start - done) + engine;
    done = value.End();
  }
  return result + partitioning.substr(done);
}

// A clause "modify column" or "add column".
struct TColumnClause {
  TElement column;
  bool is_new = false;
  bool placed = false;
  std::string after;   // empty for the first place
  std::string former;  // name of a column that is renamed
};

class TAlteration {
 public:
  TAlteration(const std::string& statement, const std::vector<TToken>& tokens, TTableText& table)
      : statement_(statement), tokens_(tokens), table_(table) {}

  void Apply();
  // Of a statement that people write, whose clauses begin at `first`.
  TAlterationEffects ApplyWritten(std::size_t first, const TServerTraits& server);

 private:
  struct TClause {
    std::size_t first = 0;
    std::size_t last = 0;
  };
  void Split(std::size_t first);
  void ChangeColumns();
  void ReadWritten(const TClause& clause);
  void ReadWrittenAdd(TClause clause);
  void AddWritten(TElement element, const TColumnClause* place);
  void ReadWrittenChange(TClause clause, bool renames);
  void ReadWrittenDrop(TTokens clause);
  void ReadWrittenRename(TTokens clause);
  void SetDefault(const TClause& clause);
  void Convert(const TClause& clause);
  void RenameColumn(const std::string& from, const std::string& to);
  void KeepNamedCharset() const;
  TTokens Of(const TClause& clause) const { return TTokens(tokens_).subspan(clause.first, clause.last - clause.first); }
  void Read(const TClause& clause);
  void ReadOptions(const TClause& clause);
  TElement ReadElement(std::size_t first, std::size_t last) const;
  TColumnClause ReadColumn(const TClause& clause) const { return ReadColumn(clause, clause.first + 2); }
  TColumnClause ReadColumn(const TClause& clause, std::size_t definition) const;
  void DropElement(TTokens clause);
  void KeepParser(TElement& key) const;
  void SetKeyUse(TTokens clause);
  void SetOptions();
  void DropColumns();
  void DropColumnFromKeys(const std::string& name);
  void ModifyColumns();
  void PlaceColumns();
  [[noreturn]] void Fail() const { RaiseError(Format(kNotUnderstood, statement_)); }
  [[noreturn]] void FailMissing(const char* what, const std::string& name) const {
    RaiseError(Format(kNotThere, table_.name, what, name));
  }

  const std::string& statement_;
  const std::vector<TToken>& tokens_;
  TTableText& table_;
  TElements columns_;
  TElements others_;
  std::vector<TClause> clauses_;
  std::vector<TTableOption> options_;
  std::vector<std::string> dropped_;
  std::vector<TColumnClause> column_clauses_;
  TElements added_;
  TElements gone_;                         // keys, checks and foreign keys that are dropped
  const TServerTraits* server_ = nullptr;  // of a statement that people write
  TAlterationEffects effects_;
};

void TAlteration::ChangeColumns() {
  SetOptions();
  DropColumns();
  ModifyColumns();
  PlaceColumns();
}

void TAlteration::Apply() {
  for (auto& element : table_.elements) (element.kind == EElement::Column ? columns_ : others_).push_back(element);
  constexpr std::size_t kHead = 3;  // alter table name
  Split(kHead);
  for (const TClause& clause : clauses_) Read(clause);
  ChangeColumns();
  for (auto& element : added_) {
    const bool there = std::any_of(others_.begin(), others_.end(), [&element](const TElement& other) {
      const bool rivals = other.kind == element.kind || (IsKey(other.kind) && IsKey(element.kind));
      return rivals && !element.name.empty() && SameText(other.name, element.name);
    });
    if (there) RaiseError(Format(kThere, table_.name, element.name));
    KeepParser(element);
    others_.push_back(std::move(element));
  }
  table_.elements = std::move(columns_);
  std::move(others_.begin(), others_.end(), std::back_inserter(table_.elements));
}

void TAlteration::Split(std::size_t first) {
  for (std::size_t at = first; first < tokens_.size();) {
    if (at >= tokens_.size()) RaiseError(Format(kNotUnderstood, statement_));  // a bracket is not closed
    const bool partitioning = IsKeyword(tokens_[at], "partition") && IsKeyword(TokenAt(tokens_, at + 1), "by");
    const bool removes =
        at > first && IsKeyword(tokens_[at], "remove") && IsKeyword(TokenAt(tokens_, at + 1), "partitioning");
    const bool ends = partitioning || tokens_[at].kind == EToken::End;
    if (ends || removes || tokens_[at].Is(",")) {
      if (at > first) clauses_.push_back({first, at});
      first = removes ? at : at + 1;
    }
    if (partitioning) table_.partitioning = TextOf(statement_, tokens_, at, tokens_.size() - 1);
    if (ends) break;
    at = AfterValue(tokens_, at);
  }
}

void TAlteration::Read(const TClause& clause) {
  const TTokens tokens = Of(clause);
  if (Starts(tokens, {"drop", "column"}) && tokens.size() == 3)
    dropped_.push_back(NameOf(tokens[2]));
  else if (Starts(tokens, {"drop"}))
    DropElement(tokens);
  else if (Starts(tokens, {"add", "column"}) || Starts(tokens, {"modify", "column"}))
    column_clauses_.push_back(ReadColumn(clause));
  else if (Starts(tokens, {"add"}))
    added_.push_back(ReadElement(clause.first + 1, clause.last));
  else if (Starts(tokens, {"alter", "index"}))
    SetKeyUse(tokens);
  else if ((Starts(tokens, {"force"}) && tokens.size() == 1) || Starts(tokens, {"algorithm"}) ||
           Starts(tokens, {"lock"}))
    return;
  else if (Starts(tokens, {"remove", "partitioning"}))
    table_.partitioning.clear();
  else
    ReadOptions(clause);
}

void TAlteration::ReadOptions(const TClause& clause) {
  for (std::size_t at = clause.first; at < clause.last;) {
    auto option = ReadTableOption(statement_, tokens_, at);
    if (!option) Fail();
    options_.push_back(std::move(*option));
  }
}

TElement TAlteration::ReadElement(std::size_t first, std::size_t last) const {
  TTableText table = ReadTableText("create table t (" + TextOf(statement_, tokens_, first, last) + ")");
  if (table.elements.size() != 1) Fail();
  return std::move(table.elements.front());
}

TColumnClause TAlteration::ReadColumn(const TClause& clause, std::size_t definition) const {
  TColumnClause result;
  result.is_new = tokens_[clause.first].Is("add");
  std::size_t last = clause.last;
  if (last - definition > 2 && IsKeyword(tokens_[last - 1], "first")) {
    result.placed = true;
    last -= 1;
  } else if (last - definition > 3 && IsKeyword(tokens_[last - 2], "after")) {
    result.placed = true;
    result.after = NameOf(tokens_[last - 1]);
    last -= 2;
  }
  result.column = ReadElement(definition, last);
  if (result.column.kind != EElement::Column) Fail();
  return result;
}

void TAlteration::DropElement(TTokens clause) {
  struct TForm {
    std::initializer_list<std::string_view> words;
    const char* what;
    bool (*holds)(EElement kind);
  };
  static const TForm kForms[] = {
      {{"drop", "primary", "key"}, "primary key", [](EElement kind) { return kind == EElement::PrimaryKey; }},
      {{"drop", "foreign", "key"}, "foreign key", [](EElement kind) { return kind == EElement::ForeignKey; }},
      {{"drop", "constraint"}, "constraint", [](EElement kind) { return kind == EElement::Check; }},
      {{"drop", "check"}, "check", [](EElement kind) { return kind == EElement::Check; }},
      {{"drop", "period", "for"}, "period", [](EElement kind) { return kind == EElement::Period; }},
      {{"drop", "key"}, "key", IsKey}};
  for (const TForm& form : kForms) {
    if (!Starts(clause, form.words)) continue;
    const std::string name = form.words.size() < clause.size() ? NameOf(clause[form.words.size()]) : "PRIMARY";
    const auto found = std::find_if(others_.begin(), others_.end(), [&](const TElement& element) {
      return form.holds(element.kind) && SameText(element.name, name);
    });
    if (found == others_.end()) FailMissing(form.what, name);
    gone_.push_back(std::move(*found));
    others_.erase(found);
    return;
  }
  Fail();
}

// To servers a fulltext key that goes and comes again in one statement is the same one, whatever its parser.
void TAlteration::KeepParser(TElement& key) const {
  if (key.kind != EElement::FulltextKey) return;
  const auto former = std::find_if(gone_.begin(), gone_.end(), [&key](const TElement& gone) {
    return gone.kind == key.kind && SameText(gone.name, key.name) && KeyColumns(gone) == KeyColumns(key);
  });
  if (former != gone_.end()) key.text = former->text;
}

// alter index name visible, invisible, ignored, not ignored
void TAlteration::SetKeyUse(TTokens clause) {
  const std::string name = NameOf(TokenAt(clause, 2));
  const auto key = std::find_if(others_.begin(), others_.end(), [&name](const TElement& element) {
    return IsKey(element.kind) && SameText(element.name, name);
  });
  if (key == others_.end()) FailMissing("key", name);
  const TToken& word = TokenAt(clause, 3);
  const bool used = IsKeyword(word, "visible") || IsKeyword(word, "not");
  key->text = SplitKeyUse(key->text).text + (used ? "" : " " + std::string(word.text));
}

void TAlteration::SetOptions() {
  if (options_.empty()) return;
  const TTableText before = table_;
  auto& options = table_.options;
  const auto remove = [&options](std::string_view name) {
    std::erase_if(options, [name](const TTableOption& option) { return option.name == name; });
  };
  // Another engine does not know the options of the former one.
  for (const TTableOption& option : options_) {
    const TTableOption* former = table_.FindOption("ENGINE");
    if (option.name != "ENGINE" || (former != nullptr && SameText(former->value, option.value))) continue;
    if (former != nullptr) table_.partitioning = WithEngine(table_.partitioning, former->value, option.value);
    const std::string engine = LowerText(option.value);
    std::erase_if(options, [&engine](const TTableOption& other) { return !OutlivesEngine(other, engine); });
  }
  // A character set brings its own collation along, and a collation its set.
  for (const TTableOption& option : options_)
    if (option.name == "DEFAULT CHARSET") remove("COLLATE");
  for (const TTableOption& option : options_) {
    if (option.name == "COLLATE") {
      const std::string charset = NamedCharset("", CollationName(option.value)).charset;
      if (TableCharset(table_).charset != charset) {
        remove("DEFAULT CHARSET");
        options.push_back({"DEFAULT CHARSET", charset});
      }
    }
    const auto there = std::find_if(options.begin(), options.end(),
                                    [&option](const TTableOption& other) { return other.name == option.name; });
    if (OptionResetValue(option) == option.value)
      remove(option.name);
    else if (there != options.end())
      there->value = option.value;
    else
      options.push_back(option);
  }
  for (TElement& column : columns_) column.text = PinnedColumnText(column.text, before, table_);
}

void TAlteration::DropColumns() {
  for (const std::string& name : dropped_) {
    const auto column = FindColumn(columns_, name);
    if (column == columns_.end()) FailMissing(kColumn, name);
    columns_.erase(column);
    const bool comes_again =
        std::any_of(column_clauses_.begin(), column_clauses_.end(),
                    [&name](const TColumnClause& c) { return c.is_new && SameText(c.column.name, name); });
    if (!comes_again) DropColumnFromKeys(name);
  }
}

void TAlteration::DropColumnFromKeys(const std::string& name) {
  const auto is_name = [&name](const std::string& column) { return SameText(column, name); };
  for (auto key = others_.begin(); key != others_.end();) {
    if (key->kind == EElement::ForeignKey) {
      const auto& columns = key->text.ForeignKey().columns;
      if (std::any_of(columns.begin(), columns.end(), is_name))
        RaiseError(Format(kColumnNeeded, table_.name, key->name, name));
    }
    if (IsKey(key->kind)) {
      key->text = KeyTextWithout(key->text, name);
      if (key->text.Empty()) {
        key = others_.erase(key);
        continue;
      }
    }
    ++key;
  }
}

// In place, or out of the table for the next step to place it.
void TAlteration::ModifyColumns() {
  for (const TColumnClause& clause : column_clauses_) {
    if (clause.is_new) continue;
    const std::string& name = clause.former.empty() ? clause.column.name : clause.former;
    const auto column = FindColumn(columns_, name);
    if (column == columns_.end()) FailMissing(kColumn, name);
    if (clause.placed)
      columns_.erase(column);
    else
      *column = clause.column;
  }
}

void TAlteration::PlaceColumns() {
  for (TColumnClause& clause : column_clauses_) {
    if (!clause.is_new && !clause.placed) continue;
    if (FindColumn(columns_, clause.column.name) != columns_.end())
      RaiseError(Format(kThere, table_.name, clause.column.name));
    auto place = clause.placed ? columns_.begin() : columns_.end();
    if (!clause.after.empty()) {
      place = FindColumn(columns_, clause.after);
      if (place == columns_.end()) FailMissing(kColumn, clause.after);
      ++place;
    }
    columns_.insert(place, std::move(clause.column));
  }
}

// --- Statements that people write

TAlterationEffects TAlteration::ApplyWritten(std::size_t first, const TServerTraits& server) {
  server_ = &server;
  for (auto& element : table_.elements) (element.kind == EElement::Column ? columns_ : others_).push_back(element);
  Split(first);
  for (const TClause& clause : clauses_) ReadWritten(clause);
  KeepNamedCharset();
  ChangeColumns();
  table_.elements = std::move(columns_);
  std::move(others_.begin(), others_.end(), std::back_inserter(table_.elements));
  AddElements(std::move(added_), false, server, table_);
  SettleTable(table_);
  return std::move(effects_);
}

// What a table hands down that names no character set is only known by the target.
void TAlteration::KeepNamedCharset() const {
  const bool sets = std::any_of(options_.begin(), options_.end(), [](const TTableOption& option) {
    return option.name == "DEFAULT CHARSET" || option.name == "COLLATE";
  });
  if (!sets || TableCharset(table_) != TCharset()) return;
  for (const TElement& column : columns_) {
    const TColumnText text = ReadColumnText(column.text, table_);
    if (text.HasLetters() && text.charset == TCharset()) RaiseError(Format(kNoCharset, table_.name, column.name));
  }
}

void TAlteration::ReadWritten(const TClause& clause) {
  const TTokens tokens = Of(clause);
  const auto starts = [&](std::initializer_list<std::string_view> words) { return Starts(tokens, words); };
  const auto is_one_of = [&](std::initializer_list<std::string_view> words) {
    return tokens[0].kind == EToken::Word && InList(LowerText(tokens[0].text), words);
  };
  // What says how the server goes about it, and what changes rows alone.
  if (is_one_of({"algorithm", "lock", "force", "enable", "disable", "order", "wait", "nowait"})) return;
  if (starts({"add"})) return ReadWrittenAdd(clause);
  if (starts({"modify"}) || starts({"change"})) return ReadWrittenChange(clause, starts({"change"}));
  if (starts({"drop"})) return ReadWrittenDrop(tokens);
  if (starts({"rename"})) return ReadWrittenRename(tokens);
  if (starts({"alter", "index"}) || starts({"alter", "key"})) return SetKeyUse(tokens);
  if (starts({"alter"})) return SetDefault(clause);
  if (starts({"convert", "to"})) return Convert(clause);
  if (starts({"remove", "partitioning"})) {
    table_.partitioning.clear();
    return;
  }
  if (is_one_of({"discard", "import", "analyze", "check", "coalesce", "exchange", "optimize", "rebuild", "reorganize",
                 "repair", "truncate", "with", "without", "set", "upgrade"}))
    Fail();
  ReadOptions(clause);
}

// After "if exists" or "if not exists".
std::size_t AfterIf(TTokens tokens, std::size_t at, bool& conditional) {
  if (!IsKeyword(TokenAt(tokens, at), "if")) return at;
  conditional = true;
  return at + (IsKeyword(TokenAt(tokens, at + 1), "not") ? 3 : 2);
}

void TAlteration::AddWritten(TElement element, const TColumnClause* place) {
  if (element.kind != EElement::Column) {
    added_.push_back(std::move(element));
    return;
  }
  TColumnClause column;
  if (place != nullptr) column = *place;
  column.is_new = true;
  TElements keys = TakeInlineElements(element, *server_);
  column.column = std::move(element);
  column_clauses_.push_back(std::move(column));
  std::move(keys.begin(), keys.end(), std::back_inserter(added_));
}

void TAlteration::ReadWrittenAdd(TClause clause) {
  std::size_t at = clause.first + 1;
  const bool column = IsKeyword(TokenAt(tokens_, at), "column");
  if (column) ++at;
  bool conditional = false;
  at = AfterIf(tokens_, at, conditional);
  if (tokens_[at].Is("(")) {
    for (const TTokenRange part : ListParts(tokens_, at)) AddWritten(ReadElement(part.first, part.last), nullptr);
    return;
  }
  for (const std::string_view word : {"partition", "system", "period"})
    if (IsKeyword(tokens_[at], word) && !column) Fail();
  const TTokens rest = TTokens(tokens_).subspan(at, clause.last - at);
  const auto head = ReadElementHead(rest);
  if (!head) Fail();
  if (head->kind != EElement::Column && !column) {
    // "if not exists" may stand after the word of the kind, too.
    conditional = conditional || std::any_of(rest.begin(), rest.begin() + static_cast<std::ptrdiff_t>(head->body),
                                             [](const TToken& token) { return IsKeyword(token, "if"); });
    TElement element = ReadElement(at, clause.last);
    const bool there = std::any_of(others_.begin(), others_.end(), [&](const TElement& other) {
      return other.kind == element.kind && SameText(other.name, element.name);
    });
    if (conditional && there) return;
    return AddWritten(std::move(element), nullptr);
  }
  const TColumnClause read = ReadColumn(clause, at);
  if (conditional && FindColumn(columns_, read.column.name) != columns_.end()) return;
  AddWritten(read.column, &read);
}

void TAlteration::ReadWrittenChange(TClause clause, bool renames) {
  std::size_t at = clause.first + 1;
  if (IsKeyword(TokenAt(tokens_, at), "column")) ++at;
  bool conditional = false;
  at = AfterIf(tokens_, at, conditional);
  const std::string former = renames ? NameOf(tokens_[at++]) : std::string();
  TColumnClause read = ReadColumn(clause, at);
  if (renames && !SameText(former, read.column.name)) RenameColumn(former, read.column.name);
  read.former = former;
  if (conditional && FindColumn(columns_, renames ? former : read.column.name) == columns_.end()) return;
  TElements keys = TakeInlineElements(read.column, *server_);
  std::move(keys.begin(), keys.end(), std::back_inserter(added_));
  column_clauses_.push_back(std::move(read));
}

void TAlteration::ReadWrittenDrop(TTokens clause) {
  const auto word = [&](std::size_t at, std::string_view text) { return IsKeyword(TokenAt(clause, at), text); };
  std::size_t at = 1;
  bool (*holds)(EElement) = nullptr;
  if (word(1, "primary")) {
    std::erase_if(others_, [](const TElement& element) { return element.kind == EElement::PrimaryKey; });
    return;
  }
  if (word(1, "partition") || word(1, "system") || word(1, "period")) Fail();
  if (word(1, "index") || word(1, "key")) {
    holds = IsKey;
    at = 2;
  } else if (word(1, "foreign")) {
    holds = [](EElement kind) { return kind == EElement::ForeignKey; };
    at = 3;
  } else if (word(1, "check")) {
    holds = [](EElement kind) { return kind == EElement::Check; };
    at = 2;
  } else if (word(1, "constraint")) {
    holds = [](EElement kind) { return kind != EElement::Column && kind != EElement::Key; };
    at = 2;
  } else if (word(1, "column")) {
    at = 2;
  }
  bool conditional = false;
  at = AfterIf(clause, at, conditional);
  if (!IsName(TokenAt(clause, at))) Fail();
  const std::string name = NameOf(clause[at]);
  if (holds == nullptr) {
    if (!conditional || FindColumn(columns_, name) != columns_.end()) dropped_.push_back(name);
    return;
  }
  const auto found = std::find_if(others_.begin(), others_.end(), [&](const TElement& element) {
    return holds(element.kind) && SameText(element.name, name);
  });
  if (found != others_.end())
    others_.erase(found);
  else if (!conditional)
    FailMissing("key or constraint", name);
}

void TAlteration::ReadWrittenRename(TTokens clause) {
  const bool column = Starts(clause, {"rename", "column"});
  const bool key = Starts(clause, {"rename", "index"}) || Starts(clause, {"rename", "key"});
  if (!column && !key) {
    const TToken& second = TokenAt(clause, 1);
    std::size_t at = second.Is("to") || second.Is("as") || second.Is("=") ? 2 : 1;
    if (TokenAt(clause, at + 1).Is(".")) at += 2;
    if (!IsName(TokenAt(clause, at)) || at + 1 != clause.size()) Fail();
    effects_.new_name = NameOf(clause[at]);
    return;
  }
  constexpr std::size_t kBare = 5;  // rename column a to b
  bool conditional = false;
  const std::size_t at = AfterIf(clause, 2, conditional);
  if (clause.size() != at + kBare - 2) Fail();
  const std::string from = NameOf(clause[at]);
  const std::string to = NameOf(clause[at + 2]);
  if (column) {
    const auto found = FindColumn(columns_, from);
    if (found == columns_.end()) FailMissing(kColumn, from);
    velmora::RenameColumn(*found, to);
    return RenameColumn(from, to);
  }
  const auto found = std::find_if(others_.begin(), others_.end(), [&from](const TElement& element) {
    return IsKey(element.kind) && SameText(element.name, from);
  });
  if (found == others_.end()) FailMissing("key", from);
  RenameKey(*found, to);
}

void TAlteration::RenameColumn(const std::string& from, const std::string& to) {
  for (TElement& element : others_) RenameColumnIn(element, from, to);
  for (TElement& element : columns_) RenameColumnIn(element, from, to);
  effects_.renamed_columns.emplace_back(from, to);
}

// alter [column] c set default v, drop default
void TAlteration::SetDefault(const TClause& clause) {
  std::size_t at = clause.first + 1;
  if (IsKeyword(TokenAt(tokens_, at), "column")) ++at;
  bool conditional = false;
  at = AfterIf(tokens_, at, conditional);
  const auto column = FindColumn(columns_, NameOf(tokens_[at]));
  if (column == columns_.end() && conditional) return;
  if (column == columns_.end()) FailMissing(kColumn, NameOf(tokens_[at]));
  const bool sets = IsKeyword(TokenAt(tokens_, at + 1), "set") && IsKeyword(TokenAt(tokens_, at + 2), "default");
  const bool drops = IsKeyword(TokenAt(tokens_, at + 1), "drop") && IsKeyword(TokenAt(tokens_, at + 2), "default");
  if (!sets && !drops) Fail();
  SetColumnDefault(*column, sets ? TextOf(statement_, tokens_, at + 3, clause.last) : std::string());
}

void TAlteration::Convert(const TClause& clause) {
  std::size_t at = clause.first + 2;
  while (at < clause.last) {
    auto option = ReadTableOption(statement_, tokens_, at);
    if (!option) Fail();
    options_.push_back(std::move(*option));
  }
  const TTableText before = table_;
  for (TElement& column : columns_) ConvertColumn(column, before, options_);
  // Columns are converted already, so that there is nothing for the options to keep.
  std::erase_if(table_.options, [](const TTableOption& option) {
    return option.name == "DEFAULT CHARSET" || option.name == "COLLATE";
  });
  table_.options.insert(table_.options.end(), options_.begin(), options_.end());
  options_.clear();
}

// --- Renames

// rename table a to b
void RenameTable(const std::string& statement, TTokens tokens, const TServerTraits& server, TSchema& schema) {
  constexpr std::size_t kTo = 4;
  if (!IsName(TokenAt(tokens, 2)) || !IsName(TokenAt(tokens, kTo))) RaiseError(Format(kNotUnderstood, statement));
  ApplyRename({{}, NameOf(tokens[2]), NameOf(tokens[kTo])}, server, schema);
}

// Of "rename column a to b" or "change column a b ...", the only ones of their statement.
std::optional<TRename> ColumnRenameIn(TTokens tokens, const std::string& table) {
  for (std::size_t at = 3; at + 3 < tokens.size(); ++at) {
    const bool renames = IsKeyword(tokens[at], "rename");
    if ((!renames && !IsKeyword(tokens[at], "change")) || !IsKeyword(tokens[at + 1], "column")) continue;
    return TRename{table, NameOf(tokens[at + 2]), NameOf(TokenAt(tokens, at + (renames ? 4 : 3)))};
  }
  return std::nullopt;
}

// What comes again in the statement is as the rename leaves it.
void RenameColumnBy(const std::string& statement, const std::vector<TToken>& tokens, const TRename& rename,
                    const TServerTraits& server, TSchema& schema) {
  constexpr std::size_t kHead = 3;  // alter table name
  TTableText written = *schema.Find(rename.table);
  const std::string partitioning = written.partitioning;
  ApplyWrittenAlteration(statement, tokens, kHead, server, written);
  for (TElement& element : written.elements)
    if (element.kind == EElement::ForeignKey && element.text.ForeignKey().table == rename.table)
      RenameReferenced(element, rename.from, rename.to);
  ApplyRename(rename, server, schema);
  TTableText& table = *schema.Find(rename.table);
  if (written.partitioning == partitioning) written.partitioning = table.partitioning;
  table = std::move(written);
}

}  // namespace

void ApplyStatement(const std::string& statement, TSchema& schema, const TServerTraits& server) {
  const auto tokens = Tokens(statement);
  if (Starts(tokens, {"rename", "table"})) return RenameTable(statement, tokens, server, schema);
  if (Starts(tokens, {"create"})) {
    TTableText table = ReadTableText(statement);
    if (schema.Find(table.name) != nullptr) RaiseError(Format(kTableThere, table.name));
    schema.Add(std::move(table));
    return;
  }
  if (Starts(tokens, {"update"})) {  // of rows alone
    if (schema.Find(NameOf(TokenAt(tokens, 1))) == nullptr) RaiseError(Format(kNoTable, NameOf(TokenAt(tokens, 1))));
    return;
  }
  const bool drops = Starts(tokens, {"drop", "table"});
  if (!drops && !Starts(tokens, {"alter", "table"})) RaiseError(Format(kNotUnderstood, statement));
  if (!IsName(TokenAt(tokens, 2))) RaiseError(Format(kNotUnderstood, statement));
  const std::string name = NameOf(tokens[2]);
  TTableText* table = schema.Find(name);
  if (table == nullptr) RaiseError(Format(kNoTable, name));
  if (drops)
    schema.Remove(name);
  else if (const auto rename = ColumnRenameIn(tokens, name))
    RenameColumnBy(statement, tokens, *rename, server, schema);
  else
    TAlteration(statement, tokens, *table).Apply();
}

TAlterationEffects ApplyWrittenAlteration(const std::string& statement, const std::vector<TToken>& tokens,
                                          std::size_t first, const TServerTraits& server, TTableText& table) {
  return TAlteration(statement, tokens, table).ApplyWritten(first, server);
}

}  // namespace velmora
