#pragma once

// What the providers of files and folders have in common below their statements: named tables with a structure and
// rows. A reader of a format implements this and knows nothing of statements.

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "core/Dataset.h"
#include "formats/port/Provider.h"

namespace velmora {

struct TFileTable {
  std::vector<TOLEDBColumnRow> columns;
  std::vector<TOLEDBIndexRow> indexes;
  std::vector<TFieldDef> fields;       // one per column, in their order
  std::vector<bool> is_autoincrement;  // one per field
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
