// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTest>
#include <memory>

#include "mysqlclient/MyClients.h"
#include "persist/MyOptionKeys.h"
#include "shell/QtEnvironment.h"
#include "shell/widgets/QtText.h"
#include "shell/windows/Desktop.h"
#include "shell/windows/Progress.h"
#include "shell/windows/TaskWiz.h"
#include "support/LiveDatabase.h"
#include "support/ScratchFolder.h"

namespace velmora::testing {

// The desktop's host with a user who picks what the test has laid out; message boxes are real ones.
class TScriptedHost final : public TQtHost {
 public:
  std::string chosen;  // the file that the user picks; empty: the dialog is cancelled
  TStringList asked;   // the filters of the file dialogs
  TStringList opened;  // what went to the system

  bool OpenFile(const std::string& filter, std::string& path) override { return Choose(filter, path); }
  bool SaveFile(const std::string& filter, std::string& path) override { return Choose(filter, path); }

 protected:
  bool OpenWithSystem(const std::string& target, const std::string&, const std::string&, bool) override {
    opened.push_back(target);
    return true;
  }

 private:
  bool Choose(const std::string& filter, std::string& path) {
    asked.push_back(filter);
    if (!chosen.empty()) path = chosen;
    return !chosen.empty();
  }
};

// A started desktop program with settings and options of its own, whose MySQL connections go to a private server.
class TDesktopRig {
 public:
  explicit TDesktopRig(TPrivateServer& server = TPrivateServer::Shared()) : server_(server) { Start(); }

  // Ends the program, if it runs, and starts it again with the settings that it has left.
  void Start(const std::string& task_file = {}) {
    desktop_.reset();
    options_ = std::make_unique<TUserOptions>(folder / "options.values");
    if (!started_) DropWhatIsObsolete();
    started_ = true;
    auto scripted = std::make_unique<TScriptedHost>();
    host = scripted.get();
    TEngineClients clients;
    clients.NewMyConnection = [socket = server_.Socket()](const TEngineValues& own) {
      TMyOptions options = MyOptionsOf(own);
      options.Socket = socket;
      return MakeMyConnection(options);
    };
    desktop_ = std::make_unique<TDesktop>(
        TDesktopSetup{folder / "Velmora.settings", options_.get(), clients, nullptr, task_file}, std::move(scripted));
    desktop_->Start(0);
    QApplication::setActiveWindow(&Main());
    QCoreApplication::processEvents();
  }

  TfmMain& Main() { return desktop_->Main(); }
  TfmProgress& Progress() { return desktop_->Progress(); }
  TfmTaskWiz& Wizard() { return desktop_->Wizard(); }

  template <class Widget>
  Widget* Find(const char* name) {
    auto* found = Main().findChild<Widget*>(QLatin1String(name));
    if (found == nullptr) throw std::runtime_error(std::string("no component ") + name);
    return found;
  }
  bool Shown(const char* name) { return Find<QWidget>(name)->isVisible(); }
  bool Enabled(const char* command) { return Main().Command(command)->isEnabled(); }
  void Trigger(const char* command) {
    Main().Command(command)->trigger();
    QCoreApplication::processEvents();
  }
  void Press(Qt::Key key) {
    QTest::keyClick(&Main(), key);
    QCoreApplication::processEvents();
  }
  std::string Text(const char* editor) { return dynamic_cast<TSqlEdit&>(*Find<QWidget>(editor)).Bytes(); }

  // Fills the wizard's pages and finishes it; the passwordless root of the server on both sides. Then chooses the
  // dialect.
  void NewTask(const std::string& reference, const std::string& target, const char* dialect = "acStandardDialect") {
    WhenModal([=, this](QWidget* wizard) {
      FillConnection(wizard, "frRefConn", reference);
      FillConnection(wizard, "frTgtConn", target);
      Click(*wizard, "bnNext");
      Click(*wizard, "bnNext");
    });
    Trigger("acNewTask");
    Find<QAction>(dialect)->trigger();
    QCoreApplication::processEvents();
    QApplication::setActiveWindow(&Main());
  }

  // Triggers a command that ends in a message; gives its text.
  std::string MessageOfCommand(const char* command) {
    std::string text;
    WhenModal([&](QWidget* box) {
      text = FromQt(box->property("text").toString());
      box->close();
    });
    Trigger(command);
    QApplication::setActiveWindow(&Main());
    return text;
  }

  // Triggers a command that asks something, with that answer ("Yes", "No"), and runs what then comes up; gives the
  // question, empty if none came.
  std::string Ask(const char* command, const char* answer, std::function<void(QWidget*)> next = nullptr) {
    std::string question;
    WhenModal([&](QWidget* box) {
      question = FromQt(box->property("text").toString());
      if (next) WhenModal(next);
      for (QAbstractButton* button : box->findChildren<QAbstractButton*>())
        if (button->text().remove(QLatin1Char('&')) == QLatin1String(answer)) return button->click();
      box->close();
    });
    Trigger(command);
    QApplication::setActiveWindow(&Main());
    return question;
  }

  static void FillConnection(QWidget* wizard, const char* frame, const std::string& database) {
    auto* fields = wizard->findChild<QWidget*>(QLatin1String(frame));
    fields->findChild<QLineEdit*>(QStringLiteral("edUsernameMySQL"))->setText(QStringLiteral("root"));
    auto* list = fields->findChild<QComboBox*>(QStringLiteral("cDBMySQL"));
    if (list->findText(ToQt(database)) < 0) list->addItem(ToQt(database));
    list->setCurrentText(ToQt(database));
  }

  TScratchFolder folder;
  TScriptedHost* host = nullptr;

 private:
  TPrivateServer& server_;
  // Most tests are about what is ticked.
  void DropWhatIsObsolete() {
    TOptions options;
    options.DropExtraColumns = options.DropExtraIndices = true;
    options.DropExtraConstraints = options.DropExtraTables = true;
    SaveOptions(options, *options_);
  }

  bool started_ = false;
  std::unique_ptr<TUserOptions> options_;
  std::unique_ptr<TDesktop> desktop_;
};

}  // namespace velmora::testing
