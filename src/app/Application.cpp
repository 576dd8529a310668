// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Application.h"

#include <algorithm>
#include <array>

#include "app/AutomaticDialect.h"
#include "app/SideNames.h"
#include "engines/mysql/DBConnMySQL.h"
#include "util/Errors.h"

namespace velmora {

namespace {

constexpr EDialect kPresumed = EDialect::Exact;  // of Automatic, until the target is known

constexpr std::array kUnknownLanguage = {1064, 4161};  // a syntax error, and MariaDB's unknown type

// Ends a comparison that has begun in a dialect that does not fit the target.
struct TOtherDialectFits {
  TDialectChoice choice;
};

std::string DialectLineOf(const TDialectRow& used, const std::string& why) {
  return std::string("Dialect: ") + used.word + (why.empty() ? "" : " (automatic: " + why + ")");
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

}  // namespace

TApplication::TApplication(TProgress& progress, TScriptEditor& editor, TMessageLog& log, const TClock& clock)
    : runner_(connections, editor, progress),
      parts_{connections, data, tree, progress, log, editor, clock, runner_, use_},
      chosen_(&DialectRow(kDefaultDialect)) {
  use_.logged_in = [this] {
    if (chosen_->id != EDialect::Automatic) return;
    const TDialectChoice choice = DialectFor(*connections.target);
    if (choice.dialect != used_->id) throw TOtherDialectFits{choice};
    Use(choice.dialect, choice.reason);
  };
  Use(kPresumed, {});
}

void TApplication::Choose(EDialect id) {
  if (id == chosen_->id) return;
  chosen_ = &DialectRow(id);
  Use(id == EDialect::Automatic ? kPresumed : id, {});
}

void TApplication::Use(EDialect id, const std::string& why) {
  why_ = why;
  use_.note = why.empty() ? std::string() : DialectLineOf(DialectRow(id), why);
  if (used_ != nullptr && used_->id == id) return;
  used_ = &DialectRow(id);
  dialect_ = used_->make(parts_);
}

void TApplication::Settle() {
  if (chosen_->id != EDialect::Automatic || connections.target == nullptr) return;
  const TDialectChoice choice = DialectFor(*connections.target);
  Use(choice.dialect, choice.reason);
}

std::string TApplication::DialectLine() const { return DialectLineOf(*used_, why_); }

void TApplication::Take(const TComparisonWishes& wishes) {
  wishes_ = wishes;
  dialect_->Take(wishes);
}

void TApplication::OpenTask(std::unique_ptr<TDBConn> reference, std::unique_ptr<TDBConn> target) {
  connections.reference = std::move(reference);
  connections.target = std::move(target);
  connections.reference->Connect();
  connections.target->Connect();
}

void TApplication::TakeTask(TTaskConnections pair) { connections = std::move(pair); }

std::unique_ptr<TDBConn> TApplication::Compare() {
  tree.Clear();
  data.mtActions.Clear();
  if (chosen_->id == EDialect::Automatic) Use(kPresumed, why_);  // which asks as soon as the target is connected
  if (connections.reference != nullptr) CheckComparable(*connections.reference, dialect_->Traits().maps_foreign);
  try {
    return dialect_->Compare();
  } catch (const TOtherDialectFits& other) {
    Use(other.choice.dialect, other.choice.reason);
    CheckComparable(*connections.reference, dialect_->Traits().maps_foreign);
    dialect_->Take(wishes_);
    return dialect_->Compare();
  }
}

TStringList TApplication::ChoiceLog() const { return use_.note.empty() ? TStringList() : TStringList{use_.note}; }

TStringList TApplication::Log() const {
  TStringList lines = ChoiceLog();
  const TStringList& own = dialect_->ActionLog();
  lines.insert(lines.end(), own.begin(), own.end());
  return lines;
}

void TApplication::Forget() {
  data.mtActions.Clear();
  tree.Clear();
  dialect_->Forget();
}

const TDialectRow* TApplication::DialectThatReads() {
  const std::string table = dialect_->TableUnderWay();
  if (table.empty()) return nullptr;
  for (const TDialectRow& row : Dialects())
    if (&row != used_ && row.make != nullptr && row.make(parts_)->Reads(table)) return &row;
  return nullptr;
}

const TDialectRow* TApplication::DialectThatFits() {
  if (!unknown_language_ || !connections.target->GetConnected()) return nullptr;
  const TDialectRow& fitting = DialectRow(DialectFor(*connections.target).dialect);
  return &fitting == used_ ? nullptr : &fitting;
}

void TApplication::RunScript(const std::string& text) {
  runner_.ForgetRun();
  unknown_language_ = false;
  RenewIfLost(*connections.target);
  try {
    dialect_->RunScript(text, Care);
  } catch (const EMySqlException& error) {
    unknown_language_ = std::ranges::find(kUnknownLanguage, error.Number()) != kUnknownLanguage.end();
    throw;
  }
}

}  // namespace velmora
