// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The port to what finds servers and data sources by itself, for the lists of the connection fields.

#include <functional>
#include <memory>

#include "core/Dataset.h"
#include "util/Lists.h"

namespace velmora {

// Gives the sources rowset of a provider. Its first column is the name of a source, its fourth the kind of it.
using TEnumerator = std::function<std::unique_ptr<TDataset>()>;

struct TEnumerators {
  TEnumerator SQLServers;                       // empty: there is none on this machine, and nothing is found
  TEnumerator ODBCSources;                      // the same
  std::function<TStringList()> OracleServices;  // empty: the machine's own client is asked
};

// What this machine has of them.
TEnumerators MachineEnumerators();

// The names of the data sources among what an enumerator finds. Raises "Invalid column count returned in data source
// query" for a rowset of fewer than four columns.
TStringList DataSourceNames(const TEnumerator& enumerator);

TStringList OracleServiceNames(const TEnumerators& enumerators);

}  // namespace velmora
