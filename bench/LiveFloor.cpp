// SPDX-License-Identifier: GPL-3.0-or-later

// bench_live_floor SOCKET DATABASE DATABASE: asks for the tables of both databases and the creation text of each, one
// statement at a time on one connection. What no comparison over this client can undercut.

#include <mysql.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

// The last column of every row.
std::vector<std::string> Ask(MYSQL* server, const std::string& statement) {
  std::vector<std::string> values;
  if (mysql_real_query(server, statement.data(), statement.size()) != 0) {
    std::fprintf(stderr, "%s: %s\n", statement.c_str(), mysql_error(server));
    std::exit(2);
  }
  MYSQL_RES* result = mysql_store_result(server);
  const unsigned last = mysql_num_fields(result) - 1;
  while (MYSQL_ROW row = mysql_fetch_row(result)) values.emplace_back(row[last]);
  mysql_free_result(result);
  return values;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) return 2;
  MYSQL* server = mysql_init(nullptr);
  if (mysql_real_connect(server, nullptr, "root", "", nullptr, 0, argv[1], 0) == nullptr) {
    std::fprintf(stderr, "%s\n", mysql_error(server));
    return 2;
  }
  std::size_t bytes = 0;
  for (int side = 2; side < 4; ++side)
    for (const std::string& table : Ask(server, std::string("show tables from ") + argv[side]))
      bytes += Ask(server, std::string("show create table ") + argv[side] + ".`" + table + "`").front().size();
  mysql_close(server);
  std::printf("%zu\n", bytes);
  return 0;
}
