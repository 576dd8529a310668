// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAction>
#include <QMainWindow>
#include <QSplitter>
#include <QTabWidget>
#include <QToolBar>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/Application.h"
#include "app/DifferenceList.h"
#include "persist/OptionStore.h"
#include "persist/Options.h"
#include "persist/RecentList.h"
#include "persist/TaskFile.h"
#include "shell/widgets/ActionTreeView.h"
#include "shell/widgets/DifferenceTree.h"
#include "shell/widgets/FindBar.h"
#include "shell/widgets/ScriptPort.h"
#include "shell/widgets/SqlEdit.h"
#include "shell/windows/ConnectionNotes.h"

class QLabel;
class QPlainTextEdit;
class QPushButton;
class QStackedWidget;

namespace velmora {

class TfmAbout;
class TfmDump;
class TfmOptions;
class TfmProgress;
class TfmTaskWiz;
class TEmptyState;
class TMarkBar;
class TWindowLog;
class TDiffView;
class TRunView;
class TWindowWait;
struct TWindowPlace;
enum class EMappingPage;

// The forms that the main window shows, all of which outlive it.
struct TForms {
  TfmProgress& progress;
  TfmAbout& about;
  TfmDump& dump;
  TfmOptions& options;
  TfmTaskWiz& wizard;
};

// What the main window is made with.
struct TDesktopSetup {
  std::string settings_file;        // where the window's place and the recent list are kept
  TOptionStore* options = nullptr;  // outlives the window
  TEngineClients clients;
  TWindowWait* wait = nullptr;  // how its connections wait, and are cancelled; outlives the window; the desktop sets it
  std::string task_file;        // to be opened once the window stands; empty: none
};

// Whose work the script in the editor is, as far as the open pair goes.
enum class EScriptOf {
  Nobody,    // there is none, or it has nothing to do
  Analysis,  // generated for the open pair
  Part,      // likewise, but broken off: it does less than the list says
  User       // loaded or typed while the pair was open
};

// The one main window. It owns the open task and has all commands. Each command is an operation of its own name; its
// errors pass out, to be shown at the top level, and the window stays usable.
class TfmMain final : public QMainWindow, private TTaskHost {
 public:
  // Reads the settings; without any, the window has its own size and no recent tasks.
  explicit TfmMain(TDesktopSetup setup);
  ~TfmMain() override;

  void SetForms(const TForms& forms) { forms_ = std::make_unique<TForms>(forms); }  // before the window is shown

  QAction* Command(const std::string& name) const { return commands_.at(name); }
  const TEngineClients& Clients() const { return setup_.clients; }  // which tell this window what they have to say
  TApplication& App() { return *app_; }                             // from the first showing until the window closes

  // --- acList
  void acLoadScriptFromFile();
  void acSaveScriptToFile();
  void acSaveReport();
  void acExit();
  void acOptions();
  void acHelp();
  void acAbout();
  void acSelectAll();
  void acNewTask();
  void acOpenTask();
  void acVisitWeb();
  void acContactSupport();
  void acRecent(std::size_t index);

  // --- Extras
  void acDialect(const TDialectRow& dialect);  // of the open task
  void acSwapSides();
  void acTaskMarks();
  void acMapping();
  void acComparison();
  void acRename();     // likewise
  void acMapColumn();  // of the focused action

  // --- acTask
  void acCloseTask();
  void acSaveTask();
  void acSaveTaskAs();
  void acAnalyze();
  void acRunScript();
  void acSynchronize();
  void acDelAction();
  void acNextPlace();
  void acPreviousPlace();
  void acGenScript();
  void acDumpDB();

  // --- acTask, where a dialect's actions are ticked
  void acUndoTick();
  void acRedoTick();
  void acNextDifference();
  void acPreviousDifference();
  void acFilterActions();
  void acFollow();  // between an action and its statement

 protected:
  void showEvent(QShowEvent* event) override;
  void closeEvent(QCloseEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  // Layout
  void MakeCommands();
  void MakeRecentCommands();
  void MakeMenus();
  void MakeBars();
  void FitBars();
  void MakeWorkArea();
  QWidget* MakeEmptyState();
  void MakeStatusBar();
  QWidget* MakeTreePanel();
  QWidget* MakeDetails();
  QWidget* MakeAdvice();
  QWidget* MakeBar(const char* name, QLabel* label, QPushButton* button, const std::function<void()>& click);
  void MakeExtras();
  void ConnectWorkArea();
  void AddCommands(QWidget& menu_or_bar, std::initializer_list<const char*> names);  // null stands for a separator
  void OnCommand(QAction* command, std::function<void()> handler);  // which is not run while another one is

  // Start and end
  void FirstShow();
  void ReadSettings();
  void PlaceFirst();
  void PlaceAs(const TWindowPlace& place);
  void WriteSettings();
  void Close();
  void LoadOptions();
  void OpenFirst();
  void OpenLatest();
  void ApplyFonts();
  void SaveOptions();

  // The task
  void ShowTask(bool active) override;
  void RecentAdd(const std::string& path) override;
  void CheckDialect(const std::optional<std::string>& word) override { StoredDialect(word); }
  void CheckForeign(const std::string& text) override { ReadForeignWishes(text); }
  void CheckExact(const std::string& text) override { ReadExactWishes(text); }
  void ShowRecent();
  void ShowTitle(bool active);
  void ShowSides(bool active);  // where the pair is told of beside its work: marks, servers, whether sides can swap
  void ShowMarks(bool active);
  void ShowServers(bool active);
  void ShowLog(const TStringList& lines);  // after what is to be known of the connections
  void ClearWork();                        // what a former pair left: tree, panels, log, script
  void ShowPage();                         // in place of the label that says that all is equal
  bool MayLoseScript();                    // asks where a text would go that was typed and not saved
  bool MayReplaceScript();                 // likewise, and where one was loaded or is in a file

  // Analysis
  void Analyze();
  void Compare();
  void AskAboutEmptyReference();
  void SetDialect(const TDialectRow& dialect);
  void MarkDialect();                              // of the task, in the menu
  void ShowDialect();                              // that is in use, in the status bar
  void AdviseDialect(const TDialectRow* fitting);  // after an error that another dialect avoids; null for none
  void TakeAdvice();
  EScriptOf ScriptOf() const;
  void ScriptIs(EScriptOf origin);  // of the text as it stands; typing makes it the user's
  void UpdateExecute();
  bool MayRun(const std::string& script);
  void TellRun();
  // Of MainRun.cpp: the page of the run, and what the user has cancelled
  QWidget* MakeRunView();
  void ShowRunPage(bool shown);
  void BeginRun(const std::string& script);
  void ShowRun(const TRunReport& report);
  void TellWaiting(const std::string& text);
  void TellMoved(const std::string& text);
  void TellReached();
  void GoToStatement(std::size_t start);
  void Cancellable(const std::function<void()>& command);
  void BeginCancellable();
  void TooLateToCancel();
  void TellCancelled(const std::string& text);
  void CompareOrForget();
  void NameLostTarget(const std::function<void()>& asking);
  void TellFailedRun(const std::string& script, const std::string& error);
  TStringList UntakenRenames() const;
  bool RowsAllow();
  void RestoreFocus(QWidget* focused);
  void ShowResult();

  // The tree of differences (MainTree.cpp), in place of the tree of actions where the dialect's actions are ticked
  void ConnectTree();
  bool TicksActions() const { return app_->Dialect().Traits().ticked_actions; }
  void ShowTree();                // the one that the dialect has
  void FollowTree(bool follows);  // whether the tree of actions shows those of the task
  void ForgetTree();              // what it shows is of a former pair
  void TakeDifferences();         // of the comparison that has just ended
  void SetTreeHint(const QString& hint);
  void Tick(const std::vector<std::size_t>& places, bool on);
  void DeleteDifferences();
  void Decide(const std::function<bool()>& decision);  // which tells whether it changed anything; the script follows
  void UpdateTree();
  void GoToDifference(bool forward);
  void FollowAction();
  void FollowStatement(std::size_t line);
  void ShowFind();

  // A reference that is not MySQL (MainMapping.cpp)
  QWidget* MakeUnmadeBar();
  bool MapsReference() const;  // its columns are mapped, in the dialect that is in use
  TForeignWishes Wishes() const;
  void EditMapping(EMappingPage page);
  void TakeWishes(const TForeignWishes& wishes);
  void WishesChanged(bool compared);
  const TDifference* FocusedAction() const;  // in the tree; null for none
  const TDifference* FocusedColumn() const;  // that it is about
  TExactWishes ExactOptionsOfTask() const;
  void ShowMapping();  // what of it can be used
  void ShowRename();   // what the focused action can become: a rename that is offered, or is taken back
  void FocusRename(const std::string& rename);
  void ShowUnmade();  // of the last comparison, above the work area

  // Details: the texts of a table, beside the tree
  void ShowHeadings();  // what the headings say
  void ShowObjectTexts(int action);
  void ShowTexts(const std::string& reference, const std::string& target);
  void ShowTableDDL(const std::string& table, const std::string& item = {});  // from that element, if it differs
  void ClearDetails();
  void ShowDetailsOfDialect();
  TSqlEdit* DetailsEditor() const;  // that has the focus, else the first one in view

  TDesktopSetup setup_;
  TConnectionNotes notes_;
  TStringList said_;  // by the connections of the open pair; a comparison may put others in their place
  std::map<const TDBConn*, std::string> servers_;  // what the servers of the open pair are called, asked once
  TOptions options_;
  TRecentList recent_;
  std::unique_ptr<TForms> forms_;
  std::map<std::string, QAction*> commands_;
  std::vector<QAction*> acRecent_;
  std::map<EDialect, QAction*> acDialects_;
  const TDialectRow* advised_ = nullptr;
  bool shown_ = false;
  bool active_ = false;         // a task is shown
  bool empty_allowed_ = false;  // a reference without tables was agreed to, of the open pair
  EScriptOf script_of_ = EScriptOf::Nobody;
  std::optional<std::size_t> waiting_;  // the statement that waits for its lock
  const QAction* running_ = nullptr;    // the command that is under way

  // Components, owned by the window
  QToolBar* barButtons_ = nullptr;
  QToolBar* barAnalyze_ = nullptr;
  QWidget* barAdvice_ = nullptr;
  QLabel* lbAdvice_ = nullptr;
  QPushButton* bnAdvice_ = nullptr;
  QWidget* barUnmade_ = nullptr;
  QLabel* lbUnmade_ = nullptr;
  TEmptyState* panNoTask_ = nullptr;
  TMarkBar* barMark_ = nullptr;
  QLabel* sbReference_ = nullptr;
  QLabel* sbTarget_ = nullptr;
  QLabel* sbDialect_ = nullptr;
  QWidget* panMain_ = nullptr;
  QLabel* lbEqual_ = nullptr;
  QTabWidget* page_ = nullptr;
  QWidget* tsActions_ = nullptr;
  QWidget* tsMessages_ = nullptr;
  QWidget* tsScript_ = nullptr;
  QWidget* tsRun_ = nullptr;
  TRunView* vRun_ = nullptr;
  QSplitter* splitter_ = nullptr;
  QLabel* pnActionsH_ = nullptr;
  TActionTreeView* tlActions_ = nullptr;
  QStackedWidget* pnDetails_ = nullptr;
  TDifferenceTree* pnDifferences_ = nullptr;
  QLabel* pnRefH_ = nullptr;
  QLabel* pnTgtH_ = nullptr;
  TSqlEdit* mDDLref_ = nullptr;
  TSqlEdit* mDDLtgt_ = nullptr;
  QWidget* plainTexts_ = nullptr;
  TDiffView* diff_ = nullptr;
  QPlainTextEdit* mLog_ = nullptr;
  TSqlEdit* mScript_ = nullptr;
  TFindBar* barFind_ = nullptr;

  // The working state, from the first showing until the window closes
  std::unique_ptr<TScriptPort> script_;
  std::unique_ptr<TWindowLog> log_;
  std::unique_ptr<TApplication> app_;
  std::unique_ptr<TDifferenceList> differences_;
  std::unique_ptr<TTaskFile> task_;
  std::vector<TTaskConnections> former_;  // pairs that a new task took the place of
};

}  // namespace velmora
