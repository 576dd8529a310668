// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/Errors.h"

#include "util/Format.h"

namespace velmora {

EAbstractError::EAbstractError() : EVelmora("Abstract Error") {}

EListError::EListError(std::int64_t index) : EVelmora(Format("List index out of bounds (%d)", index)) {}

EAbort::EAbort() : EVelmora("Operation aborted") {}

ECancelled::ECancelled() : EAbort("Cancelled") {}

void RaiseError(const std::string& message) { throw EVelmora(message); }

void RaiseAbstract() { throw EAbstractError(); }

}  // namespace velmora
