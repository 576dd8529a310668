// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What a target's server takes, as far as texts that are made for it depend on that.

#include <string>

namespace velmora {

struct TTargetServer {
  bool mariadb = true;
  int version = kNewest;  // 5.6.24 is 50624, 10.11.6 is 101106

  static constexpr int kNewest = 999999;

  bool HasFractions() const { return version >= (mariadb ? 50300 : 50604); }            // of seconds
  bool HasMomentDefaults() const { return version >= (mariadb ? 100001 : 50605); }      // of datetime
  bool HasExpressionDefaults() const { return version >= (mariadb ? 100201 : 80013); }  // and defaults of texts
  bool HasChecks() const { return version >= (mariadb ? 100201 : 80016); }
  bool HasDescendingKeys() const { return version >= (mariadb ? 100800 : 80000); }
  bool HasSetDefault() const { return !mariadb && version >= 80000; }  // MariaDB takes the word and keeps none
  bool HasUuid() const { return mariadb && version >= 100700; }
  bool WantsUniqueParents() const { return !mariadb && version >= 80400; }  // of foreign keys
  bool HasDatabaseChecks() const { return !mariadb; }  // whose names are told apart in the whole database
  // Makes unique keys over any length by itself.
  bool HasLongUniqueKeys() const { return mariadb && version >= 100400; }
  int KeyBytes() const { return version >= (mariadb ? 100202 : 50707) ? 3072 : 767; }  // of a part, and of a whole key
  std::string Text() const;                                                            // "MySQL 8.4.0"
};

// What `select version()` gives ("8.0.36-0ubuntu", "10.11.6-MariaDB-log"), or what users write: "5.6", "mysql 8.4",
// "mariadb-10.11"; a number from 10 on alone is MariaDB's. Raises for what says no version.
TTargetServer ReadTargetServer(const std::string& version);

}  // namespace velmora
