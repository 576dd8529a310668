// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/QtEnvironment.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QPointer>
#include <QTest>
#include <QTimer>
#include <memory>

namespace velmora {

namespace {

class TQtEnvironment final : public ::testing::Environment {
 public:
  void SetUp() override {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication::setDesktopSettingsAware(false);
    application_ = std::make_unique<QApplication>(count_, arguments_);
    QApplication::setQuitOnLastWindowClosed(false);
    QObject::connect(&watchdog_, &QTimer::timeout, &watchdog_, [this] { CloseForgotten(); });
    watchdog_.start(kPatience);
  }
  void TearDown() override {
    watchdog_.stop();
    application_.reset();
  }

 private:
  static constexpr int kPatience = 5000;  // milliseconds

  // A modal window that nobody ends would keep the test waiting for ever.
  void CloseForgotten() {
    QWidget* modal = QApplication::activeModalWidget();
    if (modal != nullptr && modal == seen_) {
      ADD_FAILURE() << "unexpected modal window: " << modal->property("text").toString().toStdString();
      modal->close();
    }
    seen_ = modal;
  }

  QTimer watchdog_;
  QPointer<QWidget> seen_;
  char name_[5] = "test";
  char* arguments_[2] = {name_, nullptr};
  int count_ = 1;
  std::unique_ptr<QApplication> application_;
};

[[maybe_unused]] const ::testing::Environment* const kEnvironment =
    ::testing::AddGlobalTestEnvironment(new TQtEnvironment);  // the framework owns it

}  // namespace

void WhenModal(const std::function<void(QWidget*)>& act, int timeout) {
  auto* timer = new QTimer(qApp);
  auto clock = std::make_shared<QElapsedTimer>();
  clock->start();
  timer->setInterval(5);
  QObject::connect(timer, &QTimer::timeout, timer, [=] {
    QWidget* modal = QApplication::activeModalWidget();
    if (modal == nullptr && clock->elapsed() < timeout) return;
    timer->stop();
    timer->deleteLater();
    if (modal == nullptr) {
      ADD_FAILURE() << "no modal window came up";
      return;
    }
    act(modal);
  });
  timer->start();
}

}  // namespace velmora
