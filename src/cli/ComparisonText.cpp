// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/ComparisonText.h"

#include <algorithm>
#include <map>
#include <ostream>
#include <set>

#include "cli/Command.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kOthersAlone[] = " (views, triggers, routines, events), left alone: see the notes\n";

constexpr char kUnmade[] = " no form in MySQL; --accept TABLE.ELEMENT goes on without\n";

using TReasons = std::map<int, std::string>;  // why actions are unsafe, by the ids of their rows

// One sign per kind of difference, as in a patch.
std::string SignOf(TActionIcon icon, const TColours& colours) {
  switch (icon) {
    case kIconNew:
    case kIconNewTable:
      return colours(EInk::New, "+");
    case kIconObsolete:
    case kIconObsoleteTable:
      return colours(EInk::Gone, "-");
    default:
      return colours(EInk::Changed, "~");
  }
}

// The log text of a whole table's action, whose node shows the table's name alone.
std::string TopText(const TApplication& app, const TActionNode& node) {
  const TActionRow* row = node.id.empty() ? nullptr : app.data.mtActions.Find(StrToInt(node.id));
  return row == nullptr ? node.text : SyncAction(row->action_id).LogText(node.text, row->item);
}

// "3 tables", "3 tables and 2 other objects"
std::string WhereThey(const TdmData& data) {
  std::set<std::string> tables;
  std::size_t objects = 0;
  for (const TActionRow* row = data.mtActions.First(); row != nullptr; row = data.mtActions.After(row->id))
    if (SyncAction(row->action_id).OfObject())
      ++objects;
    else
      tables.insert(row->table);
  TStringList parts;
  if (!tables.empty()) parts.push_back(Counted(tables.size(), "table"));
  if (objects > 0) parts.push_back(Counted(objects, tables.empty() ? "object" : "other object"));
  return JoinList(parts, " and ");
}

using TLocks = std::map<int, TActionLock>;

EInk InkOf(ELockClass lock) {
  if (lock <= ELockClass::InPlace) return EInk::Good;
  return lock == ELockClass::Copy ? EInk::Gone : EInk::Changed;
}

// The differences as a tree, a line each.
class TTreeText {
 public:
  TTreeText(const TApplication& app, std::ostream& out, const TColours& colours)
      : app_(app),
        out_(out),
        colours_(colours),
        reasons_(app.Dialect().UnsafeActions()),
        locks_(app.Dialect().ActionLocks()) {}

  void Print() const {
    for (const TActionNode& table : app_.tree.Top()) {
      out_ << SignOf(table.icon, colours_) << ' ' << colours_(EInk::Title, ShownText(TopText(app_, table))) << '\n';
      PrintReason(table, "    ");
      for (const TActionNode& action : table.children) {
        out_ << "    " << SignOf(action.icon, colours_) << ' ' << ShownText(action.text) << LockOf(action) << '\n';
        PrintReason(action, "        ");
      }
    }
  }

 private:
  void PrintReason(const TActionNode& node, const char* indent) const {
    if (node.id.empty()) return;
    if (const auto found = reasons_.find(StrToInt(node.id)); found != reasons_.end())
      out_ << indent << colours_(EInk::Bad, "! unsafe:") << ' ' << ShownText(found->second) << '\n';
  }

  // " [instant]"
  std::string LockOf(const TActionNode& node) const {
    const auto lock = node.id.empty() ? locks_.end() : locks_.find(StrToInt(node.id));
    return lock == locks_.end() ? std::string() : " " + colours_(InkOf(lock->second.is), "[" + lock->second.text + "]");
  }

  const TApplication& app_;
  std::ostream& out_;
  const TColours& colours_;
  TReasons reasons_;
  TLocks locks_;
};

// An identical pair, or a script that leaves nothing, is good news.
std::string Verdict(bool good, const std::string& text, const TColours& colours) {
  return colours(good ? EInk::Good : EInk::Bad, text);
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

std::string TellLeft(const std::string& verified, const std::string& not_verified, const TFindings& findings,
                     int left) {
  if (left == 0) return verified + ": " + findings.nothing_left;
  return Format("%s: %s left", not_verified, Counted(static_cast<std::size_t>(left), "difference"));
}

void PrintComparison(const TApplication& app, bool failed, std::ostream& out, const TColours& colours) {
  TTreeText(app, out, colours).Print();
  if (failed) return;
  const TDialect& dialect = app.Dialect();
  const TFindings findings = dialect.Findings();
  const std::size_t count = app.data.mtActions.Count();
  if (dialect.Identical())
    out << Verdict(true, kIdentical, colours) << '\n';
  else if (count > 0)
    out << '\n' << Counted(count, "difference") << " in " << WhereThey(app.data) << '\n';
  if (dialect.Traits().has_findings && count > 0)
    out << Verdict(findings.differences_left == 0,
                   TellLeft("Verified", "Not verified", findings, findings.differences_left), colours)
        << '\n';
  if (!findings.skipped.empty()) out << Counted(findings.skipped.size(), "table") << " could not be compared\n";
  if (const std::size_t unmade = findings.unmade.size(); unmade > 0)
    out << Counted(unmade, "element") << (unmade == 1 ? " has" : " have") << kUnmade;
  if (const std::size_t unfollowed = findings.not_followed.size(); unfollowed > 0)
    out << Counted(unfollowed, "statement") << " could not be followed, so nobody knows whether tables are identical\n";
  for (const TKindsNotSeen& of : findings.not_seen) out << of.Text() << '\n';
  const std::size_t objects = findings.objects.size();
  const bool all = findings.left_out.tables.empty();
  if (all && !dialect.Identical() && dialect.TablesIdentical()) out << "All tables are identical.\n";
  if (objects > 0) out << Counted(objects, "other object") << (objects == 1 ? " differs" : " differ") << kOthersAlone;
}

void TellRemarks(const TApplication& app, TDBConn* compared, TConsole& console) {
  for (const TRemark& remark : app.Dialect().Remarks(compared)) {
    const EWeight weight = remark.decides ? EWeight::Decides : EWeight::Aside;
    if (remark.warning)
      console.Warn(remark.text, weight);
    else
      console.Note(remark.text, weight);
  }
}

std::string TScriptPlan::Summary() const {
  const std::string run = Counted(statements, "statement") + " on " + target;
  return unsafe.empty() ? run : run + ", with " + Counted(unsafe.size(), "unsafe change");
}

void ShowPlan(const TApplication& app, const TScriptPlan& plan, std::ostream& out, const TColours& colours) {
  if (plan.compared) {
    PrintComparison(app, false, out, colours);
    out << '\n';
  }
  out << WithoutControls(plan.script) << '\n';
  for (const std::string& line : plan.unsafe)
    out << colours(EInk::Bad, "unsafe:") << ' ' << WithoutControls(line) << '\n';
}

bool UnsafeAllowed(const TScriptPlan& plan, bool allowed, TConsole& console) {
  if (allowed || plan.unsafe.empty()) return true;
  for (const std::string& line : plan.unsafe) console.Error("unsafe: " + line);
  console.Error(plan.Summary() + ": nothing was run; to run all of it, give --allow-unsafe");
  return false;
}

}  // namespace velmora
