// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/port/FileProvider.h"

#include <optional>
#include <utility>
#include <vector>

#include "formats/port/FileStatement.h"
#include "util/Errors.h"

namespace velmora {

namespace {

constexpr char kReadOnly[] = "Files are read only: no statement can be run on them and no transaction started";
constexpr char kNotOpen[] = "Not connected";

class TFileProvider final : public TOLEDBProvider {
 public:
  TFileProvider(TFileReaderMaker open, std::function<void()> create)
      : open_(std::move(open)), create_(std::move(create)) {}

  void Initialize() override { reader_ = open_(); }
  void Uninitialize() override {
    reader_.reset();
    fetched_.reset();
  }
  bool Initialized() const override { return reader_ != nullptr; }
  void CreateDataSource() override {
    if (!create_) return TOLEDBProvider::CreateDataSource();
    create_();
  }

  TStringList Catalogs() override { return {}; }
  std::vector<TOLEDBTableRow> Tables() override { return Reader()->Tables(); }
  std::vector<TOLEDBColumnRow> Columns(const std::string& table) override;
  std::vector<TOLEDBIndexRow> Indexes(const std::string& table) override;
  TOLEDBRowset Open(const std::string& sql) override;
  std::int64_t Execute(const std::string& /*sql*/) override { RaiseError(kReadOnly); }
  TFileReader* Files() override { return Reader().get(); }
  TStringList TakeWarnings() override { return std::exchange(warnings_, {}); }
  void StartTransaction(std::uint32_t /*isolation*/) override { RaiseError(kReadOnly); }
  void Commit() override { RaiseError(kReadOnly); }

 private:
  const std::shared_ptr<TFileReader>& Reader() const {
    if (!reader_) RaiseError(kNotOpen);
    return reader_;
  }

  TFileReaderMaker open_;
  std::function<void()> create_;
  std::shared_ptr<TFileReader> reader_;  // rowsets that have not read their rows yet share it
  // Columns and indexes of a table are asked for one after the other and come from one reading.
  std::optional<std::pair<std::string, TFileTable>> fetched_;
  TStringList warnings_;
};

std::vector<TOLEDBColumnRow> TFileProvider::Columns(const std::string& table) {
  fetched_.reset();
  fetched_.emplace(table, Reader()->Structure(table));
  for (const std::string& warning : fetched_->second.warnings) warnings_.push_back(warning);
  return fetched_->second.columns;
}

std::vector<TOLEDBIndexRow> TFileProvider::Indexes(const std::string& table) {
  if (!fetched_ || fetched_->first != table) Columns(table);
  auto indexes = std::move(fetched_->second.indexes);
  fetched_.reset();
  return indexes;
}

TOLEDBRowset TFileProvider::Open(const std::string& sql) {
  const std::shared_ptr<TFileReader>& reader = Reader();
  const TFileStatement statement = ParseFileStatement(sql);
  if (statement.count) {
    const auto count = static_cast<std::int64_t>(reader->Rows(statement.table, kAllRows).rows.size());
    return {.fields = {{"count", EFieldKind::LargeInt, 0}}, .is_autoincrement = {}, .rows = {{count}}, .read_rows = {}};
  }
  TFileTable table = reader->Structure(statement.table);
  TOLEDBRowset rowset;
  rowset.read_rows = [reader, statement, fields = table.fields] {
    return SelectRows(statement, fields, reader->Rows(statement.table, RowsNeeded(statement)));
  };
  rowset.fields = std::move(table.fields);
  rowset.is_autoincrement = std::move(table.is_autoincrement);
  return rowset;
}

}  // namespace

std::unique_ptr<TOLEDBProvider> NewFileProvider(TFileReaderMaker open, std::function<void()> create) {
  return std::make_unique<TFileProvider>(std::move(open), std::move(create));
}

}  // namespace velmora
