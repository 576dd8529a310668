// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/AutomaticDialect.h"

#include <optional>

#include "app/ServerVersion.h"

namespace velmora {

namespace {

constexpr int kFirstExact = 5;  // the major version from which on servers print what they store, and reject what is old

}  // namespace

TDialectChoice DialectFor(TDBConn& target) {
  const std::optional<TServerVersion> version = ServerVersionOf(target);
  if (!version) return {EDialect::Exact, "the target is a file of creation texts"};
  const bool old = version->major > 0 && version->major < kFirstExact;
  return {old ? EDialect::Standard : EDialect::Exact, "the target's server is " + version->Text()};
}

}  // namespace velmora
