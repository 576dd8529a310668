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
#include "shell/widgets/TopLevel.h"

namespace velmora {

namespace {

// The check boxes of the options, from 1 on, and how they stand.
constexpr Qt::CheckState kOptionStates[] = {Qt::PartiallyChecked, Qt::Unchecked, Qt::PartiallyChecked, Qt::Unchecked,
                                            Qt::Unchecked,        Qt::Unchecked, Qt::PartiallyChecked};

}  // namespace

TfmDump::TfmDump(QWidget* parent) : QDialog(parent) {
  setObjectName(QStringLiteral("fmDump"));
  setWindowTitle(QStringLiteral("Extract database structure"));
  auto* form = new QHBoxLayout;
  auto* tables = Named(new QListWidget, "CheckListBox1");
  tables->setAccessibleName(ToQt("Tables"));
  form->addWidget(tables, 1);
  form->addLayout(Choices());

  auto* buttons = new QDialogButtonBox;
  auto* extract = Named(buttons->addButton(QStringLiteral("Extract"), QDialogButtonBox::AcceptRole), "butOK");
  extract->setDefault(true);
  extract->setEnabled(false);
  auto* cancel = Named(buttons->addButton(QStringLiteral("Cancel"), QDialogButtonBox::RejectRole), "butCancel");
  Handle(cancel, &QPushButton::clicked, this, [this] { reject(); });

  auto* layout = new QVBoxLayout(this);
  layout->addLayout(form);
  layout->addWidget(buttons);
}

QVBoxLayout* TfmDump::Choices() {
  auto* layout = new QVBoxLayout;
  layout->addWidget(Named(new QRadioButton(QStringLiteral("&Reference")), "rSourceDB"));
  auto* target = Named(new QRadioButton(QStringLiteral("&Target")), "rTargetDB");
  target->setChecked(true);
  layout->addWidget(target);
  auto* marks = new QHBoxLayout;
  for (auto* button : {Named(new QPushButton(QStringLiteral("&All")), "cxButton1"),
                       Named(new QPushButton(QStringLiteral("&None")), "cxButton2")}) {
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
  auto* group = Named(new QGroupBox(QStringLiteral("Options")), "cxGroupBox1");
  auto* layout = new QVBoxLayout(group);
  layout->addWidget(new QLabel(QStringLiteral("Script options")));
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
