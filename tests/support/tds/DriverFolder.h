#pragma once

// Where the ODBC driver manager looks for its drivers in tests.

#include <stdlib.h>

#include <fstream>
#include <string>

#include "support/ScratchFolder.h"

namespace velmora::testing {

// Knows the driver for SQL Server, or none; data sources and settings of the machine do not count. The driver manager
// remembers what it has found, so a process has one of them.
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

inline void UseSqlServerDriver() { static const TDriverFolder folder(true); }

}  // namespace velmora::testing
