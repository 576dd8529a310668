// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/plan/StatementLocks.h"

#include <algorithm>
#include <optional>

#include "exact/compare/CanonicalForm.h"
#include "exact/plan/AlterRisks.h"
#include "exact/plan/ColumnLocks.h"
#include "mysqltext/ColumnParts.h"
#include "mysqltext/ElementText.h"
#include "mysqltext/KeyText.h"
#include "mysqltext/TableOptions.h"
#include "util/Errors.h"
#include "util/Text.h"

namespace velmora {

namespace {

using EChange = ELockChange;

constexpr std::size_t kHead = 3;  // alter table name

// Options of which servers only take note.
constexpr std::array<std::string_view, 11> kNoted = {
    "COMMENT",        "AUTO_INCREMENT", "STATS_PERSISTENT",   "STATS_AUTO_RECALC", "MAX_ROWS", "MIN_ROWS",
    "AVG_ROW_LENGTH", "CHECKSUM",       "STATS_SAMPLE_PAGES", "DELAY_KEY_WRITE",   "PACK_KEYS"};

class TClauseReader {
 public:
  TClauseReader(const std::string& statement, const TTableText& table, bool checks)
      : statement_(statement),
        tokens_(Tokens(statement)),
        table_(table),
        charset_(TableCharset(table)),
        checks_(checks) {}

  std::vector<TLockClause> Read();

 private:
  using TRule = void (TClauseReader::*)(TTokenRange, TLockClause&);
  struct TForm {
    std::vector<std::string_view> words;
    EChange change;  // kCount where the rule says
    const char* about;
    TRule rule;  // called with what is behind the words
  };
  static const std::vector<TForm>& Forms();

  void Split();
  void Judge(TTokenRange range, TLockClause& clause);
  std::string NameAt(std::size_t at) const { return at < tokens_.size() - 1 ? NameOf(tokens_[at]) : std::string(); }
  TElement ElementOf(TTokenRange range) const;
  bool Says(std::initializer_list<std::string_view> words) const;
  void FindCharset();
  bool HasKeyFor(const TElement& foreign_key) const;
  bool IsOverNew(const TElement& key) const;

  void AddColumn(TTokenRange range, TLockClause& clause);
  void AddElement(TTokenRange range, TLockClause& clause);
  void DropColumn(TTokenRange range, TLockClause& clause);
  void DropPrimary(TTokenRange range, TLockClause& clause);
  void DropKey(TTokenRange range, TLockClause& clause);
  void DropConstraint(TTokenRange range, TLockClause& clause);
  void Modify(TTokenRange range, TLockClause& clause) { Become(NameAt(range.first), range, clause); }
  void Change(TTokenRange range, TLockClause& clause) {
    Become(NameAt(range.first), {range.first + 1, range.last}, clause);
  }
  void Become(const std::string& name, TTokenRange range, TLockClause& clause);
  void Options(TTokenRange range, TLockClause& clause);

  const std::string& statement_;
  const std::vector<TToken> tokens_;
  const TTableText& table_;
  TCharset charset_;  // that the table has when its columns are changed
  bool checks_;
  std::vector<TTokenRange> ranges_;
};

const std::vector<TClauseReader::TForm>& TClauseReader::Forms() {
  static const std::vector<TForm> kForms = {
      {{"add", "column"}, EChange::kCount, "column", &TClauseReader::AddColumn},
      {{"add"}, EChange::kCount, "key", &TClauseReader::AddElement},
      {{"drop", "column"}, EChange::kCount, "column", &TClauseReader::DropColumn},
      {{"drop", "primary", "key"}, EChange::kCount, "key", &TClauseReader::DropPrimary},
      {{"drop", "foreign", "key"}, EChange::DropForeignKey, "constraint", nullptr},
      {{"drop", "check"}, EChange::DropCheck, "constraint", nullptr},
      {{"drop", "constraint"}, EChange::kCount, "constraint", &TClauseReader::DropConstraint},
      {{"drop", "key"}, EChange::kCount, "key", &TClauseReader::DropKey},
      {{"drop", "index"}, EChange::kCount, "key", &TClauseReader::DropKey},
      {{"modify", "column"}, EChange::kCount, "column", &TClauseReader::Modify},
      {{"change", "column"}, EChange::kCount, "column", &TClauseReader::Change},
      {{"rename", "column"}, EChange::RenameColumn, "column", nullptr},
      {{"rename", "key"}, EChange::RenameKey, "key", nullptr},
      {{"rename", "index"}, EChange::RenameKey, "key", nullptr},
      {{"rename", "to"}, EChange::RenameTable, "table", nullptr},
      {{"alter", "index"}, EChange::UseKey, "key", nullptr},
      {{"alter", "column"}, EChange::DescribeColumn, "column", nullptr},
      {{"force"}, EChange::ChangeRows, "table", nullptr},
      {{"convert", "to"}, EChange::ConvertCharset, "options", nullptr},
      {{"partition", "by"}, EChange::Partition, "partitioning", nullptr},
      {{"remove", "partitioning"}, EChange::Partition, "partitioning", nullptr},
      {{}, EChange::kCount, "options", &TClauseReader::Options}};
  return kForms;
}

bool EndsStatement(TTokens tokens, std::size_t at) {
  return WordsAt(tokens, at, {"partition", "by"}) || WordsAt(tokens, at, {"remove", "partitioning"});
}

void TClauseReader::Split() {
  const std::size_t end = tokens_.size() - 1;
  std::size_t first = kHead;
  for (std::size_t at = first; at <= end; at = AfterValue(tokens_, at)) {
    const bool begins_end = at > first && EndsStatement(tokens_, at);
    if (!begins_end && at < end && !tokens_[at].Is(",")) continue;
    if (at > first) ranges_.push_back({first, at});
    first = begins_end ? at : at + 1;
    if (EndsStatement(tokens_, first)) {
      ranges_.push_back({first, end});
      return;
    }
  }
}

std::vector<TLockClause> TClauseReader::Read() {
  std::vector<TLockClause> clauses;
  if (!WordsAt(tokens_, 0, {"alter", "table"}) || tokens_.size() <= kHead) return clauses;
  Split();
  FindCharset();
  for (const TTokenRange range : ranges_) {
    if (WordsAt(tokens_, range.first, {"algorithm"}) || WordsAt(tokens_, range.first, {"lock"})) continue;
    TLockClause& clause = clauses.emplace_back();
    clause.text = TextOf(statement_, tokens_, range.first, range.last);
    clause.ends = EndsStatement(tokens_, range.first);
    Judge(range, clause);
  }
  return clauses;
}

void TClauseReader::Judge(TTokenRange range, TLockClause& clause) {
  try {
    for (const TForm& form : Forms()) {
      if (!WordsAt(tokens_, range.first, form.words)) continue;
      const TTokenRange rest{range.first + form.words.size(), range.last};
      clause.word = form.about;
      if (form.words.size() > 1 && rest.first < rest.last && IsName(tokens_[rest.first]))
        clause.name = NameAt(rest.first);
      if (form.rule == nullptr) return clause.changes.push_back(form.change);
      return (this->*form.rule)(rest, clause);
    }
  } catch (const EVelmora&) {
    clause.changes.assign({EChange::Unknown});
  }
}

TElement TClauseReader::ElementOf(TTokenRange range) const {
  TTableText table = ReadTableText("create table t (" + TextOf(statement_, tokens_, range.first, range.last) + ")");
  if (table.elements.size() != 1) RaiseError(kNotKnown);
  return std::move(table.elements.front());
}

bool TClauseReader::Says(std::initializer_list<std::string_view> words) const {
  return std::ranges::any_of(ranges_, [&](TTokenRange range) { return WordsAt(tokens_, range.first, words); });
}

void TClauseReader::FindCharset() {
  for (const TTokenRange range : ranges_) {
    std::size_t at = range.first;
    std::string charset, collation;
    while (at < range.last) {
      const auto option = ReadTableOption(statement_, tokens_, at);
      if (!option) break;
      if (option->name == "DEFAULT CHARSET") charset = CharsetName(option->value);
      if (option->name == "COLLATE") collation = CollationName(option->value);
    }
    if (!charset.empty() || !collation.empty()) charset_ = NamedCharset(charset, collation);
  }
}

// --- Columns

void TClauseReader::AddColumn(TTokenRange range, TLockClause& clause) {
  const TColumnPlace place = TakePlace(tokens_, range);
  clause.changes = AddedColumn(ElementOf(range), place, table_);
}

void TClauseReader::DropColumn(TTokenRange range, TLockClause& clause) {
  clause.changes = DroppedColumn(NameAt(range.first), table_);
}

void TClauseReader::Become(const std::string& name, TTokenRange range, TLockClause& clause) {
  const TColumnPlace place = TakePlace(tokens_, range);
  const TElement* from = table_.Find(EElement::Column, name);
  if (from == nullptr) RaiseError(kNotKnown);
  clause.name = name;
  clause.changes = ChangedColumn(*from, ElementOf(range), place, table_, charset_);
}

// --- Keys and constraints

bool HasExpressions(const TElement& key) {
  return std::ranges::any_of(key.text.KeyParts(), [](const TKeyPart& part) { return part.column.empty(); });
}

EChange AddedKey(const TElement& key) {
  if (key.kind == EElement::FulltextKey) return EChange::AddFulltext;
  return key.kind == EElement::SpatialKey ? EChange::AddSpatial : EChange::AddKey;
}

bool IsEnforced(const TElement& check) {
  const TTokens tokens = check.text.Tokens();
  return tokens.size() < 2 || !IsKeyword(tokens.back(), "enforced") || !IsKeyword(tokens[tokens.size() - 2], "not");
}

// Servers make one otherwise.
bool TClauseReader::HasKeyFor(const TElement& foreign_key) const {
  const std::vector<std::string>& columns = foreign_key.text.ForeignKey().columns;
  return std::ranges::any_of(table_.elements, [&columns](const TElement& key) {
    if (!IsKey(key.kind) || key.kind == EElement::FulltextKey) return false;
    const std::vector<TKeyPart>& parts = key.text.KeyParts();
    return parts.size() >= columns.size() &&
           std::equal(columns.begin(), columns.end(), parts.begin(),
                      [](const std::string& column, const TKeyPart& part) { return SameText(column, part.column); });
  });
}

// Whether the key has a virtual column that the statement adds.
bool TClauseReader::IsOverNew(const TElement& key) const {
  return std::ranges::any_of(ranges_, [&](TTokenRange range) {
    if (!WordsAt(tokens_, range.first, {"add", "column"})) return false;
    TTokenRange rest{range.first + 2, range.last};
    TakePlace(tokens_, rest);
    const TElement column = ElementOf(rest);
    const TColumnParts& parts = column.text.Column();
    return parts.generated && !parts.stored && std::ranges::any_of(key.text.KeyParts(), [&](const TKeyPart& part) {
             return SameText(part.column, column.name);
           });
  });
}

void TClauseReader::AddElement(TTokenRange range, TLockClause& clause) {
  const TElement element = ElementOf(range);
  clause.name = element.name;
  if (!IsKey(element.kind)) clause.word = "constraint";
  switch (element.kind) {
    case EElement::PrimaryKey:
      return clause.changes.push_back(Says({"drop", "primary"}) ? EChange::ReplacePrimary : EChange::AddPrimary);
    case EElement::ForeignKey:
      clause.changes.push_back(checks_ ? EChange::AddForeignKey : EChange::AddForeignKeyUnchecked);
      if (!HasKeyFor(element)) clause.changes.push_back(EChange::AddKey);
      return;
    case EElement::Check:
      return clause.changes.push_back(IsEnforced(element) ? EChange::AddCheck : EChange::AddCheckUnenforced);
    case EElement::Period:
    case EElement::Column:
    case EElement::Other:
      return clause.changes.push_back(EChange::Unknown);
    default:
      if (HasExpressions(element)) clause.changes.push_back(EChange::AddVirtual);
      const bool computed = HasExpressions(element) || IsOverNew(element);
      return clause.changes.push_back(computed ? EChange::AddComputedKey : AddedKey(element));
  }
}

// A key over expressions has virtual columns of its own, which nobody sees.
void TClauseReader::DropKey(TTokenRange range, TLockClause& clause) {
  const std::string name = NameAt(range.first);
  const bool functional = std::ranges::any_of(table_.elements, [&name](const TElement& key) {
    return IsKey(key.kind) && SameText(key.name, name) && HasExpressions(key);
  });
  if (functional) clause.changes.push_back(EChange::DropVirtual);
  clause.changes.push_back(EChange::DropKey);
}

void TClauseReader::DropPrimary(TTokenRange /*range*/, TLockClause& clause) {
  clause.name = "PRIMARY";
  clause.changes = {Says({"add", "primary"}) ? EChange::ReplacePrimary : EChange::DropPrimary};
}

void TClauseReader::DropConstraint(TTokenRange range, TLockClause& clause) {
  const bool check = table_.Find(EElement::Check, NameAt(range.first)) != nullptr;
  clause.changes = {check ? EChange::DropCheck : EChange::Unknown};
}

// --- Options

void TClauseReader::Options(TTokenRange range, TLockClause& clause) {
  for (std::size_t at = range.first; at < range.last;) {
    const auto option = ReadTableOption(statement_, tokens_, at);
    if (!option || at > range.last) RaiseError(kNotKnown);
    const std::string& name = option->name;
    const bool letters = name == "DEFAULT CHARSET" || name == "COLLATE";
    clause.sets_charset = clause.sets_charset || letters;
    const bool same_engine = name == "ENGINE" && SameText(option->value, EngineOf(table_));
    if (letters)
      clause.changes.push_back(EChange::HandDownCharset);
    else if (std::ranges::find(kNoted, name) != kNoted.end())
      clause.changes.push_back(EChange::DescribeTable);
    else if (name == "ROW_FORMAT" || name == "KEY_BLOCK_SIZE" || same_engine)
      clause.changes.push_back(EChange::ChangeRows);
    else
      clause.changes.push_back(name == "ENGINE" ? EChange::ChangeEngine : EChange::Unknown);
  }
}

// "on delete cascade", "on update set null"
bool Cascades(const TElement& foreign_key) {
  return std::ranges::any_of(foreign_key.text.Tokens().subspan(foreign_key.text.ForeignKey().rules),
                             [](const TToken& token) { return token.Is("cascade") || token.Is("set"); });
}

bool IsOption(const TTableText& table, std::string_view name, std::string_view value) {
  const TTableOption* option = table.FindOption(name);
  return option != nullptr && SameText(option->value, value);
}

}  // namespace

std::vector<TLockClause> LockClauses(const std::string& statement, const TTableText& table, bool checks) {
  return TClauseReader(statement, table, checks).Read();
}

std::string AlterOf(const std::string& table, const std::vector<TLockClause>& clauses) {
  std::string text = "alter table " + QuotedName(table);
  const char* gap = clauses.size() == 1 ? " " : "\n  ";
  for (std::size_t i = 0; i < clauses.size(); ++i)
    text += (i == 0 || clauses[i].ends ? "" : ",") + (gap + clauses[i].text);
  return text;
}

TLockTraits LockTraitsOf(const TTableText& table) {
  const std::string engine = EngineOf(table);
  TLockTraits traits;
  traits.other_engine = !engine.empty() && engine != "innodb";
  const bool has_blocks = table.FindOption("KEY_BLOCK_SIZE") != nullptr && !IsOption(table, "KEY_BLOCK_SIZE", "0");
  traits.compressed = has_blocks || IsOption(table, "ROW_FORMAT", "compressed");
  traits.redundant = IsOption(table, "ROW_FORMAT", "redundant");
  traits.versioned = table.system_versioned;
  for (const TElement& element : table.elements) {
    traits.fulltext = traits.fulltext || element.kind == EElement::FulltextKey;
    traits.spatial = traits.spatial || element.kind == EElement::SpatialKey;
    traits.functional = traits.functional || (IsKey(element.kind) && HasExpressions(element));
    traits.cascades = traits.cascades || (element.kind == EElement::ForeignKey && Cascades(element));
    if (element.kind != EElement::Column || !element.text.Column().generated || element.text.Column().stored) continue;
    traits.computed = true;
    traits.computed_key = traits.computed_key || StandsInKey(element.name, table);
  }
  return traits;
}

bool HasToBeCopied(const std::vector<TLockClause>& clauses, const TTableText& table, const TServerTraits& server) {
  const auto made_of = [&clauses](EChange change) {
    return std::ranges::count_if(clauses, [change](const TLockClause& clause) {
      return std::ranges::find(clause.changes, change) != clause.changes.end();
    });
  };
  const auto stays = [&clauses](const TElement& key) {
    return key.kind == EElement::FulltextKey && std::ranges::none_of(clauses, [&key](const TLockClause& clause) {
             return clause.changes == std::vector{EChange::DropKey} && SameText(clause.name, key.name);
           });
  };
  if (!server.mysql || made_of(EChange::AddCounter) == 0) return false;
  return made_of(EChange::AddFulltext) + std::ranges::count_if(table.elements, stays) > 1;
}

namespace {

bool HoldsSizedText(const TElement& column) {
  return column.kind == EElement::Column && InList(column.text.Column().type, {"tinytext", "mediumtext", "longtext",
                                                                               "tinyblob", "mediumblob", "longblob"});
}

// An enforced one.
bool ChecksSizedText(const TElement& check, const TTableText& table) {
  const TTokens tokens = check.text.Tokens();
  for (std::size_t at = 0; at + 1 < tokens.size(); ++at)
    if (IsKeyword(tokens[at], "not") && IsKeyword(tokens[at + 1], "enforced")) return false;
  return std::ranges::any_of(tokens, [&table](const TToken& token) {
    const TElement* column = IsName(token) ? table.Find(EElement::Column, NameOf(token)) : nullptr;
    return column != nullptr && HoldsSizedText(*column);
  });
}

// MySQL takes every column that a statement speaks of for one of another type, as far as checks of text that is
// not plain "text" or "blob" go.
bool ChecksAnew(const std::vector<TLockClause>& clauses, const TTableText& table, const TServerTraits& server) {
  const auto speaks = [](const TLockClause& clause) {
    return clause.word == "column" && (clause.text.starts_with("modify ") || clause.text.starts_with("rename "));
  };
  if (!server.mysql || std::ranges::none_of(clauses, speaks)) return false;
  return std::ranges::any_of(table.elements, [&](const TElement& check) {
    const auto goes = [&check](const TLockClause& clause) {
      return clause.word == "constraint" && SameText(clause.name, check.name);
    };
    return check.kind == EElement::Check && std::ranges::none_of(clauses, goes) && ChecksSizedText(check, table);
  });
}

}  // namespace

ELockClass ClassOfClauses(const std::vector<TLockClause>& clauses, const TTableText& table,
                          const TServerTraits& server) {
  if (HasToBeCopied(clauses, table, server) || ChecksAnew(clauses, table, server)) return ELockClass::Copy;
  std::vector<ELockChange> changes;
  for (const TLockClause& clause : clauses) changes.insert(changes.end(), clause.changes.begin(), clause.changes.end());
  return ClassTogether(changes, LockTraitsOf(table), server);
}

ELockClass ClassOfStatement(const std::string& statement, const TTableText& table, const TServerTraits& server,
                            bool checks) {
  return ClassOfClauses(LockClauses(statement, table, checks), table, server);
}

std::string WithAlgorithm(const std::string& statement, std::string_view algorithm, std::string_view lock) {
  const std::vector<TToken> tokens = Tokens(statement);
  if (!WordsAt(tokens, 0, {"alter", "table"}) || tokens.size() <= kHead) return statement;
  std::string words = " algorithm=" + std::string(algorithm);
  if (!lock.empty()) words += ", lock=" + std::string(lock);
  if (!EndsStatement(tokens, kHead)) words += ",";
  return statement.substr(0, tokens[kHead - 1].End()) + words + statement.substr(tokens[kHead - 1].End());
}

}  // namespace velmora
