// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "persist/OptionStore.h"

namespace velmora {

// The options as the user set them. Deliberate: the standard dialect follows none of the switches.
struct TOptions {
  TOptions();  // the standard values of the table

  bool DropExtraColumns;
  bool DropExtraIndices;
  bool DropExtraConstraints;
  bool DropExtraTables;
  bool SyncRunUnprompted;
  bool ConnectOnStartup;
  bool ScriptToClipboard;
  bool AllowTblTypeChg;
  bool UseBackticks;
  bool VerboseLog;
  bool SelectSyncTables;
  bool NoForeignKeyChecks;
  std::string LogFontName;  // of the log
  int LogFontSize;
  std::string ScriptFontName;  // of the script editor
  int ScriptFontSize;
};

TOptions LoadOptions(const TOptionStore& store);                 // never raises
void SaveOptions(const TOptions& options, TOptionStore& store);  // raises where the store cannot be written

}  // namespace velmora
