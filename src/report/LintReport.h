// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What the rules found in a structure, for people and for programs that comment on changes.

#include <string>

#include "lint/LintSource.h"

namespace velmora {

struct TLintReport {
  std::string source;  // as messages name it
  std::string made;    // "Velmora 2.0, 2026-11-22 23:15"
  TLintResult result;

  std::size_t Count(ESeverity severity) const;
  std::string Verdict() const;      // "2 errors, 1 warning, 0 notes in 14 tables"
  TStringList NotLookedAt() const;  // a sentence for each table or statement that could not be read
};

// Whether a report of this kind can be written to a file of this name, which ends in .md or .sarif.
bool IsLintReportFile(const std::string& path);
// In the form that the name says. Raises "Cannot write %s: %s".
void WriteLintReport(const TLintReport& report, const std::string& path);

}  // namespace velmora
