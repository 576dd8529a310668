// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqlclient/ServerConnection.h"

#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <iterator>
#include <mutex>
#include <type_traits>
#include <utility>
#include <vector>

#include "mysqlclient/ServerIdentity.h"
#include "mysqlclient/Waiting.h"
#include "util/Errors.h"
#include "util/Format.h"

namespace velmora {

namespace {

constexpr char kForwardOnly[] = "These rows can only be read forward";
constexpr char kCutOff[] = "The connection was closed before all rows were read";
constexpr char kBusy[] = "The connection still waits for its server";
constexpr char kNothing[] = "do 0";  // a statement for its answer alone
constexpr int kHighestPort = 65535;
constexpr char kNoPort[] = "%d is no port: it must be a number from 1 to 65535";
constexpr char kNoLevel[] = "Isolation level %d is unknown";
constexpr const char* kSetLevel[] = {
    "set transaction isolation level read uncommitted", "set transaction isolation level read committed",
    "set transaction isolation level repeatable read", "set transaction isolation level serializable"};
constexpr int kCancelTime = 3;  // seconds for a word to the server that somebody waits for
constexpr char kOtherServer[] = "The server of the statement could not be reached again to break it off";
constexpr char kNobodyLooked[] =
    "%s: the line is encrypted, but nobody has checked who answers: TLS \"verify-ca\" or \"required\" (--tls) does";

// A peer that has gone without a word is found out within minutes, however long a statement may take.
void KeepAlive(int socket) {
  constexpr int kOn = 1, kIdle = 60, kBetween = 30, kTries = 6;
  setsockopt(socket, SOL_SOCKET, SO_KEEPALIVE, &kOn, sizeof(kOn));
  setsockopt(socket, IPPROTO_TCP, TCP_KEEPIDLE, &kIdle, sizeof(kIdle));
  setsockopt(socket, IPPROTO_TCP, TCP_KEEPINTVL, &kBetween, sizeof(kBetween));
  setsockopt(socket, IPPROTO_TCP, TCP_KEEPCNT, &kTries, sizeof(kTries));
}

// The columns of a result as fields, and its rows as values.
class TRowReader {
 public:
  TRowReader(const std::vector<TMyColumn>& columns, bool times_as_sent) {
    fields_.reserve(columns.size());
    readers_.reserve(columns.size());
    for (const TMyColumn& column : columns) {
      fields_.push_back(MyFieldDef(column));
      readers_.emplace_back(column, times_as_sent);
    }
  }

  const std::vector<TFieldDef>& Fields() const { return fields_; }

  // `values` has one value per field.
  void Read(const TMyRows& rows, std::vector<TVariant>& values) const {
    for (std::size_t i = 0; i < values.size(); ++i) values[i] = readers_[i].Read(rows.Value(i));
  }

 private:
  std::vector<TFieldDef> fields_;
  std::vector<TMyValueReader> readers_;
};

}  // namespace

// What threads other than the connection's own may do with it. The socket is a duplicate: the backend closes its own
// whenever it likes, and the number might by then be another file's.
class TServerConnection::TGrip {
 public:
  ~TGrip() { LetGo(); }

  void Take(const TMyWire& wire, const TMyConnection& connection) {
    const std::lock_guard lock(guard_);
    thread_ = wire.ThreadId();
    socket_ = fcntl(wire.Handle(), F_DUPFD_CLOEXEC, 0);
    sibling_ = connection.NewSibling();
  }
  void LetGo() {
    const std::lock_guard lock(guard_);
    if (socket_ >= 0) close(socket_);
    socket_ = -1;
    server_.reset();
    sibling_.reset();
  }
  void Sever() {
    const std::lock_guard lock(guard_);
    if (socket_ >= 0) shutdown(socket_, SHUT_RDWR);
  }
  // The server's number of the connection, who the server is, and a way to it.
  struct TWay {
    std::uint64_t thread = 0;
    std::optional<TServerIdentity> server;
    std::unique_ptr<TMyConnection> sibling;  // null when there is no connection
  };
  TWay Way() {
    const std::lock_guard lock(guard_);
    return {thread_, server_, sibling_ ? sibling_->NewSibling() : nullptr};
  }
  bool KnowsServer() {
    const std::lock_guard lock(guard_);
    return server_.has_value();
  }
  void Know(std::optional<TServerIdentity> server) {
    const std::lock_guard lock(guard_);
    server_ = std::move(server);
  }

 private:
  std::mutex guard_;
  std::uint64_t thread_ = 0;
  int socket_ = -1;
  std::optional<TServerIdentity> server_;
  std::unique_ptr<TMyConnection> sibling_;  // one of the same kind
};

// The open connection.
class TServerConnection::TLink {
 public:
  ~TLink() { Close(); }

  // From here on the server is talked to on a thread of its own, and whoever asks waits by `waiting`; null: as before.
  void WaitBy(std::shared_ptr<TWaiting> waiting, TMyConnection& connection) {
    waiting_ = std::move(waiting);
    connection_ = &connection;
  }
  bool IsOpen() const { return wire_ && (waits_ || wire_->IsOpen()); }
  std::optional<bool> TransactionOpen(bool refresh);
  void Open(const TMyConnection& connection, std::unique_ptr<TMyWire> wire, int answer_time);
  void Close();
  void CancelRunning();            // by any thread; raises where it can't be the same server that is told
  void Sever() { grip_.Sever(); }  // the same

  void SetAnswerTime(int seconds) {
    if (IsOpen()) wire_->SetAnswerTime(seconds);
  }
  bool IsUnchecked() const { return wire_->IsUnchecked(); }
  std::string ServerVersion() const { return wire_->ServerVersion(); }
  // Asks the server who it is, so that a statement can be broken off from here on.
  void GetToKnow();

  void Expect(const TStringList& statements, bool at_once) {
    if (!IsOpen()) return;
    if (at_once) MakeRoom();
    Guarded([&] {
      wire_->Expect(statements, at_once);
      return true;
    });
  }
  // Send a statement and take what it gives. A procedure's further results are thrown away after the first one.
  std::unique_ptr<TMyRows> Store(std::string_view sql);                    // null when there are no rows
  std::unique_ptr<TMyRows> Use(std::string_view sql, TBlockRows* reader);  // until the last row `reader` owns the wire
  std::int64_t Drain(std::string_view sql);  // rows affected, or the number of rows thrown away

  // Takes rows of Use, up to so many, and gives each to `take`. False after the last row, and then `rows` are freed.
  template <class Take>
  bool Fetch(std::unique_ptr<TMyRows>& rows, std::size_t count, Take take);

  bool in_transaction = false;
  std::size_t warnings = 0;  // of Drain
  std::string reached_at;

 private:
  template <class Act>
  std::invoke_result_t<Act> Guarded(Act act);
  template <class Act>
  std::invoke_result_t<Act> Waited(Act act);
  void OpenBy(const TMyConnection& connection, const std::shared_ptr<TMyWire>& wire, const TMyRoute& route,
              int answer_time);
  void MakeRoom();
  bool Next(std::unique_ptr<TMyRows>& rows);

  std::shared_ptr<TMyWire> wire_;
  TGrip grip_;
  TBlockRows* reader_ = nullptr;
  std::shared_ptr<TWaiting> waiting_;
  TMyConnection* connection_ = nullptr;  // the one that waits
  bool waits_ = false;                   // for what the thread does with the wire
  TServerThread thread_;
};

// All rows, kept by the backend; the current one as values.
class TServerConnection::TStoredRows final : public TDataset {
 public:
  TStoredRows(std::unique_ptr<TMyRows> rows, bool times_as_sent)
      : rows_(std::move(rows)), reader_(rows_->Columns(), times_as_sent), values_(reader_.Fields().size()) {
    ReadRow();
  }

  const std::vector<TFieldDef>& Fields() const override { return reader_.Fields(); }
  std::int64_t RecordCount() const override { return rows_ ? static_cast<std::int64_t>(rows_->Count()) : 0; }
  bool Eof() const override { return eof_; }
  void First() override {
    if (!rows_) return;
    rows_->First();
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
    rows_.reset();
    End();
  }

 private:
  void ReadRow() {
    eof_ = !rows_->Next();
    if (eof_)
      End();
    else
      reader_.Read(*rows_, values_);
  }
  void End() {
    eof_ = true;
    std::fill(values_.begin(), values_.end(), TVariant());
  }

  std::unique_ptr<TMyRows> rows_;
  TRowReader reader_;
  std::vector<TVariant> values_;
  bool eof_ = false;
};

// Rows read forward in blocks, straight from the wire.
class TServerConnection::TBlockRows final : public TDataset {
 public:
  TBlockRows(TLink& link, int block, bool times_as_sent)
      : link_(link), block_size_(static_cast<std::size_t>(std::max(block, 1))), times_as_sent_(times_as_sent) {}
  ~TBlockRows() override { Abandon(); }

  // Sends the statement and takes its rows; false when it gives none.
  bool Start(std::string_view sql) {
    source_ = link_.Use(sql, this);
    if (!source_) return false;
    reader_.emplace(source_->Columns(), times_as_sent_);
    ReadBlock(block_size_);
    return true;
  }
  // Somebody else needs the connection: what is still to come is kept here.
  void KeepRest() { ReadBlock(static_cast<std::size_t>(-1)); }
  // The wire is closed.
  void CutOff() {
    source_.reset();
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
    if (source_)
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
  void Abandon() {
    if (source_) link_.Close();  // a server that is told to stop might be another one
  }

  TLink& link_;
  const std::size_t block_size_;
  const bool times_as_sent_;
  std::unique_ptr<TMyRows> source_;  // while rows are on the wire
  std::optional<TRowReader> reader_;
  std::vector<std::vector<TVariant>> rows_;
  std::size_t row_ = 0;
  std::int64_t count_ = 0;
  bool moved_ = false;
  std::string failure_;  // why the rows that came are not all
};

void TServerConnection::TBlockRows::ReadBlock(std::size_t rows) {
  try {
    link_.Fetch(source_, rows, [this](const TMyRows& row) {
      rows_.emplace_back(reader_->Fields().size());
      reader_->Read(row, rows_.back());
      ++count_;
    });
  } catch (const EMySqlException& error) {
    failure_ = error.what();
    throw;
  }
}

// --- The open connection

void TServerConnection::TLink::Open(const TMyConnection& connection, std::unique_ptr<TMyWire> wire, int answer_time) {
  if (connection.Port < 0 || connection.Port > kHighestPort) throw EMySqlException(Format(kNoPort, connection.Port));
  const std::vector<TMyRoute> routes = RoutesTo(connection);
  const std::shared_ptr<TMyWire> opened = std::move(wire);
  for (const TMyRoute& route : routes) {
    try {
      OpenBy(connection, opened, route, answer_time);
      reached_at = route.Name();
      break;
    } catch (const EMySqlException& error) {
      if (error.Number() != kNobodyAtSocket || &route == &routes.back()) throw;
    }
  }
  wire_ = opened;
  KeepAlive(wire_->Handle());
  grip_.Take(*wire_, connection);
}

// A login that is given up goes on to its end with what it was given.
void TServerConnection::TLink::OpenBy(const TMyConnection& connection, const std::shared_ptr<TMyWire>& wire,
                                      const TMyRoute& route, int answer_time) {
  if (!waiting_) return wire->Open(connection, route, answer_time);
  const std::shared_ptr<TMyConnection> same = connection.NewSibling();
  same->Database = connection.Database;
  waiting_->Do(thread_, nullptr, [=] { wire->Open(*same, route, answer_time); });
}

void TServerConnection::TLink::Close() {
  in_transaction = false;
  if (TBlockRows* reader = std::exchange(reader_, nullptr); reader != nullptr) {
    grip_.Sever();  // a backend could otherwise wait for rows that nobody wants
    reader->CutOff();
  }
  grip_.LetGo();
  if (wire_) wire_->Close();
}

// Whatever the wire does may be the end of it.
template <class Act>
std::invoke_result_t<Act> TServerConnection::TLink::Guarded(Act act) {
  try {
    return Waited(act);
  } catch (const EMySqlException&) {
    if (!wire_->IsOpen()) Close();
    throw;
  }
}

// Does what talks to the server where that is done.
template <class Act>
std::invoke_result_t<Act> TServerConnection::TLink::Waited(Act act) {
  if (!waiting_) return act();
  if (waits_) throw EMySqlException(kBusy);
  waits_ = true;
  std::optional<std::invoke_result_t<Act>> result;
  RunGuarded([&] { waiting_->Do(thread_, connection_, [&] { result.emplace(act()); }); }, [this] { waits_ = false; });
  return std::move(*result);
}

void TServerConnection::TLink::CancelRunning() {
  const TGrip::TWay way = grip_.Way();
  if (!way.sibling) return;
  if (!way.server) throw EMySqlException(kOtherServer);
  way.sibling->ConnectionTimeout = kCancelTime;
  TLink other;
  other.Open(*way.sibling, static_cast<const TServerConnection&>(*way.sibling).NewWire(), kCancelTime);
  other.GetToKnow();
  const std::optional<TServerIdentity> reached = other.grip_.Way().server;
  if (!reached || !IsSameServer(*reached, *way.server)) throw EMySqlException(kOtherServer);
  other.Drain(Format("kill query %d", way.thread));
}

void TServerConnection::TLink::GetToKnow() {
  if (!grip_.KnowsServer()) grip_.Know(Guarded([&] { return IdentityOf(*wire_); }));
}

// Each accepted statement brings the server's state with it; an error does not, so that it is asked for.
std::optional<bool> TServerConnection::TLink::TransactionOpen(bool refresh) {
  if (!IsOpen() || reader_ != nullptr || waits_) return std::nullopt;
  try {
    if (refresh) Drain(kNothing);
    return wire_->InTransaction();
  } catch (const EMySqlException&) {
    return std::nullopt;
  }
}

// The wire is free for the next statement.
void TServerConnection::TLink::MakeRoom() {
  if (reader_ != nullptr) reader_->KeepRest();
}

std::unique_ptr<TMyRows> TServerConnection::TLink::Store(std::string_view sql) {
  MakeRoom();
  return Guarded([&] {
    wire_->Send(sql);
    std::unique_ptr<TMyRows> rows = wire_->Rows(true);
    wire_->SkipFurther();
    return rows;
  });
}

std::unique_ptr<TMyRows> TServerConnection::TLink::Use(std::string_view sql, TBlockRows* reader) {
  MakeRoom();
  return Guarded([&] {
    wire_->Send(sql);
    std::unique_ptr<TMyRows> rows = wire_->Rows(false);
    if (rows)
      reader_ = reader;
    else
      wire_->SkipFurther();
    return rows;
  });
}

std::int64_t TServerConnection::TLink::Drain(std::string_view sql) {
  MakeRoom();
  return Guarded([&] {
    wire_->Send(sql);
    const std::int64_t affected = wire_->RowsAffected();
    const std::unique_ptr<TMyRows> rows = wire_->Rows(false);
    std::int64_t count = 0;
    while (rows && rows->Next()) ++count;
    wire_->SkipFurther();
    warnings = wire_->WarningCount();
    return rows ? count : affected;
  });
}

template <class Take>
bool TServerConnection::TLink::Fetch(std::unique_ptr<TMyRows>& rows, std::size_t count, Take take) {
  return Guarded([&] {
    for (; count > 0; --count) {
      if (!Next(rows)) return false;
      take(*rows);
    }
    return true;
  });
}

bool TServerConnection::TLink::Next(std::unique_ptr<TMyRows>& rows) {
  try {
    if (rows->Next()) return true;
  } catch (...) {
    reader_ = nullptr;
    rows.reset();
    throw;
  }
  reader_ = nullptr;
  rows.reset();
  wire_->SkipFurther();
  return false;
}

// --- Queries

class TServerConnection::TQuery final : public TMyQuery {
 public:
  explicit TQuery(TServerConnection& connection) : TMyQuery(connection), server_(connection) {}

 private:
  std::unique_ptr<TDataset> DoOpen() override {
    server_.CheckConnected();
    server_.link_->SetAnswerTime(server_.Options.ReadTimeout);
    std::unique_ptr<TDataset> rows = UniDirectional && !FetchAll ? Blocks() : Stored();
    return rows ? std::move(rows) : std::make_unique<TMemDataset>(std::vector<TFieldDef>());
  }
  std::int64_t DoExecute() override {
    server_.CheckConnected();
    server_.link_->SetAnswerTime(0);
    return server_.link_->Drain(SQL);
  }

  std::unique_ptr<TDataset> Blocks() {
    auto rows = std::make_unique<TBlockRows>(*server_.link_, FetchRows, Connection().Options.TimesAsSent);
    return rows->Start(SQL) ? std::move(rows) : nullptr;
  }
  std::unique_ptr<TDataset> Stored() {
    std::unique_ptr<TMyRows> rows = server_.link_->Store(SQL);
    return rows ? std::make_unique<TStoredRows>(std::move(rows), Connection().Options.TimesAsSent) : nullptr;
  }

  TServerConnection& server_;
};

// --- The connection

TServerConnection::TServerConnection() : link_(std::make_unique<TLink>()) {}

TServerConnection::~TServerConnection() = default;

bool TServerConnection::GetConnected() const { return link_->IsOpen(); }

std::string TServerConnection::ReachedAt() const { return link_->IsOpen() ? link_->reached_at : std::string(); }

std::string TServerConnection::ServerVersion() {
  CheckConnected();
  return link_->ServerVersion();
}

bool TServerConnection::InTransaction() const { return link_->in_transaction; }

std::optional<bool> TServerConnection::TransactionOpen(bool refresh) { return link_->TransactionOpen(refresh); }

void TServerConnection::StartTransaction() {
  CheckConnected();
  link_->GetToKnow();
  if (IsolationLevel != 0) {
    if (IsolationLevel < 0 || static_cast<std::size_t>(IsolationLevel) > std::size(kSetLevel))
      RaiseError(Format(kNoLevel, IsolationLevel));
    Run(kSetLevel[IsolationLevel - 1]);
  }
  Run("start transaction");
  link_->in_transaction = true;
}

void TServerConnection::Commit() {
  Run("commit");
  link_->in_transaction = false;
}

void TServerConnection::Rollback() {
  Run("rollback");
  link_->in_transaction = false;
}

std::size_t TServerConnection::WarningCount() const { return link_->warnings; }

std::unique_ptr<TMyQuery> TServerConnection::NewQuery() { return std::make_unique<TQuery>(*this); }

std::unique_ptr<TMyConnection> TServerConnection::NewConnection() const {
  std::unique_ptr<TServerConnection> connection = NewOfThisKind();
  connection->CopyOptions(*this);
  return connection;
}

void TServerConnection::PrepareToCancel() {
  if (GetConnected()) link_->GetToKnow();
}

void TServerConnection::CancelRunning() { link_->CancelRunning(); }

void TServerConnection::Sever() { link_->Sever(); }

void TServerConnection::ExpectStatements(const TStringList& statements, bool at_once) {
  link_->Expect(statements, at_once);
}

void TServerConnection::DoConnect() {
  link_->WaitBy(Waiting, *this);
  link_->Open(*this, NewWire(), Options.ReadTimeout);
  if (Waiting) link_->GetToKnow();  // whatever is waited for from here on can be broken off
  if (Notice && link_->IsUnchecked()) Notice(Format(kNobodyLooked, ReachedAt()));
}

void TServerConnection::DoDisconnect() { link_->Close(); }

void TServerConnection::Run(const char* statement) {
  CheckConnected();
  link_->SetAnswerTime(0);
  link_->Drain(statement);
}

}  // namespace velmora
