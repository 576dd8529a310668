// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/windows/MapRuleDialog.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "shell/widgets/Named.h"
#include "shell/widgets/Text.h"
#include "shell/widgets/TopLevel.h"

namespace velmora {

namespace {

constexpr TText kPurpose = TText::Later(
    "For a column (orders.total), for a type of the source with its size (number(10,2)), or for a type (number). The "
    "nearest one decides.");
constexpr int kLetters = 40;  // that the fields have room for

}  // namespace

TfmMapRule::TfmMapRule(QWidget* parent)
    : QDialog(parent), what_(Named(new QComboBox, "cWhat")), type_(Named(new QLineEdit, "edType")) {
  setObjectName(ToQt("fmMapRule"));
  setWindowTitle(TText::tr("Rule of the mapping"));
  what_->setEditable(true);
  what_->setInsertPolicy(QComboBox::NoInsert);
  what_->setCompleter(nullptr);  // which would change the case of what is typed
  what_->setMinimumContentsLength(kLetters);
  type_->setPlaceholderText(QStringLiteral("decimal(12,2)"));
  auto* purpose = new QLabel(kPurpose);
  purpose->setWordWrap(true);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  QPushButton* ok = Named(buttons->button(QDialogButtonBox::Ok), "butOK");
  QPushButton* cancel = Named(buttons->button(QDialogButtonBox::Cancel), "butCancel");
  ok->setDefault(true);
  Handle(ok, &QPushButton::clicked, this, [this] {
    take_({FromQt(what_->currentText()), FromQt(type_->text())});
    accept();
  });
  Handle(cancel, &QPushButton::clicked, this, [this] { reject(); });

  auto* form = new QFormLayout(this);
  form->addRow(purpose);
  form->addRow(TText::tr("&In the source"), what_);
  form->addRow(TText::tr("&Type of MySQL's"), type_);
  form->addRow(buttons);
}

bool TfmMapRule::Edit(const TMapRule& rule, const TStringList& names,
                      const std::function<void(const TMapRule&)>& take) {
  take_ = take;
  what_->clear();
  for (const std::string& name : names) what_->addItem(ToQt(name));
  what_->setCurrentIndex(-1);
  what_->setEditText(ToQt(rule.what));
  type_->setText(ToQt(rule.type));
  type_->selectAll();
  rule.what.empty() ? what_->setFocus() : type_->setFocus();
  return exec() == Accepted;
}

}  // namespace velmora
