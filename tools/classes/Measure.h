// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What a server does for each statement of cases.txt, against what the table of classes says of it.

#include <cstddef>
#include <string>
#include <vector>

namespace velmora::testing {

struct TMeasureCounts {
  std::string server;  // "MariaDB 10.11.6"
  std::size_t measured = 0;
  std::size_t wrong = 0;               // printed
  std::size_t unknown = 0;             // of which the table says nothing, printed too
  std::size_t refused = 0;             // the server does not have what they are about
  std::vector<std::string> rows_left;  // of the table, which no statement was about
};

// On the server that VELMORA_TEST_SERVER names. `all` prints every statement with its class.
TMeasureCounts MeasureClasses(bool all);

}  // namespace velmora::testing
