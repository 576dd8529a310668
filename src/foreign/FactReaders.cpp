// SPDX-License-Identifier: GPL-3.0-or-later
#include "foreign/FactReaders.h"

#include <algorithm>

#include "core/Engines.h"
#include "foreign/AccessFacts.h"
#include "foreign/DbfFacts.h"
#include "foreign/InterbaseFacts.h"
#include "foreign/OdbcFacts.h"
#include "foreign/OracleFacts.h"
#include "foreign/ParadoxFacts.h"
#include "foreign/SheetFacts.h"
#include "foreign/SqlServerFacts.h"
#include "foreign/TextFacts.h"

namespace velmora {

namespace {

struct TRow {
  int engine;
  std::unique_ptr<TFactReader> (*make)(TDBConn& conn);  // null for an engine that is another one after all
};

// By engine number.
constexpr TRow kReaders[] = {
    {kEngineDBF, MakeDBaseFacts},       {kEngineLotus, MakeLotusFacts},         {kEngineInterbase, MakeInterbaseFacts},
    {kEngineAccess, MakeAccessFacts},   {kEngineSQLServer, MakeSqlServerFacts}, {kEngineOracle, MakeOracleFacts},
    {kEngineParadox, MakeParadoxFacts}, {kEngineText, MakeTextFacts},           {kEngineExcel, MakeExcelFacts},
    {kEngineFoxPro, MakeFoxProFacts},   {kEngineODBC, MakeOdbcFacts},
};

const TRow* RowOf(TDBConn& conn) {
  const auto* found = std::ranges::find(kReaders, conn.GetEngine(), &TRow::engine);
  return found == std::end(kReaders) ? nullptr : found;
}

}  // namespace

bool HasFactReader(TDBConn& conn) { return RowOf(conn) != nullptr; }

std::vector<int> EnginesWithFacts() {
  std::vector<int> engines;
  for (const TRow& row : kReaders)
    if (row.make != nullptr) engines.push_back(row.engine);
  std::ranges::sort(engines);
  return engines;
}

std::unique_ptr<TFactReader> MakeFactReader(TDBConn& conn) {
  const TRow* row = RowOf(conn);
  return row == nullptr ? nullptr : row->make(conn);
}

}  // namespace velmora
