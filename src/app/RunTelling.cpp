#include "app/RunTelling.h"

#include <algorithm>

#include "app/FaultHints.h"
#include "app/SideNames.h"
#include "util/Counted.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr std::size_t kListedStatements = 20;
constexpr std::size_t kShownChars = 120;

std::string NameOf(TDBConn& target) {
  std::string name;
  target.GetDisplayName(name);
  return name + SocketOf(target);
}

// "line 3, column 1" of a place in the script, counting characters from 1.
std::string PlaceIn(const std::string& script, std::size_t start) {
  const std::string_view before = std::string_view(script).substr(0, start);
  const std::size_t line_start = before.rfind('\n') == std::string_view::npos ? 0 : before.rfind('\n') + 1;
  const auto line = 1 + std::count(before.begin(), before.end(), '\n');
  return Format("line %d, column %d", line, CharCount(before.substr(line_start)) + 1);
}

// Nothing is open where the connection was lost with nothing under way.
std::string WhatLossLeavesOpen(const TRunReport& report, const std::string& hint) {
  if (!hint.empty()) return ": " + hint;
  if (report.failed) return ": whether that statement took effect is not known";
  return report.committing ? ": whether the commit took effect is not known" : "";
}

// Of the statements that ran before the failure, of which there are some.
std::string ForceLine(const TRunReport& report) {
  const std::size_t count = report.InForce();
  const bool unknown = report.CommitUnknown();
  const std::string ran = Format("%d of %d statements ran before it", report.executed, report.statements.size());
  if (count == 0)
    return ran + (unknown ? ", and whether they are in force is not known"
                          : " and were rolled back; tables without transactions keep what was done to them");
  if (count == report.executed)
    return ran + " and are in force: the server commits each change of structure at once, with all around it";
  return ran + Format("; the first %d are in force, ", count) +
         (unknown ? "and whether the others are is not known" : "the others were rolled back");
}

void AddWhatIsInForce(const TRunReport& report, TStringList& lines) {
  if (report.executed == 0) {
    lines.push_back(report.lost ? "no statement ran before it" : "no statement ran before it: the target is as it was");
    return;
  }
  lines.push_back(ForceLine(report));
  const std::size_t count = report.InForce();
  const std::size_t from = count > kListedStatements ? count - kListedStatements : 0;
  if (from > 0) lines.push_back(Format("  (the first %d are not listed)", from));
  for (std::size_t i = from; i < count; ++i)
    lines.push_back(Format("  %d: %s", i + 1, ShownStatement(report.statements[i].text)));
}

}  // namespace

TStringList FailureLines(TDBConn& target, const TRunReport& report, const std::string& script,
                         const std::string& error) {
  TStringList lines;
  if (report.failed) {
    const TScriptStatement& statement = report.statements[*report.failed];
    lines.push_back(Format("statement %d of %d failed at %s: %s", *report.failed + 1, report.statements.size(),
                           PlaceIn(script, statement.start), ShownStatement(statement.text)));
  }
  lines.push_back(error);
  if (report.lost)
    lines.push_back(Format("the connection to the target %s is lost", NameOf(target)) +
                    WhatLossLeavesOpen(report, PacketHint(target, report)));
  AddWhatIsInForce(report, lines);
  return lines;
}

std::string SuccessLine(TDBConn& target, const TRunReport& report) {
  return Format("%s ran on %s.", Counted(report.executed, "statement"), NameOf(target));
}

std::string ShownStatement(const std::string& statement) {
  const TStringList lines = LinesOf(statement);
  const std::string line = lines.empty() ? statement : Trim(lines.front());
  std::string shown = CutChars(line, kShownChars);
  std::replace_if(
      shown.begin(), shown.end(), [](char c) { return static_cast<unsigned char>(c) < ' ' || c == 0x7F; }, '?');
  return shown.size() < line.size() ? shown + "..." : shown;
}

}  // namespace velmora
