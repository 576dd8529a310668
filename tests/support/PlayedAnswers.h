// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What a played server or driver answers, as a file that people read and write:
//
//   # A note.
//   query select * from [t]
//     id int | name nvarchar(9)
//     1      | Łódź
//     2      | null
//   query columns.sql
//     COLUMN_NAME nvarchar(128) | IsIdentity int
//   of t
//     id | 1
//   query drop table [t]
//   error 547 The statement conflicted.
//   query delete from [t]
//   affected 2
//
// The first of the indented lines has the columns, each with its type; the others are rows, whose last fields may be
// left out where they are null. A field in double quotes keeps its blanks, and 0x00FF are bytes. "16 x a# int; b# int"
// stands for the columns a1, b1, a2 and so on. A query that ends in ".sql" stands in a file beside this one; where it
// has "%s", each "of" gives a name, and the rows of the answer for that name.

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace velmora::testing {

struct TPlayedAnswer {
  struct TColumn {
    std::string name, type;
  };
  using TRow = std::vector<std::optional<std::string>>;

  std::vector<TColumn> columns;  // none: the statement gives no rows
  std::vector<TRow> rows;        // each as long as the columns
  std::int64_t affected = 0;
  int error = 0;  // 0: none
  std::string message;
};

// By query. Raises std::runtime_error for a line that it cannot read.
using TPlayedAnswers = std::map<std::string, TPlayedAnswer>;
TPlayedAnswers ReadPlayedAnswers(const std::string& file);

}  // namespace velmora::testing
