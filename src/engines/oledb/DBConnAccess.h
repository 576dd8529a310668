// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "engines/oledb/DBConnOLEDB.h"
#include "engines/oledb/Providers.h"

namespace velmora {

// The engine of one Access database file.
class TDBConnAccess : public TDBConnOLEDB {
 public:
  TDBConnAccess(std::string filename, std::string password, std::string sysdb_filename,
                TOLEDBProviderMaker maker = MakeOLEDBProvider);

  const std::string& filename() const { return filename_; }
  const std::string& password() const { return password_; }
  // Deliberate: what is entered as the system database travels as the password of the database.
  const std::string& sysdb_filename() const { return sysdb_filename_; }

  // --- Connection
  void Connect() override;  // makes the file when there is none
  void SaveParams(const std::string& path, TXMLAccess& store) override;
  void ApplyParams() override;

  // --- Words of the dialect, rows, statements
  void DateTimeLiteral(TDateTime value, std::string& text) override;
  bool SupportsChunks(const std::string& table) override;  // for a primary key of one column
  std::unique_ptr<TDataset> OpenTableDataChunk(const std::string& table, std::int64_t first,
                                               std::int64_t count) override;
  int GetEngine() override;
  void GetColumnTypes(TColumnTypeInfoArray& table) override;

  // --- Copies
  // Deliberate: the clone's password is this one's sysdb_filename, and the other way round.
  std::unique_ptr<TDBConn> Clone() override;

  // --- Structure to texts and back
  void ColumnDescription(const TMetaColumn& column, bool detailed, std::string& text) override;
  void ConvertColumn(const TMetaColumn& source, TMetaColumn& column) override;

 private:
  std::string filename_;
  std::string password_;
  std::string sysdb_filename_;
};

}  // namespace velmora
