// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A database written as a folder of scripts, a file for each table, view, trigger, routine and event, for programs that
// keep versions of files: what has not changed is not written again, and one statement stands in each.

#include <string>

#include "app/OwnFolder.h"
#include "core/DBConn.h"
#include "exact/objects/Definers.h"
#include "exact/run/Selection.h"
#include "util/Lists.h"

namespace velmora {

struct TExportWishes {
  TSelection selection{};
  TDefinerWishes definers{};  // strip leaves them out, map replaces them; otherwise they stay as they are
};

struct TExportReport : TFolderChanges {
  TStringList warnings;  // what is not written, and why; what was written of it earlier stays
  bool whole = true;     // nothing failed to be read
};

// Writes what stands in `source`, which is connected and prints exact texts, to `folder`, which is made where it is not
// there. A counter of new rows is no part of a table. Removes files that an export wrote before, by the list that it
// leaves there, where what they made is gone; of kinds that the login may not see whole it removes none. What was left
// out by the selection stays as it is. Raises for a source that has no creation texts, and, before anything is written,
// for a folder that holds scripts which no export wrote.
TExportReport ExportToFolder(TDBConn& source, const TExportWishes& wishes, const std::string& folder);

// "tables/orders.sql"; see SafeFileName.
std::string ExportFileOf(const std::string& kind, const std::string& name);

}  // namespace velmora
