// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What table files say themselves, and FoxPro's databases of them: more than providers hand on.

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "formats/dbf/DbcDatabase.h"
#include "formats/dbf/DbfFile.h"
#include "formats/dbf/DbfIndexes.h"
#include "util/Lists.h"

namespace velmora {

struct TDbfStructure {
  std::vector<TDbfField> fields{};  // without hidden ones, by the names of the file
  bool visual = false;              // of Visual FoxPro, whose flags say what may be null
  std::vector<TDbfIndex> indexes{};
  bool tags_missing = false;         // the file with the indexes is not there
  TStringList warnings{};            // what was passed over
  std::optional<TDbcTable> entry{};  // what the database says that the table belongs to; a field for each of the file's
};

class TDbfStructures {
 public:
  virtual ~TDbfStructures() = default;
  virtual TStringList TableNames() = 0;                             // raises where they cannot be listed
  virtual TDbfStructure StructureOf(const std::string& table) = 0;  // raises what reading the files raises
};

// Raise an error that names the folder or file and the fault. `path` is a folder or a database; `code_page` that of all
// files, whatever they say; empty: of each its own.
std::unique_ptr<TDbfStructures> OpenDBaseStructures(const std::string& folder, const std::string& code_page);
std::unique_ptr<TDbfStructures> OpenFoxProStructures(const std::string& path, const std::string& code_page);

// The fields that are not hidden.
std::vector<TDbfField> ShownFields(const TDbfFile& file);

}  // namespace velmora
