#pragma once

// What the server keeps: its catalog and its rows, in a SQLite file whose tables have the names of the catalog's own
// views, so that catalog queries run on it as they are written.

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "support/tds/TdsTypes.h"

namespace velmora::testing {

using TTdsValue = std::optional<std::string>;

struct TTdsColumn {
  std::string name;
  TTdsType type;
};

struct TTdsResult {
  std::vector<TTdsColumn> columns;  // none: the statement gives no rows
  std::vector<std::vector<TTdsValue>> rows;
  std::int64_t affected = 0;
};

// One session's view of the file; what it changes in a transaction is seen by others once that has ended.
class TTdsCatalog {
 public:
  explicit TTdsCatalog(const std::string& folder);

  // All statements of a text, "select top n" and 0x literals included; raises std::runtime_error. `values` are bound
  // to the parameters of each.
  std::vector<TTdsResult> Run(const std::string& sql, const std::vector<TTdsValue>& values = {});
  TTdsResult RunOne(const std::string& sql, const std::vector<TTdsValue>& values = {});

 private:
  friend class TTdsTable;
  struct TClose {
    void operator()(sqlite3* file) const { sqlite3_close_v2(file); }
  };

  std::unique_ptr<sqlite3, TClose> file_;
};

struct TTdsIndexFlags {
  bool unique = false;
  bool clustered = false;
};

// Describes a table to the catalog, and makes it, piece by piece.
class TTdsTable {
 public:
  TTdsTable(TTdsCatalog& catalog, const std::string& name, const std::string& kind = "U");

  // `type` as in "nvarchar(40)" or "int identity"; `nullable` is the word of IS_NULLABLE.
  TTdsTable& Column(const std::string& name, const std::string& type, const std::string& nullable = "YES");
  TTdsTable& Default(const std::string& name, const std::string& column, const std::string& text);
  // A key column is a name, with " desc" behind it or not.
  TTdsTable& Index(const std::string& name, const std::vector<std::string>& keys, TTdsIndexFlags flags = {});
  TTdsTable& Primary(const std::string& name, const std::vector<std::string>& keys, bool clustered = true);
  TTdsTable& Unique(const std::string& name, const std::vector<std::string>& keys);
  TTdsTable& Foreign(const std::string& name, const std::vector<std::string>& local, const std::string& table,
                     const std::vector<std::string>& foreign);
  TTdsTable& Check(const std::string& name, const std::string& text, const std::string& column = "");
  // Anything else that the catalog lists among the constraints.
  TTdsTable& Constraint(const std::string& name, int status, const std::string& column, const std::string& text);
  TTdsTable& Row(const std::vector<TTdsValue>& values);

 private:
  TTdsTable& Write(const std::string& sql, std::vector<TTdsValue> values);  // ?1 is the table's id

  TTdsCatalog& catalog_;
  std::string name_, id_;
};

// A name in the quotes that SQLite reads.
std::string QuotedTdsName(const std::string& name);

}  // namespace velmora::testing
