// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/widgets/FindBar.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QToolButton>

#include "shell/widgets/Icons.h"
#include "shell/widgets/Text.h"
#include "shell/widgets/TopLevel.h"

namespace velmora {

namespace {

QToolButton* Button(const char* name, const char* icon, const QString& tip) {
  auto* button = new QToolButton;
  button->setObjectName(QLatin1String(name));
  button->setIcon(Icon(QLatin1String(icon)));
  button->setToolTip(tip);
  button->setAccessibleName(tip);
  button->setAutoRaise(true);
  button->setFocusPolicy(Qt::TabFocus);
  return button;
}

}  // namespace

TFindBar::TFindBar(QWidget* parent) : QWidget(parent), edFind_(new QLineEdit), lbFound_(new QLabel) {
  setObjectName(QStringLiteral("barFind"));
  edFind_->setObjectName(QStringLiteral("edFind"));
  edFind_->setClearButtonEnabled(true);
  edFind_->setMaximumWidth(320);
  auto* label = new QLabel(TText::tr("Find:"));
  label->setBuddy(edFind_);
  QToolButton* next = Button("bnFindNext", "find-next", TText::tr("Next (Enter)"));
  QToolButton* previous = Button("bnFindPrevious", "find-previous", TText::tr("Previous (Shift+Enter)"));
  QToolButton* close = Button("bnFindClose", "close-bar", TText::tr("Close (Escape)"));
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(6, 3, 6, 3);
  row->addWidget(label);
  row->addWidget(edFind_, 1);
  row->addWidget(previous);
  row->addWidget(next);
  row->addWidget(lbFound_);
  row->addStretch(1);
  row->addWidget(close);
  hide();
  Handle(edFind_, &QLineEdit::textEdited, this, [this] { FindFromStart(); });
  Handle(next, &QToolButton::clicked, this, [this] { Find(true); });
  Handle(previous, &QToolButton::clicked, this, [this] { Find(false); });
  Handle(close, &QToolButton::clicked, this, [this] { CloseBar(); });
}

void TFindBar::Open(TSqlEdit& edit) {
  edit_ = &edit;
  const QString selected = edit.selectedText();
  if (!selected.isEmpty() && !selected.contains(QLatin1Char('\n'))) edFind_->setText(selected);
  lbFound_->clear();
  show();
  edFind_->setFocus();
  edFind_->selectAll();
}

void TFindBar::keyPressEvent(QKeyEvent* event) {
  switch (event->key()) {
    case Qt::Key_Escape:
      return CloseBar();
    case Qt::Key_Return:
    case Qt::Key_Enter:
      return Find(!event->modifiers().testFlag(Qt::ShiftModifier));
    default:
      QWidget::keyPressEvent(event);
  }
}

void TFindBar::Find(bool forward) {
  if (!edit_ || edFind_->text().isEmpty()) return;
  int line = -1;
  int index = -1;
  int end_line = 0;
  int end_index = 0;
  edit_->getSelection(&line, &index, &end_line, &end_index);
  if (line >= 0 && forward) {
    line = end_line;
    index = end_index;
  }
  Show(edit_->findFirst(edFind_->text(), false, false, false, true, forward, line, index));
}

void TFindBar::FindFromStart() {
  if (!edit_) return;
  int line = -1;
  int index = -1;
  int end_line = 0;
  int end_index = 0;
  edit_->getSelection(&line, &index, &end_line, &end_index);
  if (edFind_->text().isEmpty()) return lbFound_->clear();
  Show(edit_->findFirst(edFind_->text(), false, false, false, true, true, line, index));
}

void TFindBar::Show(bool found) { lbFound_->setText(found ? QString() : TText::tr("Not found")); }

void TFindBar::CloseBar() {
  hide();
  if (edit_) edit_->setFocus();
}

}  // namespace velmora
