// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Engine numbers and their names; the names are what task files hold.

#include <string>
#include <string_view>

namespace velmora {

enum TEngine : int {
  kEngineNone = 0,
  kEngineDBF = 2,
  kEngineLotus = 3,
  kEngineInterbase = 5,
  kEngineAccess = 6,
  kEngineSQLServer = 7,
  kEngineMySQL = 8,
  kEngineMySQLScript = 9,
  kEngineOracle = 10,
  kEngineParadox = 11,
  kEngineText = 12,
  kEngineXml = 13,  // has a file filter only
  kEngineExcel = 14,
  kEngineFoxPro = 15,
  kEngineODBC = 16
};

struct TEngineItem {
  int engine;
  std::string_view name;
};

// The name of an engine number; the empty text for 0. Raises "StrEngine error" for any other number without a name,
// the script engine among them.
void StrEngine(int engine, std::string& text);
// The number of a name, compared exactly. Raises "StrToEngine error".
int StrToEngine(std::string_view text);

// Lets the user choose a file, the filter being the engine's. False when none was chosen. Raises "Open database file:
// unhandled engine" for an engine without a filter.
bool OpenDatabaseFile(int engine, std::string& path);

}  // namespace velmora
