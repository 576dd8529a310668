// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/run/ScratchDatabase.h"

#include <algorithm>
#include <random>
#include <utility>
#include "exact/run/RefusedRenames.h"

#include "core/Host.h"
#include "core/Meta.h"
#include "mysqltext/Lexer.h"
#include "util/Errors.h"
#include "util/Format.h"

namespace velmora {

namespace {

constexpr char kNoTarget[] = "There is no connected target whose server could hold a scratch database";
constexpr std::string_view kPrefix = "velmora_scratch_";
constexpr std::size_t kDigits = 16;  // that follow it
constexpr char kChecks[] = "set session foreign_key_checks = %d";
constexpr char kKeyRules[] =
    "set session foreign_key_checks = @@foreign_key_checks /*!80013 , session sql_require_primary_key = %s */ "
    "/*!80030 , session sql_generate_invisible_primary_key = %s */";
constexpr char kBinaryLogOff[] = "set session sql_log_bin = 0";
constexpr char kNotMade[] = "The scratch database %s cannot be made (the login needs all rights on `%s%%`.*): %s";
constexpr char kLeftBehind[] = "The scratch database %s could not be removed: %s";
constexpr char kLeftover[] =
    "the scratch database %s is still on the server, left by a run that was killed; to remove it: drop database %s";
constexpr char kLogged[] =
    "what is done in the scratch database goes to the server's binary log: this login may not switch that off "
    "(sql_log_bin)";
constexpr char kNotStrict[] =
    "set session sql_mode = replace(replace(@@sql_mode, 'STRICT_TRANS_TABLES', ''), 'STRICT_ALL_TABLES', '')";
constexpr char kServersTimestamps[] =
    "set session explicit_defaults_for_timestamp = @@global.explicit_defaults_for_timestamp";
constexpr int kInterrupted = 1317;

std::string FreshName() {
  std::random_device random;
  return Format("%s%08x%08x", std::string(kPrefix), random(), random());
}

bool IsScratchName(const std::string& name) {
  return name.size() == kPrefix.size() + kDigits && name.starts_with(kPrefix) &&
         name.find_first_not_of("0123456789abcdef", kPrefix.size()) == std::string::npos;
}

std::string Value(TDBConn& conn, const std::string& query) {
  TVariant value;
  conn.GetResultSQL(query, value);
  return VarToText(value);
}

}  // namespace

TScratchDatabase::TScratchDatabase(TDBConn& target, TScratchPorts ports)
    : target_(target), ports_(std::move(ports)), name_(FreshName()) {
  if (!target.GetConnected()) RaiseError(kNoTarget);
  conn_ = target.Clone();
  texts_ = dynamic_cast<TCreationTexts*>(conn_.get());
  if (texts_ == nullptr) RaiseError(kNoTarget);
  texts_->PrepareExactTexts();
}

void TScratchDatabase::RunWithin(const std::function<void()>& body) {
  RunGuarded(
      [&] {
        NameLeftovers();
        LeaveOutOfBinaryLog();
        RunOn(conn_.get());
        Create();
        body();
      },
      [this] {
        RunOn(nullptr);
        Remove();
      });
  Host().ProcessMessages();  // who was told to end while the database was removed ends now
}

// The lock of this name says, to later runs, that the database is in use.
void TScratchDatabase::Create() {
  const std::string set = Value(*conn_, "select @@character_set_database");
  const std::string collation = Value(*conn_, "select @@collation_database");
  Value(*conn_, "select get_lock('" + name_ + "', 0)");
  try {
    Run("create database " + QuotedName(name_) + " character set " + set + " collate " + collation);
    made_ = true;
  } catch (const EMySqlException& error) {
    made_ = !conn_->GetConnected() || error.Number() == kInterrupted;  // nobody knows
    RaiseError(Format(kNotMade, name_, std::string(kPrefix), error.what()));
  } catch (const EVelmora&) {
    made_ = true;
    throw;
  }
  Run("use " + QuotedName(name_));
  SwitchChecks(false);
}

void TScratchDatabase::SwitchChecks(bool on) {
  if (checks_ == on) return;
  Run(Format(kChecks, on ? 1 : 0));
  checks_ = on;
}

void TScratchDatabase::SwitchKeyRules(bool on) {
  try {
    Run(on ? Format(kKeyRules, "@@global.sql_require_primary_key", "@@global.sql_generate_invisible_primary_key")
           : Format(kKeyRules, "0", "0"));
  } catch (const EMySqlException&) {
    if (!conn_->GetConnected()) throw;  // the login may not
  }
}

// Modes that say how a text is read stay out: what was checked is what runs.
void TScratchDatabase::TakeServersDefaults() {
  if (Value(*conn_, "select @@global.sql_mode like '%STRICT\\_%'") == "0") Run(kNotStrict);
  try {
    Run(kServersTimestamps);
  } catch (const EMySqlException&) {
    if (!conn_->GetConnected()) throw;  // others have one setting for all sessions
  }
}

void TScratchDatabase::Run(const std::string& statement) {
  Host().ProcessMessages();
  try {
    ExecuteChange(*conn_, statement);
  } catch (const EMySqlException&) {
    Host().ProcessMessages();
    throw;
  }
}

TStringList TScratchDatabase::Tables() {
  conn_->RefreshTableList();
  TStringList tables;
  conn_->meta().TableNames(tables);
  texts_->ExpectCreationTexts(tables);
  return tables;
}

std::string TScratchDatabase::CreationText(const std::string& table) {
  Host().ProcessMessages();
  std::string text;
  texts_->ShowCreateTable(table, text);
  return text;
}

TDatabaseObjects TScratchDatabase::Objects() {
  conn_->RefreshTableList();
  return {name_, texts_->OtherObjects()};
}

// By a new connection where this one is lost. Foreign keys within must not stand in the way.
void TScratchDatabase::Remove() {
  if (!made_) return;
  try {
    if (!conn_->GetConnected()) {
      conn_ = target_.Clone();
      LeaveOutOfBinaryLog();
    }
    conn_->ExecSQL("unlock tables");  // which a statement that failed has left
    conn_->ExecSQL(Format(kChecks, 0));
    conn_->ExecSQL("drop database if exists " + QuotedName(name_));
  } catch (const EVelmora& error) {
    RaiseError(Format(kLeftBehind, name_, error.what()));
  }
}

void TScratchDatabase::LeaveOutOfBinaryLog() {
  try {
    conn_->ExecSQL(kBinaryLogOff);
  } catch (const EMySqlException&) {
    if (!conn_->GetConnected()) throw;
    if (!made_ && Value(*conn_, "select @@log_bin") == "1") Warn(kLogged);
  }
}

// One that is in use holds the lock of its name.
void TScratchDatabase::NameLeftovers() {
  TStringList names;
  const std::unique_ptr<TDataset> rows = conn_->OpenQuery("show databases like 'velmora\\_scratch\\_%'");
  for (; !rows->Eof(); rows->Next()) names.push_back(VarToText(rows->Value(0)));
  rows->Close();
  for (const std::string& name : names)
    if (IsScratchName(name) && Value(*conn_, "select is_free_lock('" + name + "')") == "1")
      Warn(Format(kLeftover, name, QuotedName(name)));
}

void TScratchDatabase::Warn(const std::string& text) const {
  if (ports_.warn) ports_.warn(text);
}

void TScratchDatabase::RunOn(TDBConn* conn) const {
  if (ports_.runs_on) ports_.runs_on(conn);
}

}  // namespace velmora
