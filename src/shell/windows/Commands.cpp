// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/windows/Commands.h"

#include "shell/windows/Main.h"

namespace velmora {

namespace {

using enum ECommandList;

constexpr TCommand kCommands[] = {
    {"acLoadScriptFromFile", Fixed("Open script..."), nullptr, "script-open", acList, &TfmMain::acLoadScriptFromFile,
     TText::Later("Open a script file in the script tab")},
    {"acSaveScriptToFile", Fixed("Save script to file"), nullptr, "script-save", acList, &TfmMain::acSaveScriptToFile},
    {"acExit", Fixed("Exit"), "Alt+F4", "exit", acList, &TfmMain::acExit},
    {"acOptions", Fixed("Options..."), "Alt+O", "options", acList, &TfmMain::acOptions},
    {"acHelp", Fixed("Help"), "F1", "help", acList, &TfmMain::acHelp},
    {"acAbout", Fixed("About..."), nullptr, "about", acList, &TfmMain::acAbout},
    {"acSelectAll", Fixed(""), "Ctrl+A", nullptr, acList, &TfmMain::acSelectAll},
    {"acNewTask", Fixed("New..."), "Ctrl+N", "task-new", acList, &TfmMain::acNewTask, TText::Later("New sync task")},
    {"acOpenTask", Fixed("Open..."), "Ctrl+O", "task-open", acList, &TfmMain::acOpenTask,
     TText::Later("Open a sync task")},
    {"acVisitWeb", Fixed("Visit web page"), nullptr, "web", acList, &TfmMain::acVisitWeb},
    {"acContactSupport", Fixed("Contact support"), nullptr, "mail", acList, &TfmMain::acContactSupport},

    {"acCloseTask", Fixed("Close"), "Ctrl+F4", "task-close", acTask, &TfmMain::acCloseTask},
    {"acSaveTask", Fixed("Save"), "Ctrl+S", "task-save", acTask, &TfmMain::acSaveTask,
     TText::Later("Save the sync task")},
    {"acSaveTaskAs", Fixed("Save As..."), nullptr, "task-save-as", acTask, &TfmMain::acSaveTaskAs},
    {"acAnalyze", Fixed("Analyze"), "F9", "analyze", acTask, &TfmMain::acAnalyze,
     TText::Later("Compare both databases")},
    {"acRunScript", Fixed("Run script"), nullptr, "synchronize", acTask, &TfmMain::acRunScript},
    {"acSynchronize", Fixed("Execute Sync Script!"), nullptr, "synchronize", acTask, &TfmMain::acSynchronize,
     TText::Later("Run the script on the target database")},
    {"acDelAction", Fixed("Delete action"), nullptr, "delete-action", acTask, &TfmMain::acDelAction,
     TText::Later("Take the focused action out of the script")},
    {"acSwapSides", TText::Later("Swap sides"), nullptr, nullptr, acTask, &TfmMain::acSwapSides},
    {"acTaskMarks", TText::Later("Task..."), nullptr, nullptr, acTask, &TfmMain::acTaskMarks,
     TText::Later("Colour of the task, and what is asked before a run")},
    {"acComparison", TText::Later("Comparison..."), "Ctrl+Shift+M", nullptr, acTask, &TfmMain::acComparison},
    {"acSaveReport", TText::Later("Save report..."), nullptr, nullptr, acTask, &TfmMain::acSaveReport},
    {"acMapping", TText::Later("Mapping..."), "Ctrl+M", nullptr, acTask, &TfmMain::acMapping},
    {"acRename", TText::Later("Rename instead"), nullptr, nullptr, acTask, &TfmMain::acRename,
     TText::Later("Take what goes and what is new in its place for one thing under another name")},
    {"acMapColumn", TText::Later("Map column to..."), nullptr, nullptr, acTask, &TfmMain::acMapColumn,
     TText::Later("A type of your own for the column of the focused action")},
    {"acNextPlace", TText::Later("Next place"), "F7", "find-next", acTask, &TfmMain::acNextPlace,
     TText::Later("Go to the next place where the two texts differ")},
    {"acPreviousPlace", TText::Later("Previous place"), "Shift+F7", "find-previous", acTask, &TfmMain::acPreviousPlace,
     TText::Later("Go to the place before where the two texts differ")},
    {"acGenScript", Fixed("Generate script"), nullptr, nullptr, acTask, &TfmMain::acGenScript},
    {"acDumpDB", Fixed("Backup database..."), nullptr, "backup", acTask, &TfmMain::acDumpDB},
    {"acUndoTick", TText::Later("Undo tick or deletion"), "Ctrl+Z", nullptr, acTask, &TfmMain::acUndoTick,
     TText::Later("Take back the last change of the sync actions")},
    {"acRedoTick", TText::Later("Redo tick or deletion"), "Ctrl+Y", nullptr, acTask, &TfmMain::acRedoTick,
     TText::Later("Make the change again that was taken back")},
    {"acNextDifference", TText::Later("Next difference"), "F8", "go-forward", acTask, &TfmMain::acNextDifference},
    {"acPreviousDifference", TText::Later("Previous difference"), "Shift+F8", "go-back", acTask,
     &TfmMain::acPreviousDifference},
    {"acFilterActions", TText::Later("Filter sync actions"), "Ctrl+Shift+F", nullptr, acTask,
     &TfmMain::acFilterActions},
    {"acFollow", TText::Later("Go to statement or action"), "F12", nullptr, acTask, &TfmMain::acFollow,
     TText::Later("Show the focused action's statement in the script, or the action of the statement at the caret")},
    {"acCreateDB", Fixed("Create database..."), nullptr, "database", acTask, nullptr},
    {"acEditTask", Fixed("Edit..."), nullptr, nullptr, acTask, nullptr},
    {"acInnoDBStatus", Fixed("InnoDB status"), "Ctrl+F12", nullptr, acTask, nullptr},
};

}  // namespace

std::span<const TCommand> Commands() { return kCommands; }

}  // namespace velmora
