// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A data source behind an ODBC driver of the tests' own: it answers from a table, writes down what it is asked, and
// misbehaves as it is told. The driver is built from odbc/fake; this is how tests reach into it.

#include <dlfcn.h>

#include <cstddef>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "support/PlayedAnswers.h"

namespace velmora::testing {

// What a driver may do wrong when it gives a value.
enum class EOdbcFault {
  None,
  NegativeLength,  // one that means nothing
  WholeTooLong,    // a length beyond the room, without saying that the value was cut
  Endless,         // more and more parts of unknown length
  NoProgress,      // a part without anything in it
  UnknownLength    // of values that are whole
};

struct TFakeOdbc {
  struct TColumn {
    std::string name;
    int type = 12;  // as ODBC numbers them; a text
    bool is_unsigned = false;
    bool is_autoincrement = false;
  };
  using TRow = std::vector<std::optional<std::string>>;
  struct TMessage {
    std::string state;
    std::string text;
  };
  struct TAnswer {
    std::vector<TColumn> columns = {};  // none: the statement gives no rows
    std::vector<TRow> rows = {};
    long affected = 0;
    std::vector<TMessage> errors = {};      // of the execution
    std::vector<TAnswer> then = {};         // further results
    std::vector<TMessage> row_errors = {};  // of the call for a row after the last
  };

  // By statement, or by "tables", "catalogs", "columns PATTERN", "statistics TABLE", "primary keys TABLE". Others fail.
  std::map<std::string, TAnswer> answers;
  std::string catalog = "shop";  // the current one
  std::string quote = "`";
  EOdbcFault fault = EOdbcFault::None;
  bool whole_letters = false;  // parts end between letters
  bool gone = false;           // the server behind the driver

  std::vector<std::string> log;

  // Adds an answer of text columns.
  TAnswer& Add(const std::string& what, std::size_t columns, std::vector<TRow> rows = {}) {
    return answers[what] = {.columns = std::vector<TColumn>(columns, {"X"}), .rows = std::move(rows)};
  }
  // Adds answers that stand in a file. A type is a number, ",unsigned" or ",counted" after it; none is a text.
  void Add(const TPlayedAnswers& played) {
    for (const auto& [what, answer] : played) {
      answers[what] = {.rows = answer.rows};
      for (const auto& [name, type] : answer.columns)
        answers[what].columns.push_back(
            {name, type == name ? 12 : std::stoi(type), type.ends_with(",unsigned"), type.ends_with(",counted")});
    }
  }
  std::vector<std::string> TakeLog() { return std::exchange(log, {}); }
};

// What is behind the driver in the file `path`, as it was made.
inline TFakeOdbc& FakeOdbcOf(const std::string& path) {
  void* library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) throw std::runtime_error(dlerror());
  auto source = reinterpret_cast<TFakeOdbc* (*)()>(dlsym(library, "FakeOdbc"))();
  *source = {};
  return *source;
}

}  // namespace velmora::testing
