// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Views, triggers, procedures, functions and events beside the tables of a schema, at random.

#include <string>
#include <vector>

#include "converge/SchemaGenerator.h"
#include "support/LiveDatabase.h"

namespace velmora::testing {

// Texts with blanks behind them, each empty where there is none. "{DB}" stands for the database.
struct TObjectModel {
  std::string kind;  // "view", "trigger", "procedure", "function", "event"
  std::string name;
  std::string definer;   // "definer = ..."
  std::string before;    // of a view, before its kind: algorithm and security
  std::string head;      // columns; moment and table; parameters; schedule
  std::string options;   // characteristics
  std::string body;      // of a view the query
  std::string tail;      // of a view: its check option
  std::string beside{};  // of a trigger: the other one that its options name
  std::string mode{};    // of the session that makes it, and so on
  std::string collation{};
  std::string zone{};

  // The mode makes letters of the body mean what no reader here follows: it has to be named and left alone.
  bool Unreadable() const;
  // Names stand in double quotes then, and a backslash of theirs is a letter there.
  bool PrintsBackslashNames() const;
  std::string Creation(const std::string& database) const;
};

class TObjectGenerator {
 public:
  // `names` makes the names; what is drawn here leaves its numbers as they are.
  TObjectGenerator(std::uint64_t seed, TSchemaGenerator& names) : random_(seed), names_(names) {}

  std::vector<TObjectModel> Objects(const TSchemaModel& schema);
  // Some go, some come, some change in one part, triggers fire in another order.
  void Mutate(std::vector<TObjectModel>& objects, const TSchemaModel& schema);
  // They name what is renamed by its new name.
  static void Follow(const std::vector<TRename>& renames, std::vector<TObjectModel>& objects);

 private:
  TObjectModel Object(const std::string& kind, const std::vector<TObjectModel>& others, const TSchemaModel& schema);
  void FillView(TObjectModel& view, const std::vector<TObjectModel>& others, const TSchemaModel& schema);
  void FillTrigger(TObjectModel& trigger, const std::vector<TObjectModel>& others, const TSchemaModel& schema);
  void FillRoutine(TObjectModel& routine);
  void FillEvent(TObjectModel& event);
  std::string Source(const std::vector<TObjectModel>& others, const TSchemaModel& schema);
  std::string Expression(const TTableModel& table, const std::vector<TObjectModel>& others);
  std::string Query(const std::vector<TObjectModel>& others, const TSchemaModel& schema, std::size_t columns);
  std::string Body(const std::string& mode, const std::string& result);
  std::string Parameters(bool directed);
  const char* Any(const std::vector<const char*>& texts) { return random_.Pick(texts); }

  TRandom random_;
  TSchemaGenerator& names_;
};

// Makes them in a database that has the tables, in this order. What the server refuses goes from the list; gives how
// many that were.
std::size_t MakeObjects(TLiveDatabase& database, std::vector<TObjectModel>& objects);

}  // namespace velmora::testing
