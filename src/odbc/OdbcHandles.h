// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Environments, connections and statements of ODBC, ended with their objects. Calls that fail raise EOdbcError.

#include <sql.h>
#include <sqlext.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "util/Errors.h"

namespace velmora {

// What the driver, or the driver manager, says of a failed call: its messages, one per line, as they are.
class EOdbcError : public EVelmora {
 public:
  EOdbcError(std::string state, const std::string& message) : EVelmora(message), state_(std::move(state)) {}
  const std::string& State() const { return state_; }  // the SQLSTATE of the first message; empty without one

 private:
  std::string state_;
};

class TOdbcHandle {
 public:
  TOdbcHandle(SQLSMALLINT kind, const TOdbcHandle* parent);
  ~TOdbcHandle() { SQLFreeHandle(kind_, handle_); }
  TOdbcHandle(const TOdbcHandle&) = delete;
  TOdbcHandle& operator=(const TOdbcHandle&) = delete;

  SQLHANDLE Get() const { return handle_; }
  void Check(SQLRETURN result) const;  // raises for all but success, with or without messages

 private:
  SQLSMALLINT kind_;
  SQLHANDLE handle_ = SQL_NULL_HANDLE;
};

class TOdbcEnvironment : public TOdbcHandle {
 public:
  TOdbcEnvironment();
};

// A connection, not open at first. Its end rolls back what is not committed.
class TOdbcConnection {
 public:
  TOdbcConnection() : handle_(SQL_HANDLE_DBC, &environment_) {}
  ~TOdbcConnection();
  TOdbcConnection(const TOdbcConnection&) = delete;
  TOdbcConnection& operator=(const TOdbcConnection&) = delete;

  void SetLoginTimeout(int seconds);  // before the connection is opened
  // By a data source of odbc.ini; what is empty there comes from it.
  void OpenSource(const std::string& source, const std::string& user, const std::string& password);
  void OpenBy(const std::string& connection_string);

  void StartTransaction();  // read committed, as far as the driver knows it
  void Commit();
  bool InTransaction() const { return in_transaction_; }

  std::string Info(SQLUSMALLINT item) const;  // a text; empty where the driver says nothing
  std::string CurrentCatalog() const;         // the same
  bool IsLost() const;                        // as far as the driver tells
  const TOdbcHandle& Handle() const { return handle_; }

 private:
  void Set(SQLINTEGER attribute, std::uintptr_t value);

  TOdbcEnvironment environment_;
  TOdbcHandle handle_;
  bool open_ = false;
  bool in_transaction_ = false;
};

class TOdbcStatement : public TOdbcHandle {
 public:
  explicit TOdbcStatement(const TOdbcConnection& connection) : TOdbcHandle(SQL_HANDLE_STMT, &connection.Handle()) {}

  void SetMostRows(std::int64_t rows);  // a wish that drivers may pass over
  void Execute(const std::string& sql);
  int ColumnCount() const;
  std::int64_t Affected() const;  // rows; 0 where the driver does not know
  bool NextResult();              // of a statement that has several
};

// A data source that the driver manager knows.
struct TOdbcSource {
  std::string name;
  std::string description;  // in fact its driver
};

std::vector<TOdbcSource> OdbcSources(const TOdbcEnvironment& environment);

// A text as an argument.
SQLCHAR* OdbcText(const std::string& text);
SQLSMALLINT OdbcLength(const std::string& text);  // raises for a text that is too long

}  // namespace velmora
