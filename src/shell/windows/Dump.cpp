// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/windows/Dump.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

#include "shell/widgets/Named.h"
#include "shell/widgets/Text.h"
#include "shell/widgets/TopLevel.h"

namespace velmora {

namespace {

// The check boxes of the options, from 1 on, and how they stand.
constexpr Qt::CheckState kOptionStates[] = {Qt::PartiallyChecked, Qt::Unchecked, Qt::PartiallyChecked, Qt::Unchecked,
                                            Qt::Unchecked,        Qt::Unchecked, Qt::PartiallyChecked};

}  // namespace

TfmDump::TfmDump(QWidget* parent) : QDialog(parent) {
  setObjectName(QStringLiteral("fmDump"));
  setWindowTitle(Fixed("Extract database structure"));
  auto* form = new QHBoxLayout;
  auto* tables = Named(new QListWidget, "CheckListBox1");
  tables->setAccessibleName(TText::tr("Tables"));
  form->addWidget(tables, 1);
  form->addLayout(Choices());

  auto* buttons = new QDialogButtonBox;
  auto* extract = Named(buttons->addButton(Fixed("Extract"), QDialogButtonBox::AcceptRole), "butOK");
  extract->setDefault(true);
  extract->setEnabled(false);
  auto* cancel = Named(buttons->addButton(Fixed("Cancel"), QDialogButtonBox::RejectRole), "butCancel");
  Handle(cancel, &QPushButton::clicked, this, [this] { reject(); });

  auto* layout = new QVBoxLayout(this);
  layout->addLayout(form);
  layout->addWidget(buttons);
}

QVBoxLayout* TfmDump::Choices() {
  auto* layout = new QVBoxLayout;
  layout->addWidget(Named(new QRadioButton(Fixed("&Reference")), "rSourceDB"));
  auto* target = Named(new QRadioButton(Fixed("&Target")), "rTargetDB");
  target->setChecked(true);
  layout->addWidget(target);
  auto* marks = new QHBoxLayout;
  for (auto* button :
       {Named(new QPushButton(Fixed("&All")), "cxButton1"), Named(new QPushButton(Fixed("&None")), "cxButton2")}) {
    button->setAutoDefault(false);
    marks->addWidget(button);
  }
  marks->addStretch();
  layout->addLayout(marks);
  layout->addWidget(ScriptOptions());
  layout->addStretch();
  return layout;
}

QGroupBox* TfmDump::ScriptOptions() {
  auto* group = Named(new QGroupBox(Fixed("Options")), "cxGroupBox1");
  auto* layout = new QVBoxLayout(group);
  layout->addWidget(new QLabel(Fixed("Script options")));
  int number = 0;
  for (const Qt::CheckState state : kOptionStates) {
    auto* box = new QCheckBox;
    box->setObjectName(QStringLiteral("cxCheckBox%1").arg(++number));
    box->setCheckState(state);
    layout->addWidget(box);
  }
  return group;
}

}  // namespace velmora
