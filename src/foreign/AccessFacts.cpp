// SPDX-License-Identifier: GPL-3.0-or-later
#include "foreign/AccessFacts.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <system_error>
#include <utility>

#include "engines/oledb/DBConnAccess.h"
#include "foreign/AccessRules.h"
#include "formats/port/FileReader.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kUnknownType[] = "its type, number %d, is not known";
constexpr char kNoFiles[] = "The connection does not lead to an Access file";
constexpr char kComputed[] = "computed: %s";
constexpr char kNotEnforced[] = "relation %s to %s: Access does not enforce it, so it is no foreign key";

enum class ESize { None, Length, Digits, Fraction };

struct TTypeRow {
  std::uint16_t type;
  std::uint32_t flag;  // only columns with this flag; the first row that fits counts
  const char* native;
  EFamily family;
  ESize size = ESize::None;
};

constexpr TTypeRow kTypes[] = {
    {kDbTypeBool, 0, "Yes/No", EFamily::Boolean},
    {kDbTypeUI1, 0, "Byte", EFamily::UInt8},
    {kDbTypeI2, 0, "Integer", EFamily::Int16},
    {kDbTypeI4, 0, "Long Integer", EFamily::Int32},
    {kDbTypeI8, 0, "Large Number", EFamily::Int64},
    {kDbTypeCy, 0, "Currency", EFamily::Money},
    {kDbTypeR4, 0, "Single", EFamily::Single},
    {kDbTypeR8, 0, "Double", EFamily::Double},
    {kDbTypeNumeric, 0, "Decimal", EFamily::Decimal, ESize::Digits},
    {kDbTypeDate, 0, "Date/Time", EFamily::DateTime, ESize::Fraction},
    {kDbTypeWStr, kColumnIsLong, "Memo", EFamily::LongText},
    {kDbTypeWStr, kColumnIsFixedLength, "Char", EFamily::Char, ESize::Length},
    {kDbTypeWStr, 0, "Text", EFamily::VarChar, ESize::Length},
    {kDbTypeBytes, kColumnIsLong, "OLE Object", EFamily::LongBinary},
    {kDbTypeBytes, 0, "Binary", EFamily::VarBinary, ESize::Length},
    {kDbTypeGuid, 0, "Replication ID", EFamily::Guid},
};

void TakeSize(ESize size, const TOLEDBColumnRow& row, TForeignColumn& column) {
  if (size == ESize::Length) column.length = row.CHARACTER_MAXIMUM_LENGTH;
  if (size == ESize::Digits) {
    column.precision = row.NUMERIC_PRECISION;
    column.scale = row.NUMERIC_SCALE;
  }
  if (size == ESize::Fraction && row.NUMERIC_SCALE > 0) column.fraction = row.NUMERIC_SCALE;
}

TForeignColumn ColumnOf(const TOLEDBColumnRow& row, bool counts) {
  TForeignColumn column{.name = row.COLUMN_NAME, .nullable = row.IS_NULLABLE};
  const auto* type = std::ranges::find_if(kTypes, [&](const TTypeRow& each) {
    return each.type == row.DATA_TYPE && (row.COLUMN_FLAGS & each.flag) == each.flag;
  });
  if (type == std::end(kTypes)) {
    column.problem = Format(kUnknownType, row.DATA_TYPE);
    return column;
  }
  column.native = counts ? "AutoNumber" : type->native;
  column.family = type->family;
  column.counting = counts ? ECounting::Counts : ECounting::None;
  TakeSize(type->size, row, column);
  return column;
}

EReferenceRule RuleOf(const std::string& word) {
  if (word == "CASCADE") return EReferenceRule::Cascade;
  return word == "SET NULL" ? EReferenceRule::SetNull : EReferenceRule::NoAction;
}

EForeignKeyKind KindOf(const TOLEDBIndexRow& row) {
  if (row.PRIMARY_KEY) return EForeignKeyKind::Primary;
  return row.UNIQUE ? EForeignKeyKind::Unique : EForeignKeyKind::Plain;
}

class TAccessFacts final : public TFactReader {
 public:
  explicit TAccessFacts(TDBConnAccess& conn) : conn_(conn) {}

  TKnownFacts Known() const override {
    return {EFact::Nullability, EFact::Defaults,       EFact::Counting,    EFact::PrimaryKey,
            EFact::OtherKeys,   EFact::References,     EFact::Rules,       EFact::Checks,
            EFact::Order,       EFact::ColumnComments, EFact::TableComment};
  }
  TStringList Tables() override {
    TStringList names;
    names_.clear();
    for (TOLEDBTableRow& row : File().Tables()) names.push_back(std::move(row.TABLE_NAME));
    for (const std::string& name : names) names_.emplace(LowerText(name), name);
    return names;
  }
  bool Reachable() override {
    std::error_code ignored;
    return std::filesystem::exists(conn_.filename(), ignored);
  }

  TForeignTable Table(const std::string& name) override {
    const TFileTable file = File().Structure(name);
    TForeignTable table{.name = name};
    for (std::size_t i = 0; i < file.columns.size(); ++i)
      table.columns.push_back(ColumnOf(file.columns[i], file.is_autoincrement[i]));
    for (const auto& [owner, properties] : file.properties) AddProperties(owner, properties, table);
    for (const TOLEDBIndexRow& row : file.indexes) AddKeyPart(row, table);
    for (const TFileReference& reference : file.references) AddReference(reference, table);
    return table;
  }

 private:
  using TProperties = std::map<std::string, std::string>;

  TFileReader& File() {
    TFileReader* files = conn_.GetConnectionObject().Provider().Files();
    if (files == nullptr) RaiseError(kNoFiles);
    return *files;
  }

  static std::string Property(const TProperties& properties, const char* name) {
    const auto found = properties.find(name);
    return found == properties.end() ? std::string() : found->second;
  }

  static void AddProperties(const std::string& owner, const TProperties& properties, TForeignTable& table) {
    const auto column = std::ranges::find(table.columns, owner, &TForeignColumn::name);
    const bool of_column = column != table.columns.end();
    if (!of_column && !owner.empty()) return;
    if (const std::string rule = Property(properties, "ValidationRule"); !Trim(rule).empty())
      table.checks.push_back({.column = owner, .text = PlainCondition(rule, of_column)});
    const std::string description = Property(properties, "Description");
    if (!of_column) {
      table.comment = description;
      return;
    }
    column->comment = description;
    if (const std::string value = Property(properties, "DefaultValue"); !value.empty()) column->default_text = value;
    const std::string expression = Property(properties, "Expression");
    column->computed = !expression.empty();
    if (column->computed) column->remark = Format(kComputed, expression);
  }

  // The rows of an index follow one another.
  static void AddKeyPart(const TOLEDBIndexRow& row, TForeignTable& table) {
    if (row.ORDINAL_POSITION == 1) table.keys.push_back({.name = row.INDEX_NAME, .kind = KindOf(row)});
    table.keys.back().parts.push_back({row.COLUMN_NAME, row.DESCENDING});
    if (!row.PRIMARY_KEY && !row.NOT_NULL) return;
    const auto column = std::ranges::find(table.columns, row.COLUMN_NAME, &TForeignColumn::name);
    if (column != table.columns.end()) column->nullable = false;
  }

  void AddReference(const TFileReference& reference, TForeignTable& table) {
    if (!reference.enforced) {
      table.remarks.push_back(Format(kNotEnforced, reference.name, reference.parent));
      return;
    }
    table.references.push_back({.name = reference.name,
                                .columns = reference.columns,
                                .table = NameIn(reference.parent),
                                .references = reference.parent_columns,
                                .on_delete = RuleOf(reference.on_delete),
                                .on_update = RuleOf(reference.on_update)});
  }

  // As the list of tables spells it.
  std::string NameIn(const std::string& table) {
    if (names_.empty()) Tables();
    const auto found = names_.find(LowerText(table));
    return found == names_.end() ? table : found->second;
  }

  TDBConnAccess& conn_;
  std::map<std::string, std::string> names_;  // of tables, by the name in lower case
};

}  // namespace

std::unique_ptr<TFactReader> MakeAccessFacts(TDBConn& conn) {
  auto* engine = dynamic_cast<TDBConnAccess*>(&conn);
  return engine == nullptr ? nullptr : std::make_unique<TAccessFacts>(*engine);
}

}  // namespace velmora
