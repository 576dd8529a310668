// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/windows/Progress.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <unistd.h>
#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

#include "sandbox/ChildProcess.h"
#include "shell/QtEnvironment.h"
#include "shell/widgets/TopLevel.h"
#include "shell/windows/QtHost.h"
#include "util/Errors.h"

namespace velmora {
namespace {

class ProgressTest : public ::testing::Test {
 protected:
  ProgressTest() {
    (new QVBoxLayout(&form_))->addWidget(field_ = new QLineEdit);
    form_.show();
    QApplication::setActiveWindow(&form_);
    field_->setFocus();
    QCoreApplication::processEvents();
  }
  bool Shown(const char* name) { return progress_.findChild<QWidget*>(QLatin1String(name))->isVisible(); }
  QProgressBar& Bar(const char* name) { return *progress_.findChild<QProgressBar*>(QLatin1String(name)); }
  QString Text(const char* name) { return progress_.findChild<QLabel*>(QLatin1String(name))->text(); }

  QWidget form_;
  QLineEdit* field_;
  TfmProgress progress_;
};

TEST_F(ProgressTest, ShapesFollowEachOtherOverOneDisabledForm) {
  struct TShape {
    const char* name;
    bool std_title, static_title, total, detail;
  };
  const auto expect = [this](const TShape& shape) {
    SCOPED_TRACE(shape.name);
    EXPECT_EQ(Shown("lbNaslovStd"), shape.std_title);
    EXPECT_EQ(Shown("lbNaslovStatic"), shape.static_title);
    EXPECT_EQ(Shown("bevel"), shape.total);
    EXPECT_EQ(Shown("totbar"), shape.total);
    EXPECT_EQ(Shown("detbar"), shape.detail);
    EXPECT_EQ(Shown("lbDetail"), shape.detail);
    EXPECT_FALSE(form_.isEnabled());
  };
  progress_.ShowTwoBars("Two", 10);
  expect({"two", true, false, true, true});
  progress_.ShowOneBar("One", 10);
  expect({"one", true, false, true, false});
  progress_.ShowSimple("Simple");
  expect({"simple", false, true, false, false});
  EXPECT_EQ(Text("lbNaslovStatic"), QStringLiteral("Simple"));

  progress_.Finish();
  progress_.Finish();
  QCoreApplication::processEvents();
  EXPECT_FALSE(progress_.isVisible());
  EXPECT_TRUE(form_.isEnabled());
  EXPECT_EQ(QApplication::focusWidget(), field_);
}

TEST_F(ProgressTest, BarsCountTheirSteps) {
  progress_.ShowTwoBars("Two", 5);
  progress_.StartDetail("first", 2);
  progress_.StepDetail();
  progress_.StepDetail();
  progress_.StepTotal();
  EXPECT_EQ(Bar("detbar").value(), 2);
  EXPECT_EQ(Bar("totbar").value(), 3);
  progress_.StartDetail("empty", 0);  // stays at 0, and does not run for ever
  EXPECT_EQ(Bar("detbar").value(), 0);
  EXPECT_GT(Bar("detbar").maximum(), 0);
  progress_.ShowSimple("Simple");
  progress_.StartDetail("shown", 1);
  EXPECT_TRUE(Shown("lbDetail"));
  progress_.close();  // ends it as Finish does
  EXPECT_TRUE(form_.isEnabled());
  progress_.ShowTwoBars("Two", 5);
  EXPECT_TRUE(Text("lbDetail").isEmpty());
  progress_.Finish();
}

TEST_F(ProgressTest, AWindowBesideTheProgramIsNotTheOneThatWorks) {
  QWidget help;
  help.setAttribute(Qt::WA_QuitOnClose, false);
  help.show();
  QApplication::setActiveWindow(&help);
  progress_.ShowSimple("Simple");
  EXPECT_FALSE(form_.isEnabled());
  EXPECT_TRUE(help.isEnabled());
  progress_.Finish();
}

TEST(TopLevelTest, TextsThatFillTheScreenAreCut) {
  EXPECT_EQ(Shortened(QStringLiteral("short\ntext"), 80), QStringLiteral("short\ntext"));
  EXPECT_EQ(Shortened(QStringLiteral("0123456789"), 4), QStringLiteral("0123\u2026"));
  const QString lines = QStringLiteral("a long line of a report\n").repeated(500);
  WhenModal([&](QWidget* box) {
    EXPECT_LT(box->height(), 700);
    EXPECT_EQ(dynamic_cast<QMessageBox&>(*box).detailedText(), lines);
    box->close();
  });
  ShowError(lines.toStdString());
}

TEST(TopLevelTest, ShowsTheTextOfErrorsAndGoesOn) {
  struct TCase {
    const char* text;
    const char* shown;
  };
  constexpr TCase kCases[] = {
      {"Invalid session file", "Invalid session file"},
      {"date : today\r\nexception message : It broke\r\nmain thread:", "It broke"},
      {"first\nException message : of another case", "first\nException message : of another case"},
      {"exception message : ", ""},
  };
  for (const TCase& item : kCases) EXPECT_EQ(ShownMessage(item.text), item.shown);

  QString shown;
  WhenModal([&](QWidget* box) {
    shown = dynamic_cast<QMessageBox&>(*box).text();
    box->close();
  });
  EXPECT_FALSE(AtTopLevel([] { RaiseError("<b>It</b> broke"); }));
  EXPECT_EQ(shown, QStringLiteral("<b>It</b> broke"));
  EXPECT_FALSE(AtTopLevel([] { throw EAbort(); }));  // shows nothing, or the test would wait
  EXPECT_TRUE(AtTopLevel([] {}));
}

TEST_F(ProgressTest, AReaderThatIsSlowIsShownAndCanBeCancelled) {
  TWindowWait wait;
  const TChildWaitGuard guard(wait);
  wait.ShowBy(&progress_);
  progress_.OnCancel = [&wait] { return wait.Cancel(); };
  bool form_was_out_of_use = false;
  QTimer timer;
  QObject::connect(&timer, &QTimer::timeout, &timer, [&] {
    if (!progress_.isVisible()) return;
    form_was_out_of_use = !form_.isEnabled();
    progress_.findChild<QPushButton*>(QStringLiteral("bnCancel"))->click();
  });
  timer.start(20);
  const auto never = [](const std::string&) -> std::string {
    for (;;) pause();
  };
  TChildProcess child([never] { return never; }, {}, {std::chrono::seconds(60), 1ULL << 31});
  for (int i = 0; i < 2; ++i) {  // in one command
    EXPECT_THROW(child.Ask({}), ECancelled);
    EXPECT_FALSE(child.Running());
  }
  EXPECT_TRUE(form_was_out_of_use);
  EXPECT_TRUE(form_.isEnabled());
  EXPECT_FALSE(progress_.isVisible());
}

TEST(QtHostTest, FiltersAreThoseOfTheDialogs) {
  EXPECT_EQ(QtFilter("Lotus 1-2-3|*.wk4;*.wk3"), "Lotus 1-2-3 (*.wk4 *.wk3)");
  EXPECT_EQ(QtFilter("All|*.*|Text file|*.txt"), "All (*)\nText file (*.txt)");
  EXPECT_EQ(FilterExtension("MySQL script|*.sql"), "sql");
  EXPECT_EQ(FilterExtension("All|*.*"), "");
}

// Counts how often a widget is painted.
class TPaintCount final : public QObject {
 public:
  explicit TPaintCount(QObject& widget) { widget.installEventFilter(this); }
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() == QEvent::Paint) ++paints;
    return QObject::eventFilter(watched, event);
  }
  int paints = 0;
};

TEST_F(ProgressTest, PaintsWhatShowsAndNotEachStep) {
  constexpr int kSteps = 20000;
  progress_.ShowTwoBars("Many", kSteps);
  progress_.StartDetail("tables", kSteps);
  const TPaintCount total(Bar("totbar"));
  const TPaintCount detail(Bar("detbar"));
  for (int i = 0; i < kSteps; ++i) {
    progress_.StepDetail();
    QCoreApplication::processEvents();
  }
  for (const TPaintCount* bar : {&total, &detail}) {
    EXPECT_GT(bar->paints, 20);
    EXPECT_LT(bar->paints, 2000);
  }
  EXPECT_EQ(Bar("totbar").value(), kSteps);
  progress_.Finish();
}

}  // namespace
}  // namespace velmora
