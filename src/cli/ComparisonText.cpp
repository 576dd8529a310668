#include "cli/ComparisonText.h"

#include <algorithm>
#include <map>
#include <ostream>
#include <sstream>

#include "cli/Command.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kOthersAlone[] = " (views, triggers, routines, events), left alone\n";

using TReasons = std::map<std::string, std::string>;  // why an action is unsafe, by its row's id

// One sign per kind of difference, as in a patch.
char SignOf(TActionIcon icon) {
  switch (icon) {
    case kIconNew:
    case kIconNewTable:
      return '+';
    case kIconObsolete:
    case kIconObsoleteTable:
      return '-';
    default:
      return '~';
  }
}

// The log text of a whole table's action, whose node shows the table's name alone.
std::string TopText(const TApplication& app, const TActionNode& node) {
  const TActionRow* row = node.id.empty() ? nullptr : app.data.mtActions.Find(StrToInt(node.id));
  return row == nullptr ? node.text : SyncAction(row->action_id).LogText(node.text, row->item);
}

TReasons Reasons(const TApplication& app) {
  TReasons reasons;
  if (app.dialect == EDialect::Exact)
    for (const TChange& change : app.exact.Changes())
      if (!change.unsafe.empty()) reasons.emplace(std::to_string(change.id), change.unsafe);
  return reasons;
}

void PrintReason(const TReasons& reasons, const TActionNode& node, const char* indent, std::ostream& out) {
  if (const auto found = reasons.find(node.id); found != reasons.end())
    out << indent << "! unsafe: " << ShownText(found->second) << '\n';
}

void PrintTree(const TApplication& app, std::ostream& out) {
  const TReasons reasons = Reasons(app);
  for (const TActionNode& table : app.tree.Top()) {
    out << SignOf(table.icon) << ' ' << ShownText(TopText(app, table)) << '\n';
    PrintReason(reasons, table, "    ", out);
    for (const TActionNode& action : table.children) {
      out << "    " << SignOf(action.icon) << ' ' << ShownText(action.text) << '\n';
      PrintReason(reasons, action, "        ", out);
    }
  }
}

// Lines as a terminal may get them.
std::string WithoutControls(std::string text) {
  std::erase(text, '\r');
  std::replace_if(
      text.begin(), text.end(),
      [](char c) { return (static_cast<unsigned char>(c) < ' ' && c != '\n' && c != '\t') || c == '\x7F'; }, '?');
  return text;
}

}  // namespace

std::string TellLeft(const std::string& verified, const std::string& not_verified, const TApplication& app, int left) {
  if (left == 0) return verified + ": " + app.exact.NothingLeft();
  return Format("%s: %s left", not_verified, Counted(static_cast<std::size_t>(left), "difference"));
}

void PrintComparison(const TApplication& app, bool failed, std::ostream& out) {
  PrintTree(app, out);
  if (failed) return;
  const std::size_t count = app.data.mtActions.Count();
  const std::size_t skipped = app.dialect == EDialect::Exact ? app.exact.Skipped().size() : 0;
  if (app.Identical())
    out << kIdentical;
  else if (count > 0)
    out << '\n' << Counted(count, "difference") << " in " << Counted(app.tree.Top().size(), "table") << '\n';
  if (app.dialect == EDialect::Exact && count > 0)
    out << TellLeft("Verified", "Not verified", app, app.exact.DifferencesLeft()) << '\n';
  if (skipped > 0) out << Counted(skipped, "table") << " could not be compared\n";
  const std::size_t unfollowed = app.dialect == EDialect::Exact ? app.exact.NotFollowed().size() : 0;
  if (unfollowed > 0)
    out << Counted(unfollowed, "statement") << " could not be followed, so nobody knows whether tables are identical\n";
  const std::size_t objects = app.dialect == EDialect::Exact ? app.exact.Objects().size() : 0;
  if (objects > 0 && app.TablesIdentical()) out << "All tables are identical.\n";
  if (objects > 0) out << Counted(objects, "other object") << (objects == 1 ? " differs" : " differ") << kOthersAlone;
}

void TellExactNotes(const TApplication& app, TConsole& console) {
  if (app.dialect != EDialect::Exact) return;
  for (const std::string& line : app.exact.CaseTwins()) console.Note(line);
  for (const std::string& line : app.exact.LeftAlone()) console.Note(line);
  for (const TObjectDifference& object : app.exact.Objects())
    console.Note(Format("Not the same: %s %s: %s", object.kind, object.name, object.difference));
  for (const std::string& statement : app.exact.NotFollowed()) console.Warn("not followed: " + statement);
  for (const TSkippedTable& skipped : app.exact.Skipped())
    console.Warn(Format("%s: table %s is skipped: %s", skipped.side, skipped.table, skipped.reason));
  if (const int left = app.exact.DifferencesLeft(); left > 0)
    console.Warn(Format("by the proof in memory the script would leave %s",
                        Counted(static_cast<std::size_t>(left), "difference")));
}

std::string TScriptPlan::Summary() const {
  const std::string run = Counted(statements, "statement") + " on " + target;
  return unsafe.empty() ? run : run + ", with " + Counted(unsafe.size(), "unsafe change");
}

void ShowPlan(const TApplication& app, const TScriptPlan& plan, std::ostream& out) {
  std::ostringstream text;
  if (plan.compared) {
    PrintComparison(app, false, text);
    text << '\n';
  }
  text << plan.script << '\n';
  for (const std::string& line : plan.unsafe) text << "unsafe: " << line << '\n';
  out << WithoutControls(text.str());
}

bool UnsafeAllowed(const TScriptPlan& plan, bool allowed, TConsole& console) {
  if (allowed || plan.unsafe.empty()) return true;
  for (const std::string& line : plan.unsafe) console.Error("unsafe: " + line);
  console.Error(plan.Summary() + ": nothing was run; to run all of it, give --allow-unsafe");
  return false;
}

}  // namespace velmora
