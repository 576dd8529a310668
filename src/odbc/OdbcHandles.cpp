// SPDX-License-Identifier: GPL-3.0-or-later
#include "odbc/OdbcHandles.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

#include "util/Format.h"
#include "util/Lists.h"

namespace velmora {

namespace {

constexpr char kSilent[] = "The ODBC driver failed without a message (%d)";
constexpr char kTooLong[] = "A text of %d bytes is too long for ODBC";
constexpr char kInTransaction[] = "A transaction is already started";
constexpr char kNoTransaction[] = "No transaction is started";
constexpr SQLSMALLINT kMostMessages = 32;  // a driver may have more, or never come to an end

bool Succeeded(SQLRETURN result) { return SQL_SUCCEEDED(result); }

// The interface takes numbers in place of addresses.
// NOLINTNEXTLINE(performance-no-int-to-ptr)
SQLPOINTER Number(std::uintptr_t number) { return reinterpret_cast<SQLPOINTER>(number); }

// Room for a text that a driver gives. The lengths that drivers tell are not believed.
template <std::size_t Size>
class TTextRoom {
 public:
  SQLCHAR* Place() { return room_.data(); }
  static constexpr SQLSMALLINT Length() { return Size; }
  std::string Text() const {
    const char* text = reinterpret_cast<const char*>(room_.data());
    return {text, strnlen(text, Size)};
  }

 private:
  std::array<SQLCHAR, Size + 1> room_{};
};

[[noreturn]] void RaiseDiagnosis(SQLSMALLINT kind, SQLHANDLE handle, SQLRETURN result) {
  TStringList messages;
  std::string first_state;
  for (SQLSMALLINT i = 1; i <= kMostMessages; ++i) {
    TTextRoom<SQL_SQLSTATE_SIZE + 1> state;
    TTextRoom<4096> text;
    SQLINTEGER number = 0;
    SQLSMALLINT length = 0;
    if (!Succeeded(SQLGetDiagRec(kind, handle, i, state.Place(), &number, text.Place(), text.Length(), &length))) break;
    if (i == 1) first_state = state.Text();
    std::string message = text.Text();
    if (!message.empty() && std::ranges::find(messages, message) == messages.end())
      messages.push_back(std::move(message));
  }
  if (messages.empty()) messages.push_back(Format(kSilent, result));
  throw EOdbcError(std::move(first_state), JoinList(messages, "\n"));
}

}  // namespace

// --- Handles

TOdbcHandle::TOdbcHandle(SQLSMALLINT kind, const TOdbcHandle* parent) : kind_(kind) {
  const SQLRETURN result = SQLAllocHandle(kind, parent == nullptr ? SQL_NULL_HANDLE : parent->Get(), &handle_);
  if (Succeeded(result)) return;
  handle_ = SQL_NULL_HANDLE;
  if (parent != nullptr) parent->Check(result);
  RaiseError(Format(kSilent, result));
}

void TOdbcHandle::Check(SQLRETURN result) const {
  if (!Succeeded(result)) RaiseDiagnosis(kind_, handle_, result);
}

TOdbcEnvironment::TOdbcEnvironment() : TOdbcHandle(SQL_HANDLE_ENV, nullptr) {
  Check(SQLSetEnvAttr(Get(), SQL_ATTR_ODBC_VERSION, Number(SQL_OV_ODBC3), 0));
}

// --- Connections

TOdbcConnection::~TOdbcConnection() {
  // Whatever goes wrong here, nobody could do anything about it.
  if (in_transaction_) SQLEndTran(SQL_HANDLE_DBC, handle_.Get(), SQL_ROLLBACK);
  if (open_) SQLDisconnect(handle_.Get());
}

void TOdbcConnection::Set(SQLINTEGER attribute, std::uintptr_t value) {
  handle_.Check(SQLSetConnectAttr(handle_.Get(), attribute, Number(value), SQL_IS_UINTEGER));
}

void TOdbcConnection::SetLoginTimeout(int seconds) {
  Set(SQL_ATTR_LOGIN_TIMEOUT, static_cast<std::uintptr_t>(seconds));
}

void TOdbcConnection::OpenSource(const std::string& source, const std::string& user, const std::string& password) {
  const auto optional = [](const std::string& text) { return text.empty() ? nullptr : OdbcText(text); };
  handle_.Check(SQLConnect(handle_.Get(), OdbcText(source), OdbcLength(source), optional(user), OdbcLength(user),
                           optional(password), OdbcLength(password)));
  open_ = true;
}

void TOdbcConnection::OpenBy(const std::string& connection_string) {
  SQLSMALLINT length = 0;
  handle_.Check(SQLDriverConnect(handle_.Get(), nullptr, OdbcText(connection_string), OdbcLength(connection_string),
                                 nullptr, 0, &length, SQL_DRIVER_NOPROMPT));
  open_ = true;
}

void TOdbcConnection::StartTransaction() {
  if (in_transaction_) RaiseError(kInTransaction);
  Set(SQL_ATTR_TXN_ISOLATION, SQL_TXN_READ_COMMITTED);
  Set(SQL_ATTR_AUTOCOMMIT, SQL_AUTOCOMMIT_OFF);
  in_transaction_ = true;
}

void TOdbcConnection::Commit() {
  if (!in_transaction_) RaiseError(kNoTransaction);
  handle_.Check(SQLEndTran(SQL_HANDLE_DBC, handle_.Get(), SQL_COMMIT));
  in_transaction_ = false;
  Set(SQL_ATTR_AUTOCOMMIT, SQL_AUTOCOMMIT_ON);
}

std::string TOdbcConnection::Info(SQLUSMALLINT item) const {
  TTextRoom<256> text;
  SQLSMALLINT length = 0;
  return Succeeded(SQLGetInfo(handle_.Get(), item, text.Place(), text.Length(), &length)) ? text.Text() : "";
}

std::string TOdbcConnection::CurrentCatalog() const {
  TTextRoom<4096> text;
  SQLINTEGER length = 0;
  const SQLRETURN result =
      SQLGetConnectAttr(handle_.Get(), SQL_ATTR_CURRENT_CATALOG, text.Place(), text.Length(), &length);
  return Succeeded(result) ? text.Text() : "";
}

bool TOdbcConnection::IsLost() const {
  SQLUINTEGER dead = SQL_CD_FALSE;
  return Succeeded(SQLGetConnectAttr(handle_.Get(), SQL_ATTR_CONNECTION_DEAD, &dead, SQL_IS_UINTEGER, nullptr)) &&
         dead == SQL_CD_TRUE;
}

// --- Statements

void TOdbcStatement::SetMostRows(std::int64_t rows) {
  SQLSetStmtAttr(Get(), SQL_ATTR_MAX_ROWS, Number(static_cast<std::uintptr_t>(rows)), SQL_IS_UINTEGER);
}

void TOdbcStatement::Execute(const std::string& sql) {
  if (sql.size() > static_cast<std::size_t>(std::numeric_limits<SQLINTEGER>::max()))
    RaiseError(Format(kTooLong, sql.size()));
  const SQLRETURN result = SQLExecDirect(Get(), OdbcText(sql), static_cast<SQLINTEGER>(sql.size()));
  if (result != SQL_NO_DATA) Check(result);  // which only says that no row was changed
}

int TOdbcStatement::ColumnCount() const {
  SQLSMALLINT count = 0;
  Check(SQLNumResultCols(Get(), &count));
  return std::max<int>(count, 0);
}

std::int64_t TOdbcStatement::Affected() const {
  SQLLEN count = 0;
  return Succeeded(SQLRowCount(Get(), &count)) ? std::max<std::int64_t>(count, 0) : 0;
}

bool TOdbcStatement::NextResult() {
  const SQLRETURN result = SQLMoreResults(Get());
  if (result != SQL_NO_DATA) Check(result);
  return result != SQL_NO_DATA;
}

// --- Data sources

std::vector<TOdbcSource> OdbcSources(const TOdbcEnvironment& environment) {
  std::vector<TOdbcSource> sources;
  for (SQLUSMALLINT direction = SQL_FETCH_FIRST;; direction = SQL_FETCH_NEXT) {
    TTextRoom<512> name, description;
    SQLSMALLINT name_length = 0, description_length = 0;
    const SQLRETURN result = SQLDataSources(environment.Get(), direction, name.Place(), name.Length(), &name_length,
                                            description.Place(), description.Length(), &description_length);
    if (result == SQL_NO_DATA) return sources;
    environment.Check(result);
    sources.push_back({name.Text(), description.Text()});
  }
}

// --- Arguments

SQLCHAR* OdbcText(const std::string& text) {
  return const_cast<SQLCHAR*>(reinterpret_cast<const SQLCHAR*>(text.c_str()));  // which no driver writes to
}

SQLSMALLINT OdbcLength(const std::string& text) {
  if (text.size() > static_cast<std::size_t>(std::numeric_limits<SQLSMALLINT>::max()))
    RaiseError(Format(kTooLong, text.size()));
  return static_cast<SQLSMALLINT>(text.size());
}

}  // namespace velmora
