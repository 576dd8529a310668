// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <string>
#include <utility>

#include "engines/oledb/DBConnOLEDB.h"
#include "engines/oledb/Providers.h"

namespace velmora {

// The engine of a folder of dBASE files.
class TDBConnDBF : public TDBConnOLEDB {
 public:
  explicit TDBConnDBF(std::string folder, TOLEDBProviderMaker maker = MakeOLEDBProvider)
      : TDBConnDBF(std::move(folder), {}, std::move(maker)) {}
  // `code_page`: of all files, whatever they say; empty: of each its own.
  TDBConnDBF(std::string folder, std::string code_page, TOLEDBProviderMaker maker = MakeOLEDBProvider);

  const std::string& folder() const { return folder_; }
  const std::string& code_page() const { return code_page_; }

  void SaveParams(const std::string& path, TXMLAccess& store) override;
  void ApplyParams() override;
  int GetEngine() override;
  std::unique_ptr<TDBConn> Clone() override;

 private:
  std::string folder_;
  std::string code_page_;
};

}  // namespace velmora
