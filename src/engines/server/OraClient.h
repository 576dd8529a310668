// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The port to an Oracle client: a session, its queries and its scripts, exactly as the engine needs them. A session of
// a kind turns the errors of its client into EVelmora, text unchanged.

#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "core/ClientConnection.h"
#include "core/Dataset.h"
#include "util/Lists.h"

namespace velmora {

// Values of ConnectMode.
inline constexpr int kOraNormal = 0;
inline constexpr int kOraSysOper = 1;
inline constexpr int kOraSysDba = 2;

struct TOraOptions {
  bool Net = false;  // direct mode: speaks to the server without Oracle client software
};

// What a statement gave. Rows are read whole before anything else happens on the session.
struct TOraResult {
  std::vector<TFieldDef> fields;  // none for a statement that gives no rows
  std::vector<TMemDataset::TRow> rows;
  std::int64_t row_count = 0;  // rows affected, or the number of rows
};

// Created unconnected; never asks anybody for a password. Parameters are read while connecting and may be changed at
// any time. Destruction disconnects and raises nothing. A disconnect rolls an open transaction back; once an error says
// that the server is gone, this is not connected and in no transaction.
//
// Outside a transaction every statement that gives no rows is committed by itself. Statements that change the structure
// end a transaction at the server, of which InTransaction knows nothing.
class TOraSession : public TClientConnection {
 public:
  TOraSession() = default;
  TOraSession(const TOraSession&) = delete;
  TOraSession& operator=(const TOraSession&) = delete;

  std::string Server;  // a service name or address in the client's own forms
  std::string Username;
  std::string Password;
  int ConnectMode = kOraNormal;
  TOraOptions Options;

  void SetConnected(bool connected) final;

  // These raise "Not connected" where there is no connection.
  bool InTransaction() const { return in_transaction_ && GetConnected(); }
  void StartTransaction();
  void Commit();
  void Rollback();
  TOraResult Run(const std::string& sql);  // one statement

  // An unconnected one of the same kind; parameters and event are the caller's to set.
  virtual std::unique_ptr<TOraSession> NewSession() const = 0;

 private:
  void CheckConnected() const;
  virtual TOraResult DoRun(const std::string& sql) = 0;
  virtual void DoCommit() = 0;
  virtual void DoRollback() = 0;

  bool in_transaction_ = false;
};

// One statement and its rows. As a dataset it is open from Open to Close. A query may be used again and again.
class TOraQuery final : public TDataset {
 public:
  explicit TOraQuery(TOraSession& session) : session_(session) {}  // which must live as long

  std::string SQL;

  void Open();     // runs SQL and stands on the first row; open rows are closed first
  void Execute();  // runs SQL and throws rows away, if it gives any
  std::int64_t RowsAffected() const { return rows_affected_; }  // of the last Execute

  const std::vector<TFieldDef>& Fields() const override { return result_.fields; }
  std::int64_t RecordCount() const override { return static_cast<std::int64_t>(result_.rows.size()); }
  bool Eof() const override { return row_ >= result_.rows.size(); }
  void First() override { row_ = 0; }
  void Next() override;
  void Prior();  // from past the last row to the last row; on the first row nothing happens
  const TVariant& Value(std::size_t field) const override;
  void Close() override;

 private:
  TOraSession& session_;
  TOraResult result_;
  std::size_t row_ = 0;
  std::int64_t rows_affected_ = 0;
};

enum class EOraErrorAction { Continue, Abort };

// Runs statement after statement.
class TOraScript {
 public:
  explicit TOraScript(TOraSession& session) : session_(session) {}  // which must live as long

  std::string SQL;
  // Called with the error of a statement. The action, Abort unless it says otherwise, decides on the statements after
  // it; an error that it raises itself ends the script and passes on.
  std::function<void(std::exception_ptr error, const std::string& sql, EOraErrorAction& action)> OnError;

  void Execute();  // without OnError the first error passes on

 private:
  TOraSession& session_;
};

// The statements of a script, trimmed, without their ";", which ends a statement outside quotes and comments. What
// holds nothing but comments is none. Blocks of PL/SQL are not known: their ";" cuts too.
TStringList OraStatements(std::string_view script);

}  // namespace velmora
