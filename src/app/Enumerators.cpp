// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Enumerators.h"

#include "app/TnsNames.h"
#include "engines/oledb/Providers.h"
#include "util/Errors.h"

namespace velmora {

namespace {

constexpr char kInvalidColumns[] = "Invalid column count returned in data source query";

constexpr std::size_t kNameColumn = 0;
constexpr std::size_t kTypeColumn = 3;
constexpr std::int64_t kDataSource = 1;  // as against another enumerator

}  // namespace

TEnumerators MachineEnumerators() {
  return {.SQLServers = {}, .ODBCSources = ODBCSourcesLister(), .OracleServices = {}};
}

TStringList DataSourceNames(const TEnumerator& enumerator) {
  TStringList names;
  if (!enumerator) return names;
  const std::unique_ptr<TDataset> sources = enumerator();
  if (sources->Fields().size() <= kTypeColumn) RaiseError(kInvalidColumns);
  for (; !sources->Eof(); sources->Next())
    if (VarToInt(sources->Value(kTypeColumn)) == kDataSource) names.push_back(VarToText(sources->Value(kNameColumn)));
  return names;
}

TStringList OracleServiceNames(const TEnumerators& enumerators) {
  return enumerators.OracleServices ? enumerators.OracleServices() : OracleServices();
}

}  // namespace velmora
