// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/Engines.h"

#include <algorithm>

#include "core/Host.h"
#include "util/Errors.h"

namespace velmora {
namespace {

// The script engine and the XML filter have no name: they are nothing that a task file can hold.
constexpr TEngineItem kEngineNames[] = {
    {kEngineDBF, "DBF"},           {kEngineFoxPro, "FoxPro"},
    {kEngineLotus, "Lotus 1-2-3"}, {kEngineInterbase, "Interbase/Firebird"},
    {kEngineAccess, "Access"},     {kEngineSQLServer, "SQL Server"},
    {kEngineMySQL, "MySQL"},       {kEngineOracle, "Oracle"},
    {kEngineParadox, "Paradox"},   {kEngineText, "Text"},
    {kEngineExcel, "Excel"},       {kEngineODBC, "ODBC"},
};

// Engine number and the filter of its files.
constexpr TEngineItem kFileFilters[] = {
    {kEngineLotus, "Lotus 1-2-3|*.wk4;*.wk3"}, {kEngineInterbase, "Interbase or Firebird database|*.gdb;*.fdb"},
    {kEngineAccess, "Access database|*.mdb"},  {kEngineMySQLScript, "MySQL script|*.sql"},
    {kEngineText, "Text file|*.txt"},          {kEngineXml, "XML file|*.xml"},
    {kEngineExcel, "Excel document|*.xls"},    {kEngineFoxPro, "FoxPro database|*.dbc"},
};

}  // namespace

void StrEngine(int engine, std::string& text) {
  if (engine == kEngineNone) {
    text.clear();
    return;
  }
  const auto* item = std::ranges::find(kEngineNames, engine, &TEngineItem::engine);
  if (item == std::end(kEngineNames)) RaiseError("StrEngine error");
  text = item->name;
}

int StrToEngine(std::string_view text) {
  const auto* item = std::ranges::find(kEngineNames, text, &TEngineItem::name);
  if (item == std::end(kEngineNames)) RaiseError("StrToEngine error");
  return item->engine;
}

bool OpenDatabaseFile(int engine, std::string& path) {
  const auto* item = std::ranges::find(kFileFilters, engine, &TEngineItem::engine);
  if (item == std::end(kFileFilters)) RaiseError("Open database file: unhandled engine");
  return Host().OpenFile(std::string(item->name), path);
}

}  // namespace velmora
