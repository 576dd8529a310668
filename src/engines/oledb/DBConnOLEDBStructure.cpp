// SPDX-License-Identifier: GPL-3.0-or-later

// The structure of a table out of the provider's schema rowsets.

#include <algorithm>

#include "core/Meta.h"
#include "engines/oledb/DBConnOLEDB.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kWrongTableOfColumns[] = "Wrong table in columns fetch!";
constexpr char kWrongTableOfIndexes[] = "Wrong table in indexes fetch!";
constexpr char kUnknownType[] = "Unknown data type for column %s in table %s: %d";
constexpr char kProbe[] = "select top 1 * from %s order by 1";

constexpr char kJetNo[] = "=No";          // as Jet says the default of a yes/no column
constexpr char kFoxProNull[] = ".NULL.";  // as FoxPro says that there is no default

// A type of the provider as a neutral type; a text is told apart further by what COLUMN_FLAGS say.
struct TTypeRow {
  std::uint16_t data_type;
  TNeutralType plain;
  TNeutralType fixed = plain;
  TNeutralType long_text = plain;
};

// Deliberate: a DBTYPE_DATE is a date without a time and a DBTYPE_DBTIMESTAMP a row version; both decide how such
// columns travel to other engines.
constexpr TTypeRow kTypes[] = {
    {kDbTypeI2, ntI2},
    {kDbTypeI4, ntI4},
    {kDbTypeR4, ntFloat},
    {kDbTypeR8, ntDouble},
    {kDbTypeCy, ntMoneyMsSql},
    {kDbTypeDate, ntDate},
    {kDbTypeBool, ntBool},
    {kDbTypeDecimal, ntDecimal},
    {kDbTypeI1, ntI1},
    {kDbTypeUI1, ntUI1},
    {kDbTypeUI2, ntUI2},
    {kDbTypeUI4, ntUI4},
    {kDbTypeI8, ntI8},
    {kDbTypeUI8, ntUI8},
    {kDbTypeGuid, ntUidMsSql},
    {kDbTypeBytes, ntBytes},
    {kDbTypeStr, ntVarChar, ntChar, ntText},
    {kDbTypeBstr, ntNVarChar, ntNChar, ntNTextMsSql},
    {kDbTypeWStr, ntNVarChar, ntNChar, ntNTextMsSql},
    {kDbTypeNumeric, ntDecimal},
    {kDbTypeDBDate, ntDate},
    {kDbTypeDBTime, ntTime},
    {kDbTypeDBTimeStamp, ntTimestampMsSql},
};

TNeutralType NeutralTypeOf(const std::string& table, const TOLEDBColumnRow& row, bool national) {
  const bool wide = row.DATA_TYPE == kDbTypeBstr || row.DATA_TYPE == kDbTypeWStr;
  const std::uint16_t wanted = wide && !national ? std::uint16_t{kDbTypeStr} : row.DATA_TYPE;
  const auto* type = std::ranges::find(kTypes, wanted, &TTypeRow::data_type);
  if (type == std::end(kTypes)) RaiseError(Format(kUnknownType, row.COLUMN_NAME, table, row.DATA_TYPE));
  if ((row.COLUMN_FLAGS & kColumnIsFixedLength) != 0) return type->fixed;
  return (row.COLUMN_FLAGS & kColumnIsLong) != 0 ? type->long_text : type->plain;
}

}  // namespace

void TDBConnOLEDB::FetchTableStructure(const std::string& table) {
  // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): the argument may be a text of the store
  const std::string name = table;
  const std::vector<TOLEDBColumnRow> columns = data_source_.Session().GetColumns(name);
  meta().InvalidateTable(name);
  meta().GotoTable(name);
  const std::unique_ptr<TOLEDBDataSet> probe = OpenRows(Format(kProbe, QuoteName(name)));
  StoreColumns(name, columns, *probe);
  StoreKeys(name, data_source_.Session().GetIndexes(name));
}

// Columns go by their ordinals, however the provider has arranged them. Deliberate: a gap in the ordinals ends the
// columns, without a word.
void TDBConnOLEDB::StoreColumns(const std::string& table, const std::vector<TOLEDBColumnRow>& rows,
                                const TOLEDBDataSet& probe) {
  std::uint32_t last = 0;
  for (const TOLEDBColumnRow& row : rows) {
    if (row.TABLE_NAME != table) RaiseError(kWrongTableOfColumns);
    for (const TOLEDBColumnRow& next : rows) {
      if (next.ORDINAL_POSITION != last + 1) continue;
      StoreColumn(table, next, probe);
      last = next.ORDINAL_POSITION;
    }
  }
}

void TDBConnOLEDB::StoreColumn(const std::string& table, const TOLEDBColumnRow& row, const TOLEDBDataSet& probe) {
  const TNeutralType datatype = NeutralTypeOf(table, row, NationalTypes);
  TColumnTypeInfo type{};
  ColumnTypeInfo(datatype, type);
  TColumnRow& column = meta().tColumns.Append();
  column.name = row.COLUMN_NAME;
  column.datatype = datatype;
  column.size = 0;
  if (type.has_precision) {
    column.size = row.NUMERIC_PRECISION;
    column.precision = row.NUMERIC_SCALE;
  } else if (type.has_length) {
    column.size = row.CHARACTER_MAXIMUM_LENGTH > 0 ? std::int64_t{row.CHARACTER_MAXIMUM_LENGTH} : -1;
  }
  column.notnull = !row.IS_NULLABLE;
  column.default_ = DefaultOf(row);
  column.autoinc = probe.ColumnInfo(row.COLUMN_NAME).DBCOLUMN_ISAUTOINCREMENT;
  meta().tColumns.Post();
}

std::string TDBConnOLEDB::DefaultOf(const TOLEDBColumnRow& row) {
  std::string text = row.COLUMN_DEFAULT.value_or("");
  if (text == kJetNo) return "0";  // deliberate: no other text of a yes/no default is translated
  if (GetEngine() == kEngineFoxPro && text == kFoxProNull) return {};
  return text;
}

void TDBConnOLEDB::StoreKeys(const std::string& table, const std::vector<TOLEDBIndexRow>& rows) {
  for (const TOLEDBIndexRow& row : rows) {
    if (row.TABLE_NAME != table) RaiseError(kWrongTableOfIndexes);
    if (row.ORDINAL_POSITION == 1) StoreKey(row, rows);
  }
}

// Deliberate: the columns of an index count as far as they come in their order, and one whose name holds a backtick,
// which the store's does not, is left without columns.
void TDBConnOLEDB::StoreKey(const TOLEDBIndexRow& head, const std::vector<TOLEDBIndexRow>& rows) {
  TKeyRow& key = meta().tKeys.Append();
  key.name = RemoveChar(head.INDEX_NAME, '`');
  key.primary = head.PRIMARY_KEY;
  key.unique = head.UNIQUE;
  meta().tKeys.Post();
  const std::string name = meta().tKeys.Current().name;
  std::uint32_t last = 0;
  for (const TOLEDBIndexRow& row : rows) {
    if (row.INDEX_NAME != name || row.ORDINAL_POSITION != last + 1) continue;
    meta().tKeyFields.Append().column = RemoveChar(row.COLUMN_NAME, '`');
    meta().tKeyFields.Post();
    last = row.ORDINAL_POSITION;
  }
}

}  // namespace velmora
