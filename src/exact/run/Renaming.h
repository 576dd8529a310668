// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The renames that were asked for, where they fit what was read.

#include <vector>

#include "exact/compare/Renames.h"
#include "exact/run/PairReader.h"

namespace velmora {

// A rename that is done, as an action.
struct TRenameChange {
  int id = 0;  // of its action row; 0 until it has one
  TRename rename;

  std::string Table() const { return rename.OfTable() ? rename.to : rename.table; }
  std::string Item() const;     // "column total to sum", "table old to new"
  std::string LogText() const;  // "Renamed column total to sum"
};

struct TRenaming {
  std::vector<TRenameChange> fits;  // tables first
  TStringList told;                 // a line for each that does not, such as one that is done already
  TStringList refused;              // for each that others stand in the way of, as names that swap
};

// A column's table may be named as either side has it. Raises for one of a table or column that is not there: the old
// name in the target, nor the new one, or the new name in the reference. `case_counts` tells whether names of tables
// that differ in case alone are two to the target's server.
TRenaming FitRenames(const std::vector<TRename>& wishes, const TReadPair& read, const TSelection& selection,
                     bool case_counts);

// A line for each of the objects, but those that the changes are about, whose text names what is renamed.
TStringList NamesOfRenamed(const std::vector<TRenameChange>& renames, const TDatabaseObjects& objects,
                           const std::vector<TObjectChange>& changes);

// Without what hangs on renames that are struck out, or speaks of a new name that there will not be.
void LeaveUnrenamed(const std::vector<TRenameChange>& struck_out, std::vector<TChange>& changes,
                    std::vector<TObjectChange>& objects);

}  // namespace velmora
