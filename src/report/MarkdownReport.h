// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <string>

#include "report/ComparisonReport.h"

namespace velmora {

inline constexpr std::size_t kMostMarkdown = 65535;  // hosts of sources take no longer comment

// For a comment on a change: GitHub Flavored Markdown of at most `most` bytes. What does not fit is left out, the
// script first, and counted.
std::string MarkdownReport(const TReport& report, std::size_t most = kMostMarkdown);

}  // namespace velmora
