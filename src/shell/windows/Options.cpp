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
#include "shell/widgets/TopLevel.h"

namespace velmora {

namespace {

constexpr int kOptimization = 0;
constexpr int kGeneral = 1;

struct TSwitch {
  const char* name;
  const char* caption;
  bool TOptions::*member;
  int column;
  const char* note = nullptr;  // stands below the box
};

// In the order of their columns.
constexpr TSwitch kSwitches[] = {
    {"chkAllowTblTypeChg", "&Allow table type change", &TOptions::AllowTblTypeChg, kOptimization},
    {"chkDropExtraColumns", "Drop obsolete &columns", &TOptions::DropExtraColumns, kOptimization,
     "(Be careful not to lose renamed columns)"},
    {"chkDropExtraIndices", "Drop obsolete &indices", &TOptions::DropExtraIndices, kOptimization},
    {"chkDropExtraConstraints", "Drop obsolete co&nstraints", &TOptions::DropExtraConstraints, kOptimization},
    {"chkDropExtraTables", "Drop obsolete &tables", &TOptions::DropExtraTables, kOptimization},
    {"chkSyncRunUnprompted", "&Run script without prompting", &TOptions::SyncRunUnprompted, kGeneral},
    {"chkScriptToClipboard", "Copy &script to clipboard", &TOptions::ScriptToClipboard, kGeneral},
    {"chkUseBackticks", "Use &backticks", &TOptions::UseBackticks, kGeneral},
    {"chkVerboseLog", "&Verbose log", &TOptions::VerboseLog, kGeneral},
    {"chkSelectSyncTables", "S&elect tables to sync", &TOptions::SelectSyncTables, kGeneral},
    {"chkNoForeignKeyChecks", "&Disable foreign key checks", &TOptions::NoForeignKeyChecks, kGeneral},
    {"chkConnectOnStartup", "Connect on start&up", &TOptions::ConnectOnStartup, kGeneral},
};

constexpr int kMaxFontSize = 999;  // points

// The note begins where the caption of the box above it does.
QLabel* NoteBelow(const QCheckBox* box, const char* text) {
  auto* note = new QLabel(ToQt(text));
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
  setWindowTitle(QStringLiteral("Options"));
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(FontGroup());
  auto* columns = new QHBoxLayout;
  columns->addWidget(SwitchGroup(QStringLiteral("Optimization"), kOptimization), 1);
  columns->addWidget(SwitchGroup(QStringLiteral("General sync options"), kGeneral), 1);
  layout->addLayout(columns);
  layout->addStretch();

  auto* buttons = new QDialogButtonBox;
  auto* ok = buttons->addButton(QStringLiteral("OK"), QDialogButtonBox::AcceptRole);
  auto* cancel = buttons->addButton(QStringLiteral("Cancel"), QDialogButtonBox::RejectRole);
  ok->setObjectName(QStringLiteral("butOK"));
  ok->setDefault(true);
  cancel->setObjectName(QStringLiteral("butCancel"));
  Handle(ok, &QPushButton::clicked, this, [this] { accept(); });
  Handle(cancel, &QPushButton::clicked, this, [this] { reject(); });
  layout->addWidget(buttons);
}

QGroupBox* TfmOptions::FontGroup() {
  auto* group = new QGroupBox(QStringLiteral("Fonts"));
  auto* grid = new QGridLayout(group);
  grid->setColumnStretch(1, 1);
  const auto addRow = [grid](const QString& caption, const QString& suffix) {
    TFontRow row{new QFontComboBox, new QSpinBox};
    row.name->setObjectName(QStringLiteral("cFont") + suffix);
    row.size->setObjectName(QStringLiteral("szFont") + suffix);
    row.size->setRange(1, kMaxFontSize);
    row.size->setSuffix(QStringLiteral(" pt"));
    auto* label = new QLabel(caption);
    label->setBuddy(row.name);
    const int line = grid->rowCount();
    grid->addWidget(label, line, 0);
    grid->addWidget(row.name, line, 1);
    grid->addWidget(row.size, line, 2);
    return row;
  };
  log_ = addRow(QStringLiteral("C&hanges window"), QStringLiteral("Changes"));
  script_ = addRow(QStringLiteral("Script &window"), QStringLiteral("Script"));
  return group;
}

QGroupBox* TfmOptions::SwitchGroup(const QString& heading, int column) {
  auto* group = new QGroupBox(heading);
  auto* layout = new QVBoxLayout(group);
  for (const TSwitch& row : kSwitches) {
    if (row.column != column) continue;
    auto* box = new QCheckBox(ToQt(row.caption));
    box->setObjectName(ToQt(row.name));
    layout->addWidget(box);
    if (row.note != nullptr) layout->addWidget(NoteBelow(box, row.note));
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
