// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/LockHolders.h"

#include <algorithm>
#include <array>
#include <memory>
#include <set>

#include "mysqltext/KeyText.h"
#include "mysqltext/Lexer.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Lists.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr std::size_t kMostNames = 50;
constexpr std::size_t kMostHolders = 5;
constexpr char kNobody[] =
    "who holds the lock is not to be seen, which may take the privileges PROCESS and SELECT on performance_schema";

// What servers can be asked, the surest first: each gives the connection's number, account, command, seconds of that,
// and what it is of.
struct TQuestion {
  const char* sql;  // "%s": the names of the statement
  const char* answer;
};
constexpr std::array kQuestions = {
    // MySQL
    TQuestion{"select distinct t.processlist_id, concat(t.processlist_user, '@', t.processlist_host), "
              "t.processlist_command, t.processlist_time, l.object_name from performance_schema.metadata_locks l join "
              "performance_schema.threads t on t.thread_id = l.owner_thread_id where l.lock_status = 'GRANTED' and "
              "l.object_schema = database() and l.object_name in (%s) and t.processlist_id <> connection_id() and "
              "coalesce(t.processlist_state, '') not like 'Waiting for%lock'",
              "connection %s (%s, %s for %s s) holds %s"},
    // MariaDB with its plugin metadata_lock_info
    TQuestion{"select distinct p.id, concat(p.user, '@', p.host), p.command, p.time, l.table_name from "
              "information_schema.metadata_lock_info l join information_schema.processlist p on p.id = l.thread_id "
              "where l.table_schema = database() and l.table_name in (%s) and p.id <> connection_id() and "
              "coalesce(p.state, '') not like 'Waiting for%lock'",
              "connection %s (%s, %s for %s s) holds %s"},
    TQuestion{"select p.id, concat(p.user, '@', p.host), p.command, p.time, t.trx_started from "
              "information_schema.innodb_trx t join information_schema.processlist p on p.id = t.trx_mysql_thread_id "
              "where p.id <> connection_id() and coalesce(p.state, '') not like 'Waiting for%lock' order by 5",
              "perhaps connection %s (%s, %s for %s s), whose transaction is open since %s"},
    TQuestion{"select id, concat(user, '@', host), command, time, db from information_schema.processlist where db = "
              "database() and id <> connection_id() and coalesce(state, '') not like 'Waiting for%lock' order by time "
              "desc",
              "perhaps connection %s (%s, %s for %s s), which uses %s"},
};

// As literals with commas between; of a statement that cannot be read none.
std::string NamesIn(const std::string& statement) {
  std::set<std::string> names;
  try {
    for (const TToken& token : Tokens(statement))
      if (IsName(token) && names.size() < kMostNames) names.insert(QuotedText(NameOf(token)));
  } catch (const EVelmora&) {
    return {};
  }
  return JoinList({names.begin(), names.end()}, ", ");
}

TStringList Answers(TDBConn& target, const TQuestion& question, const std::string& names) {
  TStringList holders;
  const std::unique_ptr<TDataset> rows = target.OpenQuery(StrReplace(question.sql, "%s", names));
  for (; !rows->Eof() && holders.size() < kMostHolders; rows->Next()) {
    const auto value = [&rows](std::size_t column) { return VarToText(rows->Value(column)); };
    holders.push_back(Format(question.answer, value(0), value(1), value(2), value(3), value(4)));
  }
  return holders;
}

}  // namespace

std::string LockHolders(TDBConn& target, const std::string& statement) {
  const std::string names = NamesIn(statement);
  if (names.empty()) return kNobody;
  for (const TQuestion& question : kQuestions) {
    try {
      const TStringList holders = Answers(target, question, names);
      if (!holders.empty()) return JoinList(holders, "; ");
    } catch (const EVelmora&) {  // this server, or this login, has no answer to it
      if (!target.GetConnected()) break;
    }
  }
  return kNobody;
}

}  // namespace velmora
