// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/OptionMeanings.h"

namespace velmora {

bool TickedAtFirst(const TDifference& difference, const TOptions& options) {
  if (difference.other_engine && !options.AllowTblTypeChg) return false;
  if (difference.state != EDifferenceState::Obsolete) return true;
  switch (difference.kind) {
    case EDifferenceKind::Column:
      return options.DropExtraColumns;
    case EDifferenceKind::Index:
      return options.DropExtraIndices;
    case EDifferenceKind::ForeignKey:
    case EDifferenceKind::Constraint:
      return options.DropExtraConstraints;
    default:
      return options.DropExtraTables;
  }
}

}  // namespace velmora
