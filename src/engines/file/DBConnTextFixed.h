// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <string>

#include "engines/file/DBConnSMI.h"

namespace velmora {

// A folder of text files (*.txt, *.csv, *.tsv) with columns of fixed width as a database that is only read. Columns are
// found by TSMImportFromText. Deliberate: SaveParams stays abstract, and there is no display name.
class TDBConnTextFixed : public TDBConnSMI {
 public:
  // `hdr`: the first line holds the column names.
  TDBConnTextFixed(std::string folder, bool hdr);

  bool hdr() const { return hdr_; }

  using TDBConnSMI::ApplyParams;
  void ApplyParams(TSMImportBaseComponent& component) override;
  int GetEngine() override;
  std::unique_ptr<TDBConn> Clone() override;

 private:
  bool hdr_;
};

}  // namespace velmora
