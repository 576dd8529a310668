// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/plan/FileSchema.h"

#include "exact/plan/PlanApply.h"

#include <algorithm>
#include <array>
#include <tuple>
#include <utility>

#include "exact/compare/Equivalences.h"
#include "mysqltext/Charsets.h"
#include "mysqltext/KeyText.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kUnfollowed[] = "%s: %s (--via-server may read it)";
constexpr char kUnreadable[] = "%s: %s";
constexpr char kNoName[] = "%s: this statement names no table: %s";
constexpr char kUnseen[] = "%s: %s may make or change tables that its text does not name";
constexpr char kOfRows[] = "Table %s is made of the rows of a query";
constexpr char kNoTable[] = "There is no table %s";
constexpr char kThere[] = "There is a table %s already";
constexpr char kInMode[] = "\"%s\" means something else in the SQL mode %s";
constexpr std::size_t kShownChars = 60;
constexpr std::string_view kBlanks = " \t\r\n";

// What a mode reads in a way of its own, besides double quotes; the empty text for whole statements.
struct TModeMark {
  std::string_view mode;
  std::string_view mark;
};
constexpr std::array<std::string_view, 7> kNameQuoting = {
    {"ansi_quotes", "ansi", "oracle", "mssql", "db2", "maxdb", "postgresql"}};
constexpr std::array<TModeMark, 9> kModeMarks = {{{"pipes_as_concat", "||"},
                                                  {"ansi", "||"},
                                                  {"no_backslash_escapes", "\\"},
                                                  {"real_as_float", "real"},
                                                  {"ansi", "real"},
                                                  {"oracle", ""},
                                                  {"mssql", "||"},
                                                  {"db2", "||"},
                                                  {"maxdb", "||"}}};

bool HasMode(std::string_view modes, std::string_view mode) {
  if (modes.empty()) return false;
  TStringList all;
  SplitPlain(',', modes, all);
  return std::any_of(all.begin(), all.end(), [mode](const std::string& one) { return TrimView(one) == mode; });
}

// In some modes double quotes are those of names.
bool QuotesNames(std::string_view modes) {
  return std::any_of(kNameQuoting.begin(), kNameQuoting.end(), [&](auto mode) { return HasMode(modes, mode); });
}

// What "create table" may be followed by that makes rows, or columns out of rows.
bool MakesRows(TTokens tokens) {
  std::size_t depth = 0;
  for (std::size_t at = 0; at < tokens.size(); ++at) {
    if (tokens[at].Is("(")) ++depth;
    if (tokens[at].Is(")") && depth > 0) --depth;
    if (tokens[at].kind != EToken::Word) continue;
    const bool query = IsKeyword(tokens[at], "select") || IsKeyword(tokens[at], "values");
    const bool opens = at > 0 && tokens[at - 1].Is("(");
    if (query && (depth == 0 || (depth == 1 && opens)) && !IsKeyword(TokenAt(tokens, at + 1), "less")) return true;
    if (IsKeyword(tokens[at], "partition") && IsKeyword(TokenAt(tokens, at + 1), "by")) return false;
  }
  return false;
}

// A message's own line, "line 2: ...", as one of the file, in which the statement begins at `line`.
std::pair<std::size_t, std::string> InFile(std::size_t line, std::string_view message) {
  constexpr std::string_view kLine = "line ";
  const std::size_t colon = message.find(": ");
  if (!message.starts_with(kLine) || colon == std::string_view::npos) return {line, std::string(message)};
  const auto within = TryStrToInt(std::string(message.substr(kLine.size(), colon - kLine.size())));
  if (!within || *within < 1) return {line, std::string(message)};
  return {line + static_cast<std::size_t>(*within) - 1, std::string(message.substr(colon + 2))};
}

}  // namespace

TFileSchema::TFileSchema(const TStructureScript& script, const TServerTraits& server)
    : script_(script), server_(server) {
  for (const TStructureStatement& statement : script.statements) Apply(statement);
}

TStringList TFileSchema::TableNames() const {
  TStringList names;
  for (const TTableText& table : schema_.Tables()) names.push_back(table.name);
  for (const auto& [name, statement] : put_off_) names.push_back(name);
  std::ranges::sort(names, {}, [this](const std::string& name) { return numbers_.at(name); });
  for (const auto& [name, reason] : unfollowed_) names.push_back(name);
  return names;
}

const std::string_view* TFileSchema::PlainText(const std::string& name) const {
  const auto found = put_off_.find(name);
  return found == put_off_.end() ? nullptr : &found->second.text;
}

const TTableText& TFileSchema::Table(const std::string& name) {
  CatchUp(name);
  if (const auto reason = unfollowed_.find(name); reason != unfollowed_.end()) RaiseError(reason->second);
  const TTableText* table = schema_.Find(name);
  if (table == nullptr) RaiseError(Format(kNoTable, name));
  return *table;
}

// Each file of a folder is run by itself, under no settings of another.
void TFileSchema::Apply(const TStructureStatement& statement) {
  if (statement.file != file_) {
    engine_.clear();
    modes_.clear();
    file_ = statement.file;
  }
  if (!PutOff(statement)) ApplyNow(statement);
}

// Only what has the looks of a dump, made under no setting that counts.
bool TFileSchema::PutOff(const TStructureStatement& statement) {
  constexpr std::string_view kHead = "create table `";
  const std::string_view text = statement.text;
  if (!SameText(text.substr(0, kHead.size()), kHead) || !PlainSettings()) return false;
  const std::size_t end = text.find('`', kHead.size());
  if (end == std::string_view::npos) return false;
  std::size_t after = text.find_first_not_of(kBlanks, end + 1);
  if (after == std::string_view::npos || text[after] != '(') return false;
  after = text.find_first_not_of(kBlanks, after + 1);
  const bool of_query = PosNoCase("select", text) > 0 || PosNoCase("values", text) > 0;
  if (after == std::string_view::npos || text[after] != '`' || of_query) return false;
  std::string name(text.substr(kHead.size(), end - kHead.size()));
  if (!IsMeant({std::string(statement.database), name})) return true;
  Forget(name);
  numbers_.emplace(name, numbers_.size());  // a later text takes the place of an earlier one
  put_off_.emplace(std::move(name), statement);
  return true;
}

bool TFileSchema::PlainSettings() const {
  return engine_.empty() && table_options_.empty() && !QuotesNames(modes_) &&
         std::ranges::none_of(kModeMarks, [this](const TModeMark& row) { return HasMode(modes_, row.mode); });
}

// Takes the statement that makes the table apart, as it was then.
void TFileSchema::CatchUp(const std::string& table) {
  const auto found = put_off_.extract(table);
  if (!found) return;
  auto under_way = std::tuple(statement_, std::move(text_), std::move(tokens_));
  auto settings = std::tuple(std::exchange(engine_, {}), std::exchange(table_options_, {}), std::exchange(modes_, {}));
  RunGuarded(
      [&] {
        try {
          ApplyNow(found.mapped());
        } catch (const EVelmora& fault) {
          unfollowed_[table] = fault.what();
        }
      },
      [&] {
        std::tie(statement_, text_, tokens_) = std::move(under_way);
        std::tie(engine_, table_options_, modes_) = std::move(settings);
      });
}

void TFileSchema::CatchUpAll() {
  while (!put_off_.empty()) CatchUp(std::string(put_off_.begin()->first));
}

void TFileSchema::ApplyNow(const TStructureStatement& statement) {
  Read(statement);
  std::size_t at = 1;
  if (!InList(LowerText(tokens_[0].text), {"create", "alter", "rename", "drop", "set"}))
    return unknown_.push_back(Format(kUnseen, script_.PlaceOf(statement), CutChars(*text_, kShownChars)));
  if (Is(0, "set")) return Set();
  if (Is(1, "database") || Is(1, "schema"))
    if (!Is(0, "drop")) return SetDatabase(2, Is(0, "create"));
  if (Is(0, "alter")) {
    while (Is(at, "online") || Is(at, "offline") || Is(at, "ignore")) ++at;
    return Is(at, "table") ? Alter(at + 1) : void();
  }
  if (Is(0, "rename")) return Is(1, "table") || Is(1, "tables") ? Rename(2) : void();
  if (Is(0, "drop")) return Drop(1);
  if (Is(at, "or")) at += 2;  // or replace
  if (Is(at, "table")) return Create(at + 1);
  while (Is(at, "online") || Is(at, "offline")) ++at;
  const std::string kind = Is(at, "index") ? "" : LowerText(tokens_[std::min(at++, tokens_.size() - 1)].text);
  if (Is(at, "index")) CreateIndex(at + 1, kind);
}

void TFileSchema::Read(const TStructureStatement& statement) {
  statement_ = &statement;
  try {
    text_ = std::make_unique<const std::string>(
        QuotesNames(modes_) ? WithBackticks(statement.text, Tokens(statement.text)) : std::string(statement.text));
    tokens_ = Tokens(*text_);
  } catch (const EVelmora& fault) {
    const auto [line, message] = InFile(statement.line, fault.what());
    RaiseError(Format(kUnreadable, script_.PlaceOf(statement, line), message));
  }
}

std::string TFileSchema::NotFollowed(const std::string& table, const std::string& reason) const {
  const auto found = places_.find(table);
  if (found == places_.end()) return Format(kUnfollowed, script_.PlaceOf({}, 1), reason);
  return Format(kUnfollowed, script_.PlaceOf(found->second), reason);
}

// Whatever is set for the session: the mode, and the engine of new tables.
void TFileSchema::Set() {
  for (std::size_t at = 1; at + 1 < tokens_.size(); ++at) {
    const bool mode = Is(at, "sql_mode");
    if (!mode && !Is(at, "default_storage_engine") && !Is(at, "storage_engine")) continue;
    const bool assigned = tokens_[at + 1].Is("=") || tokens_[at + 1].Is(":=");
    const bool own = tokens_[at - 1].Is("@") && !(at > 1 && tokens_[at - 2].Is("@"));
    const bool global = Is(at - 1, "global") || (at > 2 && tokens_[at - 1].Is(".") && Is(at - 2, "global"));
    if (!assigned || own || global) continue;
    const std::size_t value = at + 2;
    if (!mode) {
      const TToken& engine = tokens_[std::min(value, tokens_.size() - 1)];
      engine_ = engine.kind == EToken::String ? ValueOf(engine) : IsName(engine) ? NameOf(engine) : "";
      if (SameText(engine_, "default")) engine_.clear();
      continue;
    }
    std::string modes;
    for (std::size_t part = value; part < tokens_.size() && (part == value || !tokens_[part - 1].Is(";")); ++part) {
      if (tokens_[part].kind == EToken::String) modes += "," + LowerText(ValueOf(tokens_[part]));
      if (Is(part, "sql_mode")) modes += "," + modes_;
      if (tokens_[part].Is("=")) break;
    }
    if (modes.empty() && IsName(tokens_[std::min(value, tokens_.size() - 1)]))
      modes = LowerText(NameOf(tokens_[value]));
    modes_ = modes;
  }
}

// create database [if not exists] name [options], alter database [name] options
void TFileSchema::SetDatabase(std::size_t at, bool creates) {
  TakeIf(at);
  std::string database(statement_->database);
  const auto option = [&] {
    return Is(at, "default") || Is(at, "character") || Is(at, "charset") || Is(at, "collate") || Is(at, "char");
  };
  if (creates || !option()) database = ReadName(at).table;
  std::vector<TTableOption> options;
  for (; at + 1 < tokens_.size(); ++at) {
    const bool collation = Is(at, "collate");
    if (!collation && !Is(at, "set") && !Is(at, "charset")) continue;
    const std::size_t value = tokens_[at + 1].Is("=") ? at + 2 : at + 1;
    options.push_back({collation ? "COLLATE" : "DEFAULT CHARSET", std::string(TokenAt(tokens_, value).text)});
  }
  if (creates || !options.empty()) table_options_[database] = std::move(options);
}

// What a new table has of which its text says nothing.
void TFileSchema::TakeDefaults(const std::string& database, TTableText& table) const {
  if (!engine_.empty() && table.FindOption("ENGINE") == nullptr) table.options.push_back({"ENGINE", engine_});
  const auto options = table_options_.find(database);
  if (options == table_options_.end() || TableCharset(table) != TCharset()) return;
  table.options.insert(table.options.end(), options->second.begin(), options->second.end());
}

void TFileSchema::CheckModes() const {
  for (const TModeMark& row : kModeMarks)
    if (HasMode(modes_, row.mode) && (row.mark.empty() || PosNoCase(row.mark, *text_) > 0))
      RaiseError(Format(kInMode, row.mark.empty() ? CutChars(*text_, kShownChars) : std::string(row.mark),
                        std::string(row.mode)));
}

bool TFileSchema::TakeIf(std::size_t& at) const {
  if (!Is(at, "if")) return false;
  at += std::size_t{Is(at + 1, "not") ? 3U : 2U};
  return true;
}

TFileSchema::TName TFileSchema::ReadName(std::size_t& at) const {
  TName name;
  for (bool more = true; more;) {
    const TToken& token = tokens_[std::min(at, tokens_.size() - 1)];
    const bool quoted = token.kind == EToken::String && token.text.front() == '"';
    if (!IsName(token) && !quoted)
      RaiseError(Format(kNoName, script_.PlaceOf(*statement_), CutChars(*text_, kShownChars)));
    name.database = std::exchange(name.table, NameOf(token));
    ++at;
    more = at < tokens_.size() && tokens_[at].Is(".");
    if (more) ++at;
  }
  if (name.database.empty()) name.database = statement_->database;
  return name;
}

bool TFileSchema::IsMeant(const TName& name) const {
  return name.database.empty() || script_.database.empty() || name.database == script_.database;
}

void TFileSchema::Add(TTableText table) {
  numbers_.emplace(table.name, numbers_.size());
  schema_.Add(std::move(table));
}

TTableText* TFileSchema::Known(const std::string& table) {
  CatchUp(table);
  return schema_.Find(table);
}

TTableText& TFileSchema::Find(const std::string& table) {
  TTableText* found = Known(table);
  if (found == nullptr) RaiseError(Format(kNoTable, table));
  return *found;
}

void TFileSchema::Forget(const std::string& table) {
  unfollowed_.erase(table);
  put_off_.erase(table);
  if (schema_.Find(table) != nullptr) schema_.Remove(table);
}

// A table that cannot be followed in one statement is not known from there on.
template <class Action>
void TFileSchema::Guard(const std::string& table, Action action) {
  CatchUp(table);
  if (unfollowed_.contains(table)) return;
  places_[table] = *statement_;
  try {
    CheckModes();
    action();
  } catch (const EVelmora& fault) {
    Forget(table);
    const auto [line, message] = InFile(statement_->line, fault.what());
    unfollowed_[table] = Format(kUnfollowed, script_.PlaceOf(*statement_, line), message);
  }
}

void TFileSchema::Create(std::size_t at) {
  const bool conditional = TakeIf(at);
  const TName name = ReadName(at);
  if (!IsMeant(name)) return;
  if (conditional && (Known(name.table) != nullptr || unfollowed_.contains(name.table))) return;
  Forget(name.table);  // a later text takes the place of an earlier one
  Guard(name.table, [&] {
    const std::size_t like = at < tokens_.size() && tokens_[at].Is("(") ? at + 1 : at;
    if (Is(like, "like")) {
      std::size_t from = like + 1;
      return CreateLike(name.table, ReadName(from).table);
    }
    if (MakesRows(TTokens(tokens_).subspan(at))) RaiseError(Format(kOfRows, name.table));
    TTableText table = ReadTableWithoutRawLineEnds(*text_, tokens_);
    std::vector<TElement> columns;
    std::vector<TElement> added;
    columns.reserve(table.elements.size());
    added.reserve(table.elements.size());
    for (TElement& element : table.elements) {
      const bool column = element.kind == EElement::Column;
      std::vector<TElement> inside;
      if (column) inside = TakeInlineElements(element, server_);
      (column ? columns : added).push_back(std::move(element));
      std::move(inside.begin(), inside.end(), std::back_inserter(added));
    }
    TakeDefaults(name.database, table);
    table.elements = std::move(columns);
    AddElements(std::move(added), true, server_, table);
    for (TElement& element : table.elements)
      if (element.kind == EElement::ForeignKey) LeaveDatabase(element, name.database);
    SettleTable(table);
    Add(std::move(table));
  });
}

void TFileSchema::CreateLike(const std::string& name, const std::string& from) {
  CatchUp(from);
  if (const auto reason = unfollowed_.find(from); reason != unfollowed_.end()) RaiseError(reason->second);
  TTableText table = Find(from);
  table.name = name;
  std::erase_if(table.elements, [](const TElement& element) { return element.kind == EElement::ForeignKey; });
  for (TElement& element : table.elements) element.generated = false;
  MakeNamesAnew(table, server_);
  std::erase_if(table.options, [](const TTableOption& option) {
    return option.name == "AUTO_INCREMENT" || option.name.ends_with("DIRECTORY");
  });
  Add(std::move(table));
}

// create index n using btree on t (a) comment 'c'  is  alter table t add index n using btree (a) comment 'c'
void TFileSchema::CreateIndex(std::size_t at, const std::string& kind) {
  const bool conditional = TakeIf(at);
  const std::size_t name = at;
  while (at < tokens_.size() && !Is(at, "on")) ++at;
  const std::size_t on = at++;
  const TName table = ReadName(at);
  if (!IsMeant(table)) return;
  std::string text = "alter table t add " + kind + " index " + (conditional ? "if not exists " : "");
  text += TextOf(*text_, tokens_, name, on) + " " + TextOf(*text_, tokens_, at, tokens_.size() - 1);
  Alter(table.table, text);
}

void TFileSchema::Alter(std::size_t at) {
  const bool conditional = TakeIf(at);
  const TName name = ReadName(at);
  if (!IsMeant(name)) return;
  if (conditional && Known(name.table) == nullptr) return;
  Alter(name.table, "alter table t " + TextOf(*text_, tokens_, at, tokens_.size() - 1));
}

void TFileSchema::Alter(const std::string& name, const std::string& written) {
  constexpr std::size_t kHead = 3;  // alter table t
  std::string renamed;
  Guard(name, [&] {
    const std::string text = WithoutRawLineEnds(written);
    TTableText& table = Find(name);
    TAlterationEffects effects = ApplyWrittenAlteration(text, Tokens(text), kHead, server_, table);
    for (TElement& element : table.elements)
      if (element.kind == EElement::ForeignKey) LeaveDatabase(element, script_.database);
    if (!effects.renamed_columns.empty()) CatchUpAll();
    for (const auto& [from, to] : effects.renamed_columns)
      for (const TTableText& other : schema_.Tables())
        for (TElement& element : schema_.Find(other.name)->elements)
          if (element.kind == EElement::ForeignKey && element.text.ForeignKey().table == name)
            RenameReferenced(element, from, to);
    renamed = std::move(effects.new_name);
  });
  if (!renamed.empty()) RenameTable(name, renamed);
}

void TFileSchema::Rename(std::size_t at) {
  TakeIf(at);
  for (;;) {
    const TName from = ReadName(at);
    if (!Is(at, "to")) ReadName(at);  // raises
    ++at;
    const TName to = ReadName(at);
    if (IsMeant(from)) RenameTable(from.table, to.table);
    if (at >= tokens_.size() || !tokens_[at].Is(",")) return;
    ++at;
  }
}

void TFileSchema::RenameTable(const std::string& from, const std::string& to) {
  if (from == to) return;
  CatchUpAll();  // any of them may refer to it
  if (auto reason = unfollowed_.extract(from)) {
    reason.key() = to;
    unfollowed_.insert(std::move(reason));
    return;
  }
  Guard(Known(from) == nullptr ? from : to, [&] {
    TTableText table = Find(from);
    if (Known(to) != nullptr) RaiseError(Format(kThere, to));
    schema_.Remove(from);
    table.name = to;
    places_[to] = *statement_;
    MoveMadeNames(table, from, server_);
    Add(std::move(table));
    for (const TTableText& other : schema_.Tables())
      for (TElement& element : schema_.Find(other.name)->elements)
        if (element.kind == EElement::ForeignKey) MoveReferences(element, from, to);
  });
}

void TFileSchema::Drop(std::size_t at) {
  const bool database = Is(at, "database") || Is(at, "schema");
  const bool index = Is(at, "index");
  if (!database && !index && !Is(at, "table") && !Is(at, "tables")) return;
  ++at;
  const bool conditional = TakeIf(at);
  if (index) {
    const std::size_t name = at++;
    if (!Is(at, "on")) return;
    const TName table = ReadName(++at);
    const std::string text = std::string("alter table t drop index ") + (conditional ? "if exists " : "");
    if (IsMeant(table)) Alter(table.table, text + TextOf(*text_, tokens_, name, name + 1));
    return;
  }
  for (bool more = true; more;) {
    const TName name = ReadName(at);
    if (database) {
      if (!script_.database.empty() && name.table != script_.database) return;
      schema_ = {};
      put_off_.clear();
      unfollowed_.clear();
    } else if (IsMeant(name)) {
      Forget(name.table);
    }
    more = at < tokens_.size() && tokens_[at].Is(",");
    if (more) ++at;
  }
}

}  // namespace velmora
