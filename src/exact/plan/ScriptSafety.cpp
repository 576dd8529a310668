// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/plan/ScriptSafety.h"

#include "exact/compare/Safety.h"
#include "mysqltext/StatementReader.h"

#include <algorithm>
#include <set>
#include <unordered_map>

#include "exact/compare/Changes.h"
#include "exact/plan/AlterRisks.h"
#include "exact/plan/FollowedTables.h"
#include "mysqltext/Lexer.h"
#include "util/Errors.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kTableGoes[] = "the table is dropped with its rows";
constexpr char kDatabaseGoes[] = "the database is dropped with all that it holds";
constexpr char kObjectGoes[] = "what it names is dropped";
constexpr char kReplaces[] = "what has the name already is dropped";
constexpr char kRenames[] = "the table gets another name";
constexpr char kEmpties[] = "all rows are removed";
constexpr char kDeletes[] = "rows are removed";
constexpr char kUpdates[] = "values are replaced";
constexpr char kReplacesRows[] = "rows with an equal key are replaced";
constexpr char kLeaves[] = "the statements after it are about another database";
constexpr char kIgnores[] = "rows and values that do not fit are dropped or changed";

// Settings of a session that change no data, as dumps and scripts set them.
constexpr std::string_view kHarmlessSettings[] = {"foreign_key_checks",
                                                  "unique_checks",
                                                  "check_constraint_checks",
                                                  "sql_mode",
                                                  "sql_notes",
                                                  "sql_quote_show_create",
                                                  "sql_safe_updates",
                                                  "time_zone",
                                                  "character_set_client",
                                                  "character_set_connection",
                                                  "character_set_results",
                                                  "collation_connection",
                                                  "default_storage_engine",
                                                  "alter_algorithm",
                                                  "old_alter_table",
                                                  "lock_wait_timeout",
                                                  "innodb_lock_wait_timeout"};

// What a query may call without changing anything, and words that brackets may follow.
constexpr std::string_view kHarmlessCalls[] = {
    "count",  "sum",     "min",      "max",      "avg",   "concat", "coalesce", "ifnull", "if",
    "length", "version", "database", "now",      "upper", "in",     "from",     "exists", "and",
    "or",     "not",     "join",     "on",       "where", "as",     "lower",    "left",   "by",
    "select", "values",  "all",      "distinct", "like",  "cast",   "between"};

template <class Words>
bool IsOneOf(const TToken& token, const Words& words) {
  return std::any_of(std::begin(words), std::end(words),
                     [&token](std::string_view word) { return IsKeyword(token, word); });
}

class TScriptJudge {
 public:
  TScriptJudge(const std::vector<TPlanStatement>& plan, const TStructureOf& structure_of) : tables_(structure_of) {
    for (const TPlanStatement& statement : plan) planned_.emplace(WithPlainLineEnds(statement.text), &statement);
  }

  TStatementRisk Judge(std::string text);

 private:
  using TReasons = std::vector<std::string>;
  using TRule = TReasons (TScriptJudge::*)();
  struct TForm {
    std::vector<std::string_view> words;
    const char* reason;  // null for what is harmless
    TRule rule;          // instead of it; begins after the words
    bool whole = false;  // the words are the whole statement
  };
  static const std::vector<TForm>& Forms();

  void Follow(const TPlanStatement& statement);
  TReasons RisksOfWords();
  bool Next(std::initializer_list<std::string_view> words);  // takes them if they are next
  bool AtEnd() const { return at_ + 1 >= tokens_.size(); }
  // The name of a table of the target, taken; empty for one of another database and where there is none.
  std::string TakeTable();
  std::string TakeChanging();  // of a table whose columns the statement may change

  TReasons AlterTable();
  TReasons AlterIgnoring();
  TReasons CreateTable();
  TReasons ChangeIndex();
  TReasons DropIndex();
  TReasons DropTables();
  TReasons Rename();
  TReasons Use();
  TReasons Insert();
  TReasons Set();
  TReasons Select();

  std::unordered_map<std::string, const TPlanStatement*> planned_;
  TFollowedTables tables_;
  std::set<std::string> touched_;  // tables that other statements than the plan's have changed
  std::string text_;
  std::vector<TToken> tokens_;
  std::size_t at_ = 0;
};

// The first form that fits counts.
const std::vector<TScriptJudge::TForm>& TScriptJudge::Forms() {
  static const std::vector<TForm> kForms = {{{"alter", "table"}, nullptr, &TScriptJudge::AlterTable},
                                            {{"alter", "online", "table"}, nullptr, &TScriptJudge::AlterTable},
                                            {{"alter", "ignore", "table"}, nullptr, &TScriptJudge::AlterIgnoring},
                                            {{"create", "or", "replace"}, kReplaces, nullptr},
                                            {{"create", "table"}, nullptr, &TScriptJudge::CreateTable},
                                            {{"create", "temporary", "table"}, nullptr, &TScriptJudge::CreateTable},
                                            {{"create", "index"}, nullptr, &TScriptJudge::ChangeIndex},
                                            {{"create", "unique", "index"}, nullptr, &TScriptJudge::ChangeIndex},
                                            {{"create", "fulltext", "index"}, nullptr, &TScriptJudge::ChangeIndex},
                                            {{"create", "spatial", "index"}, nullptr, &TScriptJudge::ChangeIndex},
                                            {{"create", "view"}, nullptr, nullptr},
                                            {{"create", "database"}, nullptr, nullptr},
                                            {{"create", "schema"}, nullptr, nullptr},
                                            {{"drop", "temporary", "table"}, nullptr, nullptr},
                                            {{"drop", "table"}, nullptr, &TScriptJudge::DropTables},
                                            {{"drop", "tables"}, nullptr, &TScriptJudge::DropTables},
                                            {{"drop", "index"}, nullptr, &TScriptJudge::DropIndex},
                                            {{"drop", "database"}, kDatabaseGoes, nullptr},
                                            {{"drop", "schema"}, kDatabaseGoes, nullptr},
                                            {{"drop"}, kObjectGoes, nullptr},
                                            {{"rename", "table"}, nullptr, &TScriptJudge::Rename},
                                            {{"rename", "tables"}, nullptr, &TScriptJudge::Rename},
                                            {{"truncate"}, kEmpties, nullptr},
                                            {{"delete"}, kDeletes, nullptr},
                                            {{"update"}, kUpdates, nullptr},
                                            {{"replace"}, kReplacesRows, nullptr},
                                            {{"insert"}, nullptr, &TScriptJudge::Insert},
                                            {{"set"}, nullptr, &TScriptJudge::Set},
                                            {{"select"}, nullptr, &TScriptJudge::Select},
                                            {{"show"}, nullptr, nullptr},
                                            {{"describe"}, nullptr, nullptr},
                                            {{"analyze", "table"}, nullptr, nullptr},
                                            {{"check", "table"}, nullptr, nullptr},
                                            {{"optimize", "table"}, nullptr, nullptr},
                                            {{"lock", "tables"}, nullptr, nullptr},
                                            {{"unlock", "tables"}, nullptr, nullptr, true},
                                            {{"start", "transaction"}, nullptr, nullptr, true},
                                            {{"begin"}, nullptr, nullptr, true},
                                            {{"commit"}, nullptr, nullptr, true},
                                            {{"use"}, nullptr, &TScriptJudge::Use}};
  return kForms;
}

// Of a statement of the plan the plan knows the reasons; but that it is safe counts only as long as its table is as the
// plan has it.
TStatementRisk TScriptJudge::Judge(std::string text) {
  TStatementRisk risk;
  const auto planned = planned_.find(WithPlainLineEnds(text));
  text_ = risk.text = std::move(text);
  if (planned != planned_.end()) {
    risk.planned = planned->second;
    risk.reasons = risk.planned->unsafe;
  }
  const bool known = !risk.reasons.empty() || (risk.planned && !touched_.contains(LowerText(risk.planned->table)));
  if (known)
    Follow(*risk.planned);
  else
    risk.reasons = RisksOfWords();
  return risk;
}

void TScriptJudge::Follow(const TPlanStatement& statement) {
  if (!statement.object.empty()) return;
  if (statement.text.starts_with("alter"))
    tables_.Alter(statement.table, statement.text);
  else if (statement.text.starts_with("create"))
    tables_.Make(statement.table, statement.text);
  else if (!statement.text.starts_with("update"))
    tables_.Forget(statement.table);
}

TScriptJudge::TReasons TScriptJudge::RisksOfWords() {
  try {
    tokens_ = Tokens(text_);
  } catch (const EVelmora&) {
    tables_.ForgetAll();
    return {kNotKnown};
  }
  const bool several = std::any_of(tokens_.begin(), tokens_.end(), [](const TToken& token) { return token.Is(";"); });
  for (const TForm& form : Forms()) {
    if (several || !WordsAt(tokens_, 0, form.words)) continue;
    at_ = form.words.size();
    if (form.whole && !AtEnd()) continue;
    if (form.rule != nullptr) return (this->*form.rule)();
    return form.reason == nullptr ? TReasons() : TReasons{form.reason};
  }
  tables_.ForgetAll();
  return {kNotKnown};
}

bool TScriptJudge::Next(std::initializer_list<std::string_view> words) {
  if (!WordsAt(tokens_, at_, words)) return false;
  at_ += words.size();
  return true;
}

std::string TScriptJudge::TakeTable() {
  if (!IsName(TokenAt(tokens_, at_))) return {};
  std::string name = NameOf(tokens_[at_++]);
  if (!TokenAt(tokens_, at_).Is(".")) return name;
  at_ += 2;
  return {};
}

std::string TScriptJudge::TakeChanging() {
  std::string name = TakeTable();
  touched_.insert(LowerText(name));
  return name;
}

TScriptJudge::TReasons TScriptJudge::AlterTable() {
  const bool plain = at_ == 2;
  const bool there = Next({"if", "exists"});
  const std::string name = TakeChanging();
  const TTableText* table = name.empty() ? nullptr : tables_.Find(name);
  if (!Next({"nowait"}) && Next({"wait"})) ++at_;
  TReasons reasons = AlterRisks(text_, tokens_, std::min(at_, tokens_.size() - 1), table);
  if (name.empty())
    tables_.ForgetAll();  // it may be one of them by its whole name
  else if (plain && !there)
    tables_.Alter(name, text_);
  else
    tables_.Forget(name);
  return reasons;
}

TScriptJudge::TReasons TScriptJudge::AlterIgnoring() {
  TReasons reasons = AlterTable();
  reasons.insert(reasons.begin(), kIgnores);
  return reasons;
}

TScriptJudge::TReasons TScriptJudge::CreateTable() {
  const bool maybe = Next({"if", "not", "exists"});
  const std::string name = TakeChanging();
  if (name.empty()) return {};
  tables_.Make(name, text_);
  const TTableText* table = tables_.Find(name);
  TChange change;
  change.action = saCreateTable;
  const std::string reason = table == nullptr ? std::string() : UnsafeChange(change, {}, *table);
  if (maybe) tables_.Forget(name);
  return reason.empty() ? TReasons() : TReasons{reason};
}

TScriptJudge::TReasons TScriptJudge::ChangeIndex() {
  while (!AtEnd() && !Next({"on"})) ++at_;
  if (const std::string name = TakeTable(); !name.empty()) tables_.Forget(name);
  return {};
}

TScriptJudge::TReasons TScriptJudge::DropIndex() {
  Next({"if", "exists"});
  const TToken& key = TokenAt(tokens_, at_++);
  const bool of_table = Next({"on"});
  const std::string name = of_table ? TakeTable() : std::string();
  const std::string reason = DropKeyRisk(NameOf(key), name.empty() ? nullptr : tables_.Find(name));
  if (!name.empty()) tables_.Forget(name);
  return reason.empty() ? TReasons() : TReasons{reason};
}

TScriptJudge::TReasons TScriptJudge::DropTables() {
  Next({"if", "exists"});
  while (!AtEnd()) {
    const std::string name = TakeChanging();
    if (!name.empty()) tables_.Forget(name);
    ++at_;
  }
  return {kTableGoes};
}

TScriptJudge::TReasons TScriptJudge::Rename() {
  tables_.ForgetAll();
  return {kRenames};
}

TScriptJudge::TReasons TScriptJudge::Use() {
  tables_.ForgetAll();
  return {kLeaves};
}

TScriptJudge::TReasons TScriptJudge::Insert() {
  while (!AtEnd()) {
    if (Next({"on", "duplicate", "key", "update"})) return {kUpdates};
    ++at_;
  }
  return {};
}

// name = value, ...: values are no calls but of replace(), names are those of the user or harmless settings of the
// session.
TScriptJudge::TReasons TScriptJudge::Set() {
  while (!AtEnd()) {
    const bool of_letters = Next({"names"}) || Next({"character", "set"});
    const bool of_user = TokenAt(tokens_, at_).Is("@") && !TokenAt(tokens_, at_ + 1).Is("@");
    while (TokenAt(tokens_, at_).Is("@")) ++at_;
    if (Next({"session"}) || Next({"local"})) at_ += TokenAt(tokens_, at_).Is(".") ? 1U : 0U;
    if (!of_letters && !of_user && !IsOneOf(TokenAt(tokens_, at_), kHarmlessSettings)) return {kNotKnown};
    std::size_t open = 0;
    for (; !AtEnd() && (open > 0 || !tokens_[at_].Is(",")); ++at_) {
      if (tokens_[at_].Is(")") && open > 0) --open;
      if (!tokens_[at_].Is("(")) continue;
      if (!IsKeyword(tokens_[at_ - 1], "replace")) return {kNotKnown};
      ++open;
    }
    ++at_;
  }
  return {};
}

// A function of somebody's own may do anything.
TScriptJudge::TReasons TScriptJudge::Select() {
  for (; !AtEnd(); ++at_) {
    const bool calls = IsName(tokens_[at_]) && TokenAt(tokens_, at_ + 1).Is("(");
    if (IsKeyword(tokens_[at_], "into") || (calls && !IsOneOf(tokens_[at_], kHarmlessCalls))) return {kNotKnown};
  }
  return {};
}

}  // namespace

std::string WithPlainLineEnds(std::string_view text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') continue;
    result += text[i] == '\r' ? '\n' : text[i];
  }
  return result;
}

std::vector<TStatementRisk> ScriptRisks(std::string_view script, const std::vector<TPlanStatement>& plan,
                                        const TStructureOf& structure_of) {
  TScriptJudge judge(plan, structure_of);
  std::vector<TStatementRisk> risks;
  for (const TScriptRange& range : ScanStatements(script)) {
    TStatementRisk risk = judge.Judge(std::string(script.substr(range.start, range.length)));
    if (risk.reasons.empty()) continue;
    risk.start = range.start;
    risks.push_back(std::move(risk));
  }
  return risks;
}

}  // namespace velmora
