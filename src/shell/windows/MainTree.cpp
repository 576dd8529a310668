// SPDX-License-Identifier: GPL-3.0-or-later

// The tree of differences: what is ticked, deleted and undone there, and the ways between an action and its statement.

#include <QStatusBar>
#include <QTimer>
#include <algorithm>

#include "app/OptionMeanings.h"
#include "mysqltext/Lexer.h"
#include "shell/widgets/QtText.h"
#include "shell/widgets/Text.h"
#include "shell/widgets/TopLevel.h"
#include "shell/windows/Main.h"
#include "util/Errors.h"

namespace velmora {

namespace {

constexpr int kDifferencesWidth = 360;    // of the tree, whose lines say more than those of the other one
constexpr int kWidestPart = 40;           // percent of the window
constexpr std::size_t kLineEndBytes = 2;  // in the script's text

constexpr const char* kTreeCommands[] = {"acUndoTick",           "acRedoTick",      "acNextDifference",
                                         "acPreviousDifference", "acFilterActions", "acFollow"};

// Where in its statement an action is made: at the name of its element, or at the start.
std::size_t PlaceIn(const std::string& script, const TPlannedStatement& statement, const TDifference& difference) {
  if (difference.item.empty()) return statement.start;
  const std::string table = QuotedName(difference.table);
  std::size_t from = script.find(table, statement.start);
  from = from == std::string::npos ? statement.start : from + table.size();
  const std::size_t item = script.find(QuotedName(difference.item), from);
  return item < statement.end ? item : statement.start;
}

bool Serves(const TPlannedStatement& statement, int action) {
  return std::ranges::find(statement.actions, action) != statement.actions.end();
}

}  // namespace

void TfmMain::ConnectTree() {
  pnDifferences_->OnTick = [this](const std::vector<std::size_t>& places, bool on) { Tick(places, on); };
  pnDifferences_->OnCurrent = [this] {
    const std::string table = pnDifferences_->CurrentTable();
    const std::optional<std::size_t> place = pnDifferences_->Current();
    if (place && !OfTable(differences_->At(*place).kind))
      ShowObjectTexts(differences_->At(*place).id);
    else if (!table.empty())
      ShowTableDDL(table, place ? differences_->At(*place).item : std::string());
    else if (pnDifferences_->View().currentIndex().isValid())
      ClearDetails();  // a group of several
    ShowMapping();
  };
  pnDifferences_->OnDelete = [this] { Command("acDelAction")->trigger(); };
  pnDifferences_->OnFollow = [this] {
    if (running_ == nullptr) FollowAction();
  };
  // Their keys are those of texts, too: they hold in the tree alone.
  for (const char* name : {"acUndoTick", "acRedoTick"}) {
    removeAction(Command(name));
    Command(name)->setShortcutContext(Qt::WidgetShortcut);
    pnDifferences_->View().addAction(Command(name));
  }
  for (const char* name : {"acFollow", "acDelAction", "acRename", "acMapColumn"})
    pnDifferences_->View().addAction(Command(name));
  pnDifferences_->View().setContextMenuPolicy(Qt::ActionsContextMenu);
  // In a text that somebody works on a double click chooses a word and nothing else.
  connect(mScript_, &QsciScintillaBase::SCN_DOUBLECLICK, this, [this](int /*position*/, int line, int /*keys*/) {
    if (!app_ || !TicksActions() || ScriptOf() != EScriptOf::Analysis || line < 0) return;
    QTimer::singleShot(0, this, [this, line] {  // after the editor is done with the mouse
      AtTopLevel([&] {
        if (running_ == nullptr) FollowStatement(static_cast<std::size_t>(line));
      });
    });
  });
}

// --- What it shows

void TfmMain::ShowTree() {
  const bool ticks = TicksActions();
  for (const char* name : kTreeCommands) Command(name)->setVisible(ticks);
  if (ticks != pnDifferences_->isHidden()) return;
  const int room = std::min(kDifferencesWidth, width() * kWidestPart / 100);
  if (ticks) splitter_->setSizes({room, width() - room});
  tlActions_->setVisible(!ticks);
  pnDifferences_->setVisible(ticks);
  pnActionsH_->setBuddy(ticks ? static_cast<QWidget*>(&pnDifferences_->View()) : tlActions_);
  FollowTree(!ticks);
}

// A comparison may settle the dialect when nodes are there already, or within an update of the view.
void TfmMain::FollowTree(bool follows) {
  app_->tree.SetView(follows ? tlActions_ : nullptr);
  tlActions_->Cleared();
  tlActions_->EndUpdate();
  if (!follows) return;
  for (const TActionNode& top : app_->tree.Top()) {
    tlActions_->NodeAdded(top);
    for (const TActionNode& child : top.children) tlActions_->NodeAdded(child);
  }
  tlActions_->expandAll();
}

void TfmMain::ForgetTree() {
  differences_->Forget();
  pnDifferences_->Reload();
  pnDifferences_->ClearFilter();
  SetTreeHint({});
  UpdateTree();
}

void TfmMain::TakeDifferences() {
  ShowTree();
  if (!TicksActions()) return;
  differences_->Take(app_->Dialect().Differences(),
                     [this](const TDifference& difference) { return TickedAtFirst(difference, options_); });
  pnDifferences_->Reload();
}

void TfmMain::SetTreeHint(const QString& hint) {
  tlActions_->SetHint(hint);
  pnDifferences_->SetHint(hint);
}

void TfmMain::UpdateTree() {
  Command("acUndoTick")->setEnabled(active_ && differences_->CanUndo());
  Command("acRedoTick")->setEnabled(active_ && differences_->CanRedo());
  const bool any = active_ && differences_->Count() > 0;
  for (const char* name : {"acNextDifference", "acPreviousDifference", "acFilterActions", "acFollow", "acSaveReport"})
    Command(name)->setEnabled(any);
}

// --- Decisions

// A script that does nothing is nobody's, and does not run unasked.
void TfmMain::Decide(const std::function<bool()>& decision) {
  if (!MayReplaceScript() || !decision()) return;
  RunGuarded(
      [this] {
        acGenScript();
        if (app_->data.mtActions.Empty()) ScriptIs(EScriptOf::Nobody);
      },
      [this] { UpdateTree(); });
}

void TfmMain::Tick(const std::vector<std::size_t>& places, bool on) {
  if (running_ != nullptr) return;
  Decide([&] {
    const bool changed = differences_->Tick(places, on);
    pnDifferences_->Refresh();
    return changed;
  });
}

void TfmMain::DeleteDifferences() {
  const std::vector<std::size_t> places = pnDifferences_->Selected();
  if (places.empty()) RaiseError(kNothingFocused);
  const std::optional<std::size_t> next = pnDifferences_->AfterSelected();
  Decide([&] {
    const bool changed = differences_->Delete(places);
    pnDifferences_->Reload();
    if (next) pnDifferences_->Select({*next});
    return changed;
  });
}

void TfmMain::acUndoTick() {
  Decide([this] {
    const bool changed = differences_->Undo();
    pnDifferences_->Reload();
    return changed;
  });
}

void TfmMain::acRedoTick() {
  Decide([this] {
    const bool changed = differences_->Redo();
    pnDifferences_->Reload();
    return changed;
  });
}

// --- From difference to difference

void TfmMain::GoToDifference(bool forward) {
  page_->setCurrentWidget(tsActions_);
  if (pnDifferences_->Step(forward)) return statusBar()->clearMessage();
  statusBar()->showMessage(forward ? TText::tr("There is no further difference.")
                                   : TText::tr("There is no difference before this one."));
}

void TfmMain::acNextDifference() { GoToDifference(true); }

void TfmMain::acPreviousDifference() { GoToDifference(false); }

void TfmMain::acFilterActions() {
  page_->setCurrentWidget(tsActions_);
  pnDifferences_->FocusFilter();
}

void TfmMain::acFollow() {
  if (mScript_->hasFocus())
    FollowStatement(script_->CaretLine());
  else
    FollowAction();
}

void TfmMain::FollowAction() {
  const std::optional<std::size_t> place = pnDifferences_->Current();
  if (!place) return;
  const TDifference& difference = differences_->At(*place);
  const std::string script = script_->Text();
  const std::vector<TPlannedStatement> planned = app_->Dialect().Planned(script);
  const auto statement = std::ranges::find_if(planned, [&](const auto& s) { return Serves(s, difference.id); });
  if (!differences_->Ticked(*place) || statement == planned.end()) {
    const QString why = differences_->Ticked(*place)
                            ? TText::tr("The script does not hold the planned statement of: %1")
                            : TText::tr("Not ticked, so the script does not make it: %1");
    return statusBar()->showMessage(why.arg(ToQt(difference.text)));
  }
  statusBar()->clearMessage();
  page_->setCurrentWidget(tsScript_);
  script_->SetCaret(PlaceIn(script, *statement, difference));
  script_->ScrollToLine(script_->CaretLine());
  mScript_->setFocus();
}

// The actions that the line names, or else all of its statement.
void TfmMain::FollowStatement(std::size_t line) {
  const TStringList lines = script_->Lines();
  if (line >= lines.size()) return;
  std::size_t start = 0;
  for (std::size_t i = 0; i < line; ++i) start += lines[i].size() + kLineEndBytes;
  const std::size_t end = start + lines[line].size();
  std::vector<std::size_t> all;
  std::vector<std::size_t> named;
  for (const TPlannedStatement& statement : app_->Dialect().Planned(script_->Text())) {
    if (statement.start > end || statement.end < start) continue;
    for (const int action : statement.actions)
      if (const auto place = differences_->PlaceOf(action)) {
        all.push_back(*place);
        const std::string& item = differences_->At(*place).item;
        if (!item.empty() && lines[line].find(QuotedName(item)) != std::string::npos) named.push_back(*place);
      }
  }
  if (all.empty()) return;
  page_->setCurrentWidget(tsActions_);
  pnDifferences_->ClearFilter();
  pnDifferences_->Select(named.empty() ? all : named);
  pnDifferences_->View().setFocus();
}

}  // namespace velmora
