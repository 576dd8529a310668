// SPDX-License-Identifier: GPL-3.0-or-later

// The windows in another language: what is translated and what is not, which keys lead where, and that all of it fits.

#include <QMenu>
#include <QMenuBar>
#include <QRadioButton>
#include <QRegularExpression>
#include <QStackedWidget>

#include "core/Engines.h"
#include "persist/RecentConnections.h"
#include "shell/DesktopRig.h"
#include "shell/widgets/Text.h"
#include "shell/widgets/frameConn.h"
#include "shell/windows/ComparisonDialog.h"
#include "shell/windows/CrashDialog.h"
#include "shell/windows/MapRuleDialog.h"
#include "shell/windows/MappingDialog.h"
#include "shell/windows/Options.h"
#include "shell/windows/RunQuestion.h"
#include "shell/windows/TaskMarksDialog.h"
#include "shell/windows/Translation.h"

namespace velmora {

namespace {

using ::testing::ElementsAre;
using testing::TDesktopRig;

TStringList CaptionsOf(const QList<QAction*>& actions) {
  TStringList captions;
  for (const QAction* action : actions)
    if (action->isVisible() && !action->isSeparator()) captions.push_back(FromQt(action->text()));
  return captions;
}

// Captions that share their key with another one.
TStringList Clashes(const TStringList& captions) {
  std::map<QChar, std::string> first;
  TStringList clashes;
  for (const std::string& caption : captions) {
    const QKeySequence key = QKeySequence::mnemonic(ToQt(caption));
    if (key.isEmpty()) continue;
    const QChar letter = key.toString().back();
    if (const auto [known, fresh] = first.emplace(letter, caption); !fresh)
      clashes.push_back(known->second + " / " + caption);
  }
  return clashes;
}

// What of a window is shown, with the keys that lead there, and has less room than its text takes.
struct TCaptions {
  TStringList all, cut;
};
TCaptions CaptionsIn(const QWidget& window) {
  TCaptions captions;
  const auto add = [&](const QWidget* widget, const QString& text, bool key) {
    if (!widget->isVisibleTo(&window) || text.isEmpty()) return;
    if (key) captions.all.push_back(FromQt(text));
    const bool fits = widget->sizePolicy().horizontalPolicy() == QSizePolicy::Ignored ||
                      widget->width() >= widget->minimumSizeHint().width();
    if (!fits) captions.cut.push_back(FromQt(text));
  };
  for (const auto* button : window.findChildren<QAbstractButton*>()) add(button, button->text(), true);
  for (const auto* label : window.findChildren<QLabel*>()) add(label, label->text(), label->buddy() != nullptr);
  return captions;
}

void ExpectInOrder(QWidget& window, const std::string& what) {
  window.show();
  QCoreApplication::processEvents();
  const TCaptions captions = CaptionsIn(window);
  EXPECT_THAT(Clashes(captions.all), ElementsAre()) << what;
  EXPECT_THAT(captions.cut, ElementsAre()) << what;
  window.hide();
}

TEST(TranslationTest, TheFirstLanguageOfTheUsersThatThereIsCounts) {
  const std::pair<const char*, const char*> kCases[] = {
      {"de-AT de-Latn-AT de", "de"}, {"fr-FR de_DE", "de"}, {"en-GB de", ""}, {"C", ""}, {"xx", ""}, {"", ""}};
  for (const auto& [languages, language] : kCases)
    EXPECT_EQ(TTranslation(QString::fromLatin1(languages).split(QLatin1Char(' '))).Language(), QLatin1String(language))
        << languages;
}

TEST(TranslationTest, NumbersHaveTheirPlural) {
  const auto places = [](std::size_t count) { return FromQt(TText::Counted("%n place(s)", nullptr, count)); };
  EXPECT_EQ(places(1) + ", " + places(2), "1 place, 2 places");
  const TTranslation german({QStringLiteral("de")});
  EXPECT_EQ(places(1) + ", " + places(2), "1 Stelle, 2 Stellen");
}

TEST(TranslationTest, TheMainWindowIsGermanButForTheNamesOfCommands) {
  const TTranslation german({QStringLiteral("de")});
  TDesktopRig rig;
  const auto menus = rig.Find<QMenuBar>("mainMenu")->actions();
  EXPECT_THAT(CaptionsOf(menus), ElementsAre("&Files", "&Script", "&Actions", "E&xtras", "&Help"));
  EXPECT_THAT(Clashes(CaptionsOf(menus)), ElementsAre());
  for (const QAction* menu : menus) EXPECT_THAT(Clashes(CaptionsOf(menu->menu()->actions())), ElementsAre());
  EXPECT_EQ(rig.Main().Command("acAnalyze")->text(), QStringLiteral("Analyze"));
  EXPECT_EQ(rig.Main().Command("acAnalyze")->toolTip(), QStringLiteral("Beide Datenbanken vergleichen (F9)"));
  EXPECT_EQ(rig.Main().Command("acSwapSides")->text(), QStringLiteral("Seiten tauschen"));
  EXPECT_EQ(rig.Find<QAbstractButton>("bnNewTask")->text(), QStringLiteral("&Neue Aufgabe..."));
  EXPECT_TRUE(CaptionsIn(rig.Main()).cut.empty());
}

TEST(TranslationTest, EachPageOfTheWizardIsInOrder) {
  const TTranslation german({QStringLiteral("de")});
  const testing::TScratchFolder folder;
  TEngineValues before;
  before.Set("server", "db.example.org");
  TRecentConnections(folder / "recent").Add(*FindEngine(kEngineMySQL), before, false);
  TfmTaskWiz wizard({}, nullptr, {}, folder / "recent");
  EXPECT_EQ(wizard.windowTitle(), QStringLiteral("Sync Wizard"));
  EXPECT_EQ(Child<QAbstractButton>(wizard, "bnBack")->text(), QStringLiteral("Zurück"));
  EXPECT_EQ(Child<QAbstractButton>(wizard, "bnNext")->text(), QStringLiteral("Next"));
  auto* other = Child<QRadioButton>(wizard, "cbOther");
  auto* engines = Child<QComboBox>(wizard, "cEngine");
  for (int i = 0; i < engines->count(); ++i) {
    engines->setCurrentIndex(i);
    other->click();
    Child<TfrConn>(wizard, "frRefConn")->SetEngine(engines->currentData().toInt());
    ExpectInOrder(wizard, FromQt(engines->currentText()));
  }
  Child<QAbstractButton>(wizard, "cbLiveConn")->click();
  for (auto* more : wizard.findChildren<QAbstractButton*>(QStringLiteral("bnMoreMySQL"))) more->setChecked(true);
  ExpectInOrder(wizard, "the page of the reference");
  wizard.show();
  Child<QStackedWidget>(wizard, "pages")->setCurrentIndex(1);
  Child<QWidget>(wizard, "bnAnalyze")->show();
  QCoreApplication::processEvents();
  EXPECT_THAT(Clashes(CaptionsIn(wizard).all), ElementsAre());
}

TEST(TranslationTest, DialogsAreInOrder) {
  const TTranslation german({QStringLiteral("de")});
  TTaskMarks marks;
  marks.confirm_database = true;
  TfmOptions options;
  TfmComparison comparison(nullptr);
  TfmMapRule rule;
  TfmTaskMarks task;
  TfmCrash crash(std::vector{TCrashReport{"/tmp/velmora.crash.txt", "the report"}}, nullptr);
  TfmRunQuestion question({"2 Anweisungen ausführen?", "", marks, "shop"});
  for (QDialog* dialog : std::initializer_list<QDialog*>{&options, &comparison, &rule, &task, &crash, &question})
    ExpectInOrder(*dialog, FromQt(dialog->objectName()));
  TfmMapping mapping({}, {}, nullptr);
  auto* pages = Child<QTabWidget>(mapping, "pages");
  for (int i = 0; i < pages->count(); ++i) {
    pages->setCurrentIndex(i);
    ExpectInOrder(mapping, FromQt(pages->tabText(i)));
  }
  EXPECT_EQ(task.windowTitle(), QStringLiteral("Aufgabe"));
  EXPECT_EQ(crash.windowTitle(), QStringLiteral("Absturzbericht"));
}

}  // namespace

}  // namespace velmora
