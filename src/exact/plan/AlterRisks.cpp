// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/plan/AlterRisks.h"

#include <algorithm>
#include <optional>

#include "exact/compare/Changes.h"
#include "exact/compare/Safety.h"
#include "mysqltext/ColumnType.h"
#include "mysqltext/Lexer.h"
#include "mysqltext/TableOptions.h"
#include "util/Errors.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kUnknownTable[] = "what it does to the values is not known, as the table as it is could not be read";
constexpr char kUnknownKey[] = "whether equal rows may enter from then on is not known";
constexpr char kColumnRenamed[] = "the column gets another name";
constexpr char kTableRenamed[] = "the table gets another name";
constexpr char kRowsOfPartition[] = "the rows of the partition are removed";
constexpr char kHistory[] = "the former versions of rows are dropped";
constexpr char kLettersConverted[] = "letters that the character set does not have are lost";
constexpr char kCharsetAside[] = "what the new character set makes of its letters is not known";

std::string Told(const char* what, const std::string& name, const std::string& reason) {
  return reason.empty() ? std::string() : std::string(what) + " " + name + ": " + reason;
}

// What is judged by the kind of change alone.
std::string RiskOf(TSyncAction action, const std::string& item = {}, const TTableText& before = {}) {
  TChange change;
  change.action = action;
  change.item = item;
  return UnsafeChange(change, before, {});
}

// Of a column that is new, or made of `from`.
std::string RiskOfColumn(const TElement* from, const TTableText& before, const TElement& to, const TTableText& after) {
  TChange change;
  change.action = from == nullptr ? saAddColumn : saModifyColumn;
  if (from != nullptr) change.old_text = from->text;
  change.new_text = to.text;
  ReadColumns(change, before, after);
  return UnsafeChange(change, before, after);
}

const TElement* FindNamed(const TTableText& table, const std::string& name, bool (*holds)(EElement)) {
  const auto found = std::find_if(table.elements.begin(), table.elements.end(), [&](const TElement& element) {
    return holds(element.kind) && SameText(element.name, name);
  });
  return found == table.elements.end() ? nullptr : &*found;
}

bool IsRule(EElement kind) { return kind == EElement::ForeignKey || kind == EElement::Check; }

class TAlterJudge {
 public:
  TAlterJudge(std::string_view statement, TTokens tokens, const TTableText* table)
      : statement_(statement), tokens_(tokens), table_(table) {}

  std::vector<std::string> Judge(std::size_t first);

 private:
  using TRule = std::string (TAlterJudge::*)();
  struct TForm {
    std::vector<std::string_view> words;
    const char* reason;  // null for what is harmless
    TRule rule;          // instead of it; begins after the words
  };
  static const std::vector<TForm>& Forms();

  bool SetsCharset(TTokenRange clause) const;
  void JudgeClause(TTokenRange clause);
  std::string RiskOfClause();
  bool Next(std::initializer_list<std::string_view> words);  // takes them if they are next
  std::string TakeName();                                    // raises where none is
  bool AtEnd() const { return at_ >= last_; }
  // What is left of the clause, as the elements of a table.
  TTableText TakeElements();

  std::string Add();
  std::string DropColumn();
  std::string DropPrimaryKey() { return DropKeyRisk("PRIMARY", table_); }
  std::string DropKey();
  std::string DropConstraint();
  std::string Modify();
  std::string Change();
  std::string AlterColumn();
  std::string Convert();
  std::string Options();
  std::string ColumnBecomes(const std::string& name);

  std::string_view statement_;
  TTokens tokens_;
  const TTableText* table_;
  bool sets_charset_ = false;
  std::size_t at_ = 0;    // of the clause under way
  std::size_t last_ = 0;  // after it
  std::vector<std::string> reasons_;
};

// The first form that fits counts.
const std::vector<TAlterJudge::TForm>& TAlterJudge::Forms() {
  static const std::vector<TForm> kForms = {{{"add", "partition"}, nullptr, nullptr},
                                            {{"add", "system", "versioning"}, nullptr, nullptr},
                                            {{"add"}, nullptr, &TAlterJudge::Add},
                                            {{"drop", "partition"}, kRowsOfPartition, nullptr},
                                            {{"truncate", "partition"}, kRowsOfPartition, nullptr},
                                            {{"drop", "system", "versioning"}, kHistory, nullptr},
                                            {{"drop", "primary", "key"}, nullptr, &TAlterJudge::DropPrimaryKey},
                                            {{"drop", "foreign", "key"}, nullptr, nullptr},
                                            {{"drop", "check"}, nullptr, nullptr},
                                            {{"drop", "period", "for"}, nullptr, nullptr},
                                            {{"drop", "key"}, nullptr, &TAlterJudge::DropKey},
                                            {{"drop", "index"}, nullptr, &TAlterJudge::DropKey},
                                            {{"drop", "constraint"}, nullptr, &TAlterJudge::DropConstraint},
                                            {{"drop"}, nullptr, &TAlterJudge::DropColumn},
                                            {{"modify"}, nullptr, &TAlterJudge::Modify},
                                            {{"change"}, nullptr, &TAlterJudge::Change},
                                            {{"alter", "index"}, nullptr, nullptr},
                                            {{"alter", "key"}, nullptr, nullptr},
                                            {{"alter", "check"}, nullptr, nullptr},
                                            {{"alter", "constraint"}, nullptr, nullptr},
                                            {{"alter"}, nullptr, &TAlterJudge::AlterColumn},
                                            {{"rename", "column"}, kColumnRenamed, nullptr},
                                            {{"rename", "index"}, nullptr, nullptr},
                                            {{"rename", "key"}, nullptr, nullptr},
                                            {{"rename"}, kTableRenamed, nullptr},
                                            {{"convert", "to"}, nullptr, &TAlterJudge::Convert},
                                            {{"convert"}, kNotKnown, nullptr},
                                            {{"force"}, nullptr, nullptr},
                                            {{"enable", "keys"}, nullptr, nullptr},
                                            {{"disable", "keys"}, nullptr, nullptr},
                                            {{"order", "by"}, nullptr, nullptr},
                                            {{"remove", "partitioning"}, nullptr, nullptr},
                                            {{"partition", "by"}, nullptr, nullptr},
                                            {{"coalesce", "partition"}, nullptr, nullptr},
                                            {{"reorganize", "partition"}, nullptr, nullptr},
                                            {{"algorithm"}, nullptr, nullptr},
                                            {{"lock"}, nullptr, nullptr},
                                            {{"with", "validation"}, nullptr, nullptr},
                                            {{"without", "validation"}, nullptr, nullptr},
                                            {{}, nullptr, &TAlterJudge::Options}};
  return kForms;
}

std::vector<std::string> TAlterJudge::Judge(std::size_t first) {
  const std::size_t end = tokens_.size() - 1;
  std::vector<TTokenRange> clauses;
  for (std::size_t at = first; at <= end; at = AfterValue(tokens_, at)) {
    const bool partitioning = at > first && WordsAt(tokens_, at, {"partition", "by"});
    if (!partitioning && at < end && !tokens_[at].Is(",")) continue;
    if (at > first) clauses.push_back({first, at});
    first = partitioning ? at : at + 1;
  }
  sets_charset_ =
      std::any_of(clauses.begin(), clauses.end(), [this](TTokenRange clause) { return SetsCharset(clause); });
  for (const TTokenRange clause : clauses) JudgeClause(clause);
  return std::move(reasons_);
}

// Whether columns without a character set of their own may get another one by it.
bool TAlterJudge::SetsCharset(TTokenRange clause) const {
  for (const std::string_view word : {"add", "modify", "change", "partition"})
    if (IsKeyword(tokens_[clause.first], word)) return false;
  for (std::size_t at = clause.first; at < clause.last; ++at)
    for (const std::string_view word : {"charset", "character", "collate"})
      if (IsKeyword(tokens_[at], word)) return true;
  return false;
}

void TAlterJudge::JudgeClause(TTokenRange clause) {
  at_ = clause.first;
  last_ = clause.last;
  std::string reason;
  try {
    reason = RiskOfClause();
  } catch (const EVelmora&) {
    reason = kNotKnown;
  }
  if (!reason.empty()) reasons_.push_back(std::move(reason));
}

std::string TAlterJudge::RiskOfClause() {
  for (const TForm& form : Forms()) {
    if (!WordsAt(tokens_, at_, form.words)) continue;
    if (form.rule == nullptr) return form.reason == nullptr ? std::string() : form.reason;
    at_ += form.words.size();
    return (this->*form.rule)();
  }
  return kNotKnown;
}

bool TAlterJudge::Next(std::initializer_list<std::string_view> words) {
  if (!WordsAt(tokens_, at_, words) || at_ + words.size() > last_) return false;
  at_ += words.size();
  return true;
}

std::string TAlterJudge::TakeName() {
  if (AtEnd() || !IsName(tokens_[at_])) RaiseError(kNotKnown);
  return NameOf(tokens_[at_++]);
}

TTableText TAlterJudge::TakeElements() {
  std::size_t last = last_;
  if (last - at_ > 2 && IsKeyword(tokens_[last - 1], "first")) last -= 1;
  if (last - at_ > 3 && IsKeyword(tokens_[last - 2], "after")) last -= 2;
  const std::string text = TextOf(statement_, tokens_, at_, last);
  const bool list = tokens_[at_].Is("(") && AfterGroup(tokens_, at_) == last;
  return ReadTableText("create table t " + (list ? text : "(" + text + ")"));
}

std::string TAlterJudge::Add() {
  Next({"column"});
  Next({"if", "not", "exists"});
  const TTableText added = TakeElements();
  const TTableText& after = table_ == nullptr ? added : *table_;
  std::string reasons;
  for (const TElement& element : added.elements) {
    if (element.kind != EElement::Column) continue;
    AddReason(reasons, Told("column", element.name, RiskOfColumn(nullptr, {}, element, after)));
  }
  return reasons;
}

std::string TAlterJudge::DropColumn() {
  Next({"column"});
  Next({"if", "exists"});
  return Told("column", TakeName(), RiskOf(saDropColumn));
}

std::string TAlterJudge::DropKey() {
  Next({"if", "exists"});
  return DropKeyRisk(TakeName(), table_);
}

std::string TAlterJudge::DropConstraint() {
  Next({"if", "exists"});
  const std::string name = TakeName();
  if (table_ != nullptr && FindNamed(*table_, name, IsRule) != nullptr && !FindNamed(*table_, name, IsKey)) return {};
  return DropKeyRisk(name, table_);
}

std::string TAlterJudge::Modify() {
  Next({"column"});
  Next({"if", "exists"});
  if (AtEnd() || !IsName(tokens_[at_])) return kNotKnown;
  return ColumnBecomes(NameOf(tokens_[at_]));
}

std::string TAlterJudge::Change() {
  Next({"column"});
  Next({"if", "exists"});
  return ColumnBecomes(TakeName());
}

// The new definition is next.
std::string TAlterJudge::ColumnBecomes(const std::string& name) {
  const TTableText becomes = TakeElements();
  if (becomes.elements.size() != 1 || becomes.elements.front().kind != EElement::Column) return kNotKnown;
  const TElement& to = becomes.elements.front();
  const TElement* from = table_ == nullptr ? nullptr : table_->Find(EElement::Column, name);
  if (from == nullptr) return Told("column", name, kUnknownTable);
  std::string reason = RiskOfColumn(from, *table_, to, *table_);
  if (sets_charset_ && reason.empty() && ReadColumnText(to.text, *table_).HasLetters()) reason = kCharsetAside;
  if (!SameText(to.name, name)) reason = kColumnRenamed + (reason.empty() ? reason : "; " + reason);
  return Told("column", name, reason);
}

std::string TAlterJudge::AlterColumn() {
  Next({"column"});
  Next({"if", "exists"});
  TakeName();
  const bool harmless =
      Next({"set", "default"}) || Next({"drop", "default"}) || Next({"set", "visible"}) || Next({"set", "invisible"});
  return harmless ? std::string() : kNotKnown;
}

std::string TAlterJudge::Convert() {
  const bool all_letters = Next({"character", "set", "utf8mb4"}) || Next({"charset", "utf8mb4"});
  return all_letters ? std::string() : kLettersConverted;
}

std::string TAlterJudge::Options() {
  TChange change;
  change.action = saChangeTableType;
  while (!AtEnd()) {
    const bool named = TokenAt(tokens_, at_ + 1).Is("=");
    std::optional<TTableOption> option = ReadTableOption(statement_, tokens_, at_);
    if (!option || at_ > last_ || (IsEngineOption(*option) && !named)) return kNotKnown;
    change.options.push_back(std::move(*option));
  }
  const std::string reason = UnsafeChange(change, {}, {});
  return reason.empty() ? reason : "options: " + reason;
}

}  // namespace

std::vector<std::string> AlterRisks(std::string_view statement, TTokens tokens, std::size_t first,
                                    const TTableText* table) {
  return TAlterJudge(statement, tokens, table).Judge(first);
}

std::string DropKeyRisk(const std::string& name, const TTableText* table) {
  const bool known = table != nullptr && FindNamed(*table, name, IsKey) != nullptr;
  if (known || SameText(name, "PRIMARY")) {
    TTableText primary;
    primary.elements.push_back({EElement::PrimaryKey, "PRIMARY", {}});
    return Told("key", name, RiskOf(saDropKey, name, known ? *table : primary));
  }
  return Told("key", name, kUnknownKey);
}

bool WordsAt(TTokens tokens, std::size_t at, const std::vector<std::string_view>& words) {
  return std::all_of(words.begin(), words.end(),
                     [&](std::string_view word) { return IsKeyword(TokenAt(tokens, at++), word); });
}

}  // namespace velmora
