// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/windows/Confirm.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "shell/widgets/Text.h"
#include "shell/widgets/TopLevel.h"

namespace velmora {

TfmConfirm::TfmConfirm(QWidget* parent) : QDialog(parent) {
  setObjectName(QStringLiteral("fmConfirm"));
  setWindowTitle(Fixed("Please confirm"));
  auto* text = new QLabel;
  text->setObjectName(QStringLiteral("lbText"));
  text->setWordWrap(true);
  text->setMinimumWidth(320);

  auto* buttons = new QDialogButtonBox;
  auto* ok = buttons->addButton(Fixed("OK"), QDialogButtonBox::AcceptRole);
  ok->setObjectName(QStringLiteral("butOK"));
  ok->setDefault(true);
  auto* cancel = buttons->addButton(Fixed("Cancel"), QDialogButtonBox::RejectRole);
  cancel->setObjectName(QStringLiteral("butCancel"));
  Handle(ok, &QPushButton::clicked, this, [this] { accept(); });
  Handle(cancel, &QPushButton::clicked, this, [this] { reject(); });

  auto* layout = new QVBoxLayout(this);
  layout->addWidget(text, 1);
  layout->addWidget(buttons);
}

}  // namespace velmora
