// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/windows/About.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "shell/widgets/Icons.h"
#include "shell/widgets/LinkColour.h"
#include "shell/widgets/QtText.h"
#include "shell/widgets/Text.h"
#include "shell/widgets/TopLevel.h"
#include "util/Version.h"

namespace velmora {

namespace {

constexpr int kIconSize = 64;
constexpr double kTitleScale = 1.5;  // of the font around it

QLabel* Title() {
  auto* title = new QLabel(ToQt(AppTitle()));
  title->setObjectName(QStringLiteral("lbTitle"));
  QFont font = title->font();
  font.setPointSizeF(font.pointSizeF() * kTitleScale);
  font.setBold(true);
  title->setFont(font);
  return title;
}

}  // namespace

TfmAbout::TfmAbout(QWidget* parent) : QDialog(parent) {
  setObjectName(QStringLiteral("fmAbout"));
  setWindowTitle(Fixed("About Velmora"));
  auto* icon = new QLabel;
  icon->setPixmap(ProgramIcon().pixmap(QSize(kIconSize, kIconSize), devicePixelRatioF()));

  auto* texts = new QVBoxLayout;
  texts->addWidget(Title());
  texts->addWidget(new QLabel(TText::tr("Makes the structure of a MySQL database equal to that of a reference.")));
  texts->addSpacing(8);
  texts->addWidget(Link(QStringLiteral("lbVisitWeb"), Fixed("Visit web page"), &TfmAbout::OnVisitWeb));
  texts->addWidget(Link(QStringLiteral("lbContactSupport"), Fixed("Contact support"), &TfmAbout::OnContactSupport));
  texts->addStretch();
  ShowLinks();
  auto* head = new QHBoxLayout;
  head->setSpacing(16);
  head->addWidget(icon, 0, Qt::AlignTop);
  head->addLayout(texts, 1);

  auto* buttons = new QDialogButtonBox;
  auto* close = buttons->addButton(TText::tr("Close"), QDialogButtonBox::RejectRole);
  close->setObjectName(QStringLiteral("butClose"));
  close->setDefault(true);
  close->setFocus();
  Handle(close, &QPushButton::clicked, this, [this] { reject(); });

  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(16, 16, 16, 12);
  layout->setSpacing(12);
  layout->addLayout(head);
  layout->addWidget(buttons);
  layout->setSizeConstraint(QLayout::SetFixedSize);
}

// In the colours of the desktop as they are by then.
void TfmAbout::ShowLinks() {
  const QString link = QStringLiteral("<a href=\"#\" style=\"color: %1\">%2</a>");
  for (const auto& [label, caption] : links_) label->setText(link.arg(LinkColour(palette()), caption.toHtmlEscaped()));
}

void TfmAbout::showEvent(QShowEvent* event) {
  ShowLinks();
  QDialog::showEvent(event);
}

QLabel* TfmAbout::Link(const QString& name, const QString& caption, std::function<void()> TfmAbout::*action) {
  auto* link = new QLabel(caption);
  links_.emplace_back(link, caption);
  link->setObjectName(name);
  link->setTextInteractionFlags(Qt::LinksAccessibleByMouse | Qt::LinksAccessibleByKeyboard);
  Handle(link, &QLabel::linkActivated, this, [this, action] {
    if (this->*action) (this->*action)();
  });
  return link;
}

}  // namespace velmora
