// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/mysql/LoginRights.h"

#include "mysqlclient/mysqlUtil.h"

namespace velmora {

TGrants GrantsOfLogin(TMyConnection& connection) {
  return AskGrants([&](const std::string& query) {
    TStringList lines;
    MySqlQueryList(query, lines, connection);
    return lines;
  });
}

TStringList HiddenKinds(const TGrants& grants, const std::string& database) {
  TStringList kinds;
  if (!grants.On(database, {"SELECT", "INSERT", "UPDATE", "DELETE", "CREATE", "DROP", "ALTER", "INDEX", "SHOW VIEW",
                            "CREATE VIEW", "REFERENCES", "TRIGGER"}))
    kinds.insert(kinds.end(), {"table", "view"});
  if (!grants.On(database, {"TRIGGER"})) kinds.emplace_back("trigger");
  const bool routines = grants.On(database, {"EXECUTE", "ALTER ROUTINE", "CREATE ROUTINE", "SHOW CREATE ROUTINE"}) ||
                        grants.Everywhere({"SHOW_ROUTINE", "SELECT"}) || grants.OnTable("mysql", "proc", {"SELECT"});
  if (!routines) kinds.insert(kinds.end(), {"procedure", "function"});
  if (!grants.On(database, {"EVENT"})) kinds.emplace_back("event");
  return kinds;
}

}  // namespace velmora
