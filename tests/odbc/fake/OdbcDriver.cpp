// SPDX-License-Identifier: GPL-3.0-or-later

// An ODBC driver as far as the program, and the driver manager between them, call it.

#include <sql.h>
#include <sqlext.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "support/FakeOdbc.h"

namespace {

using velmora::testing::EOdbcFault;
using velmora::testing::TFakeOdbc;

TFakeOdbc source;
std::vector<TFakeOdbc::TMessage> last_errors;

struct THandle {
  std::vector<TFakeOdbc::TAnswer> results;  // of a statement, the current one first
  std::size_t row = 0;                      // after the current one
  std::size_t column = 0;                   // the one that was last asked for, and how much of it was given
  std::size_t given = 0;
};

SQLRETURN Fail(std::vector<TFakeOdbc::TMessage> errors) {
  last_errors = std::move(errors);
  return SQL_ERROR;
}

SQLRETURN Log(std::string line) {
  source.log.push_back(std::move(line));
  return SQL_SUCCESS;
}

THandle& Of(SQLHANDLE handle) { return *static_cast<THandle*>(handle); }

std::string Text(const SQLCHAR* text, SQLINTEGER length) {
  if (text == nullptr) return length == 0 ? "-" : "nothing, of a length";
  const char* begin = reinterpret_cast<const char*>(text);
  return length == SQL_NTS ? begin : std::string(begin, static_cast<std::size_t>(length));
}

// Gives a text as drivers do, with its whole length.
template <class Length>
SQLRETURN Give(std::string_view text, SQLPOINTER room, Length size, Length* length) {
  if (length != nullptr) *length = static_cast<Length>(text.size());
  if (room == nullptr || size < 1) return SQL_SUCCESS_WITH_INFO;
  const std::size_t count = std::min(text.size(), static_cast<std::size_t>(size) - 1);
  std::memcpy(room, text.data(), count);
  static_cast<char*>(room)[count] = '\0';
  return count == text.size() ? SQL_SUCCESS : SQL_SUCCESS_WITH_INFO;
}

SQLRETURN Answer(SQLHSTMT statement, const std::string& what) {
  Log(what);
  if (source.gone) return Fail({{"08S01", "the server is gone"}});
  const auto answer = source.answers.find(what);
  if (answer == source.answers.end()) return Fail({{"42000", "nothing known of " + what}});
  if (!answer->second.errors.empty()) return Fail(answer->second.errors);
  THandle& handle = Of(statement);
  handle = {};
  handle.results = answer->second.then;
  handle.results.insert(handle.results.begin(), answer->second);
  return SQL_SUCCESS;
}

// Bytes of `value` that the next part has.
std::size_t PartSize(std::string_view value, std::size_t room) {
  std::size_t size = std::min(value.size(), room);
  if (source.whole_letters && size < value.size())
    while (size > 0 && (static_cast<unsigned char>(value[size]) & 0xC0U) == 0x80U) --size;
  return size;
}

}  // namespace

extern "C" {

TFakeOdbc* FakeOdbc() { return &source; }

// --- Handles

SQLRETURN SQLAllocHandle(SQLSMALLINT, SQLHANDLE, SQLHANDLE* handle) {
  *handle = std::make_unique<THandle>().release();
  return SQL_SUCCESS;
}

SQLRETURN SQLFreeHandle(SQLSMALLINT, SQLHANDLE handle) {
  const std::unique_ptr<THandle> owned(static_cast<THandle*>(handle));
  return SQL_SUCCESS;
}

SQLRETURN SQLFreeStmt(SQLHSTMT, SQLUSMALLINT) { return SQL_SUCCESS; }
SQLRETURN SQLSetEnvAttr(SQLHENV, SQLINTEGER, SQLPOINTER, SQLINTEGER) { return SQL_SUCCESS; }

SQLRETURN SQLGetDiagRec(SQLSMALLINT, SQLHANDLE, SQLSMALLINT number, SQLCHAR* state, SQLINTEGER* native, SQLCHAR* text,
                        SQLSMALLINT size, SQLSMALLINT* length) {
  if (number < 1 || static_cast<std::size_t>(number) > last_errors.size()) return SQL_NO_DATA;
  const TFakeOdbc::TMessage& message = last_errors[static_cast<std::size_t>(number) - 1];
  if (native != nullptr) *native = 0;
  Give<SQLSMALLINT>(message.state, state, SQL_SQLSTATE_SIZE + 1, nullptr);
  return Give(message.text, text, size, length);
}

// The manager passes errors on only of drivers that have this too.
SQLRETURN SQLGetDiagField(SQLSMALLINT, SQLHANDLE, SQLSMALLINT, SQLSMALLINT, SQLPOINTER, SQLSMALLINT, SQLSMALLINT*) {
  return SQL_NO_DATA;
}

// --- Connections

SQLRETURN SQLConnect(SQLHDBC, SQLCHAR* name, SQLSMALLINT name_length, SQLCHAR* user, SQLSMALLINT user_length,
                     SQLCHAR* password, SQLSMALLINT password_length) {
  Log("connect " + Text(name, name_length) + " " + Text(user, user_length));
  if (password != nullptr && Text(password, password_length) != "tiger")
    return Fail({{"28000", "wrong password"}, {"28000", "wrong password"}, {"01000", "try again"}});
  return SQL_SUCCESS;
}

SQLRETURN SQLDisconnect(SQLHDBC) { return Log("disconnect"); }

SQLRETURN SQLSetConnectAttr(SQLHDBC, SQLINTEGER attribute, SQLPOINTER value, SQLINTEGER) {
  const std::string number = std::to_string(reinterpret_cast<std::uintptr_t>(value));
  if (attribute == SQL_ATTR_LOGIN_TIMEOUT) return Log("login timeout " + number);
  if (attribute == SQL_ATTR_AUTOCOMMIT) return Log("autocommit " + number);
  if (attribute == SQL_ATTR_TXN_ISOLATION) return Log("isolation " + number);
  return SQL_SUCCESS;
}

SQLRETURN SQLGetConnectAttr(SQLHDBC, SQLINTEGER attribute, SQLPOINTER value, SQLINTEGER size, SQLINTEGER* length) {
  if (attribute == SQL_ATTR_CURRENT_CATALOG) return Give(source.catalog, value, size, length);
  return Fail({{"HYC00", "no such attribute"}});
}

SQLRETURN SQLGetInfo(SQLHDBC, SQLUSMALLINT item, SQLPOINTER value, SQLSMALLINT size, SQLSMALLINT* length) {
  if (item == SQL_IDENTIFIER_QUOTE_CHAR) return Give<SQLSMALLINT>(source.quote, value, size, length);
  if (item == SQL_SEARCH_PATTERN_ESCAPE) return Give<SQLSMALLINT>("\\", value, size, length);
  if (item == SQL_DRIVER_ODBC_VER) return Give<SQLSMALLINT>("03.00", value, size, length);
  return Fail({{"HY096", "nothing known"}});
}

SQLRETURN SQLEndTran(SQLSMALLINT, SQLHANDLE, SQLSMALLINT end) {
  Log(end == SQL_COMMIT ? "commit" : "rollback");
  return source.gone ? Fail({{"08S01", "the server is gone"}}) : SQL_SUCCESS;
}

// --- Statements

SQLRETURN SQLTables(SQLHSTMT statement, SQLCHAR* catalog, SQLSMALLINT length, SQLCHAR*, SQLSMALLINT, SQLCHAR* table,
                    SQLSMALLINT, SQLCHAR*, SQLSMALLINT) {
  if (table == nullptr) Log("in " + Text(catalog, length));
  return Answer(statement, table == nullptr ? "tables" : "catalogs");
}

SQLRETURN SQLColumns(SQLHSTMT statement, SQLCHAR*, SQLSMALLINT, SQLCHAR* schema, SQLSMALLINT schema_length,
                     SQLCHAR* table, SQLSMALLINT length, SQLCHAR* column, SQLSMALLINT column_length) {
  const bool of_all = Text(schema, schema_length) == "-" && Text(column, column_length) == "-";
  return Answer(statement, (of_all ? "columns " : "some columns ") + Text(table, length));
}

SQLRETURN SQLStatistics(SQLHSTMT statement, SQLCHAR*, SQLSMALLINT, SQLCHAR*, SQLSMALLINT, SQLCHAR* table,
                        SQLSMALLINT length, SQLUSMALLINT, SQLUSMALLINT) {
  return Answer(statement, "statistics " + Text(table, length));
}

SQLRETURN SQLPrimaryKeys(SQLHSTMT statement, SQLCHAR*, SQLSMALLINT, SQLCHAR*, SQLSMALLINT, SQLCHAR* table,
                         SQLSMALLINT length) {
  return Answer(statement, "primary keys " + Text(table, length));
}

SQLRETURN SQLExecDirect(SQLHSTMT statement, SQLCHAR* sql, SQLINTEGER length) {
  return Answer(statement, Text(sql, length));
}

SQLRETURN SQLSetStmtAttr(SQLHSTMT, SQLINTEGER attribute, SQLPOINTER value, SQLINTEGER) {
  if (attribute == SQL_ATTR_MAX_ROWS) Log("most rows " + std::to_string(reinterpret_cast<std::uintptr_t>(value)));
  return SQL_SUCCESS;
}

SQLRETURN SQLGetStmtAttr(SQLHSTMT statement, SQLINTEGER, SQLPOINTER value, SQLINTEGER, SQLINTEGER*) {
  *static_cast<SQLHANDLE*>(value) = statement;  // the manager asks for descriptors only
  return SQL_SUCCESS;
}

SQLRETURN SQLNumResultCols(SQLHSTMT statement, SQLSMALLINT* count) {
  *count = static_cast<SQLSMALLINT>(Of(statement).results.at(0).columns.size());
  return SQL_SUCCESS;
}

SQLRETURN SQLRowCount(SQLHSTMT statement, SQLLEN* count) {
  *count = Of(statement).results.at(0).affected;
  return SQL_SUCCESS;
}

SQLRETURN SQLMoreResults(SQLHSTMT statement) {
  THandle& handle = Of(statement);
  if (handle.results.size() < 2) return SQL_NO_DATA;
  handle.results.erase(handle.results.begin());
  handle.row = 0;
  return handle.results[0].errors.empty() ? SQL_SUCCESS : Fail(handle.results[0].errors);
}

SQLRETURN SQLDescribeCol(SQLHSTMT statement, SQLUSMALLINT number, SQLCHAR* name, SQLSMALLINT size, SQLSMALLINT* length,
                         SQLSMALLINT* type, SQLULEN* column_size, SQLSMALLINT* digits, SQLSMALLINT* nullable) {
  const TFakeOdbc::TColumn& column = Of(statement).results.at(0).columns.at(number - 1UL);
  *type = static_cast<SQLSMALLINT>(column.type);
  *column_size = ~SQLULEN{0};  // nobody believes this
  *digits = 0;
  *nullable = SQL_NULLABLE_UNKNOWN;
  return Give(column.name, name, size, length);
}

SQLRETURN SQLColAttribute(SQLHSTMT statement, SQLUSMALLINT number, SQLUSMALLINT attribute, SQLPOINTER, SQLSMALLINT,
                          SQLSMALLINT*, SQLLEN* value) {
  const TFakeOdbc::TColumn& column = Of(statement).results.at(0).columns.at(number - 1UL);
  *value = attribute == SQL_DESC_UNSIGNED ? column.is_unsigned : column.is_autoincrement;
  return SQL_SUCCESS;
}

SQLRETURN SQLFetch(SQLHSTMT statement) {
  THandle& handle = Of(statement);
  const TFakeOdbc::TAnswer& answer = handle.results.at(0);
  handle.column = 0;
  if (handle.row < answer.rows.size()) return ++handle.row, SQL_SUCCESS;
  return answer.row_errors.empty() ? SQL_NO_DATA : Fail(answer.row_errors);
}

SQLRETURN SQLGetData(SQLHSTMT statement, SQLUSMALLINT number, SQLSMALLINT type, SQLPOINTER room, SQLLEN size,
                     SQLLEN* left) {
  THandle& handle = Of(statement);
  if (handle.column != number) handle.given = 0;
  handle.column = number;
  const auto& value = handle.results.at(0).rows.at(handle.row - 1).at(number - 1UL);
  if (!value) return *left = SQL_NULL_DATA, SQL_SUCCESS;
  const std::size_t capacity = static_cast<std::size_t>(size) - (type == SQL_C_CHAR ? 1 : 0);
  char* place = static_cast<char*>(room);
  if (source.fault == EOdbcFault::NegativeLength) return *left = -77, SQL_SUCCESS;
  if (source.fault == EOdbcFault::WholeTooLong) return *left = size * 1000, SQL_SUCCESS;
  if (source.fault == EOdbcFault::Endless || source.fault == EOdbcFault::NoProgress) {
    std::memset(place, 'x', static_cast<std::size_t>(size));
    if (type == SQL_C_CHAR && source.fault == EOdbcFault::Endless) place[capacity] = '\0';
    return *left = SQL_NO_TOTAL, SQL_SUCCESS_WITH_INFO;
  }
  const std::string_view rest = std::string_view(*value).substr(handle.given);
  const std::size_t part = PartSize(rest, capacity);
  std::memcpy(place, rest.data(), part);
  if (type == SQL_C_CHAR) place[part] = '\0';
  handle.given += part;
  *left = source.fault == EOdbcFault::UnknownLength ? SQL_NO_TOTAL : static_cast<SQLLEN>(rest.size());
  return part < rest.size() ? SQL_SUCCESS_WITH_INFO : SQL_SUCCESS;
}

}  // extern "C"
