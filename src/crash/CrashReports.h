// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The reports of earlier crashes, as they lie in the user's folder.

#include <string>
#include <vector>

namespace velmora {

inline constexpr char kCrashReportEnding[] = ".crash.txt";
inline constexpr int kMostCrashReports = 20;  // of all programs together

struct TCrashReport {
  std::string file;
  std::string text;  // with the names of functions as the sources have them
};

// Those that nobody has been shown yet, the newest first. What cannot be read is left out, as are all but the first
// megabyte of a file.
std::vector<TCrashReport> NewCrashReports(const std::string& folder);
// Does not offer it again; it stays in its folder. A file that cannot be renamed stays new.
void MarkAsShown(const TCrashReport& report);

// All but kMostCrashReports: those that were shown go first, the oldest of them before the others.
void RemoveOldReports(const std::string& folder);

}  // namespace velmora
