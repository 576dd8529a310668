// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What a script sets around the views, triggers, routines and events that it makes.

#include <array>
#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "core/CreationTexts.h"
#include "mysqltext/Lexer.h"

namespace velmora {

// Follows the "set" statements of a script. One that was written by hand counts as for a client that runs the script.
// Of what programs write, a setting counts where its value from before was kept first, by a statement of its own, as
// they do that write down what an object was made under; what such a script sets for itself, in its first lines, says
// nothing of its objects. What is put back counts no longer.
class TSessionSettings {
 public:
  // Of any kind. `place` is told where nobody can follow it.
  void Take(std::string_view statement, bool by_hand, const std::string& place);

  TObjectContext Context() const;
  bool ModeIsByHand() const { return now_[kMode].by_hand; }
  // Why nobody knows the mode from some statement on; empty where it is known, or nothing is said of it.
  const std::string& UnknownMode() const { return now_[kMode].unknown; }

 private:
  static constexpr std::size_t kMode = 0;
  static constexpr std::size_t kCollation = 1;
  static constexpr std::size_t kZone = 2;
  static constexpr std::size_t kCount = 3;
  struct TValue {
    std::optional<std::string> said{};  // nothing: the session's own
    std::string unknown{};
    bool by_hand = false;
  };
  struct TAssignment;

  void Assign(const TAssignment& assignment);
  void Keep(const TAssignment& assignment);
  void SetByHand(std::size_t setting, const TAssignment& assignment);
  void SetByProgram(std::size_t setting, const TAssignment& assignment);
  void SetNames(TTokens tokens);
  const TValue* KeptIn(const TAssignment& assignment) const;

  std::array<TValue, kCount> now_{};
  std::array<bool, kCount> kept_{};
  std::map<std::string, TValue> kept_values_;  // by the variable that keeps them, in lower case
};

}  // namespace velmora
