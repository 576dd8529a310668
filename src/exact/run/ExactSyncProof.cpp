// SPDX-License-Identifier: GPL-3.0-or-later
#include <algorithm>
#include <cstdint>
#include <set>
#include <utility>

#include "exact/compare/SameExpressions.h"
#include "exact/run/ExactSync.h"
#include "exact/run/ScratchDatabase.h"
#include "exact/run/ScratchObjects.h"
#include "util/Errors.h"
#include "util/Format.h"

namespace velmora {

namespace {

constexpr char kNoTarget[] = "There is no connected target to verify on";
constexpr char kNotMade[] = "Verifying on the server: table %s cannot be made a second time: %s";
constexpr char kRefused[] = "Verifying on the server: statement %d of %d fails: %s";
constexpr char kMadeAlike[] = "Taken as equal: %s: the target's server makes of it what is there";
constexpr char kNotTaken[] = "left alone: the target's server refuses it: %s";
constexpr char kUnread[] =
    "Verifying on the server: table %s of the target could not be read, and a copy without it proves nothing: %s";

bool IsOfQuery(const TObjectChange& change) {
  return change.action == saChangeObject && change.kind == "view" && change.elements == TStringList{"query"};
}

// An error of the server says what it is about.
template <class Message>
void RunNamed(TScratchDatabase& scratch, const std::string& statement, Message message) {
  try {
    scratch.Run(statement);
  } catch (const EMySqlException& error) {
    RaiseError(message(error.what()));
  }
}

// The reference with the expressions that the server has printed, where they say the same.
TSchema PrintedAs(const TSchema& after, const TSchema& reference) {
  TSchema printed;
  for (TTableText table : reference.Tables()) {
    const TTableText* there = after.Find(table.name);
    try {
      if (there != nullptr) AdoptExpressions(table, *there);
    } catch (const EVelmora&) {  // nobody knows, and so they differ
    }
    printed.Add(std::move(table));
  }
  return printed;
}

}  // namespace

int TExactSync::VerifyOnServer(const TScratchPorts& ports) {
  if (connections_.target == nullptr || !connections_.target->GetConnected()) RaiseError(kNoTarget);
  // One that was read takes part as the server prints it, whatever the reason for which it was skipped.
  for (const TSkippedTable& skipped : read_.skipped)
    if (skipped.unread && skipped.side == kTargetSide) RaiseError(Format(kUnread, skipped.table, skipped.reason));
  const std::vector<TPlanStatement> plan = Plan();
  TScratchDatabase scratch(*connections_.target, ports);
  TScratchObjects objects(scratch, server_);
  std::size_t objects_left = 0;
  std::set<std::string> as_before;
  TSchema after;
  const auto steps = static_cast<std::int64_t>(read_.target.texts.size() + plan.size());
  progress_.ShowOneBar("Verifying on the server...", steps);
  RunGuarded(
      [&] {
        scratch.RunWithin([&] {
          scratch.SwitchKeyRules(false);
          for (const auto& [table, text] : read_.target.texts) {
            progress_.StepTotal();
            RunNamed(scratch, text, [&, &name = table](const char* error) { return Format(kNotMade, name, error); });
          }
          scratch.SwitchKeyRules(true);
          objects.Copy(read_.target_objects);
          for (std::size_t i = 0; i < plan.size(); ++i) {
            progress_.StepTotal();
            if (!plan[i].object.empty())
              objects.Run(plan[i]);
            else
              RunNamed(scratch, plan[i].text,
                       [&](const char* error) { return Format(kRefused, i + 1, plan.size(), error); });
          }
          // Tables that were never compared are not looked at here either.
          for (const std::string& table : scratch.Tables())
            if (read_.reference.schema.Find(table) != nullptr || Target().Find(table) != nullptr)
              after.Add(ReadTableText(scratch.CreationText(table)));
          std::vector<TObjectChange> left = objects.Left(WantedObjects(), Wishes.definers);
          LeaveOutTold(left);
          // Two servers of different makers print one query in different words, so that it is not always seen to be the
          // same: a view that was just made from the reference's text here is believed to say what that text says.
          std::erase_if(left, [&](const TObjectChange& change) {
            return read_.servers.differ && IsOfQuery(change) && objects.Made().contains(change.Object());
          });
          objects_left = left.size();
          if (std::ranges::any_of(objects_.changes, IsOfQuery)) as_before = objects.AsBefore(TargetObjects());
        });
      },
      [this] { progress_.Finish(); });
  LeaveRefused(objects.Refused());
  TakeAsEqual(as_before);
  TEquivalenceUse use = Equivalences;
  std::vector<TChange> left = SchemaChanges(PrintedAs(after, read_.reference.schema), after, use);
  LeaveOut(Wishes.selection, left, nullptr);
  return static_cast<int>(left.size() + objects_left);
}

// Views of whose query alone the texts tell nothing, and of which the server makes what it has.
void TExactSync::TakeAsEqual(const std::set<std::string>& objects) {
  const auto equal = [&](const TObjectChange& change) {
    return IsOfQuery(change) && objects.contains(change.Object());
  };
  for (const TObjectChange& change : objects_.changes) {
    if (!equal(change)) continue;
    data_.mtActions.Delete(change.id);
    ActionLog.push_back(Format(kMadeAlike, change.Object()));
  }
  if (std::erase_if(objects_.changes, equal) > 0) plan_ = PlanOf(changes_, objects_.changes);
}

// They are no actions any more.
void TExactSync::LeaveRefused(const std::map<std::string, std::string>& refused) {
  for (const TObjectChange& change : ObjectChanges()) {
    const auto found = refused.find(change.Object());
    if (found == refused.end()) continue;
    data_.mtActions.Delete(change.id);
    objects_.differences.push_back({change.kind, change.name, Format(kNotTaken, found->second)});
  }
}

}  // namespace velmora
