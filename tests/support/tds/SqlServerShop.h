// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <stdlib.h>

#include <fstream>
#include <string>

#include "support/ScratchFolder.h"
#include "support/tds/FakeTdsServer.h"

namespace velmora::testing {

// Where the ODBC driver manager looks for its drivers: it knows the one for SQL Server, or none; data sources and
// settings of the machine do not count. The manager remembers what it has found, so a process has one of them.
class TDriverFolder {
 public:
  explicit TDriverFolder(bool with_driver) {
    if (with_driver) std::ofstream(folder_ / "odbcinst.ini") << "[FreeTDS]\nDriver=libtdsodbc.so\n";
    std::ofstream(folder_ / "freetds.conf") << "[global]\n";
    setenv("ODBCSYSINI", folder_.Path().c_str(), 1);
    setenv("FREETDSCONF", (folder_ / "freetds.conf").c_str(), 1);
  }

 private:
  TScratchFolder folder_;
};

// Where the shop and its goldens stand.
inline const std::string kSqlServerData = VELMORA_SOURCE_DIR "/tests/engines/oledb/catalog/";

// A played server with the shop, for the real driver to talk to.
class TSqlServerShop : public TFakeTdsServer {
 public:
  TSqlServerShop() {
    static const TDriverFolder driver(true);
    answers = ReadPlayedAnswers(kSqlServerData + "shop.txt");
  }
  std::string Place() const { return "127.0.0.1," + std::to_string(Port()); }
};

}  // namespace velmora::testing
