// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The port to an InterBase or Firebird client: a connection and its queries, exactly as the engine needs them. A
// backend turns its own errors into EVelmora, text unchanged.

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/ClientConnection.h"
#include "core/ClientRows.h"

namespace velmora {

// Named parameters of a connection.
inline constexpr std::string_view kServerParam = "SERVER";
inline constexpr std::string_view kUserNameParam = "USER NAME";

// Created unconnected; parameters are read while connecting. It has one transaction, the default one. Every statement
// runs in that while it is started, and otherwise in one of its own that is committed at once: a transaction that has
// read a table keeps others from dropping it.
//
// A backend's destructor disconnects and raises nothing; queries must be gone by then.
class TIBODatabase : public TClientConnection {
 public:
  TIBODatabase() = default;
  TIBODatabase(const TIBODatabase&) = delete;
  TIBODatabase& operator=(const TIBODatabase&) = delete;

  std::string DatabaseName;  // a path or an alias, on SERVER where that is given
  std::string Password;
  int ConnectTimeout = 15;  // seconds that a server may take to be reached, and to answer a login
  int LockTimeout = 10;     // seconds that a statement waits for what another transaction holds

  void SetParam(std::string_view name, std::string value) { params_.insert_or_assign(std::string(name), value); }
  std::string Param(std::string_view name) const;  // empty when it was not set

  // A disconnect undoes whatever the default transaction has done and not committed.
  std::optional<bool> TransactionOpen(bool /*refresh*/) override { return InTransaction(); }

  virtual bool InTransaction() const = 0;
  virtual void StartTransaction() = 0;  // raises where one is started
  virtual void Commit() = 0;            // nothing happens without one
  virtual void Rollback() = 0;

  // Runs a statement and gives all of its rows; one that has none gives a dataset without fields.
  virtual std::unique_ptr<TMemDataset> Read(const std::string& sql) = 0;
  virtual std::int64_t Execute(const std::string& sql) = 0;  // gives the count of rows affected

  // An unconnected one of the same backend; parameters and event are the caller's to set.
  virtual std::unique_ptr<TIBODatabase> NewDatabase() const = 0;

 private:
  std::map<std::string, std::string, std::less<>> params_;
};

// One statement and its rows, which Open reads whole: nothing on the server waits for the last of them. As a dataset it
// is open from Open to Close. A query may be used again and again.
class TIBOQuery : public TClientRows {
 public:
  explicit TIBOQuery(TIBODatabase& connection) : IB_Connection(connection) {}

  TIBODatabase& IB_Connection;
  std::string SQL;

  void Open();  // runs SQL and stands on the first row; open rows are closed first
  void ExecuteDirect(const std::string& sql);
  std::int64_t RowsAffected() const { return rows_affected_; }  // of the last ExecuteDirect

 private:
  std::int64_t rows_affected_ = 0;
};

}  // namespace velmora
