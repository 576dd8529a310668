// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqlclient/ServerIdentity.h"

#include <cstdlib>
#include <memory>

#include "util/Errors.h"
#include "util/Format.h"
#include "util/Lists.h"

namespace velmora {

namespace {

constexpr char kOwnNumber[] = "select connection_id(), unix_timestamp()";
constexpr char kNames[] =
    "show global variables where variable_name in ('hostname', 'port', 'server_id', 'server_uuid', 'server_uid')";
constexpr char kUptime[] = "show global status like 'Uptime'";
constexpr std::int64_t kClockSteps = 2;  // seconds by which two readings of two whole numbers can differ

// The rows of two columns that a statement gives; nothing else fits.
std::vector<std::pair<std::string, std::string>> Pairs(TMyWire& wire, const char* statement) {
  std::vector<std::pair<std::string, std::string>> pairs;
  wire.Send(statement);
  const std::unique_ptr<TMyRows> rows = wire.Rows(true);
  wire.SkipFurther();
  while (rows && rows->Columns().size() == 2 && rows->Next())
    pairs.emplace_back(rows->Value(0).value_or(""), rows->Value(1).value_or(""));
  return pairs;
}

std::optional<TServerIdentity> Asked(TMyWire& wire) {
  TServerIdentity identity;
  const auto own = Pairs(wire, kOwnNumber);
  const auto names = Pairs(wire, kNames);
  const auto uptime = Pairs(wire, kUptime);
  if (own.size() != 1 || names.size() < 3 || uptime.size() != 1) return std::nullopt;
  if (own[0].first != std::to_string(wire.ThreadId())) return std::nullopt;
  for (const auto& [name, value] : names) identity.names.append(name).append("=").append(value).append("\n");
  identity.started = StrToInt64(own[0].second) - StrToInt64(uptime[0].second);
  return identity;
}

}  // namespace

std::optional<TServerIdentity> IdentityOf(TMyWire& wire) {
  try {
    return Asked(wire);
  } catch (const EMySqlException&) {
    if (!wire.IsOpen()) throw;
  } catch (const EConvertError&) {  // a number that is none
  }
  return std::nullopt;
}

bool IsSameServer(const TServerIdentity& one, const TServerIdentity& other) {
  return one.names == other.names && std::llabs(one.started - other.started) <= kClockSteps;
}

}  // namespace velmora
