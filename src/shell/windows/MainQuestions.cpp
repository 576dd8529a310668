// SPDX-License-Identifier: GPL-3.0-or-later

// What the main window asks before a script runs.

#include <algorithm>

#include "app/SideNames.h"
#include "core/Host.h"
#include "shell/widgets/QtText.h"
#include "shell/widgets/TopLevel.h"
#include "shell/windows/Main.h"
#include "shell/windows/RunQuestion.h"
#include "util/Counted.h"
#include "util/Format.h"

namespace velmora {

namespace {

constexpr char kRunQuestion[] = "Run %s on %s?";
constexpr char kUnsafeQuestion[] = "\n\n%s of this script can lose data:";
constexpr char kSafeScript[] = "\n\nNothing in it was found to lose data.";
constexpr char kPerhapsRenamed[] =
    "\n\nPerhaps renamed only; \"Rename ... instead\" in the context menu keeps the values:";
constexpr char kRowsQuestion[] = "Rows of the target stand in the way of the script, or could not be checked:";
constexpr int kRowCheckSeconds = 30;  // for each question
constexpr std::size_t kListedUnsafe = 12;
constexpr qsizetype kUnsafeLetters = 200;

// As many lines as a question has room for.
std::string Listing(const TStringList& lines) {
  std::string text;
  for (std::size_t i = 0; i < std::min(lines.size(), kListedUnsafe); ++i)
    text += "\n- " + FromQt(Shortened(ToQt(lines[i]), kUnsafeLetters));
  if (lines.size() > kListedUnsafe) text += Format("\n(and %d more)", lines.size() - kListedUnsafe);
  return text;
}

}  // namespace

// Of what runs, whoever wrote it. A task that is marked so asks in every dialect.
bool TfmMain::MayRun(const std::string& script) {
  const TDialect& dialect = app_->Dialect();
  const TTaskMarks& marks = task_->Marks;
  const TStringList unsafe = app_->Dialect().UnsafeStatements(script);
  const bool always = dialect.Traits().asks_before_run;
  const bool unprompted = always && options_.SyncRunUnprompted;
  if (unprompted && !marks.confirm_database && unsafe.empty() && ScriptOf() == EScriptOf::Analysis) return true;
  const bool generated = ScriptOf() == EScriptOf::Analysis || ScriptOf() == EScriptOf::Nobody;
  if (!always && !marks.confirm_database && unsafe.empty() && generated) return true;
  TDBConn& target = *app_->connections.target;
  const std::string statements = Counted(dialect.Statements(script).statements.size(), "statement");
  TRunQuestion question{Format(kRunQuestion, statements, SideName(target)), {}, marks, DatabaseName(target)};
  if (!unsafe.empty())
    question.details = Format(kUnsafeQuestion, Counted(unsafe.size(), "change")) + Listing(unsafe);
  else if (always)
    question.details = kSafeScript;
  if (const TStringList renames = UntakenRenames(); !renames.empty() && ScriptOf() == EScriptOf::Analysis)
    question.details += kPerhapsRenamed + Listing(renames);
  return MayRunAfter(question, this);
}

// What comes new by the script beside something that may be the same under another name.
TStringList TfmMain::UntakenRenames() const {
  TStringList lines;
  for (std::size_t place = 0; place < differences_->Count(); ++place) {
    const TDifference& difference = differences_->At(place);
    if (difference.rename.empty() || difference.state != EDifferenceState::New || !differences_->Ticked(place))
      continue;
    const TRename rename = ReadRename(difference.rename);
    lines.push_back(Format("%s to %s", rename.Place(), rename.to));
  }
  return lines;
}

bool TfmMain::RowsAllow() {
  TStringList lines;
  for (const TRowFinding& finding : app_->Dialect().CheckRows(kRowCheckSeconds)) lines.push_back(finding.text);
  return lines.empty() || ConfirmYes(kRowsQuestion + Listing(lines) + "\n\nRun the script nevertheless?");
}

}  // namespace velmora
