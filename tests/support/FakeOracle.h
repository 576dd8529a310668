#pragma once

// An Oracle server behind a stand-in for its client library: it answers from a table, writes down what it is asked, and
// keeps count of what it has given out. The library is built from engines/server/fake; this is how tests reach into it.

#include <dlfcn.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace velmora::testing {

struct TFakeOracle {
  struct TColumn {
    std::string name;
    std::uint16_t type = 1;  // as the library numbers them; a text
    std::uint16_t size = 100;
    bool national = false;
  };
  using TRow = std::vector<std::optional<std::string>>;
  struct TError {
    int code = 0;
    std::string text;
  };
  struct TAnswer {
    std::vector<TColumn> columns;  // none: the statement gives no rows
    std::vector<TRow> rows;
    std::uint32_t affected = 0;
    TError error;                   // of the execution, unless 0
    std::size_t lost_after = ~0UL;  // rows after which the server is gone
  };

  std::map<std::string, TAnswer> answers;  // by statement; other queries fail, other statements do nothing
  std::string username = "scott";
  std::string password = "tiger";
  TError attach_error;
  std::size_t piece = 5;  // bytes of a long value that come at a time
  bool gone = false;      // every further call to the server fails

  // "attach SERVER", "login USERNAME MODE", "run SQL", "commit", "rollback", "end", "detach".
  std::vector<std::string> log;
  std::vector<std::string> faults;  // calls that a real library would not have stood
  int given_out = 0;                // handles, descriptors, statements, sessions and attached servers

  // Adds an answer of text columns.
  TAnswer& Add(const std::string& sql, const std::vector<std::string>& columns, std::vector<TRow> rows = {}) {
    TAnswer& answer = answers[sql];
    answer = {};
    for (const std::string& name : columns) answer.columns.push_back({name});
    answer.rows = std::move(rows);
    return answer;
  }
  std::vector<std::string> TakeLog() { return std::exchange(log, {}); }
};

// The server behind the library of the client whose folder is `home`, as it was made.
inline TFakeOracle& FakeOracleOf(const std::string& home) {
  void* library = dlopen((home + "/lib/libclntsh.so").c_str(), RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) throw std::runtime_error(dlerror());
  auto server = reinterpret_cast<TFakeOracle* (*)()>(dlsym(library, "FakeOracle"))();
  *server = {};
  return *server;
}

}  // namespace velmora::testing
