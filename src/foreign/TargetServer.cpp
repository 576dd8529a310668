// SPDX-License-Identifier: GPL-3.0-or-later
#include "foreign/TargetServer.h"

#include "mysqltext/ServerVersion.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kNoVersion[] = "%s is no version of a server: write one like \"8.4\", \"5.6.24\" or \"mariadb 10.11\"";
constexpr int kFirstMariaDb = 10;
constexpr int kPlace = 100;

}  // namespace

TTargetServer ReadTargetServer(const std::string& version) {
  const TServerVersion read = ReadServerVersion(version);
  if (read.major == 0) RaiseError(Format(kNoVersion, version));
  const bool named_mysql = PosNoCase("mysql", version) != 0;
  return {.mariadb = read.mariadb || (!named_mysql && read.major >= kFirstMariaDb), .version = read.version};
}

std::string TTargetServer::Text() const {
  std::string product = mariadb ? "MariaDB" : "MySQL";
  if (version == kNewest) return product;
  return product + Format(" %d.%d.%d", version / (kPlace * kPlace), version / kPlace % kPlace, version % kPlace);
}

}  // namespace velmora
