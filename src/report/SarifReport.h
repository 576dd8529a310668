// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "report/ComparisonReport.h"

namespace velmora {

// SARIF 2.1.0 (OASIS Static Analysis Results Interchange Format): a result for each difference, with file and line
// where the reference is a file. Fingerprints hold from one run to the next. Of more than 25,000 the gravest are given.
std::string SarifReport(const TReport& report);

}  // namespace velmora
