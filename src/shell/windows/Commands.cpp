// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/windows/Commands.h"

#include "shell/windows/Main.h"

namespace velmora {

namespace {

using enum ECommandList;

constexpr TCommand kCommands[] = {
    {"acLoadScriptFromFile", "Open script...", nullptr, "script-open", acList, &TfmMain::acLoadScriptFromFile,
     "Open a script file in the script tab"},
    {"acSaveScriptToFile", "Save script to file", nullptr, "script-save", acList, &TfmMain::acSaveScriptToFile},
    {"acExit", "Exit", "Alt+F4", "exit", acList, &TfmMain::acExit},
    {"acOptions", "Options...", "Alt+O", "options", acList, &TfmMain::acOptions},
    {"acHelp", "Help", "F1", "help", acList, &TfmMain::acHelp},
    {"acAbout", "About...", nullptr, "about", acList, &TfmMain::acAbout},
    {"acSelectAll", "", "Ctrl+A", nullptr, acList, &TfmMain::acSelectAll},
    {"acNewTask", "New...", "Ctrl+N", "task-new", acList, &TfmMain::acNewTask, "New sync task"},
    {"acOpenTask", "Open...", "Ctrl+O", "task-open", acList, &TfmMain::acOpenTask, "Open a sync task"},
    {"acVisitWeb", "Visit web page", nullptr, "web", acList, &TfmMain::acVisitWeb},
    {"acContactSupport", "Contact support", nullptr, "mail", acList, &TfmMain::acContactSupport},

    {"acCloseTask", "Close", "Ctrl+F4", "task-close", acTask, &TfmMain::acCloseTask},
    {"acSaveTask", "Save", "Ctrl+S", "task-save", acTask, &TfmMain::acSaveTask, "Save the sync task"},
    {"acSaveTaskAs", "Save As...", nullptr, "task-save-as", acTask, &TfmMain::acSaveTaskAs},
    {"acAnalyze", "Analyze", "F9", "analyze", acTask, &TfmMain::acAnalyze, "Compare both databases"},
    {"acRunScript", "Run script", nullptr, "synchronize", acTask, &TfmMain::acRunScript},
    {"acSynchronize", "Execute Sync Script!", nullptr, "synchronize", acTask, &TfmMain::acSynchronize,
     "Run the script on the target database"},
    {"acDelAction", "Delete action", nullptr, "delete-action", acTask, &TfmMain::acDelAction,
     "Take the focused action out of the script"},
    {"acSwapSides", "Swap sides", nullptr, nullptr, acTask, &TfmMain::acSwapSides},
    {"acTaskMarks", "Task...", nullptr, nullptr, acTask, &TfmMain::acTaskMarks,
     "Colour of the task, and what is asked before a run"},
    {"acComparison", "Comparison...", "Ctrl+Shift+M", nullptr, acTask, &TfmMain::acComparison},
    {"acMapping", "Mapping...", "Ctrl+M", nullptr, acTask, &TfmMain::acMapping},
    {"acRename", "Rename instead", nullptr, nullptr, acTask, &TfmMain::acRename,
     "Take what goes and what is new in its place for one thing under another name"},
    {"acMapColumn", "Map column to...", nullptr, nullptr, acTask, &TfmMain::acMapColumn,
     "A type of your own for the column of the focused action"},
    {"acNextPlace", "Next place", "F7", "find-next", acTask, &TfmMain::acNextPlace,
     "Go to the next place where the two texts differ"},
    {"acPreviousPlace", "Previous place", "Shift+F7", "find-previous", acTask, &TfmMain::acPreviousPlace,
     "Go to the place before where the two texts differ"},
    {"acGenScript", "Generate script", nullptr, nullptr, acTask, &TfmMain::acGenScript},
    {"acDumpDB", "Backup database...", nullptr, "backup", acTask, &TfmMain::acDumpDB},
    {"acUndoTick", "Undo tick or deletion", "Ctrl+Z", nullptr, acTask, &TfmMain::acUndoTick,
     "Take back the last change of the sync actions"},
    {"acRedoTick", "Redo tick or deletion", "Ctrl+Y", nullptr, acTask, &TfmMain::acRedoTick,
     "Make the change again that was taken back"},
    {"acNextDifference", "Next difference", "F8", "go-forward", acTask, &TfmMain::acNextDifference},
    {"acPreviousDifference", "Previous difference", "Shift+F8", "go-back", acTask, &TfmMain::acPreviousDifference},
    {"acFilterActions", "Filter sync actions", "Ctrl+Shift+F", nullptr, acTask, &TfmMain::acFilterActions},
    {"acFollow", "Go to statement or action", "F12", nullptr, acTask, &TfmMain::acFollow,
     "Show the focused action's statement in the script, or the action of the statement at the caret"},
    {"acCreateDB", "Create database...", nullptr, "database", acTask, nullptr},
    {"acEditTask", "Edit...", nullptr, nullptr, acTask, nullptr},
    {"acInnoDBStatus", "InnoDB status", "Ctrl+F12", nullptr, acTask, nullptr},
};

}  // namespace

std::span<const TCommand> Commands() { return kCommands; }

}  // namespace velmora
