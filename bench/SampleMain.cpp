// SPDX-License-Identifier: GPL-3.0-or-later

// bench_sample TABLES FOLDER [PERCENT [auto]]: writes reference.sql and target.sql of the sample for the whole-process
// measurement.

#include <cstdlib>
#include <iostream>

#include "SampleSchema.h"
#include "util/Errors.h"
#include "util/Files.h"

int main(int argc, char** argv) {
  if (argc < 3 || argc > 5) {
    std::cerr << "usage: bench_sample TABLES FOLDER [PERCENT-DIFFERING [auto]]\n";
    return 2;
  }
  try {
    velmora::bench::TSample sample{.tables = std::atoi(argv[1]), .auto_increment = argc > 4};
    if (argc > 3) sample.differing_percent = std::atoi(argv[3]);
    velmora::WriteFileText(velmora::JoinPath(argv[2], "reference.sql"), SampleScript(sample, false));
    velmora::WriteFileText(velmora::JoinPath(argv[2], "target.sql"), SampleScript(sample, true));
  } catch (const velmora::EVelmora& error) {
    std::cerr << error.what() << '\n';
    return 2;
  }
  return 0;
}
