// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <string>

#include "core/DBConn.h"
#include "formats/text/SMImportBaseComponent.h"

namespace velmora {

// The base of engines that leave their files to an import component. The files of a folder are its tables, named by
// their whole names; each table in use has a component and the dataset that this has filled. Deliberate: there is no
// client object, so whether it is connected cannot be asked.
class TDBConnSMI : public TDBConn {
 public:
  // `extensions` without dots, separated by ";".
  TDBConnSMI(std::string folder, std::string extensions);

  // A table in use. A failed import leaves one too.
  struct TOpenTable {
    std::shared_ptr<TSMImportBaseComponent> component;  // shared with the work that reads the file
    std::shared_ptr<TMemDataset> dataset;               // likewise, and with what OpenTable gave
    std::string name;
  };
  const std::list<TOpenTable>& OpenTables() const { return open_tables_; }

  // Makes the component of a table. The base has none: an engine without one raises the abstract-call error.
  std::function<std::unique_ptr<TSMImportBaseComponent>()> ComponentClass;

  const std::string& folder() const { return folder_; }
  const std::string& extensions() const { return extensions_; }

  // --- Connection
  void Connect() override;
  void Disconnect() override;  // empties the store and closes every open table
  void ApplyParams() override {}
  virtual void ApplyParams(TSMImportBaseComponent& /*component*/) {}  // for descendants; runs before each Execute
  void GetDisplayName(std::string& text) override;                    // empty

  // --- Words of the dialect, rows, statements
  // Every call opens the table anew. The dataset is a view of the open table's: it has no more rows once that is
  // closed.
  std::unique_ptr<TDataset> OpenTable(const std::string& table) override;
  void CloseTable(std::unique_ptr<TDataset> dataset) override;
  int GetEngine() override;
  std::int64_t GetRecordCount(const std::string& table) override;  // of an open table, else opens it

  // --- Names
  void ListDatabases(TStringList& list) override;  // none
  void ListTables(TStringList& list) override;     // the files of one extension together, by name

  // --- Transactions, copies
  std::unique_ptr<TDBConn> Clone() override;

  // --- Structure to texts and back
  // Raises "TDBConnSMI.FetchTableStructure: Unsupported field type for field " and its name, and what the import
  // raises.
  void FetchTableStructure(const std::string& table) override;
  // Deliberate: a default is not part of the text.
  void ColumnDescription(const TMetaColumn& column, bool detailed, std::string& text) override;

 private:
  static void CreateStructure(TSMImportBaseComponent& component, const TSMColumns& columns);
  void CloseOpenTable(std::list<TOpenTable>::iterator table);
  void DescribeField(TDataset& rows, std::size_t field);

  std::list<TOpenTable> open_tables_;
  std::string folder_;
  std::string extensions_;
};

}  // namespace velmora
