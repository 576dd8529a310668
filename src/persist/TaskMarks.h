// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What a task says of the care that its target needs: a colour, and whether a run asks for the database's name.

#include <optional>
#include <string>

namespace velmora {

enum class ETaskColour { None, Red, Orange, Yellow, Green, Blue, Purple };

// In the order of the colours: their words in task files, on the command line and, for people, in windows.
inline constexpr const char* kTaskColours[] = {"none", "red", "orange", "yellow", "green", "blue", "purple"};

struct TTaskMarks {
  ETaskColour colour = ETaskColour::None;
  bool confirm_database = false;  // a run goes on only after the target database's name was typed

  bool operator==(const TTaskMarks&) const = default;
  bool Any() const { return *this != TTaskMarks(); }
};

const char* ColourWord(ETaskColour colour);
std::optional<ETaskColour> FindColour(const std::string& word);  // ignoring case

}  // namespace velmora
