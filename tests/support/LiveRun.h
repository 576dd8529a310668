// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <chrono>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "mysqlclient/mysqlUtil.h"
#include "support/CompanionRun.h"
#include "support/LiveDatabase.h"
#include "util/Errors.h"
#include "util/Format.h"

namespace velmora::testing {

inline std::string LiveSource(const std::string& database) { return "mysql://root:@localhost/" + database; }
inline std::string LiveSource(const std::string& database, int port) {
  return Format("mysql://root:@127.0.0.1:%d/%s", port, database);
}

// The companion within this process; "localhost" is the shared server, also in a list of targets.
inline TAnswer RunLive(std::vector<std::string> arguments,
                       std::function<std::string(const std::string&, bool)> ask = {}) {
  const bool local = std::ranges::any_of(arguments, [](const std::string& each) {
    return each == "--targets" || each.find("@localhost/") != std::string::npos;
  });
  // Who cuts a line at a statement has to read what is said.
  const bool distant = std::ranges::any_of(
      arguments, [](const std::string& each) { return each.find("@127.0.0.1:") != std::string::npos; });
  if (distant) arguments.insert(arguments.end(), {"--tls", "off"});
  if (local) arguments.insert(arguments.end(), {"--socket", TPrivateServer::Shared().Socket()});
  return RunInProcess(arguments, std::move(ask));
}

// Looks with a connection of its own at what others leave on a server; made before they come.
class TWitness {
 public:
  explicit TWitness(TLiveDatabase& database)
      : database_(database), last_(Ask("select max(id) from information_schema.processlist")) {}

  std::string Ask(const std::string& query) { return Answer(database_.Connection(), query); }
  // Nobody has a transaction or a lock on a table of the database.
  bool NothingHeld() {
    if (Ask("select count(*) from information_schema.innodb_trx") != "0") return false;
    TStringList tables;
    MySqlQueryList("show tables", tables, database_.Connection());
    try {
      database_.Run("set lock_wait_timeout = 1");
      for (const std::string& table : tables) database_.Run("lock tables `" + table + "` write");
      database_.Run("unlock tables");
    } catch (const EVelmora&) {
      return false;
    }
    return true;
  }
  // The same, and no connection either; waits a little, since a server may learn of an end later.
  bool NothingLeft() {
    for (int i = 0; i < 500 && Newcomers() != "0"; ++i) std::this_thread::sleep_for(std::chrono::milliseconds(10));
    return Newcomers() == "0" && NothingHeld();
  }

 private:
  // Numbers of connections rise. Who was there before may be on the way out, so counting all would not do.
  std::string Newcomers() {
    return Ask("select count(*) from information_schema.processlist where user = 'root' and id > " + last_);
  }

  TLiveDatabase& database_;
  std::string last_;  // the number of the last connection at the beginning
};

}  // namespace velmora::testing
