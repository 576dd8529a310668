#pragma once

#include <memory>
#include <string>

#include "engines/oledb/DBConnOLEDB.h"
#include "engines/oledb/Providers.h"

namespace velmora {

// The engine of a folder of dBASE files.
class TDBConnDBF : public TDBConnOLEDB {
 public:
  explicit TDBConnDBF(std::string folder, TOLEDBProviderMaker maker = MakeOLEDBProvider);

  const std::string& folder() const { return folder_; }

  void SaveParams(const std::string& path, TXMLAccess& store) override;
  void ApplyParams() override;
  int GetEngine() override;
  std::unique_ptr<TDBConn> Clone() override;

 private:
  std::string folder_;
};

}  // namespace velmora
