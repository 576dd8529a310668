// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Passwords in arguments, and in the messages that tell of them.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "app/SourceText.h"

namespace velmora {

// Where passwords stand in each argument: in the sources among them and after an option that is meant to give one.
std::vector<std::vector<TTextRange>> SecretsOfArguments(const std::vector<std::string>& arguments);

class TSecrets {
 public:
  TSecrets() = default;
  // Those of the arguments. A message may hold an argument as a whole, or what stands after its option's name.
  explicit TSecrets(const std::vector<std::string>& arguments);

  // "***" in place of each. Beyond the arguments that is what stands after the user of an address and after
  // "password=", whatever text it stands in.
  std::string Without(std::string_view text) const;

 private:
  struct TSecretText {
    std::string text, shown;
  };
  std::vector<TSecretText> texts_;  // the longest first
};

}  // namespace velmora
