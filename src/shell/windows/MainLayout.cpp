// SPDX-License-Identifier: GPL-3.0-or-later

// The main window's components: commands, menus, bars, the work area.

#include <QActionGroup>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QShortcut>
#include <QStackedWidget>
#include <QStatusBar>
#include <QVBoxLayout>

#include "shell/widgets/ElidedLabel.h"
#include "shell/widgets/EmptyState.h"
#include "shell/widgets/Headings.h"
#include "shell/widgets/Icons.h"
#include "shell/widgets/MarkBar.h"
#include "shell/widgets/Named.h"
#include "shell/widgets/Text.h"
#include "shell/widgets/TopLevel.h"
#include "shell/windows/Commands.h"
#include "shell/windows/Main.h"
#include "util/Errors.h"

namespace velmora {

namespace {

constexpr int kTreeWidth = 300;
constexpr int kDetailsWidth = 700;
constexpr TText kNoTask = Fixed("Please create new or open sync task.");
constexpr TText kIdentical = Fixed("Databases are identical. Nothing to synchronize.");

QVBoxLayout* Column(QWidget* widget) {
  auto* column = new QVBoxLayout(widget);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(2);
  return column;
}

QLabel* BoldLabel(const char* name, const QString& text) {
  QLabel* label = Named(new QLabel(text), name);
  QFont font = label->font();
  font.setBold(true);
  label->setFont(font);
  label->setAlignment(Qt::AlignCenter);
  return label;
}

}  // namespace

// Long work lets window messages run while the window may be in use: a second command would change or free what the
// first works on.
void TfmMain::OnCommand(QAction* command, std::function<void()> handler) {
  Handle(command, &QAction::triggered, this, [this, command, handler = std::move(handler)] {
    if (running_ != nullptr) {
      if (command->isCheckable()) MarkDialect();  // its mark went first
      return;
    }
    running_ = command;
    RunGuarded([&] { Cancellable(handler); }, [this] { running_ = nullptr; });
  });
}

void TfmMain::MakeCommands() {
  for (const TCommand& command : velmora::Commands()) {
    auto* action = Named(new QAction(command.caption, this), command.name);
    action->setMenuRole(QAction::NoRole);
    if (command.shortcut != nullptr) action->setShortcut(QKeySequence(QLatin1String(command.shortcut)));
    if (command.icon != nullptr) action->setIcon(Icon(QLatin1String(command.icon)));
    const QString hint = command.hint.Empty() ? command.caption : command.hint;
    const QString keys = action->shortcut().toString(QKeySequence::NativeText);
    action->setToolTip(keys.isEmpty() ? hint : QStringLiteral("%1 (%2)").arg(hint, keys));
    if (const auto handler = command.handler; handler != nullptr)
      OnCommand(action, [this, handler] { (this->*handler)(); });
    addAction(action);  // shortcuts hold for commands on no menu too
    commands_[command.name] = action;
  }
  Command("acInnoDBStatus")->setVisible(false);
}

void TfmMain::MakeRecentCommands() {
  for (std::size_t i = 0; i < kRecentRoom; ++i) {
    auto* action = new QAction(this);
    action->setObjectName(QStringLiteral("acRecent%1").arg(i + 1));
    action->setVisible(false);
    OnCommand(action, [this, i] { acRecent(i); });
    acRecent_.push_back(action);
  }
}

void TfmMain::AddCommands(QWidget& menu_or_bar, std::initializer_list<const char*> names) {
  for (const char* name : names) {
    if (name != nullptr) {
      menu_or_bar.addAction(Command(name));
      continue;
    }
    auto* separator = new QAction(&menu_or_bar);
    separator->setSeparator(true);
    menu_or_bar.addAction(separator);
  }
}

// The dialect belongs to the open task.
void TfmMain::MakeExtras() {
  auto* group = new QActionGroup(this);
  for (const TDialectRow& dialect : Dialects()) {
    auto* command = Named(new QAction(QLatin1String(dialect.caption), this), dialect.command);
    command->setCheckable(true);
    group->addAction(command);
    command->setToolTip(QLatin1String(dialect.hint));
    command->setStatusTip(command->toolTip());
    OnCommand(command, [this, &dialect] { acDialect(dialect); });
    acDialects_[dialect.id] = command;
  }
}

void TfmMain::MakeMenus() {
  QMenuBar* menus = Named(menuBar(), "mainMenu");
  menus->setAccessibleName(Fixed("Main Menu"));
  const auto menu = [menus](const QString& caption) { return menus->addMenu(caption); };

  QMenu* files = menu(Fixed("&Files"));
  AddCommands(*files, {"acNewTask", "acOpenTask", nullptr, "acSaveTask", "acSaveTaskAs", "acCloseTask", nullptr});
  for (QAction* recent : acRecent_) files->addAction(recent);
  AddCommands(*files, {nullptr, "acExit"});
  AddCommands(*menu(Fixed("&Script")), {"acLoadScriptFromFile", "acSaveScriptToFile"});
  AddCommands(*menu(Fixed("&Actions")), {"acDelAction", "acUndoTick", "acRedoTick", nullptr, "acNextDifference",
                                         "acPreviousDifference", "acNextPlace", "acPreviousPlace", "acFilterActions",
                                         "acFollow", "acRename", "acMapColumn", nullptr, "acSynchronize"});
  QMenu* tools = menu(Fixed("&Tools"));
  AddCommands(*tools, {"acCreateDB", "acDumpDB", nullptr, "acOptions"});
  tools->menuAction()->setVisible(false);  // Deliberate: its commands are reached by their shortcuts alone
  QMenu* extras = menu(TText::tr("E&xtras"));
  for (const auto& [dialect, command] : acDialects_) extras->addAction(command);
  AddCommands(*extras, {nullptr, "acSwapSides", "acTaskMarks", "acComparison", "acMapping", nullptr, "acSaveReport"});
  extras->setToolTipsVisible(true);  // which say why a command cannot be used
  AddCommands(*menu(Fixed("&Help")),
              {"acHelp", "acInnoDBStatus", nullptr, "acVisitWeb", "acContactSupport", nullptr, "acAbout"});
}

void TfmMain::MakeBars() {
  const auto bar = [this](const char* name, const QString& title) {
    QToolBar* made = Named(addToolBar(title), name);
    made->setMovable(false);
    made->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    return made;
  };
  barButtons_ = bar("barButtons", Fixed("Button bar"));
  AddCommands(*barButtons_, {"acNewTask", nullptr, "acOpenTask", "acSaveTask", nullptr, "acExit"});
  barAnalyze_ = bar("barAnalyze", Fixed("Second button bar"));
  AddCommands(*barAnalyze_, {"acAnalyze", nullptr, "acDelAction", nullptr, "acSynchronize"});
}

// In a narrow window captions give way, those of the first bar first, so that no command is out of sight.
void TfmMain::FitBars() {
  const auto width_with = [](QToolBar* bar, Qt::ToolButtonStyle style) {
    bar->setToolButtonStyle(style);
    return bar->sizeHint().width();
  };
  const int commands = width_with(barButtons_, Qt::ToolButtonTextBesideIcon);
  const int work = width_with(barAnalyze_, Qt::ToolButtonTextBesideIcon);
  if (commands + work <= width()) return;
  if (width_with(barButtons_, Qt::ToolButtonIconOnly) + work > width()) width_with(barAnalyze_, Qt::ToolButtonIconOnly);
}

void TfmMain::MakeWorkArea() {
  auto* central = new QWidget;
  QVBoxLayout* column = Column(central);
  barMark_ = Named(new TMarkBar, "barMark");
  panMain_ = Named(new QWidget, "panMain");
  column->addWidget(barMark_);
  column->addWidget(MakeAdvice());
  column->addWidget(MakeUnmadeBar());
  column->addWidget(MakeEmptyState(), 1);
  column->addWidget(panMain_, 1);

  lbEqual_ = BoldLabel("lbEqual", kIdentical);
  page_ = Named(new QTabWidget, "page");
  page_->setAccessibleName(TText::tr("Differences, messages, script"));
  page_->setDocumentMode(true);
  QVBoxLayout* work = Column(panMain_);
  work->addWidget(lbEqual_, 1);
  work->addWidget(page_, 1);

  splitter_ = Named(new QSplitter, "splitter");
  splitter_->addWidget(MakeTreePanel());
  splitter_->addWidget(MakeDetails());
  splitter_->setStretchFactor(1, 1);
  splitter_->setChildrenCollapsible(false);
  splitter_->setSizes({kTreeWidth, kDetailsWidth});
  const auto tab = [this](const char* name, const QString& caption, QWidget* content) {
    auto* widget = Named(new QWidget, name);
    Column(widget)->addWidget(content);
    page_->addTab(widget, caption);
    return widget;
  };
  tsActions_ = tab("tsActions", Fixed("Differences"), splitter_);
  mLog_ = Named(new QPlainTextEdit, "mLog");
  mLog_->setAccessibleName(Fixed("Messages"));
  mLog_->setReadOnly(true);
  mLog_->setLineWrapMode(QPlainTextEdit::NoWrap);
  tsMessages_ = tab("tsMessages", Fixed("Messages"), mLog_);
  mScript_ = Named(new TSqlEdit, "mScript");
  mScript_->setAccessibleName(Fixed("SQL Sync Script"));
  tsScript_ = tab("tsScript", Fixed("SQL Sync Script"), mScript_);
  tsRun_ = tab("tsRun", TText::tr("Run", "page"), MakeRunView());
  ShowRunPage(false);

  barFind_ = new TFindBar;
  column->addWidget(barFind_);
  setCentralWidget(central);
  MakeStatusBar();
}

// A line above the work area, with a command to the right of what it tells.
QWidget* TfmMain::MakeBar(const char* name, QLabel* label, QPushButton* button, const std::function<void()>& click) {
  auto* bar = Named(new QFrame, name);
  bar->setFrameShape(QFrame::StyledPanel);
  label->setTextFormat(Qt::PlainText);
  auto* row = new QHBoxLayout(bar);
  row->addWidget(label);
  row->addWidget(button);
  row->addStretch();
  bar->hide();
  // The command's own way: nothing else may be under way.
  auto* take = new QAction(bar);
  OnCommand(take, click);
  connect(button, &QPushButton::clicked, take, &QAction::trigger);
  return bar;
}

QWidget* TfmMain::MakeAdvice() {
  lbAdvice_ = Named(new QLabel, "lbAdvice");
  bnAdvice_ = Named(new QPushButton, "bnAdvice");
  return barAdvice_ = MakeBar("barAdvice", lbAdvice_, bnAdvice_, [this] { TakeAdvice(); });
}

QWidget* TfmMain::MakeEmptyState() {
  panNoTask_ =
      new TEmptyState(BoldLabel("lbNoTask", kNoTask), {Command("acNewTask"), Command("acOpenTask"), acRecent_});
  return panNoTask_;
}

void TfmMain::MakeStatusBar() {
  const auto part = [this](QLabel* label, const char* name, const QString& what) {
    Named(label, name)->setAccessibleDescription(what);
    label->setToolTip(what);
    label->setTextFormat(Qt::PlainText);
    label->hide();
    statusBar()->addPermanentWidget(label);
    return label;
  };
  sbReference_ = part(new QLabel, "sbReference", TText::tr("Server of the reference"));
  sbTarget_ = part(new QLabel, "sbTarget", TText::tr("Server of the target"));
  sbDialect_ = part(new TElidedLabel, "sbDialect", TText::tr("How the databases are compared"));
  // Why this dialect was chosen gives way to what there is to tell.
  connect(statusBar(), &QStatusBar::messageChanged, sbDialect_, [this](const QString& text) {
    sbDialect_->setMaximumWidth(text.isEmpty() ? QWIDGETSIZE_MAX : sbDialect_->minimumSizeHint().width());
  });
}

QWidget* TfmMain::MakeTreePanel() {
  auto* panel = new QWidget;
  tlActions_ = new TActionTreeView;
  QVBoxLayout* column = Column(panel);
  pnDifferences_ = new TDifferenceTree;
  pnDifferences_->hide();
  pnActionsH_ = NewHeading("pnActionsH", Fixed(" &Sync actions"), tlActions_);
  column->addWidget(pnActionsH_);
  column->addWidget(tlActions_, 1);
  column->addWidget(pnDifferences_, 1);
  return panel;
}

void TfmMain::ConnectWorkArea() {
  connect(mScript_, &QsciScintilla::textChanged, this, [this] { UpdateExecute(); });
  connect(mScript_, &QsciScintilla::modificationChanged, this, [this] { UpdateExecute(); });
  Handle(tlActions_, &QTreeWidget::currentItemChanged, this, [this] {
    const TActionNode* node = tlActions_->FocusedNode();
    if (node != nullptr) ShowTableDDL(node->parent != nullptr ? node->parent->text : node->text);
  });
  tlActions_->OnDeleteKey = [this] { Command("acDelAction")->trigger(); };
  ConnectTree();
  connect(page_, &QTabWidget::currentChanged, barFind_, &QWidget::hide);  // it searches what is in view
  auto* find = new QShortcut(QKeySequence(QKeySequence::Find), this);
  Handle(find, &QShortcut::activated, this, [this] { ShowFind(); });
}

}  // namespace velmora
