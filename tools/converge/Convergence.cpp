// SPDX-License-Identifier: GPL-3.0-or-later
#include "converge/Convergence.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <set>

#include "app/Application.h"
#include "app/ExactDialect.h"
#include "converge/KeyRules.h"
#include "converge/ObjectGenerator.h"
#include "converge/SchemaGenerator.h"
#include "converge/SchemaMySql.h"
#include "converge/SchemaTaken.h"
#include "exact/compare/PrintedTable.h"
#include "exact/compare/Renames.h"
#include "exact/compare/ServerLanguage.h"
#include "exact/plan/PlanApply.h"
#include "exact/plan/PlanClauses.h"
#include "exact/plan/ScriptSafety.h"
#include "support/LiveDatabase.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora::testing {

namespace {

constexpr char kLoadingMode[] =
    "set names utf8mb4, character_set_results = null, sql_mode = 'STRICT_ALL_TABLES,NO_ENGINE_SUBSTITUTION', time_zone "
    "= '+00:00', "
    "foreign_key_checks = 0, group_concat_max_len = 1048576";

// --- Rows

// What a column holds: its values as texts, sorted.
using TValues = std::vector<std::string>;
using TRows = std::map<std::string, std::map<std::string, TValues>>;  // by table and column

// The same value may be written otherwise in a wider type: 1.5 and 1.50, 2005-01-01 and 2005-01-01 00:00:00.
std::string Plain(const std::string& hex) {
  std::string text;
  for (std::size_t i = 0; i + 1 < hex.size(); i += 2)
    text += static_cast<char>(std::strtol(hex.substr(i, 2).c_str(), nullptr, 16));
  constexpr std::string_view kMidnight = " 00:00:00";
  const bool fraction = text.find('.') != std::string::npos;
  if (fraction) text.erase(text.find_last_not_of('0') + 1);
  if (text.ends_with('.')) text.pop_back();
  if (text.ends_with(kMidnight)) text.erase(text.size() - kMidnight.size());
  const std::size_t zeros = text.find_first_not_of('0');
  if (text.size() > 1 && zeros != 0 && text.find_first_not_of("0123456789.") == std::string::npos)
    text.erase(0, std::min(zeros, text.size() - 1));
  return text;
}

std::string ValueText(const TColumnModel& column) {
  const std::string name = SqlName(column.name);
  switch (column.type.family) {
    case EFamily::Bit:
      return "hex(cast(" + name + " + 0 as char))";
    case EFamily::Bytes:
    case EFamily::LongBytes:
    case EFamily::Shape:
    case EFamily::Vector:
      return "hex(hex(" + name + "))";
    default:
      return "hex(convert(" + name + " using utf8mb4))";
  }
}

TValues ReadValues(TLiveDatabase& database, const TTableModel& table, const TColumnModel& column) {
  TValues values;
  const std::string list = Answer(database.Connection(), "select group_concat(coalesce(" + ValueText(column) +
                                                             ", 'N') separator ',') from " + SqlName(table.name));
  for (std::size_t at = 0; at <= list.size();) {
    const std::size_t end = std::min(list.find(',', at), list.size());
    const std::string value = list.substr(at, end - at);
    values.push_back(value == "N" ? "null" : "=" + Plain(value));
    at = end + 1;
  }
  std::sort(values.begin(), values.end());
  return values;
}

// --- The whole

class TRun {
 public:
  TRun(std::uint64_t seed, const TConvergenceWishes& wishes, TPrivateServer& reference, TPrivateServer& target)
      : seed_(seed),
        generator_(seed),
        wishes_(wishes),
        across_(&reference != &target),
        reference_(Format("converge_reference%d", seed), reference),
        target_(Format("converge_target%d", seed), target) {}

  TConvergence Go();

 private:
  void MakeSchemas();
  void MakeObjectsOf(const TSchemaModel& first, TLiveDatabase& of_first, const TSchemaModel& second,
                     TLiveDatabase& of_second);
  void WishRenames();
  TTableModel Renamed(TTableModel table) const;
  bool RowsAreNotAsked(const TTableModel& table);
  void Settle(TLiveDatabase& database, TSchemaModel& schema);
  void CheckSkipped();
  void CheckLeftAlone();
  bool NothingLeft();
  void Make(TLiveDatabase& database, TSchemaModel& schema);
  void LoadRows();
  void ClearTheWay();
  bool ClearSomeOfTheWay();
  void LoadRows(const TTableModel& table);
  TExactSync& Exact() { return dynamic_cast<TExactDialect&>(app_.Dialect()).sync; }
  bool TakesRows(const std::string& table);
  void ReadRows();
  void CheckRows();
  void CheckTouched();
  void Verify();
  void Settle();
  bool LacksKeys();
  bool HidesKey();
  void CompareUnderRules();
  void FindHistograms();
  void CheckHistograms();
  void CheckGuard();
  void CheckAfter(TSchema after);
  TSchema Proved();
  std::string TargetText(const std::string& table);
  void Miss(const std::string& fault) { result_.fault += fault + "\n"; }

  std::uint64_t seed_;
  TSchemaGenerator generator_;
  TConvergenceWishes wishes_;
  bool across_;  // two servers
  TSchemaModel wanted_;
  TSchemaModel there_;
  // Names of their own: servers leave files behind that keep a database of the name from going.
  TLiveDatabase reference_;
  TLiveDatabase target_;
  TKeyRules rules_{seed_, reference_, target_};
  TObjectGenerator object_generator_{seed_, generator_};
  std::set<std::string> followed_by_nobody_;  // objects, as "view v"
  std::set<std::string> left_alone_;          // others
  std::vector<THistogram> histograms_;        // of columns that no statement names
  std::vector<TRenameChange> renames_;
  TNoProgress progress_;
  TLineEditor editor_;
  TLineLog log_{SystemClock(), progress_};
  TApplication app_{progress_, editor_, log_, SystemClock()};
  std::set<std::string> loaded_;   // tables with rows
  std::set<std::string> skipped_;  // tables that were left alone
  std::size_t unreadable_ = 0;     // tables that the server misprints
  bool statements_run_ = false;
  TRows rows_;
  TConvergence result_;
};

void TRun::MakeSchemas() {
  TRandom& random = generator_.random();
  if (random.Chance(20)) target_.Run("alter database character set latin1");
  const bool forwards = random.Chance(50);
  TSchemaModel& first = forwards ? wanted_ : there_;
  TSchemaModel& second = forwards ? there_ : wanted_;
  TLiveDatabase& of_first = forwards ? reference_ : target_;
  TLiveDatabase& of_second = forwards ? target_ : reference_;
  first = generator_.Schema(wishes_.tables > 0 ? wishes_.tables : 3 + random.Below(4));
  Settle(of_first, first);
  Make(of_first, first);
  second = first;
  generator_.Mutate(second);
  if (wishes_.renames) generator_.Rename(second);
  Settle(of_second, second);
  Make(of_second, second);
  if (wishes_.objects) MakeObjectsOf(first, of_first, second, of_second);
  result_.tables = wanted_.tables.size();
}

void TRun::MakeObjectsOf(const TSchemaModel& first, TLiveDatabase& of_first, const TSchemaModel& second,
                         TLiveDatabase& of_second) {
  std::vector<TObjectModel> objects = object_generator_.Objects(first);
  const auto renames = wishes_.renames ? RenamesBetween(first, second) : std::vector<TRename>();
  const bool renamed_so = std::ranges::any_of(renames, [](const TRename& rename) {
    return rename.OfTable() && (rename.from + rename.to).find('\\') != std::string::npos;
  });
  const auto make = [this, renamed_so](TLiveDatabase& database, std::vector<TObjectModel>& list) {
    result_.parts += list.size();
    result_.dropped += MakeObjects(database, list);
    result_.objects += list.size();
    for (const TObjectModel& object : list)
      if (object.Unreadable() || (renamed_so && object.kind == "trigger" && object.PrintsBackslashNames()))
        followed_by_nobody_.insert(object.kind + " " + object.name);
  };
  make(of_first, objects);
  TObjectGenerator::Follow(renames, objects);
  object_generator_.Mutate(objects, second);
  make(of_second, objects);
}

// Most of what has another name is asked to be renamed; the rest goes and is new. A column's table has to be there.
void TRun::WishRenames() {
  TRandom random(seed_);
  std::set<std::string> gone;
  for (const TRename& rename : RenamesBetween(there_, wanted_)) {
    const bool asked = random.Chance(90) && !gone.contains(rename.table);
    if (asked)
      Exact().Wishes.renames.push_back(ReadRename(rename.Text()));
    else if (rename.OfTable())
      gone.insert(rename.to);
  }
}

// A table under its name after the run, with its columns under theirs.
TTableModel TRun::Renamed(TTableModel table) const {
  for (const TRenameChange& change : renames_)
    if (change.rename.OfTable() && change.rename.from == table.name) table.name = change.rename.to;
  for (const TRenameChange& change : renames_)
    if (TColumnModel* column = change.rename.table == table.name ? table.Find(change.rename.from) : nullptr)
      column->name = change.rename.to;
  return table;
}

// Nobody asks the rows of a table with renames what they say to more than columns that come and go.
bool TRun::RowsAreNotAsked(const TTableModel& table) {
  const auto named = [this](const std::string& name) {
    return std::ranges::any_of(renames_, [&name](const TRenameChange& change) { return change.Table() == name; });
  };
  const std::string name = Renamed(table).name;
  const bool refers = std::ranges::any_of(table.foreign_keys, [&](const TForeignKeyModel& key) {
    const TTableModel* parent = there_.Find(key.parent);
    return named(name) || (parent != nullptr && named(Renamed(*parent).name));
  });
  const bool will_refer = std::ranges::any_of(Exact().Changes(), [&](const TChange& change) {
    const bool key = change.kind == EElement::ForeignKey && !change.new_text.Empty();
    return key && change.table == name && named(change.new_text.ForeignKey().table);
  });
  return refers || will_refer ||
         (named(name) && std::ranges::any_of(Exact().Changes(), [&name](const TChange& change) {
            return change.table == name && change.action != saAddColumn && change.action != saDropColumn;
          }));
}

// Makes of a schema for MariaDB one for the server that there is.
void TRun::Settle(TLiveDatabase& database, TSchemaModel& schema) {
  if (Answer(database.Connection(), "select version()").find("MariaDB") != std::string::npos) return;
  SpeakMySql(schema);
  VaryMySql(schema, generator_.random());
}

void TRun::Make(TLiveDatabase& database, TSchemaModel& schema) {
  database.Run(kLoadingMode);
  const TTakenParts taken = MakeWhatIsTaken(database, schema);
  result_.parts += taken.parts;
  result_.dropped += taken.dropped;
}

// Servers refuse some changes that may lose data only where there are rows.
bool TRun::TakesRows(const std::string& table) {
  return std::ranges::none_of(Exact().Changes(), [&table](const TChange& change) {
    const bool changes = change.action == saModifyColumn || change.action == saChangeTableType;
    return change.table == table && changes && !change.unsafe.empty();
  });
}

void TRun::LoadRows(const TTableModel& table) {
  constexpr std::size_t kRows = 2;
  std::string names;
  for (const TColumnModel& column : table.columns)
    if (!column.Generated()) names += (names.empty() ? "" : ", ") + SqlName(column.name);
  for (std::size_t row = 0; row < kRows; ++row) {
    std::string values;
    for (const TColumnModel& column : table.columns) {
      if (column.Generated()) continue;
      std::string value = column.type.samples[row];
      if (column.auto_increment) value = std::to_string(1 + 4 * row);
      if (!column.not_null && generator_.random().Chance(15)) value = "null";
      values += (values.empty() ? "" : ", ") + value;
    }
    try {
      target_.Run("insert into " + SqlName(table.name) + " (" + names + ") values (" + values + ")");
    } catch (const EVelmora&) {  // a key of few letters has both rows alike, an enum lacks a letter
      continue;
    }
    loaded_.insert(table.name);
    ++result_.rows;
  }
}

void TRun::LoadRows() {
  for (const TTableModel& table : there_.tables)
    if (TakesRows(Renamed(table).name) && !RowsAreNotAsked(table)) LoadRows(table);
}

// Rows of which is told before the run that they stand in its way, or that nobody knows: a server would refuse it. Rows
// of other tables may have pointed at them.
void TRun::ClearTheWay() {
  while (ClearSomeOfTheWay()) continue;
}

bool TRun::ClearSomeOfTheWay() {
  const std::size_t before = loaded_.size();
  for (const TRowFinding& finding : Exact().CheckRows(0)) {
    for (const TTableModel& table : there_.tables) {
      if (!finding.text.starts_with(table.name + ": ") || loaded_.erase(table.name) == 0) continue;
      result_.rows -= std::stoul(Answer(target_.Connection(), "select count(*) from " + SqlName(table.name)));
      target_.Run("truncate table " + SqlName(table.name));  // runs no triggers
    }
  }
  return loaded_.size() < before;
}

void TRun::ReadRows() {
  std::set<std::string> lossy;
  for (const TChange& change : Exact().Changes())
    if (change.action == saDropTable || change.action == saDropColumn) lossy.insert(change.table + "/" + change.item);
  for (const TTableModel& table : there_.tables) {
    const TTableModel then = Renamed(table);
    if (lossy.contains(then.name + "/") || !loaded_.contains(table.name)) continue;
    for (std::size_t i = 0; i < table.columns.size(); ++i) {
      if (table.columns[i].Generated() || lossy.contains(then.name + "/" + then.columns[i].name)) continue;
      rows_[then.name][then.columns[i].name] = ReadValues(target_, table, table.columns[i]);
    }
  }
}

void TRun::CheckRows() {
  for (const TTableModel& old_table : there_.tables) {
    const TTableModel table = Renamed(old_table);
    for (const TColumnModel& column : table.columns) {
      const auto of_table = rows_.find(table.name);
      if (of_table == rows_.end() || !of_table->second.contains(column.name)) continue;
      const TValues& before = of_table->second[column.name];
      const TValues after = ReadValues(target_, table, column);
      if (after == before) continue;
      Miss(Format("rows of %s.%s changed from %s to %s", table.name, column.name, JoinList(before, ","),
                  JoinList(after, ",")));
    }
  }
}

std::string WithoutReturns(std::string text) {
  std::erase(text, '\r');
  return text;
}

std::string Uncounted(std::string text) {
  const std::size_t at = text.find(" AUTO_INCREMENT=");
  if (at != std::string::npos) text.erase(at, text.find(' ', at + 1) - at);
  return text;
}

// What the text of the script may lose is what its actions may lose; and its words alone, without the plan, tell of no
// statement fewer, and hardly of one more.
void TRun::CheckGuard() {
  const TStringList by_text = app_.Dialect().UnsafeStatements(editor_.Text());
  TStringList by_actions;
  for (const TChange& change : Exact().Changes())
    if (!change.unsafe.empty()) by_actions.push_back(change.table + ": " + change.LogText() + ": " + change.unsafe);
  for (const TObjectChange& change : Exact().ObjectChanges())
    if (!change.unsafe.empty()) by_actions.push_back(change.LogText() + ": " + change.unsafe);
  if (by_text != by_actions) Miss("the script's text is judged otherwise: " + JoinList(by_text, "; "));
  const auto text_of = [this](const std::string& table) {
    const std::string text = Exact().TargetText(table);
    return text.empty() ? std::nullopt : std::optional(text);
  };
  std::set<std::string> by_words;
  for (const TStatementRisk& risk : ScriptRisks(editor_.Text(), {}, text_of))
    by_words.insert(WithoutReturns(risk.text));
  for (const TPlanStatement& statement : Exact().Plan())  // words of new tables do not tell what they do not print
    if (!statement.unsafe.empty() && !by_words.contains(statement.text) && !statement.text.starts_with("CREATE TABLE"))
      Miss("by its words alone this is safe: " + statement.text);
}

// A table that refers to another one may have to let go of its foreign key while that one changes.
void TRun::CheckTouched() {
  for (const TPlanStatement& statement : Exact().Plan()) {
    if (!statement.object.empty()) continue;
    const std::string& table = statement.table;
    const std::string text = Exact().TargetText(table);
    if (Uncounted(text) == Uncounted(Exact().ReferenceText(table)) && text.find("REFERENCES") == std::string::npos)
      Miss("a table that is equal is touched: " + statement.text);
  }
}

std::string TRun::TargetText(const std::string& table) {
  target_.Run("set @letters = @@character_set_results, character_set_results = null");  // as it is compared
  std::string text = Answer(target_.Connection(), "show create table " + SqlName(table));
  target_.Run("set character_set_results = @letters");
  return text;
}

bool IsReadable(const std::string& text) {
  try {
    ReadPrintedTable(text);
    return true;
  } catch (const EVelmora&) {
    return false;
  }
}

// On one server it has everything, but may misprint it.
void TRun::CheckSkipped() {
  for (const TSkippedTable& skipped : Exact().Skipped()) {
    const std::string wanted = Exact().ReferenceText(skipped.table);
    const std::string there = Exact().TargetText(skipped.table);
    if (!statements_run_) skipped_.insert(skipped.table);
    const bool beside = skipped.reason.find("which is skipped") != std::string::npos;
    // Rows make texts differ that were the same before, and unreadable.
    if (!(skipped_.contains(skipped.table) || beside || !IsReadable(wanted)) ||
        (!across_ && !beside && (wanted.empty() || IsReadable(wanted)) && (there.empty() || IsReadable(there))))
      Miss(Format("table %s is skipped: %s\nreference: %s\ntarget: %s", skipped.table, skipped.reason, wanted, there));
  }
  result_.skipped = skipped_.size();
}

// What is left alone before the run, which an object beside another server may be, stays so.
void TRun::CheckLeftAlone() {
  for (const TObjectDifference& object : Exact().Objects()) {
    const std::string name = object.kind + " " + object.name;
    if (across_ && !statements_run_) left_alone_.insert(name);
    const bool beside = std::ranges::any_of(followed_by_nobody_, [&](const std::string& other) {
      return object.difference.ends_with(Format("it names %s, which is left alone", other));
    });
    const bool of_nobody = object.kind == "view" && object.difference.ends_with("has no account on the target");
    if (beside || of_nobody) left_alone_.insert(name);
    if (!followed_by_nobody_.contains(name) && !left_alone_.contains(name))
      Miss(Format("%s is left alone: %s", name, object.difference));
  }
  result_.left_alone = left_alone_.size();
}

// A trigger that nobody follows goes with its table, and is new then.
bool TRun::NothingLeft() {
  return Exact().Changes().empty() && std::ranges::all_of(Exact().ObjectChanges(), [this](const TObjectChange& change) {
           return change.kind == "trigger" && followed_by_nobody_.contains(change.Object());
         });
}

// What the plan makes of the target, by its texts.
TSchema TRun::Proved() {
  TSchema schema;
  const TServerTraits server = ReadServerTraits(Answer(target_.Connection(), "select version()"));
  for (const TTableModel& table : there_.tables)
    if (const std::string text = Exact().TargetText(table.name); IsReadable(text))
      schema.Add(ReadPrintedTable(text));
    else
      ++unreadable_;
  for (const TPlanStatement& statement : Exact().Plan())
    if (statement.object.empty()) ApplyStatement(statement.text, schema, server);
  return schema;
}

void TRun::CheckAfter(TSchema after) {
  TEquivalenceUse use;
  if (skipped_.empty() && after.Tables().size() + unreadable_ != wanted_.tables.size())
    Miss("the proof has another number of tables");
  for (const TTableText& table : after.Tables()) {
    const std::string text = TargetText(table.name);
    if (skipped_.contains(table.name) || !IsReadable(text)) continue;
    const auto changes = CompareTableTexts(ReadPrintedTable(text), table, use);
    if (changes.empty()) continue;
    Miss("the proof has it otherwise than the server: " + changes.front().LogText() + "\n" +
         changes.front().Description() + "\nproof: " + CreationTextOf(table) + "\nserver: " + text);
  }
}

void TRun::Verify() {
  try {
    const std::size_t told = Exact().Objects().size();
    if (Exact().VerifyOnServer() != 0) Miss("the proof on the server finds differences");
    for (std::size_t i = told; i < Exact().Objects().size(); ++i) {
      const TObjectDifference& object = Exact().Objects()[i];
      if (!across_) Miss(Format("%s %s: %s", object.kind, object.name, object.difference));
      if (!statements_run_) result_.refused += Format("%s %s: %s\n", object.kind, object.name, object.difference);
    }
  } catch (const EVelmora& error) {
    Miss(error.what());
  }
}

// Whether it was told before the run that the server will refuse it for a table without a primary key.
bool TRun::LacksKeys() {
  const std::vector<TRowFinding> findings = Exact().CheckRows(0);
  return std::ranges::any_of(findings, [](const TRowFinding& finding) {
    return finding.text.find("sql_require_primary_key") != std::string::npos;
  });
}

// Whether it was told before the run that a key will be refused that no server hides.
bool TRun::HidesKey() {
  return std::ranges::any_of(Exact().CheckRows(0), [](const TRowFinding& finding) {
    return finding.text.find("stands for the primary key") != std::string::npos;
  });
}

// What is left that the server refuses, or of which it makes what is there.
void TRun::Settle() {
  const std::size_t before = Exact().ObjectChanges().size();
  const std::size_t told = Exact().Objects().size();
  Verify();
  result_.settled = before - Exact().ObjectChanges().size() - (Exact().Objects().size() - told);
}

// The server's rules about primary keys stay in force where the plan keeps them; otherwise it has to refuse the plan.
void TRun::CompareUnderRules() {
  rules_.Set();
  app_.Compare();
  if (!LacksKeys()) return;
  try {
    Exact().VerifyOnServer();
    Miss("the server takes tables without a key that were told to be refused");
  } catch (const EVelmora&) {
    rules_.Lift();
    app_.Compare();
  }
}

void TRun::FindHistograms() {
  histograms_ = MakeHistograms(target_, there_, TRandom(seed_));
  std::erase_if(histograms_, [this](const THistogram& histogram) {
    if (Renamed(*there_.Find(histogram.table)).name != histogram.table) return true;
    return std::ranges::any_of(Exact().Plan(), [&histogram](const TPlanStatement& statement) {
      const bool drops = statement.text.starts_with("drop table");
      return statement.table == histogram.table &&
             (drops || statement.text.find(SqlName(histogram.column)) != std::string::npos);
    });
  });
}

void TRun::CheckHistograms() {
  for (const THistogram& histogram : histograms_)
    if (!histogram.IsThere(target_)) Miss("lost the histogram of " + histogram.table + "." + histogram.column);
}

TConvergence TRun::Go() {
  MakeSchemas();
  app_.Choose(EDialect::Exact);
  app_.TakeTask({reference_.NewEngine(), target_.NewEngine()});
  if (wishes_.renames) {
    WishRenames();
    app_.Compare();  // nobody asks whether a table with renames may be without a key
  } else {
    CompareUnderRules();
  }
  renames_ = Exact().Renames();
  result_.renames = renames_.size();
  CheckSkipped();
  if (Exact().DifferencesLeft() != 0) Miss("the proof finds differences left");
  constexpr std::uint64_t kVerifyOneOf = 8;  // it takes as long as all the rest
  TSchema proved = Proved();
  const bool asks_server = across_ && wishes_.objects;  // what it refuses of them has to be left alone
  if ((asks_server || seed_ % kVerifyOneOf == 0) && unreadable_ == 0) Verify();
  CheckLeftAlone();
  const TStringList log = app_.Dialect().ActionLog();
  result_.statements = Exact().Plan().size();
  CheckTouched();
  LoadRows();
  ClearTheWay();
  ReadRows();
  FindHistograms();
  app_.Dialect().GenerateScript();
  const std::string script = editor_.Text();
  const bool hides_key = HidesKey();
  CheckGuard();
  try {
    app_.RunScript(script);
    statements_run_ = true;
    app_.Compare();
    CheckSkipped();
    CheckLeftAlone();
    if (asks_server && !NothingLeft()) Settle();
    const bool nothing_left = NothingLeft();
    const bool all_followed = skipped_.empty() && followed_by_nobody_.empty() && Exact().Objects().empty();
    if (all_followed ? !app_.Dialect().Identical() : !nothing_left)
      Miss("not identical afterwards:\n" + JoinList(app_.Dialect().ActionLog(), "\n"));
    for (const TPlanStatement& statement : Exact().Plan())
      if (!nothing_left) Miss("again: " + statement.text);
    if (!across_) CheckAfter(std::move(proved));
    CheckRows();
    CheckHistograms();
  } catch (const EVelmora& error) {
    if (!hides_key) Miss(error.what());
  }
  if (!result_.fault.empty()) {
    result_.fault += "\n" + JoinList(log, "\n") + "\n" + script;
    for (const TTableModel& table : there_.tables) result_.fault += "\n\n" + CreateStatement(table);
    for (const TTableModel& table : wanted_.tables)
      if (across_) result_.fault += "\n\nreference: " + Exact().ReferenceText(table.name);
    for (const TObjectChange& change : Exact().ObjectChanges())
      result_.fault += "\n\n" + change.LogText() + "\n" + change.Description();
  }
  return result_;
}

void WaitForLooker(const TPrivateServer& server) {
  std::printf("look at it with: mariadb --user=root --socket=%s, then press Enter\n", server.Socket().c_str());
  std::fflush(stdout);
  std::getchar();
}

}  // namespace

TConvergence Converge(std::uint64_t seed, const TConvergenceWishes& wishes, TPrivateServer& reference,
                      TPrivateServer& target) {
  try {
    TRun run(seed, wishes, reference, target);
    TConvergence result = run.Go();
    if (wishes.look && !result.fault.empty()) WaitForLooker(target);
    return result;
  } catch (const std::exception& error) {
    TConvergence result;
    result.fault = error.what();
    return result;
  }
}

}  // namespace velmora::testing
