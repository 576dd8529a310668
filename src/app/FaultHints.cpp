// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/FaultHints.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "mysqlclient/MyConnection.h"
#include "mysqlclient/mysqlUtil.h"
#include "util/Errors.h"
#include "util/Format.h"

namespace velmora {

namespace {

constexpr std::size_t kLowestLimit = 1024;                  // that a server can be given
constexpr std::size_t kSuspect = std::size_t{1024} * 1024;  // the usual limit of old servers
constexpr int kPatience = 5;                                // seconds for what is only a hint

std::optional<std::int64_t> PacketLimit(const TMyConnection& connection) {
  try {
    const std::unique_ptr<TMyConnection> sibling = connection.NewSibling();
    sibling->ConnectionTimeout = kPatience;
    sibling->SetConnected(true);
    std::vector<TVariant> row;
    MySqlQueryRow("select @@max_allowed_packet", *sibling, row);
    return VarToInt(row.at(0));
  } catch (const std::exception&) {  // the failure that is being reported matters more
    return std::nullopt;
  }
}

}  // namespace

std::string PacketHint(TDBConn& target, const TRunReport& report) {
  const auto* connection = dynamic_cast<const TMyConnection*>(&target.GetConnectionObject());
  if (connection == nullptr || !report.failed || !report.lost) return {};
  const std::size_t size = report.statements[*report.failed].text.size();
  if (size < kLowestLimit) return {};
  const std::optional<std::int64_t> limit = PacketLimit(*connection);
  if (!limit && size >= kSuspect)
    return Format(
        "that statement has %d bytes; if that is too large for the server, its max_allowed_packet must be raised, "
        "and otherwise whether it took effect is not known",
        size);
  // A packet is the statement with one byte before it, and it must be smaller than the limit.
  if (!limit || static_cast<std::int64_t>(size) + 1 < *limit) return {};
  return Format(
      "that statement has %d bytes, which is too large for the server, and was not run: max_allowed_packet, which "
      "is %d bytes, must be raised",
      size, *limit);
}

}  // namespace velmora
