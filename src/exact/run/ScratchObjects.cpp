// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/run/ScratchObjects.h"

#include <algorithm>

#include "mysqltext/Lexer.h"
#include "util/Errors.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kEvent[] = "event";
constexpr char kSession[] = "session";

TDatabaseObjects WithoutEvents(TDatabaseObjects objects) {
  std::erase_if(objects.objects, [](const TOtherObject& object) { return object.kind == kEvent; });
  return objects;
}

}  // namespace

// They are new there, in the order in which new ones are made.
void TScratchObjects::Copy(const TDatabaseObjects& target) {
  trigger_case_ = target.trigger_case;
  TObjectComparison copies = CompareObjects(WithoutEvents(target), {});
  for (const TObjectDifference& unread : copies.differences)
    if (!CopyRoutine(unread, target)) missing_.insert(unread.kind + " " + unread.name);
  for (const TPlanStatement& statement : MakeObjectPlan(copies.changes, server_).after)
    if (!RunIfTaken(statement.text)) missing_.insert(statement.object);
}

// A routine that nobody follows is made as it is printed: views may call it. Not one that is told with a database.
bool TScratchObjects::CopyRoutine(const TObjectDifference& unread, const TDatabaseObjects& target) {
  const auto object = std::ranges::find_if(target.objects, [&unread](const TOtherObject& other) {
    return other.kind == unread.kind && other.name == unread.name;
  });
  const bool routine = unread.kind == "function" || unread.kind == "procedure";
  if (object == target.objects.end() || !routine || !object->context.sql_mode) return false;
  const std::string quoted_by_mode = '"' + StrReplace(unread.name, "\"", "\"\"") + '"';
  const auto told_as = [&](const std::string& name) {
    return PosNoCase(" " + unread.kind + " " + name + "(", object->text) != 0;
  };
  if (!told_as(QuotedName(unread.name)) && !told_as(quoted_by_mode)) return false;
  scratch_.Run("set @velmora_object_mode = @@sql_mode");
  const bool made = RunIfTaken("set sql_mode = " + QuotedText(*object->context.sql_mode)) && RunIfTaken(object->text);
  scratch_.Run("set sql_mode = @velmora_object_mode");
  return made;
}

bool TScratchObjects::RunIfTaken(const std::string& statement) {
  try {
    scratch_.Run(statement);
    return true;
  } catch (const EMySqlException&) {
    if (!scratch_.Connected()) throw;
    return false;
  }
}

// Statements of the session are about all that follows.
void TScratchObjects::Run(const TPlanStatement& statement) {
  if (!Tries(statement)) return;
  try {
    scratch_.Run(statement.text);
    if (statement.object == kSession) Remember(statement.text);
    if (statement.text.starts_with("create")) made_.insert(statement.object);
    if (statement.text.starts_with("create or replace view")) held_.insert(statement.object);
  } catch (const EMySqlException& error) {
    if (!scratch_.Connected() || statement.object == kSession) throw;
    Refuse(statement, error.what());
  }
}

// "set sql_mode = ..."
void TScratchObjects::Remember(const std::string& setting) {
  settings_[setting.substr(0, setting.find('='))] = setting;
}

// Putting back changes the session's settings: what follows is to be made under those that the plan has set.
void TScratchObjects::Refuse(const TPlanStatement& statement, const std::string& error) {
  refused_.emplace(statement.object, StrReplace(error, scratch_.Name() + ".", ""));
  for (const std::string& text : statement.put_back) RunIfTaken(text);
  if (held_.contains(statement.object))
    RunIfTaken("drop view if exists " + QuotedName(statement.object.substr(std::string_view("view ").size())));
  scratch_.Run("unlock tables");
  for (const auto& [name, setting] : settings_)
    if (!name.starts_with("set @")) scratch_.Run(setting);
}

bool TScratchObjects::Tries(const TPlanStatement& statement) const {
  if (statement.object.starts_with(kEvent) || refused_.contains(statement.object)) return false;
  return !statement.text.starts_with("drop") || !missing_.contains(statement.object);
}

TDatabaseObjects TScratchObjects::There() {
  TDatabaseObjects there = WithoutEvents(scratch_.Objects());
  there.trigger_case = trigger_case_;
  return there;
}

std::set<std::string> TScratchObjects::AsBefore(const TDatabaseObjects& target) {
  std::set<std::string> same = made_;
  const TObjectComparison compared = CompareObjects(There(), WithoutEvents(target));
  for (const TObjectChange& change : compared.changes) same.erase(change.Object());
  for (const TObjectDifference& object : compared.differences) same.erase(object.kind + " " + object.name);
  return same;
}

std::vector<TObjectChange> TScratchObjects::Left(const TDatabaseObjects& wanted, const TDefinerWishes& wishes) {
  std::vector<TObjectChange> left = CompareObjects(WithoutEvents(wanted), There(), wishes).changes;
  std::erase_if(left, [this](const TObjectChange& change) {
    return missing_.contains(change.Object()) || refused_.contains(change.Object());
  });
  return left;
}

}  // namespace velmora
