// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The tables of a target as the statements of a script leave them one after the other.

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "mysqltext/TableText.h"

namespace velmora {

class TFollowedTables {
 public:
  using TStructureOf = std::function<std::optional<std::string>(const std::string& table)>;

  explicit TFollowedTables(const TStructureOf& structure_of) : structure_of_(structure_of) {}

  // The table as it is after the statements so far; null when that is not known. Asked for at the first need. Holds
  // until the next call.
  const TTableText* Find(const std::string& name);
  // A new one by its creation text, unknown when that cannot be read.
  void Make(const std::string& name, const std::string& statement);
  // Carries out an "alter table" of the plan's form; one that cannot be followed makes the table unknown.
  void Alter(const std::string& name, const std::string& statement);
  void Forget(const std::string& name);
  void ForgetAll() { all_forgotten_ = true; }

 private:
  struct TState {
    std::string spelling;              // that of the first statement; whether another means the same is not known
    std::vector<std::string> pending;  // statements to be carried out once the table is read
    std::optional<TTableText> table;
    bool forgotten = false;
  };
  TState& StateOf(const std::string& name);
  void Load(TState& state);
  static void Read(TState& state, const std::string& text);
  static void Apply(TState& state, const std::string& statement);

  const TStructureOf& structure_of_;
  std::map<std::string, TState> states_;  // by name in lower case
  bool all_forgotten_ = false;
};

}  // namespace velmora
