// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The statements that make the changes of views, triggers, routines and events.

#include <map>
#include <string>
#include <vector>

#include "exact/objects/ObjectChanges.h"
#include "exact/plan/Plan.h"

namespace velmora {

struct TObjectPlan {
  std::vector<TPlanStatement> before;  // those of the tables: what is obsolete goes
  std::vector<TPlanStatement> after;   // them: functions, procedures, views in the order in which they name each other,
                                       // triggers, events
};

// Around each statement the session is set as the reference's server had it set, and put back at the end. What a server
// cannot replace in one statement is dropped and made; its old text is what the plan puts back where the new one is
// refused. Triggers are replaced while their table is locked, so that no row slips through. `gone` are the tables that
// are dropped in between, and take their triggers along.
TObjectPlan MakeObjectPlan(const std::vector<TObjectChange>& changes, const TPlanServer& server,
                           const TStringList& gone = {});

// Whether an "alter" of characteristics makes the change, which leaves the definer as it is.
bool AltersInPlace(const TObjectChange& change, const TPlanServer& server);

// What such statements make of the objects of a database, as servers would.
class TObjectProof {
 public:
  explicit TObjectProof(TDatabaseObjects& objects) : objects_(objects) {}

  // Settings of a session hold for what is made after them; locks make nothing. Triggers go with tables that are
  // dropped or renamed. Raises for a statement that cannot be followed, and for one that a server refuses as an object
  // is there already, or is not.
  void Apply(const std::string& statement);
  void ApplyToTables(const std::string& statement);

 private:
  void Set(const std::vector<TToken>& tokens);
  void Make(std::string text, bool replaces);
  TOtherObject* Find(const std::string& kind, const std::string& name);
  void Drop(const std::string& kind, const std::string& name);
  void Alter(const std::string& statement, const std::vector<TToken>& tokens);
  void PutInOrder(const TObjectText& made);
  struct TMoment {
    std::string table;  // empty where nobody knows
    std::string moment;
    bool operator==(const TMoment&) const = default;
  };
  const TMoment& FiresAt(const TOtherObject& trigger);

  TDatabaseObjects& objects_;
  TObjectContext context_{};
  std::map<std::string, TMoment> fires_at_;  // by text
};

}  // namespace velmora
