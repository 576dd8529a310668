// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/mdb/MdbReader.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <map>
#include <optional>
#include <string_view>
#include <utility>

#include "formats/mdb/MdbDatabase.h"
#include "formats/mdb/MdbProperties.h"
#include "formats/mdb/MdbRelations.h"
#include "formats/mdb/MdbRows.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kUnknownTable[] = "There is no table %s in %s";
constexpr char kComplex[] = "Cannot read %s: table %s: column %s holds attachments or several values in one";
constexpr char kDefaultValue[] = "DefaultValue";
constexpr char kRelationsTable[] = "MSysRelationships";

constexpr std::uint32_t kPageOfId = 0x00FFFFFF;  // the part of an object's number that is its page
constexpr std::uint32_t kSystemFlags = 0x80000002;
constexpr std::int64_t kTableObject = 1;

// --- Structure

struct TTypeRow {
  EMdbType type;
  TDBType db_type;
  std::uint32_t flags;
  EFieldKind kind;
  std::uint16_t precision = 0;
};

constexpr std::int16_t kLongFraction = 7;  // digits behind the second, of a date and time in digits

constexpr TTypeRow kTypes[] = {
    {EMdbType::Bool, kDbTypeBool, kColumnIsFixedLength, EFieldKind::Boolean},
    {EMdbType::Byte, kDbTypeUI1, kColumnIsFixedLength, EFieldKind::Word},
    {EMdbType::Int, kDbTypeI2, kColumnIsFixedLength, EFieldKind::SmallInt},
    {EMdbType::LongInt, kDbTypeI4, kColumnIsFixedLength, EFieldKind::Integer},
    {EMdbType::Money, kDbTypeCy, kColumnIsFixedLength, EFieldKind::Currency},
    {EMdbType::Float, kDbTypeR4, kColumnIsFixedLength, EFieldKind::Float, 7},
    {EMdbType::Double, kDbTypeR8, kColumnIsFixedLength, EFieldKind::Float, 15},
    {EMdbType::DateTime, kDbTypeDate, kColumnIsFixedLength, EFieldKind::DateTime},
    {EMdbType::Binary, kDbTypeBytes, 0, EFieldKind::VarBytes},
    {EMdbType::Text, kDbTypeWStr, 0, EFieldKind::WideString},
    {EMdbType::Ole, kDbTypeBytes, kColumnIsLong, EFieldKind::Blob},
    {EMdbType::Memo, kDbTypeWStr, kColumnIsLong, EFieldKind::Memo},
    {EMdbType::RepId, kDbTypeGuid, kColumnIsFixedLength, EFieldKind::Guid},
    {EMdbType::Numeric, kDbTypeNumeric, kColumnIsFixedLength, EFieldKind::Bcd},
    {EMdbType::BigInt, kDbTypeI8, kColumnIsFixedLength, EFieldKind::LargeInt},
    {EMdbType::LongDateTime, kDbTypeDate, kColumnIsFixedLength, EFieldKind::DateTime},
};

// The rows of the schema rowsets for one table.
class TMdbStructure {
 public:
  TMdbStructure(const TMdbDatabase& database, const TMdbTableDef& table, const TMdbProperties& properties)
      : database_(database), table_(table), properties_(properties) {}

  TFileTable Take() {
    for (const TMdbColumn& column : table_.Columns()) PutColumn(column);
    for (const TMdbIndex& index : table_.Indexes())
      if (index.kind != kMdbRelation) PutIndex(index);
    TakeProperties();
    return std::move(result_);
  }

 private:
  void PutColumn(const TMdbColumn& column) {
    const TTypeRow& type = TypeOf(column);
    TOLEDBColumnRow row;
    row.TABLE_NAME = table_.Name();
    row.COLUMN_NAME = column.name;
    row.ORDINAL_POSITION = static_cast<std::uint32_t>(result_.columns.size() + 1);
    row.COLUMN_DEFAULT = Property(column, kDefaultValue);
    row.COLUMN_FLAGS = IsFixedText(column) ? kColumnIsFixedLength : type.flags;
    row.IS_NULLABLE = !IsAutoNumber(column) && Property(column, "Required") != "yes";
    row.DATA_TYPE = type.db_type;
    row.CHARACTER_MAXIMUM_LENGTH = LengthOf(column);
    const bool numeric = column.type == EMdbType::Numeric;
    row.NUMERIC_PRECISION = numeric ? column.precision : type.precision;
    row.NUMERIC_SCALE = numeric ? column.scale : 0;
    if (column.type == EMdbType::LongDateTime) row.NUMERIC_SCALE = kLongFraction;
    result_.fields.push_back({column.name, KindOf(column, type), row.CHARACTER_MAXIMUM_LENGTH});
    result_.is_autoincrement.push_back(column.Has(kMdbAutoNumber));
    result_.columns.push_back(std::move(row));
  }

  // A column of random GUIDs says by its flag alone what its default is.
  void TakeProperties() {
    result_.properties = properties_;
    for (const TMdbColumn& column : table_.Columns())
      if (IsAutoNumber(column) && !column.Has(kMdbAutoNumber))
        result_.properties[column.name].emplace(kDefaultValue, "GenGUID()");
  }

  const TTypeRow& TypeOf(const TMdbColumn& column) const {
    if (column.type == EMdbType::Complex) RaiseError(Format(kComplex, database_.Path(), table_.Name(), column.name));
    const auto* row = std::ranges::find(kTypes, column.type, &TTypeRow::type);
    if (row == std::end(kTypes))
      table_.Damaged(Format("column %s has an unknown type: %d", column.name, static_cast<int>(column.type)));
    return *row;
  }

  // One that counts, or one of random GUIDs, whose flag has another meaning in Jet 3.
  bool IsAutoNumber(const TMdbColumn& column) const {
    return column.Has(kMdbAutoNumber) || (column.Has(kMdbAutoGuid) && !database_.IsJet3());
  }
  static bool IsFixedText(const TMdbColumn& column) { return column.type == EMdbType::Text && column.Has(kMdbFixed); }

  static EFieldKind KindOf(const TMdbColumn& column, const TTypeRow& type) {
    if (IsFixedText(column)) return EFieldKind::FixedChar;
    if (column.type == EMdbType::LongInt && column.Has(kMdbAutoNumber)) return EFieldKind::AutoInc;
    return type.kind;
  }

  std::uint32_t LengthOf(const TMdbColumn& column) const {
    if (column.type == EMdbType::Binary) return column.size;
    if (column.type != EMdbType::Text) return 0;
    return database_.IsJet3() ? column.size : column.size / 2U;
  }

  std::optional<std::string> Property(const TMdbColumn& column, const std::string& name) const {
    const auto values = properties_.find(column.name);
    if (values == properties_.end()) return std::nullopt;
    const auto value = values->second.find(name);
    if (value == values->second.end() || value->second.empty()) return std::nullopt;
    return value->second;
  }

  void PutIndex(const TMdbIndex& index) {
    for (std::uint32_t ordinal = 0; const TMdbIndexPart& part : index.parts) {
      const auto column = std::ranges::find(table_.Columns(), part.column, &TMdbColumn::number);
      if (column == table_.Columns().end())
        table_.Damaged(Format("index %s has a column that is not there", index.name));
      result_.indexes.push_back({.TABLE_NAME = table_.Name(),
                                 .INDEX_NAME = index.name,
                                 .PRIMARY_KEY = index.kind == kMdbPrimaryKey,
                                 .UNIQUE = (index.flags & kMdbUnique) != 0,
                                 .ORDINAL_POSITION = ++ordinal,
                                 .COLUMN_NAME = column->name,
                                 .DESCENDING = part.descending,
                                 .NOT_NULL = (index.flags & kMdbNotNull) != 0});
    }
  }

  const TMdbDatabase& database_;
  const TMdbTableDef& table_;
  const TMdbProperties& properties_;
  TFileTable result_;
};

// --- The reader

class TMdbReader final : public TFileReader {
 public:
  explicit TMdbReader(const std::string& path) : database_(path) { ReadCatalog(); }

  std::vector<TOLEDBTableRow> Tables() override {
    std::vector<TOLEDBTableRow> rows;
    for (const auto& [name, entry] : tables_) rows.push_back({name, "TABLE"});
    return rows;
  }

  TFileTable Structure(const std::string& asked) override {
    const auto& [name, entry] = Entry(asked);
    const TMdbTableDef table(database_, name, entry.page);
    std::optional<TMdbProperties> properties = TMdbProperties();
    if (!entry.properties.empty())
      properties = ReadMdbProperties(entry.properties, [this](std::string_view text) { return database_.Text(text); });
    if (!properties) table.Damaged("its properties are broken");
    TFileTable found = TMdbStructure(database_, table, *properties).Take();
    found.references = ReferencesOf(name);
    return found;
  }

  TFileRows Rows(const std::string& asked, std::int64_t limit) override {
    const auto& [name, entry] = Entry(asked);
    const TMdbTableDef table(database_, name, entry.page);
    const TMdbValueReader values(database_, table);
    TFileRows found;
    const std::size_t wanted = limit == kAllRows ? found.rows.max_size() : static_cast<std::size_t>(limit);
    for (const std::uint32_t page : table.Pages()) {
      for (const TMdbStoredRow& row : table.RowsOn(page)) {
        if (found.rows.size() == wanted) return found;
        found.rows.push_back(values.Row(row));
      }
    }
    if (found.rows.size() < std::min<std::size_t>(table.RowCount(), wanted))
      table.Damaged(Format("%d rows were found instead of %d", found.rows.size(), table.RowCount()));
    return found;
  }

 private:
  struct TEntry {
    std::uint32_t page = 0;  // the first of its definition
    std::string properties;
  };

  // With the name as it stands in the file; names ignore case.
  const std::pair<const std::string, TEntry>& Entry(const std::string& name) const {
    auto entry = tables_.find(name);
    if (entry == tables_.end())
      entry = std::ranges::find_if(tables_, [&](const auto& each) { return SameText(each.first, name); });
    if (entry == tables_.end()) RaiseError(Format(kUnknownTable, name, database_.Path()));
    return *entry;
  }

  void ReadCatalog();
  std::vector<TFileReference> ReferencesOf(const std::string& table) {
    if (!relations_) relations_ = relations_page_ == 0 ? TMdbRelations() : ReadMdbRelations(database_, relations_page_);
    const auto found = relations_->find(LowerText(table));
    return found == relations_->end() ? std::vector<TFileReference>() : found->second;
  }

  TMdbDatabase database_;
  std::uint32_t relations_page_ = 0;  // the first of the definition of their table; 0: there is none
  std::optional<TMdbRelations> relations_;
  std::map<std::string, TEntry> tables_;
};

// The catalog is a table itself.
void TMdbReader::ReadCatalog() {
  const TMdbTableDef catalog(database_, "MSysObjects", kMdbCatalogPage);
  const TMdbValueReader values(database_, catalog);
  const std::size_t id = catalog.PlaceOf("Id");
  const std::size_t name = catalog.PlaceOf("Name");
  const std::size_t type = catalog.PlaceOf("Type");
  const std::size_t flags = catalog.PlaceOf("Flags");
  const std::size_t properties = catalog.PlaceOf("LvProp");
  for (const std::uint32_t page : catalog.Pages()) {
    for (const TMdbStoredRow& stored : catalog.RowsOn(page)) {
      const TMemDataset::TRow row = values.Row(stored);
      const std::uint32_t page_of = static_cast<std::uint32_t>(VarToInt(row[id])) & kPageOfId;
      if (VarToInt(row[type]) == kTableObject && VarToText(row[name]) == kRelationsTable) relations_page_ = page_of;
      const bool system = (static_cast<std::uint32_t>(VarToInt(row[flags])) & kSystemFlags) != 0;
      if (VarToInt(row[type]) != kTableObject || system) continue;
      tables_[VarToText(row[name])] = {page_of, VarToText(row[properties])};
    }
  }
}

}  // namespace

std::unique_ptr<TFileReader> OpenMdbFileHere(const std::string& path) { return std::make_unique<TMdbReader>(path); }

}  // namespace velmora
