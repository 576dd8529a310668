// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The indexes beside a table, as far as their heads tell: the files (.ndx) that TABLE.INF lists for dBASE, as the
// provider for Jet has it; the tags of the file .cdx for FoxPro ("Compact Index File Structure" and "Compound Index
// File Structure" in its documentation). docs/dbf.md has the layouts.

#include <string>
#include <string_view>
#include <vector>

#include "formats/port/FileReader.h"
#include "util/InputFile.h"

namespace velmora {

struct TDbfIndex {
  std::string name;
  std::string expression;  // what is indexed, trimmed
  bool unique = false;     // no two records have the same value; FoxPro: a candidate for the primary key
};

// Indexes of the dBASE table in the file `table_path`; none without TABLE.INF. Entries for multiple index files (MDX)
// are passed over. Raises for a file that is listed and cannot be read.
std::vector<TDbfIndex> ReadDBaseIndexes(const std::string& table_path, TFolderNames* known = nullptr);
// Tags of the file, in the order of their names. Raises for what its links and counts cannot mean.
std::vector<TDbfIndex> ReadFoxProTags(const std::string& path);

// A row for `index` in `table` where its expression is a column alone, by its name or by that of the same place in
// `short_names`; none for any other expression, which no column stands for.
void AddDbfIndex(const TDbfIndex& index, bool primary, const std::vector<std::string>& short_names, TFileTable& table);

}  // namespace velmora
