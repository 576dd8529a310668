// SPDX-License-Identifier: GPL-3.0-or-later
#include "fleet/FleetReference.h"

#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "app/SideNames.h"
#include "core/CreationTexts.h"
#include "core/Meta.h"
#include "engines/mysql/OfflineEngine.h"
#include "util/Errors.h"
#include "util/Format.h"

namespace velmora {

namespace {

constexpr char kNotMySql[] =
    "%s cannot be the reference of many targets: give a MySQL server, a file that ends in .sql or a folder of those";
constexpr char kReadOnce[] = "The reference was read once, and is not asked again: %s";
constexpr char kNoTable[] = "Table '%s' doesn't exist";

// What comparisons ask a server beside its texts, where the other side is a file.
constexpr const char* kQuestions[] = {"select @@global.explicit_defaults_for_timestamp", "select length(localtime)",
                                      "select @@global.sql_mode"};

// What a server said.
struct TKept {
  std::string server, database, username, version;
  int port = 0;
  TStringList tables;
  struct TText {
    std::string text, error;
  };
  std::map<std::string, TText> texts;
  std::vector<TOtherObject> objects;
  TStringList hidden;
  std::map<std::string, std::string> answers;
};

class TKeptQuery final : public TMyQuery {
 public:
  using TMyQuery::TMyQuery;

 private:
  std::unique_ptr<TDataset> DoOpen() override { RaiseError(Format(kReadOnce, SQL)); }
  std::int64_t DoExecute() override { RaiseError(Format(kReadOnce, SQL)); }
};

class TKeptConnection final : public TMyConnection {
 public:
  bool GetConnected() const override { return connected_; }
  bool InTransaction() const override { return false; }
  void StartTransaction() override {}
  void Commit() override {}
  void Rollback() override {}
  std::unique_ptr<TMyQuery> NewQuery() override { return std::make_unique<TKeptQuery>(*this); }
  std::unique_ptr<TMyConnection> NewConnection() const override { return std::make_unique<TKeptConnection>(); }

 private:
  void DoConnect() override { connected_ = true; }
  void DoDisconnect() override { connected_ = false; }

  bool connected_ = false;
};

// The engine of a server that is no longer asked.
class TKeptEngine final : public TDBConnMySQL {
 public:
  explicit TKeptEngine(std::shared_ptr<const TKept> kept)
      : TDBConnMySQL(std::make_unique<TKeptConnection>(), kept->server, kept->port, kept->database, kept->username, {}),
        kept_(std::move(kept)) {}

  void ListTables(TStringList& list) override { list = kept_->tables; }
  void ShowCreateTable(const std::string& table, std::string& ddl) override {
    const auto found = kept_->texts.find(table);
    if (found == kept_->texts.end()) RaiseError(Format(kNoTable, table));
    if (!found->second.error.empty()) RaiseError(found->second.error);
    ddl = found->second.text;
  }
  void ExpectCreationTexts(const TStringList& /*tables*/) override {}
  void PrepareExactTexts(bool /*exact*/ = true) override {}
  std::vector<TOtherObject> OtherObjects() override { return kept_->objects; }
  TStringList KindsHidden() override { return kept_->hidden; }
  std::string ServerVersion() override { return kept_->version; }
  void GetResultSQL(const std::string& sql, TVariant& value) override {
    const auto found = kept_->answers.find(sql);
    if (found == kept_->answers.end()) RaiseError(Format(kReadOnce, sql));
    value = found->second;
  }

 protected:
  std::unique_ptr<TDBConnMySQL> NewEngine() const override { return std::make_unique<TKeptEngine>(kept_); }

 private:
  std::shared_ptr<const TKept> kept_;
};

void ReadTables(TDBConnMySQL& server, TKept& kept) {
  server.meta().TableNames(kept.tables);
  TStringList asked = kept.tables;
  std::erase_if(asked, [&](const std::string& table) {
    return std::ranges::any_of(kept.objects, [&](const TOtherObject& object) {
      return object.name == table && (object.kind == "view" || object.kind == "sequence");
    });
  });
  server.ExpectCreationTexts(asked);
  for (const std::string& table : asked) {
    TKept::TText& text = kept.texts[table];
    try {
      server.ShowCreateTable(table, text.text);
    } catch (const EVelmora& error) {
      if (!server.GetConnected()) throw;
      text.error = error.what();
    }
  }
  server.ExpectCreationTexts({});
}

std::shared_ptr<const TKept> ReadServer(TDBConnMySQL& server) {
  server.PrepareExactTexts();
  server.Connect();
  auto kept = std::make_shared<TKept>();
  kept->server = server.server();
  kept->port = server.port();
  kept->database = server.database();
  kept->username = server.username();
  kept->version = server.ServerVersion();
  kept->objects = server.OtherObjects();
  kept->hidden = server.KindsHidden();
  ReadTables(server, *kept);
  for (const char* question : kQuestions) {
    TVariant answer;
    server.GetResultSQL(question, answer);
    kept->answers[question] = VarToText(answer);
  }
  server.GetConnectionObject().SetConnected(false);
  return kept;
}

}  // namespace

TFleetReference::TFleetReference(std::unique_ptr<TDBConn> source) : source_(std::move(source)) {
  if (auto* file = dynamic_cast<TDBConnMySQLOffline*>(source_.get())) {
    file->Connect();
    file->GetConnectionObject().KeepAsRead();
    has_tables_ = !file->meta().tTables.Empty() || !file->StructureScript()->statements.empty();
    engine_ = [file] {
      return std::make_unique<TDBConnMySQLOffline>(file->GetConnectionObject().NewOfflineConnection());
    };
  } else if (auto* server = dynamic_cast<TDBConnMySQL*>(source_.get())) {
    const std::shared_ptr<const TKept> kept = ReadServer(*server);
    has_tables_ = !kept->texts.empty();
    engine_ = [kept] { return std::make_unique<TKeptEngine>(kept); };
  } else {
    RaiseError(Format(kNotMySql, SideName(*source_)));
  }
}

}  // namespace velmora
