// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/plan/FollowedTables.h"

#include "exact/plan/PlanApply.h"

#include <utility>

#include "exact/plan/Plan.h"
#include "util/Errors.h"
#include "util/Text.h"

namespace velmora {

TFollowedTables::TState& TFollowedTables::StateOf(const std::string& name) {
  TState& state = states_[LowerText(name)];
  if (state.spelling.empty()) state.spelling = name;
  if (state.spelling != name) state.forgotten = true;
  return state;
}

const TTableText* TFollowedTables::Find(const std::string& name) {
  TState& state = StateOf(name);
  if (!state.table && !state.forgotten && !all_forgotten_) Load(state);
  return state.table && !state.forgotten && !all_forgotten_ ? &*state.table : nullptr;
}

void TFollowedTables::Load(TState& state) {
  const std::optional<std::string> text = structure_of_(state.spelling);
  state.forgotten = !text;
  if (text) Read(state, *text);
  for (const std::string& statement : std::exchange(state.pending, {})) Apply(state, statement);
}

void TFollowedTables::Read(TState& state, const std::string& text) {
  try {
    state.table = ReadTableText(text);
    state.table->name = state.spelling;
  } catch (const EVelmora&) {
    state.forgotten = true;
  }
}

void TFollowedTables::Make(const std::string& name, const std::string& statement) {
  TState& state = StateOf(name);
  state.forgotten = state.spelling != name;
  state.pending.clear();
  Read(state, statement);
}

void TFollowedTables::Alter(const std::string& name, const std::string& statement) {
  TState& state = StateOf(name);
  if (state.table)
    Apply(state, statement);
  else
    state.pending.push_back(statement);
}

void TFollowedTables::Apply(TState& state, const std::string& statement) {
  if (state.forgotten) return;
  try {
    TSchema schema;
    schema.Add(*state.table);
    ApplyStatement(statement, schema);
    state.table = *schema.Find(state.spelling);
  } catch (const EVelmora&) {
    state.forgotten = true;
  }
}

void TFollowedTables::Forget(const std::string& name) { StateOf(name).forgotten = true; }

}  // namespace velmora
