// SPDX-License-Identifier: GPL-3.0-or-later

// The small windows: what they show at first, what they give back, and what is reachable in them.

#include <gmock/gmock.h>

#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QFontComboBox>
#include <QImage>
#include <QLabel>
#include <QListWidget>
#include <QPainter>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpression>
#include <QScreen>
#include <QSet>
#include <QSpinBox>
#include <QTest>
#include <QTextBlock>
#include <QTextBrowser>
#include <algorithm>
#include <cmath>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "persist/Options.h"
#include "shell/QtEnvironment.h"
#include "shell/widgets/Icons.h"
#include "shell/widgets/QtText.h"
#include "shell/widgets/SqlColours.h"
#include "shell/windows/About.h"
#include "shell/windows/Confirm.h"
#include "shell/windows/Dump.h"
#include "shell/windows/Help.h"
#include "shell/windows/Options.h"
#include "shell/windows/Splash.h"
#include "util/Errors.h"
#include "util/Version.h"

namespace velmora {

namespace {

using ::testing::ElementsAre;

// Options as they are kept.
class TKeptOptions : public TOptionStore {
 public:
  explicit TKeptOptions(const TOptions& options) { SaveOptions(options, *this); }

  std::optional<std::string> ReadText(const std::string&) const override { return {}; }
  std::optional<std::int64_t> ReadInteger(const std::string&) const override { return {}; }
  void WriteText(const std::string&, const std::string&) override {}
  void WriteInteger(const std::string& name, std::int64_t value) override { integers.emplace(name, value); }
  void Flush() override {}

  std::map<std::string, std::int64_t> integers;
};

std::map<std::string, std::int64_t> Switches(const TOptions& options) {
  std::map<std::string, std::int64_t> switches = TKeptOptions(options).integers;
  std::erase_if(switches, [](const auto& one) { return one.first.ends_with("FontSize"); });
  return switches;
}

// --- Options

TEST(OptionsDialogTest, GivesBackWhatItWasGiven) {
  TfmOptions dialog;
  TOptions options;
  options.LogFontName = "No Such Family";
  options.LogFontSize = 300;
  options.VerboseLog = true;
  const TOptions before = options;
  WhenModal([](QWidget* window) { Click(*window, "butOK"); });
  EXPECT_TRUE(dialog.Edit(options));
  EXPECT_EQ(options.LogFontName, "No Such Family");
  EXPECT_EQ(options.LogFontSize, 300);
  EXPECT_EQ(options.ScriptFontName, before.ScriptFontName);
  EXPECT_EQ(options.ScriptFontSize, before.ScriptFontSize);
  EXPECT_EQ(Switches(options), Switches(before));
}

// Each box belongs to the key of its own name, and to no other.
TEST(OptionsDialogTest, EachBoxSetsItsOwnSwitch) {
  TfmOptions dialog;
  for (const auto& [key, standard] : Switches({})) {
    TOptions options;
    auto expected = Switches(options);
    expected[key] = 1 - standard;
    const std::string box = "chk" + key;
    WhenModal([&, on = standard == 1](QWidget* window) {
      EXPECT_EQ(Child<QCheckBox>(*window, box.c_str())->isChecked(), on);
      Child<QCheckBox>(*window, box.c_str())->click();
      Click(*window, "butOK");
    });
    EXPECT_TRUE(dialog.Edit(options)) << box;
    EXPECT_EQ(Switches(options), expected) << box;
  }
}

TEST(OptionsDialogTest, FontsAreReadFromTheirOwnFields) {
  TfmOptions dialog;
  TOptions options;
  WhenModal([](QWidget* window) {
    Child<QFontComboBox>(*window, "cFontChanges")->setEditText(QStringLiteral("One"));
    Child<QSpinBox>(*window, "szFontChanges")->setValue(11);
    Child<QFontComboBox>(*window, "cFontScript")->setEditText(QStringLiteral("  "));  // no name: the old one stays
    Child<QSpinBox>(*window, "szFontScript")->setValue(12);
    QTest::keyClick(window, Qt::Key_Return);
  });
  EXPECT_TRUE(dialog.Edit(options));
  EXPECT_EQ(options.LogFontName, "One");
  EXPECT_EQ(options.LogFontSize, 11);
  EXPECT_EQ(options.ScriptFontName, "Courier New");
  EXPECT_EQ(options.ScriptFontSize, 12);
}

TEST(OptionsDialogTest, CancelChangesNothingAndTheNextShowingForgetsIt) {
  TfmOptions dialog;
  TOptions options;
  const auto change = [](QWidget* window) {
    Child<QFontComboBox>(*window, "cFontScript")->setEditText(QStringLiteral("Other"));
    Child<QCheckBox>(*window, "chkUseBackticks")->click();
  };
  WhenModal([&](QWidget* window) {
    change(window);
    Click(*window, "butCancel");
  });
  EXPECT_FALSE(dialog.Edit(options));
  WhenModal([&](QWidget* window) {
    EXPECT_EQ(Child<QFontComboBox>(*window, "cFontScript")->currentText(), QStringLiteral("Courier New"));
    change(window);
    QTest::keyClick(window, Qt::Key_Escape);
  });
  EXPECT_FALSE(dialog.Edit(options));
  EXPECT_EQ(options.ScriptFontName, "Courier New");
  EXPECT_FALSE(options.UseBackticks);
}

TEST(OptionsDialogTest, NoTwoControlsShareAnUnderlinedLetter) {
  TfmOptions dialog;
  QString letters;
  for (const QWidget* widget : dialog.findChildren<QWidget*>()) {
    const QString text = widget->property("text").toString();
    const qsizetype mark = text.indexOf(QLatin1Char('&'));
    if (mark >= 0) letters += text[mark + 1].toUpper();
  }
  EXPECT_EQ(letters.size(), 14);
  for (const QChar letter : letters) EXPECT_EQ(letters.count(letter), 1) << FromQt(QString(letter));
}

// --- Structure extraction

TEST(DumpDialogTest, OpensInItsStates) {
  TfmDump dialog;
  EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Extract database structure"));
  EXPECT_EQ(Child<QListWidget>(dialog, "CheckListBox1")->count(), 0);
  EXPECT_FALSE(Child<QRadioButton>(dialog, "rSourceDB")->isChecked());
  EXPECT_TRUE(Child<QRadioButton>(dialog, "rTargetDB")->isChecked());
  EXPECT_TRUE(Child<QPushButton>(dialog, "cxButton1")->isEnabled());
  EXPECT_TRUE(Child<QPushButton>(dialog, "cxButton2")->isEnabled());
  std::vector<Qt::CheckState> states;
  for (int number = 1; number <= 7; ++number) {
    const auto& box = *Child<QCheckBox>(dialog, ("cxCheckBox" + std::to_string(number)).c_str());
    EXPECT_EQ(box.text(), QString());
    states.push_back(box.checkState());
  }
  EXPECT_THAT(states, ElementsAre(Qt::PartiallyChecked, Qt::Unchecked, Qt::PartiallyChecked, Qt::Unchecked,
                                  Qt::Unchecked, Qt::Unchecked, Qt::PartiallyChecked));
  EXPECT_TRUE(Child<QPushButton>(dialog, "butOK")->isDefault());
}

TEST(DumpDialogTest, NothingEnablesExtractAndCancelEndsIt) {
  TfmDump dialog;
  WhenModal([](QWidget* window) {
    for (auto* button : window->findChildren<QAbstractButton*>())
      if (button->objectName() != QStringLiteral("butCancel")) button->click();
    EXPECT_FALSE(Child<QPushButton>(*window, "butOK")->isEnabled());
    QTest::keyClick(window, Qt::Key_Return);
    EXPECT_TRUE(window->isVisible());
    Click(*window, "butCancel");
  });
  EXPECT_EQ(dialog.exec(), QDialog::Rejected);
  WhenModal([](QWidget* window) { window->close(); });
  EXPECT_EQ(dialog.exec(), QDialog::Rejected);
}

// --- About, confirmation, splash

TEST(AboutDialogTest, LinksRunTheirActionsByKeyAndItStays) {
  TfmAbout dialog;
  std::vector<std::string> done;
  dialog.OnVisitWeb = [&] { done.emplace_back("web"); };
  dialog.OnContactSupport = [&] { done.emplace_back("mail"); };
  EXPECT_THAT(FromQt(Child<QLabel>(dialog, "lbTitle")->text()), AppTitle());
  dialog.show();
  for (const char* name : {"lbVisitWeb", "lbContactSupport"}) {
    auto& link = *Child<QLabel>(dialog, name);
    link.setFocus(Qt::TabFocusReason);
    QTest::keyClick(&link, Qt::Key_Tab);  // from the text to the link in it
    link.setFocus(Qt::TabFocusReason);
    QTest::keyClick(&link, Qt::Key_Return);
  }
  EXPECT_THAT(done, ElementsAre("web", "mail"));
  EXPECT_TRUE(dialog.isVisible());
  QTest::keyClick(Child<QLabel>(dialog, "lbVisitWeb"), Qt::Key_Escape);
  EXPECT_FALSE(dialog.isVisible());
}

TEST(AboutDialogTest, AnErrorOfALinkIsShownAndWithoutActionNothingHappens) {
  TfmAbout dialog;
  const auto follow = [&] { Q_EMIT Child<QLabel>(dialog, "lbVisitWeb")->linkActivated(QStringLiteral("#")); };
  follow();
  dialog.OnVisitWeb = [] { RaiseError("no browser"); };
  std::string shown;
  WhenModal([&](QWidget* box) {
    shown = FromQt(box->property("text").toString());
    box->close();
  });
  follow();
  EXPECT_EQ(shown, "no browser");
}

TEST(ConfirmDialogTest, HasAWrappedTextAndTwoAnswers) {
  TfmConfirm dialog;
  EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Please confirm"));
  EXPECT_TRUE(Child<QLabel>(dialog, "lbText")->wordWrap());
  WhenModal([](QWidget* window) { Click(*window, "butOK"); });
  EXPECT_EQ(dialog.exec(), QDialog::Accepted);
  WhenModal([](QWidget* window) { Click(*window, "butCancel"); });
  EXPECT_EQ(dialog.exec(), QDialog::Rejected);
}

TEST(SplashTest, StandsBorderlessOnTopAtTheCentre) {
  TfmSplash splash;
  splash.ShowPainted();
  EXPECT_TRUE(splash.isVisible());
  EXPECT_TRUE(splash.windowFlags().testFlag(Qt::FramelessWindowHint));
  EXPECT_TRUE(splash.windowFlags().testFlag(Qt::WindowStaysOnTopHint));
  const QPoint off = splash.geometry().center() - splash.screen()->geometry().center();
  EXPECT_LE(off.manhattanLength(), 2);
  EXPECT_EQ(FromQt(Child<QLabel>(splash, "lbTitle")->text()), AppTitle());
}

// --- Icons

double Contrast(QColor a, QColor b) {
  const auto luminance = [](const QColor& colour) {
    const auto linear = [](double part) {
      return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) + 0.0722 * linear(colour.blueF());
  };
  const double x = luminance(a);
  const double y = luminance(b);
  return (std::max(x, y) + 0.05) / (std::min(x, y) + 0.05);
}

// The share of an icon's pixels that stand out from the window behind them as signs have to.
double Legible(const QIcon& icon, const QColor& window) {
  constexpr int kSize = 24;
  QImage image(kSize, kSize, QImage::Format_RGB32);
  image.fill(window);
  QPainter painter(&image);
  icon.paint(&painter, image.rect());
  painter.end();
  int legible = 0;
  for (int y = 0; y < kSize; ++y)
    for (int x = 0; x < kSize; ++x) legible += Contrast(image.pixelColor(x, y), window) >= 3 ? 1 : 0;
  return legible / double(kSize * kSize);
}

TEST(IconTest, EachOfTheSetCanBeReadOnLightAndOnDark) {
  ASSERT_FALSE(ProgramIcon().isNull());  // makes the set available
  const QStringList files = QDir(QStringLiteral(":/icons")).entryList();
  const QStringList written = QDir(QStringLiteral(VELMORA_SOURCE_DIR "/src/shell/icons")).entryList(QDir::Files);
  EXPECT_EQ(QSet<QString>(files.begin(), files.end()), QSet<QString>(written.begin(), written.end()));
  const QPalette before = QApplication::palette();
  for (const auto& [window, text] : {std::pair(QColor(Qt::white), QColor(Qt::black)),
                                     std::pair(QColor(0x2b, 0x2b, 0x2b), QColor(0xee, 0xee, 0xee))}) {
    QPalette palette = before;
    palette.setColor(QPalette::Window, window);
    palette.setColor(QPalette::WindowText, text);
    QApplication::setPalette(palette);
    for (const QString& file : files)
      EXPECT_GT(Legible(Icon(QFileInfo(file).baseName()), window), 0.04)
          << FromQt(file) << " on " << FromQt(window.name());
  }
  QApplication::setPalette(before);
}

TEST(SqlColoursTest, CommentsCanBeReadOnEveryGround) {
  for (const QColor& paper : {QColor(Qt::white), QColor(0x1e, 0x1f, 0x22)}) {
    QPalette palette;
    palette.setColor(QPalette::Base, paper);
    const TSqlColours colours = SqlColours(palette);
    EXPECT_GE(Contrast(colours.comment, paper), 7) << FromQt(paper.name());
    for (const QColor& line : {colours.fault_line, colours.difference_line})
      EXPECT_GE(Contrast(colours.comment, line), 4.5) << FromQt(line.name());
  }
}

// --- Help

// A page by its name, with the names it links to; pictures have to be icons of the set.
QSet<QString> LinksOf(const QString& page) {
  QFile file(QStringLiteral(":/help/") + page);
  if (!file.open(QIODevice::ReadOnly)) {
    ADD_FAILURE() << "no page " << FromQt(page);
    return {};
  }
  const QString text = QString::fromUtf8(file.readAll());
  QSet<QString> links;
  static const QRegularExpression kReference(QStringLiteral("(href|src)=\"([^\"]*)\""));
  for (auto found = kReference.globalMatch(text); found.hasNext();) {
    const QRegularExpressionMatch match = found.next();
    if (match.captured(1) == QStringLiteral("href"))
      links << match.captured(2);
    else
      EXPECT_TRUE(QFile::exists(QStringLiteral(":/icons/%1.svg").arg(match.captured(2)))) << FromQt(page);
  }
  return links;
}

TEST(HelpTest, EachPageIsReachedFromTheFirstAndNoLinkIsDead) {
  TfmHelp help;
  QSet<QString> reached;
  QStringList waiting{QStringLiteral("index.html")};
  while (!waiting.isEmpty()) {
    const QString page = waiting.takeFirst();
    if (reached.contains(page)) continue;
    reached << page;
    for (const QString& link : LinksOf(page)) waiting << link;
  }
  const QStringList written = QDir(QStringLiteral(VELMORA_SOURCE_DIR "/src/shell/help")).entryList(QDir::Files);
  EXPECT_EQ(reached, QSet<QString>(written.begin(), written.end()));
  EXPECT_EQ(Child<QListWidget>(help, "lsPages")->count(), written.size());
}

TEST(HelpTest, ListLinksAndHistoryKeepTogether) {
  TfmHelp help;
  help.show();
  auto& list = *Child<QListWidget>(help, "lsPages");
  auto& text = *Child<QTextBrowser>(help, "tbText");
  const auto heading = [&] { return text.document()->firstBlock().text(); };
  help.activateWindow();
  for (int row = list.count(); --row >= 0;) {
    list.setCurrentRow(row);
    EXPECT_EQ(heading(), list.currentItem()->text());
  }
  ASSERT_TRUE(QTest::qWaitForWindowActive(&help));
  QTest::keyClick(&text, Qt::Key_Tab);  // to the first link of the first page
  QTest::keyClick(&text, Qt::Key_Return);
  EXPECT_EQ(heading(), list.currentItem()->text());
  EXPECT_NE(list.currentRow(), 0);
  QTest::keyClick(&text, Qt::Key_Left, Qt::AltModifier);
  EXPECT_EQ(list.currentRow(), 0);
  EXPECT_EQ(heading(), list.currentItem()->text());
  QTest::keyClick(&text, Qt::Key_Escape);
  EXPECT_FALSE(help.isVisible());
}

}  // namespace

}  // namespace velmora
