// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The whole road of a reference that is not MySQL: compared with an empty database, run there, and compared again.

#include <string>

#include "foreign/Sources.h"

namespace velmora::testing {

struct TRoadResult {
  std::string fault;  // empty: nothing was missed
  std::size_t tables = 0;
  std::size_t statements = 0;
  TStringList unmade{};  // what has no form in MySQL
};

// On the shared server.
TRoadResult Travel(TSourceMaker& maker, unsigned long long seed);

// Compares a source of files of which one is damaged: it ends in an error with a message, or the tables that cannot be
// read are named and the others are compared.
TRoadResult TravelDamaged(TSourceMaker& maker, unsigned long long seed);

}  // namespace velmora::testing
