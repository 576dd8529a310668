// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/CaseFile.h"

#include <utility>

#include "util/Errors.h"
#include "util/Files.h"
#include "util/Text.h"

namespace velmora::testing {

TStringList TCaseText::Parts() const {
  TStringList parts(1);
  bool first = true;
  for (const std::string& line : lines) {
    if (line == "--")
      parts.emplace_back();
    else
      parts.back() += (first ? "" : "\n") + line;
    first = line == "--";
  }
  return parts;
}

TCaseFile ReadCaseFile(const std::string& name) {
  TCaseFile file;
  for (const std::string& line : LinesOf(CaseText(name)))
    if (line.starts_with("== "))
      file.cases.push_back({line.substr(3), {}});
    else
      (file.cases.empty() ? file.heading : file.cases.back().lines).push_back(line);
  for (TCaseText& text : file.cases)
    while (!text.lines.empty() && text.lines.back().empty()) text.lines.pop_back();
  if (file.cases.empty()) RaiseError(name + " holds no case");
  return file;
}

std::vector<TStringList> ReadCaseRows(const std::string& name) {
  const TCaseFile file = ReadCaseFile(name);
  std::vector<TStringList> rows;
  for (const std::string& line : file.cases.front().lines) SplitText(" | ", line, rows.emplace_back());
  return rows;
}

std::vector<TStringList> CaseRows(const std::string& name) {
  std::vector<TStringList> rows;
  for (const std::string& line : LinesOf(CaseText(name)))
    if (!line.empty() && line[0] != '#') SplitText(" | ", line, rows.emplace_back());
  return rows;
}

std::string Unshown(std::string cell) {
  for (const auto& [shown, meant] : {std::pair{"␍", "\r"}, {"␊", "\n"}, {"␉", "\t"}, {"␣", " "}})
    cell = StrReplace(cell, shown, meant);
  return cell;
}

std::string CaseText(const std::string& name) { return ReadFileText(VELMORA_SOURCE_DIR "/tests/data/" + name); }

}  // namespace velmora::testing
