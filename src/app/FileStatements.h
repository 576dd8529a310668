#pragma once

// The statements of a file on tables and indexes, made ready to be run in a scratch database.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "exact/TableStatement.h"
#include "util/Lists.h"

namespace velmora {

struct TFileStatement {
  std::string text;      // stays within the database that it is run in
  std::size_t line = 0;  // of the file, from 1
  TTableStatement about;
};

struct TFileStatements {
  std::vector<TFileStatement> statements;
  TStringList warnings;  // "line 3: ...": what may make tables, and is not run
};

// Takes the script of one database: the one that it uses, creates, or names in front of its first table. Statements in
// a comment for servers of a version count. Raises where tables of several databases are in it, and for statements that
// reach outside of it, each named with its line.
TFileStatements ReadFileStatements(std::string_view script);

}  // namespace velmora
