#include <cstdint>
#include <random>
#include <utility>

#include "core/CreationTexts.h"
#include "core/Host.h"
#include "core/Meta.h"
#include "exact/ExactSync.h"
#include "exact/Lexer.h"
#include "util/Errors.h"
#include "util/Format.h"

namespace velmora {

namespace {

constexpr char kNoTarget[] = "There is no connected target to verify on";
constexpr char kChecksOff[] = "set foreign_key_checks = 0";
constexpr char kNotMade[] = "Verifying on the server: table %s cannot be made a second time: %s";
constexpr char kRefused[] = "Verifying on the server: statement %d of %d fails: %s";
constexpr char kLeftBehind[] = "The scratch database %s could not be removed: %s";

std::string FreshName() {
  std::random_device random;
  return Format("velmora_verify_%08x%08x", random(), random());
}

// A database beside the target's own, on a connection of its own, so that the target's never leaves its database.
class TScratch {
 public:
  explicit TScratch(TDBConn& target) : target_(target), conn_(target.Clone()), name_(FreshName()) {
    texts_ = dynamic_cast<TCreationTexts*>(conn_.get());
    if (texts_ == nullptr) RaiseError(kNoTarget);
    texts_->PrepareExactTexts();
  }

  void Create() {
    try {
      conn_->ExecSQL("create database " + QuotedName(name_));
      made_ = true;
    } catch (const EVelmora&) {
      made_ = !conn_->GetConnected();  // nobody knows
      throw;
    }
    conn_->ExecSQL("use " + QuotedName(name_));
    conn_->ExecSQL(kChecksOff);
  }

  void Run(const std::string& statement) {
    Host().ProcessMessages();
    conn_->ExecSQL(statement);
  }

  TSchema Read() {
    conn_->RefreshTableList();
    TStringList tables;
    conn_->meta().TableNames(tables);
    texts_->ExpectCreationTexts(tables);
    TSchema schema;
    for (const std::string& table : tables) {
      Host().ProcessMessages();
      std::string text;
      texts_->ShowCreateTable(table, text);
      schema.Add(ReadTableText(text));
    }
    return schema;
  }

  // By the target's own connection where this one is lost. Foreign keys within would stand in the way.
  void Remove() {
    if (!made_) return;
    TDBConn& conn = conn_->GetConnected() ? *conn_ : target_;
    try {
      TVariant checks;
      conn.GetResultSQL("select @@foreign_key_checks", checks);
      conn.ExecSQL(kChecksOff);
      RunGuarded([&] { conn.ExecSQL("drop database if exists " + QuotedName(name_)); },
                 [&] { conn.ExecSQL("set foreign_key_checks = " + VarToText(checks)); });
    } catch (const EVelmora& error) {
      RaiseError(Format(kLeftBehind, name_, error.what()));
    }
  }

 private:
  TDBConn& target_;
  std::unique_ptr<TDBConn> conn_;
  TCreationTexts* texts_ = nullptr;
  std::string name_;
  bool made_ = false;
};

// An error of the server says what it is about.
template <class Message>
void RunNamed(TScratch& scratch, const std::string& statement, Message message) {
  try {
    scratch.Run(statement);
  } catch (const EMySqlException& error) {
    RaiseError(message(error.what()));
  }
}

}  // namespace

int TExactSync::VerifyOnServer() {
  if (connections_.target == nullptr || !connections_.target->GetConnected()) RaiseError(kNoTarget);
  const std::vector<TPlanStatement> plan = Plan();
  TScratch scratch(*connections_.target);
  TSchema after;
  const auto steps = static_cast<std::int64_t>(read_.target.texts.size() + plan.size());
  progress_.ShowOneBar("Verifying on the server...", steps);
  RunGuarded(
      [&] {
        scratch.Create();
        for (const auto& [table, text] : read_.target.texts) {
          progress_.StepTotal();
          RunNamed(scratch, text, [&](const char* error) { return Format(kNotMade, table, error); });
        }
        for (std::size_t i = 0; i < plan.size(); ++i) {
          progress_.StepTotal();
          RunNamed(scratch, plan[i].text,
                   [&](const char* error) { return Format(kRefused, i + 1, plan.size(), error); });
        }
        after = scratch.Read();
      },
      [&] { RunGuarded([&] { scratch.Remove(); }, [&] { progress_.Finish(); }); });
  // Tables that were never compared are not looked at here either.
  TSchema compared;
  for (const TTableText& table : after.Tables())
    if (read_.reference.schema.Find(table.name) != nullptr || read_.target.schema.Find(table.name) != nullptr)
      compared.Add(table);
  TEquivalenceUse use = Equivalences;
  return static_cast<int>(SchemaChanges(read_.reference.schema, compared, use).size());
}

}  // namespace velmora
