#include <CLI/CLI.hpp>
#include <ostream>

#include "cli/Commands.h"
#include "cli/Json.h"
#include "cli/PairRun.h"
#include "util/Format.h"

namespace velmora {

namespace {

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

void PrintTree(const TApplication& app, std::ostream& out) {
  for (const TActionNode& table : app.tree.Top()) {
    out << SignOf(table.icon) << ' ' << TopText(app, table) << '\n';
    for (const TActionNode& action : table.children) out << "    " << SignOf(action.icon) << ' ' << action.text << '\n';
  }
}

void PrintText(const TApplication& app, bool failed, std::ostream& out) {
  PrintTree(app, out);
  if (failed) return;
  const std::size_t count = app.data.mtActions.Count();
  if (app.Identical())
    out << "Databases are identical. Nothing to synchronize.\n";
  else
    out << '\n' << Counted(count, "difference") << " in " << Counted(app.tree.Top().size(), "table") << '\n';
}

void PrintJson(const TApplication& app, const std::optional<std::string>& error, std::ostream& out) {
  TJson actions = TJson::array();
  for (const TActionRow* row = app.data.mtActions.First(); row != nullptr; row = app.data.mtActions.After(row->id)) {
    actions.push_back({{"id", row->id},
                       {"table", row->table},
                       {"item", row->item},
                       {"action_id", row->action_id},
                       {"action", row->Action()},
                       {"description", row->description}});
  }
  out << TextOf({{"identical", !error && app.Identical()},
                 {"actions", std::move(actions)},
                 {"log", app.sync.ActionLog},
                 {"error", JsonOf(error)}});
}

}  // namespace

void TCompareCommand::Declare(CLI::App& app) {
  DeclarePair(app, pair_);
  DeclareFormat(app, format_);
  options_.DeclarePair(app);
}

int TCompareCommand::Execute(TConsole& console) {
  TPairRun run(console, SystemClock());
  const std::optional<std::string> error = run.Compare(pair_, options_, false);
  if (format_ == EFormat::Json)
    PrintJson(run.app(), error, console.out);
  else
    PrintText(run.app(), error.has_value(), console.out);
  if (error) return kExitFailure;
  return run.app().Identical() ? kExitSuccess : kExitDifferent;
}

}  // namespace velmora
