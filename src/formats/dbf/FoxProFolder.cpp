// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/dbf/FoxProFolder.h"

// The mapping of types is that of the OLE DB provider for Visual FoxPro, which is documented with it. Deleted records
// are left out, and the others keep their numbers, which count the deleted ones too.

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <utility>

#include "formats/dbf/DbcDatabase.h"
#include "formats/dbf/DbfFolder.h"
#include "formats/dbf/DbfIndexes.h"
#include "formats/dbf/DbfStructure.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {
namespace {

namespace fs = std::filesystem;

// A table that names no code page is in that of the system; the provider is one of Windows.
constexpr char kCodePage[] = "CP1252";

constexpr char kNoTable[] = "%s: there is no table \"%s\"";
constexpr char kBelongs[] = "%s; the table in %s belongs to it";
constexpr char kNoDatabase[] = "%s is not there: long names, defaults and keys of the table in %s are not known";
constexpr char kNoTags[] = "%s is not there: indexes of the table in %s are not known";
constexpr char kNotListed[] = "%s: the table in %s says that it belongs here, but is not among its tables";
constexpr char kOtherFields[] = "%s: table \"%s\" has %d fields here, but %d in %s";

// Where there is no memo there is an empty one: null has a flag of its own.
TVariant MemoText(const TDbfCell& cell) { return IfNull(DbfMemoText(cell), std::string()); }
TVariant MemoBytes(const TDbfCell& cell) { return IfNull(DbfMemoBytes(cell), std::string()); }

using enum EFieldKind;
constexpr std::uint32_t kFixed = kColumnIsFixedLength;
constexpr std::uint32_t kLong = kColumnIsLong;

constexpr TDbfTypeRow kTypes[] = {
    {'C', kDbfBinary, kDbTypeBytes, kFixed, Bytes, EDbfSize::Bytes, DbfBytes},
    {'C', 0, kDbTypeStr, kFixed, FixedChar, EDbfSize::Bytes, DbfText},
    {'N', 0, kDbTypeNumeric, kFixed, Bcd, EDbfSize::Digits, DbfDecimal},
    {'F', 0, kDbTypeNumeric, kFixed, Bcd, EDbfSize::Digits, DbfDecimal},
    {'I', kDbfAutoInc, kDbTypeI4, kFixed, AutoInc, EDbfSize::None, DbfInteger},
    {'I', 0, kDbTypeI4, kFixed, Integer, EDbfSize::None, DbfInteger},
    {'B', 0, kDbTypeR8, kFixed, Float, EDbfSize::None, DbfDouble},
    {'Y', 0, kDbTypeCy, kFixed, Currency, EDbfSize::None, DbfMoney},
    {'D', 0, kDbTypeDBDate, kFixed, Date, EDbfSize::None, DbfDate},
    {'T', 0, kDbTypeDBTimeStamp, kFixed, DateTime, EDbfSize::None, DbfDateTime},
    {'L', 0, kDbTypeBool, kFixed, Boolean, EDbfSize::None, DbfLogical},
    {'M', kDbfBinary, kDbTypeBytes, kLong, Blob, EDbfSize::None, MemoBytes},
    {'M', 0, kDbTypeStr, kLong, Memo, EDbfSize::None, MemoText},
    {'G', 0, kDbTypeBytes, kLong, Blob, EDbfSize::None, MemoBytes},
    {'P', 0, kDbTypeBytes, kLong, Blob, EDbfSize::None, MemoBytes},
    {'W', 0, kDbTypeBytes, kLong, Blob, EDbfSize::None, MemoBytes},
    {'V', 0, kDbTypeStr, 0, String, EDbfSize::Bytes, DbfVarText},
    {'Q', 0, kDbTypeBytes, 0, VarBytes, EDbfSize::Bytes, DbfBytes},
};

class TFoxProFolder final : public TFileReader, public TDbfStructures {
 public:
  TFoxProFolder(const std::string& path, std::string code_page)
      : path_(path), code_page_(CheckedCodePage(std::move(code_page))) {
    std::error_code error;
    if (fs::exists(path, error) && !fs::is_directory(path, error)) opened_ = &Database(path);
    TFoxProFolder::Tables();
  }

  std::vector<TOLEDBTableRow> Tables() override;
  TStringList TableNames() override;
  TDbfStructure StructureOf(const std::string& table) override;
  TFileTable Structure(const std::string& table) override;
  TFileRows Rows(const std::string& table, std::int64_t limit) override {
    return ReadDbfRows(File(table), kTypes, false, limit);
  }

 private:
  TDbfFile File(const std::string& table) { return {PathOf(table), kCodePage, code_page_, &known_}; }
  const TDbcDatabase& Database(const std::string& path);
  std::string PathOf(const std::string& table);
  // What the database that the file belongs to says about it; null: it belongs to none, or that is missing.
  const TDbcTable* Entry(const TDbfFile& file, const std::string& table, TStringList& warnings);

  std::string path_;
  std::string code_page_;
  std::map<std::string, std::unique_ptr<TDbcDatabase>> databases_;  // by path, read once
  const TDbcDatabase* opened_ = nullptr;                            // where not a folder was opened
  TFolderNames known_;                                              // since the tables were listed
};

// Long names and defaults, which the table's file has no room for.
void Complete(TFileTable& table, const TDbcTable& entry) {
  for (std::size_t i = 0; i < entry.fields.size(); ++i) {
    table.columns[i].COLUMN_NAME = table.fields[i].name = entry.fields[i].name;
    table.columns[i].COLUMN_DEFAULT = entry.fields[i].default_value;
  }
}

void SetNullable(const TDbfFile& file, TFileTable& table) {
  auto column = table.columns.begin();
  for (const TDbfField& field : file.Fields())
    if (!field.Is(kDbfHidden)) column++->IS_NULLABLE = field.Is(kDbfNullable);
}

std::vector<TOLEDBTableRow> TFoxProFolder::Tables() {
  known_ = {};
  std::vector<TOLEDBTableRow> tables;
  if (opened_ == nullptr)
    for (const std::string& name : DbfTableNames(path_)) tables.push_back({name, "TABLE"});
  else
    for (const TDbcTable& table : opened_->Tables()) tables.push_back({table.name, "TABLE"});
  return tables;
}

// The file of the same name with that extension, whether it is there or not.
std::string Beside(const TDbfFile& file, std::string_view extension, TFolderNames& known) {
  const fs::path path(file.Path());
  return FindFileNoCase(path.parent_path().string(), path.stem().string(), extension, &known);
}

bool IsThere(const std::string& path) {
  std::error_code ignored;
  return fs::exists(path, ignored);
}

// The tags beside the table; nothing where their file is missing. In tables of dBASE IV the same flag speaks of an .mdx
// file.
std::optional<std::vector<TDbfIndex>> TagsOf(const TDbfFile& file, TFolderNames& known, TStringList& warnings) {
  const TDbfHead& head = file.Head();
  if ((head.flags & kDbfHasTags) == 0 || head.Memo() == EDbfMemo::DBase4) return std::vector<TDbfIndex>();
  const std::string path = Beside(file, ".cdx", known);
  if (IsThere(path)) return ReadFoxProTags(path);
  if (!head.IsVisualFoxPro() && IsThere(Beside(file, ".mdx", known))) return std::vector<TDbfIndex>();
  warnings.push_back(Format(kNoTags, path, file.Path()));
  return std::nullopt;
}

TStringList TFoxProFolder::TableNames() {
  TStringList names;
  for (const TOLEDBTableRow& row : Tables()) names.push_back(row.TABLE_NAME);
  return names;
}

TDbfStructure TFoxProFolder::StructureOf(const std::string& table) {
  const TDbfFile file = File(table);
  TDbfStructure structure{
      .fields = ShownFields(file), .visual = file.Head().IsVisualFoxPro(), .warnings = file.Warnings()};
  if (const TDbcTable* entry = Entry(file, table, structure.warnings)) structure.entry = *entry;
  auto tags = TagsOf(file, known_, structure.warnings);
  structure.tags_missing = !tags;
  if (tags) structure.indexes = *std::move(tags);
  return structure;
}

TFileTable TFoxProFolder::Structure(const std::string& table) {
  const TDbfFile file = File(table);
  TFileTable described = DescribeDbf(file, table, kTypes);
  SetNullable(file, described);
  std::vector<std::string> short_names;
  for (const TOLEDBColumnRow& column : described.columns) short_names.push_back(column.COLUMN_NAME);
  const TDbcTable* entry = Entry(file, table, described.warnings);
  if (entry != nullptr) Complete(described, *entry);
  const auto tags = TagsOf(file, known_, described.warnings);
  for (const TDbfIndex& index : tags.value_or(std::vector<TDbfIndex>()))
    AddDbfIndex(index, entry != nullptr && SameText(index.name, entry->primary_tag), short_names, described);
  return described;
}

const TDbcDatabase& TFoxProFolder::Database(const std::string& path) {
  auto& database = databases_[path];
  if (!database) database = std::make_unique<TDbcDatabase>(path, code_page_, &known_);
  return *database;
}

std::string TFoxProFolder::PathOf(const std::string& table) {
  if (opened_ == nullptr) return DbfPathOf(path_, table, known_);
  const TDbcTable* entry = opened_->TableNamed(table);
  if (entry == nullptr) RaiseError(Format(kNoTable, path_, table));
  return entry->path;
}

const TDbcTable* TFoxProFolder::Entry(const TDbfFile& file, const std::string& table, TStringList& warnings) {
  const TDbcDatabase* database = opened_;
  if (database == nullptr) {
    const std::string link = file.DatabaseLink();
    if (link.empty()) return nullptr;
    const std::string path = DbfResolvePath(fs::path(file.Path()).parent_path().string(), link, &known_);
    if (!IsThere(path)) {
      warnings.push_back(Format(kNoDatabase, path, file.Path()));
      return nullptr;
    }
    try {
      database = &Database(path);
    } catch (const EVelmora& error) {
      RaiseError(Format(kBelongs, error.what(), file.Path()));
    }
  }
  const TDbcTable* entry = opened_ != nullptr ? opened_->TableNamed(table) : database->TableIn(file.Path());
  if (entry == nullptr) RaiseError(Format(kNotListed, database->Path(), file.Path()));
  const auto fields =
      std::ranges::count_if(file.Fields(), [](const TDbfField& field) { return !field.Is(kDbfHidden); });
  if (std::ssize(entry->fields) != fields)
    RaiseError(Format(kOtherFields, database->Path(), entry->name, entry->fields.size(), fields, file.Path()));
  return entry;
}

}  // namespace

std::unique_ptr<TDbfStructures> OpenFoxProStructures(const std::string& path, const std::string& code_page) {
  return std::make_unique<TFoxProFolder>(path, code_page);
}

std::unique_ptr<TFileReader> OpenFoxProFolder(const std::string& folder, const std::string& code_page) {
  return std::make_unique<TFoxProFolder>(folder, code_page);
}

}  // namespace velmora
