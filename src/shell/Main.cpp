#include "shell/Main.h"

#include <QApplication>
#include <QCloseEvent>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPointer>
#include <QScreen>
#include <filesystem>
#include <limits>

#include "app/LineDifference.h"
#include "persist/Settings.h"
#include "shell/Commands.h"
#include "shell/Icons.h"
#include "shell/Progress.h"
#include "shell/QtText.h"
#include "shell/TopLevel.h"
#include "shell/WindowLog.h"
#include "util/Clock.h"
#include "util/Errors.h"
#include "util/Version.h"

namespace velmora {

namespace {

constexpr char kExactTitle[] = " (exact dialect)";
constexpr int kWidth = 1000;
constexpr int kHeight = 700;
constexpr int kUnplaced = std::numeric_limits<int>::min();
constexpr int kEdgeHeight = 24;
constexpr int kReachedWidth = 48;

// A "&" in the name is none that underlines what follows. A name that is too long for its half is read in the hint.
void ShowHeading(QLabel& heading, const char* caption, TDBConn& conn) {
  std::string name;
  conn.GetDisplayName(name);
  heading.setText(QLatin1String(caption) + ToQt(name).replace(QLatin1Char('&'), QLatin1String("&&")));
  heading.setToolTip(ToQt(name).toHtmlEscaped());
}

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

}  // namespace

TfmMain::TfmMain(TDesktopSetup setup) : setup_(std::move(setup)) {
  setObjectName(QStringLiteral("fmMain"));
  setWindowIcon(ProgramIcon());
  setContextMenuPolicy(Qt::NoContextMenu);  // nothing brings back a bar that was hidden by mistake
  resize(kWidth, kHeight);
  MakeCommands();
  MakeRecentCommands();
  MakeExtras();
  MakeMenus();
  MakeBars();
  MakeWorkArea();
  ConnectWorkArea();
  ReadSettings();
}

TfmMain::~TfmMain() { tlActions->disconnect(this); }

// --- Start and end

void TfmMain::ReadSettings() {
  TWindowPlace place{kWindowNormal, kUnplaced, kUnplaced, width(), height()};
  LoadSettings(setup_.settings_file, place, recent_);
  ShowRecent();
  const QRect wanted(place.left, place.top, place.width, place.height);
  if (place.state == kWindowNormal && wanted.isValid()) {
    const bool reached = CanBeReached(wanted);
    resize(reached ? wanted.size() : wanted.size().boundedTo(screen()->availableSize()));
    if (reached) move(wanted.topLeft());
  }
  if (place.state == kWindowMaximised) setWindowState(Qt::WindowMaximized);
}

// Writes the options too.
void TfmMain::WriteSettings() {
  TWindowPlace place{kWindowNormal, x(), y(), width(), height()};
  if (isMaximized()) place.state = kWindowMaximised;
  if (isMinimized()) place.state = kWindowMinimised;
  velmora::SaveSettings(setup_.settings_file, place, recent_, options_, *setup_.options);
}

void TfmMain::showEvent(QShowEvent* event) {
  QMainWindow::showEvent(event);
  if (std::exchange(shown_, true)) return;
  AtTopLevel([this] { FirstShow(); });
}

void TfmMain::FirstShow() {
  script_ = std::make_unique<TScriptPort>(*mScript, [this] { page->setCurrentWidget(tsScript); });
  log_ = std::make_unique<TWindowLog>(SystemClock(), forms_->progress, *mLog);
  mDDLref->SetBytes({});
  mDDLtgt->SetBytes({});
  app_ = std::make_unique<TApplication>(forms_->progress, *script_, *log_, SystemClock());
  app_->tree.SetView(tlActions);
  task_ = std::make_unique<TTaskFile>(app_->connections, static_cast<TTaskHost&>(*this), setup_.clients);
  page->setCurrentWidget(tsActions);
  LoadOptions();
  ShowTask(false);
}

void TfmMain::closeEvent(QCloseEvent* event) {
  // Something that is under way works on what closing frees.
  if (!isEnabled() || (running_ != nullptr && running_ != Command("acExit"))) {
    event->ignore();
    return;
  }
  AtTopLevel([this] { Close(); });
  event->accept();
}

void TfmMain::Close() {
  if (!app_) return;
  RunGuarded([this] { WriteSettings(); },
             [this] {
               mScript->DetachParser();
               app_->tree.SetView(nullptr);
               tlActions->Cleared();
               task_.reset();
               app_.reset();
               former_.clear();
             });
}

void TfmMain::LoadOptions() {
  options_ = velmora::LoadOptions(*setup_.options);
  ApplyFonts();
}

void TfmMain::ApplyFonts() {
  mLog->setFont(TextFont(options_.LogFontName, options_.LogFontSize, QFont::SansSerif));
  mScript->SetTextFont(TextFont(options_.ScriptFontName, options_.ScriptFontSize, QFont::Monospace));
}

void TfmMain::SaveOptions() { velmora::SaveOptions(options_, *setup_.options); }

// --- The task

void TfmMain::ShowTask(bool active) {
  page->show();
  lbEqual->hide();
  Command("acSynchronize")->setEnabled(true);
  Command("acDelAction")->setEnabled(true);
  for (const TCommand& command : velmora::Commands())
    if (command.list == ECommandList::acTask) Command(command.name)->setEnabled(active);
  for (QWidget* widget : std::initializer_list<QWidget*>{barAnalyze, panMain, pnDetails, splitter})
    widget->setVisible(active);
  lbNoTask->setVisible(!active);
  acExactDialect_->setEnabled(active);
  SetDialect(active && task_->ExactDialect);
  ShowTitle(active);
  if (active) {
    app_->connections.reference->Connect();
    app_->connections.target->Connect();
    ShowHeading(*pnRefH, " &Reference: ", *app_->connections.reference);
    ShowHeading(*pnTgtH, " Tar&get: ", *app_->connections.target);
  } else {
    barFind->hide();
    app_->data.mtActions.Clear();
    app_->tree.Clear();
  }
}

void TfmMain::ShowTitle(bool active) {
  std::string name;
  if (active) name = std::filesystem::path(task_->TaskFileName).stem().string() + " - ";
  setWindowTitle(ToQt(name + AppTitle() + (acExactDialect_->isChecked() ? kExactTitle : "")));
}

void TfmMain::RecentAdd(const std::string& path) {
  recent_.RecentAdd(path);
  ShowRecent();
}

void TfmMain::ShowRecent() {
  for (std::size_t i = 0; i < acRecent_.size(); ++i) {
    const bool used = i < recent_.Count();
    acRecent_[i]->setVisible(used);
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
        analyze->setEnabled(false);
        panMain->setEnabled(false);
        log_->LogLine("Comparing...");
        app_->Compare();
        acGenScript();
        log_->SetLines(app_->ActionLog());
        page->setCurrentWidget(tsActions);
        ShowResult();
      },
      [&] {
        app_->tree.EndUpdate();
        analyze->setEnabled(true);
        panMain->setEnabled(true);
        forms_->progress.Finish();
        RestoreFocus(focused);
      });
}

// What was disabled in between has lost the focus.
void TfmMain::RestoreFocus(QWidget* focused) {
  if (focused != nullptr && focused->isVisible())
    focused->setFocus();
  else if (page->isVisible())
    page->setFocus();
}

void TfmMain::ShowResult() {
  const bool identical = app_->Identical();
  const bool rows = !app_->data.mtActions.Empty();
  lbEqual->setVisible(identical);
  page->setVisible(!identical);
  if (identical) barFind->hide();
  if (!identical && !rows) page->setCurrentWidget(tsMessages);  // which names the tables that could not be read
  Command("acSynchronize")->setEnabled(rows);
  Command("acDelAction")->setEnabled(rows);
}

void TfmMain::ShowTableDDL(const std::string& table) {
  if (!app_->connections.reference || !app_->connections.target) return;
  std::string reference;
  std::string target;
  app_->TableTexts(table, reference, target);
  mDDLref->SetBytes(reference);
  mDDLtgt->SetBytes(target);
  std::pair<std::vector<std::size_t>, std::vector<std::size_t>> lines;
  if (acExactDialect_->isChecked()) lines = DifferingLines(LinesOf(reference), LinesOf(target));
  mDDLref->MarkDifferences(lines.first);
  mDDLtgt->MarkDifferences(lines.second);
}

// What was found in one dialect cannot be shown or run in the other.
void TfmMain::SetDialect(bool exact) {
  acExactDialect_->setChecked(exact);
  const EDialect dialect = exact ? EDialect::Exact : EDialect::Standard;
  if (std::exchange(app_->dialect, dialect) == dialect) return;
  app_->data.mtActions.Clear();
  app_->tree.Clear();
  for (TSqlEdit* edit : {mScript, mDDLref, mDDLtgt}) edit->SetBytes({});
  for (TSqlEdit* edit : {mDDLref, mDDLtgt}) edit->MarkDifferences({});
}

void TfmMain::ShowFind() {
  if (!panMain->isVisible() || !page->isVisible()) return;
  TSqlEdit* edit = nullptr;
  for (TSqlEdit* candidate : {mScript, mDDLref, mDDLtgt})
    if (candidate->hasFocus()) edit = candidate;
  if (edit == nullptr) edit = page->currentWidget() == tsScript ? mScript : mDDLref;
  if (edit->isVisible()) barFind->Open(*edit);
}

}  // namespace velmora
