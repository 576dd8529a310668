// SPDX-License-Identifier: GPL-3.0-or-later

// The page of the run, and what becomes of what the user has cancelled.

#include <QLabel>
#include <QStatusBar>

#include "app/FaultPlace.h"
#include "app/RunTelling.h"
#include "app/SideNames.h"
#include "core/Host.h"
#include "shell/widgets/Named.h"
#include "shell/widgets/QtText.h"
#include "shell/widgets/RunView.h"
#include "shell/widgets/Text.h"
#include "shell/widgets/WindowLog.h"
#include "shell/windows/Main.h"
#include "shell/windows/Progress.h"
#include "shell/windows/WindowWait.h"
#include "util/Counted.h"
#include "util/Errors.h"
#include "util/Files.h"
#include "util/Format.h"

namespace velmora {

namespace {

constexpr TText kNothingRan = TText::Later("Nothing was run.");
constexpr char kCancelled[] = "Cancelled";
constexpr char kTargetLost[] = "The connection to the target, %s, is lost: %s";

}  // namespace

// --- The page

QWidget* TfmMain::MakeRunView() {
  vRun_ = Named(new TRunView, "vRun");
  vRun_->OnGoTo = [this](std::size_t start) { GoToStatement(start); };
  vRun_->OnSave = [](const std::string& text) {
    std::string path;
    if (Host().SaveFile(FromQt(TText::tr("Text file")) + "|*.txt", path)) WriteFileText(path, text);
  };
  return vRun_;
}

void TfmMain::ShowRunPage(bool shown) {
  page_->setTabVisible(page_->indexOf(tsRun_), shown);
  if (!shown) vRun_->Begin({});
}

void TfmMain::BeginRun(const std::string& script) {
  waiting_.reset();
  if (!app_->Dialect().Traits().tells_statements) return;
  vRun_->Begin(script);
  ShowRunPage(true);
  ShowPage();
  page_->setCurrentWidget(tsRun_);
}

// Who was waited for is no news once the statement is over.
void TfmMain::ShowRun(const TRunReport& report) {
  vRun_->Show(report);
  if (!waiting_ || report.executed == *waiting_) return;
  waiting_.reset();
  forms_->progress.Note({});
  vRun_->Tell({});
}

void TfmMain::TellWaiting(const std::string& text) {
  waiting_ = app_->RunReport().executed;
  vRun_->Tell({text});
  log_->LogLine(text);
  forms_->progress.Note(text);  // which stands in front of the page
}

void TfmMain::TellMoved(const std::string& text) {
  TooLateToCancel();
  vRun_->SetHeading(FromQt(kNothingRan));
  vRun_->Tell({text});
  log_->LogLine(text);
  statusBar()->showMessage(kNothingRan);
}

// What a run has reached, by the comparison after it. It stays in view beside the word that all is equal.
void TfmMain::TellReached() {
  if (!app_->Dialect().Traits().tells_statements) return;
  const bool identical = app_->Dialect().Identical();
  const std::size_t left = TicksActions() ? differences_->Count() : app_->data.mtActions.Count();
  std::string line = RunSentence(app_->RunReport());
  if (identical)
    line += " The databases are identical.";
  else if (left > 0)
    line += Format(" %s left: the list shows what.", Counted(left, "difference") + (left == 1 ? " is" : " are"));
  else
    line += " The messages name what still differs: it is left alone, has no form in MySQL, or could not be compared.";
  vRun_->SetHeading(line);
  log_->LogLine(line);
  statusBar()->showMessage(ToQt(line));
  if (!identical) return;
  lbEqual_->setMaximumHeight(2 * lbEqual_->sizeHint().height());
  page_->show();
  page_->setCurrentWidget(tsRun_);
}

void TfmMain::GoToStatement(std::size_t start) {
  if (script_->Text() != vRun_->Script()) {
    statusBar()->showMessage(TText::tr("The script is no longer the one that ran."));
    return;
  }
  page_->setCurrentWidget(tsScript_);
  script_->SetCaret(start);
  script_->ScrollToLine(script_->CaretLine());
  mScript_->setFocus();
}

// --- Cancelling

// What ends because the user wants it to is told by log and status bar, not by a message box.
void TfmMain::Cancellable(const std::function<void()>& command) {
  BeginCancellable();
  try {
    command();
  } catch (const ECancelled& error) {
    TellCancelled(error.what());
  } catch (const EAbort&) {
    throw;
  } catch (const EVelmora& error) {
    if (setup_.wait == nullptr || !setup_.wait->Cancelling()) throw;
    TellCancelled(error.what());
  }
}

void TfmMain::BeginCancellable() {
  if (setup_.wait != nullptr) setup_.wait->Begin();
}

void TfmMain::TooLateToCancel() {
  if (setup_.wait != nullptr) setup_.wait->TooLate();
}

void TfmMain::TellCancelled(const std::string& text) {
  TooLateToCancel();
  const std::string line = text.starts_with(kCancelled) ? text : Format("%s: %s", kCancelled, text);
  if (log_) log_->LogLine(line);
  statusBar()->showMessage(ToQt(line));
}

// A part of the differences must not look like all of them, and the script of an earlier analysis is none for them.
void TfmMain::CompareOrForget() {
  try {
    Compare();
  } catch (const EVelmora&) {
    if (Host().Cancelling()) {
      app_->Forget();
      script_->Clear();
      ScriptIs(EScriptOf::Nobody);
      ShowPage();
    }
    throw;
  }
}

// The client's message of a lost connection tells of no side. One that was lost before is made anew, so that a script
// that somebody has edited can run without another analysis.
void TfmMain::NameLostTarget(const std::function<void()>& asking) {
  TDBConn& target = *app_->connections.target;
  const bool again = !StandsConnected(target) && app_->Dialect().Traits().tells_statements;
  const bool stood = again || StandsConnected(target);
  try {
    if (again) target.Connect();
    asking();
  } catch (const EAbort&) {
    throw;
  } catch (const EVelmora& error) {
    if (!stood || StandsConnected(target)) throw;
    RaiseError(Format(kTargetLost, SideName(target), error.what()));
  }
}

}  // namespace velmora
