// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/windows/Options.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFontComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QStyle>
#include <QVBoxLayout>
#include <cstddef>

#include "shell/widgets/QtText.h"
#include "shell/widgets/Text.h"
#include "shell/widgets/TopLevel.h"

namespace velmora {

namespace {

constexpr int kOptimization = 0;
constexpr int kGeneral = 1;

struct TSwitch {
  const char* name;
  TText caption;
  bool TOptions::*member;
  int column;
  TText hint;       // what it means where differences are ticked
  TText note = {};  // stands below the box
};

constexpr TText kFollowedBy =
    TText::Later("In the exact dialect, which the automatic one chooses for the servers of today: %1");

constexpr TText kObsoleteHint = TText::Later(
    "what the target alone has of these is ticked as soon as it is found. Otherwise it stands in the list unticked, "
    "and the script leaves it where it is.");

// In the order of their columns.
constexpr TSwitch kSwitches[] = {
    {"chkAllowTblTypeChg", Fixed("&Allow table type change"), &TOptions::AllowTblTypeChg, kOptimization,
     TText::Later(
         "a table's other engine is ticked as soon as it is found. Otherwise it stands in the list unticked.")},
    {"chkDropExtraColumns", Fixed("Drop obsolete &columns"), &TOptions::DropExtraColumns, kOptimization, kObsoleteHint,
     Fixed("(Be careful not to lose renamed columns)")},
    {"chkDropExtraIndices", Fixed("Drop obsolete &indices"), &TOptions::DropExtraIndices, kOptimization, kObsoleteHint},
    {"chkDropExtraConstraints", Fixed("Drop obsolete co&nstraints"), &TOptions::DropExtraConstraints, kOptimization,
     kObsoleteHint},
    {"chkDropExtraTables", Fixed("Drop obsolete &tables"), &TOptions::DropExtraTables, kOptimization, kObsoleteHint},
    {"chkSyncRunUnprompted", Fixed("&Run script without prompting"), &TOptions::SyncRunUnprompted, kGeneral,
     TText::Later("a script of the analysis in which nothing loses data runs without a question. What may lose data, a "
                  "text that you have changed, and a task that asks for it are always asked about.")},
    {"chkScriptToClipboard", Fixed("Copy &script to clipboard"), &TOptions::ScriptToClipboard, kGeneral,
     TText::Later("each script that the analysis makes is copied to the clipboard, too.")},
    {"chkUseBackticks", Fixed("Use &backticks"), &TOptions::UseBackticks, kGeneral,
     TText::Later("names stand in backticks whatever this says, as no other form is safe for every name.")},
    {"chkVerboseLog", Fixed("&Verbose log"), &TOptions::VerboseLog, kGeneral,
     TText::Later("the messages name what they otherwise count: what the patterns of Only and Except leave out, and "
                  "what became of each column of a source that is not MySQL.")},
    {"chkSelectSyncTables", Fixed("S&elect tables to sync"), &TOptions::SelectSyncTables, kGeneral,
     TText::Later("the patterns of Only and Except (Extras > Comparison) hold. Otherwise all is compared.")},
    {"chkNoForeignKeyChecks", Fixed("&Disable foreign key checks"), &TOptions::NoForeignKeyChecks, kGeneral,
     TText::Later(
         "foreign keys are added without a look at the rows, as by --fast-foreign-keys: rows without a counterpart are "
         "asked for by a query before.")},
    {"chkConnectOnStartup", Fixed("Connect on start&up"), &TOptions::ConnectOnStartup, kGeneral,
     TText::Later("the latest task is opened and analyzed when the program starts.")},
};

constexpr int kMaxFontSize = 999;  // points

// The note begins where the caption of the box above it does.
QLabel* NoteBelow(const QCheckBox* box, const QString& text) {
  auto* note = new QLabel(text);
  const QStyle* style = box->style();
  note->setIndent(style->pixelMetric(QStyle::PM_IndicatorWidth) + style->pixelMetric(QStyle::PM_CheckBoxLabelSpacing));
  return note;
}

// As text: a family that is not installed has no entry in the list.
void ShowFont(QFontComboBox* names, QSpinBox* sizes, const std::string& name, int size) {
  names->setEditText(ToQt(name));
  sizes->setValue(size);
}

void ReadFont(const QFontComboBox* names, const QSpinBox* sizes, std::string& name, int& size) {
  const QString family = names->currentText().trimmed();
  if (!family.isEmpty()) name = FromQt(family);
  size = sizes->value();
}

}  // namespace

TfmOptions::TfmOptions(QWidget* parent) : QDialog(parent) {
  setObjectName(QStringLiteral("fmOptions"));
  setWindowTitle(Fixed("Options"));
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(FontGroup());
  auto* columns = new QHBoxLayout;
  columns->addWidget(SwitchGroup(Fixed("Optimization"), kOptimization), 1);
  columns->addWidget(SwitchGroup(Fixed("General sync options"), kGeneral), 1);
  layout->addLayout(columns);
  layout->addStretch();

  auto* buttons = new QDialogButtonBox;
  auto* ok = buttons->addButton(Fixed("OK"), QDialogButtonBox::AcceptRole);
  auto* cancel = buttons->addButton(Fixed("Cancel"), QDialogButtonBox::RejectRole);
  ok->setObjectName(QStringLiteral("butOK"));
  ok->setDefault(true);
  cancel->setObjectName(QStringLiteral("butCancel"));
  Handle(ok, &QPushButton::clicked, this, [this] { accept(); });
  Handle(cancel, &QPushButton::clicked, this, [this] { reject(); });
  layout->addWidget(buttons);
}

QGroupBox* TfmOptions::FontGroup() {
  auto* group = new QGroupBox(Fixed("Fonts"));
  auto* grid = new QGridLayout(group);
  grid->setColumnStretch(1, 1);
  const auto addRow = [grid](const QString& caption, const QString& suffix) {
    TFontRow row{new QFontComboBox, new QSpinBox};
    row.name->setObjectName(QStringLiteral("cFont") + suffix);
    row.size->setObjectName(QStringLiteral("szFont") + suffix);
    row.size->setRange(1, kMaxFontSize);
    row.size->setSuffix(TText::tr(" pt", "points of a font"));
    auto* label = new QLabel(caption);
    label->setBuddy(row.name);
    const int line = grid->rowCount();
    grid->addWidget(label, line, 0);
    grid->addWidget(row.name, line, 1);
    grid->addWidget(row.size, line, 2);
    return row;
  };
  log_ = addRow(Fixed("C&hanges window"), QStringLiteral("Changes"));
  script_ = addRow(Fixed("Script &window"), QStringLiteral("Script"));
  return group;
}

QGroupBox* TfmOptions::SwitchGroup(const QString& heading, int column) {
  auto* group = new QGroupBox(heading);
  auto* layout = new QVBoxLayout(group);
  for (const TSwitch& row : kSwitches) {
    if (row.column != column) continue;
    auto* box = new QCheckBox(row.caption);
    box->setObjectName(ToQt(row.name));
    box->setToolTip(QString(kFollowedBy).arg(row.hint));
    box->setAccessibleDescription(box->toolTip());
    layout->addWidget(box);
    if (!row.note.Empty()) layout->addWidget(NoteBelow(box, row.note));
    switches_.push_back(box);
  }
  layout->addStretch();
  return group;
}

bool TfmOptions::Edit(TOptions& options) {
  Show(options);
  if (exec() != Accepted) return false;
  Read(options);
  return true;
}

void TfmOptions::Show(const TOptions& options) {
  ShowFont(log_.name, log_.size, options.LogFontName, options.LogFontSize);
  ShowFont(script_.name, script_.size, options.ScriptFontName, options.ScriptFontSize);
  for (std::size_t i = 0; i < switches_.size(); ++i) switches_[i]->setChecked(options.*kSwitches[i].member);
  log_.name->setFocus();
  log_.name->lineEdit()->selectAll();
}

void TfmOptions::Read(TOptions& options) const {
  ReadFont(log_.name, log_.size, options.LogFontName, options.LogFontSize);
  ReadFont(script_.name, script_.size, options.ScriptFontName, options.ScriptFontSize);
  for (std::size_t i = 0; i < switches_.size(); ++i) options.*kSwitches[i].member = switches_[i]->isChecked();
}

}  // namespace velmora
