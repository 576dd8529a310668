// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Difference.h"

#include <array>

namespace velmora {

namespace {

struct TKindRow {
  std::string_view word;
  std::string_view title;
};
constexpr std::array<TKindRow, 12> kKinds{{{"table", "Tables"},
                                           {"column", "Columns"},
                                           {"index", "Indexes"},
                                           {"foreign key", "Foreign keys"},
                                           {"constraint", "Constraints"},
                                           {"options", "Table options"},
                                           {"partitioning", "Partitioning"},
                                           {"view", "Views"},
                                           {"trigger", "Triggers"},
                                           {"procedure", "Procedures"},
                                           {"function", "Functions"},
                                           {"event", "Events"}}};
constexpr std::array<std::string_view, 3> kStates{"new", "changed", "obsolete"};

}  // namespace

std::string_view StateWord(EDifferenceState state) { return kStates.at(static_cast<std::size_t>(state)); }

std::string_view KindWord(EDifferenceKind kind) { return kKinds.at(static_cast<std::size_t>(kind)).word; }

bool OfTable(EDifferenceKind kind) { return kind < EDifferenceKind::View; }

std::string_view KindTitle(EDifferenceKind kind) { return kKinds.at(static_cast<std::size_t>(kind)).title; }

}  // namespace velmora
