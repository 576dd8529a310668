// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What the providers of files and folders have in common below their statements: named tables with a structure and
// rows. A reader of a format implements this and knows nothing of statements.

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "core/Dataset.h"
#include "formats/port/Provider.h"

namespace velmora {

// A foreign key in SQL's sense.
struct TFileReference {
  std::string name;
  TStringList columns;
  std::string parent;
  TStringList parent_columns;
  bool enforced = true;
  std::string on_update{};  // "CASCADE", "SET NULL", "NO ACTION", as in the schema rowset FOREIGN_KEYS
  std::string on_delete{};
};

// By column, of the table itself under the empty name, then by the property's name in the file.
using TFileProperties = std::map<std::string, std::map<std::string, std::string>>;

struct TFileTable {
  std::vector<TOLEDBColumnRow> columns{};
  std::vector<TOLEDBIndexRow> indexes{};
  std::vector<TFieldDef> fields{};       // one per column, in their order
  std::vector<bool> is_autoincrement{};  // one per field
  TStringList warnings{};                // of what was passed over, for the user
  // Of formats that have them; providers do not hand them on.
  TFileProperties properties{};
  std::vector<TFileReference> references{};
};

struct TFileRows {
  TRowsOfValues rows;
  std::vector<std::int64_t> numbers;  // of the records, ascending; none: they are 1, 2, 3 ...
};

inline constexpr std::int64_t kAllRows = -1;

// A table is also found by its name in other letter case. Errors name the file and the fault. A table that cannot be
// read does not keep the others from being read.
class TFileReader {
 public:
  virtual ~TFileReader() = default;
  virtual std::vector<TOLEDBTableRow> Tables() = 0;
  virtual TFileTable Structure(const std::string& table) = 0;                // raises for an unknown table
  virtual TFileRows Rows(const std::string& table, std::int64_t limit) = 0;  // the first `limit`, or kAllRows
};

using TFileReaderMaker = std::function<std::unique_ptr<TFileReader>()>;  // opens; raises when it cannot

}  // namespace velmora
