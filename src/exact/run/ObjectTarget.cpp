// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/run/ObjectTarget.h"

#include <algorithm>
#include <optional>
#include <set>

#include "exact/compare/Safety.h"
#include "exact/objects/ObjectContext.h"
#include "exact/objects/ObjectPlan.h"
#include "mysqltext/GrantText.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kNoMode[] = "not followed: its body is read by the mode %s, which the target does not have";
constexpr char kNoCollation[] =
    "it was made under the collation %s, which the target does not know: the session's own is taken";
constexpr char kNoAccount[] = "the target has no account %s, its definer";
constexpr char kNotAllowed[] = "this login may not make %s its definer";
constexpr char kMayNotName[] = "this login may not name its definer %s, and so cannot make it anew";
constexpr char kNobodyKnows[] = "nobody knows whether the target has %s, its definer: this login may not read accounts";
constexpr char kAccounts[] =
    "select concat(user, case when host = '' then '' else concat('@', host) end) from mysql.user";

TStringList FirstColumn(TDBConn& server, const std::string& query) {
  TStringList list;
  const std::unique_ptr<TDataset> rows = server.OpenQuery(query);
  for (; !rows->Eof(); rows->Next()) list.push_back(VarToText(rows->Value(0)));
  rows->Close();
  return list;
}

// Who the login is, and whom it may name.
class TDefinerRights {
 public:
  explicit TDefinerRights(TDBConn& target) : target_(target) {}

  // Why the target's server may not take this definer, which an object may have already; empty for none.
  std::string Against(const std::string& account, bool has_it) {
    Ask();
    if (account == current_) return {};
    if (!may_name_others_) return Format(has_it ? kMayNotName : kNotAllowed, account);
    if (has_it) return {};
    if (!accounts_) return Format(kNobodyKnows, account);
    return accounts_->contains(account) ? std::string() : Format(kNoAccount, account);
  }

 private:
  void Ask() {
    if (!std::exchange(asked_, true)) {
      const auto ask = [this](const std::string& query) { return FirstColumn(target_, query); };
      current_ = JoinList(ask("select current_user()"), "");
      may_name_others_ = AskGrants(ask).Everywhere({"SUPER", "SET USER", "SET_USER_ID", "SET_ANY_DEFINER"});
      if (may_name_others_) AskAccounts();
    }
  }
  void AskAccounts() {
    try {
      const TStringList accounts = FirstColumn(target_, kAccounts);
      accounts_.emplace(accounts.begin(), accounts.end());
    } catch (const EVelmora&) {
      if (!target_.GetConnected()) throw;
    }
  }

  TDBConn& target_;
  bool asked_ = false;
  std::string current_;
  bool may_name_others_ = false;
  std::optional<std::set<std::string>> accounts_;  // nothing where they may not be read
};

void TellMissingModes(const TPlanServer& server, TObjectComparison& objects) {
  std::erase_if(objects.changes, [&](const TObjectChange& change) {
    const std::string mode = MissingMode(change.new_object.context.sql_mode.value_or(""), server);
    if (mode.empty()) return false;
    objects.differences.push_back({change.kind, change.name, Format(kNoMode, mode)});
    return true;
  });
}

void LeaveCollation(TKnownSets& known, TObjectChange& change) {
  std::string& collation = change.new_object.context.collation;
  if (collation.empty() || known.UnknownIn("collate " + collation).empty()) return;
  AddReason(change.unsafe, Format(kNoCollation, collation));
  collation.clear();
}

}  // namespace

void SettleOnTarget(TDBConn& target, const TPlanServer& server, TKnownSets& known, TObjectComparison& objects) {
  if (!server.mysql && !server.mariadb) return;
  TellMissingModes(server, objects);
  if (!server.asked) return;
  TDefinerRights rights(target);
  for (TObjectChange& change : objects.changes) {
    LeaveCollation(known, change);
    const bool names_it = change.action != saDropObject && !AltersInPlace(change, server);
    if (!names_it || change.definer.empty() || change.definer == "current_user()") continue;
    const bool has_it = change.old_text != nullptr && change.old_text->definer == change.definer;
    AddReason(change.unsafe, rights.Against(change.definer, has_it));
  }
}

}  // namespace velmora
