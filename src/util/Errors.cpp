// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/Errors.h"

#include <algorithm>

#include "util/Format.h"

namespace velmora {

EAbstractError::EAbstractError() : EVelmora("Abstract Error") {}

EListError::EListError(std::int64_t index) : EVelmora(Format("List index out of bounds (%d)", index)) {}

EAbort::EAbort() : EVelmora("Operation aborted") {}

ECancelled::ECancelled() : EAbort("Cancelled") {}

// Texts of files may hold NULs, at which a message would end for whoever is shown it.
void RaiseError(const std::string& message) {
  std::string shown = message;
  std::ranges::replace(shown, '\0', ' ');
  throw EVelmora(shown);
}

void RaiseAbstract() { throw EAbstractError(); }

}  // namespace velmora
