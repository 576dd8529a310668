// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/Version.h"

#include "util/Format.h"

namespace velmora {

std::string VersionText(int major, int minor, int build) {
  return build == 0 ? Format("%d.%d", major, minor) : Format("%d.%d.%d", major, minor, build);
}

std::string AppTitle() { return Format("%s %s", kProgramTitle, VersionText()); }

}  // namespace velmora
