// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/FaultPlace.h"

#include "app/ParsedStore.h"
#include "app/StructureView.h"
#include "engines/mysql/OfflineEngine.h"
#include "mysqltext/StatementReader.h"
#include "util/Errors.h"
#include "util/Format.h"

namespace velmora {

namespace {

// Whether the table cannot be read on this side for that very reason, or because the connection is lost.
bool FailsWith(TDBConn& conn, const std::string& table, const std::string& error) {
  try {
    if (!StandsConnected(conn)) conn.Connect();
  } catch (const EVelmora&) {
    return true;
  }
  return FetchAndView(conn, table).error == error || !StandsConnected(conn);  // a lost connection may show only now
}

}  // namespace

bool StandsConnected(TDBConn& conn) {
  try {
    return conn.GetConnected();
  } catch (const EAbstractError&) {
    return true;
  }
}

std::string SourcePlace(TDBConn& conn, const std::string& error) {
  std::string name;
  conn.GetDisplayName(name);
  return error.find(name) == std::string::npos ? name : std::string();
}

std::string TablePlace(TDBConn& conn, const std::string& table) {
  std::string name;
  conn.GetDisplayName(name);
  if (auto* offline = dynamic_cast<TDBConnMySQLOffline*>(&conn)) {
    const TScriptPlace place = offline->GetConnectionObject().PlaceOf(table);
    if (place.line > 0) return Format("%s: line %d: table %s", place.file, place.line, table);
  }
  return name.empty() ? Format("table %s", table) : Format("%s: table %s", name, table);
}

std::string ObjectPlace(TDBConn* conn, const std::string& kind, const std::string& name) {
  auto* offline = dynamic_cast<TDBConnMySQLOffline*>(conn);
  const TScriptPlace place = offline == nullptr ? TScriptPlace() : offline->GetConnectionObject().PlaceOf(kind, name);
  return place.line == 0 ? std::string() : Format("%s: line %d", place.file, place.line);
}

std::string ComparisonPlace(TDBConn* reference, TDBConn* target, bool target_lost, const std::string& table,
                            const std::string& error) {
  const bool at_table = !table.empty();  // both sides were connected then
  if (reference != nullptr && !StandsConnected(*reference))
    return at_table ? TablePlace(*reference, table) : SourcePlace(*reference, error);
  if (target != nullptr && (target_lost || (!at_table && !StandsConnected(*target))))
    return at_table ? TablePlace(*target, table) : SourcePlace(*target, error);
  if (!at_table) return {};
  for (TDBConn* conn : {reference, target})
    if (conn != nullptr && FailsWith(*conn, table, error)) return TablePlace(*conn, table);
  return Format("table %s", table);
}

std::size_t FaultLine(const std::string& text, const std::string& error, const TMeta& before) {
  TParsedStore store("");
  store.meta().CopyFrom(before);
  TStatement statement;
  try {
    TStatementReader statements(text);
    while (statements.Next(statement)) store.ParseDDL(std::string(statement.text) + ";");
  } catch (const EVelmora& fault) {
    if (fault.what() == error) return statement.line;
  }
  return 0;
}

}  // namespace velmora
