#include "formats/mdb/MdbReader.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

#include "formats/mdb/MdbDatabase.h"
#include "formats/mdb/MdbProperties.h"
#include "formats/mdb/MdbText.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/LittleEndian.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kLibrary[] = "mdbtools";
constexpr char kUnknownTable[] = "There is no table %s in %s";

constexpr std::uint32_t kPageOfId = 0x00FFFFFF;  // the part of an object's number that is its page
constexpr std::uint32_t kSystemFlags = 0x80000002;
constexpr std::int64_t kTableObject = 1;

// --- Values

class TMdbValueReader {
 public:
  TMdbValueReader(const TMdbDatabase& database, const TMdbTableDef& table) : database_(database), table_(table) {}

  TMemDataset::TRow Row(const TMdbStoredRow& stored) const {
    TMemDataset::TRow row;
    for (std::size_t i = 0; i < stored.size(); ++i) row.push_back(Value(table_.Columns()[i], stored[i]));
    return row;
  }

 private:
  TVariant Value(const TMdbColumn& column, const std::optional<std::string>& stored) const {
    if (column.type == EMdbType::Bool) return stored.has_value();
    if (!stored) return {};
    std::optional<TVariant> value = KnownValue(column, *stored);
    if (!value) Broken(column, "is broken");
    return std::move(*value);
  }

  std::optional<TVariant> KnownValue(const TMdbColumn& column, const std::string& stored) const;

  template <class T>
  static std::optional<TVariant> Integer(const std::string& stored) {
    if (stored.size() != sizeof(T)) return std::nullopt;
    return static_cast<std::int64_t>(LittleAt<T>(stored.data()));
  }
  template <class T, class Bits>
  static std::optional<TVariant> Float(const std::string& stored) {
    if (stored.size() != sizeof(T)) return std::nullopt;
    return static_cast<double>(std::bit_cast<T>(LittleAt<Bits>(stored.data())));
  }
  static std::optional<TVariant> Moment(const std::string& stored) {
    const std::optional<TDateTime> moment = MomentOf(stored);
    if (!moment) return std::nullopt;
    return TMoment{*moment};
  }

  std::string LongValue(const TMdbColumn& column, const std::string& stored) const;
  std::string Chain(const TMdbColumn& column, std::uint32_t pointer, std::size_t length) const;
  [[noreturn]] void Broken(const TMdbColumn& column, const char* why) const {
    table_.Damaged(Format("a value of column %s %s", column.name, why));
  }

  const TMdbDatabase& database_;
  const TMdbTableDef& table_;
};

std::optional<TVariant> TMdbValueReader::KnownValue(const TMdbColumn& column, const std::string& stored) const {
  switch (column.type) {
    case EMdbType::Byte:
      return Integer<std::uint8_t>(stored);
    case EMdbType::Int:
      return Integer<std::int16_t>(stored);
    case EMdbType::LongInt:
      return Integer<std::int32_t>(stored);
    case EMdbType::Money:
      return TextOfMoney(stored);
    case EMdbType::Float:
      return Float<float, std::uint32_t>(stored);
    case EMdbType::Double:
      return Float<double, std::uint64_t>(stored);
    case EMdbType::DateTime:
      return Moment(stored);
    case EMdbType::Binary:
      return stored;
    case EMdbType::Text:
      return database_.Text(stored);
    case EMdbType::Ole:
      return LongValue(column, stored);
    case EMdbType::Memo:
      return database_.Text(LongValue(column, stored));
    case EMdbType::RepId:
      return TextOfGuid(stored);
    case EMdbType::Numeric:
      return TextOfNumeric(stored, column.scale);
    default:
      return std::nullopt;
  }
}

// In the row itself, in another row, or in a chain of rows, by the highest bits of the length.
std::string TMdbValueReader::LongValue(const TMdbColumn& column, const std::string& stored) const {
  constexpr std::size_t kHead = 12;
  constexpr std::uint32_t kInline = 0x80000000;
  constexpr std::uint32_t kOneRow = 0x40000000;
  if (stored.empty()) return {};
  if (stored.size() < kHead) Broken(column, "is broken");
  const auto head = LittleAt<std::uint32_t>(stored.data());
  const auto pointer = LittleAt<std::uint32_t>(stored.data() + sizeof head);
  const std::size_t length = head & ~(kInline | kOneRow);
  if (length > database_.FileSize()) Broken(column, "is longer than the file");
  std::string value;
  if ((head & kInline) != 0)
    value = stored.substr(kHead);
  else if ((head & kOneRow) != 0)
    value = database_.RowAt(pointer);
  else
    value = Chain(column, pointer, length);
  if (value.size() < length) Broken(column, "is cut short");
  value.resize(length);
  return value;
}

// Of each row all but its first bytes, which lead to the next.
std::string TMdbValueReader::Chain(const TMdbColumn& column, std::uint32_t pointer, std::size_t length) const {
  std::string value;
  std::set<std::uint32_t> passed;
  while (value.size() < length && pointer != 0) {
    if (!passed.insert(pointer).second) Broken(column, "runs in a circle");
    const std::string row = database_.RowAt(pointer);
    if (row.size() <= sizeof pointer) break;
    value.append(row, sizeof pointer);
    pointer = LittleAt<std::uint32_t>(row.data());
  }
  return value;
}

// --- Structure

struct TTypeRow {
  EMdbType type;
  TDBType db_type;
  std::uint32_t flags;
  EFieldKind kind;
  std::uint16_t precision = 0;
};

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
    return std::move(result_);
  }

 private:
  void PutColumn(const TMdbColumn& column) {
    const TTypeRow& type = TypeOf(column);
    TOLEDBColumnRow row;
    row.TABLE_NAME = table_.Name();
    row.COLUMN_NAME = column.name;
    row.ORDINAL_POSITION = static_cast<std::uint32_t>(result_.columns.size() + 1);
    row.COLUMN_DEFAULT = Property(column, "DefaultValue");
    row.COLUMN_FLAGS = IsFixedText(column) ? kColumnIsFixedLength : type.flags;
    row.IS_NULLABLE = !IsAutoNumber(column) && Property(column, "Required") != "yes";
    row.DATA_TYPE = type.db_type;
    row.CHARACTER_MAXIMUM_LENGTH = LengthOf(column);
    const bool numeric = column.type == EMdbType::Numeric;
    row.NUMERIC_PRECISION = numeric ? column.precision : type.precision;
    row.NUMERIC_SCALE = numeric ? column.scale : 0;
    result_.fields.push_back({column.name, KindOf(column, type), row.CHARACTER_MAXIMUM_LENGTH});
    result_.is_autoincrement.push_back(column.Has(kMdbAutoNumber));
    result_.columns.push_back(std::move(row));
  }

  const TTypeRow& TypeOf(const TMdbColumn& column) const {
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
                                 .COLUMN_NAME = column->name});
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
    return TMdbStructure(database_, table, *properties).Take();
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

  TMdbDatabase database_;
  std::map<std::string, TEntry> tables_;
};

// The catalog is a table itself.
void TMdbReader::ReadCatalog() {
  const TMdbTableDef catalog(database_, "MSysObjects", kMdbCatalogPage);
  const TMdbValueReader values(database_, catalog);
  const auto column = [&](std::string_view name) {
    const auto found = std::ranges::find(catalog.Columns(), name, &TMdbColumn::name);
    if (found == catalog.Columns().end()) catalog.Damaged(Format("it has no column %s", name));
    return static_cast<std::size_t>(found - catalog.Columns().begin());
  };
  const std::size_t id = column("Id");
  const std::size_t name = column("Name");
  const std::size_t type = column("Type");
  const std::size_t flags = column("Flags");
  const std::size_t properties = column("LvProp");
  for (const std::uint32_t page : catalog.Pages()) {
    for (const TMdbStoredRow& stored : catalog.RowsOn(page)) {
      const TMemDataset::TRow row = values.Row(stored);
      const bool system = (static_cast<std::uint32_t>(VarToInt(row[flags])) & kSystemFlags) != 0;
      if (VarToInt(row[type]) != kTableObject || system) continue;
      tables_[VarToText(row[name])] = {static_cast<std::uint32_t>(VarToInt(row[id])) & kPageOfId,
                                       VarToText(row[properties])};
    }
  }
}

}  // namespace

std::unique_ptr<TFileReader> OpenMdbFileHere(const std::string& path) { return std::make_unique<TMdbReader>(path); }

}  // namespace velmora
