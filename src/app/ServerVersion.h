#pragma once

#include <optional>
#include <string>

#include "core/DBConn.h"

namespace velmora {

// What a MySQL server says that it is.
struct TServerVersion {
  std::string product;  // "MySQL" or "MariaDB"
  std::string number;   // "10.11.6"
  int major = 0;        // 10; 0 where the number does not begin with one

  std::string Text() const { return product + " " + number; }
};

// Reads what `select version()` gives: "8.0.36-0ubuntu", "5.5.5-10.11.6-MariaDB-log".
TServerVersion ReadServerVersion(const std::string& version);

// Of the server that a connected MySQL engine stands on; nothing for a file of creation texts and for other engines.
// Raises what asking the server raises.
std::optional<TServerVersion> ServerVersionOf(TDBConn& conn);

}  // namespace velmora
