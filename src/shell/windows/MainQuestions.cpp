// SPDX-License-Identifier: GPL-3.0-or-later

// What the main window asks before a script runs.

#include <algorithm>

#include "app/SideNames.h"
#include "core/Host.h"
#include "shell/widgets/QtText.h"
#include "shell/widgets/Text.h"
#include "shell/widgets/TopLevel.h"
#include "shell/windows/Main.h"
#include "shell/windows/RunQuestion.h"

namespace velmora {

namespace {

constexpr int kRowCheckSeconds = 30;  // for each question
constexpr std::size_t kListedUnsafe = 12;
constexpr qsizetype kUnsafeLetters = 200;

// As many lines as a question has room for.
QString Listing(const TStringList& lines) {
  QString text;
  for (std::size_t i = 0; i < std::min(lines.size(), kListedUnsafe); ++i)
    text += QLatin1String("\n- ") + Shortened(ToQt(lines[i]), kUnsafeLetters);
  if (lines.size() > kListedUnsafe)
    text += QLatin1Char('\n') + TText::tr("(and %1 more)").arg(lines.size() - kListedUnsafe);
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
  const QString text =
      TText::Counted("Run %n statement(s) on %1?", nullptr, dialect.Statements(script).statements.size());
  QStringList details = {QString()};
  if (!unsafe.empty())
    details << TText::Counted("%n change(s) of this script can lose data:", nullptr, unsafe.size()) + Listing(unsafe);
  else if (always)
    details << TText::tr("Nothing in it was found to lose data.");
  if (const TStringList renames = UntakenRenames(); !renames.empty() && ScriptOf() == EScriptOf::Analysis)
    details << TText::tr("Perhaps renamed only; \"Rename ... instead\" in the context menu keeps the values:") +
                   Listing(renames);
  const QString gap = QStringLiteral("\n\n");
  return MayRunAfter({FromQt(text.arg(ToQt(SideName(target)))), FromQt(details.join(gap)), marks, DatabaseName(target)},
                     this);
}

// What comes new by the script beside something that may be the same under another name.
TStringList TfmMain::UntakenRenames() const {
  TStringList lines;
  for (std::size_t place = 0; place < differences_->Count(); ++place) {
    const TDifference& difference = differences_->At(place);
    if (difference.rename.empty() || difference.state != EDifferenceState::New || !differences_->Ticked(place))
      continue;
    const TRename rename = ReadRename(difference.rename);
    lines.push_back(FromQt(TText::tr("%1 to %2", "a rename").arg(ToQt(rename.Place()), ToQt(rename.to))));
  }
  return lines;
}

bool TfmMain::RowsAllow() {
  TStringList lines;
  for (const TRowFinding& finding : app_->Dialect().CheckRows(kRowCheckSeconds)) lines.push_back(finding.text);
  if (lines.empty()) return true;
  const QString found = TText::tr("Rows of the target stand in the way of the script, or could not be checked:");
  return ConfirmYes(FromQt(found + Listing(lines) + QLatin1String("\n\n") + TText::tr("Run the script nevertheless?")));
}

}  // namespace velmora
