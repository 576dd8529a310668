// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/mysql/OfflineEngine.h"

#include <algorithm>
#include <utility>

#include "util/Errors.h"
#include "util/Format.h"
#include "util/MySqlFacts.h"

namespace velmora {

TDBConnMySQLOffline::TDBConnMySQLOffline(std::string path, TScriptChoice choice)
    : TDBConnMySQLOffline(std::make_unique<TOfflineConnection>(std::move(path), std::move(choice))) {}

TDBConnMySQLOffline::TDBConnMySQLOffline(std::unique_ptr<TOfflineConnection> connection)
    : TDBConnMySQL(std::move(connection), {}, kMySqlPort, {}, {}, {}),
      offline_(static_cast<TOfflineConnection&>(TDBConnMySQL::GetConnectionObject())) {}

void TDBConnMySQLOffline::SaveParams(const std::string& /*path*/, TXMLAccess& /*store*/) {
  RaiseError(Format("%s is a script file, which cannot be part of a task file", offline_.Name()));
}

TOfflineConnection& TDBConnMySQLOffline::GetConnectionObject() { return offline_; }

void TDBConnMySQLOffline::GetDisplayName(std::string& text) { text = offline_.Name(); }

std::unique_ptr<TDBConnMySQL> TDBConnMySQLOffline::NewEngine() const {
  return std::make_unique<TDBConnMySQLOffline>(offline_.NewOfflineConnection());
}

// Dumps leave triggers, routines and events out unless they are asked for; procedures and functions come together, and
// views with tables.
TStringList TDBConnMySQLOffline::KindsLeftOut() {
  const std::vector<TOtherObject>& objects = offline_.OtherObjects();
  const auto has = [&](std::string_view kind) {
    return std::ranges::find(objects, kind, &TOtherObject::kind) != objects.end();
  };
  TStringList kinds;
  if (!has("trigger")) kinds.emplace_back("trigger");
  if (!has("procedure") && !has("function")) kinds.insert(kinds.end(), {"procedure", "function"});
  if (!has("event")) kinds.emplace_back("event");
  const auto& statements = offline_.Structure().statements;
  if (statements.empty() && !has("view")) kinds.emplace_back("view");
  return kinds;
}

}  // namespace velmora
