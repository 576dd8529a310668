#include "engines/mysql/ClientLibrary.h"

#include <errmsg.h>
#include <mysql.h>
#include <mysqld_error.h>

#include <algorithm>
#include <iterator>
#include <mutex>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "engines/mysql/MySQLValues.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kCharacterSet[] = "utf8mb4";
constexpr char kNoMemory[] = "The MySQL client library could not be started";
constexpr char kForwardOnly[] = "These rows can only be read forward";
constexpr char kCutOff[] = "The connection was closed before all rows were read";
constexpr char kNothing[] = "do 0";  // a statement for its answer alone
constexpr int kHighestPort = 65535;
constexpr char kNoPort[] = "%d is no port: it must be a number from 1 to 65535";
constexpr char kNoLevel[] = "Isolation level %d is unknown";
constexpr const char* kSetLevel[] = {
    "set transaction isolation level read uncommitted", "set transaction isolation level read committed",
    "set transaction isolation level repeatable read", "set transaction isolation level serializable"};

// Errors after which the server no longer listens: the library's, the server's farewells, and its word of a packet that
// it could not take. The number without a name is MySQL's for a passed wait_timeout.
bool IsLost(unsigned error) {
  constexpr unsigned kLost[] = {CR_SERVER_GONE_ERROR, CR_SERVER_LOST,       CR_SERVER_LOST_EXTENDED,
                                ER_SERVER_SHUTDOWN,   ER_CONNECTION_KILLED, 4031};
  return std::find(std::begin(kLost), std::end(kLost), error) != std::end(kLost) ||
         (error >= ER_NET_PACKET_TOO_LARGE && error <= ER_NET_WRITE_INTERRUPTED);
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

bool IsLocal(const std::string& server) { return server.empty() || SameText(server, "localhost"); }

void SetTls(MYSQL* handle, const TMyConnection& connection) {
  const TMyOptions& options = connection.Options;
  const bool required = options.Tls == ETls::Required;
  const bool wanted = required || (options.Tls == ETls::Preferred && !IsLocal(connection.Server));
  // The library encrypts where the server offers it as soon as TLS is "enforced"; what makes it refuse a server that
  // offers none is the check of the certificate.
  const my_bool enforce = wanted ? 1 : 0;
  const my_bool verify = required ? 1 : 0;
  mysql_options(handle, MYSQL_OPT_SSL_ENFORCE, &enforce);
  mysql_options(handle, MYSQL_OPT_SSL_VERIFY_SERVER_CERT, &verify);
  if (required && !options.CaFile.empty()) mysql_options(handle, MYSQL_OPT_SSL_CA, options.CaFile.c_str());
}

void SetOptions(MYSQL* handle, const TMyConnection& connection) {
  const unsigned protocol = IsLocal(connection.Server) ? MYSQL_PROTOCOL_SOCKET : MYSQL_PROTOCOL_TCP;
  const unsigned timeout = static_cast<unsigned>(std::max(connection.ConnectionTimeout, 0));
  const unsigned no_local_files = 0;
  const my_bool no_reconnect = 0;
  mysql_options(handle, MYSQL_OPT_PROTOCOL, &protocol);
  mysql_options(handle, MYSQL_OPT_CONNECT_TIMEOUT, &timeout);
  mysql_options(handle, MYSQL_OPT_LOCAL_INFILE, &no_local_files);
  mysql_options(handle, MYSQL_OPT_RECONNECT, &no_reconnect);
  mysql_options(handle, MYSQL_SET_CHARSET_NAME, kCharacterSet);
  if (connection.Options.Compress) mysql_options(handle, MYSQL_OPT_COMPRESS, nullptr);
  SetTls(handle, connection);
}

// The columns of a result, and its rows as values.
class TRowReader {
 public:
  explicit TRowReader(MYSQL_RES* result) {
    const std::size_t count = mysql_num_fields(result);
    const MYSQL_FIELD* columns = mysql_fetch_fields(result);
    fields_.reserve(count);
    readers_.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
      const MYSQL_FIELD& column = columns[i];
      const TMyColumn announced{std::string(column.name, column.name_length), column.type, column.flags,
                                column.charsetnr, column.length};
      fields_.push_back(MyFieldDef(announced));
      readers_.emplace_back(announced);
    }
  }

  const std::vector<TFieldDef>& Fields() const { return fields_; }

  // `values` has one value per field.
  void Read(MYSQL_RES* result, MYSQL_ROW row, std::vector<TVariant>& values) const {
    const unsigned long* lengths = mysql_fetch_lengths(result);
    for (std::size_t i = 0; i < values.size(); ++i) {
      values[i] =
          readers_[i].Read(row[i] == nullptr ? std::nullopt : std::optional(std::string_view(row[i], lengths[i])));
    }
  }

 private:
  std::vector<TFieldDef> fields_;
  std::vector<TMyValueReader> readers_;
};

}  // namespace

// The open connection.
class TLibraryConnection::TLink {
 public:
  ~TLink() { Close(); }

  bool IsOpen() const { return handle_ != nullptr; }
  std::optional<bool> TransactionOpen(bool refresh);
  void Open(const TMyConnection& connection);
  void Close();

  // Sends a statement; whatever it gives has to be taken by one of the next three. A procedure's further results are
  // thrown away behind the first one.
  void Send(std::string_view sql);
  TResult Store();                  // null when there are no rows
  TResult Use(TBlockRows* reader);  // the same; until the last row `reader` owns the wire
  std::int64_t Drain();             // rows affected, or the number of rows thrown away

  MYSQL_ROW Fetch(TResult& rows);  // of Use; null behind the last row, and then `rows` are freed
  void Abandon(TResult& rows);     // of Use; raises nothing

  bool in_transaction = false;

 private:
  void CheckError();
  void SkipFurther();

  THandle handle_;
  TBlockRows* reader_ = nullptr;
};

// All rows, kept by the library; the current one as values.
class TLibraryConnection::TStoredRows final : public TDataset {
 public:
  explicit TStoredRows(TResult result)
      : result_(std::move(result)), reader_(result_.get()), values_(reader_.Fields().size()) {
    ReadRow();
  }

  const std::vector<TFieldDef>& Fields() const override { return reader_.Fields(); }
  std::int64_t RecordCount() const override {
    return result_ ? static_cast<std::int64_t>(mysql_num_rows(result_.get())) : 0;
  }
  bool Eof() const override { return eof_; }
  void First() override {
    if (!result_) return;
    mysql_data_seek(result_.get(), 0);
    ReadRow();
  }
  void Next() override {
    if (!eof_) ReadRow();
  }
  const TVariant& Value(std::size_t field) const override {
    if (field >= values_.size()) throw EListError(static_cast<std::int64_t>(field));
    return values_[field];
  }
  void Close() override {
    result_.reset();
    End();
  }

 private:
  void ReadRow() {
    MYSQL_ROW row = mysql_fetch_row(result_.get());
    eof_ = row == nullptr;
    if (eof_)
      End();
    else
      reader_.Read(result_.get(), row, values_);
  }
  void End() {
    eof_ = true;
    std::fill(values_.begin(), values_.end(), TVariant());
  }

  TResult result_;
  TRowReader reader_;
  std::vector<TVariant> values_;
  bool eof_ = false;
};

// Rows read forward in blocks, straight from the wire.
class TLibraryConnection::TBlockRows final : public TDataset {
 public:
  TBlockRows(TLink& link, int block) : link_(link), block_size_(static_cast<std::size_t>(std::max(block, 1))) {}
  ~TBlockRows() override { Abandon(); }

  // Takes the rows of the statement that was sent; false when it gives none.
  bool Start() {
    result_ = link_.Use(this);
    if (!result_) return false;
    reader_.emplace(result_.get());
    ReadBlock(block_size_);
    return true;
  }
  // Somebody else needs the connection: what is still to come is kept here.
  void KeepRest() { ReadBlock(static_cast<std::size_t>(-1)); }
  // The rest is thrown away.
  void CutOff() {
    Abandon();
    failure_ = kCutOff;
  }

  const std::vector<TFieldDef>& Fields() const override { return reader_->Fields(); }
  std::int64_t RecordCount() const override { return count_; }
  bool Eof() const override { return row_ >= rows_.size(); }
  void First() override {
    if (moved_) RaiseError(kForwardOnly);
  }
  void Next() override {
    if (Eof()) return;
    moved_ = true;
    if (++row_ < rows_.size()) return;
    rows_.clear();
    row_ = 0;
    if (result_)
      ReadBlock(block_size_);
    else if (!failure_.empty())
      throw EMySqlException(failure_);
  }
  const TVariant& Value(std::size_t field) const override {
    static const TVariant kNull;
    if (field >= reader_->Fields().size()) throw EListError(static_cast<std::int64_t>(field));
    return Eof() ? kNull : rows_[row_][field];
  }
  void Close() override {
    Abandon();
    rows_ = {};
    row_ = 0;
    count_ = 0;
  }

 private:
  void ReadBlock(std::size_t rows);
  void Abandon();

  TLink& link_;
  const std::size_t block_size_;
  TResult result_;  // while rows are on the wire
  std::optional<TRowReader> reader_;
  std::vector<std::vector<TVariant>> rows_;
  std::size_t row_ = 0;
  std::int64_t count_ = 0;
  bool moved_ = false;
  std::string failure_;  // why the rows that came are not all
};

// --- The open connection

void TLibraryConnection::TLink::Open(const TMyConnection& connection) {
  if (connection.Port < 0 || connection.Port > kHighestPort) throw EMySqlException(Format(kNoPort, connection.Port));
  StartLibrary();
  handle_.reset(mysql_init(nullptr));
  if (!handle_) throw EMySqlException(kNoMemory);
  SetOptions(handle_.get(), connection);
  const bool local = IsLocal(connection.Server);
  const MYSQL* connected = mysql_real_connect(handle_.get(), local ? nullptr : connection.Server.c_str(),
                                              connection.Username.c_str(), connection.Password.c_str(),
                                              TextOrNull(connection.Database), static_cast<unsigned>(connection.Port),
                                              local ? TextOrNull(connection.Options.Socket) : nullptr, 0);
  if (connected == nullptr) {
    const std::string message = mysql_error(handle_.get());
    Close();
    throw EMySqlException(message);
  }
}

void TLibraryConnection::TLink::Close() {
  in_transaction = false;
  if (reader_ != nullptr) reader_->CutOff();
  handle_.reset();
}

// Each accepted statement brings the server's state with it; an error does not, so that it is asked for.
std::optional<bool> TLibraryConnection::TLink::TransactionOpen(bool refresh) {
  if (!IsOpen() || reader_ != nullptr || (refresh && mysql_query(handle_.get(), kNothing) != 0)) return std::nullopt;
  unsigned status = 0;
  if (mariadb_get_infov(handle_.get(), MARIADB_CONNECTION_SERVER_STATUS, &status) != 0) return std::nullopt;
  return (status & SERVER_STATUS_IN_TRANS) != 0;
}

void TLibraryConnection::TLink::CheckError() {
  const unsigned number = mysql_errno(handle_.get());
  if (number == 0) return;
  const std::string message = mysql_error(handle_.get());
  if (IsLost(number)) Close();
  throw EMySqlException(message);
}

void TLibraryConnection::TLink::Send(std::string_view sql) {
  if (reader_ != nullptr) reader_->KeepRest();
  if (mysql_real_query(handle_.get(), sql.data(), sql.size()) != 0) CheckError();
}

TResult TLibraryConnection::TLink::Store() {
  TResult rows(mysql_store_result(handle_.get()));
  CheckError();
  SkipFurther();
  CheckError();
  return rows;
}

TResult TLibraryConnection::TLink::Use(TBlockRows* reader) {
  TResult rows(mysql_use_result(handle_.get()));
  CheckError();
  if (rows) {
    reader_ = reader;
  } else {
    SkipFurther();
    CheckError();
  }
  return rows;
}

std::int64_t TLibraryConnection::TLink::Drain() {
  TResult rows(mysql_use_result(handle_.get()));
  CheckError();
  if (!rows) {
    const auto affected = static_cast<std::int64_t>(mysql_affected_rows(handle_.get()));
    SkipFurther();
    CheckError();
    return affected;
  }
  std::int64_t count = 0;
  while (Fetch(rows) != nullptr) ++count;
  return count;
}

MYSQL_ROW TLibraryConnection::TLink::Fetch(TResult& rows) {
  MYSQL_ROW row = mysql_fetch_row(rows.get());
  if (row != nullptr) return row;
  reader_ = nullptr;
  rows.reset();  // before a fault can close the connection, which an unread result refers to
  CheckError();
  SkipFurther();
  CheckError();
  return nullptr;
}

void TLibraryConnection::TLink::Abandon(TResult& rows) {
  reader_ = nullptr;
  rows.reset();  // reads what is on the wire
  SkipFurther();
}

void TLibraryConnection::TLink::SkipFurther() {
  while (mysql_more_results(handle_.get()) != 0 && mysql_next_result(handle_.get()) == 0)
    TResult(mysql_use_result(handle_.get())).reset();
}

// --- Rows in blocks

void TLibraryConnection::TBlockRows::ReadBlock(std::size_t rows) {
  try {
    for (std::size_t i = 0; i < rows; ++i) {
      MYSQL_ROW row = link_.Fetch(result_);
      if (row == nullptr) return;
      rows_.emplace_back(reader_->Fields().size());
      reader_->Read(result_.get(), row, rows_.back());
      ++count_;
    }
  } catch (const EMySqlException& error) {
    failure_ = error.what();
    throw;
  }
}

void TLibraryConnection::TBlockRows::Abandon() {
  if (result_) link_.Abandon(result_);
}

// --- Queries

class TLibraryConnection::TQuery final : public TMyQuery {
 public:
  explicit TQuery(TLibraryConnection& connection) : TMyQuery(connection), library_(connection) {}

 private:
  std::unique_ptr<TDataset> DoOpen() override {
    library_.CheckConnected();
    library_.link_->Send(SQL);
    std::unique_ptr<TDataset> rows = UniDirectional && !FetchAll ? Blocks() : Stored();
    return rows ? std::move(rows) : std::make_unique<TMemDataset>(std::vector<TFieldDef>());
  }
  std::int64_t DoExecute() override {
    library_.CheckConnected();
    library_.link_->Send(SQL);
    return library_.link_->Drain();
  }

  std::unique_ptr<TDataset> Blocks() {
    auto rows = std::make_unique<TBlockRows>(*library_.link_, FetchRows);
    return rows->Start() ? std::move(rows) : nullptr;
  }
  std::unique_ptr<TDataset> Stored() {
    TResult result = library_.link_->Store();
    return result ? std::make_unique<TStoredRows>(std::move(result)) : nullptr;
  }

  TLibraryConnection& library_;
};

// --- The connection

TLibraryConnection::TLibraryConnection() : link_(std::make_unique<TLink>()) {}

TLibraryConnection::~TLibraryConnection() = default;

bool TLibraryConnection::GetConnected() const { return link_->IsOpen(); }

bool TLibraryConnection::InTransaction() const { return link_->in_transaction; }

std::optional<bool> TLibraryConnection::TransactionOpen(bool refresh) { return link_->TransactionOpen(refresh); }

void TLibraryConnection::StartTransaction() {
  if (IsolationLevel != 0) {
    if (IsolationLevel < 0 || static_cast<std::size_t>(IsolationLevel) > std::size(kSetLevel))
      RaiseError(Format(kNoLevel, IsolationLevel));
    Run(kSetLevel[IsolationLevel - 1]);
  }
  Run("start transaction");
  link_->in_transaction = true;
}

void TLibraryConnection::Commit() {
  Run("commit");
  link_->in_transaction = false;
}

void TLibraryConnection::Rollback() {
  Run("rollback");
  link_->in_transaction = false;
}

std::unique_ptr<TMyQuery> TLibraryConnection::NewQuery() { return std::make_unique<TQuery>(*this); }

std::unique_ptr<TMyConnection> TLibraryConnection::NewConnection() const {
  auto connection = std::make_unique<TLibraryConnection>();
  connection->CopyOptions(*this);
  return connection;
}

void TLibraryConnection::DoConnect() { link_->Open(*this); }

void TLibraryConnection::DoDisconnect() { link_->Close(); }

void TLibraryConnection::Run(const char* statement) {
  CheckConnected();
  link_->Send(statement);
  link_->Drain();
}

}  // namespace velmora
