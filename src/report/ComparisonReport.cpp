// SPDX-License-Identifier: GPL-3.0-or-later
#include "report/ComparisonReport.h"

#include <algorithm>
#include <map>
#include <set>

#include "app/SideNames.h"
#include "engines/mysql/OfflineEngine.h"
#include "exact/objects/ShownView.h"
#include "mysqltext/ScriptFolder.h"
#include "util/Counted.h"
#include "util/Dates.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"
#include "util/Version.h"

namespace velmora {

namespace {

constexpr char kNoDifferences[] =
    "A report is made of a comparison in the exact dialect, and this was one in the %s dialect: give --dialect exact";
constexpr char kIdentical[] = "Databases are identical.";
constexpr char kSkipped[] = "Table %s of the %s could not be compared: %s";
constexpr char kObject[] = "%s %s: %s";
constexpr char kLeftOut[] = "Left out by the selection: %s";
constexpr char kUnmade[] = "No form in MySQL: %s";

std::string Verdict(const std::vector<TReportPart>& parts) {
  std::size_t tables = 0, objects = 0, differences = 0, unsafe = 0;
  for (const TReportPart& part : parts) {
    ++(OfTable(part.lines.front().difference.kind) ? tables : objects);
    differences += part.lines.size();
    unsafe += static_cast<std::size_t>(std::ranges::count(part.lines, EReportRule::DataLoss, &TReportLine::rule));
  }
  TStringList where;
  if (tables > 0) where.push_back(Counted(tables, "table"));
  if (objects > 0) where.push_back(Counted(objects, tables == 0 ? "object" : "other object"));
  const std::string all = Counted(differences, "difference") + " in " + JoinList(where, " and ");
  return unsafe == 0 ? all : all + Format(", %d of them unsafe", unsafe);
}

TStringList FindingsOf(const TDialect& dialect) {
  const TFindings findings = dialect.Findings();
  TStringList lines = findings.not_followed;
  for (const TSkippedTable& table : findings.skipped)
    lines.push_back(Format(kSkipped, table.table, table.side, table.reason));
  for (const TKindsNotSeen& kinds : findings.not_seen) lines.push_back(kinds.Text());
  lines.insert(lines.end(), findings.not_granted.begin(), findings.not_granted.end());
  for (const TObjectDifference& object : findings.objects)
    lines.push_back(Format(kObject, object.kind, object.name, object.difference));
  for (const TUnmadeElement& element : findings.unmade) lines.push_back(Format(kUnmade, element.Text()));
  if (findings.left_out.Any()) lines.push_back(Format(kLeftOut, findings.left_out.Text()));
  return lines;
}

class TCollector {
 public:
  explicit TCollector(TApplication& app) : app_(app), dialect_(app.Dialect()), locks_(dialect_.ActionLocks()) {}

  std::vector<TReportPart> Collect() {
    for (const TDifference& difference : dialect_.Differences()) Add(difference);
    for (TReportPart& part : parts_) Fill(part);
    return std::move(parts_);
  }

 private:
  void Add(const TDifference& difference) {
    const bool of_table = OfTable(difference.kind);
    const std::string title =
        of_table ? difference.table : std::string(KindWord(difference.kind)) + " " + difference.item;
    const auto [place, is_new] = places_.emplace(std::pair(of_table, title), parts_.size());
    if (is_new) parts_.push_back({title, {}, {}, {}, {}, {}, {}});
    TReportLine& line = parts_[place->second].lines.emplace_back(TReportLine{difference, RuleOf(difference)});
    line.scripted = app_.data.mtActions.Find(difference.id) != nullptr;
    if (line.difference.text.ends_with(difference.detail)) line.difference.detail.clear();
  }

  EReportRule RuleOf(const TDifference& difference) const {
    if (!difference.unsafe.empty()) return EReportRule::DataLoss;
    const auto lock = locks_.find(difference.id);
    const bool makes_anew = lock != locks_.end() && lock->second.is >= ELockClass::Rebuild &&
                            lock->second.is != ELockClass::ReadersOnly && lock->second.is != ELockClass::Unknown;
    return makes_anew ? EReportRule::Rebuild : EReportRule::Difference;
  }

  void Fill(TReportPart& part) {
    const TDifference& first = part.lines.front().difference;
    if (OfTable(first.kind))
      dialect_.TableTexts(first.table, part.reference, part.target);
    else
      dialect_.ObjectTexts(first.id, part.reference, part.target);
    if (first.kind == EDifferenceKind::View)
      for (std::string* text : {&part.reference, &part.target}) *text = ShownView(*text);
    part.rows = dialect_.Aligned(part.reference, part.target);
    FindPlace(part, first);
  }

  void FindPlace(TReportPart& part, const TDifference& difference) const {
    auto* file = dynamic_cast<TDBConnMySQLOffline*>(app_.connections.reference.get());
    if (file == nullptr) return;
    const TOfflineConnection& script = file->GetConnectionObject();
    part.stands = OfTable(difference.kind) ? script.PlaceOf(difference.table)
                                           : script.PlaceOf(std::string(KindWord(difference.kind)), difference.item);
    const bool has_place = part.stands.line > 0 || IsFolder(script.Path());
    part.place = has_place ? part.stands : TScriptPlace{script.Name(), 1};
  }

  TApplication& app_;
  TDialect& dialect_;
  std::map<int, TActionLock> locks_;
  std::vector<TReportPart> parts_;
  std::map<std::pair<bool, std::string>, std::size_t> places_;  // of these, by title
};

}  // namespace

TReport CollectReport(TApplication& app, const std::string& script, const TClock& clock) {
  if (!app.Dialect().Traits().ticked_actions) RaiseError(Format(kNoDifferences, std::string(app.Used().word)));
  TReport report;
  report.reference = SideName(*app.connections.reference);
  report.target = SideName(*app.connections.target);
  report.dialect = app.DialectLine();
  report.made = AppTitle() + ", " + ShortDateTimeText(clock.Now());
  report.identical = app.Dialect().Identical();
  report.parts = TCollector(app).Collect();
  report.findings = FindingsOf(app.Dialect());
  if (!report.parts.empty())
    report.verdict = Verdict(report.parts);
  else
    report.verdict = report.identical ? kIdentical : "What differs is left alone, or could not be compared";
  if (!report.parts.empty()) report.script = StrReplace(script, "\r\n", "\n");
  report.log = app.Log();
  return report;
}

std::string TReportPart::Place() const {
  return stands.line == 0 ? std::string() : Format("%s: line %d", stands.file, stands.line);
}

std::string_view RuleId(EReportRule rule) {
  constexpr std::array<std::string_view, 3> kIds = {"data-loss", "rebuild", "difference"};
  return kIds[static_cast<std::size_t>(rule)];
}

char SignOf(EDifferenceState state) {
  constexpr std::string_view kSigns = "+~-";
  return kSigns[static_cast<std::size_t>(state)];
}

}  // namespace velmora
