// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/server/ClientFirebird.h"

#include <firebird/Interface.h>

#include <algorithm>
#include <chrono>
#include <clocale>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <mutex>
#include <optional>
#include <utility>

#include "engines/server/AsideDatabase.h"
#include "engines/server/FirebirdLibrary.h"
#include "engines/server/FirebirdValues.h"
#include "engines/server/HostReach.h"
#include "util/Aside.h"
#include "util/Errors.h"
#include "util/Format.h"

namespace velmora {

namespace {

namespace fb = Firebird;

constexpr char kCharacterSet[] = "UTF8";
constexpr unsigned kDialect = 3;
constexpr char kNotConnected[] = "Not connected";
constexpr char kInTransaction[] = "A transaction is already started";
constexpr char kNoReaction[] = "The server %s did not react within %d seconds";
constexpr char kNoTransactionStatement[] = "Transactions cannot be started or ended by a statement on this connection";

// --- Objects of the library

struct TRelease {
  void operator()(fb::IReferenceCounted* object) const { object->release(); }
};
template <class T>
using THeld = std::unique_ptr<T, TRelease>;

// For an object that has come to its end in order, with which the library lets it go itself.
template <class T>
void Forget(THeld<T>& object) {
  static_cast<void>(object.release());
}

struct TDispose {
  void operator()(fb::IDisposable* object) const { object->dispose(); }
};
template <class T>
using TOwned = std::unique_ptr<T, TDispose>;

// A folder of the user's own for the lock files of the embedded engine; empty when there is none. The usual one belongs
// to the group of the server, or to whoever came first.
std::string LockFolder() {
  constexpr std::pair<const char*, const char*> kBases[] = {
      {"XDG_RUNTIME_DIR", ""}, {"XDG_CACHE_HOME", ""}, {"HOME", ".cache"}};
  for (const auto& [variable, below] : kBases) {
    const char* base = getenv(variable);
    if (base == nullptr || *base != '/') continue;
    const std::filesystem::path folder = std::filesystem::path(base) / below / "velmora" / "firebird";
    std::error_code failed;
    std::filesystem::create_directories(folder, failed);
    // Only the owner of a folder may do this.
    if (!failed) std::filesystem::permissions(folder, std::filesystem::perms::owner_all, failed);
    if (!failed) return folder.string();
  }
  return {};
}

// While this lives, this thread's texts are UTF-8 to the C library, whatever the environment says. The Firebird library
// asks when it first turns a file's name into the system's character set, which is UTF-8 here.
class TUtf8Locale {
 public:
  TUtf8Locale() : locale_(newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr)) {
    if (locale_ != nullptr) before_ = uselocale(locale_);
  }
  ~TUtf8Locale() {
    if (locale_ == nullptr) return;
    uselocale(before_);
    freelocale(locale_);
  }
  TUtf8Locale(const TUtf8Locale&) = delete;
  TUtf8Locale& operator=(const TUtf8Locale&) = delete;

 private:
  locale_t locale_;
  locale_t before_ = nullptr;
};

void ChooseLockFolder() {
  if (getenv("FIREBIRD_LOCK") != nullptr) return;
  const std::string folder = LockFolder();
  if (!folder.empty()) setenv("FIREBIRD_LOCK", folder.c_str(), 0);
}

// Raises where the library cannot be loaded, and tries again at the next call. The library reads its environment once,
// at its first call.
fb::IMaster& Master() {
  static std::once_flag loaded;
  static fb::IMaster* master = nullptr;
  std::call_once(loaded, [] {
    ChooseLockFolder();
    master = &LoadFirebirdLibrary();
  });
  return *master;
}

// --- Servers

// What a server is asked for where its name says nothing of it.
std::string UsualService() {
  constexpr char kName[] = "gds_db", kPort[] = "3050";  // of that name, which systems need not know
  const THeld<fb::IFirebirdConf> settings(Master().getConfigManager()->getFirebirdConf());
  const std::int64_t port = settings->asInteger(settings->getKey("RemoteServicePort"));
  if (port > 0) return std::to_string(port);
  const std::string name = settings->asString(settings->getKey("RemoteServiceName"));
  return name == kName ? kPort : name;
}

// The library itself waits as long as the system does for a host that takes no notice, which can be minutes. `server`
// is a name or an address, in brackets maybe, and perhaps "/" and a port or service.
void CheckReacts(const std::string& server, int seconds) {
  const std::size_t slash = server.find('/');
  std::string host = server.substr(0, slash);
  if (host.starts_with('[') && host.ends_with(']')) host = host.substr(1, host.size() - 2);
  const std::string service = slash == std::string::npos ? UsualService() : server.substr(slash + 1);
  if (!HostReacts(host, service, std::chrono::seconds(seconds))) RaiseError(Format(kNoReaction, server, seconds));
}

// --- Errors

std::string TextOf(fb::IStatus& status) {
  std::string text(1024, '\0');
  constexpr std::size_t kLimit = std::size_t{64} * 1024;
  while (true) {
    const unsigned size = static_cast<unsigned>(text.size());
    const unsigned length = Master().getUtilInterface()->formatStatus(text.data(), size, &status);
    if (length + 1 < size || size >= kLimit) return text.substr(0, length);
    text.resize(text.size() * 2);
  }
}

// Errors after which there is nobody left to talk to.
bool IsLost(const intptr_t* vector) {
  constexpr intptr_t kLost[] = {isc_network_error, isc_net_read_err,       isc_net_write_err,
                                isc_shutdown,      isc_lost_db_connection, isc_att_shutdown};
  while (*vector != isc_arg_end) {
    if (*vector == isc_arg_gds && std::find(std::begin(kLost), std::end(kLost), vector[1]) != std::end(kLost))
      return true;
    vector += *vector == isc_arg_cstring ? 3 : 2;
  }
  return false;
}

// --- Statements

std::vector<TFirebirdColumn> ColumnsOf(fb::IMessageMetadata& message, fb::ThrowStatusWrapper& status) {
  std::vector<TFirebirdColumn> columns(message.getCount(&status));
  for (unsigned i = 0; i < columns.size(); ++i) {
    columns[i] = {.name = message.getAlias(&status, i),
                  .type = message.getType(&status, i) & ~1U,
                  .sub_type = message.getSubType(&status, i),
                  .length = message.getLength(&status, i),
                  .scale = message.getScale(&status, i),
                  .charset = message.getCharSet(&status, i),
                  .offset = message.getOffset(&status, i),
                  .null_offset = message.getNullOffset(&status, i)};
  }
  return columns;
}

std::vector<TFieldDef> FieldsOf(const std::vector<TFirebirdColumn>& columns) {
  std::vector<TFieldDef> fields;
  fields.reserve(columns.size());
  std::ranges::transform(columns, std::back_inserter(fields), FirebirdField);
  return fields;
}

bool EndsTransaction(unsigned statement_type) {
  return statement_type == isc_info_sql_stmt_start_trans || statement_type == isc_info_sql_stmt_commit ||
         statement_type == isc_info_sql_stmt_rollback;
}

// One statement from its preparation to its end, which comes before that of its transaction.
class TStatement {
 public:
  TStatement(fb::IAttachment& attachment, fb::ITransaction& transaction, const std::string& sql)
      : attachment_(attachment),
        transaction_(transaction),
        raw_status_(Master().getStatus()),
        status_(raw_status_.get()) {
    statement_.reset(attachment_.prepare(&status_, &transaction_, static_cast<unsigned>(sql.size()), sql.c_str(),
                                         kDialect, fb::IStatement::PREPARE_PREFETCH_METADATA));
    if (EndsTransaction(statement_->getType(&status_))) RaiseError(kNoTransactionStatement);
    format_.reset(statement_->getOutputMetadata(&status_));
    columns_ = ColumnsOf(*format_, status_);
    message_.resize(std::max(1U, format_->getMessageLength(&status_)));
  }

  std::unique_ptr<TMemDataset> Run() {
    auto rows = std::make_unique<TMemDataset>(FieldsOf(columns_));
    if ((statement_->getFlags(&status_) & fb::IStatement::FLAG_HAS_CURSOR) != 0) {
      FetchAll(*rows);
    } else {
      statement_->execute(&status_, &transaction_, nullptr, nullptr, format_.get(), message_.data());
      if (!columns_.empty()) rows->AddRow(Row());
    }
    affected_ = static_cast<std::int64_t>(statement_->getAffectedRecords(&status_));
    statement_->free(&status_);
    Forget(statement_);
    return rows;
  }

  std::int64_t Affected() const { return affected_; }

 private:
  void FetchAll(TMemDataset& rows) {
    THeld<fb::IResultSet> cursor(statement_->openCursor(&status_, &transaction_, nullptr, nullptr, format_.get(), 0));
    while (cursor->fetchNext(&status_, message_.data()) == fb::IStatus::RESULT_OK) {
      StopIfLeft();
      rows.AddRow(Row());
    }
    cursor->close(&status_);
    Forget(cursor);
  }

  TMemDataset::TRow Row() {
    TMemDataset::TRow row;
    row.reserve(columns_.size());
    for (const TFirebirdColumn& column : columns_) row.push_back(Value(column));
    return row;
  }

  TVariant Value(const TFirebirdColumn& column) {
    if (FirebirdIsNull(column, message_.data())) return {};
    if (IsFirebirdBlob(column)) return BlobText(message_.data() + column.offset);
    return FirebirdValue(column, message_.data());
  }

  std::string BlobText(const unsigned char* place) {
    ISC_QUAD id;
    std::copy_n(place, sizeof(id), reinterpret_cast<unsigned char*>(&id));
    THeld<fb::IBlob> blob(attachment_.openBlob(&status_, &transaction_, &id, 0, nullptr));
    std::string text;
    std::string segment(kSegment, '\0');
    while (true) {
      unsigned length = 0;
      const int result = blob->getSegment(&status_, kSegment, segment.data(), &length);
      if (result != fb::IStatus::RESULT_OK && result != fb::IStatus::RESULT_SEGMENT) break;
      text.append(segment, 0, length);
    }
    blob->close(&status_);
    Forget(blob);
    return text;
  }

  static constexpr unsigned kSegment = 32768;

  fb::IAttachment& attachment_;
  fb::ITransaction& transaction_;
  TOwned<fb::IStatus> raw_status_;
  fb::ThrowStatusWrapper status_;
  THeld<fb::IStatement> statement_;
  THeld<fb::IMessageMetadata> format_;
  std::vector<TFirebirdColumn> columns_;
  std::vector<unsigned char> message_;
  std::int64_t affected_ = 0;
};

// --- The connection

class TFirebirdDatabase final : public TIBODatabase {
 public:
  ~TFirebirdDatabase() override { Detach(); }

  bool GetConnected() const override { return attachment_ != nullptr; }
  bool InTransaction() const override { return transaction_ != nullptr; }
  void StartTransaction() override {
    CheckConnected();
    if (transaction_) RaiseError(kInTransaction);
    Guarded([this] { transaction_ = NewTransaction(); });
  }
  void Commit() override {
    if (transaction_) Guarded([this] { End(transaction_, &fb::ITransaction::commit<TStatus>); });
  }
  void Rollback() override {
    if (transaction_) Guarded([this] { End(transaction_, &fb::ITransaction::rollback<TStatus>); });
  }

  std::unique_ptr<TMemDataset> Read(const std::string& sql) override {
    std::unique_ptr<TMemDataset> rows;
    Run(sql, [&rows](TStatement& statement) { rows = statement.Run(); });
    return rows;
  }
  std::int64_t Execute(const std::string& sql) override {
    std::int64_t affected = 0;
    Run(sql, [&affected](TStatement& statement) {
      statement.Run();
      affected = statement.Affected();
    });
    return affected;
  }

  std::unique_ptr<TIBODatabase> NewDatabase() const override {
    auto database = std::make_unique<TFirebirdDatabase>();
    database->ConnectTimeout = ConnectTimeout;
    database->LockTimeout = LockTimeout;
    return database;
  }

 private:
  using TStatus = fb::ThrowStatusWrapper;
  using TTransaction = THeld<fb::ITransaction>;

  void DoConnect() override {
    const TUtf8Locale utf8;
    if (!raw_status_) {
      raw_status_.reset(Master().getStatus());
      status_.emplace(raw_status_.get());
    }
    Guarded([this] {
      const std::string server = Param(kServerParam);
      if (!server.empty()) CheckReacts(server, ConnectTimeout);
      const std::string place = server.empty() ? DatabaseName : server + ":" + DatabaseName;
      const TOwned<fb::IXpbBuilder> parameters = LoginParameters();
      const THeld<fb::IProvider> provider(Master().getDispatcher());
      attachment_.reset(provider->attachDatabase(&*status_, place.c_str(), parameters->getBufferLength(&*status_),
                                                 parameters->getBuffer(&*status_)));
    });
  }
  void DoDisconnect() override { Detach(); }

  TOwned<fb::IXpbBuilder> NewParameters(unsigned kind) {
    return TOwned<fb::IXpbBuilder>(Master().getUtilInterface()->getXpbBuilder(&*status_, kind, nullptr, 0));
  }
  TOwned<fb::IXpbBuilder> LoginParameters() {
    TOwned<fb::IXpbBuilder> parameters = NewParameters(fb::IXpbBuilder::DPB);
    parameters->insertTag(&*status_, isc_dpb_utf8_filename);
    parameters->insertString(&*status_, isc_dpb_lc_ctype, kCharacterSet);
    parameters->insertInt(&*status_, isc_dpb_connect_timeout, ConnectTimeout);
    const std::string user = Param(kUserNameParam);
    if (!user.empty()) parameters->insertString(&*status_, isc_dpb_user_name, user.c_str());
    if (!Password.empty()) parameters->insertString(&*status_, isc_dpb_password, Password.c_str());
    return parameters;
  }

  // The usual kind of transaction would wait for ever for a table that somebody else has open.
  TTransaction NewTransaction() {
    const TOwned<fb::IXpbBuilder> parameters = NewParameters(fb::IXpbBuilder::TPB);
    constexpr unsigned char kTags[] = {isc_tpb_write, isc_tpb_read_committed, isc_tpb_rec_version, isc_tpb_wait};
    for (const unsigned char tag : kTags) parameters->insertTag(&*status_, tag);
    parameters->insertInt(&*status_, isc_tpb_lock_timeout, LockTimeout);
    return TTransaction(attachment_->startTransaction(&*status_, parameters->getBufferLength(&*status_),
                                                      parameters->getBuffer(&*status_)));
  }

  void End(TTransaction& transaction, void (fb::ITransaction::*end)(TStatus*)) {
    (transaction.get()->*end)(&*status_);
    Forget(transaction);
  }

  template <class Body>
  void Run(const std::string& sql, Body body) {
    CheckConnected();
    Guarded([&] {
      if (transaction_) {
        TStatement statement(*attachment_, *transaction_, sql);
        body(statement);
        return;
      }
      TTransaction own = NewTransaction();
      try {
        TStatement statement(*attachment_, *own, sql);
        body(statement);
      } catch (...) {
        GiveUp(own);
        throw;
      }
      End(own, &fb::ITransaction::commit<TStatus>);
    });
  }

  // Runs `body`; errors of the library are raised as ours.
  template <class Body>
  void Guarded(Body body) {
    try {
      body();
    } catch (const fb::FbException& error) {
      const std::string text = TextOf(*error.getStatus());
      if (IsLost(error.getStatus()->getErrors())) Detach();
      RaiseError(text);
    }
  }

  void CheckConnected() const {
    if (!attachment_) RaiseError(kNotConnected);
  }

  // Whatever goes wrong at these ends, the objects are gone, and nobody could do anything about it.
  void GiveUp(TTransaction& transaction) {
    fb::CheckStatusWrapper ignored(raw_status_.get());
    transaction->rollback(&ignored);
    if (ignored.isEmpty()) Forget(transaction);
    transaction.reset();
  }
  void Detach() {
    if (transaction_) GiveUp(transaction_);
    if (!attachment_) return;
    fb::CheckStatusWrapper ignored(raw_status_.get());
    attachment_->detach(&ignored);
    if (ignored.isEmpty()) Forget(attachment_);
    attachment_.reset();
  }

  TOwned<fb::IStatus> raw_status_;  // this and the next one from the first attempt to connect on
  std::optional<TStatus> status_;
  THeld<fb::IAttachment> attachment_;
  TTransaction transaction_;
};

}  // namespace

// The library is loaded by whoever connects, since that changes the environment, which threads share.
std::unique_ptr<TIBODatabase> NewFirebirdDatabase() {
  return NewAsideDatabase(std::make_unique<TFirebirdDatabase>(), [] { Master(); });
}

}  // namespace velmora
