// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "report/ComparisonReport.h"

namespace velmora {

// One page that needs nothing else: no network, no other file, no script. Light or dark as the reader's system is.
std::string HtmlReport(const TReport& report);

}  // namespace velmora
