// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The statements of a file on tables and indexes, made ready to be run in a scratch database.

#include <cstddef>
#include <string>
#include <vector>

#include "core/CreationTexts.h"
#include "exact/plan/TableStatement.h"
#include "util/Lists.h"

namespace velmora {

struct TLocatedStatement {
  std::string text;   // stays within the database that it is run in
  std::string place;  // "shop.sql: line 3"
  TTableStatement about;
};

struct TFileStatements {
  std::vector<TLocatedStatement> statements;
  TStringList warnings;  // "shop.sql: line 3: ...": what may make tables, and is not run
};

// Of a script of several databases the statements of the one that is meant are taken. Raises for statements that reach
// outside of it, each named with its file and line.
TFileStatements ReadFileStatements(const TStructureScript& script);

}  // namespace velmora
