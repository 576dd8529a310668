// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/windows/TaskWiz.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAbstractItemView>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QSpinBox>
#include <QTest>
#include <filesystem>

#include "engines/mysql/DBConnMySQL.h"
#include "shell/QtEnvironment.h"
#include "shell/widgets/QtText.h"
#include "support/FakeMyConnection.h"
#include "support/FakeOLEDB.h"
#include "support/LiveDatabase.h"
#include "support/MessageOf.h"
#include "support/RecordingHost.h"
#include "support/ScratchFolder.h"
#include "util/Files.h"
#include "util/Format.h"

namespace velmora {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::MessageOf;
using ::testing::Not;

void Type(const QWidget& parent, const char* name, const std::string& text) {
  Child<QLineEdit>(parent, name)->setText(ToQt(text));
}

std::string TextOf(const QWidget& parent, const char* name) { return FromQt(Child<QLineEdit>(parent, name)->text()); }

TStringList ItemsOf(const QComboBox& list) {
  TStringList items;
  for (int i = 0; i < list.count(); ++i) items.push_back(FromQt(list.itemText(i)));
  return items;
}

// Opens a list as a user does, and gives what it shows.
TStringList Open(const QWidget& parent, const char* name) {
  auto* list = Child<QComboBox>(parent, name);
  list->showPopup();
  list->hidePopup();
  return ItemsOf(*list);
}

// The text of the message box that `act` brings up.
std::string ErrorOf(const std::function<void()>& act) {
  std::string text;
  WhenModal([&text](QWidget* box) {
    EXPECT_EQ(box->objectName(), ToQt("mbError"));
    EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr) << "the cursor is busy while nothing works";
    text = FromQt(qobject_cast<QMessageBox*>(box)->text());
    qobject_cast<QDialog*>(box)->accept();
  });
  act();
  return text;
}

bool Shown(const QWidget& parent, const char* name) { return !Child(parent, name)->isHidden(); }

// As in "server=x port=1".
std::string TextOf(const TEngineValues& values, const TEngineRow& row) {
  std::string text;
  for (const TEngineKey& key : row.keys)
    text += (text.empty() ? "" : " ") + std::string(key.name) + "=" + values.Text(key.name);
  return text;
}

// --- The connection frame

class FrameConnTest : public ::testing::Test {
 protected:
  FrameConnTest() { frame.show(); }

  // Every entry says its own name; lists that take no text stay empty.
  void FillIn() {
    for (auto* field : frame.findChildren<QLineEdit*>())
      if (!field->objectName().isEmpty() && field->maxLength() > 1 &&
          qobject_cast<QSpinBox*>(field->parent()) == nullptr)
        field->setText(field->objectName());
    for (auto* list : frame.findChildren<QComboBox*>())
      if (list->isEditable()) list->setEditText(list->objectName());
    for (const char* name : {"cDBMySQL", "cDBMSSQL"}) {
      auto* list = Child<QComboBox>(frame, name);
      list->addItem(ToQt(name));
      list->setCurrentIndex(0);
    }
  }
  std::string ValuesText() const {
    const TEngineValues values = frame.Values();
    return TextOf(values, *FindEngine(frame.Engine()));
  }
  std::string Page() const {
    std::string shown;
    for (const char* page :
         {"tsMySQL", "tabFolder", "tsFile", "tsMSSQL", "tsText", "tsIB", "tsOracle", "tsAccess", "tsODBC"})
      if (Shown(frame, page)) shown += page;
    return shown;
  }

  TEnumerators enumerators;
  std::shared_ptr<testing::TFakeMyServer> server = std::make_shared<testing::TFakeMyServer>();
  testing::TFakeOLEDB provider;
  TfrConn frame{{[this](const TEngineValues& /*own*/) { return std::make_unique<testing::TFakeMyConnection>(server); },
                 provider.Maker()},
                nullptr,
                {.SQLServers = [this] { return enumerators.SQLServers(); },
                 .ODBCSources = [this] { return enumerators.ODBCSources(); },
                 .OracleServices = [this] { return enumerators.OracleServices(); }}};
};

TEST_F(FrameConnTest, EachEngineHasItsPageAndValues) {
  const std::string no_name = "StrEngine error";
  const struct {
    int engine;
    const char* page;
    std::string values;
  } kCases[] = {
      {1, "tabFolder", no_name},
      {2, "tabFolder", "folder=edFolder"},
      {3, "tsFile", "filename=edFilename"},
      {5, "tsIB", "server=cServerIB database=edDBIB username=edUsernameIB password=edPasswordIB"},
      {6, "tsAccess", "filename=edFileAccess password=edPasswordAccess sysdb_filename=edSysDBAccess"},
      {7, "tsMSSQL",
       "server=cServerMSSQL database=cDBMSSQL username=edUsernameMSSQL password=edPasswordMSSQL "
       "windows_authentication=Y"},
      {8, "tsMySQL",
       "server=edServerMySQL database=cDBMySQL username=edUsernameMySQL password=edPasswordMySQL port=3306"},
      {9, "tsFile", no_name},
      {10, "tsOracle", "server=cServerORA username=edUsernameORA password=edPasswordORA authmode=Normal direct=N"},
      {11, "tabFolder", "folder=edFolder"},
      {12, "tsText", "folder=edTextFolder HDR=N separator=\t"},
      {13, "tsFile", no_name},
      {14, "tsFile", "filename=edFilename HDR=N IMEX=Y"},
      {15, "tabFolder", "folder=edFolder"},
      {16, "tsODBC", "dsn=cDSN"},
  };
  for (const auto& c : kCases) {
    frame.SetEngine(c.engine);
    EXPECT_EQ(Page(), c.page) << c.engine;
    EXPECT_EQ(Shown(frame, "cbFileHDR"), c.engine == 14);
    FillIn();
    Type(frame, "edSocketMySQL", "");
    std::string values;
    const std::string error = MessageOf([&] { values = ValuesText(); });
    EXPECT_EQ(values.empty() ? error : values, c.values) << c.engine;
    if (values.empty())
      EXPECT_NE(MessageOf([&] { frame.CreateConnection(); }), "nothing raised") << c.engine;
    else
      EXPECT_EQ(frame.CreateConnection()->GetEngine(), c.engine);
  }
}

TEST_F(FrameConnTest, HowAServerIsReachedStandsInAFold) {
  frame.SetEngine(8);
  EXPECT_FALSE(Shown(frame, "panMoreMySQL"));
  const auto further = [this] {
    std::string text;
    const TEngineValues values = frame.Values();
    for (const TEngineKey& key : FindEngine(8)->further)
      if (values.Has(key.name)) text += Format("%s=%s ", key.name, values.Text(key.name));
    return text;
  };
  EXPECT_EQ(further(), "");
  Child<QAbstractButton>(frame, "bnMoreMySQL")->click();
  EXPECT_TRUE(Shown(frame, "panMoreMySQL"));
  Type(frame, "edTlsCaMySQL", "/ca.pem");
  EXPECT_EQ(further(), "tls=required tls_ca=/ca.pem ") << "whom to trust is named to be counted";
  Child<QComboBox>(frame, "cTlsMySQL")->setCurrentText(ToQt("preferred"));
  Type(frame, "edTlsCertMySQL", "/cert.pem");
  Type(frame, "edTlsKeyMySQL", "/key.pem");
  Type(frame, "edSocketMySQL", "/my.sock");
  Type(frame, "edServerKeyMySQL", "/server.pem");
  for (const char* box : {"cbGetServerKeyMySQL", "cbOldLoginMySQL"}) Child<QCheckBox>(frame, box)->setChecked(true);
  EXPECT_EQ(further(),
            "tls=preferred tls_ca=/ca.pem tls_cert=/cert.pem tls_key=/key.pem socket=/my.sock "
            "server_public_key=/server.pem get_server_public_key=Y allow_old_login=Y ");
  Type(frame, "edServerMySQL", "db.example.org");
  EXPECT_THAT(MessageOf([&] { frame.CreateConnection(); }), HasSubstr("local socket"));
  frame.SetEngine(8);
  EXPECT_EQ(further(), "");
}

TEST_F(FrameConnTest, ThePortThatStandsThereLeavesALocalServerItsSocket) {
  const auto port = [this](const char* host, int shown) {
    Type(frame, "edServerMySQL", host);
    Child<QSpinBox>(frame, "edPortMySQL")->setValue(shown);
    return dynamic_cast<TDBConnMySQL&>(*frame.CreateConnection()).port();
  };
  frame.SetEngine(8);
  EXPECT_THAT(std::vector<int>({port("localhost", 3306), port("", 3306), port("127.0.0.1", 3306),
                                port("localhost", 3307), port("db.example.org", 0)}),
              ElementsAre(0, 0, 3306, 3307, 0));
  EXPECT_EQ(Child<QSpinBox>(frame, "edPortMySQL")->text(), ToQt("usual"));
}

TEST_F(FrameConnTest, NumbersWithoutAPage) {
  frame.SetEngine(0);
  EXPECT_TRUE(frame.isHidden());
  EXPECT_EQ(MessageOf([&] { frame.CreateConnection(); }), "TfrConn.CreateConnection: Unhandled engine ");
  for (const int engine : {-1, 4, 17}) {
    EXPECT_EQ(MessageOf([&] { frame.SetEngine(engine); }), "Unhandled engine");
    EXPECT_EQ(frame.Engine(), engine);
    EXPECT_FALSE(frame.isHidden());
  }
}

TEST_F(FrameConnTest, SetEngineEmptiesAllPages) {
  FillIn();
  Child<QSpinBox>(frame, "edPortMySQL")->setValue(1);
  Child<QComboBox>(frame, "cAuthModeORA")->setCurrentIndex(2);
  Child<QComboBox>(frame, "cServerIB")->addItem(ToQt("x"));
  frame.SetEngine(14);
  Click(frame, "cbFileHDR");
  Click(frame, "rbNetORA");
  Click(frame, "rbTextSepComma");
  Child<QRadioButton>(frame, "rbTextFixed")->setChecked(true);
  EXPECT_FALSE(Shown(frame, "panDelimiters"));

  frame.SetEngine(8);
  EXPECT_EQ(ValuesText(), "server=localhost database= username= password= port=3306");
  EXPECT_EQ(TextOf(frame, "edFolder") + TextOf(frame, "edDBIB") + TextOf(frame, "edSysDBAccess"), "");
  EXPECT_THAT(ItemsOf(*Child<QComboBox>(frame, "cServerIB")), IsEmpty());
  EXPECT_TRUE(Shown(frame, "panDelimiters"));
  EXPECT_TRUE(Child<QRadioButton>(frame, "rbTextSepTab")->isChecked()) << "which comes with rbTextDelimited";
  frame.SetEngine(14);
  EXPECT_FALSE(Child<QCheckBox>(frame, "cbFileHDR")->isChecked());
  frame.SetEngine(10);
  EXPECT_EQ(ValuesText(), "server= username= password= authmode=Normal direct=Y") << "only the way to the server stays";
}

TEST_F(FrameConnTest, SeparatorsOfTexts) {
  frame.SetEngine(12);
  const auto separator = [this](const char* button, const char* other = "") {
    Child<QRadioButton>(frame, button)->setChecked(true);
    Type(frame, "edTextSep", other);
    const TEngineValues values = frame.Values();
    return values.Text("separator") + (HasFixedColumns(values) ? " fixed" : "");
  };
  EXPECT_EQ(separator("rbTextSepTab"), "\t");
  EXPECT_EQ(separator("rbTextSepComma", ";"), ",");
  EXPECT_EQ(separator("rbTextSepOther", ";"), ";");
  EXPECT_EQ(separator("rbTextSepOther"), "") << "a delimited text with an empty separator";
  EXPECT_EQ(MessageOf([&] { separator("rbTextSepOther", "\""); }), "Character \" is not an allowed separator.");
  EXPECT_EQ(separator("rbTextFixed", "\""), " fixed");
}

TEST_F(FrameConnTest, ChoicesShowWhatTheyNeed) {
  frame.SetEngine(7);
  EXPECT_TRUE(QTest::qWaitForWindowActive(&frame));
  const auto focus = [this] { return frame.focusWidget() == nullptr ? "" : FromQt(frame.focusWidget()->objectName()); };
  EXPECT_FALSE(Shown(frame, "edUsernameMSSQL") || Shown(frame, "edPasswordMSSQL"));
  Click(frame, "rbMixedMSSQL");
  EXPECT_TRUE(Shown(frame, "edUsernameMSSQL") && Shown(frame, "edPasswordMSSQL"));
  EXPECT_FALSE(Shown(frame, "cbStorePasswordMSSQL"));
  EXPECT_EQ(focus(), "edUsernameMSSQL");
  Click(frame, "rbWindowsMSSQL");
  EXPECT_FALSE(Shown(frame, "edUsernameMSSQL") || Shown(frame, "edPasswordMSSQL"));
  EXPECT_EQ(focus(), "cDBMSSQL");

  frame.SetEngine(12);
  Click(frame, "rbTextSepOther");
  EXPECT_EQ(focus(), "edTextSep");
  Click(frame, "rbTextSepTab");
  Child(frame, "edTextFolder")->setFocus();
  Child(frame, "edTextSep")->setFocus();
  EXPECT_TRUE(Child<QRadioButton>(frame, "rbTextSepOther")->isChecked());

  frame.SetEngine(10);
  const auto* label = Child<QLabel>(frame, "lbServerORA");
  Click(frame, "rbNetORA");
  EXPECT_EQ(label->text(), ToQt("&Server"));
  Click(frame, "rbOCIORA");
  EXPECT_EQ(label->text(), ToQt("&Service"));
}

TEST_F(FrameConnTest, ListsFillAsTheyOpen) {
  enumerators.SQLServers = [] {
    auto sources = std::make_unique<TMemDataset>(std::vector<TFieldDef>{{"a"}, {"b"}, {"c"}, {"d"}});
    sources->AddRow({"SRV1", "", "", std::int64_t{1}});
    return sources;
  };
  enumerators.ODBCSources = [] { return std::make_unique<TMemDataset>(std::vector<TFieldDef>{{"a"}}); };
  enumerators.OracleServices = [] { return TStringList{"ORCL"}; };
  frame.SetEngine(7);
  Child<QComboBox>(frame, "cServerMSSQL")->setEditText(ToQt("typed"));
  EXPECT_THAT(Open(frame, "cServerMSSQL"), ElementsAre("SRV1"));
  EXPECT_THAT(ValuesText(), HasSubstr("server=typed"));
  provider.catalogs = {"master", "sales"};
  EXPECT_THAT(Open(frame, "cDBMSSQL"), ElementsAre("master", "sales"));
  EXPECT_THAT(provider.TakeLog(), ElementsAre("open typed", "tables", "catalogs"));
  provider.errors["open typed"] = "Login failed";
  EXPECT_EQ(ErrorOf([&] { Child<QComboBox>(frame, "cDBMSSQL")->showPopup(); }), "Login failed");
  EXPECT_THAT(ItemsOf(*Child<QComboBox>(frame, "cDBMSSQL")), ElementsAre("master", "sales")) << "as it was";

  frame.SetEngine(16);
  Child<QComboBox>(frame, "cDSN")->addItem(ToQt("old"));
  EXPECT_EQ(ErrorOf([&] { Child<QComboBox>(frame, "cDSN")->showPopup(); }),
            "Invalid column count returned in data source query");
  EXPECT_THAT(ItemsOf(*Child<QComboBox>(frame, "cDSN")), IsEmpty());

  frame.SetEngine(10);
  EXPECT_THAT(Open(frame, "cServerORA"), ElementsAre("ORCL"));
  Click(frame, "rbNetORA");
  EXPECT_THAT(Open(frame, "cServerORA"), IsEmpty());
}

TEST_F(FrameConnTest, NamesWithBlanksAreFoundByTyping) {
  server->AddColumn("show databases", {"my", "my cart", "my shop"});
  frame.SetEngine(8);
  frame.show();
  auto* list = Child<QComboBox>(frame, "cDBMySQL");
  QTest::keyClick(list, Qt::Key_Space);
  ASSERT_TRUE(list->view()->isVisible());
  QTest::keyClicks(list->view(), QStringLiteral("my c"));
  QTest::keyClick(list->view(), Qt::Key_Return);
  EXPECT_EQ(FromQt(list->currentText()), "my cart");
  QTest::qWait(QApplication::keyboardInputInterval() + 50);
  QTest::keyClicks(list, QStringLiteral("my s"));
  EXPECT_EQ(FromQt(list->currentText()), "my shop");
  EXPECT_FALSE(list->view()->isVisible());
}

TEST_F(FrameConnTest, DatabasesOfAServerThatFailsStayAsTheyWere) {
  server->AddColumn("show databases", {"one", "two"});
  frame.SetEngine(8);
  EXPECT_THAT(Open(frame, "cDBMySQL"), ElementsAre("one", "two"));
  Child<QComboBox>(frame, "cDBMySQL")->setCurrentIndex(1);
  EXPECT_THAT(Open(frame, "cDBMySQL"), ElementsAre("one", "two"));
  EXPECT_THAT(ValuesText(), HasSubstr("database=two")) << "a second look leaves the choice";
  server->connect_error = "no such host";
  EXPECT_EQ(ErrorOf([&] { Child<QComboBox>(frame, "cDBMySQL")->showPopup(); }), "no such host");
  EXPECT_THAT(ItemsOf(*Child<QComboBox>(frame, "cDBMySQL")), ElementsAre("one", "two"));
}

TEST_F(FrameConnTest, BrowsingFillsTheField) {
  testing::TRecordingHost host;
  const THostGuard guard(host);
  const testing::TScratchFolder folder;
  const std::filesystem::path before = std::filesystem::current_path();
  const struct {
    int engine;
    const char *button, *field;
    std::string call;
  } kCases[] = {
      {3, "bnFilename", "edFilename", "OpenFile: Lotus 1-2-3|*.wk4;*.wk3"},
      {5, "bnDBIB", "edDBIB", "OpenFile: Interbase or Firebird database|*.gdb;*.fdb"},
      {6, "bnFileAccess", "edFileAccess", "OpenFile: Access database|*.mdb"},
      {6, "bnSysDBAccess", "edSysDBAccess", "OpenFile: Access system database|*.mdw"},
      {14, "bnFilename", "edFilename", "OpenFile: Excel document|*.xls"},
      {2, "bnFolder", "edFolder", "BrowseFolder: Please select database folder. from " + before.string()},
      {12, "bnTextFolder", "edTextFolder", "BrowseFolder: Please select database folder. from " + folder.Path()},
  };
  for (const auto& c : kCases) {
    frame.SetEngine(c.engine);
    Type(frame, c.field, "old");
    host.calls.clear();
    host.chosen.reset();
    Click(frame, c.button);
    EXPECT_EQ(TextOf(frame, c.field), "old") << c.field;
    host.chosen = folder.Path();
    Click(frame, c.button);
    EXPECT_EQ(TextOf(frame, c.field), folder.Path()) << c.field;
    EXPECT_THAT(host.calls, ElementsAre(c.call, c.call));
  }
  EXPECT_EQ(std::filesystem::current_path(), std::filesystem::canonical(folder.Path())) << "the chosen one is current";
  host.chosen = folder / "gone";
  EXPECT_THAT(ErrorOf([&] { Click(frame, "bnTextFolder"); }), HasSubstr("Cannot enter " + *host.chosen));
  std::filesystem::current_path(before);
  EXPECT_EQ(ErrorOf([&] {
              frame.SetEngine(8);
              Click(frame, "bnFilename");
            }),
            "Open database file: unhandled engine");
}

// --- The wizard

class TaskWizTest : public ::testing::Test {
 protected:
  TaskWizTest() { wizard.show(); }

  std::string Page() const {
    for (const char* page : {"tsRefConn", "tsTargetConn", "tsOptions"})
      if (Child(wizard, page)->isVisible()) return page;
    return {};
  }
  std::string Next() const { return FromQt(Child<QPushButton>(wizard, "bnNext")->text()); }
  bool CanGoBack() const { return Child(wizard, "bnBack")->isEnabled(); }
  // A connection object that adds a line to `freed` at its end.
  std::unique_ptr<TMyConnection> NewCounted() {
    struct TCounted final : testing::TFakeMyConnection {
      TCounted(std::shared_ptr<testing::TFakeMyServer> fake, int& count)
          : TFakeMyConnection(std::move(fake)), freed(count) {}
      ~TCounted() override { ++freed; }
      int& freed;
    };
    return std::make_unique<TCounted>(server, freed);
  }

  int freed = 0;
  std::shared_ptr<testing::TFakeMyServer> server = std::make_shared<testing::TFakeMyServer>();
  TfmTaskWiz wizard{{[this](const TEngineValues& /*own*/) { return NewCounted(); }}};
};

TEST_F(TaskWizTest, BackAndForth) {
  server->AddColumn("show tables", {});
  EXPECT_EQ(wizard.windowTitle(), ToQt("Sync Wizard"));
  EXPECT_EQ(Page() + " " + Next(), "tsRefConn Next");
  EXPECT_FALSE(CanGoBack());
  EXPECT_TRUE(Child<QRadioButton>(wizard, "cbLiveConn")->isChecked());
  EXPECT_FALSE(Shown(wizard, "cbScript"));
  Type(*Child(wizard, "frRefConn"), "edServerMySQL", "ref");
  Type(*Child(wizard, "frTgtConn"), "edServerMySQL", "tgt");

  Click(wizard, "bnNext");
  EXPECT_EQ(Page() + " " + Next(), "tsTargetConn Finish");
  EXPECT_TRUE(CanGoBack());
  Click(wizard, "bnBack");
  EXPECT_EQ(Page() + " " + Next(), "tsRefConn Finish") << "the caption stays";
  EXPECT_FALSE(CanGoBack());
  Click(wizard, "bnNext");
  EXPECT_EQ(Page() + " " + Next(), "tsTargetConn Finish");
  EXPECT_EQ(freed, 1) << "the first connection of the reference";
  EXPECT_EQ(wizard.TgtConn, nullptr);

  Click(wizard, "bnNext");
  EXPECT_EQ(wizard.result(), QDialog::Accepted);
  EXPECT_FALSE(wizard.isVisible());
  EXPECT_TRUE(wizard.RefConn->GetConnected() && wizard.TgtConn->GetConnected());
  std::string name;
  wizard.RefConn->GetDisplayName(name);
  EXPECT_EQ(name, "ref.");

  wizard.show();
  EXPECT_EQ(Page() + " " + Next(), "tsRefConn Next");
  EXPECT_FALSE(CanGoBack());
  EXPECT_EQ(TextOf(*Child(wizard, "frRefConn"), "edServerMySQL"), "ref") << "fields are kept between tasks";
}

TEST_F(TaskWizTest, AFailedConnectionIsFreedByTheNextClick) {
  server->AddColumn("show tables", {});
  server->connect_error = "Access denied";
  for (int tries = 0; tries < 2; ++tries) {
    EXPECT_EQ(ErrorOf([&] { Click(wizard, "bnNext"); }), "Access denied");
    EXPECT_EQ(Page() + " " + Next(), "tsRefConn Next");
    EXPECT_FALSE(CanGoBack());
    EXPECT_NE(wizard.RefConn, nullptr);
    EXPECT_EQ(freed, tries);
  }
  server->connect_error.clear();
  Click(wizard, "bnNext");
  server->connect_error = "Unknown database";
  EXPECT_EQ(ErrorOf([&] { Click(wizard, "bnNext"); }), "Unknown database");
  EXPECT_EQ(Page(), "tsTargetConn");
  Click(wizard, "bnCancel");
  EXPECT_EQ(wizard.result(), QDialog::Rejected);
  EXPECT_TRUE(wizard.RefConn->GetConnected()) << "what was made stays until the next use";
  EXPECT_NE(wizard.TgtConn, nullptr);
}

TEST_F(TaskWizTest, WhatCannotBeMadeStaysOnThePage) {
  auto* frame = dynamic_cast<TfrConn*>(Child(wizard, "frRefConn"));
  frame->SetEngine(12);
  Click(*frame, "rbTextSepOther");
  Type(*frame, "edTextSep", "\"");
  EXPECT_EQ(ErrorOf([&] { Click(wizard, "bnNext"); }), "Character \" is not an allowed separator.");
  EXPECT_EQ(Page(), "tsRefConn");
  Child<QRadioButton>(wizard, "cbScript")->setChecked(true);
  EXPECT_EQ(frame->Engine(), 9);
  EXPECT_EQ(ErrorOf([&] { Click(wizard, "bnNext"); }), "StrEngine error");
  Child<QRadioButton>(wizard, "cbLiveConn")->setChecked(true);
  EXPECT_EQ(frame->Engine(), 8);
}

// Each source that can be compared, with its own fields.
TEST_F(TaskWizTest, AReferenceMayBeAnotherDatabaseOrFile) {
  auto* frame = dynamic_cast<TfrConn*>(Child(wizard, "frRefConn"));
  auto* engines = Child<QComboBox>(wizard, "cEngine");
  EXPECT_FALSE(Child(wizard, "chkKeepRef")->isHidden());
  for (int i = 0; i < engines->count(); ++i) {
    engines->setCurrentIndex(i);
    emit engines->activated(i);
    EXPECT_TRUE(Child<QRadioButton>(wizard, "cbOther")->isChecked());
    EXPECT_EQ(frame->Engine(), engines->itemData(i).toInt());
  }
  EXPECT_TRUE(Child(wizard, "chkKeepRef")->isHidden()) << "no list has such connections";
  const testing::TScratchFolder folder;
  WriteFileText(folder / "t.csv", "a,b\n1,x\n");
  engines->setCurrentIndex(engines->findData(kEngineText));
  emit engines->activated(engines->currentIndex());
  Type(*frame, "edTextFolder", folder / "");
  Click(*frame, "rbTextSepComma");
  Click(wizard, "bnNext");
  EXPECT_EQ(Page(), "tsTargetConn");
  EXPECT_EQ(wizard.RefConn->GetEngine(), kEngineText);
}

TEST_F(TaskWizTest, KeysReachEverything) {
  server->AddColumn("show tables", {});
  EXPECT_TRUE(QTest::qWaitForWindowActive(&wizard));
  TStringList order;
  for (int i = 0; i < 10; ++i) {
    order.push_back(FromQt(wizard.focusWidget()->objectName()));
    QTest::keyClick(wizard.focusWidget(), Qt::Key_Tab);
  }
  EXPECT_THAT(order, ElementsAre("edServerMySQL", "edPortMySQL", "edUsernameMySQL", "edPasswordMySQL", "cDBMySQL",
                                 "bnMoreMySQL", "chkKeepRef", "bnNext", "bnCancel", "cbLiveConn"));
  auto& fields = *Child(wizard, "frRefConn");
  wizard.move(0, wizard.screen()->availableGeometry().bottom() - wizard.height() - 50);
  Click(fields, "bnMoreMySQL");
  QCoreApplication::processEvents();
  EXPECT_LE(wizard.geometry().bottom(), wizard.screen()->availableGeometry().bottom()) << "the buttons stay in reach";
  QString letters;
  for (QWidget* widget : wizard.findChildren<QWidget*>()) {
    const QString text = widget->isVisible() ? widget->property("text").toString() : QString();
    if (const qsizetype mark = text.indexOf(QLatin1Char('&')); mark >= 0) letters += text[mark + 1].toUpper();
  }
  EXPECT_EQ(letters.size(), 17);
  for (const QChar letter : letters) EXPECT_EQ(letters.count(letter), 1) << FromQt(QString(letter));
  for (const char* name : {"edTlsCaMySQL", "bnTlsCaMySQL"})
    EXPECT_THAT(FromQt(Child(fields, name)->accessibleName()), HasSubstr("CA certificates"));
  QTest::keyClick(&wizard, Qt::Key_P, Qt::AltModifier);
  EXPECT_EQ(wizard.focusWidget()->objectName(), ToQt("edPasswordMySQL"));
  QTest::keyClick(wizard.focusWidget(), Qt::Key_Return);
  EXPECT_EQ(Page(), "tsTargetConn");
  EXPECT_EQ(wizard.focusWidget(), Child(*Child(wizard, "frTgtConn"), "edServerMySQL"));
  QTest::keyClick(&wizard, Qt::Key_Left, Qt::AltModifier);
  EXPECT_TRUE(QTest::qWaitFor([this] { return Page() == "tsRefConn"; })) << "the button is seen to be pressed first";
  QTest::keyClick(&wizard, Qt::Key_Escape);
  EXPECT_FALSE(wizard.isVisible());
}

TEST_F(TaskWizTest, TheSecondPageBeginsWithTheServerOfTheFirst) {
  server->AddColumn("show tables", {});
  server->AddColumn("show databases", {"live", "test"});
  const QWidget& reference = *Child(wizard, "frRefConn");
  const QWidget& target = *Child(wizard, "frTgtConn");
  const auto fields = [](const QWidget& page) {
    return TextOf(page, "edServerMySQL") + " " + TextOf(page, "edUsernameMySQL") + " " +
           TextOf(page, "edPasswordMySQL") + " " + TextOf(page, "edTlsCaMySQL");
  };
  Type(reference, "edServerMySQL", "db1");
  Type(reference, "edUsernameMySQL", "me");
  Type(reference, "edPasswordMySQL", "secret");
  Type(reference, "edTlsCaMySQL", "/ca.pem");
  Child<QSpinBox>(reference, "edPortMySQL")->setValue(3307);
  Click(wizard, "bnNext");
  EXPECT_EQ(fields(target), "db1 me secret /ca.pem");
  EXPECT_EQ(Child<QSpinBox>(target, "edPortMySQL")->value(), 3307);
  EXPECT_TRUE(Shown(target, "panMoreMySQL")) << "what counts is in view";
  auto* list = Child<QComboBox>(target, "cDBMySQL");
  EXPECT_TRUE(QTest::qWaitFor([list] { return list->view()->isVisible(); })) << "only the database is left to choose";
  EXPECT_THAT(ItemsOf(*list), ElementsAre("live", "test"));
  list->hidePopup();

  Click(wizard, "bnBack");
  Type(reference, "edServerMySQL", "db2");
  Click(wizard, "bnNext");
  EXPECT_EQ(fields(target), "db2 me secret /ca.pem") << "nobody has typed there";
  Type(target, "edUsernameMySQL", "other");
  Click(wizard, "bnBack");
  Type(reference, "edServerMySQL", "db3");
  Click(wizard, "bnNext");
  EXPECT_EQ(fields(target), "db2 other secret /ca.pem");
}

TEST(TaskWizRecentTest, ConnectionsMadeBeforeAreOfferedWithoutTheirPasswords) {
  const testing::TScratchFolder folder;
  auto server = std::make_shared<testing::TFakeMyServer>();
  server->AddColumn("show tables", {});
  const TEngineClients clients{
      [&](const TEngineValues& /*own*/) { return std::make_unique<testing::TFakeMyConnection>(server); }};
  const auto connect = [](TfmTaskWiz& wizard, const char* database, bool keep) {
    wizard.show();
    const QWidget& page = *Child(wizard, "frRefConn");
    Type(page, "edUsernameMySQL", "me");
    Type(page, "edPasswordMySQL", "secret");
    Child<QComboBox>(page, "cDBMySQL")->addItem(ToQt(database));
    Child<QComboBox>(page, "cDBMySQL")->setCurrentText(ToQt(database));
    Child<QCheckBox>(wizard, "chkKeepRef")->setChecked(keep);
    Click(wizard, "bnNext");
  };
  {
    TfmTaskWiz wizard(clients, nullptr, {}, folder / "recent");
    wizard.show();
    EXPECT_FALSE(Shown(wizard, "panRecentRef"));
    connect(wizard, "first", false);
    wizard.close();
    connect(wizard, "second", true);
  }
  TfmTaskWiz wizard(clients, nullptr, {}, folder / "recent");
  wizard.show();
  for (const char* list : {"cRecentRef", "cRecentTgt"})
    EXPECT_THAT(ItemsOf(*Child<QComboBox>(wizard, list)),
                ElementsAre("second on localhost (me)", "first on localhost (me)"));
  const QWidget& page = *Child(wizard, "frRefConn");
  for (const auto& [row, database, password] : {std::tuple(1, "first", ""), {0, "second", "secret"}}) {
    auto* list = Child<QComboBox>(wizard, "cRecentRef");
    list->setCurrentIndex(row);
    emit list->activated(row);
    EXPECT_EQ(FromQt(Child<QComboBox>(page, "cDBMySQL")->currentText()), database);
    EXPECT_EQ(TextOf(page, "edPasswordMySQL"), password);
    EXPECT_EQ(Child<QCheckBox>(wizard, "chkKeepRef")->isChecked(), *password != '\0');
  }
  Click(wizard, "bnForgetRef");
  EXPECT_THAT(ItemsOf(*Child<QComboBox>(wizard, "cRecentTgt")), ElementsAre("first on localhost (me)"));
}

// --- Real servers

TEST(TaskWizLiveTest, TheDialogHandsOverTwoConnections) {
  testing::TLiveDatabase reference("wiz_ref"), target("wiz_tgt");
  target.Run("create table t (a int)");
  TfmTaskWiz wizard(
      {[](const TEngineValues& /*own*/) { return testing::ServerConnection(testing::TPrivateServer::Shared()); }});
  const auto fill = [&wizard](const char* frame, const char* database) {
    const QWidget& fields = *Child(wizard, frame);
    Type(fields, "edUsernameMySQL", "root");
    EXPECT_THAT(Open(fields, "cDBMySQL"), AllOf(Contains("wiz_ref"), Contains("wiz_tgt")));
    auto* list = Child<QComboBox>(fields, "cDBMySQL");
    list->setCurrentIndex(list->findText(ToQt(database)));
    Click(wizard, "bnNext");
  };
  WhenModal([&](QWidget* dialog) {
    ASSERT_EQ(dialog, &wizard);
    Type(*Child(wizard, "frRefConn"), "edUsernameMySQL", "nobody");
    EXPECT_THAT(ErrorOf([&] { Click(wizard, "bnNext"); }), HasSubstr("Access denied for user 'nobody'"));
    fill("frRefConn", "wiz_ref");
    fill("frTgtConn", "wiz_tgt");
  });
  EXPECT_EQ(wizard.exec(), QDialog::Accepted);
  EXPECT_TRUE(wizard.RefConn->GetConnected());
  EXPECT_FALSE(wizard.RefConn->TableExists("t"));
  EXPECT_TRUE(wizard.TgtConn->TableExists("t"));
  EXPECT_EQ(dynamic_cast<TDBConnMySQL&>(*wizard.TgtConn).username(), "root");
}

}  // namespace
}  // namespace velmora
