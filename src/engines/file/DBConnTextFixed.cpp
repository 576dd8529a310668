// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/file/DBConnTextFixed.h"

#include <utility>

#include "core/Meta.h"
#include "formats/text/SMImportFromText.h"

namespace velmora {

TDBConnTextFixed::TDBConnTextFixed(std::string folder, bool hdr)
    : TDBConnSMI(std::move(folder), "txt;csv;tsv"), hdr_(hdr) {
  ComponentClass = [] { return std::make_unique<TSMImportFromText>(); };
}

void TDBConnTextFixed::ApplyParams(TSMImportBaseComponent& component) {
  auto& import = dynamic_cast<TSMImportFromText&>(component);
  import.Fixed = true;
  import.RowFirst = hdr_ ? 2 : 1;
}

int TDBConnTextFixed::GetEngine() { return kEngineText; }

std::unique_ptr<TDBConn> TDBConnTextFixed::Clone() {
  auto clone = std::make_unique<TDBConnTextFixed>(folder(), hdr_);
  clone->meta().CopyFrom(meta());
  return clone;
}

}  // namespace velmora
