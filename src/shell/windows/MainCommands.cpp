// SPDX-License-Identifier: GPL-3.0-or-later

// What the commands of the main window do.

#include <QApplication>
#include <QClipboard>
#include <QFontInfo>
#include <QPlainTextEdit>
#include <QStatusBar>
#include <QUrl>

#include "app/MovedTarget.h"
#include "app/RunTelling.h"
#include "core/Host.h"
#include "report/ReportFile.h"
#include "shell/widgets/QtText.h"
#include "shell/widgets/RunView.h"
#include "shell/widgets/Text.h"
#include "shell/widgets/TopLevel.h"
#include "shell/widgets/WindowLog.h"
#include "shell/windows/About.h"
#include "shell/windows/Dump.h"
#include "shell/windows/Main.h"
#include "shell/windows/Options.h"
#include "shell/windows/Progress.h"
#include "shell/windows/TaskWiz.h"
#include "util/Addresses.h"
#include "util/Errors.h"
#include "util/Files.h"
#include "util/Format.h"
#include "util/Version.h"

namespace velmora {

namespace {

constexpr char kScriptFilter[] = "MySQL script|*.sql";
constexpr char kReportFilter[] = "Report as a page|*.html|Comment on a change|*.md|Results for programs|*.sarif";
constexpr char kHelp[] = "Help.chm";
constexpr char kSupportSubject[] = "%s support question";

// Keeps a command from being used while it runs.
class TDisabled {
 public:
  explicit TDisabled(QAction* command) : command_(command) { command_->setEnabled(false); }
  ~TDisabled() { command_->setEnabled(true); }
  TDisabled(const TDisabled&) = delete;
  TDisabled& operator=(const TDisabled&) = delete;

 private:
  QAction* command_;
};

// Keeps an editor's text as it is.
class TFrozen {
 public:
  explicit TFrozen(TSqlEdit& edit) : edit_(edit) { edit_.setReadOnly(true); }
  ~TFrozen() { edit_.setReadOnly(false); }
  TFrozen(const TFrozen&) = delete;
  TFrozen& operator=(const TFrozen&) = delete;

 private:
  TSqlEdit& edit_;
};

}  // namespace

// --- Scripts

void TfmMain::acLoadScriptFromFile() {
  std::string path;
  if (!Host().OpenFile(kScriptFilter, path) || !MayLoseScript()) return;
  const std::string text = ReadFileText(path);
  ShowPage();
  page_->setCurrentWidget(tsScript_);
  script_->SetText(text);
  ScriptIs(EScriptOf::User);
}

void TfmMain::acSaveScriptToFile() {
  std::string path;
  if (!Host().SaveFile(kScriptFilter, path)) return;
  const EScriptOf origin = ScriptOf();
  WriteFileText(path, script_->Text());
  ScriptIs(origin);
}

// Of the last comparison, with the script as it stands.
void TfmMain::acSaveReport() {
  std::string path;
  if (!Host().SaveFile(kReportFilter, path)) return;
  if (!IsReportFile(path)) path += ".html";
  WriteReport(CollectReport(*app_, script_->Text(), SystemClock()), path);
  statusBar()->showMessage(TText::tr("The report is in %1").arg(ToQt(path)));
}

void TfmMain::acGenScript() {
  EScriptOf origin = script_of_ == EScriptOf::Nobody ? EScriptOf::Nobody : EScriptOf::Part;
  RunGuarded(
      [&] {
        app_->Dialect().GenerateScript();
        if (TicksActions() && options_.ScriptToClipboard) QGuiApplication::clipboard()->setText(ToQt(script_->Text()));
        origin = EScriptOf::Analysis;
      },
      [&] { ScriptIs(origin); });
}

void TfmMain::acRunScript() {
  const TDisabled disabled(Command("acRunScript"));
  script_->ClearMarks();
  Host().ProcessMessages();
  const std::string script = script_->Text();
  BeginRun(script);
  app_->Care = WithWishes({}, ExactOptionsOfTask().waits);
  app_->Care.tell = [this](const std::string& text) { TellWaiting(text); };
  try {
    app_->RunScript(script);
  } catch (const EMovedTarget& error) {
    TellMoved(error.what());
    throw;
  } catch (const EVelmora& error) {
    if (script_of_ == EScriptOf::Analysis) AdviseDialect(app_->DialectThatFits());
    TellFailedRun(script, error.what());
  }
  TellRun();
}

void TfmMain::TellRun() {
  TooLateToCancel();
  const std::string line = SuccessLine(*app_->connections.target, app_->RunReport());
  log_->LogLine(line);
  statusBar()->showMessage(ToQt(line));
}

void TfmMain::TellFailedRun(const std::string& script, const std::string& error) {
  TooLateToCancel();
  if (!app_->Dialect().Traits().tells_statements) {
    page_->setCurrentWidget(tsScript_);  // where the failed statement is marked
    mScript_->setFocus();
  }
  TStringList lines = FailureSummary(*app_->connections.target, app_->RunReport(), script, error);
  vRun_->Tell(lines);
  ListInForce(app_->RunReport(), lines);
  for (const std::string& line : lines) log_->LogLine(line);
  if (app_->Dialect().Traits().tells_statements) statusBar()->showMessage(ToQt(RunSentence(app_->RunReport())));
  if (app_->RunReport().cancelled) throw EAbort();
  RaiseError(JoinList(lines, "\n"));
}

// In the standard dialect no question comes before the run of a generated script, and nothing is compared after it.
void TfmMain::acSynchronize() {
  const bool generated = script_of_ == EScriptOf::Analysis;
  try {
    const TFrozen frozen(*mScript_);  // what is asked about is what runs
    bool may_run = false;
    NameLostTarget([&] { may_run = MayRun(script_->Text()) && (!generated || RowsAllow()); });
    if (!may_run) return;
    const TDisabled disabled(Command("acSynchronize"));
    acRunScript();
  } catch (const EMovedTarget& error) {
    if (!ConfirmYes(error.what() + std::string("?"))) return;
    BeginCancellable();
    return acAnalyze();
  }
  if (!app_->Dialect().Traits().tells_result || !generated || !MayLoseScript()) return;
  BeginCancellable();
  Analyze();
  TellRun();
  TellReached();
}

void TfmMain::acDialect(const TDialectRow& dialect) {
  if (&dialect == &app_->Chosen()) return;
  if (!MayLoseScript()) return MarkDialect();
  task_->Dialect = dialect.Stored();
  ShowTask(true);
}

void TfmMain::TakeAdvice() {
  const TDialectRow* advised = advised_;
  if (advised == nullptr) return;
  acDialect(*advised);
  if (&app_->Chosen() == advised) acAnalyze();
}

// --- The task

void TfmMain::acNewTask() {
  TfmTaskWiz& wizard = forms_->wizard;
  if (wizard.exec() != QDialog::Accepted) return;
  BeginCancellable();  // what was cancelled within the wizard is over
  if (!MayLoseScript() || !task_->MayClose()) return;
  Host().ProcessMessages();
  ClearWork();
  said_.clear();
  TTaskConnections& open = app_->connections;
  // Deliberate: what was open stays connected until the window closes.
  former_.push_back({std::move(open.reference), std::move(open.target)});
  open.reference = std::move(wizard.RefConn);
  open.target = std::move(wizard.TgtConn);
  task_->TaskFileName = kUntitledTask;
  task_->TaskIsUntitled = true;
  task_->Reset();
  task_->Dialect = DialectRow(kDefaultDialect).Stored();
  ShowTask(true);
  open.target->Connect();
  if (wizard.AnalyzeAtOnce) acAnalyze();
}

void TfmMain::acOpenTask() {
  std::string path;
  if (!Host().OpenFile(kTaskFilter, path)) return;
  if (!MayLoseScript()) return;
  task_->OpenTask(path);
}

void TfmMain::acRecent(std::size_t index) {
  const std::string path = recent_.Path(index);
  acCloseTask();
  if (!active_) task_->OpenTask(path);
}

void TfmMain::acCloseTask() {
  if (MayLoseScript()) task_->CloseTask();
}

void TfmMain::acSaveTask() {
  if (task_->TaskIsUntitled)
    acSaveTaskAs();
  else
    task_->SaveTask(task_->TaskFileName);
}

void TfmMain::acSaveTaskAs() {
  std::string path = task_->TaskFileName;
  if (Host().SaveFile(kTaskFilter, path)) task_->SaveTask(path);
}

void TfmMain::acAnalyze() {
  if (!MayLoseScript()) return;
  statusBar()->clearMessage();
  Analyze();
}

void TfmMain::acDelAction() {
  if (TicksActions()) return DeleteDifferences();
  if (!MayLoseScript()) return;
  DeleteAction(tlActions_->FocusedNode(), app_->tree, app_->data, [this] { acGenScript(); });
}

void TfmMain::acDumpDB() { forms_->dump.exec(); }

// --- The program

void TfmMain::acExit() { close(); }

void TfmMain::acOptions() {
  TOptions options = options_;
  options.LogFontName = FromQt(mLog_->font().family());
  options.LogFontSize = mLog_->font().pointSize();
  options.ScriptFontName = FromQt(mScript_->TextFont().family());
  options.ScriptFontSize = mScript_->TextFont().pointSize();
  if (!forms_->options.Edit(options)) return;
  options_ = options;
  ApplyFonts();
  SaveOptions();
}

void TfmMain::acHelp() { Host().ShellOpen(kHelp); }

void TfmMain::acAbout() {
  forms_->about.OnVisitWeb = [this] { acVisitWeb(); };
  forms_->about.OnContactSupport = [this] { acContactSupport(); };
  forms_->about.exec();
}

void TfmMain::acSelectAll() {
  QWidget* focused = QApplication::focusWidget();
  if (auto* memo = dynamic_cast<QPlainTextEdit*>(focused); memo != nullptr) memo->selectAll();
  if (auto* edit = dynamic_cast<TSqlEdit*>(focused); edit != nullptr) edit->selectAll();
  if (auto* view = dynamic_cast<TDifferenceView*>(focused); view != nullptr) view->selectAll();
}

void TfmMain::acVisitWeb() { OpenURL(HomePage()); }

void TfmMain::acContactSupport() {
  const std::string subject = Format(kSupportSubject, kProgramTitle);
  const QByteArray encoded = QUrl::toPercentEncoding(ToQt(subject));
  Host().ShellOpen(std::string("mailto:") + SupportAddress() + "?subject=" + encoded.toStdString());
}

}  // namespace velmora
