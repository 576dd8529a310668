// SPDX-License-Identifier: GPL-3.0-or-later
#include "foreign/OdbcFacts.h"

#include <algorithm>
#include <set>
#include <string_view>
#include <utility>

#include "engines/oledb/DBConnODBC.h"
#include "foreign/Sequences.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Lists.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kUnknownType[] = "its type, number %d, is not known";
constexpr char kTwoSchemas[] =
    "there are tables of this name in the schemas %s and %s, and a data source tells of both: name one whose user has "
    "one of them";
constexpr char kFilter[] = "it holds only rows with %s";
constexpr char kExpression[] = "it is over an expression: %s";

// --- Types, by their published numbers: those of ODBC, then those of the drivers for SQL Server.

// Which numbers of a column count.
enum class ESize { None, Length, Digits, Fraction };

struct TTypeRow {
  int type;
  EFamily family;
  EFamily family_unsigned;
  ESize size = ESize::None;
};

constexpr TTypeRow kTypes[] = {
    {-7, EFamily::Boolean, EFamily::Boolean},
    {-6, EFamily::Int8, EFamily::UInt8},
    {5, EFamily::Int16, EFamily::UInt16},
    {4, EFamily::Int32, EFamily::UInt32},
    {-5, EFamily::Int64, EFamily::UInt64},
    {7, EFamily::Single, EFamily::Single},
    {6, EFamily::Double, EFamily::Double},
    {8, EFamily::Double, EFamily::Double},
    {3, EFamily::Decimal, EFamily::Decimal, ESize::Digits},
    {2, EFamily::Decimal, EFamily::Decimal, ESize::Digits},
    {1, EFamily::Char, EFamily::Char, ESize::Length},
    {12, EFamily::VarChar, EFamily::VarChar, ESize::Length},
    {-1, EFamily::LongText, EFamily::LongText},
    {-8, EFamily::Char, EFamily::Char, ESize::Length},
    {-9, EFamily::VarChar, EFamily::VarChar, ESize::Length},
    {-10, EFamily::LongText, EFamily::LongText},
    {-2, EFamily::Binary, EFamily::Binary, ESize::Length},
    {-3, EFamily::VarBinary, EFamily::VarBinary, ESize::Length},
    {-4, EFamily::LongBinary, EFamily::LongBinary},
    {91, EFamily::Date, EFamily::Date},
    {9, EFamily::Date, EFamily::Date},
    {92, EFamily::Time, EFamily::Time, ESize::Fraction},
    {10, EFamily::Time, EFamily::Time, ESize::Fraction},
    {93, EFamily::DateTime, EFamily::DateTime, ESize::Fraction},
    {11, EFamily::DateTime, EFamily::DateTime, ESize::Fraction},
    {95, EFamily::DateTimeZone, EFamily::DateTimeZone, ESize::Fraction},
    {-11, EFamily::Guid, EFamily::Guid},
    {-150, EFamily::Variant, EFamily::Variant},
    {-151, EFamily::Variant, EFamily::Variant},
    {-152, EFamily::LongText, EFamily::LongText},
    {-154, EFamily::Time, EFamily::Time, ESize::Fraction},
    {-155, EFamily::DateTimeZone, EFamily::DateTimeZone, ESize::Fraction},
};

constexpr std::pair<int, int> kIntervals = {101, 113};

// Without a length, or with one that says as much as none.
EFamily Unbounded(EFamily family) {
  const bool bytes = family == EFamily::Binary || family == EFamily::VarBinary;
  return bytes ? EFamily::LongBinary : EFamily::LongText;
}

// --- Rows of the catalog calls

class TRows {
 public:
  explicit TRows(TOLEDBRowset rowset) : rowset_(std::move(rowset)) {
    if (rowset_.read_rows) rowset_.rows = rowset_.read_rows();
  }

  bool Known() const { return !rowset_.fields.empty(); }  // the driver has the call
  std::size_t Count() const { return rowset_.rows.size(); }
  bool HasField(std::string_view field) const { return At(field) < rowset_.fields.size(); }

  bool Has(std::size_t row, std::string_view field) const { return !VarIsNull(Value(row, field)); }
  std::string Text(std::size_t row, std::string_view field) const { return VarToText(Value(row, field)); }
  // Nothing for what is no number.
  std::optional<std::int64_t> Number(std::size_t row, std::string_view field) const {
    try {
      return Trim(Text(row, field)).empty() ? std::nullopt : std::optional(VarToInt(Value(row, field)));
    } catch (const EConvertError&) {
      return std::nullopt;
    }
  }
  std::optional<int> Int(std::size_t row, std::string_view field) const {
    constexpr std::int64_t kMost = 1 << 30;
    const auto number = Number(row, field);
    return number ? std::optional(static_cast<int>(std::clamp(*number, -kMost, kMost))) : std::nullopt;
  }

 private:
  std::size_t At(std::string_view field) const {
    std::size_t at = 0;
    while (at < rowset_.fields.size() && rowset_.fields[at].name != field) ++at;
    return at;
  }
  const TVariant& Value(std::size_t row, std::string_view field) const {
    static const TVariant kNull;
    const std::size_t at = At(field);
    return at < rowset_.rows[row].size() ? rowset_.rows[row][at] : kNull;
  }

  TOLEDBRowset rowset_;
};

// --- Columns

void TakeLength(const TRows& rows, std::size_t row, TForeignColumn& column) {
  constexpr std::int64_t kNoLimit = 1 << 30;
  const std::int64_t length = rows.Number(row, "COLUMN_SIZE").value_or(0);
  if (length > 0 && length < kNoLimit)
    column.length = length;
  else
    column.family = Unbounded(column.family);
}

// Digits of a second. Few drivers say them where they ought to; others have them in the width of the value as a text,
// in the catalog or in a query. What no such place can mean keeps as many as MySQL has.
int FractionOf(const TRows& rows, std::size_t row, EFamily family) {
  constexpr int kMostDigits = 9, kMostOfMySQL = 6;
  const int width = family == EFamily::Time ? 8 : 19;
  const int stated = rows.Int(row, "DECIMAL_DIGITS").value_or(-1);
  if (stated >= 0 && stated <= kMostDigits) return stated;
  for (const char* field : {"COLUMN_SIZE", "RESULT_SIZE"}) {
    const int digits = rows.Int(row, field).value_or(0) - width - 1;
    if (digits > 0 && digits <= kMostDigits) return digits;
  }
  return rows.Int(row, "COLUMN_SIZE").value_or(width) == width ? 0 : kMostOfMySQL;
}

void TakeDigits(std::optional<int> precision, int scale, TForeignColumn& column) {
  column.family = precision.value_or(0) > 0 ? EFamily::Decimal : EFamily::Number;
  column.length.reset();
  column.precision.reset();
  if (column.family == EFamily::Number) return;
  column.precision = precision;
  column.scale = scale;
}

// A driver that knows no decimals takes "decimal(9,2)" for letters.
void TakeDeclared(TForeignColumn& column) {
  const std::size_t open = column.native.find('(');
  if (open == std::string::npos || !InList(LowerText(Trim(column.native.substr(0, open))), {"decimal", "numeric"}))
    return;
  TStringList numbers;
  SplitText(",", column.native.substr(open + 1, column.native.find(')') - open - 1), numbers);
  const auto number = [&](std::size_t at) {
    return at < numbers.size() ? TryStrToFloat(Trim(numbers[at])) : std::optional<double>();
  };
  constexpr double kMost = 1000;
  if (number(0) && *number(0) <= kMost && number(1).value_or(0) <= kMost)
    TakeDigits(static_cast<int>(*number(0)), static_cast<int>(number(1).value_or(0)), column);
}

void TakeType(const TRows& rows, std::size_t row, TForeignColumn& column) {
  const int type = rows.Int(row, "DATA_TYPE").value_or(0);
  if (type >= kIntervals.first && type <= kIntervals.second) column.family = EFamily::Interval;
  const auto* known = std::ranges::find(kTypes, type, &TTypeRow::type);
  if (known == std::end(kTypes)) {
    if (column.family == EFamily::Unknown) column.problem = Format(kUnknownType, type);
    return;
  }
  column.family = rows.Text(row, "IS_UNSIGNED") == "1" ? known->family_unsigned : known->family;
  if (known->size == ESize::Length) TakeLength(rows, row, column);
  if (known->size == ESize::Fraction) column.fraction = FractionOf(rows, row, known->family);
  if (known->size == ESize::Digits)
    TakeDigits(rows.Int(row, "COLUMN_SIZE"), rows.Int(row, "DECIMAL_DIGITS").value_or(0), column);
  if (known->size == ESize::Length) TakeDeclared(column);
}

bool IsLetters(EFamily family) {
  return family == EFamily::Char || family == EFamily::VarChar || family == EFamily::LongText;
}

// A default as its source would write it. Texts and dates ought to come with their quotes, and from some drivers do
// not, its own quotes doubled: what no expression without a function can be is one.
std::string DefaultOf(const std::string& text, EFamily family) {
  const bool moment = family == EFamily::Date || family == EFamily::Time || family == EFamily::DateTime;
  const bool digit = !text.empty() && text[0] >= '0' && text[0] <= '9';
  if (!IsLetters(family) && !(moment && digit)) return text;
  static const TStringList kWords = {
      "user",           "current_user", "session_user", "system_user",       "current_role", "current_catalog",
      "current_schema", "current_date", "current_time", "current_timestamp", "localtime",    "localtimestamp",
      "sysdate",        "systimestamp", "uid"};
  const bool expression = text.starts_with('\'') ||
                          StrReplace(text, "''", "").find_first_of("'\"()|:@[") != std::string::npos ||
                          IndexOf(kWords, text) != kNotInList;
  return expression ? text : "'" + text + "'";
}

bool IsSequence(const std::string& text) {
  constexpr std::string_view kNextValue = "nextval(";
  return SameText(text.substr(0, kNextValue.size()), kNextValue) || IsNextValue(text);
}

// The words for "none" and for "too long to be said" are no defaults; nor is nothing: an empty text has its quotes.
bool HasDefault(const TRows& rows, std::size_t row) {
  const std::string text = rows.Text(row, "COLUMN_DEF");
  return rows.Has(row, "COLUMN_DEF") && !SameText(text, "NULL") && text != "TRUNCATED" && !text.empty();
}

TForeignColumn ColumnOf(const TRows& rows, std::size_t row) {
  constexpr std::int64_t kNoNulls = 0, kNullable = 1;
  TForeignColumn column{.name = rows.Text(row, "COLUMN_NAME"),
                        .native = Trim(rows.Text(row, "TYPE_NAME")),
                        .computed = true,  // for all that a driver says
                        .comment = rows.Text(row, "REMARKS")};
  TakeType(rows, row, column);
  const auto nullable = rows.Number(row, "NULLABLE");
  if (nullable == kNoNulls || nullable == kNullable) column.nullable = nullable == kNullable;
  const std::string text = rows.Text(row, "COLUMN_DEF");
  if (HasDefault(rows, row)) column.default_text = DefaultOf(text, column.family);
  const bool counts =
      rows.Text(row, "IS_AUTOINCREMENT") == "1" || IsSequence(text) || LowerText(column.native).ends_with(" identity");
  if (counts) column.counting = ECounting::Counts;
  return column;
}

// --- Keys

TStringList NamesOf(const TForeignKey& key) {
  TStringList names;
  for (const TForeignKeyPart& part : key.parts) names.push_back(part.column);
  std::ranges::sort(names);
  return names;
}

// The first key that the driver names, should it name several.
TForeignKey PrimaryKeyOf(const TRows& rows) {
  TForeignKey key{.kind = EForeignKeyKind::Primary};
  std::vector<std::pair<std::int64_t, std::string>> parts;
  for (std::size_t i = 0; i < rows.Count(); ++i) {
    if (i == 0) key.name = rows.Text(i, "PK_NAME");
    if (rows.Text(i, "PK_NAME") == key.name)
      parts.emplace_back(rows.Number(i, "KEY_SEQ").value_or(std::ssize(parts) + 1), rows.Text(i, "COLUMN_NAME"));
  }
  std::ranges::stable_sort(parts, {}, &std::pair<std::int64_t, std::string>::first);
  for (auto& [place, column] : parts) key.parts.push_back({std::move(column)});
  return key;
}

std::vector<TForeignKey> IndexesOf(const TRows& rows, const std::vector<TForeignColumn>& columns) {
  constexpr std::int64_t kTableStatistics = 0;
  std::vector<TForeignKey> keys;
  for (std::size_t i = 0; i < rows.Count(); ++i) {
    const std::string name = rows.Text(i, "INDEX_NAME");
    if (name.empty() || rows.Number(i, "TYPE") == kTableStatistics) continue;
    auto key = std::ranges::find(keys, name, &TForeignKey::name);
    if (key == keys.end()) {
      const bool unique = rows.Number(i, "NON_UNIQUE") == 0;
      key = keys.insert(keys.end(), {.name = name, .kind = unique ? EForeignKeyKind::Unique : EForeignKeyKind::Plain});
    }
    const std::string column = rows.Text(i, "COLUMN_NAME");
    if (const std::string filter = Trim(rows.Text(i, "FILTER_CONDITION")); !filter.empty())
      key->problem = Format(kFilter, filter);
    else if (std::ranges::find(columns, column, &TForeignColumn::name) == columns.end())
      key->problem = Format(kExpression, column);
    key->parts.push_back({column, rows.Text(i, "ASC_OR_DESC") == "D"});
  }
  return keys;
}

// Takes the index that is the primary key from the others: by its name, or by its columns. Its order is the key's, as
// some drivers give the columns of a key in that of the table.
void TakeIndexOf(TForeignKey& primary, std::vector<TForeignKey>& indexes) {
  auto index = std::ranges::find(indexes, primary.name, &TForeignKey::name);
  if (index == indexes.end())
    index = std::ranges::find_if(indexes, [&](const TForeignKey& key) {
      return key.kind == EForeignKeyKind::Unique && key.problem.empty() && NamesOf(key) == NamesOf(primary);
    });
  if (index == indexes.end()) return;
  if (NamesOf(*index) == NamesOf(primary)) primary.parts = std::move(index->parts);
  indexes.erase(index);
}

// A driver that finds no primary key on servers of a later time than its own still lists the index of this name.
TForeignKey PrimaryIndexOf(const std::vector<TForeignKey>& indexes) {
  const auto index = std::ranges::find(indexes, "PRIMARY", &TForeignKey::name);
  if (index == indexes.end() || index->kind != EForeignKeyKind::Unique) return {};
  return {.name = index->name, .kind = EForeignKeyKind::Primary, .parts = index->parts};
}

// Where there is no primary key some drivers take the first unique one for it.
bool IsUniqueAlone(const TForeignKey& primary, const std::vector<TForeignKey>& indexes) {
  const bool listed = std::ranges::find(indexes, primary.name, &TForeignKey::name) != indexes.end();
  return primary.name.starts_with("sqlite_autoindex_") || (primary.name == "PRIMARY" && !listed && !indexes.empty());
}

EReferenceRule RuleOf(std::optional<std::int64_t> number) {
  constexpr EReferenceRule kRules[] = {EReferenceRule::Cascade, EReferenceRule::Restrict, EReferenceRule::SetNull,
                                       EReferenceRule::NoAction, EReferenceRule::SetDefault};
  return number && *number >= 0 && *number < std::ssize(kRules) ? kRules[*number] : EReferenceRule::NoAction;
}

// Rows of one reference have its name, and may stand among those of another; without a name the first part begins one.
std::vector<TForeignReference> ReferencesOf(const TRows& rows) {
  std::vector<TForeignReference> references;
  for (std::size_t i = 0; i < rows.Count(); ++i) {
    const std::string name = rows.Text(i, "FK_NAME");
    const bool first = rows.Number(i, "KEY_SEQ").value_or(1) <= 1;
    auto reference = references.empty() ? references.end() : std::prev(references.end());
    if (!name.empty()) reference = std::ranges::find(references, name, &TForeignReference::name);
    if (reference == references.end() || (name.empty() && first))
      reference = references.insert(references.end(), {.name = name,
                                                       .table = rows.Text(i, "PKTABLE_NAME"),
                                                       .on_delete = RuleOf(rows.Number(i, "DELETE_RULE")),
                                                       .on_update = RuleOf(rows.Number(i, "UPDATE_RULE"))});
    reference->columns.push_back(rows.Text(i, "FKCOLUMN_NAME"));
    if (rows.Has(i, "PKCOLUMN_NAME")) reference->references.push_back(rows.Text(i, "PKCOLUMN_NAME"));
  }
  return references;
}

class TOdbcFacts final : public TFactReader {
 public:
  explicit TOdbcFacts(TDBConnODBC& conn) : conn_(conn) {}

  TKnownFacts Known() const override {
    return {EFact::Nullability, EFact::Counting,   EFact::Defaults, EFact::PrimaryKey,
            EFact::OtherKeys,   EFact::References, EFact::Rules,    EFact::Order};
  }
  TStringList Tables() override {
    TStringList tables;
    conn_.ListTables(tables);
    // Tables that SQLite keeps for itself are listed like others.
    std::erase_if(tables, [](const std::string& table) { return table.starts_with("sqlite_"); });
    return tables;
  }
  bool Reachable() override {
    try {
      TStringList tables;
      if (conn_.GetConnected()) conn_.ListTables(tables);
      return conn_.GetConnected();
    } catch (const EAbort&) {
      throw;
    } catch (const EVelmora&) {
      return false;
    }
  }

  TForeignTable Table(const std::string& name) override {
    TForeignTable table{.name = name, .known = Known()};
    AddColumns(table);
    if (table.problem.empty()) AddKeys(table);
    if (table.problem.empty()) AddReferences(table);
    return table;
  }

 private:
  TRows Ask(ECatalogRows kind, const TForeignTable& table) {
    return TRows(conn_.GetConnectionObject().Session().GetCatalogRows(kind, table.name));
  }

  void AddColumns(TForeignTable& table) {
    const TRows rows = Ask(ECatalogRows::Columns, table);
    for (std::size_t i = 0; i < rows.Count(); ++i) {
      table.columns.push_back(ColumnOf(rows, i));
      if (!table.columns.back().comment.empty()) table.known->Add(EFact::ColumnComments);
      const std::string first = rows.Text(0, "TABLE_SCHEM"), here = rows.Text(i, "TABLE_SCHEM");
      if (first != here && table.problem.empty()) table.problem = Format(kTwoSchemas, first, here);
    }
    if (!rows.HasField("COLUMN_DEF")) table.known->Remove(EFact::Defaults);
  }

  void AddKeys(TForeignTable& table) {
    const TRows key_rows = Ask(ECatalogRows::PrimaryKey, table);
    const TRows index_rows = Ask(ECatalogRows::Statistics, table);
    if (!key_rows.Known()) table.known->Remove(EFact::PrimaryKey);
    if (!index_rows.Known()) table.known->Remove(EFact::OtherKeys);
    TForeignKey primary = PrimaryKeyOf(key_rows);
    std::vector<TForeignKey> indexes = IndexesOf(index_rows, table.columns);
    if (IsUniqueAlone(primary, indexes)) primary.parts.clear();
    if (primary.parts.empty()) primary = PrimaryIndexOf(indexes);
    if (!primary.parts.empty()) {
      TakeIndexOf(primary, indexes);
      table.keys.push_back(std::move(primary));
    }
    std::ranges::move(indexes, std::back_inserter(table.keys));
  }

  void AddReferences(TForeignTable& table) {
    const TRows rows = Ask(ECatalogRows::ForeignKeys, table);
    table.references = ReferencesOf(rows);
    if (rows.Known()) return;
    table.known->Remove(EFact::References);
    table.known->Remove(EFact::Rules);
  }

  TDBConnODBC& conn_;
};

}  // namespace

std::unique_ptr<TFactReader> MakeOdbcFacts(TDBConn& conn) {
  auto* engine = dynamic_cast<TDBConnODBC*>(&conn);
  return engine == nullptr ? nullptr : std::make_unique<TOdbcFacts>(*engine);
}

}  // namespace velmora
