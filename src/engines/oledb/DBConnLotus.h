// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <string>

#include "engines/oledb/DBConnOLEDB.h"
#include "engines/oledb/Providers.h"

namespace velmora {

// The engine of a Lotus 1-2-3 file.
class TDBConnLotus : public TDBConnOLEDB {
 public:
  explicit TDBConnLotus(std::string filename, TOLEDBProviderMaker maker = MakeOLEDBProvider);

  const std::string& filename() const { return filename_; }

  void SaveParams(const std::string& path, TXMLAccess& store) override;
  void ApplyParams() override;
  int GetEngine() override;
  std::unique_ptr<TDBConn> Clone() override;

 private:
  std::string filename_;
};

}  // namespace velmora
