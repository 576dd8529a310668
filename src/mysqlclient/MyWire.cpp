// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqlclient/MyWire.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "mysqlclient/MyConnection.h"
#include "mysqlnet/MySqlVioPipe.h"
#include "util/Errors.h"
#include "util/Files.h"
#include "util/Format.h"
#include "util/MySqlFacts.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr std::size_t kLargestKeyFile = 65536;
constexpr std::string_view kPublicKeyMark = "-----BEGIN PUBLIC KEY-----";
constexpr char kNoPublicKey[] = "%s holds no public key of a server (PEM, as \"-----BEGIN PUBLIC KEY-----\" begins it)";

}  // namespace

std::vector<TMyRoute> RoutesTo(const TMyConnection& connection) {
  const bool local = IsLocalServer(connection.Server);
  if (local && !connection.Options.Socket.empty()) return {{.socket = connection.Options.Socket}};
  std::vector<TMyRoute> routes;
  if (const std::string usual = TMySqlVioPipe::UsualPath(); local && connection.Port == 0 && !usual.empty())
    routes.push_back({.socket = usual});
  routes.push_back(
      {.host = local ? "localhost" : connection.Server, .port = connection.Port == 0 ? kMySqlPort : connection.Port});
  return routes;
}

int LoginTime(const TMyConnection& connection, int answer_time) {
  const int time = std::max(connection.ConnectionTimeout, 0);
  if (answer_time <= 0) return time;
  return time == 0 ? answer_time : std::min(time, answer_time);
}

std::string ServerPublicKey(const TMyConnection& connection) {
  const std::string& file = connection.Options.ServerPublicKey;
  if (file.empty()) return {};
  std::string key = ReadFileBytes(file, kLargestKeyFile);
  if (key.find(kPublicKeyMark) == std::string::npos) RaiseError(Format(kNoPublicKey, file));
  return key;
}

bool IsLocalServer(const std::string& server) { return server.empty() || SameText(server, "localhost"); }

// Shut down; killed, and too long silent, by MariaDB's number or MySQL's; and what is wrong with a packet, from one
// that was too long on.
bool IsFarewell(int error) {
  constexpr int kFarewells[] = {1053, 1927, 3169, 4031};
  constexpr int kFirstOfPackets = 1153, kLastOfPackets = 1161;
  return std::find(std::begin(kFarewells), std::end(kFarewells), error) != std::end(kFarewells) ||
         (error >= kFirstOfPackets && error <= kLastOfPackets);
}

EMySqlException ToldError(int number, const std::string& text) {
  return {number, text.empty() ? Format(kErrorWithoutText, number) : text};
}

}  // namespace velmora
