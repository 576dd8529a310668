// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/text/SMImportBaseComponent.h"

#include <numeric>

namespace velmora {

void TSMImportBaseComponent::RebuildMappings() {
  Mappings.resize(DataSet->Fields().size());
  std::iota(Mappings.begin(), Mappings.end(), std::size_t{0});
}

}  // namespace velmora
