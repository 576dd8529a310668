// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/windows/Splash.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QScreen>

#include "shell/widgets/Icons.h"
#include "shell/widgets/QtText.h"
#include "util/Version.h"

namespace velmora {

namespace {

constexpr int kSplashIcon = 96;
constexpr int kMargin = 32;
constexpr double kSplashScale = 2.2;  // of the font around it

}  // namespace

TfmSplash::TfmSplash() : QWidget(nullptr, Qt::SplashScreen | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint) {
  setObjectName(QStringLiteral("fmSplash"));
  setWindowTitle(ToQt(kProgramTitle));
  setAttribute(Qt::WA_QuitOnClose, false);
  auto* icon = new QLabel;
  icon->setPixmap(ProgramIcon().pixmap(QSize(kSplashIcon, kSplashIcon), devicePixelRatioF()));
  auto* title = new QLabel(ToQt(AppTitle()));
  title->setObjectName(QStringLiteral("lbTitle"));
  QFont font = title->font();
  font.setPointSizeF(font.pointSizeF() * kSplashScale);
  font.setBold(true);
  title->setFont(font);

  auto* layout = new QHBoxLayout(this);
  layout->setContentsMargins(kMargin, kMargin, kMargin + kMargin / 2, kMargin);
  layout->setSpacing(kMargin * 3 / 4);
  layout->addWidget(icon);
  layout->addWidget(title);
}

void TfmSplash::ShowPainted() {
  adjustSize();
  QRect place(QPoint(0, 0), size());
  place.moveCenter(QGuiApplication::primaryScreen()->geometry().center());
  move(place.topLeft());
  show();
  repaint();
  // Some window systems paint only after they told that the window is on the screen.
  QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

// A thin line around it, since no window manager draws one.
void TfmSplash::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.fillRect(rect(), palette().window());
  painter.setPen(palette().color(QPalette::Mid));
  painter.drawRect(rect().adjusted(0, 0, -1, -1));
}

}  // namespace velmora
