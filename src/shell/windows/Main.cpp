// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/windows/Main.h"

#include <QApplication>
#include <QCloseEvent>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QStackedWidget>
#include <QStatusBar>
#include <QTimer>
#include <algorithm>
#include <filesystem>
#include <limits>

#include "app/FaultPlace.h"
#include "app/ServerVersion.h"
#include "app/SideNames.h"
#include "core/Host.h"
#include "persist/Settings.h"
#include "persist/TaskDocument.h"
#include "shell/widgets/EmptyState.h"
#include "shell/widgets/Icons.h"
#include "shell/widgets/QtText.h"
#include "shell/widgets/RunView.h"
#include "shell/widgets/Text.h"
#include "shell/widgets/TopLevel.h"
#include "shell/widgets/WindowLog.h"
#include "shell/windows/Commands.h"
#include "shell/windows/Progress.h"
#include "shell/windows/WindowWait.h"
#include "util/Clock.h"
#include "util/Errors.h"
#include "util/Text.h"
#include "util/Version.h"

namespace velmora {

namespace {

constexpr char kGroupedByKind[] = "ActionsByKind";  // keys of the options
constexpr char kSortedByRunning[] = "ActionsByRunning";
constexpr double kFirstShare = 0.8;  // of the screen, for a window that has no place yet
constexpr int kUnplaced = std::numeric_limits<int>::min();
constexpr int kEdgeHeight = 24;
constexpr QSize kFrame(8, kEdgeHeight + 8);  // what a window system draws around a window, about
constexpr int kReachedWidth = 48;
constexpr int kFarthest = 1 << 20;  // of a place that any screen can show

QFont TextFont(const std::string& family, int size, QFont::StyleHint hint) {
  QFont font(ToQt(family));
  font.setStyleHint(hint);
  if (size > 0) font.setPointSize(size);
  return font;
}

// Whether a window's upper edge lies on a screen, so that the window can be taken hold of.
bool CanBeReached(const QRect& place) {
  const QRect edge(place.left(), place.top(), place.width(), kEdgeHeight);
  const QList<QScreen*> screens = QApplication::screens();
  return std::any_of(screens.begin(), screens.end(), [&](const QScreen* screen) {
    const QRect shown = screen->availableGeometry() & edge;
    return shown.width() >= kReachedWidth && shown.height() >= kEdgeHeight / 2;
  });
}

// As much of a window as the screen has room for, with its frame.
QSize OnScreen(const QSize& size, const QRect& available) { return size.boundedTo(available.size() - kFrame); }

// The place, moved as far as it takes for the window to lie on the screens.
QPoint OnScreen(const QPoint& place, const QSize& size, const QRect& available) {
  const QPoint last = available.bottomRight() - QPoint((size + kFrame).width(), (size + kFrame).height());
  return {std::max(available.left(), std::min(place.x(), last.x())),
          std::max(available.top(), std::min(place.y(), last.y()))};
}

int Bounded(int value) { return std::clamp(value, -kFarthest, kFarthest); }

}  // namespace

TfmMain::TfmMain(TDesktopSetup setup) : setup_(std::move(setup)) {
  setup_.clients = notes_.Watched(setup_.clients, setup_.wait == nullptr ? nullptr : setup_.wait->Waiting());
  setObjectName(QStringLiteral("fmMain"));
  setWindowIcon(ProgramIcon());
  setContextMenuPolicy(Qt::NoContextMenu);  // nothing brings back a bar that was hidden by mistake
  MakeCommands();
  MakeRecentCommands();
  MakeExtras();
  MakeMenus();
  MakeBars();
  MakeWorkArea();
  ConnectWorkArea();
  PlaceFirst();
  ReadSettings();
}

TfmMain::~TfmMain() {
  tlActions_->disconnect(this);
  pnDifferences_->OnCurrent = nullptr;
}

// --- Start and end

void TfmMain::ReadSettings() {
  TWindowPlace place{kWindowNormal, kUnplaced, kUnplaced, width(), height()};
  LoadSettings(setup_.settings_file, place, recent_);
  ShowRecent();
  if (place.state == kWindowNormal && place.width > 0 && place.height > 0) PlaceAs(place);
  if (place.state == kWindowMaximised) setWindowState(Qt::WindowMaximized);
}

// Large enough for the contents, as far as the screen has room; where, the window system knows best.
void TfmMain::PlaceFirst() {
  const QRect available = screen()->availableGeometry();
  QSize contents = minimumSizeHint();
  int bars = 0;  // each of them gives way, but commands that are out of sight are not found
  for (const QToolBar* bar : findChildren<QToolBar*>()) bars += bar->sizeHint().width();
  contents.setWidth(std::max(contents.width(), bars));
  resize(OnScreen((available.size() * kFirstShare).expandedTo(contents), available));
}

// A place that no screen has, or none at all, is left to the window system.
void TfmMain::PlaceAs(const TWindowPlace& place) {
  const QRect wanted(Bounded(place.left), Bounded(place.top), Bounded(place.width), Bounded(place.height));
  if (!CanBeReached(wanted)) return resize(OnScreen(wanted.size(), screen()->availableGeometry()));
  const QRect screens = screen()->availableVirtualGeometry();
  resize(OnScreen(wanted.size(), screens));
  move(OnScreen(wanted.topLeft(), size(), screens));
}

// Writes the options too.
void TfmMain::WriteSettings() {
  TWindowPlace place{kWindowNormal, x(), y(), width(), height()};
  if (isMaximized()) place.state = kWindowMaximised;
  if (isMinimized()) place.state = kWindowMinimised;
  velmora::SaveSettings(setup_.settings_file, place, recent_, options_, *setup_.options);
  OptSetBool(*setup_.options, kGroupedByKind, pnDifferences_->ByKind());
  OptSetBool(*setup_.options, kSortedByRunning, pnDifferences_->ByRunning());
  setup_.options->Flush();
}

void TfmMain::showEvent(QShowEvent* event) {
  QMainWindow::showEvent(event);
  if (std::exchange(shown_, true)) return;
  AtTopLevel([this] { FirstShow(); });
}

void TfmMain::FirstShow() {
  script_ = std::make_unique<TScriptPort>(*mScript_, [this] { page_->setTabVisible(page_->indexOf(tsScript_), true); });
  log_ = std::make_unique<TWindowLog>(SystemClock(), forms_->progress, *mLog_);
  app_ = std::make_unique<TApplication>(forms_->progress, *script_, *log_, SystemClock());
  differences_ = std::make_unique<TDifferenceList>(app_->data);
  pnDifferences_->Show(differences_.get());
  app_->tree.SetView(tlActions_);
  app_->WatchRuns([this](const TRunReport& report) { ShowRun(report); });
  task_ = std::make_unique<TTaskFile>(app_->connections, static_cast<TTaskHost&>(*this), setup_.clients);
  page_->setCurrentWidget(tsActions_);
  LoadOptions();
  ShowTask(false);
  // After the window stands: a password may be asked for.
  QTimer::singleShot(0, this, [this] { AtTopLevel([this] { OpenFirst(); }); });
}

void TfmMain::OpenFirst() {
  if (!task_) return;  // closed already
  if (!setup_.task_file.empty()) return task_->OpenTask(setup_.task_file);
  if (options_.ConnectOnStartup && recent_.Count() > 0) OpenLatest();
}

// A task that keeps the standard dialect is left for the user to open.
void TfmMain::OpenLatest() {
  if (active_) return;
  const std::string path = recent_.Path(0);
  std::error_code unknown;
  if (!std::filesystem::exists(path, unknown) && !unknown)  // its drive may be back tomorrow
    return statusBar()->showMessage(
        TText::tr("The latest task is not there now, and was not opened: %1").arg(ToQt(path)));
  const TTaskReader reader(path);
  if (StoredDialect(reader.Dialect()).id == EDialect::Standard) return;
  task_->OpenRead(path, reader);
  if (active_) Analyze();
}

void TfmMain::resizeEvent(QResizeEvent* event) {
  QMainWindow::resizeEvent(event);
  FitBars();
}

void TfmMain::closeEvent(QCloseEvent* event) {
  // Something that is under way works on what closing frees.
  if (!isEnabled() || (running_ != nullptr && running_ != Command("acExit"))) {
    event->ignore();
    return;
  }
  bool stays = true;  // also where it could not be asked
  AtTopLevel([&] { stays = !MayLoseScript() || (task_ && !task_->MayClose()); });
  if (stays) return event->ignore();
  AtTopLevel([this] { Close(); });
  event->accept();
}

void TfmMain::Close() {
  if (!app_) return;
  RunGuarded([this] { WriteSettings(); },
             [this] {
               mScript_->DetachParser();
               app_->tree.SetView(nullptr);
               tlActions_->Cleared();
               pnDifferences_->Show(nullptr);
               differences_.reset();
               task_.reset();
               app_.reset();
               former_.clear();
             });
}

void TfmMain::LoadOptions() {
  options_ = velmora::LoadOptions(*setup_.options);
  ApplyFonts();
  pnDifferences_->Arrange(OptGetBool(*setup_.options, kGroupedByKind, false),
                          OptGetBool(*setup_.options, kSortedByRunning, false));
}

void TfmMain::ApplyFonts() {
  mLog_->setFont(TextFont(options_.LogFontName, options_.LogFontSize, QFont::SansSerif));
  mScript_->SetTextFont(TextFont(options_.ScriptFontName, options_.ScriptFontSize, QFont::Monospace));
}

void TfmMain::SaveOptions() { velmora::SaveOptions(options_, *setup_.options); }

// --- The task

void TfmMain::ShowTask(bool active) {
  active_ = active;
  ShowPage();
  for (const TCommand& command : velmora::Commands())
    if (command.list == ECommandList::acTask) Command(command.name)->setEnabled(active);
  for (QWidget* widget : std::initializer_list<QWidget*>{barAnalyze_, panMain_, pnDetails_, splitter_})
    widget->setVisible(active);
  panNoTask_->setVisible(!active);
  for (const auto& [dialect, command] : acDialects_) command->setEnabled(active);
  if (!active) ClearWork();
  UpdateExecute();
  UpdateTree();
  SetDialect(StoredDialect(task_->Dialect));
  ShowTitle(active);
  if (active) {
    app_->connections.reference->Connect();
    app_->connections.target->Connect();
    app_->Settle();
    ShowDialect();
    ShowHeadings();
    if (log_->Lines().empty()) ShowLog(app_->ChoiceLog());
  } else {
    barFind_->hide();
    said_.clear();
  }
  ShowSides(active);
}

void TfmMain::ShowPage() {
  lbEqual_->setMaximumHeight(QWIDGETSIZE_MAX);
  page_->show();
  lbEqual_->hide();
}

void TfmMain::ClearWork() {
  app_->Forget();
  ShowRunPage(false);
  empty_allowed_ = false;
  script_->Clear();
  ScriptIs(EScriptOf::Nobody);
  ClearDetails();
  log_->SetLines({});
  AdviseDialect(nullptr);
  barUnmade_->hide();
  ForgetTree();
  statusBar()->clearMessage();
}

bool TfmMain::MayLoseScript() {
  const bool typed = active_ && mScript_->isModified() && mScript_->length() > 0;
  return !typed || ConfirmYes(FromQt(TText::tr("The script was edited and is not saved. Discard it?")));
}

// One that was loaded or saved is in its file, and would be missed in the editor all the same.
bool TfmMain::MayReplaceScript() {
  if (mScript_->isModified()) return MayLoseScript();
  return script_of_ != EScriptOf::User || mScript_->length() == 0 ||
         ConfirmYes(FromQt(TText::tr("The script is one of your own. Replace it with that of the ticked actions?")));
}

void TfmMain::ShowLog(const TStringList& lines) {
  for (const std::string& line : notes_.Of(app_->connections))
    if (std::ranges::find(said_, line) == said_.end()) said_.push_back(line);
  TStringList all = said_;
  all.insert(all.end(), lines.begin(), lines.end());
  log_->SetLines(all);
}

void TfmMain::ShowTitle(bool active) {
  std::string name;
  if (active) name = std::filesystem::path(task_->TaskFileName).stem().string() + " - ";
  setWindowTitle(ToQt(name + AppTitle()));
}

void TfmMain::RecentAdd(const std::string& path) {
  recent_.RecentAdd(path);
  ShowRecent();
}

void TfmMain::ShowRecent() {
  for (std::size_t i = 0; i < acRecent_.size(); ++i) {
    const bool used = i < recent_.Count();
    acRecent_[i]->setVisible(used);
    panNoTask_->ShowRecent(i, used ? ToQt(recent_.Path(i)) : QString());
    if (!used) continue;
    // The number is the mnemonic; a "&" in the path is none.
    const QString caption = ToQt(recent_.Caption(i));
    acRecent_[i]->setText(caption.left(1) + caption.mid(1).replace(QLatin1Char('&'), QLatin1String("&&")));
  }
}

// --- Analysis

void TfmMain::Analyze() {
  const QPointer<QWidget> focused = focusWidget();
  forms_->progress.ShowSimple("Analyzing...");
  QAction* analyze = Command("acAnalyze");
  app_->tree.BeginUpdate();
  RunGuarded(
      [&] {
        app_->tree.Clear();
        differences_->Clear();
        pnDifferences_->Reload();
        SetTreeHint({});
        AdviseDialect(nullptr);
        barUnmade_->hide();
        analyze->setEnabled(false);
        panMain_->setEnabled(false);
        if (app_->connections.reference)
          CheckComparable(*app_->connections.reference, app_->Dialect().Traits().maps_foreign);
        log_->LogLine("Comparing...");
        CompareOrForget();
        AskAboutEmptyReference();
        TakeDifferences();
        acGenScript();
        ShowLog(app_->Log());
        ShowDialect();
        ShowUnmade();
        page_->setCurrentWidget(tsActions_);
        ShowResult();
        pnDifferences_->SelectFirst();
      },
      [&] {
        TooLateToCancel();
        app_->tree.EndUpdate();
        analyze->setEnabled(true);
        panMain_->setEnabled(true);
        forms_->progress.Finish();
        RestoreFocus(focused);
      });
}

// A connection that is lost is named with its side: the client's message tells of none.
void TfmMain::Compare() {
  try {
    app_->Take({.foreign = Wishes(), .verbose = options_.VerboseLog, .exact = ExactOptionsOfTask()});
    app_->Compare();
  } catch (const EAbort&) {
    throw;
  } catch (const EVelmora& error) {
    if (Host().Cancelling()) throw;  // nobody is asked why
    const TTaskConnections& pair = app_->connections;
    const TDialect& dialect = app_->Dialect();
    if (!dialect.TargetLost()) AdviseDialect(app_->DialectThatReads());
    if (!dialect.TargetLost() && (pair.reference == nullptr || StandsConnected(*pair.reference))) throw;
    const std::string place = ComparisonPlace(pair.reference.get(), pair.target.get(), dialect.TargetLost(),
                                              dialect.TableUnderWay(), error.what());
    if (place.empty()) throw;
    RaiseError(place + ": " + error.what());
  }
}

void TfmMain::AskAboutEmptyReference() {
  if (empty_allowed_ || app_->data.mtActions.Empty() || !app_->Dialect().ReferenceIsEmpty()) return;
  const std::string found = EmptyReferenceText(*app_->connections.reference) + ".\n\n";
  if (!ConfirmYes(found + FromQt(TText::tr("Go on all the same?")))) {
    ClearWork();
    ShowLog(app_->ChoiceLog());
    ShowPage();
    throw EAbort();
  }
  empty_allowed_ = true;
}

// What was disabled in between has lost the focus.
void TfmMain::RestoreFocus(QWidget* focused) {
  if (focused != nullptr && focused->isVisible())
    focused->setFocus();
  else if (pnDifferences_->isVisible())
    pnDifferences_->View().setFocus();
  else if (page_->isVisible())
    page_->setFocus();
}

void TfmMain::ShowResult() {
  const bool identical = app_->Dialect().Identical();
  const bool rows = !app_->data.mtActions.Empty();
  const bool found = rows || differences_->Count() > 0;
  lbEqual_->setVisible(identical);
  page_->setVisible(!identical);
  if (identical) barFind_->hide();
  if (!identical && !found) page_->setCurrentWidget(tsMessages_);  // which names the tables that could not be read
  ScriptIs(rows ? EScriptOf::Analysis : EScriptOf::Nobody);
  Command("acDelAction")->setEnabled(found);
  UpdateTree();
}

// What was found in one dialect cannot be shown or run in the other.
void TfmMain::SetDialect(const TDialectRow& dialect) {
  MarkDialect();
  if (app_->Chosen().id == dialect.id) return;
  app_->Choose(dialect.id);
  ClearWork();
  SetTreeHint(TText::tr("%1: press F9 to analyze.").arg(QLatin1String(dialect.caption)));
  page_->setCurrentWidget(tsActions_);
}

void TfmMain::MarkDialect() { acDialects_.at(StoredDialect(task_->Dialect).id)->setChecked(true); }

void TfmMain::ShowDialect() {
  ShowTree();
  ShowMapping();
  sbDialect_->setVisible(active_);
  sbDialect_->setText(ToQt(app_->DialectLine()));
  sbDialect_->setToolTip(sbDialect_->text() + QStringLiteral(". ") + ToQt(app_->Chosen().hint));
}

void TfmMain::AdviseDialect(const TDialectRow* fitting) {
  advised_ = fitting;
  barAdvice_->setVisible(fitting != nullptr);
  if (fitting == nullptr) return;
  const std::optional<TServerVersion> version = ServerVersionOf(*app_->connections.target);
  lbAdvice_->setText(version ? TText::tr("This server is %1.").arg(ToQt(version->Text())) : QString());
  bnAdvice_->setText(TText::tr("Analyze in the %1").arg(ToQt(LowerText(fitting->caption))));
}

// --- The script

EScriptOf TfmMain::ScriptOf() const { return mScript_->isModified() ? EScriptOf::User : script_of_; }

void TfmMain::ScriptIs(EScriptOf origin) {
  script_->Flush();
  script_of_ = origin;
  mScript_->setModified(false);
  UpdateExecute();
}

void TfmMain::UpdateExecute() {
  const EScriptOf origin = ScriptOf();
  const bool some = origin != EScriptOf::Nobody && mScript_->length() > 0;
  Command("acSynchronize")->setEnabled(active_ && (some || origin == EScriptOf::Analysis));
}

void TfmMain::ShowFind() {
  if (!panMain_->isVisible() || !page_->isVisible()) return;
  TSqlEdit* edit = page_->currentWidget() == tsScript_ ? mScript_ : DetailsEditor();
  if (edit->isVisible()) barFind_->Open(*edit);
}

}  // namespace velmora
