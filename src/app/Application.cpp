#include "app/Application.h"

#include "app/SideNames.h"
#include "engines/mysql/DBConnMySQL.h"
#include "util/Errors.h"

namespace velmora {

namespace {

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
      parts_{connections, data, tree, progress, log, editor, clock, runner_},
      chosen_(&DialectRow(kDefaultDialect)),
      dialect_(chosen_->make(parts_)) {}

void TApplication::Choose(EDialect id) {
  if (id == chosen_->id) return;
  chosen_ = &DialectRow(id);
  dialect_ = chosen_->make(parts_);
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
  if (connections.reference != nullptr) CheckComparable(*connections.reference);
  return dialect_->Compare();
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
    if (&row != chosen_ && row.make(parts_)->Reads(table)) return &row;
  return nullptr;
}

void TApplication::RunScript(const std::string& text) {
  runner_.ForgetRun();
  RenewIfLost(*connections.target);
  dialect_->RunScript(text);
}

}  // namespace velmora
