// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqlclient/ClientLibrary.h"

#include <errmsg.h>
#include <mysql.h>
// After it.
#include <ma_pvio.h>

#include <algorithm>
#include <iterator>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "util/Errors.h"
#include "util/Format.h"

namespace velmora {

namespace {

constexpr char kCharacterSet[] = "utf8mb4";
constexpr char kNoMemory[] = "The MySQL client library could not be started";
// Without a look at the name the library takes a server that offers no TLS, too, and tells it the password.
constexpr char kChainAlone[] =
    "The client library cannot check a certificate but for the name in it: give --tls required, or --client native";
constexpr my_socket kNoSocket = static_cast<my_socket>(-1);  // of a connection that the library has given up

// Errors of the library after which there is nobody left to talk to, or no way to understand each other.
bool IsLost(unsigned error) {
  constexpr unsigned kLost[] = {CR_SERVER_GONE_ERROR,    CR_SERVER_LOST,          CR_SERVER_LOST_EXTENDED,
                                CR_NET_PACKET_TOO_LARGE, CR_SSL_CONNECTION_ERROR, CR_MALFORMED_PACKET};
  return std::find(std::begin(kLost), std::end(kLost), error) != std::end(kLost) || IsFarewell(static_cast<int>(error));
}

struct TFreeResult {
  void operator()(MYSQL_RES* result) const { mysql_free_result(result); }
};
using TResult = std::unique_ptr<MYSQL_RES, TFreeResult>;

struct TCloseHandle {
  void operator()(MYSQL* handle) const { mysql_close(handle); }
};
using THandle = std::unique_ptr<MYSQL, TCloseHandle>;

void StartLibrary() {
  static std::once_flag started;  // the library itself is not ready for two threads here
  std::call_once(started, [] {
    if (mysql_server_init(0, nullptr, nullptr) != 0) throw EMySqlException(kNoMemory);
  });
}

const char* TextOrNull(const std::string& text) { return text.empty() ? nullptr : text.c_str(); }

void SetTls(MYSQL* handle, const TMyOptions& options, ETls tls) {
  // The library encrypts where the server offers it as soon as TLS is "enforced"; what makes it refuse a server that
  // offers none is the check of the certificate.
  const my_bool enforce = tls != ETls::Off ? 1 : 0;
  const my_bool verify = tls == ETls::Required ? 1 : 0;
  mysql_options(handle, MYSQL_OPT_SSL_ENFORCE, &enforce);
  mysql_options(handle, MYSQL_OPT_SSL_VERIFY_SERVER_CERT, &verify);
  if (verify != 0 && !options.CaFile.empty()) mysql_options(handle, MYSQL_OPT_SSL_CA, options.CaFile.c_str());
  if (tls == ETls::Off || options.CertFile.empty()) return;
  const std::string& key = options.KeyFile.empty() ? options.CertFile : options.KeyFile;
  mysql_options(handle, MYSQL_OPT_SSL_CERT, options.CertFile.c_str());
  mysql_options(handle, MYSQL_OPT_SSL_KEY, key.c_str());
}

// `answer_time` is how long the server may be silent, in seconds; 0 is for ever.
void SetOptions(MYSQL* handle, const TMyConnection& connection, bool local, unsigned answer_time) {
  const unsigned protocol = local ? MYSQL_PROTOCOL_SOCKET : MYSQL_PROTOCOL_TCP;
  const unsigned timeout = static_cast<unsigned>(LoginTime(connection, static_cast<int>(answer_time)));
  const unsigned no_local_files = 0;
  const my_bool no_reconnect = 0;
  mysql_options(handle, MYSQL_OPT_PROTOCOL, &protocol);
  mysql_options(handle, MYSQL_OPT_CONNECT_TIMEOUT, &timeout);
  if (answer_time > 0) mysql_options(handle, MYSQL_OPT_READ_TIMEOUT, &answer_time);
  mysql_options(handle, MYSQL_OPT_LOCAL_INFILE, &no_local_files);
  mysql_options(handle, MYSQL_OPT_RECONNECT, &no_reconnect);
  mysql_options(handle, MYSQL_SET_CHARSET_NAME, kCharacterSet);
  if (connection.Options.Compress) mysql_options(handle, MYSQL_OPT_COMPRESS, nullptr);
  if (!ServerPublicKey(connection).empty())
    mysql_options(handle, MYSQL_SERVER_PUBLIC_KEY, connection.Options.ServerPublicKey.c_str());
}

class TLibraryWire final : public TMyWire {
 public:
  void Open(const TMyConnection& connection, const TMyRoute& route, int answer_time) override;
  bool IsOpen() const override { return handle_ != nullptr; }
  void Close() override { handle_.reset(); }
  void SetAnswerTime(int seconds) override {
    MARIADB_PVIO* line = handle_->net.pvio;
    line->methods->set_timeout(line, PVIO_READ_TIMEOUT, seconds);
  }
  bool IsUnchecked() const override { return !checked_ && mysql_get_ssl_cipher(handle_.get()) != nullptr; }

  void Send(std::string_view sql) override {
    if (mysql_real_query(handle_.get(), sql.data(), sql.size()) != 0) CheckError();
  }
  std::unique_ptr<TMyRows> Rows(bool keep) override;
  void SkipFurther() override {
    while (mysql_more_results(handle_.get()) != 0 && mysql_next_result(handle_.get()) == 0)
      TResult(mysql_use_result(handle_.get())).reset();
    CheckError();
  }

  std::int64_t RowsAffected() const override { return static_cast<std::int64_t>(mysql_affected_rows(handle_.get())); }
  std::size_t WarningCount() const override { return mysql_warning_count(handle_.get()); }
  std::optional<bool> InTransaction() const override {
    unsigned status = 0;
    if (mariadb_get_infov(handle_.get(), MARIADB_CONNECTION_SERVER_STATUS, &status) != 0) return std::nullopt;
    return (status & SERVER_STATUS_IN_TRANS) != 0;
  }
  std::string ServerVersion() const override { return mysql_get_server_info(handle_.get()); }
  std::uint64_t ThreadId() const override { return mysql_thread_id(handle_.get()); }
  int Handle() const override { return static_cast<int>(mysql_get_socket(handle_.get())); }

  void CheckError();  // raises what went wrong last, if it did

 private:
  void TryToOpen(const TMyConnection& connection, const TMyRoute& route, int answer_time, ETls tls);
  EMySqlException LastError() const {
    return ToldError(static_cast<int>(mysql_errno(handle_.get())), mysql_error(handle_.get()));
  }

  THandle handle_;
  bool checked_ = false;  // the server's certificate, where there is one
};

// While rows are on the wire it must live as long.
class TLibraryRows final : public TMyRows {
 public:
  TLibraryRows(TLibraryWire& wire, TResult result, bool kept) : wire_(wire), result_(std::move(result)), kept_(kept) {
    const std::size_t count = mysql_num_fields(result_.get());
    const MYSQL_FIELD* columns = mysql_fetch_fields(result_.get());
    columns_.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
      const MYSQL_FIELD& column = columns[i];
      columns_.push_back({std::string(column.name, column.name_length), static_cast<int>(column.type), column.flags,
                          column.charsetnr, column.length});
    }
  }

  const std::vector<TMyColumn>& Columns() const override { return columns_; }
  bool Next() override {
    row_ = result_ ? mysql_fetch_row(result_.get()) : nullptr;
    if (row_ != nullptr) {
      lengths_ = mysql_fetch_lengths(result_.get());
      return true;
    }
    if (!kept_ && result_) {
      result_.reset();  // before a fault can close the connection, which an unread result refers to
      wire_.CheckError();
    }
    return false;
  }
  std::optional<std::string_view> Value(std::size_t column) const override {
    if (row_[column] == nullptr) return std::nullopt;
    return std::string_view(row_[column], lengths_[column]);
  }
  std::size_t Count() const override { return kept_ ? static_cast<std::size_t>(mysql_num_rows(result_.get())) : 0; }
  void First() override { mysql_data_seek(result_.get(), 0); }
  void Skip() override {
    result_.reset();  // reads what is on the wire
    wire_.CheckError();
  }

 private:
  TLibraryWire& wire_;
  TResult result_;
  const bool kept_;
  std::vector<TMyColumn> columns_;
  MYSQL_ROW row_ = nullptr;
  const unsigned long* lengths_ = nullptr;
};

// Old servers have a TLS that the library no longer takes, and a line that was only to be encrypted where possible
// is not, then; but for one on which a certificate of ours was to be shown.
void TLibraryWire::Open(const TMyConnection& connection, const TMyRoute& route, int answer_time) {
  StartLibrary();
  ETls tls = connection.Options.Tls;
  if (tls == ETls::VerifyCa) throw EMySqlException(kChainAlone);
  if (tls == ETls::Preferred && route.IsLocal()) tls = ETls::Off;
  const bool may_be_plain = tls == ETls::Preferred && connection.Options.CertFile.empty();
  try {
    TryToOpen(connection, route, answer_time, tls);
  } catch (const EMySqlException& error) {
    if (!may_be_plain || error.Number() != CR_SSL_CONNECTION_ERROR) throw;
    TryToOpen(connection, route, answer_time, ETls::Off);
  }
}

void TLibraryWire::TryToOpen(const TMyConnection& connection, const TMyRoute& route, int answer_time, ETls tls) {
  handle_.reset(mysql_init(nullptr));
  if (!handle_) throw EMySqlException(kNoMemory);
  checked_ = tls == ETls::Required;
  SetOptions(handle_.get(), connection, route.IsLocal(), static_cast<unsigned>(answer_time));
  SetTls(handle_.get(), connection.Options, tls);
  const MYSQL* connected = mysql_real_connect(handle_.get(), TextOrNull(route.host), connection.Username.c_str(),
                                              connection.Password.c_str(), TextOrNull(connection.Database),
                                              static_cast<unsigned>(route.port), TextOrNull(route.socket), 0);
  if (connected == nullptr) {
    const EMySqlException error = LastError();
    Close();
    throw error;
  }
}

void TLibraryWire::CheckError() {
  const unsigned number = mysql_errno(handle_.get());
  if (number == 0) return;
  EMySqlException error = LastError();
  // A line that breaks off within TLS is told of as a fault of TLS, whatever broke it.
  if (number == CR_SSL_CONNECTION_ERROR)
    error = {CR_SERVER_LOST, Format("Lost connection to server during query: %s", error.what())};
  if (IsLost(number) || mysql_get_socket(handle_.get()) == kNoSocket) Close();
  throw error;
}

std::unique_ptr<TMyRows> TLibraryWire::Rows(bool keep) {
  TResult result(keep ? mysql_store_result(handle_.get()) : mysql_use_result(handle_.get()));
  CheckError();
  return result ? std::make_unique<TLibraryRows>(*this, std::move(result), keep) : nullptr;
}

}  // namespace

std::unique_ptr<TMyWire> TLibraryConnection::NewWire() const { return std::make_unique<TLibraryWire>(); }

}  // namespace velmora
