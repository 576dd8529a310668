// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The port to what serves an OLE DB connection here: schema rowsets, rows and statements, as the engines need
// them. The fields and their values are those of the published OLE DB schema rowsets (DBSCHEMA_CATALOGS, _TABLES,
// _COLUMNS, _INDEXES); all texts are UTF-8.

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/Dataset.h"
#include "formats/port/InitString.h"
#include "util/Lists.h"

namespace velmora {

class TFileReader;

// Values of DATA_TYPE.
enum TDBType : std::uint16_t {
  kDbTypeI2 = 2,
  kDbTypeI4 = 3,
  kDbTypeR4 = 4,
  kDbTypeR8 = 5,
  kDbTypeCy = 6,
  kDbTypeDate = 7,
  kDbTypeBstr = 8,
  kDbTypeBool = 11,
  kDbTypeDecimal = 14,
  kDbTypeI1 = 16,
  kDbTypeUI1 = 17,
  kDbTypeUI2 = 18,
  kDbTypeUI4 = 19,
  kDbTypeI8 = 20,
  kDbTypeUI8 = 21,
  kDbTypeGuid = 72,
  kDbTypeBytes = 128,
  kDbTypeStr = 129,
  kDbTypeWStr = 130,
  kDbTypeNumeric = 131,
  kDbTypeDBDate = 133,
  kDbTypeDBTime = 134,
  kDbTypeDBTimeStamp = 135
};

// Bits of COLUMN_FLAGS.
inline constexpr std::uint32_t kColumnIsFixedLength = 16;
inline constexpr std::uint32_t kColumnIsLong = 128;
// Of our own, for columns of sheets: some cells hold what is not of the column's kind, and is no value of it; one of
// these cells has more than 255 letters.
inline constexpr std::uint32_t kColumnIsMixed = 1U << 30U;
inline constexpr std::uint32_t kColumnIsMixedLong = 1U << 31U;

struct TOLEDBTableRow {
  std::string TABLE_NAME;
  std::string TABLE_TYPE;  // "TABLE", "VIEW", "SYSTEM TABLE", ...
};

struct TOLEDBColumnRow {
  std::string TABLE_NAME;
  std::string COLUMN_NAME;
  std::uint32_t ORDINAL_POSITION = 0;              // from 1
  std::optional<std::string> COLUMN_DEFAULT = {};  // as the source keeps it, quotes included
  std::uint32_t COLUMN_FLAGS = 0;
  bool IS_NULLABLE = true;
  std::uint16_t DATA_TYPE = 0;                 // a TDBType, or a number of the source's own that is none
  std::uint32_t CHARACTER_MAXIMUM_LENGTH = 0;  // characters or bytes; 0: no bound, or none known
  std::uint16_t NUMERIC_PRECISION = 0;
  std::int16_t NUMERIC_SCALE = 0;
};

struct TOLEDBIndexRow {
  std::string TABLE_NAME;
  std::string INDEX_NAME;
  bool PRIMARY_KEY = false;
  bool UNIQUE = false;
  std::uint32_t ORDINAL_POSITION = 0;  // of the column in the index, from 1
  std::string COLUMN_NAME;
  bool DESCENDING = false;  // what COLLATION says
  bool NOT_NULL = false;    // NULLS: a null in the column is refused
};

// What ODBC's catalog calls of these names say of a table.
enum class ECatalogRows { Columns, PrimaryKey, ForeignKeys, Statistics };

using TRowsOfValues = std::vector<TMemDataset::TRow>;

// What a statement that gives rows gave. Where `read_rows` is set the rows are not there yet: it is called once, when
// one is first asked for, while the provider lives; so a look at the fields alone costs no rows.
struct TOLEDBRowset {
  std::vector<TFieldDef> fields;
  std::vector<bool> is_autoincrement;  // DBCOLUMN_ISAUTOINCREMENT; one per field, or none at all
  TRowsOfValues rows;
  std::function<TRowsOfValues()> read_rows;
};

// One connection. Created for an initialisation string, not open. All raise EVelmora; errors of a client library keep
// their text. Calls other than Initialize and CreateDataSource need it open.
class TOLEDBProvider {
 public:
  virtual ~TOLEDBProvider() = default;  // closes, raising nothing

  virtual void Initialize() = 0;
  virtual void Uninitialize() = 0;  // nothing happens when it is not open
  virtual bool Initialized() const = 0;
  virtual void CreateDataSource();  // makes the empty database that the string names; raises where it cannot

  virtual TStringList Catalogs() = 0;
  virtual std::vector<TOLEDBTableRow> Tables() = 0;
  virtual std::vector<TOLEDBColumnRow> Columns(const std::string& table) = 0;  // in any order
  virtual std::vector<TOLEDBIndexRow> Indexes(const std::string& table) = 0;
  // The rows as they come, all values as texts, in the columns of the call's description, of which drivers may leave
  // out the last. Those of columns have what a query shows of them besides: IS_UNSIGNED and IS_AUTOINCREMENT ("0",
  // "1"), and RESULT_SIZE. No fields where the driver has no such call. Raises where the provider is not one of ODBC.
  virtual TOLEDBRowset CatalogRows(ECatalogRows kind, const std::string& table);
  virtual TOLEDBRowset Open(const std::string& sql) = 0;
  virtual std::int64_t Execute(const std::string& sql) = 0;  // rows affected
  virtual TStringList TakeWarnings() { return {}; }  // of what was passed over since the last call, for the user
  // What reads the files, which has more to say than rowsets; null for a provider of anything else.
  virtual TFileReader* Files() { return nullptr; }
  virtual void StartTransaction(std::uint32_t isolation) = 0;
  virtual void Commit() = 0;
};

using TOLEDBProviderMaker = std::function<std::unique_ptr<TOLEDBProvider>(const TInitString& properties)>;

}  // namespace velmora
