// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// An Oracle server behind a stand-in for its client library: it answers from a table, writes down what it is asked, and
// keeps count of what it has given out. The library is built from engines/server/fake; this is how tests reach into it.

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
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

  std::vector<std::string> TakeLog() { return std::exchange(log, {}); }
};

// The server behind the library of the client whose folder is `home`, as it was made.
TFakeOracle& FakeOracleOf(const std::string& home);

// Gives it answers that are written down, a line each, with commas between values and "-" for null:
//
//   table NAME        has an empty structure but for what follows
//   column NAME, TYPE, CHARACTERS, BYTES, PRECISION, SCALE, NULLABLE
//   index NAME, UNIQUENESS, COLUMN, DESCEND
//   constraint NAME, LETTER, CONDITION, COLUMN, FOREIGN TABLE, FOREIGN COLUMN
//   query SQL         is answered by what follows
//   columns NAME:TYPE, ...
//   row VALUE, ...
//   affected COUNT
//   error CODE, TEXT
//   lost              the server is gone once it has given the rows of the query, or the table's columns, so far
//
// What is missing at the end of a row is null. The dictionary's queries are those of a client that asks for one table,
// letter for letter.
void AddOracleAnswers(TFakeOracle& server, const std::string& text);

}  // namespace velmora::testing
