// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqlclient/ClientNative.h"

#include <algorithm>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "mysqlclient/ReadAhead.h"
#include "mysqlnet/MySqlResultSet.h"
#include "mysqlnet/MySqlSession.h"
#include "mysqltext/ServerVersion.h"
#include "util/Errors.h"

namespace velmora {

namespace {

constexpr int kTcp = 0;
constexpr int kSocket = 3;

TMySqlTls TlsOf(const TMyConnection& connection, bool local) {
  const TMyOptions& options = connection.Options;
  switch (options.Tls) {
    case ETls::Required:
      return {EMySqlTls::Required, options.CaFile, options.CertFile, options.KeyFile};
    case ETls::VerifyCa:
      return {EMySqlTls::VerifyCa, options.CaFile, options.CertFile, options.KeyFile};
    case ETls::Preferred:
      return {local ? EMySqlTls::Off : EMySqlTls::Preferred, {}, options.CertFile, options.KeyFile};
    default:
      return {};
  }
}

TMySqlLoginRules LoginRulesOf(const TMyConnection& connection) {
  const TMyOptions& options = connection.Options;
  return {true, options.GetServerPublicKey, ServerPublicKey(connection), options.AllowOldLogin};
}

class TNativeWire final : public TMyWire, private TReadAhead::TLine {
 public:
  void Open(const TMyConnection& connection, const TMyRoute& route, int answer_time) override {
    session_ = std::make_unique<TMySqlSession>();
    session_->protocol = route.IsLocal() ? kSocket : kTcp;
    session_->connect_timeout = LoginTime(connection, answer_time);
    SetAnswerTime(answer_time);
    session_->current_protocol = true;
    // The frames of compression are numbered by command, so that replies have to be waited for.
    reads_ahead_ = connection.Options.ReadAhead && !connection.Options.Compress;
    session_->tls = TlsOf(connection, route.IsLocal());
    session_->login_rules = LoginRulesOf(connection);
    const std::uint32_t flags = kMultiResults | (connection.Options.Compress ? kCompression : 0U);
    try {
      Guarded([&] {
        session_->Connect(route.host, connection.Username, connection.Password, connection.Database, route.port, flags,
                          route.socket);
      });
    } catch (...) {
      session_.reset();
      throw;
    }
  }
  void SetAnswerTime(int seconds) override { session_->command_timeout = seconds; }
  bool IsUnchecked() const override { return session_->IsEncrypted() && !session_->tls.IsChecked(); }
  bool IsOpen() const override { return session_ != nullptr && session_->net.vio != nullptr; }
  void Close() override {
    ahead_.Forget();
    if (session_) session_->Close();
  }

  void Expect(const TStringList& statements, bool at_once) override {
    if (!reads_ahead_) return;
    ahead_.Expect(statements);
    if (at_once) Guarded([&] { ahead_.Begin(*this); });
  }
  void Send(std::string_view sql) override {
    Guarded([&] {
      if (ahead_.Ask(sql, *this)) session_->AwaitReply();
      session_->ReadQueryResult();
    });
  }
  std::unique_ptr<TMyRows> Rows(bool keep) override;
  void SkipFurther() override {
    Guarded([&] {
      while (session_->HasMoreResults()) {
        session_->ReadQueryResult();
        if (session_->has_result) TMySqlResultSet(*session_).Skip();
      }
    });
  }

  std::int64_t RowsAffected() const override { return static_cast<std::int64_t>(session_->affected_rows); }
  std::size_t WarningCount() const override { return session_->warning_count; }
  std::optional<bool> InTransaction() const override { return (session_->server_status & kInTransaction) != 0; }
  std::string ServerVersion() const override { return std::string(PlainServerVersion(session_->server_version)); }
  std::uint64_t ThreadId() const override { return session_->thread_id; }
  int Handle() const override { return session_->net.vio->Handle(); }

  // Runs what talks to the server. Its errors become those of the port, and close the wire where they are its end.
  template <class Act>
  std::invoke_result_t<Act> Guarded(Act act) {
    try {
      return act();
    } catch (const EMySqlException& error) {
      if (session_->net.Lost() || IsFarewell(error.Number())) Close();
      throw ToldError(error.Number(), error.what());
    } catch (const SocketException& error) {
      Close();
      throw EMySqlException(error.Number(), error.what());
    } catch (const EVelmora& error) {
      Close();
      throw EMySqlException(error.what());
    }
  }

 private:
  void SendOnly(const std::vector<std::string_view>& statements) override {
    session_->net.Hold();
    RunGuarded(
        [&] {
          for (const std::string_view sql : statements) session_->SimpleCommand(kQuery, sql, true, sql.size());
        },
        [this] { session_->net.Release(); });
  }
  void SkipReply() override {
    session_->AwaitReply();
    try {
      session_->ReadQueryResult();
      if (session_->has_result) TMySqlResultSet(*session_).Skip();
      SkipFurther();
    } catch (const EMySqlException& error) {
      if (session_->net.Lost() || IsFarewell(error.Number())) throw;
    }
  }

  std::unique_ptr<TMySqlSession> session_;
  TReadAhead ahead_;
  bool reads_ahead_ = false;
};

// While rows are on the wire it must live as long.
class TNativeRows final : public TMyRows {
 public:
  TNativeRows(TNativeWire& wire, TMySqlSession& session, bool keep) : wire_(wire), result_(session), kept_(keep) {
    columns_.reserve(result_.Columns().size());
    for (const TMySqlColumn& column : result_.Columns())
      columns_.push_back({column.name, column.type, column.flags, column.charset, column.length});
    if (keep) result_.FetchAll();
  }

  const std::vector<TMyColumn>& Columns() const override { return columns_; }
  bool Next() override {
    return kept_ ? result_.Next() : wire_.Guarded([this] { return result_.Next(); });
  }
  std::optional<std::string_view> Value(std::size_t column) const override { return result_.Value(column); }
  std::size_t Count() const override { return result_.RowCount(); }
  void First() override { result_.First(); }
  void Skip() override {
    wire_.Guarded([this] { result_.Skip(); });
  }

 private:
  TNativeWire& wire_;
  TMySqlResultSet result_;
  std::vector<TMyColumn> columns_;
  const bool kept_;
};

std::unique_ptr<TMyRows> TNativeWire::Rows(bool keep) {
  if (!session_->has_result) return nullptr;
  return Guarded([&]() -> std::unique_ptr<TMyRows> { return std::make_unique<TNativeRows>(*this, *session_, keep); });
}

}  // namespace

std::unique_ptr<TMyWire> TNativeConnection::NewWire() const { return std::make_unique<TNativeWire>(); }

}  // namespace velmora
