// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/run/ObjectTarget.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <set>

#include "exact/compare/Safety.h"
#include "exact/objects/ObjectContext.h"
#include "exact/objects/ObjectPlan.h"
#include "exact/objects/RunAs.h"
#include "mysqltext/GrantText.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kNoMode[] = "not followed: its body is read by the mode %s, which the target does not have";
constexpr char kLeftAlone[] = "left alone: %s";
constexpr char kNoAccount[] = "the target has no account %s, its definer";
constexpr char kNotAllowed[] = "this login may not make %s its definer";
constexpr char kMayNotName[] = "this login may not name its definer %s, and so cannot make it anew";
constexpr char kNobodyKnows[] = "nobody knows whether the target has %s, its definer: this login may not read accounts";
constexpr char kRunsAsNobody[] = "left alone: it names %s %s, whose definer %s has no account on the target";
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
    if (!AccountsAreKnown()) return Format(kNobodyKnows, account);
    return accounts_->contains(account) ? std::string() : Format(kNoAccount, account);
  }

  // Whether it is certain that there is no such account.
  bool Lacks(const std::string& account) {
    const bool somebody = account.empty() || account == "current_user()";
    return !somebody && AccountsAreKnown() && !accounts_->contains(account);
  }

 private:
  void Ask() {
    if (!std::exchange(asked_, true)) {
      const auto ask = [this](const std::string& query) { return FirstColumn(target_, query); };
      current_ = JoinList(ask("select current_user()"), "");
      may_name_others_ = AskGrants(ask).Everywhere({"SUPER", "SET USER", "SET_USER_ID", "SET_ANY_DEFINER"});
    }
  }
  bool AccountsAreKnown() {
    if (!std::exchange(accounts_asked_, true)) AskAccounts();
    return accounts_.has_value();
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
  bool accounts_asked_ = false;
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

// The session could not be set to it, and under another the literals of the object would be others.
void LeaveUnknownCollations(TKnownSets& known, const TPlanServer& server, TObjectComparison& objects) {
  std::erase_if(objects.changes, [&](const TObjectChange& change) {
    const std::string& collation = change.new_object.context.collation;
    if (collation.empty() || AltersInPlace(change, server)) return false;
    const std::string reason = known.UnknownCollation(LowerText(collation));
    if (!reason.empty()) objects.differences.push_back({change.kind, change.name, Format(kLeftAlone, reason)});
    return !reason.empty();
  });
}

// Servers make no view of what runs as somebody whom they do not know, though they have it.
void LeaveViewsOfNobody(TDefinerRights& rights, const TObjectSides& sides, TObjectComparison& objects) {
  const auto is_view = [](const TObjectChange& change) {
    return change.kind == "view" && change.action != saDropObject;
  };
  if (std::ranges::none_of(objects.changes, is_view)) return;
  std::vector<TObjectDifference> left;
  {
    const TRunAs run_as(sides.target, objects.changes, sides.reference.database);
    for (const TObjectChange& change : objects.changes)
      for (const TRunsAs& named : is_view(change) ? run_as.NamedBy(change) : std::vector<TRunsAs>())
        if (rights.Lacks(named.definer)) {
          left.push_back({change.kind, change.name, Format(kRunsAsNobody, named.kind, named.name, named.definer)});
          break;
        }
  }
  std::erase_if(objects.changes, [&](const TObjectChange& change) {
    return is_view(change) && std::ranges::find(left, change.name, &TObjectDifference::name) != left.end();
  });
  std::ranges::move(left, std::back_inserter(objects.differences));
}

}  // namespace

void SettleOnTarget(TDBConn& target, const TPlanServer& server, TKnownSets& known, const TObjectSides& sides,
                    TObjectComparison& objects) {
  if (!server.mysql && !server.mariadb) return;
  TellMissingModes(server, objects);
  if (!server.asked) return;
  LeaveUnknownCollations(known, server, objects);
  TDefinerRights rights(target);
  for (TObjectChange& change : objects.changes) {
    const bool names_it = change.action != saDropObject && !AltersInPlace(change, server);
    if (!names_it || change.definer.empty() || change.definer == "current_user()") continue;
    const bool has_it = change.old_text != nullptr && change.old_text->definer == change.definer;
    AddReason(change.unsafe, rights.Against(change.definer, has_it));
  }
  LeaveViewsOfNobody(rights, sides, objects);
}

}  // namespace velmora
