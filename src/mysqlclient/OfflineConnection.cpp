// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqlclient/OfflineConnection.h"

#include <sys/stat.h>

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "mysqltext/ScriptFolder.h"
#include "util/Errors.h"
#include "util/Files.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kNoStatements[] =
    "%s is a script file: it cannot run statements; to change a database, name its server (mysql://...)";
constexpr char kNoTable[] = "Table '%s' doesn't exist";
constexpr std::string_view kShowTables = "show tables";
constexpr std::string_view kShowCreateTable = "show create table ";

// What tells one state of a file from another. A pipe, which can be read but once, never changes.
struct TFileStamp {
  dev_t device = 0;
  ino_t inode = 0;
  off_t size = 0;
  timespec changed{};

  friend bool operator==(const TFileStamp& a, const TFileStamp& b) {
    return a.device == b.device && a.inode == b.inode && a.size == b.size && a.changed.tv_sec == b.changed.tv_sec &&
           a.changed.tv_nsec == b.changed.tv_nsec;
  }
};

std::optional<TFileStamp> StampOf(const std::string& path) {
  if (path == kStandardInput) return TFileStamp();
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) return std::nullopt;
  if (!S_ISREG(status.st_mode)) return TFileStamp{status.st_dev, status.st_ino};
  return TFileStamp{status.st_dev, status.st_ino, status.st_size, status.st_mtim};
}

// Of a folder those of its files, each behind its name.
using TStamps = std::vector<std::pair<std::string, TFileStamp>>;

// Nothing for what is not there.
std::optional<TStamps> StampsOf(const std::string& path) {
  TStamps stamps;
  for (const std::string& name : IsFolder(path) ? ScriptFilesIn(path) : TStringList{""}) {
    const std::optional<TFileStamp> stamp = StampOf(name.empty() ? path : JoinPath(path, name));
    if (!stamp) return std::nullopt;
    stamps.emplace_back(name, *stamp);
  }
  return stamps;
}

// The table that a "show create table" names; nothing for any other statement.
std::optional<std::string_view> ShownTable(std::string_view sql) {
  if (!SameText(sql.substr(0, kShowCreateTable.size()), kShowCreateTable)) return std::nullopt;
  const std::string_view name = TrimView(sql.substr(kShowCreateTable.size()));
  if (name.size() > 1 && name.front() == '`' && name.back() == '`') return name.substr(1, name.size() - 2);
  return name;
}

std::unique_ptr<TDataset> TableList(const TCreationScript& script) {
  auto rows = std::make_unique<TMemDataset>(std::vector<TFieldDef>{TFieldDef{"Tables"}});
  for (const TCreationText& table : script.Tables()) rows->AddRow({std::string(table.name)});
  return rows;
}

std::unique_ptr<TDataset> CreationRow(const TCreationScript& script, std::string_view name) {
  const TCreationText* table = script.Find(name);
  if (table == nullptr) RaiseError(Format(kNoTable, std::string(name)));
  auto rows = std::make_unique<TMemDataset>(
      std::vector<TFieldDef>{TFieldDef{"Table"}, TFieldDef{"Create Table", EFieldKind::Memo}});
  TMemDataset::TRow row;
  row.reserve(2);
  row.emplace_back(std::string(table->name));
  row.emplace_back(std::string(table->text));
  rows->AddRow(std::move(row));
  return rows;
}

class TOfflineQuery final : public TMyQuery {
 public:
  explicit TOfflineQuery(TOfflineConnection& connection) : TMyQuery(connection), offline_(connection) {}

 private:
  std::unique_ptr<TDataset> DoOpen() override { return offline_.Answer(SQL); }
  std::int64_t DoExecute() override { offline_.RefuseStatement(); }

  TOfflineConnection& offline_;
};

}  // namespace

struct TOfflineConnection::TLoaded {
  std::optional<TStamps> stamps;
  std::shared_ptr<const TCreationScript> script;
};

TOfflineConnection::TOfflineConnection(std::string path, TScriptChoice choice)
    : path_(std::move(path)), choice_(std::move(choice)) {}

TOfflineConnection::~TOfflineConnection() = default;

std::string TOfflineConnection::Name() const { return ShownPath(path_); }

const std::vector<TScriptWarning>& TOfflineConnection::Warnings() const {
  static const std::vector<TScriptWarning> kNoWarnings;
  return loaded_ ? loaded_->script->Warnings() : kNoWarnings;
}

const TStructureScript& TOfflineConnection::Structure() const {
  CheckConnected();
  return loaded_->script->Structure();
}

const std::vector<TOtherObject>& TOfflineConnection::OtherObjects() const {
  CheckConnected();
  return loaded_->script->OtherObjects();
}

TScriptPlace TOfflineConnection::PlaceOf(const std::string& table) const {
  const TCreationText* text = loaded_ ? loaded_->script->Find(table) : nullptr;
  if (text == nullptr) return {};
  return {text->file.empty() ? Name() : std::string(text->file), text->line};
}

TScriptPlace TOfflineConnection::PlaceOf(const std::string& kind, const std::string& name) const {
  if (!loaded_) return {};
  const std::vector<TOtherObject>& objects = loaded_->script->OtherObjects();
  const auto found = std::ranges::find_if(
      objects, [&](const TOtherObject& object) { return object.kind == kind && object.name == name; });
  if (found == objects.end()) return {};
  return {found->place.file.empty() ? Name() : found->place.file, found->place.line};
}

void TOfflineConnection::StartTransaction() { RefuseStatement(); }

void TOfflineConnection::Commit() { RefuseStatement(); }

void TOfflineConnection::Rollback() { RefuseStatement(); }

std::unique_ptr<TMyQuery> TOfflineConnection::NewQuery() { return std::make_unique<TOfflineQuery>(*this); }

std::unique_ptr<TMyConnection> TOfflineConnection::NewConnection() const { return NewOfflineConnection(); }

std::unique_ptr<TOfflineConnection> TOfflineConnection::NewOfflineConnection() const {
  auto connection = std::make_unique<TOfflineConnection>(path_, choice_);
  connection->CopyOptions(*this);
  connection->loaded_ = loaded_;
  connection->keeps_ = keeps_;
  return connection;
}

std::unique_ptr<TDataset> TOfflineConnection::Answer(const std::string& sql) const {
  CheckConnected();
  const std::string_view statement = TrimView(sql);
  if (const auto table = ShownTable(statement)) return CreationRow(*loaded_->script, *table);
  if (SameText(statement, kShowTables)) return TableList(*loaded_->script);
  RefuseStatement();
}

void TOfflineConnection::RefuseStatement() const {
  CheckConnected();
  RaiseError(Format(kNoStatements, Name()));
}

void TOfflineConnection::DoConnect() {
  connected_ = loaded_ && keeps_;
  if (connected_) return;
  // Taken before reading: should the file change meanwhile, the next to connect reads it again.
  const std::optional<TStamps> stamps = StampsOf(path_);
  if (!loaded_ || !stamps || stamps != loaded_->stamps)
    loaded_ = std::make_shared<const TLoaded>(TLoaded{stamps, TCreationScript::Load(path_, choice_)});
  connected_ = true;
}

void TOfflineConnection::DoDisconnect() { connected_ = false; }

}  // namespace velmora
