// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The file that lists the targets of a fleet: a source a line, "#" comments, blank lines. The database of an address
// may be a pattern, which stands for all databases of the server whose names fit it.

#include <cstddef>
#include <string>
#include <vector>

#include "app/Sources.h"
#include "fleet/NamePattern.h"

namespace velmora {

struct TListedSource {
  std::size_t line = 0;  // from 1
  std::string source;    // as MakeTarget takes it; of a pattern up to the "/" before the database
  TNamePattern pattern;  // none for a single database
  std::string shown;     // the line without a password
  bool on_server = false;
};

// Every line is looked at, and nothing is reached. Raises "FILE: line N: ..." for a line that is no source, and for a
// file that is none of text. `settings` tells what sources may hold.
std::vector<TListedSource> ReadTargetList(const std::string& path, const TSourceSettings& settings);

// Whether a line of the list holds a password while others than its owner may read the file.
bool ShowsPasswords(const std::string& path, const std::vector<TListedSource>& list);

}  // namespace velmora
