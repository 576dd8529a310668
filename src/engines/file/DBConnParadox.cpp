// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/file/DBConnParadox.h"

#include <algorithm>
#include <iterator>
#include <tuple>
#include <utility>
#include <vector>

#include "core/Host.h"
#include "core/Meta.h"
#include "engines/file/FilesOfFolder.h"
#include "formats/paradox/ParadoxReader.h"
#include "util/Aside.h"
#include "util/Errors.h"
#include "util/Files.h"
#include "util/Format.h"
#include "xml/XMLAccess.h"

namespace velmora {
namespace {

constexpr char kFolderKey[] = "/folder";
constexpr char kTableExtension[] = ".db";
constexpr char kSetToNull[] = "Row #%d: %s (set to NULL)";
constexpr std::int64_t kAtOnce = 1000;  // records

std::string TablePath(const std::string& folder, const std::string& table) {
  return FindFileNoCase(folder, table, kTableExtension);
}

using TRows = std::vector<TMemDataset::TRow>;

// The records of a table, as the reader has them, so many at once.
class TRecords {
 public:
  TRecords(const std::string& folder, const std::string& table)
      : file_(ESlow::Files, [=] { return std::make_unique<TPxTable>(TablePath(folder, table), false); }) {
    std::tie(fields_, left_) =
        file_.Do([](TPxTable& file) { return std::pair(file.Fields(), std::int64_t{file.Header().numRecords}); });
  }

  const std::vector<TPxField>& Fields() const { return fields_; }
  bool Next(TRows& rows) {  // false: there are no more
    const std::int64_t count = std::min(left_, kAtOnce);
    if (count == 0) return false;
    rows = file_.Do([count, first = read_](TPxTable& file) {
      TRows these(static_cast<std::size_t>(count));
      for (std::int64_t i = 0; i < count; ++i) {
        file.ReadRecord(first + i);
        std::vector<TVariant>& values = file.Values();
        these[static_cast<std::size_t>(i)].assign(std::move_iterator(values.begin()), std::move_iterator(values.end()));
      }
      return these;
    });
    read_ += count;
    left_ -= count;
    return true;
  }

 private:
  TAsideObject<TPxTable> file_;
  std::vector<TPxField> fields_;
  std::int64_t read_ = 0;
  std::int64_t left_ = 0;
};

// What a type of the file is to the store and to a dataset.
struct TPxTypeRow {
  std::uint8_t type;
  TNeutralType datatype;
  EFieldKind kind;
  bool sized = false;  // the dataset's field has the file's size
};

constexpr TPxTypeRow kTypes[] = {
    {pxAlpha, ntVarChar, EFieldKind::String, true},
    {pxDate, ntDate, EFieldKind::Date},
    {pxShort, ntI2, EFieldKind::SmallInt},
    {pxLong, ntI4, EFieldKind::Integer},
    {pxAutoInc, ntI4, EFieldKind::Integer},
    {pxCurrency, ntDouble, EFieldKind::Float},
    {pxNumber, ntDouble, EFieldKind::Float},
    {pxBCD, ntDouble, EFieldKind::Float},
    {pxLogical, ntBool, EFieldKind::Boolean},
    {pxMemo, ntText, EFieldKind::Memo, true},
    {pxFmtMemo, ntText, EFieldKind::Memo, true},
    {pxBinary, ntBytes, EFieldKind::Blob, true},
    {pxOLE, ntBytes, EFieldKind::Blob, true},
    {pxGraphic, ntBytes, EFieldKind::Blob, true},
    {pxBytes, ntBytes, EFieldKind::Blob, true},
    {pxTime, ntTime, EFieldKind::Time},
    {pxTimestamp, ntTimestamp, EFieldKind::TimeStamp},
};
constexpr TPxTypeRow kUnknownFirst = {0, ntText, EFieldKind::Memo, true};

// The rows for the types of these fields. Deliberate: a field of an unknown type is of the type before it, a first one
// is text.
std::vector<const TPxTypeRow*> TypesOf(const std::vector<TPxField>& fields) {
  std::vector<const TPxTypeRow*> types;
  const TPxTypeRow* last = &kUnknownFirst;
  for (const TPxField& field : fields) {
    const auto* row = std::ranges::find(kTypes, field.type, &TPxTypeRow::type);
    if (row != std::end(kTypes)) last = row;
    types.push_back(last);
  }
  return types;
}

std::vector<TFieldDef> FieldDefs(const std::vector<TPxField>& fields, const std::vector<const TPxTypeRow*>& types) {
  std::vector<TFieldDef> defs;
  for (std::size_t i = 0; i < fields.size(); ++i)
    defs.push_back({fields[i].name, types[i]->kind, types[i]->sized ? static_cast<std::int64_t>(fields[i].size) : 0});
  return defs;
}

// Days as a date or time. Raises EConvertError for what no calendar shows.
TMoment MomentOf(double days) {
  DecodeDateTime(days);
  return {days};
}

// The reader's value as one of a dataset's field.
TVariant Assigned(TVariant&& value, EFieldKind kind) {
  if (const auto* number = std::get_if<std::int64_t>(&value); number != nullptr && kind == EFieldKind::Boolean)
    return *number != 0;
  if (const auto* number = std::get_if<double>(&value); number != nullptr && kind != EFieldKind::Float)
    return MomentOf(*number);
  return std::move(value);
}

void AddColumns(TDBConn& conn, const std::vector<TPxField>& fields) {
  const std::vector<const TPxTypeRow*> types = TypesOf(fields);
  auto& columns = conn.meta().tColumns;
  for (std::size_t i = 0; i < fields.size(); ++i) {
    TColumnTypeInfo info;
    conn.ColumnTypeInfo(types[i]->datatype, info);
    TColumnRow& row = columns.Append();
    row.name = fields[i].name;
    row.datatype = types[i]->datatype;
    row.size = info.has_length ? static_cast<std::int64_t>(fields[i].size) : 0;
    row.autoinc = fields[i].type == pxAutoInc;
    columns.Post();
  }
}

// The first columns are the key.
void AddPrimaryKey(TMeta& meta, std::size_t width) {
  TKeyRow& key = meta.tKeys.Append();
  key.name = kPrimaryKeyName;
  key.primary = true;
  key.unique = true;
  meta.tKeys.Post();
  meta.tColumns.First();
  for (std::size_t i = 0; i < width; ++i, meta.tColumns.Next()) {
    meta.tKeyFields.Append().column = meta.tColumns.Current().name;
    meta.tKeyFields.Post();
  }
}

}  // namespace

void TDBConnParadox::Connect() { RefreshTableList(); }

void TDBConnParadox::Disconnect() {}

void TDBConnParadox::SaveParams(const std::string& path, TXMLAccess& store) {
  store.xmlSetVal(path + kFolderKey, folder_);
}

void TDBConnParadox::GetDisplayName(std::string& text) { text = folder_; }

std::unique_ptr<TDataset> TDBConnParadox::OpenTable(const std::string& table) {
  TRecords records(folder_, table);
  const std::vector<TPxField>& fields = records.Fields();
  const std::vector<const TPxTypeRow*> types = TypesOf(fields);
  auto dataset = std::make_unique<TMemDataset>(FieldDefs(fields, types));
  std::int64_t number = 0;
  for (TRows rows; records.Next(rows);) {
    Host().ProcessMessages();
    for (TMemDataset::TRow& row : rows) {
      ++number;
      for (std::size_t k = 0; k < fields.size(); ++k) {
        try {
          row[k] = Assigned(std::move(row[k]), types[k]->kind);
        } catch (const EVelmora& error) {
          row[k] = {};
          if (on_open) on_open(table, fields[k].name, number, Format(kSetToNull, number, error.what()));
        }
      }
      dataset->AddRow(std::move(row));
    }
  }
  return dataset;
}

int TDBConnParadox::GetEngine() { return kEngineParadox; }

std::int64_t TDBConnParadox::GetRecordCount(const std::string& table) {
  return DoAside(ESlow::Files, [folder = folder_, table] {
    std::uint32_t records = 0;
    std::uint16_t fields = 0;
    TPxTable::ReadHeaderInfo(TablePath(folder, table), records, fields);
    return std::int64_t{records};
  });
}

// Cut by length, since an extension is found in capitals too.
void TDBConnParadox::ListTables(TStringList& list) {
  list = FilesAside(folder_, {kTableExtension + 1});
  for (std::string& name : list) name.resize(name.size() - std::string_view(kTableExtension).size());
}

std::unique_ptr<TDBConn> TDBConnParadox::Clone() {
  auto clone = std::make_unique<TDBConnParadox>(folder_);
  clone->meta().CopyFrom(meta());
  return clone;
}

void TDBConnParadox::FetchTableStructure(const std::string& table) {
  const auto [fields, key_width] = DoAside(ESlow::Files, [folder = folder_, table] {
    const TPxTable reader(TablePath(folder, table), true);
    return std::pair(reader.Fields(), reader.Header().primaryKeyFields);
  });
  meta().InvalidateTable(table);
  AddColumns(*this, fields);
  if (key_width != 0) AddPrimaryKey(meta(), key_width);
}

}  // namespace velmora
