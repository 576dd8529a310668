// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "core/DBConn.h"

namespace velmora {

// A folder of delimited text files (*.txt, *.csv, *.tsv) as a database that is only read: a table per file, named by
// the file's whole name. Columns and their types come from the data, see TDelimitedText; there are no keys and no
// constraints. Nothing is kept open: each operation reads the file anew, whole.
class TDBConnTextDelim : public TDBConn {
 public:
  // An empty separator is never found, so that a line is one value. `hdr`: the first line holds the column names.
  TDBConnTextDelim(std::string folder, std::string separator, bool hdr);

  const std::string& folder() const { return folder_; }
  const std::string& separator() const { return separator_; }
  bool hdr() const { return hdr_; }

  // --- Connection
  void Connect() override;
  void Disconnect() override;  // does nothing: the store stays
  void SaveParams(const std::string& path, TXMLAccess& store) override;
  bool GetConnected() override;                     // whether the folder exists
  void GetDisplayName(std::string& text) override;  // the folder

  // --- Words of the dialect, rows, statements
  std::unique_ptr<TDataset> OpenTable(const std::string& table) override;  // all rows; raises what TDelimitedText does
  void CloseTable(std::unique_ptr<TDataset> dataset) override;
  int GetEngine() override;
  std::int64_t GetRecordCount(const std::string& table) override;  // lines, without that of the names

  // --- Names
  void ListTables(TStringList& list) override;  // the files of one mask together, by name

  // --- Transactions, copies
  std::unique_ptr<TDBConn> Clone() override;

  // --- Structure to texts and back
  // Raises whatever reading all rows would raise. Deliberate: a column of times, or of dates with times, is a <DATE>.
  void FetchTableStructure(const std::string& table) override;

  // --- Changing the structure
  // Writes a file NAME.txt of the one line "# NAME", whatever the definitions. Deliberate: read as a table, that line
  // is data.
  void CreateTable(const std::string& table, const TStringList& definitions) override;

 private:
  std::string PathOf(const std::string& table) const;

  bool hdr_;
  std::string separator_;
  std::string folder_;
};

}  // namespace velmora
