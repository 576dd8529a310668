// SPDX-License-Identifier: GPL-3.0-or-later

// Measures the classes of statements on a private server, and holds the table of classes against them: see
// scripts/measure-classes.

#include <cstdio>
#include <exception>
#include <string>

#include "classes/Measure.h"

int main(int argc, char** argv) {
  using namespace velmora::testing;
  try {
    const bool all = argc > 1 && std::string(argv[1]) == "--all";
    const TMeasureCounts counts = MeasureClasses(all);
    std::printf(
        "%s: %zu statements measured, %zu of another class than the table says, %zu of which it says nothing, %zu "
        "refused\n",
        counts.server.c_str(), counts.measured, counts.wrong, counts.unknown, counts.refused);
    for (const std::string& row : counts.rows_left) std::printf("not measured: %s\n", row.c_str());
    return counts.wrong == 0 && counts.rows_left.empty() ? 0 : 1;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "measure-classes: %s\n", error.what());
    return 2;
  }
}
