// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What a script sets around the views, triggers, routines and events that it makes.

#include <array>
#include <string>
#include <string_view>

#include "core/CreationTexts.h"

namespace velmora {

// Follows the "set" statements of a script. A setting counts where its value from before was kept first, by a statement
// of its own, as programs do that write down what an object was made under; what a script sets for itself, in its first
// lines, says nothing of its objects. What is put back counts no longer.
class TSessionSettings {
 public:
  void Take(std::string_view statement);  // of any kind

  const TObjectContext& Context() const { return context_; }

 private:
  struct TSetting {
    std::string_view variable;
    void (*set)(TObjectContext& context, const std::string& value);
    void (*forget)(TObjectContext& context);
  };
  static const std::array<TSetting, 3> kSettings;

  std::array<bool, 3> kept_{};
  TObjectContext context_{};
};

}  // namespace velmora
