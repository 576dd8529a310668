// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Colours of a terminal. They only repeat what the words say: with and without them the text is the same.

#include <string>

namespace velmora {

enum class EInk { Plain, New, Changed, Gone, Title, Good, Warning, Note, Bad };

class TColours {
 public:
  TColours() = default;  // none
  explicit TColours(bool on) : on_(on) {}

  // The text in this ink, or as it is. It must hold no control characters of its own.
  std::string operator()(EInk ink, const std::string& text) const;

 private:
  bool on_ = false;
};

}  // namespace velmora
