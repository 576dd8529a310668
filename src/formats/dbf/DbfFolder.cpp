// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/dbf/DbfFolder.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

#include "formats/dbf/DbfMemo.h"
#include "formats/dbf/DbfStructure.h"
#include "util/Errors.h"
#include "util/Files.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {
namespace {

namespace fs = std::filesystem;

constexpr char kExtension[] = ".dbf";
constexpr char kCannotOpen[] = "Cannot open %s: %s";
constexpr char kNoCodePage[] = "There is no code page %s: give a number, such as 1251, or UTF-8";
constexpr char kUnmapped[] = "%s: field \"%s\" is of type %s, which is not one of this product's";

const TDbfTypeRow& TypeOf(const TDbfFile& file, const TDbfField& field, TDbfMapping mapping) {
  const auto row = std::ranges::find_if(
      mapping, [&](const TDbfTypeRow& each) { return each.type == field.type && field.Is(each.flag); });
  if (row == mapping.end()) RaiseError(Format(kUnmapped, file.Path(), field.name, std::string_view(&field.type, 1)));
  return *row;
}

struct TColumn {
  const TDbfField* field;
  const TDbfTypeRow* type;
};

std::vector<TColumn> ColumnsOf(const TDbfFile& file, TDbfMapping mapping) {
  std::vector<TColumn> columns;
  for (const TDbfField& field : file.Fields())
    if (!field.Is(kDbfHidden)) columns.push_back({&field, &TypeOf(file, field, mapping)});
  return columns;
}

TOLEDBColumnRow ColumnRow(const TColumn& column, const std::string& table) {
  TOLEDBColumnRow row;
  row.TABLE_NAME = table;
  row.COLUMN_NAME = column.field->name;
  row.COLUMN_FLAGS = column.type->column_flags;
  row.DATA_TYPE = column.type->data_type;
  if (column.type->size == EDbfSize::Bytes)
    row.CHARACTER_MAXIMUM_LENGTH = static_cast<std::uint32_t>(column.field->size);
  if (column.type->size == EDbfSize::Digits) {
    row.NUMERIC_PRECISION = static_cast<std::uint16_t>(column.field->size);
    row.NUMERIC_SCALE = static_cast<std::int16_t>(column.field->decimals);
  }
  if (row.DATA_TYPE == kDbTypeR8) row.NUMERIC_PRECISION = kDbfDoublePrecision;
  return row;
}

TMemDataset::TRow RowOf(const TDbfFile& file, const std::vector<TColumn>& columns, std::string_view record,
                        TDbfMemoFile& memos) {
  TMemDataset::TRow row;
  row.reserve(columns.size());
  for (const auto& [field, type] : columns)
    if (DbfIsNull(file, *field, record))
      row.emplace_back();
    else
      row.push_back(type->read({file, *field, DbfBytesOf(file, *field, record), memos}));
  return row;
}

}  // namespace

std::vector<TDbfField> ShownFields(const TDbfFile& file) {
  std::vector<TDbfField> fields;
  for (const TDbfField& field : file.Fields())
    if (!field.Is(kDbfHidden)) fields.push_back(field);
  return fields;
}

TStringList DbfTableNames(const std::string& folder) {
  TStringList names;
  std::error_code error;
  for (fs::directory_iterator entry(folder, error); !error && entry != fs::directory_iterator();
       entry.increment(error)) {
    const fs::path path = entry->path().filename();
    std::error_code ignored;
    if (SameText(path.extension().string(), kExtension) && !entry->is_directory(ignored))
      names.push_back(path.stem().string());
  }
  if (error) RaiseError(Format(kCannotOpen, folder, error.message()));
  std::ranges::sort(names);
  names.erase(std::unique(names.begin(), names.end()), names.end());
  return names;
}

std::string DbfPathOf(const std::string& folder, const std::string& table, TFolderNames& known) {
  return FindFileNoCase(folder, table, kExtension, &known);
}

std::string CheckedCodePage(std::string code_page) {
  if (!code_page.empty() && !CodePageNamed(code_page)) RaiseError(Format(kNoCodePage, code_page));
  return code_page;
}

TFileTable DescribeDbf(const TDbfFile& file, const std::string& table, TDbfMapping mapping) {
  TFileTable described{.warnings = file.Warnings()};
  for (const TColumn& column : ColumnsOf(file, mapping)) {
    described.columns.push_back(ColumnRow(column, table));
    described.columns.back().ORDINAL_POSITION = static_cast<std::uint32_t>(described.columns.size());
    const bool sized = column.type->size == EDbfSize::Bytes;
    described.fields.push_back(
        {column.field->name, column.type->kind, sized ? static_cast<std::int64_t>(column.field->size) : 0});
    described.is_autoincrement.push_back(column.type->kind == EFieldKind::AutoInc);
  }
  return described;
}

TFileRows ReadDbfRows(const TDbfFile& file, TDbfMapping mapping, bool with_deleted, std::int64_t limit) {
  const std::vector<TColumn> columns = ColumnsOf(file, mapping);
  TDbfMemoFile memos(file.Path(), DbfMemoExtension(file.Head().Memo()), file.Head().Memo());
  TFileRows result;
  TDbfRecords records(file);
  while ((limit == kAllRows || std::ssize(result.rows) < limit) && records.Next()) {
    if (!with_deleted && records.IsDeleted()) continue;
    result.rows.push_back(RowOf(file, columns, records.Bytes(), memos));
    result.numbers.push_back(records.Number());
  }
  if (result.numbers.empty() || result.numbers.back() == std::ssize(result.rows)) result.numbers.clear();
  return result;
}

}  // namespace velmora
