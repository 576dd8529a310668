// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <string>

#include "engines/oledb/DBConnOLEDB.h"
#include "engines/oledb/Providers.h"

namespace velmora {

// The engine of an ODBC data source, by its name.
class TDBConnODBC : public TDBConnOLEDB {
 public:
  explicit TDBConnODBC(std::string dsn, TOLEDBProviderMaker maker = MakeOLEDBProvider);

  const std::string& dsn() const { return dsn_; }

  // --- Connection
  void SaveParams(const std::string& path, TXMLAccess& store) override;
  void ApplyParams() override;
  void GetDisplayName(std::string& text) override;

  int GetEngine() override;
  std::unique_ptr<TDBConn> Clone() override;

 private:
  std::string dsn_;
};

}  // namespace velmora
