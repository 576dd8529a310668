// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A folder of scripts that stands for one script: a database kept as a file for each table, view, routine.

#include <string>

#include "util/Lists.h"

namespace velmora {

// The list of its files that an export leaves in a folder.
inline constexpr char kExportList[] = "velmora-export.txt";

bool IsFolder(const std::string& path);
// Whether such a folder is meant: it or a folder right in it holds a file that ends in .sql, or it has an export's
// list.
bool IsScriptFolder(const std::string& path);
// Its files that end in .sql, case ignored, and those of its folders: with "/" between the names and without the
// folder's own, in the order of their bytes. Left out is what begins with a dot, as folders of versioning programs do,
// and folders that are links. Raises "Cannot read %s: %s".
TStringList ScriptFilesIn(const std::string& folder);

}  // namespace velmora
