// SPDX-License-Identifier: GPL-3.0-or-later

// bench_fleet_floor SOCKET PREFIX COUNT CONNECTIONS: asks for the tables of the databases PREFIX0000, PREFIX0001, ...
// and the creation text of each, one statement at a time on so many connections. What no comparison that reads the
// texts of all over this client can undercut by much.

#include <mysql.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
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
  if (result == nullptr) return values;
  const unsigned last = mysql_num_fields(result) - 1;
  while (MYSQL_ROW row = mysql_fetch_row(result)) values.emplace_back(row[last]);
  mysql_free_result(result);
  return values;
}

std::size_t ReadAll(const char* socket, const std::string& prefix, int count, std::atomic<int>& next) {
  MYSQL* server = mysql_init(nullptr);
  if (mysql_real_connect(server, nullptr, "root", "", nullptr, 0, socket, 0) == nullptr) {
    std::fprintf(stderr, "%s\n", mysql_error(server));
    std::exit(2);
  }
  std::size_t bytes = 0;
  for (int number = next++; number < count; number = next++) {
    const std::string digits = std::to_string(number);
    Ask(server, "use " + prefix + std::string(digits.size() < 4 ? 4 - digits.size() : 0, '0') + digits);
    for (const std::string& table : Ask(server, "show tables"))
      bytes += Ask(server, "show create table `" + table + "`").front().size();
  }
  mysql_close(server);
  return bytes;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 5 || mysql_library_init(0, nullptr, nullptr) != 0) return 2;
  std::atomic<int> next = 0;
  std::atomic<std::size_t> bytes = 0;
  std::vector<std::thread> threads;
  for (int i = 0; i < std::atoi(argv[4]); ++i)
    threads.emplace_back([&] { bytes += ReadAll(argv[1], argv[2], std::atoi(argv[3]), next); });
  for (std::thread& thread : threads) thread.join();
  std::printf("%zu\n", bytes.load());
  return 0;
}
