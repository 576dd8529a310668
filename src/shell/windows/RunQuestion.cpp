// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/windows/RunQuestion.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QStyle>
#include <QVBoxLayout>
#include <algorithm>

#include "shell/widgets/MarkBar.h"
#include "shell/widgets/Named.h"
#include "shell/widgets/Text.h"
#include "shell/widgets/TopLevel.h"
#include "util/Version.h"

namespace velmora {

namespace {

constexpr int kLettersInWidth = 70;

// As high as its text, and scrolled where that would take more than half of the screen.
class TTextArea final : public QScrollArea {
 public:
  explicit TTextArea(QLabel* text) {
    setWidget(text);
    setWidgetResizable(true);
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFocusPolicy(Qt::NoFocus);
  }

  QSize sizeHint() const override {
    const int width = kLettersInWidth * fontMetrics().averageCharWidth();
    const int text_width = width - style()->pixelMetric(QStyle::PM_ScrollBarExtent);  // a bar that came stays otherwise
    return {width, std::min(widget()->heightForWidth(text_width), screen()->availableGeometry().height() / 2)};
  }
  QSize minimumSizeHint() const override { return sizeHint(); }
};

}  // namespace

TfmRunQuestion::TfmRunQuestion(const TRunQuestion& question, QWidget* parent) : QDialog(parent) {
  setObjectName(ToQt("fmRunQuestion"));
  setWindowTitle(ToQt(kProgramTitle));
  setProperty("text", ToQt(question.text + question.details));
  auto* all = new QVBoxLayout(this);
  auto* mark = Named(new TMarkBar, "barMark");
  all->addWidget(mark);
  mark->Mark(question.marks.colour, ToQt(question.database));
  all->addWidget(MakeText(question), 1);
  QWidget* buttons = MakeButtons();
  if (question.marks.confirm_database) all->addWidget(MakeEntry(question));
  all->addWidget(buttons);
  first_->setFocus();
}

QWidget* TfmRunQuestion::MakeText(const TRunQuestion& question) {
  auto* text = Named(new QLabel(ToQt(question.text + question.details)), "lbText");
  text->setTextFormat(Qt::PlainText);
  text->setWordWrap(true);
  text->setAlignment(Qt::AlignLeft | Qt::AlignTop);
  text->setTextInteractionFlags(Qt::TextSelectableByMouse);
  return new TTextArea(text);
}

QWidget* TfmRunQuestion::MakeEntry(const TRunQuestion& question) {
  auto* panel = new QWidget;
  auto* rows = new QVBoxLayout(panel);
  rows->setContentsMargins(0, 0, 0, 0);
  auto* label =
      new QLabel(TText::tr("Type the name of the database, %1, to run the script:").arg(ToQt(question.database)));
  label->setTextFormat(Qt::PlainText);
  label->setWordWrap(true);
  auto* entry = Named(new QLineEdit, "edDatabase");
  label->setBuddy(entry);
  entry->setAccessibleName(TText::tr("Name of the database"));
  rows->addWidget(label);
  rows->addWidget(entry);
  yes_->setEnabled(false);
  Handle(entry, &QLineEdit::textChanged, this,
         [this, entry, name = ToQt(question.database)] { yes_->setEnabled(entry->text() == name); });
  first_ = entry;
  return panel;
}

QWidget* TfmRunQuestion::MakeButtons() {
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Yes | QDialogButtonBox::No);
  yes_ = Named(buttons->button(QDialogButtonBox::Yes), "bnYes");
  QPushButton* no = Named(buttons->button(QDialogButtonBox::No), "bnNo");
  yes_->setAutoDefault(false);
  no->setDefault(true);
  Handle(yes_, &QPushButton::clicked, this, [this] { accept(); });
  Handle(no, &QPushButton::clicked, this, [this] { reject(); });
  first_ = no;
  return buttons;
}

bool MayRunAfter(const TRunQuestion& question, QWidget* parent) {
  return TfmRunQuestion(question, parent).exec() == QDialog::Accepted;
}

}  // namespace velmora
