// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What the commands of the companion take, read off the parser that reads them: the manual and the completions of
// shells are made of this, so that they cannot differ from --help.

#include <string>
#include <vector>

#include "util/Lists.h"

namespace CLI {  // NOLINT(readability-identifier-naming): the library named it
class App;
}

namespace velmora {

struct TArgumentTable {
  std::string name;  // as in "REFERENCE"
  std::string help;
  std::string words;  // as in "bash|zsh"; empty where any text will do
  bool required = false;
  bool repeats = false;
};

struct TOptionTable {
  TStringList names;  // with their dashes, the short one first
  std::string value;  // as in "FILE" or "text|json"; empty for a switch
  std::string help;
  bool repeats = false;
  TStringList needs, excludes;  // options by their names, in the order of letters
};

struct TCommandTable {
  TStringList path;  // as in "task", "new"; empty for the program itself
  std::string help;
  std::vector<TArgumentTable> arguments;
  std::vector<TOptionTable> options;
  std::vector<TCommandTable> commands;  // below it; where there are any, one of them has to follow
};

TCommandTable ProgramTable();  // the program with all commands below it
TCommandTable ProgramTable(const CLI::App& program);

// All commands of the table that have none below them, in their order.
std::vector<const TCommandTable*> LeafCommands(const TCommandTable& table);

// The command that the first arguments name, as far as they do: the program itself where they name none.
const TCommandTable* CommandOf(const TCommandTable& program, const TStringList& arguments);

std::string PathText(const TCommandTable& command, std::string_view separator = " ");

// The words of "text|json"; none for a value that is no choice.
TStringList ChoicesOf(const std::string& value);

// Whether the value of an option, or an argument of that name, is a file or may be one.
bool IsFileName(const std::string& name);

}  // namespace velmora
