// SPDX-License-Identifier: GPL-3.0-or-later
#include "odbc/OdbcRows.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>
#include <limits>

#include "odbc/OdbcTypes.h"
#include "util/Errors.h"
#include "util/Format.h"

namespace velmora {

namespace {

constexpr char kUnknownType[] = "Column %s is of a type that cannot be read (%d)";
constexpr char kNonsense[] = "The ODBC driver gave an impossible length (%d) for a value of column %s";
constexpr char kTooLong[] = "A value of column %s is longer than %d bytes";
constexpr std::size_t kLongest = std::size_t{256} << 20U;
constexpr std::size_t kRoom = std::size_t{64} << 10U;

SQLUSMALLINT Place(int column) { return static_cast<SQLUSMALLINT>(column + 1); }

// --- Values

// One value, part by part. A driver says how much of it is left, or that it does not know, and is held to the room that
// it was given.
class TValueReader {
 public:
  explicit TValueReader(const TOdbcStatement& statement) : statement_(statement), room_(kRoom) {}

  std::optional<std::string> Read(int column, const std::string& name, EOdbcForm form) {
    std::string value;
    for (bool cut = true; cut;) {
      SQLLEN left = 0;
      const SQLRETURN result = Ask(column, form, left);
      if (result == SQL_NO_DATA) break;
      statement_.Check(result);
      if (left == SQL_NULL_DATA) return std::nullopt;
      const std::optional<std::size_t> length = PartLength(form, result, left, cut);
      if (!length) RaiseError(Format(kNonsense, left, name));
      if (*length > kLongest - value.size()) RaiseError(Format(kTooLong, name, kLongest));
      value.append(room_.data(), *length);
    }
    return value;
  }

 private:
  static constexpr std::size_t kLetter = 4;  // bytes that one may take
  static constexpr char kUnwritten = '\x01';

  SQLRETURN Ask(int column, EOdbcForm form, SQLLEN& left) {
    std::fill(room_.end() - kLetter, room_.end(), kUnwritten);
    return SQLGetData(statement_.Get(), Place(column), TypeOf(form), room_.data(), static_cast<SQLLEN>(room_.size()),
                      &left);
  }

  static SQLSMALLINT TypeOf(EOdbcForm form) {
    if (form == EOdbcForm::Bit) return SQL_C_BIT;
    return form == EOdbcForm::Raw ? SQL_C_BINARY : SQL_C_CHAR;
  }

  // After a text stands a NUL.
  std::size_t Capacity(EOdbcForm form) const { return form == EOdbcForm::Text ? room_.size() - 1 : room_.size(); }

  // Bytes of the part that came, and whether more are to come; nothing when the driver's answer makes no sense.
  std::optional<std::size_t> PartLength(EOdbcForm form, SQLRETURN result, SQLLEN left, bool& cut) const {
    cut = false;
    if (left >= 0 && static_cast<std::size_t>(left) <= Capacity(form)) return static_cast<std::size_t>(left);
    if (left < 0 && left != SQL_NO_TOTAL) return std::nullopt;
    cut = result == SQL_SUCCESS_WITH_INFO;
    if (cut) return form == EOdbcForm::Text ? CutTextLength() : room_.size();
    if (form == EOdbcForm::Text && left == SQL_NO_TOTAL) return strnlen(room_.data(), Capacity(form));
    return std::nullopt;
  }

  // Some drivers cut a text in front of a letter that no longer fits; its NUL tells where.
  std::optional<std::size_t> CutTextLength() const {
    const auto end = std::find(room_.rbegin(), room_.rbegin() + kLetter, '\0');
    if (end == room_.rbegin() + kLetter) return std::nullopt;
    return static_cast<std::size_t>(room_.rend() - end) - 1;
  }

  const TOdbcStatement& statement_;
  std::vector<char> room_;
};

bool FetchRow(const TOdbcStatement& statement) {
  const SQLRETURN result = SQLFetch(statement.Get());
  if (result != SQL_NO_DATA) statement.Check(result);
  return result != SQL_NO_DATA;
}

// --- Columns

bool Attribute(const TOdbcStatement& statement, int column, SQLUSMALLINT attribute) {
  SQLLEN value = 0;
  const SQLRETURN result = SQLColAttribute(statement.Get(), Place(column), attribute, nullptr, 0, nullptr, &value);
  return SQL_SUCCEEDED(result) && value != SQL_FALSE;
}

TOdbcColumn ColumnAt(const TOdbcStatement& statement, int place) {
  std::array<SQLCHAR, 4097> name{};
  SQLSMALLINT length = 0, type = 0, digits = 0, nullable = 0;
  SQLULEN size = 0;
  statement.Check(SQLDescribeCol(statement.Get(), Place(place), name.data(), static_cast<SQLSMALLINT>(name.size() - 1),
                                 &length, &type, &size, &digits, &nullable));
  const char* text = reinterpret_cast<const char*>(name.data());
  TOdbcColumn column{.name = {text, strnlen(text, name.size() - 1)}, .type = type};
  column.size = static_cast<std::int64_t>(std::min<SQLULEN>(size, std::numeric_limits<std::int64_t>::max()));
  column.is_unsigned = Attribute(statement, place, SQL_DESC_UNSIGNED);
  column.is_autoincrement = Attribute(statement, place, SQL_DESC_AUTO_UNIQUE_VALUE);
  return column;
}

TFieldDef FieldOf(const TOdbcColumn& column) {
  const TOdbcType* type = FindOdbcType(column.type);
  if (type == nullptr) return {column.name, EFieldKind::Other};
  TFieldDef field{column.name, column.is_unsigned ? type->kind_unsigned : type->kind};
  if (IsOdbcInteger(*type) && column.is_autoincrement) field.kind = EFieldKind::AutoInc;
  if (IsOdbcSized(*type)) field.size = column.size;
  return field;
}

TRowsOfValues ReadRows(const TOdbcStatement& statement, const std::vector<TOdbcColumn>& columns, std::int64_t limit) {
  TRowsOfValues rows;
  TValueReader reader(statement);
  while ((limit == kNoLimit || std::ssize(rows) < limit) && FetchRow(statement)) {
    TMemDataset::TRow& row = rows.emplace_back();
    row.reserve(columns.size());
    for (std::size_t i = 0; i < columns.size(); ++i) {
      const TOdbcType& type = *FindOdbcType(columns[i].type);
      std::optional<std::string> text = reader.Read(static_cast<int>(i), columns[i].name, type.form);
      row.push_back(text ? type.read(std::move(*text)) : TVariant());
    }
  }
  return rows;
}

}  // namespace

std::vector<TOdbcColumn> OdbcColumnsOf(const TOdbcStatement& statement) {
  std::vector<TOdbcColumn> columns;
  const int count = statement.ColumnCount();
  columns.reserve(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) columns.push_back(ColumnAt(statement, i));
  return columns;
}

TOLEDBRowset FetchOdbcRowset(const TOdbcStatement& statement, std::int64_t limit) {
  const std::vector<TOdbcColumn> columns = OdbcColumnsOf(statement);
  TOLEDBRowset rowset;
  for (const TOdbcColumn& column : columns) {
    rowset.fields.push_back(FieldOf(column));
    rowset.is_autoincrement.push_back(column.is_autoincrement);
  }
  const auto unknown = std::ranges::find(columns, nullptr, [](const TOdbcColumn& c) { return FindOdbcType(c.type); });
  if (unknown == columns.end()) {
    rowset.rows = ReadRows(statement, columns, limit);
  } else {
    rowset.read_rows = [message = Format(kUnknownType, unknown->name, unknown->type)]() -> TRowsOfValues {
      RaiseError(message);
    };
  }
  return rowset;
}

std::vector<TOdbcTexts> FetchOdbcTexts(const TOdbcStatement& statement) {
  std::vector<TOdbcTexts> rows;
  TValueReader reader(statement);
  const int count = statement.ColumnCount();
  while (FetchRow(statement)) {
    TOdbcTexts& row = rows.emplace_back();
    for (int i = 0; i < count; ++i) row.push_back(reader.Read(i, std::to_string(i + 1), EOdbcForm::Text));
  }
  return rows;
}

}  // namespace velmora
