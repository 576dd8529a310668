#pragma once

// Cases that stand in files of tests/data, a line each.

#include <string>
#include <utility>
#include <vector>

#include "util/Files.h"
#include "util/Lists.h"
#include "util/Text.h"

namespace velmora::testing {

inline std::string CaseText(const std::string& file) { return ReadFileText(VELMORA_SOURCE_DIR "/tests/data/" + file); }

// The cells of each line, which " | " parts. "#" begins a comment.
inline std::vector<TStringList> CaseRows(const std::string& file) {
  std::vector<TStringList> rows;
  for (const std::string& line : LinesOf(CaseText(file)))
    if (!line.empty() && line[0] != '#') SplitText(" | ", line, rows.emplace_back());
  return rows;
}

// A cell whose line ends, tabs and outer blanks are shown: "␍", "␊", "␉", "␣".
inline std::string Unshown(std::string cell) {
  for (const auto& [shown, meant] : {std::pair{"␍", "\r"}, {"␊", "\n"}, {"␉", "\t"}, {"␣", " "}})
    cell = StrReplace(cell, shown, meant);
  return cell;
}

}  // namespace velmora::testing
