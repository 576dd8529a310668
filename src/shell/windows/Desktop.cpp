// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/windows/Desktop.h"

#include <QApplication>
#include <QEventLoop>
#include <QLocale>
#include <QTimer>
#include <clocale>
#include <cstdio>

#include "app/Enumerators.h"
#include "crash/CrashNotes.h"
#include "crash/CrashWatch.h"
#include "persist/OptionStore.h"
#include "persist/Settings.h"
#include "persist/UserFolder.h"
#include "shell/widgets/Icons.h"
#include "shell/widgets/QtText.h"
#include "shell/widgets/TopLevel.h"
#include "shell/windows/About.h"
#include "shell/windows/Confirm.h"
#include "shell/windows/CrashDialog.h"
#include "shell/windows/Dump.h"
#include "shell/windows/Options.h"
#include "shell/windows/ProgramArguments.h"
#include "shell/windows/Progress.h"
#include "shell/windows/Splash.h"
#include "shell/windows/TaskWiz.h"
#include "shell/windows/Translation.h"
#include "util/Version.h"

namespace velmora {

namespace {

// Handlers are connected by Handle and let nothing out; this is for what the windows themselves may raise, such as a
// lack of memory while one is painted.
class TQtApplication final : public QApplication {
 public:
  using QApplication::QApplication;

  bool notify(QObject* receiver, QEvent* event) override {
    bool taken = false;
    AtTopLevel([&] { taken = QApplication::notify(receiver, event); });
    return taken;
  }
};

int Print(const TProgramArguments& answered) {
  std::fputs(answered.answer.c_str(), answered.status == 0 ? stdout : stderr);
  return answered.status;
}

void Wait(int milliseconds) {
  QEventLoop loop;
  QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
  loop.exec();
}

// What Qt has to say goes where it went before, and into crash reports; after a fatal message it ends the program.
QtMessageHandler usual_messages = nullptr;

void NoteQtMessage(QtMsgType type, const QMessageLogContext& context, const QString& message) {
  const std::string text = FromQt(message);
  NoteForCrash("Qt: " + text);
  if (type == QtFatalMsg) TellCrashReason("Qt: " + text);
  usual_messages(type, context, message);
}

void WatchDesktop() {
  WatchForCrashes({"velmora", VersionText(), CrashFolder(), {std::string("Qt ") + qVersion()}});
  usual_messages = qInstallMessageHandler(NoteQtMessage);
}

}  // namespace

TDesktop::TDesktop(TDesktopSetup setup, std::unique_ptr<TQtHost> host)
    : setup_(std::move(setup)),
      host_(std::move(host)),
      host_guard_(std::make_unique<THostGuard>(*host_)),
      child_wait_(std::make_unique<TChildWaitGuard>(host_->Wait())),
      aside_(std::make_unique<TAsideGuard>(host_->Wait())) {
  setup_.wait = &host_->Wait();
}

TDesktop::~TDesktop() { host_->Wait().ShowBy(nullptr); }

void TDesktop::Start(int splash_time) {
  main_ = std::make_unique<TfmMain>(setup_);
  TfmSplash splash;
  splash.ShowPainted();
  MakeForms();
  Wait(splash_time);
  splash.close();
  main_->show();
}

void TDesktop::MakeForms() {
  progress_ = std::make_unique<TfmProgress>();
  progress_->OnCancel = [this] { return host_->Wait().Cancel(); };
  host_->Wait().ShowBy(progress_.get());
  about_ = std::make_unique<TfmAbout>(main_.get());
  confirm_ = std::make_unique<TfmConfirm>(main_.get());
  dump_ = std::make_unique<TfmDump>(main_.get());
  options_ = std::make_unique<TfmOptions>(main_.get());
  wizard_ = std::make_unique<TfmTaskWiz>(main_->Clients(), main_.get(), MachineEnumerators(),
                                         RecentConnectionsFile(setup_.settings_file));
  main_->SetForms({*progress_, *about_, *dump_, *options_, *wizard_});
}

int RunDesktop(int& argc, char** argv) {
  WatchDesktop();
  const TProgramArguments asked = ReadProgramArguments({argv + 1, argv + argc});
  if (!asked.answer.empty() && asked.status == 0) return Print(asked);  // which needs no display
  TQtApplication application(argc, argv);
  const TProgramArguments given = ReadProgramArguments({argv + 1, argv + argc});
  if (!given.answer.empty()) return Print(given);
  const TTranslation translation(QLocale::system().uiLanguages());
  std::setlocale(LC_NUMERIC, "C");  // Qt took over the user's; drivers of databases write numbers by it
  QApplication::setApplicationName(QLatin1String(kProgramTitle));
  QApplication::setDesktopFileName(QStringLiteral("velmora"));
  QApplication::setWindowIcon(ProgramIcon());
  TUserOptions options;
  TDesktop desktop({SettingsFile(), &options, {}, nullptr, given.task_file});
  desktop.Start();
  OfferCrashReports(CrashFolder(), &desktop.Main());
  return QApplication::exec();
}

}  // namespace velmora
