// SPDX-License-Identifier: GPL-3.0-or-later

// Drives the desktop program on the samples and writes pictures of its windows: velmora-screenshots FOLDER. They
// are made without a screen, so they look the same everywhere.

#include <QApplication>
#include <QDir>
#include <QMessageBox>
#include <QPainter>
#include <QTabWidget>
#include <QTreeView>
#include <QTreeWidget>
#include <cstdio>

#include "app/ScriptSplitter.h"
#include "shell/DesktopRig.h"
#include "shell/windows/Help.h"
#include "util/Files.h"

namespace velmora::testing {

namespace {

constexpr char kSamples[] = VELMORA_SOURCE_DIR "/examples/live/";

class TCamera {
 public:
  explicit TCamera(std::string folder) : folder_(std::move(folder)) { QDir().mkpath(ToQt(folder_)); }

  void Take(QWidget& window, const char* name) const {
    QCoreApplication::processEvents();
    Save(window.grab(), name);
  }
  // A window with another one over its middle, as a desktop shows them.
  void TakeBoth(QWidget& below, QWidget& above, const char* name) const {
    QCoreApplication::processEvents();
    QPixmap picture = below.grab();
    const QPixmap top = above.grab();
    QPainter painter(&picture);
    const QSize room = (picture.size() - top.size()) / picture.devicePixelRatio();
    painter.drawPixmap(room.width() / 2, room.height() / 2, top);
    painter.end();
    Save(picture, name);
  }

 private:
  void Save(const QPixmap& picture, const char* name) const {
    const QString path = QStringLiteral("%1/%2.png").arg(ToQt(folder_), QLatin1String(name));
    if (!picture.save(path)) throw std::runtime_error("cannot write " + FromQt(path));
    std::puts(path.toUtf8().constData());
  }

  std::string folder_;
};

void Load(TLiveDatabase& database, const std::string& file) {
  std::string script = ReadFileText(kSamples + file);
  std::string lines;
  for (const std::string& line : LinesOf(script)) lines += line + "\r\n";
  for (const TScriptStatement& statement : SplitScript(lines).statements) database.Run(statement.text);
}

void TakeWizard(TDesktopRig& rig, const TCamera& camera) {
  WhenModal([&](QWidget* wizard) {
    TDesktopRig::FillConnection(wizard, "frRefConn", "shop_reference");
    TDesktopRig::FillConnection(wizard, "frTgtConn", "shop_target");
    camera.Take(*wizard, "wizard-reference");
    auto* fields = wizard->findChild<QWidget*>(QStringLiteral("frRefConn"));
    auto* more = fields->findChild<QAbstractButton*>(QStringLiteral("bnMoreMySQL"));
    more->click();
    camera.Take(*wizard, "wizard-more");
    more->click();
    Click(*wizard, "bnNext");
    camera.Take(*wizard, "wizard-target");
    Click(*wizard, "bnNext");
  });
  rig.Trigger("acNewTask");
}

// The line of the tree that shows this text.
void Choose(QTreeView& tree, const char* text) {
  const QAbstractItemModel& lines = *tree.model();
  const QModelIndexList found =
      lines.match(lines.index(0, 0), Qt::DisplayRole, QLatin1String(text), 1, Qt::MatchStartsWith | Qt::MatchRecursive);
  if (found.isEmpty()) throw std::runtime_error(std::string("no line ") + text);
  tree.setCurrentIndex(found.constFirst());
  tree.setFocus();
}

void TakeDifferences(TDesktopRig& rig, const TCamera& camera, const char* name) {
  rig.Trigger("acAnalyze");
  Choose(*rig.Find<QTreeView>("tlDifferences"), "column last_name");
  camera.Take(rig.Main(), name);
}

void TakeStandard(TDesktopRig& rig, const TCamera& camera) {
  rig.NewTask("shop_reference", "shop_target", "acStandardDialect");
  rig.Trigger("acAnalyze");
  auto* tree = rig.Find<QTreeWidget>("tlActions");
  tree->setCurrentItem(tree->topLevelItem(2)->child(0));
  tree->setFocus();
  camera.Take(rig.Main(), "standard");
}

// Analyze, take out what would lose data, run.
void TakeRun(TDesktopRig& rig, const TCamera& camera) {
  rig.NewTask("shop_reference", "shop_target", "acAutomaticDialect");
  rig.Trigger("acAnalyze");
  auto* tree = rig.Find<QTreeView>("tlDifferences");
  for (const char* line : {"affiliate_clicks", "affiliates", "column icq_number"}) {
    Choose(*tree, line);
    QTest::keyClick(tree, Qt::Key_Space);
  }
  WhenModal([](QWidget* question) { Click(*question, "bnYes"); });
  rig.Trigger("acSynchronize");
  rig.Find<QTabWidget>("page")->setCurrentWidget(rig.Find<QWidget>("tsRun"));
  camera.Take(rig.Main(), "run");
}

void TakeProgress(TDesktopRig& rig, const TCamera& camera) {
  TfmProgress& progress = rig.Progress();
  progress.ShowTwoBars("Analyzing structure...", 120);
  progress.StartDetail("Comparing columns...", 40);
  for (int i = 0; i < 26; ++i) progress.StepDetail();
  camera.TakeBoth(rig.Main(), progress, "progress");
  progress.Finish();
}

void TakeFailedRun(TDesktopRig& rig, const TCamera& camera) {
  rig.NewTask("stop_reference", "stop_target", "acStandardDialect");
  rig.Trigger("acAnalyze");
  WhenModal([&](QWidget* box) {
    camera.TakeBoth(rig.Main(), *box, "failed-run");
    box->close();
  });
  rig.Trigger("acSynchronize");
}

void TakeDialog(TDesktopRig& rig, const TCamera& camera, const char* command, const char* name) {
  WhenModal([&](QWidget* dialog) {
    camera.Take(*dialog, name);
    dialog->close();
  });
  rig.Trigger(command);
}

// A task of a target that matters: its colour, and the question before a run.
void TakeMarks(TDesktopRig& rig, const TCamera& camera) {
  WhenModal([&](QWidget* dialog) {
    Child<QComboBox>(*dialog, "cColour")->setCurrentIndex(static_cast<int>(ETaskColour::Red));
    Child<QAbstractButton>(*dialog, "chkConfirmDatabase")->setChecked(true);
    camera.Take(*dialog, "task-marks");
    Click(*dialog, "butOK");
  });
  rig.Trigger("acTaskMarks");
  WhenModal([&](QWidget* question) {
    camera.TakeBoth(rig.Main(), *question, "marked-question");
    question->close();
  });
  rig.Trigger("acSynchronize");
}

QPalette DarkPalette() {
  const QColor window(0x2b, 0x2d, 0x30);
  const QColor base(0x1e, 0x1f, 0x22);
  const QColor text(0xdf, 0xe1, 0xe5);
  QPalette palette(window);
  palette.setColor(QPalette::Window, window);
  palette.setColor(QPalette::Base, base);
  palette.setColor(QPalette::AlternateBase, window);
  palette.setColor(QPalette::Highlight, QColor(0x2e, 0x43, 0x6e));
  for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::HighlightedText})
    palette.setColor(role, text);
  for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
    palette.setColor(QPalette::Disabled, role, QColor(0x6f, 0x73, 0x7a));
  return palette;
}

void TakeAll(const TCamera& camera) {
  TLiveDatabase reference("shop_reference");
  TLiveDatabase target("shop_target");
  TLiveDatabase stop_reference("stop_reference");
  TLiveDatabase stop_target("stop_target");
  Load(reference, "reference.sql");
  Load(target, "target.sql");
  Load(stop_reference, "stops/reference.sql");
  Load(stop_target, "stops/target.sql");

  TDesktopRig rig;
  rig.Main().resize(1000, 700);
  camera.Take(rig.Main(), "empty");
  TakeWizard(rig, camera);
  rig.NewTask("shop_reference", "shop_target", "acAutomaticDialect");
  camera.Take(rig.Main(), "hint");
  TakeDifferences(rig, camera, "differences");
  WhenModal([&](QWidget* box) {
    camera.TakeBoth(rig.Main(), *box, "question");
    box->close();
  });
  rig.Trigger("acSynchronize");
  auto* page = rig.Find<QTabWidget>("page");
  page->setCurrentWidget(rig.Find<QWidget>("tsScript"));
  camera.Take(rig.Main(), "script");
  page->setCurrentWidget(rig.Find<QWidget>("tsMessages"));
  camera.Take(rig.Main(), "messages");
  page->setCurrentWidget(rig.Find<QWidget>("tsActions"));
  TakeProgress(rig, camera);
  TakeDialog(rig, camera, "acOptions", "options");
  TakeDialog(rig, camera, "acAbout", "about");
  TakeDialog(rig, camera, "acDumpDB", "dump");
  TakeStandard(rig, camera);
  TakeFailedRun(rig, camera);

  rig.NewTask("shop_reference", "shop_target", "acAutomaticDialect");
  rig.Trigger("acAnalyze");
  TakeMarks(rig, camera);
  QApplication::setPalette(DarkPalette());
  rig.Trigger("acCloseTask");
  camera.Take(rig.Main(), "dark-empty");
  TakeDialog(rig, camera, "acNewTask", "dark-wizard");
  TakeDialog(rig, camera, "acOptions", "dark-options");
  TakeDialog(rig, camera, "acAbout", "dark-about");
  TfmHelp help;
  help.show();
  camera.Take(help, "dark-help");
  help.close();
  rig.NewTask("shop_reference", "shop_target", "acAutomaticDialect");
  TakeDifferences(rig, camera, "dark");
  page->setCurrentWidget(rig.Find<QWidget>("tsScript"));
  camera.Take(rig.Main(), "dark-script");
  QApplication::setPalette(QPalette());
  TakeRun(rig, camera);
  WhenModal([](QWidget* question) { Click(*question, "bnYes"); });
  rig.Trigger("acSynchronize");
  camera.Take(rig.Main(), "identical");
  rig.Main().close();
}

}  // namespace

}  // namespace velmora::testing

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: velmora-screenshots FOLDER\n", stderr);
    return 2;
  }
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication::setDesktopSettingsAware(false);
  QApplication application(argc, argv);
  try {
    velmora::testing::TakeAll(velmora::testing::TCamera(argv[1]));
  } catch (const std::exception& error) {
    std::fprintf(stderr, "velmora-screenshots: %s\n", error.what());
    return 1;
  }
  return 0;
}
