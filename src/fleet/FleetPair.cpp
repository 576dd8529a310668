// SPDX-License-Identifier: GPL-3.0-or-later
#include "fleet/FleetPair.h"

#include <map>
#include <utility>
#include <vector>

#include "app/SideNames.h"
#include "engines/mysql/OfflineEngine.h"
#include "exact/run/StructureDigest.h"
#include "fleet/FleetTargets.h"
#include "fleet/Lanes.h"
#include "fleet/OwnName.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kOldServer[] =
    "%s is older than MySQL 5.0, and the exact dialect is the one for many targets: compare this one alone";
constexpr char kEmpty[] = "%s; if that is meant, give --allow-empty-reference";
constexpr std::size_t kIdLength = 12;

// What tells differences from others, one text after the other.
class TTold {
 public:
  void Add(const std::string& text) { (text_ += std::to_string(text.size()) + ":") += text; }
  void Add(const TStringList& texts) {
    for (const std::string& text : texts) Add(text);
    text_ += ';';
  }
  std::string Id() const { return TextDigest(text_).substr(0, kIdLength); }

 private:
  std::string text_;
};

void AddActions(const TApplication& app, TTold& told) {
  const std::map<int, std::string> unsafe = app.Dialect().UnsafeActions();
  for (const TActionRow* row = app.data.mtActions.First(); row != nullptr; row = app.data.mtActions.After(row->id)) {
    const auto reason = unsafe.find(row->id);
    told.Add({std::to_string(row->action_id), row->table, row->item, row->description,
              reason == unsafe.end() ? "" : reason->second});
  }
}

// The first two lines of a script say when and of what it was made.
constexpr std::size_t kOriginLines = 2;

// The lines of the header that tell of structures go to `structure`; what is left has none that tells the pair.
std::string WithoutHeader(const TStringList& lines, std::string& structure) {
  std::string script;
  bool in_header = true;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    in_header = in_header && lines[i].starts_with("--");
    if (in_header && i < kOriginLines) continue;
    (in_header && lines[i].starts_with(kStructureLine) ? structure : script) += lines[i] + "\r\n";
  }
  return script;
}

void AddFindings(const TFindings& findings, TTold& told) {
  for (const TSkippedTable& table : findings.skipped) told.Add({table.side, table.table, table.reason});
  for (const TObjectDifference& object : findings.objects) told.Add({object.kind, object.name, object.difference});
  told.Add(findings.not_followed);
  told.Add(findings.not_granted);
  for (const TKindsNotSeen& of : findings.not_seen) told.Add(TStringList{of.Text()});
}

}  // namespace

TFleetPair::TFleetPair(std::unique_ptr<TDBConn> reference, std::unique_ptr<TDBConn> target, const TFleetWishes& wishes)
    : wishes_(wishes), log_(SystemClock(), progress_), app_(progress_, editor_, log_, SystemClock()) {
  app_.Take(wishes.comparison);
  app_.TakeTask({std::move(reference), std::move(target)});
}

void TFleetPair::Compare() {
  try {
    if (dynamic_cast<TDBConnMySQLOffline*>(&Target()) != nullptr) Target().Connect();
    app_.Compare();
  } catch (const EMySqlException& error) {
    const bool in_login = !Target().GetConnected() && app_.Dialect().TableUnderWay().empty();
    if (in_login && IsUnreachable(error)) throw EUnreachable(error.what());
    throw;
  }
  if (dynamic_cast<TExactDialect*>(&app_.Dialect()) == nullptr) RaiseError(Format(kOldServer, ServerText(Target())));
  if (wishes_.for_script && !wishes_.allow_empty_reference && app_.Dialect().ReferenceIsEmpty())
    RaiseError(Format(kEmpty, EmptyReferenceText(*app_.connections.reference)));
  const std::string refusal = app_.Dialect().Refusal();
  if (wishes_.for_script && !refusal.empty()) RaiseError(refusal);
}

TFleetFindings TFleetPair::Findings() {
  TFleetFindings of;
  TDialect& dialect = app_.Dialect();
  const TFindings findings = dialect.Findings();
  const std::string database = DatabaseName(Target());
  TTold told;
  AddActions(app_, told);
  AddFindings(findings, told);
  of.changes = app_.data.mtActions.Count();
  of.tables_identical = dialect.TablesIdentical();
  of.reaches = findings.skipped.empty() && findings.differences_left == 0;
  for (const TRemark& remark : dialect.Remarks(nullptr)) of.remarks.push_back(remark.text);
  if (of.changes > 0) {
    dialect.GenerateScript();
    of.script = WithoutHeader(editor_.Lines(), of.structure);
    const TScriptPieces pieces = dialect.Statements(editor_.Text());
    of.statements = pieces.statements.size();
    for (const TScriptStatement& statement : pieces.statements) {
      const std::string bare = WithOwnNameAs("", statement.text, database);
      if (bare != statement.text) of.script = StrReplace(of.script, statement.text, bare);
      told.Add(bare);
    }
    of.unsafe = dialect.UnsafeActions().size();
    of.unsafe_lines = dialect.UnsafeStatements(editor_.Text());
  }
  of.id = told.Id();
  return of;
}

}  // namespace velmora
