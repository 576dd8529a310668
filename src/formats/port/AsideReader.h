// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

#include "formats/port/FileReader.h"

namespace velmora {

// A reader like that of `open`, whose calls are done aside (util/Aside.h). Opens at once and raises what `open` raises.
// After a call that was left the next one opens the files anew.
std::unique_ptr<TFileReader> ReadAside(TFileReaderMaker open);

}  // namespace velmora
