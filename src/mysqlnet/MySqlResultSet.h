// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The rows of a query's result.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "mysqlnet/MySqlSession.h"

namespace velmora {

// What a server tells about a column. Servers before 4.1 have no character set and no names but `table` and `name`.
struct TMySqlColumn {
  std::string database;
  std::string table;
  std::string org_table;
  std::string name;
  std::string org_name;
  int type = 0;
  unsigned flags = 0;
  unsigned charset = 0;
  std::uint64_t length = 0;
  int decimals = 0;
};

// Reads the columns when it is made, then rows one by one from the wire, or all of them at once into memory. As long as
// rows are to be read, the session must live and can do nothing else.
//
// Errors are EMySqlException. What the server reports ends the result; after any other one the session is lost.
class TMySqlResultSet {
 public:
  // Of the query whose head the session has just read; it must have a result.
  explicit TMySqlResultSet(TMySqlSession& session);
  // Rows that were not read stay on the wire; then the session can only be closed.
  ~TMySqlResultSet() = default;
  TMySqlResultSet(const TMySqlResultSet&) = delete;
  TMySqlResultSet& operator=(const TMySqlResultSet&) = delete;

  const std::vector<TMySqlColumn>& Columns() const { return columns_; }

  // Goes to the next row, the first one at first; false after the last.
  bool Next();
  // Of the current row, until the next operation; nothing is null.
  std::optional<std::string_view> Value(std::size_t column) const;

  // Reads the rows that are still to come into memory, up to the session's limit; Next then goes through them.
  void FetchAll();
  std::size_t RowCount() const { return rows_.size(); }  // rows in memory
  void First() { row_ = 0; }                             // of those, the first is next

  void Skip();  // throws the rows away that are still to come

 private:
  struct TCell {
    std::size_t start;
    std::size_t length;
    bool null;
  };

  static bool NextCell(std::string_view row, std::size_t& position, TCell& cell);

  void ReadColumns();
  TMySqlColumn ReadColumn();
  TMySqlColumn ReadColumn41();
  TMySqlColumn ReadOldColumn();
  std::string ReadText();
  bool ReadRow();  // of the wire, into the channel's buffer; false at the end
  bool ReadRowInto(std::string& row);
  bool IsEnd(std::string_view packet) const;
  void TakeEnd();
  void CutUp(std::string_view row);
  template <class Read>
  void Guarded(Read read);

  TMySqlSession& session_;
  std::vector<TMySqlColumn> columns_;
  std::vector<TCell> cells_;
  std::string_view current_;
  std::vector<std::string> rows_;
  std::size_t row_ = 0;
  std::size_t kept_size_ = 0;
  bool kept_ = false;
  bool end_ = false;
};

}  // namespace velmora
