#include "app/Application.h"

#include <set>

#include "app/RunTelling.h"
#include "app/SideNames.h"
#include "core/CreationTexts.h"
#include "core/Meta.h"
#include "engines/mysql/DBConnMySQL.h"
#include "exact/plan/ScriptSafety.h"
#include "mysqltext/Lexer.h"
#include "util/Errors.h"
#include "util/Format.h"

namespace velmora {

namespace {

std::string BuiltText(TDBConn* conn, const std::string& table) {
  std::string text;
  if (conn != nullptr && conn->meta().FindTable(table)) conn->meta().BuildCreateTable(table, nullptr, text);
  return text;
}

std::string UnsafeLine(const TChange& change) { return change.table + ": " + change.LogText() + ": " + change.unsafe; }

// Every run of white space as one blank.
std::string OnOneLine(const std::string& text) {
  std::string line;
  for (const char c : text) {
    const bool blank = c == ' ' || (c >= '\t' && c <= '\r');
    if (!blank)
      line += c;
    else if (!line.empty() && line.back() != ' ')
      line += ' ';
  }
  return line;
}

// What made the run fail matters more than an error of this.
void RestoreChecks(TDBConn& target, const std::string& checks) {
  try {
    target.ExecSQL("set foreign_key_checks = " + checks);
  } catch (const EVelmora&) {
  }
}

// Only asking tells whether a server has hung up.
void RenewIfLost(TDBConn& target) {
  if (dynamic_cast<TDBConnMySQL*>(&target) == nullptr) return;
  try {
    TVariant alive;
    if (target.GetConnected()) target.GetResultSQL("select 1", alive);
  } catch (const EVelmora&) {
    if (target.GetConnected()) throw;
  }
  if (!target.GetConnected()) target.Connect();
}

bool ReadsExactly(TDBConn* conn, const std::string& table) {
  auto* texts = dynamic_cast<TCreationTexts*>(conn);
  if (texts == nullptr) return false;
  if (!conn->GetConnected()) conn->Connect();
  std::string text;
  texts->PrepareExactTexts();
  texts->ShowCreateTable(table, text);
  ReadTableText(text);
  return true;
}

}  // namespace

TApplication::TApplication(TProgress& progress, TScriptEditor& editor, TMessageLog& log, const TClock& clock)
    : sync(connections, data, tree, progress, log),
      exact(connections, data, tree, progress, log),
      editor_(editor),
      clock_(clock),
      generator_(connections, data, editor, progress, clock),
      runner_(connections, editor, progress) {}

void TApplication::OpenTask(std::unique_ptr<TDBConn> reference, std::unique_ptr<TDBConn> target) {
  connections.reference = std::move(reference);
  connections.target = std::move(target);
  connections.reference->Connect();
  connections.target->Connect();
}

void TApplication::TakeTask(TTaskConnections pair) {
  connections.reference = std::move(pair.reference);
  connections.target = std::move(pair.target);
}

void TApplication::Compare() {
  tree.Clear();
  data.mtActions.Clear();
  if (connections.reference != nullptr) CheckComparable(*connections.reference);
  if (Exact()) {
    exact.Compare();
    return;
  }
  for (TDBConn* conn : {connections.reference.get(), connections.target.get()})
    if (auto* texts = dynamic_cast<TCreationTexts*>(conn)) texts->PrepareExactTexts(false);
  sync.SetDatabases(connections.reference.get(), connections.target.get());
  sync.Compare();
}

void TApplication::Forget() {
  data.mtActions.Clear();
  tree.Clear();
  exact.Forget();
}

bool TApplication::Identical() const { return Exact() ? exact.Identical() : data.mtActions.Empty(); }

bool TApplication::TablesIdentical() const { return Exact() ? exact.TablesIdentical() : data.mtActions.Empty(); }

const TStringList& TApplication::ActionLog() const { return Exact() ? exact.ActionLog : sync.ActionLog; }

const std::string& TApplication::TableUnderWay() const {
  return Exact() ? exact.TableUnderWay() : sync.TableUnderWay();
}

bool TApplication::TargetLost() const { return Exact() ? exact.TargetLost() : sync.TargetLost(); }

bool TApplication::ExactDialectReads() {
  const std::string table = TableUnderWay();
  if (Exact() || table.empty()) return false;
  try {
    return ReadsExactly(connections.reference.get(), table) && ReadsExactly(connections.target.get(), table);
  } catch (const EAbort&) {
    throw;
  } catch (const EVelmora&) {
    return false;
  }
}

TStringList TApplication::UnsafeActions() const {
  TStringList actions;
  if (!Exact()) return actions;
  for (const TChange& change : exact.Changes())
    if (!change.unsafe.empty()) actions.push_back(UnsafeLine(change));
  return actions;
}

// A statement of the plan is told by the actions that it makes.
TStringList TApplication::UnsafeStatements(const std::string& script) {
  TStringList planned, others;
  if (!Exact()) return planned;
  const std::vector<TPlanStatement> plan = exact.Plan();
  std::set<int> actions;
  for (const TStatementRisk& risk :
       ScriptRisks(script, plan, [this](const std::string& table) { return TargetStructure(table); })) {
    if (risk.planned != nullptr && !risk.planned->unsafe.empty())
      actions.insert(risk.planned->actions.begin(), risk.planned->actions.end());
    else
      others.push_back(Format("line %d: %s: %s", LineOf(script, risk.start), ShownStatement(OnOneLine(risk.text)),
                              JoinList(risk.reasons, "; ")));
  }
  for (const TChange& change : exact.Changes())
    if (!change.unsafe.empty() && actions.contains(change.id)) planned.push_back(UnsafeLine(change));
  planned.insert(planned.end(), others.begin(), others.end());
  return planned;
}

// As the target has the table now, if it can be asked.
std::optional<std::string> TApplication::TargetStructure(const std::string& table) {
  TDBConn* target = connections.target.get();
  auto* texts = dynamic_cast<TCreationTexts*>(target);
  std::string text = exact.TargetText(table);
  if (texts != nullptr && target->GetConnected()) {
    try {
      texts->PrepareExactTexts();
      texts->ShowCreateTable(table, text);
    } catch (const EAbort&) {
      throw;
    } catch (const EVelmora&) {
      return std::nullopt;
    }
  }
  return text.empty() ? std::nullopt : std::optional(text);
}

bool TApplication::ReferenceIsEmpty() const {
  if (Exact()) return exact.ReferenceIsEmpty();
  TStringList tables;
  if (connections.reference != nullptr) connections.reference->meta().TableNames(tables);
  return tables.empty();
}

std::vector<TRowFinding> TApplication::CheckRows(int seconds) {
  return Exact() ? exact.CheckRows(seconds) : std::vector<TRowFinding>();
}

void TApplication::TableTexts(const std::string& table, std::string& reference, std::string& target) {
  reference = Exact() ? exact.ReferenceText(table) : BuiltText(connections.reference.get(), table);
  target = Exact() ? exact.TargetText(table) : BuiltText(connections.target.get(), table);
}

TLinePair TApplication::MarkedLines(const std::string& reference, const std::string& target) const {
  return Exact() ? DifferingLines(reference, target, exact.Equivalences) : TLinePair();
}

void TApplication::GenerateScript() {
  if (Exact())
    exact.GenerateScript(editor_, clock_);
  else
    generator_.GenerateScript();
}

TScriptPieces TApplication::Statements(const std::string& text) const { return Splitter()(text); }

void TApplication::RunScript(const std::string& text) {
  runner_.ForgetRun();
  RenewIfLost(*connections.target);
  if (Exact())
    RunExactScript(text);
  else
    runner_.RunScript(text, true);
}

// A script that ends early has not come to the line that puts the checks back.
void TApplication::RunExactScript(const std::string& text) {
  TDBConn& target = *connections.target;
  if (auto* texts = dynamic_cast<TCreationTexts*>(&target)) texts->PrepareExactTexts();
  TVariant checks;
  target.GetResultSQL("select @@foreign_key_checks", checks);
  try {
    runner_.RunScript(text, true, SplitExactScript);
  } catch (...) {
    if (target.GetConnected()) RestoreChecks(target, VarToText(checks));
    throw;
  }
}

}  // namespace velmora
