// SPDX-License-Identifier: GPL-3.0-or-later
#include "odbc/OdbcCatalog.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <limits>
#include <map>
#include <optional>
#include <set>
#include <utility>

#include "odbc/OdbcRows.h"
#include "odbc/OdbcStatements.h"
#include "odbc/OdbcTypes.h"
#include "util/Text.h"

namespace velmora {

namespace {

// --- Rows of the catalog calls. Columns count from 1, as in their descriptions; drivers may leave out the last ones.

constexpr std::size_t kCatalog = 1;  // of all the calls
constexpr std::size_t kTable = 3;

std::optional<std::string> ValueAt(const TOdbcTexts& row, std::size_t column) {
  return column <= row.size() ? row[column - 1] : std::nullopt;
}

std::string TextAt(const TOdbcTexts& row, std::size_t column) { return ValueAt(row, column).value_or(""); }

std::optional<std::int64_t> NumberAt(const TOdbcTexts& row, std::size_t column) {
  const std::string text = Trim(TextAt(row, column));
  std::int64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

// As many as fit, and none below 0.
template <class T>
T ClippedAt(const TOdbcTexts& row, std::size_t column) {
  return static_cast<T>(std::clamp<std::int64_t>(NumberAt(row, column).value_or(0), 0, std::numeric_limits<T>::max()));
}

bool IsMissing(const EOdbcError& error) {  // a call that the driver does not have, or not yet
  return error.State() == "IM001" || error.State() == "HYC00" || error.State() == "S1C00";
}

// The rows of a catalog call, nothing where the driver has no such call. Each call has a statement of its own: used a
// second time, one shows some drivers' old columns.
template <class Call>
std::optional<std::vector<TOdbcTexts>> RowsOfKnown(const TOdbcConnection& connection, Call call) {
  try {
    TOdbcStatement statement(connection);
    const SQLRETURN result = call(statement.Get());
    if (result == SQL_NO_DATA) return std::vector<TOdbcTexts>();
    statement.Check(result);
    return FetchOdbcTexts(statement);
  } catch (const EOdbcError& error) {
    if (IsMissing(error)) return std::nullopt;
    throw;
  }
}

template <class Call>
std::vector<TOdbcTexts> RowsOf(const TOdbcConnection& connection, Call call) {
  return RowsOfKnown(connection, std::move(call)).value_or(std::vector<TOdbcTexts>());
}

// --- Catalogs and tables

// Empty: the driver has none. Without a current database the one for MariaDB gives the word null.
std::string CurrentCatalog(const TOdbcConnection& connection) {
  const std::string catalog = connection.CurrentCatalog();
  return catalog == "null" ? "" : catalog;
}

// An argument that may be left out.
struct TArgument {
  explicit TArgument(const std::string& value)
      : text(value.empty() ? nullptr : OdbcText(value)), length(OdbcLength(value)) {}
  SQLCHAR* text;
  SQLSMALLINT length;
};

// --- Calls about a table

SQLRETURN CallColumns(SQLHSTMT statement, const TArgument& in, const std::string& pattern) {
  return SQLColumns(statement, in.text, in.length, nullptr, 0, OdbcText(pattern), OdbcLength(pattern), nullptr, 0);
}

SQLRETURN CallPrimaryKey(SQLHSTMT statement, const TArgument& in, const std::string& table) {
  return SQLPrimaryKeys(statement, in.text, in.length, nullptr, 0, OdbcText(table), OdbcLength(table));
}

SQLRETURN CallForeignKeys(SQLHSTMT statement, const TArgument& in, const std::string& table) {
  return SQLForeignKeys(statement, nullptr, 0, nullptr, 0, nullptr, 0, in.text, in.length, nullptr, 0, OdbcText(table),
                        OdbcLength(table));
}

SQLRETURN CallStatistics(SQLHSTMT statement, const TArgument& in, const std::string& table) {
  return SQLStatistics(statement, in.text, in.length, nullptr, 0, OdbcText(table), OdbcLength(table), SQL_INDEX_ALL,
                       SQL_QUICK);
}

// Drops rows of other catalogs: the argument for it is a pattern to some calls and drivers. Some drivers name the
// current one in other letters than their rows.
void KeepIn(std::vector<TOdbcTexts>& rows, const std::string& catalog, std::size_t column = kCatalog) {
  if (catalog.empty()) return;
  const bool exact = std::ranges::any_of(rows, [&](const TOdbcTexts& row) { return TextAt(row, column) == catalog; });
  std::erase_if(rows, [&](const TOdbcTexts& row) {
    const std::string own = TextAt(row, column);
    return !own.empty() && !(exact ? own == catalog : SameText(own, catalog));
  });
}

// The argument for the table is a pattern too: a_b gives those of aXb as well.
void KeepOf(std::vector<TOdbcTexts>& rows, const std::string& catalog, const std::string& table) {
  std::erase_if(rows, [&](const TOdbcTexts& row) { return TextAt(row, kTable) != table; });
  KeepIn(rows, catalog);
}

// --- Columns

// `name` with the driver's escape in front of the letters that a pattern has for its own.
std::string EscapedPattern(const TOdbcConnection& connection, const std::string& name) {
  const std::string escape = connection.Info(SQL_SEARCH_PATTERN_ESCAPE);
  if (escape.empty()) return name;
  std::string pattern = StrReplace(name, escape, escape + escape);
  for (const char* letter : {"_", "%"})
    if (escape != letter) pattern = StrReplace(pattern, letter, std::string(escape).append(letter));
  return pattern;
}

// "No default" as the drivers put it.
std::optional<std::string> DefaultAt(const TOdbcTexts& row, std::size_t column) {
  std::optional<std::string> text = ValueAt(row, column);
  if (text == "NULL" || text == "TRUNCATED") return std::nullopt;
  return text;
}

// The number of the type, as far as it is one.
int TypeOf(const TOdbcTexts& row) {
  constexpr std::size_t kType = 5;
  return static_cast<int>(std::clamp<std::int64_t>(NumberAt(row, kType).value_or(SQL_UNKNOWN_TYPE),
                                                   std::numeric_limits<SQLSMALLINT>::min(),
                                                   std::numeric_limits<SQLSMALLINT>::max()));
}

TOLEDBColumnRow ColumnOf(const TOdbcTexts& row, bool is_unsigned) {
  constexpr std::size_t kName = 4, kSize = 7, kDigits = 9, kNullable = 11, kDefault = 13;
  TOLEDBColumnRow column;
  column.TABLE_NAME = TextAt(row, kTable);
  column.COLUMN_NAME = TextAt(row, kName);
  column.COLUMN_DEFAULT = DefaultAt(row, kDefault);
  column.IS_NULLABLE = NumberAt(row, kNullable).value_or(SQL_NULLABLE_UNKNOWN) != SQL_NO_NULLS;
  const TOdbcType* type = FindOdbcType(TypeOf(row));
  if (type == nullptr || type->db_type == 0) {
    column.DATA_TYPE = UnknownDbType(TypeOf(row));
    return column;
  }
  column.DATA_TYPE = is_unsigned ? type->db_type_unsigned : type->db_type;
  column.COLUMN_FLAGS = type->flags;
  if (IsOdbcSized(*type)) {
    column.CHARACTER_MAXIMUM_LENGTH = ClippedAt<std::uint32_t>(row, kSize);
  } else {
    column.NUMERIC_PRECISION = ClippedAt<std::uint16_t>(row, kSize);
    // Drivers have digits for types that know none.
    if (IsOdbcDecimal(*type)) column.NUMERIC_SCALE = ClippedAt<std::int16_t>(row, kDigits);
  }
  return column;
}

bool IsInteger(const TOdbcTexts& row) {
  const TOdbcType* type = FindOdbcType(TypeOf(row));
  return type != nullptr && IsOdbcInteger(*type);
}

// What a query without rows tells of the table's columns.
std::vector<TOdbcColumn> ProbedColumns(const TOdbcConnection& connection, const std::string& table) {
  TOdbcStatement statement(connection);
  statement.Execute("select * from " + OdbcName(table, connection.Info(SQL_IDENTIFIER_QUOTE_CHAR)) + " where 1=0");
  return OdbcColumnsOf(statement);
}

// The names of columns that have no sign; right for whole numbers only, as some drivers give it for texts as well.
std::set<std::string> UnsignedColumns(const TOdbcConnection& connection, const std::string& table) {
  std::set<std::string> names;
  for (const TOdbcColumn& column : ProbedColumns(connection, table))
    if (column.is_unsigned) names.insert(column.name);
  return names;
}

// --- Indexes

TOLEDBIndexRow IndexOf(const TOdbcTexts& row) {
  constexpr std::size_t kNonUnique = 4, kName = 6, kOrdinal = 8, kColumn = 9;
  TOLEDBIndexRow index;
  index.TABLE_NAME = TextAt(row, kTable);
  index.INDEX_NAME = TextAt(row, kName);
  index.UNIQUE = NumberAt(row, kNonUnique) == 0;
  index.ORDINAL_POSITION = ClippedAt<std::uint32_t>(row, kOrdinal);
  index.COLUMN_NAME = TextAt(row, kColumn);
  return index;
}

std::vector<TOLEDBIndexRow> Statistics(const TOdbcConnection& connection, const std::string& catalog,
                                       const std::string& table) {
  constexpr std::size_t kName = 6, kType = 7, kOrdinal = 8;
  const TArgument in(catalog);
  std::vector<TOdbcTexts> rows =
      RowsOf(connection, [&](SQLHSTMT statement) { return CallStatistics(statement, in, table); });
  KeepOf(rows, catalog, table);
  std::vector<TOLEDBIndexRow> indexes;
  std::map<std::string, std::uint32_t> counts;
  for (const TOdbcTexts& row : rows) {
    if (NumberAt(row, kType) == SQL_TABLE_STAT || TextAt(row, kName).empty()) continue;
    TOLEDBIndexRow& index = indexes.emplace_back(IndexOf(row));
    const std::uint32_t count = ++counts[index.INDEX_NAME];
    if (!NumberAt(row, kOrdinal)) index.ORDINAL_POSITION = count;
  }
  return indexes;
}

struct TPrimaryKey {
  std::string name;                                           // may be empty
  std::vector<std::pair<std::int64_t, std::string>> columns;  // with the place that the driver gives them
};

// The first key that the driver names, should it name several.
TPrimaryKey PrimaryKey(const TOdbcConnection& connection, const std::string& catalog, const std::string& table) {
  constexpr std::size_t kColumn = 4, kPlace = 5, kName = 6;
  const TArgument in(catalog);
  std::vector<TOdbcTexts> rows =
      RowsOf(connection, [&](SQLHSTMT statement) { return CallPrimaryKey(statement, in, table); });
  KeepOf(rows, catalog, table);
  TPrimaryKey key;
  if (rows.empty()) return key;
  key.name = TextAt(rows.front(), kName);
  for (const TOdbcTexts& row : rows)
    if (TextAt(row, kName) == key.name)
      key.columns.emplace_back(NumberAt(row, kPlace).value_or(std::ssize(key.columns) + 1), TextAt(row, kColumn));
  return key;
}

std::set<std::string> NamesOf(const TPrimaryKey& key) {
  std::set<std::string> names;
  for (const auto& [place, name] : key.columns) names.insert(name);
  return names;
}

// The unique index over the columns of the key; empty when there is none. Their order does not count: some drivers give
// the columns of a key in that of the table.
std::string UniqueIndexOver(const std::vector<TOLEDBIndexRow>& indexes, const std::set<std::string>& columns) {
  for (const TOLEDBIndexRow& candidate : indexes) {
    std::set<std::string> own;
    for (const TOLEDBIndexRow& row : indexes)
      if (row.INDEX_NAME == candidate.INDEX_NAME) own.insert(row.COLUMN_NAME);
    if (candidate.UNIQUE && own == columns) return candidate.INDEX_NAME;
  }
  return {};
}

void AddKey(std::vector<TOLEDBIndexRow>& indexes, TPrimaryKey key, const std::string& table) {
  constexpr char kUnnamed[] = "PRIMARY";
  std::ranges::stable_sort(key.columns, {}, [](const auto& column) { return column.first; });
  std::uint32_t place = 0;
  for (const auto& [given, name] : key.columns)
    indexes.push_back({table, key.name.empty() ? kUnnamed : key.name, true, true, ++place, name});
}

void MarkPrimaryKey(std::vector<TOLEDBIndexRow>& indexes, const TPrimaryKey& key, const std::string& table) {
  if (key.columns.empty()) return;
  const bool named = !key.name.empty() && std::ranges::any_of(indexes, [&](const TOLEDBIndexRow& row) {
    return row.INDEX_NAME == key.name;
  });
  const std::string name = named ? key.name : UniqueIndexOver(indexes, NamesOf(key));
  if (name.empty()) AddKey(indexes, key, table);
  for (TOLEDBIndexRow& row : indexes)
    if (!name.empty() && row.INDEX_NAME == name) row.PRIMARY_KEY = true;
}

// --- Rows as they are

struct TCallRow {
  ECatalogRows kind;
  SQLRETURN (*call)(SQLHSTMT statement, const TArgument& in, const std::string& table);
  bool takes_pattern;
  std::size_t catalog;  // the columns with the names of catalog and table
  std::size_t table;
  std::vector<const char*> fields;
};

const TCallRow& CallOf(ECatalogRows kind) {
  static const TCallRow kCalls[] = {
      {ECatalogRows::Columns,
       CallColumns,
       true,
       kCatalog,
       kTable,
       {"TABLE_CAT", "TABLE_SCHEM", "TABLE_NAME", "COLUMN_NAME", "DATA_TYPE", "TYPE_NAME", "COLUMN_SIZE",
        "BUFFER_LENGTH", "DECIMAL_DIGITS", "NUM_PREC_RADIX", "NULLABLE", "REMARKS", "COLUMN_DEF", "SQL_DATA_TYPE",
        "SQL_DATETIME_SUB", "CHAR_OCTET_LENGTH", "ORDINAL_POSITION", "IS_NULLABLE"}},
      {ECatalogRows::PrimaryKey,
       CallPrimaryKey,
       false,
       kCatalog,
       kTable,
       {"TABLE_CAT", "TABLE_SCHEM", "TABLE_NAME", "COLUMN_NAME", "KEY_SEQ", "PK_NAME"}},
      {ECatalogRows::ForeignKeys,
       CallForeignKeys,
       false,
       5,
       7,
       {"PKTABLE_CAT", "PKTABLE_SCHEM", "PKTABLE_NAME", "PKCOLUMN_NAME", "FKTABLE_CAT", "FKTABLE_SCHEM", "FKTABLE_NAME",
        "FKCOLUMN_NAME", "KEY_SEQ", "UPDATE_RULE", "DELETE_RULE", "FK_NAME", "PK_NAME", "DEFERRABILITY"}},
      {ECatalogRows::Statistics,
       CallStatistics,
       false,
       kCatalog,
       kTable,
       {"TABLE_CAT", "TABLE_SCHEM", "TABLE_NAME", "NON_UNIQUE", "INDEX_QUALIFIER", "INDEX_NAME", "TYPE",
        "ORDINAL_POSITION", "COLUMN_NAME", "ASC_OR_DESC", "CARDINALITY", "PAGES", "FILTER_CONDITION"}}};
  return *std::ranges::find(kCalls, kind, &TCallRow::kind);
}

// Behind each row of a column what a query tells of it; drivers may spell its name there in other letters.
void AddProbed(const std::vector<TOdbcColumn>& probed, std::size_t width, std::vector<TOdbcTexts>& rows) {
  constexpr std::size_t kName = 4;
  for (TOdbcTexts& row : rows) {
    row.resize(width);
    const auto found = std::ranges::find_if(
        probed, [&](const TOdbcColumn& column) { return SameText(column.name, TextAt(row, kName)); });
    const bool there = found != probed.end();
    row.emplace_back(there && found->is_unsigned && IsInteger(row) ? "1" : "0");
    row.emplace_back(there && found->is_autoincrement ? "1" : "0");
    row.emplace_back(there ? std::optional(std::to_string(found->size)) : std::nullopt);
  }
}

TMemDataset::TRow ValuesOf(TOdbcTexts texts, std::size_t width) {
  texts.resize(width);
  TMemDataset::TRow row;
  row.reserve(width);
  for (std::optional<std::string>& text : texts) row.push_back(text ? TVariant(std::move(*text)) : TVariant());
  return row;
}

}  // namespace

TOLEDBRowset OdbcCatalogRows(const TOdbcConnection& connection, ECatalogRows kind, const std::string& table) {
  const TCallRow& call = CallOf(kind);
  const std::string catalog = CurrentCatalog(connection);
  const std::string name = call.takes_pattern ? EscapedPattern(connection, table) : table;
  const TArgument in(catalog);
  auto rows = RowsOfKnown(connection, [&](SQLHSTMT statement) { return call.call(statement, in, name); });
  if (!rows) return {};
  std::erase_if(*rows, [&](const TOdbcTexts& row) { return TextAt(row, call.table) != table; });
  KeepIn(*rows, catalog, call.catalog);
  std::size_t width = rows->empty() ? call.fields.size() : 0;
  for (const TOdbcTexts& row : *rows) width = std::max(width, std::min(row.size(), call.fields.size()));
  TOLEDBRowset rowset;
  for (std::size_t i = 0; i < width; ++i) rowset.fields.push_back({call.fields[i]});
  if (kind == ECatalogRows::Columns) {
    AddProbed(ProbedColumns(connection, table), width, *rows);
    for (const char* field : {"IS_UNSIGNED", "IS_AUTOINCREMENT", "RESULT_SIZE"}) rowset.fields.push_back({field});
  }
  for (TOdbcTexts& row : *rows) rowset.rows.push_back(ValuesOf(std::move(row), rowset.fields.size()));
  return rowset;
}

TStringList OdbcCatalogs(const TOdbcConnection& connection) {
  const std::string all = SQL_ALL_CATALOGS, none;
  TStringList catalogs;
  for (const TOdbcTexts& row : RowsOf(connection, [&](SQLHSTMT statement) {
         return SQLTables(statement, OdbcText(all), OdbcLength(all), OdbcText(none), 0, OdbcText(none), 0,
                          OdbcText(none), 0);
       })) {
    std::string name = TextAt(row, kCatalog);
    if (!name.empty() && std::ranges::find(catalogs, name) == catalogs.end()) catalogs.push_back(std::move(name));
  }
  return catalogs;
}

std::vector<TOLEDBTableRow> OdbcTables(const TOdbcConnection& connection) {
  constexpr std::size_t kType = 4;
  const std::string catalog = CurrentCatalog(connection);
  const TArgument in(catalog);
  std::vector<TOdbcTexts> rows = RowsOf(connection, [&](SQLHSTMT statement) {
    return SQLTables(statement, in.text, in.length, nullptr, 0, nullptr, 0, nullptr, 0);
  });
  KeepIn(rows, catalog);
  std::vector<TOLEDBTableRow> tables;
  tables.reserve(rows.size());
  for (const TOdbcTexts& row : rows) tables.push_back({TextAt(row, kTable), TextAt(row, kType)});
  return tables;
}

std::vector<TOLEDBColumnRow> OdbcColumns(const TOdbcConnection& connection, const std::string& table) {
  constexpr std::size_t kName = 4, kOrdinal = 17;
  const std::string catalog = CurrentCatalog(connection);
  const std::string pattern = EscapedPattern(connection, table);
  const TArgument in(catalog);
  std::vector<TOdbcTexts> rows =
      RowsOf(connection, [&](SQLHSTMT statement) { return CallColumns(statement, in, pattern); });
  KeepOf(rows, catalog, table);
  const std::set<std::string> without_sign =
      std::ranges::any_of(rows, IsInteger) ? UnsignedColumns(connection, table) : std::set<std::string>();
  std::vector<TOLEDBColumnRow> columns;
  for (const TOdbcTexts& row : rows) {
    TOLEDBColumnRow& column = columns.emplace_back(ColumnOf(row, without_sign.contains(TextAt(row, kName))));
    column.ORDINAL_POSITION =
        NumberAt(row, kOrdinal) ? ClippedAt<std::uint32_t>(row, kOrdinal) : static_cast<std::uint32_t>(columns.size());
  }
  return columns;
}

std::vector<TOLEDBIndexRow> OdbcIndexes(const TOdbcConnection& connection, const std::string& table) {
  const std::string catalog = CurrentCatalog(connection);
  std::vector<TOLEDBIndexRow> indexes = Statistics(connection, catalog, table);
  MarkPrimaryKey(indexes, PrimaryKey(connection, catalog, table), table);
  return indexes;
}

}  // namespace velmora
