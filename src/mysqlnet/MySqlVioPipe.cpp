// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqlnet/MySqlVioPipe.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "mysqlnet/MySqlErrors.h"

namespace velmora {

namespace {

constexpr const char* kUsualPaths[] = {"/run/mysqld/mysqld.sock", "/var/lib/mysql/mysql.sock", "/tmp/mysql.sock"};

}  // namespace

TMySqlVioPipe::TMySqlVioPipe(std::string host, std::string pipe, int port)
    : host_(std::move(host)), pipe_(std::move(pipe)), port_(port) {}

std::string TMySqlVioPipe::UsualPath() {
  const auto is_socket = [](const char* path) {
    struct stat status {};
    return stat(path, &status) == 0 && S_ISSOCK(status.st_mode);
  };
  const auto* const path = std::find_if(std::begin(kUsualPaths), std::end(kUsualPaths), is_socket);
  return path == std::end(kUsualPaths) ? "" : *path;
}

void TMySqlVioPipe::Connect() {
  std::string path = pipe_.empty() ? UsualPath() : pipe_;
  if (path.empty()) path = kUsualPaths[0];
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof(address.sun_path)) throw TransportError(kCannotConnectLocally, path, ENAMETOOLONG);
  path.copy(address.sun_path, sizeof(address.sun_path) - 1);
  const int made = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const int error = made < 0 ? errno : ConnectSocket(made, &address, sizeof(address), Deadline());
  if (error != 0) throw TransportError(kCannotConnectLocally, path, error);
}

}  // namespace velmora
