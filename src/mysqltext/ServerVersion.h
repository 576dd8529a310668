// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What a MySQL server says that it is.

#include <string>
#include <string_view>

namespace velmora {

struct TServerVersion {
  bool mariadb = false;
  std::string number{};  // "10.11.6"
  int major = 0;         // 10
  int version = 0;       // 101106; like the others nothing where the text has no number

  std::string Text() const;  // "MariaDB 10.11.6"
};

// Reads what `select version()` gives: "8.0.36-0ubuntu", "5.5.5-10.11.6-MariaDB-log"; and what begins with a word, as
// users write it: "mariadb 10.11".
TServerVersion ReadServerVersion(std::string_view version);

// Without what MariaDB puts in front in its greeting, so that replicas of old clients took it.
std::string_view PlainServerVersion(std::string_view version);

}  // namespace velmora
