// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <string>

#include "engines/oledb/DBConnOLEDB.h"
#include "engines/oledb/Providers.h"

namespace velmora {

// The engine of an Excel workbook. HDR: the first row of a sheet holds the names of its columns. IMEX: a column of
// several kinds of values is text.
class TDBConnExcel : public TDBConnOLEDB {
 public:
  TDBConnExcel(std::string filename, bool HDR, bool IMEX, TOLEDBProviderMaker maker = MakeOLEDBProvider);

  const std::string& filename() const { return filename_; }
  bool hdr() const { return hdr_; }

  void SaveParams(const std::string& path, TXMLAccess& store) override;
  void ApplyParams() override;
  int GetEngine() override;
  std::unique_ptr<TDBConn> Clone() override;

 private:
  std::string filename_;
  bool hdr_;
  bool imex_;
};

}  // namespace velmora
