// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>

#include "exact/plan/LockClasses.h"
#include "exact/run/TableSizes.h"

namespace velmora {

// What making an action costs those who work with its table meanwhile.
struct TActionLock {
  ELockClass is = ELockClass::None;  // the most that a statement costs which serves it
  std::string text{};                // "copies the table; no writes meanwhile (about 1200 rows, 2.1 MB)"
  std::optional<TTableSize> size{};  // where it was asked for and matters
};

}  // namespace velmora
