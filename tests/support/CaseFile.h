// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include "util/Lists.h"

namespace velmora::testing {

// Cases kept as text beside the tests. Each begins with a line "== NAME" and goes on to the next one; empty lines at
// its end do not count. What stands before the first case is the heading.
struct TCaseText {
  std::string name;
  TStringList lines;

  TStringList Parts() const;  // the texts between its lines "--", without their last line ends
};

struct TCaseFile {
  TStringList heading;
  std::vector<TCaseText> cases;
};

TCaseFile ReadCaseFile(const std::string& name);  // below tests/data; raises when it holds no case

// A file whose one case has a row per line: the cells, which " | " parts.
std::vector<TStringList> ReadCaseRows(const std::string& name);

// The same of a file without heads, in which lines that begin with "#" are comments and empty ones are none.
std::vector<TStringList> CaseRows(const std::string& name);

// A cell whose line ends, tabs and outer blanks are shown: "␍", "␊", "␉", "␣".
std::string Unshown(std::string cell);

std::string CaseText(const std::string& name);  // of a file below tests/data, whole

}  // namespace velmora::testing
