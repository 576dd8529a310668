// SPDX-License-Identifier: GPL-3.0-or-later
#include "fleet/FleetProbe.h"

#include <algorithm>
#include <map>
#include <utility>
#include <vector>

#include "core/CreationTexts.h"
#include "engines/mysql/LoginRights.h"
#include "exact/run/MissingSequences.h"
#include "exact/run/StructureDigest.h"
#include "fleet/OwnName.h"
#include "util/Errors.h"

namespace velmora {

namespace {

// In what two servers of the same name for themselves may differ that comparisons ask them.
constexpr char kTraits[] =
    "select concat_ws(' ', version(), @@global.explicit_defaults_for_timestamp, length(localtime), "
    "@@lower_case_table_names, @@global.sql_mode)";

std::string TraitsOf(TDBConn& server) {
  TVariant traits;
  server.GetResultSQL(kTraits, traits);
  return VarToText(traits);
}

// Each with its length, so that what stands in two texts does not pass for what stands in one.
void Add(const std::string& text, std::string& facts) {
  facts += std::to_string(text.size());
  facts += ':';
  facts += text;
}

// Servers put the database's own name before names in a view, where nobody has written it. This stands in no name.
constexpr char kOwnName[] = "\x01";

// The texts come by the order of the names, one by one.
class TFacts {
 public:
  TFacts(const std::string& traits, bool counters) : counters_(counters) { Add(traits, text_); }

  void AddObjects(std::vector<TOtherObject> objects, const std::string& database) {
    std::ranges::sort(objects, {}, [](const TOtherObject& object) { return std::pair(object.kind, object.name); });
    for (const TOtherObject& object : objects) {
      Add(object.kind, text_);
      Add(object.name, text_);
      Add(object.kind == "view" ? WithOwnNameAs(kOwnName, object.text, database) : object.text, text_);
      Add(object.context.sql_mode.value_or("-"), text_);
      Add(object.context.collation, text_);
      Add(object.context.time_zone, text_);
      Add(std::to_string(object.order), text_);
    }
    text_ += ';';
  }
  void AddTable(const std::string& name, const std::string& text) {
    Add(name, text_);
    Add(counters_ ? text : WithoutCounter(text), text_);
  }
  std::string Digest() const { return TextDigest(text_); }

 private:
  bool counters_;
  std::string text_;
};

bool HasText(const TOtherObject& object) { return !object.text.empty(); }

}  // namespace

bool TIdenticalTargets::Any() const {
  const std::lock_guard lock(mutex_);
  return !facts_.empty();
}

bool TIdenticalTargets::Contains(const std::string& facts) const {
  const std::lock_guard lock(mutex_);
  return facts_.contains(facts);
}

void TIdenticalTargets::Learn(const TExactDialect& compared, TDBConn& target) {
  auto* server = dynamic_cast<TDBConnMySQL*>(&target);
  const TReadPair& read = compared.sync.Read();
  if (server == nullptr || server->StructureScript() != nullptr || !server->GetConnected()) return;
  if (!compared.Identical() || !read.skipped.empty() || read.put_aside || read.objects_alone) return;
  if (read.left_out.Any() || read.reference_left_out) return;
  if (!std::ranges::all_of(read.target_objects.objects, HasText)) return;
  try {
    TFacts facts(TraitsOf(target), counters_);
    facts.AddObjects(read.target_objects.objects, server->database());
    for (const auto& [name, text] : read.target.texts) {
      if (MayNameSequence(text)) return;  // of this database, which is another one's to the next target
      facts.AddTable(name, text);
    }
    const std::lock_guard lock(mutex_);
    facts_.insert(facts.Digest());
  } catch (const EAbort&) {
    throw;
  } catch (const EVelmora&) {  // the target is identical all the same
  }
}

TFleetProbe::TFleetProbe(std::unique_ptr<TDBConnMySQL> server, bool counters)
    : server_(std::move(server)), counters_(counters) {
  server_->PrepareExactTexts();
  server_->Connect();
  traits_ = TraitsOf(*server_);
  grants_ = GrantsOfLogin(server_->GetConnectionObject());
}

bool TFleetProbe::IsFor(const TDBConnMySQL& other) const {
  return server_->username() == other.username() && server_->password() == other.password();
}

std::optional<std::string> TFleetProbe::Facts(const std::string& database) {
  if (!HiddenKinds(*grants_, database).empty()) return std::nullopt;
  server_->UseDatabase(database);
  TStringList tables;
  server_->ListTables(tables);
  const std::vector<TOtherObject> objects = server_->OtherObjects();
  if (!std::ranges::all_of(objects, HasText)) return std::nullopt;
  for (const TOtherObject& object : objects)
    if (object.kind == "view" || object.kind == "sequence") std::erase(tables, object.name);
  std::ranges::sort(tables);
  TFacts facts(traits_, counters_);
  facts.AddObjects(objects, database);
  server_->ExpectCreationTexts(tables);
  std::string text;
  for (const std::string& table : tables) {
    server_->ShowCreateTable(table, text);
    facts.AddTable(table, text);
  }
  server_->ExpectCreationTexts({});
  return facts.Digest();
}

}  // namespace velmora
