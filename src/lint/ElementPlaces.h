// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Where in a script the elements of its tables are written.

#include <map>
#include <string>
#include <vector>

#include "core/CreationTexts.h"
#include "lint/Finding.h"

namespace velmora {

class TElementPlaces {
 public:
  explicit TElementPlaces(const TStructureScript& script);  // which outlives this object

  // The line of the element in the statement that wrote it last; of one that is not written out, as a key within a
  // column, that of its first column; otherwise that of the statement which makes the table. Line 0 for a table that no
  // statement names.
  TSourceLine PlaceOf(const TFinding& finding) const;

 private:
  TSourceLine InStatements(const std::string& table, EElement kind, const std::string& name) const;
  TSourceLine At(const TStructureStatement& statement, std::size_t line) const;

  const TStructureScript& script_;
  std::map<std::string, std::vector<const TStructureStatement*>> statements_;  // by table in lower case, in order
};

}  // namespace velmora
