// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What has to be changed in a target so that its views, triggers, procedures, functions and events are the reference's.
// Sequences, packages and libraries are compared and left alone.

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "core/CreationTexts.h"
#include "exact/compare/Equivalences.h"
#include "exact/objects/Definers.h"
#include "exact/objects/ObjectText.h"
#include "exact/objects/TriggerOrder.h"
#include "sync/SyncActions.h"
#include "util/Lists.h"

namespace velmora {

using TObjectKey = std::pair<std::string, std::string>;  // what an object is found by

struct TDatabaseObjects {
  std::string database;  // its name, with which texts may qualify their names; empty where nobody knows it
  std::vector<TOtherObject> objects;
  TStringList not_all_seen{};  // kinds of which there may be more
  // A table's creation text; empty where it is not known.
  std::function<std::string(const std::string& table)> table_text{};
  bool trigger_case = true;  // letter case counts in names of its server's triggers
  // The mode that clients of this server have, where it was asked: that of objects whose script says none.
  std::optional<std::string> clients_mode{};

  TObjectKey KeyOf(const std::string& kind, const std::string& name) const;  // by which its server tells objects apart
};
// Whether it counts on the server that says this of itself; so it does where nobody knows.
bool TriggerCaseCounts(const std::string& version);

// What is told of an object that no action changes.
struct TObjectDifference {
  std::string kind;
  std::string name;
  std::string difference;  // "only in the reference", "only in the target", "differs", "not read", with a reason
};

struct TObjectChange {
  int id = 0;                                     // of its action row; 0 until it has one
  TSyncAction action = saCreateObject;            // or saChangeObject, saDropObject
  std::string kind;                               // "view", "trigger", "procedure", "function", "event"
  std::string name;                               // as the reference has it; of an obsolete one as the target has it
  std::shared_ptr<const TObjectText> old_text{};  // null for a new one
  std::shared_ptr<const TObjectText> new_text{};  // null for an obsolete one
  TOtherObject old_object{};                      // as their servers have them
  TOtherObject new_object{};
  TStringList elements{};  // that differ: "body", "sql security", "definer", "order", ...
  std::string definer{};   // of the new text; empty for who runs the script
  TTriggerPlace place{};   // of a trigger that has others beside it
  std::string unsafe{};    // why it may lose something, or may not do what it says; empty for what is safe

  std::string Object() const { return kind + " " + name; }
  std::string LogText() const;      // "New view v", "Changed trigger t", "Obsolete event e"
  std::string Description() const;  // old and new text, and why it is unsafe
  // When the reference's user has a repeated event start; empty where that is left to servers.
  std::string WantedStart() const { return new_object.servers_start ? std::string() : new_text->start; }
};

struct TObjectComparison {
  std::vector<TObjectChange> changes;  // in the order of the reference, then what the target alone has
  std::vector<TObjectDifference> differences;
  TStringList remarks{};  // a line for each of what is no difference and had better be known
};

// White space and comments outside bodies, how names are quoted, the database's own name before a name, and what is the
// default never count; of views redundant brackets neither, nor whether names in their queries say whose columns they
// are, as far as that is certain; definers as `wishes` say. Bodies are compared letter by
// letter, but for line ends. An object whose text cannot be read on a side is told as a difference and left alone, and
// so is one that only one side has where the other does not see all of its kind, or whose name is another's to the
// target. A body that names the reference's
// database, while the target's has another name, is unsafe where it is written, and remarked where both sides have it.
// The collation under which they were made counts as `use` says; not without it.
TObjectComparison CompareObjects(const TDatabaseObjects& reference, const TDatabaseObjects& target,
                                 const TDefinerWishes& wishes = {}, TEquivalenceUse* use = nullptr);

// To servers letter case counts in the names of some kinds alone.
TObjectKey ObjectKey(const std::string& kind, const std::string& name);

bool IsScriptedKind(std::string_view kind);  // one of the five that actions change
TStringList ScriptedKinds();
std::string_view KindsTitle(std::string_view kind);  // "Views", "Triggers", ... for these

}  // namespace velmora
