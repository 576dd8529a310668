#include <cstdint>
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
constexpr char kUnread[] =
    "Verifying on the server: table %s of the target could not be read, and a copy without it proves nothing: %s";

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
            if (!objects.Tries(plan[i])) continue;
            RunNamed(scratch, plan[i].text,
                     [&](const char* error) { return Format(kRefused, i + 1, plan.size(), error); });
          }
          // Tables that were never compared are not looked at here either.
          for (const std::string& table : scratch.Tables())
            if (read_.reference.schema.Find(table) != nullptr || Target().Find(table) != nullptr)
              after.Add(ReadTableText(scratch.CreationText(table)));
          std::vector<TObjectChange> left = objects.Left(read_.wanted_objects, Wishes.definers);
          LeaveOutTold(left);
          objects_left = left.size();
        });
      },
      [this] { progress_.Finish(); });
  TEquivalenceUse use = Equivalences;
  std::vector<TChange> left = SchemaChanges(PrintedAs(after, read_.reference.schema), after, use);
  LeaveOut(Wishes.selection, left, nullptr);
  return static_cast<int>(left.size() + objects_left);
}

}  // namespace velmora
