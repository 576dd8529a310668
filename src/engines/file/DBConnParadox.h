// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "core/DBConn.h"

namespace velmora {

// A folder of Paradox tables as a database that is read: each file ".db" is a table. It runs no SQL and is no target.
// Deliberate: there is no client object, so whether it is connected cannot be asked; Disconnect leaves the store, and
// Connect on a connected engine empties it and lists the tables anew.
class TDBConnParadox : public TDBConn {
 public:
  explicit TDBConnParadox(std::string folder) : folder_(std::move(folder)) {}

  const std::string& Folder() const { return folder_; }

  void Connect() override;
  void Disconnect() override;
  void SaveParams(const std::string& path, TXMLAccess& store) override;
  void GetDisplayName(std::string& text) override;
  // The whole table in memory. A value that its field cannot take is null, and on_open, if it is set, is called with
  // table, field, the record's number from 1, and "Row #%d: %s (set to NULL)". Lets the host's messages run every 1000
  // records. Raises "This file is encrypted." and what TPxTable raises.
  std::unique_ptr<TDataset> OpenTable(const std::string& table) override;
  int GetEngine() override;
  std::int64_t GetRecordCount(const std::string& table) override;
  // The names of the files, without looking into them; a folder that is not there gives none.
  void ListTables(TStringList& list) override;
  std::unique_ptr<TDBConn> Clone() override;
  void FetchTableStructure(const std::string& table) override;

 private:
  std::string folder_;
};

}  // namespace velmora
