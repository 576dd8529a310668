// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <string>
#include <utility>

#include "engines/oledb/DBConnOLEDB.h"
#include "engines/oledb/Providers.h"

namespace velmora {

// The engine of a folder of FoxPro files, or of a FoxPro database (.dbc).
class TDBConnFoxPro : public TDBConnOLEDB {
 public:
  explicit TDBConnFoxPro(std::string folder, TOLEDBProviderMaker maker = MakeOLEDBProvider)
      : TDBConnFoxPro(std::move(folder), {}, std::move(maker)) {}
  // `code_page`: of all files, whatever they say; empty: of each its own.
  TDBConnFoxPro(std::string folder, std::string code_page, TOLEDBProviderMaker maker = MakeOLEDBProvider);

  const std::string& folder() const { return folder_; }
  const std::string& code_page() const { return code_page_; }

  // --- Connection
  // Where the provider is missing, asks whether to open the page that has it, and raises EAbort.
  void Connect() override;
  void SaveParams(const std::string& path, TXMLAccess& store) override;
  void ApplyParams() override;
  void GetDisplayName(std::string& text) override;

  // --- Rows: chunks by the number of the record
  bool SupportsChunks(const std::string& table) override;
  std::unique_ptr<TDataset> OpenTableDataChunk(const std::string& table, std::int64_t first,
                                               std::int64_t count) override;

  int GetEngine() override;
  std::unique_ptr<TDBConn> Clone() override;

 private:
  std::string folder_;
  std::string code_page_;
};

}  // namespace velmora
