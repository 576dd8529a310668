// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/file/FilesOfFolder.h"

#include <utility>

#include "formats/text/TextFile.h"
#include "util/Aside.h"
#include "util/Files.h"

namespace velmora {

TStringList FilesAside(const std::string& folder, TStringList extensions) {
  return DoAside(ESlow::Files, [folder, extensions = std::move(extensions)] {
    TStringList names;
    for (const std::string& extension : extensions) FindFiles(names, JoinPath(folder, "*." + extension), false, false);
    CutToFileNames(names);
    return names;
  });
}

}  // namespace velmora
