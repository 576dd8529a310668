// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "report/ComparisonReport.h"

namespace velmora {

// Whether a report can be written to a file of this name, which ends in .html, .htm, .md or .sarif.
bool IsReportFile(const std::string& path);
// In the form that the name says. Raises "Cannot write %s: %s", and for another name.
void WriteReport(const TReport& report, const std::string& path);

}  // namespace velmora
