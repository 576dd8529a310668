// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/widgets/EmptyState.h"

#include <QAction>
#include <QDir>
#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

#include "shell/widgets/Named.h"
#include "shell/widgets/Text.h"

namespace velmora {

namespace {

constexpr TText kWhat = TText::Later(
    "A task holds two databases: a reference, and a target that is changed to be like it. Velmora shows how they "
    "differ and writes the script that makes the target equal.");
constexpr int kTextInLetters = 64;

QPushButton* Button(const char* name, const QString& caption, QAction* command) {
  auto* button = Named(new QPushButton(command->icon(), caption), name);
  button->setToolTip(command->toolTip());
  button->setAutoDefault(true);  // Enter presses the one that has the focus
  QObject::connect(button, &QPushButton::clicked, command, &QAction::trigger);
  return button;
}

}  // namespace

TEmptyState::TEmptyState(QLabel* heading, const TCommands& commands) {
  setObjectName(ToQt("panNoTask"));
  auto* what = Named(new QLabel(kWhat), "lbWhat");
  what->setWordWrap(true);
  what->setAlignment(Qt::AlignCenter);
  const int width = kTextInLetters * what->fontMetrics().averageCharWidth();
  what->setFixedSize(width, what->heightForWidth(width));
  auto* column = new QVBoxLayout(this);
  const int gap = column->spacing() * 2;
  column->addStretch(2);
  column->addWidget(heading);
  column->addSpacing(gap);
  column->addWidget(what, 0, Qt::AlignHCenter);
  column->addSpacing(gap);
  column->addWidget(MakeButtons(commands), 0, Qt::AlignHCenter);
  column->addSpacing(gap);
  MakeRecent(*column, commands);
  column->addStretch(3);
}

QWidget* TEmptyState::MakeButtons(const TCommands& commands) {
  auto* panel = new QWidget;
  auto* row = new QHBoxLayout(panel);
  row->setContentsMargins(0, 0, 0, 0);
  row->addWidget(Button("bnNewTask", TText::tr("&New task..."), commands.create));
  row->addWidget(Button("bnOpenTask", TText::tr("O&pen task..."), commands.open));
  return panel;
}

void TEmptyState::MakeRecent(QVBoxLayout& column, const TCommands& commands) {
  recent_heading_ = Named(new QLabel(TText::tr("Recent tasks")), "lbRecent");
  recent_heading_->hide();
  column.addWidget(recent_heading_, 0, Qt::AlignHCenter);
  for (QAction* command : commands.recent) {
    auto* button = new QPushButton;
    button->setObjectName(QStringLiteral("bnRecent%1").arg(recent_.size() + 1));
    button->setFlat(true);
    button->setAutoDefault(true);
    button->hide();
    connect(button, &QPushButton::clicked, command, &QAction::trigger);
    column.addWidget(button, 0, Qt::AlignHCenter);
    recent_.push_back(button);
  }
}

void TEmptyState::ShowRecent(std::size_t index, const QString& path) {
  QPushButton* button = recent_.at(index);
  button->setVisible(!path.isEmpty());
  if (index == 0) recent_heading_->setVisible(!path.isEmpty());
  const QString native = QDir::toNativeSeparators(path);
  const int room = kTextInLetters * fontMetrics().averageCharWidth();
  QString caption = fontMetrics().elidedText(native, Qt::ElideMiddle, room);
  button->setText(caption.replace(QLatin1Char('&'), QLatin1String("&&")));
  button->setToolTip(native.toHtmlEscaped());
  button->setAccessibleName(native);
}

}  // namespace velmora
