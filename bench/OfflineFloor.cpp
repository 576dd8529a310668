// SPDX-License-Identifier: GPL-3.0-or-later

// bench_offline_floor REFERENCE TARGET: reads both files, takes their statements apart and compares the texts of the
// tables, which no comparison of two files can do without. Prints how many differ.

#include <iostream>

#include "mysqltext/CreationScript.h"
#include "util/Errors.h"
#include "util/Files.h"

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  try {
    const velmora::TCreationScript reference(velmora::ReadFileText(argv[1]));
    const velmora::TCreationScript target(velmora::ReadFileText(argv[2]));
    int differing = 0;
    for (const velmora::TCreationText& table : reference.Tables()) {
      const velmora::TCreationText* other = target.Find(table.name);
      if (other == nullptr || other->text != table.text) ++differing;
    }
    std::cout << differing << '\n';
  } catch (const velmora::EVelmora& error) {
    std::cerr << error.what() << '\n';
    return 2;
  }
  return 0;
}
