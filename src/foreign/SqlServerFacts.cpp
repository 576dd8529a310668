// SPDX-License-Identifier: GPL-3.0-or-later
#include "foreign/SqlServerFacts.h"

#include <algorithm>
#include <map>
#include <set>
#include <string_view>
#include <utility>

#include "engines/oledb/DBConnSQLServer.h"
#include "foreign/Sequences.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

// --- Questions to the catalog. Tables go by their numbers.

constexpr char kProbe[] = "select 1";
constexpr char kPlainSchema[] = "dbo";

constexpr char kTables[] =
    "select t.object_id as id, s.name as schema_name, t.name as name, cast(p.value as nvarchar(4000)) as comment "
    "from sys.tables t join sys.schemas s on s.schema_id = t.schema_id "
    "left join sys.extended_properties p on p.class = 1 and p.major_id = t.object_id and p.minor_id = 0 "
    "and p.name = 'MS_Description' where t.is_ms_shipped = 0 order by s.name, t.name";

// The type of the system that an alias stands for has the same two numbers. A default of old is an object of its own;
// the texts of others are shown to logins with the right to view definitions alone.
constexpr char kColumns[] =
    "select c.object_id as id, c.name as name, coalesce(b.name, y.name) as type, y.name as declared, "
    "c.max_length as bytes, c.precision as digits, c.scale as scale, c.is_nullable as is_nullable, "
    "c.is_identity as is_identity, coalesce(d.definition, object_definition(c.default_object_id), "
    "case when c.default_object_id <> 0 then 'its text is not shown to this login' end) as default_text, m.definition "
    "as computed, "
    "cast(p.value as nvarchar(4000)) as comment "
    "from sys.columns c join sys.tables t on t.object_id = c.object_id "
    "join sys.types y on y.user_type_id = c.user_type_id "
    "left join sys.types b on b.user_type_id = c.system_type_id "
    "left join sys.default_constraints d on d.object_id = c.default_object_id "
    "left join sys.computed_columns m on m.object_id = c.object_id and m.column_id = c.column_id "
    "left join sys.extended_properties p on p.class = 1 and p.major_id = c.object_id and p.minor_id = c.column_id "
    "and p.name = 'MS_Description' order by c.object_id, c.column_id";

constexpr char kKeys[] =
    "select i.object_id as id, i.index_id as index_id, i.name as name, i.type as type, i.type_desc as type_text, "
    "i.is_unique as is_unique, i.is_primary_key as is_primary, i.is_disabled as is_disabled, "
    "i.filter_definition as filter, c.name as part, k.is_descending_key as is_descending, "
    "k.is_included_column as is_included, k.key_ordinal as place "
    "from sys.indexes i join sys.tables t on t.object_id = i.object_id "
    "join sys.index_columns k on k.object_id = i.object_id and k.index_id = i.index_id "
    "join sys.columns c on c.object_id = k.object_id and c.column_id = k.column_id "
    "where i.type > 0 and i.is_hypothetical = 0 "
    "order by i.object_id, i.index_id, k.is_included_column, k.key_ordinal, k.index_column_id";

constexpr char kReferences[] =
    "select f.parent_object_id as id, f.object_id as reference_id, f.name as name, "
    "f.referenced_object_id as parent_id, f.delete_referential_action_desc as delete_rule, "
    "f.update_referential_action_desc as update_rule, f.is_disabled as is_disabled, c.name as part, "
    "r.name as parent_part "
    "from sys.foreign_keys f join sys.foreign_key_columns k on k.constraint_object_id = f.object_id "
    "join sys.columns c on c.object_id = k.parent_object_id and c.column_id = k.parent_column_id "
    "join sys.columns r on r.object_id = k.referenced_object_id and r.column_id = k.referenced_column_id "
    "order by f.parent_object_id, f.object_id, k.constraint_column_id";

constexpr char kChecks[] =
    "select k.parent_object_id as id, k.name as name, k.definition as condition, k.is_disabled as is_disabled "
    "from sys.check_constraints k order by k.parent_object_id, k.object_id";

constexpr TCatalogQuery kQueries[] = {
    {"tables", kTables}, {"columns", kColumns}, {"keys", kKeys}, {"references", kReferences}, {"checks", kChecks}};

// --- What is told

constexpr char kUnknownType[] = "its type, %s, is not known";
constexpr char kDeclared[] = "declared as %s";
constexpr char kComputed[] = "computed: %s";
constexpr char kOtherIndex[] = "MySQL has no such index: %s";
constexpr char kFilter[] = "it holds only rows with %s";
constexpr char kIncluded[] = "included columns %s";

// --- Types

// Which numbers of a column count.
enum class ESize { None, Letters, WideLetters, Bytes, Digits, Fraction };

struct TTypeRow {
  std::string_view type;
  EFamily family;
  ESize size = ESize::None;
};

constexpr TTypeRow kTypes[] = {
    {"tinyint", EFamily::UInt8},
    {"smallint", EFamily::Int16},
    {"int", EFamily::Int32},
    {"bigint", EFamily::Int64},
    {"bit", EFamily::Boolean},
    {"decimal", EFamily::Decimal, ESize::Digits},
    {"numeric", EFamily::Decimal, ESize::Digits},
    {"money", EFamily::Money},
    {"smallmoney", EFamily::SmallMoney},
    {"float", EFamily::Double},
    {"real", EFamily::Single},
    {"date", EFamily::Date},
    {"time", EFamily::Time, ESize::Fraction},
    {"datetime", EFamily::DateTime},
    {"smalldatetime", EFamily::DateTime},
    {"datetime2", EFamily::DateTime, ESize::Fraction},
    {"datetimeoffset", EFamily::DateTimeZone, ESize::Fraction},
    {"char", EFamily::Char, ESize::Letters},
    {"varchar", EFamily::VarChar, ESize::Letters},
    {"nchar", EFamily::Char, ESize::WideLetters},
    {"nvarchar", EFamily::VarChar, ESize::WideLetters},
    {"text", EFamily::LongText},
    {"ntext", EFamily::LongText},
    {"xml", EFamily::LongText},
    {"json", EFamily::LongText},
    {"binary", EFamily::Binary, ESize::Bytes},
    {"varbinary", EFamily::VarBinary, ESize::Bytes},
    {"image", EFamily::LongBinary},
    {"uniqueidentifier", EFamily::Guid},
    {"timestamp", EFamily::RowVersion},
    {"sql_variant", EFamily::Variant},
    {"hierarchyid", EFamily::Variant},
    {"geometry", EFamily::Shape},
    {"geography", EFamily::Shape},
};

constexpr int kDateTimeFraction = 3;  // a datetime counts three hundredths of a second

// Of a (max) the length is below 0.
void TakeLength(const TCatalogRow& row, ESize size, TForeignColumn& column) {
  constexpr std::int64_t kWide = 2;  // bytes of a letter
  const std::int64_t bytes = row.Number("bytes");
  if (bytes < 0) {
    column.native += "(max)";
    column.family = size == ESize::Bytes ? EFamily::LongBinary : EFamily::LongText;
    return;
  }
  column.length = size == ESize::WideLetters ? bytes / kWide : bytes;
  column.in_bytes = size == ESize::Letters;
}

void TakeType(const TCatalogRow& row, TForeignColumn& column) {
  const auto* known = std::ranges::find(kTypes, column.native, &TTypeRow::type);
  if (known == std::end(kTypes)) {
    column.problem = Format(kUnknownType, column.native);
    return;
  }
  column.family = known->family;
  switch (known->size) {
    case ESize::None:
      if (column.native == "datetime") column.fraction = kDateTimeFraction;
      return;
    case ESize::Digits:
      column.precision = row.Int("digits");
      column.scale = row.Int("scale");
      return;
    case ESize::Fraction:
      column.fraction = row.Int("scale");
      return;
    default:
      TakeLength(row, known->size, column);
  }
}

// Of indexes: those that are trees over columns, whether the rows are kept in them or not; and hashes in memory.
bool IsPlainIndex(std::int64_t type) {
  constexpr std::int64_t kClustered = 1, kNonclustered = 2, kHash = 7;
  return type == kClustered || type == kNonclustered || type == kHash;
}

class TSqlServerFacts final : public TCatalogFacts {
 public:
  explicit TSqlServerFacts(TDBConn& conn) : TCatalogFacts(conn, kProbe) {}

  std::string PlainName(const std::string& table) const override {
    const auto found = plain_names_.find(table);
    return found == plain_names_.end() ? table : found->second;
  }

 private:
  void ReadCatalog() override {
    names_.clear();
    plain_names_.clear();
    ForEach(kTables, [this](const TCatalogRow& row) { TakeTable(row); });
    Each(kColumns, &TSqlServerFacts::TakeColumn);
    Each(kKeys, &TSqlServerFacts::TakeKeyPart);
    Each(kReferences, &TSqlServerFacts::TakeReferencePart);
    Each(kChecks, &TSqlServerFacts::TakeCheck);
  }

  // Rows of tables that are compared.
  void Each(const char* sql, void (TSqlServerFacts::*take)(const TCatalogRow& row, TForeignTable& table)) {
    ForEach(sql, [&](const TCatalogRow& row) {
      if (TForeignTable* table = Find(NameOf(row.Text("id")))) (this->*take)(row, *table);
    });
  }

  std::string NameOf(const std::string& id) const {
    const auto found = names_.find(id);
    return found == names_.end() ? std::string() : found->second;
  }

  void TakeTable(const TCatalogRow& row) {
    const std::string schema = row.Text("schema_name");
    const std::string own = row.Text("name");
    const bool plain = SameText(schema, kPlainSchema);
    std::string name = plain ? own : schema + "." + own;
    if (Find(name) != nullptr) name = "[" + schema + "].[" + own + "]";
    names_.emplace(row.Text("id"), name);
    plain_names_.emplace(name, plain ? own : schema + "_" + own);
    AddTable({.name = name, .comment = row.Text("comment")});
  }

  void TakeColumn(const TCatalogRow& row, TForeignTable& table) {
    TForeignColumn column{.name = row.Text("name"), .native = row.Text("type"), .comment = row.Text("comment")};
    if (row.Text("declared") != column.native) column.remark = Format(kDeclared, row.Text("declared"));
    TakeType(row, column);
    column.nullable = row.Yes("is_nullable");
    if (row.Has("default_text")) column.default_text = row.Text("default_text");
    if (row.Yes("is_identity") || (column.default_text && IsNextValue(*column.default_text)))
      column.counting = ECounting::Counts;
    column.computed = row.Has("computed");
    if (column.computed) column.remark = Format(kComputed, row.Text("computed"));
    table.columns.push_back(std::move(column));
  }

  void TakeKeyPart(const TCatalogRow& row, TForeignTable& table) {
    TForeignKey first{.name = row.Text("name")};
    if (row.Yes("is_primary"))
      first.kind = EForeignKeyKind::Primary;
    else if (row.Yes("is_unique"))
      first.kind = EForeignKeyKind::Unique;
    if (row.Yes("is_disabled")) first.problem = kDisabled;
    if (row.Has("filter")) first.problem = Format(kFilter, row.Text("filter"));
    if (!IsPlainIndex(row.Number("type"))) first.problem = Format(kOtherIndex, LowerText(row.Text("type_text")));
    TForeignKey& key = KeyOf(table, row.Text("index_id"), first);
    if (row.Yes("is_included"))
      key.remark = key.remark.empty() ? Format(kIncluded, row.Text("part")) : key.remark + ", " + row.Text("part");
    else if (row.Number("place") > 0)  // others only say in which partition a row is
      key.parts.push_back({row.Text("part"), row.Yes("is_descending")});
  }

  void TakeReferencePart(const TCatalogRow& row, TForeignTable& table) {
    if (row.Yes("is_disabled")) return LeaveOutDisabled(row.Text("name"), table);
    TForeignReference& reference = ReferenceOf(table, row.Text("reference_id"),
                                               {.name = row.Text("name"),
                                                .table = NameOf(row.Text("parent_id")),
                                                .on_delete = ReferenceRuleOf(row.Text("delete_rule")),
                                                .on_update = ReferenceRuleOf(row.Text("update_rule"))});
    reference.columns.push_back(row.Text("part"));
    reference.references.push_back(row.Text("parent_part"));
  }

  void TakeCheck(const TCatalogRow& row, TForeignTable& table) {
    if (row.Yes("is_disabled")) return LeaveOutDisabled(row.Text("name"), table);
    table.checks.push_back({.name = row.Text("name"), .text = row.Text("condition")});
  }

  std::map<std::string, std::string> names_;        // by number
  std::map<std::string, std::string> plain_names_;  // by name
};

}  // namespace

std::unique_ptr<TFactReader> MakeSqlServerFacts(TDBConn& conn) {
  if (dynamic_cast<TDBConnSQLServer*>(&conn) == nullptr) return nullptr;
  return std::make_unique<TSqlServerFacts>(conn);
}

std::span<const TCatalogQuery> SqlServerQueries() { return kQueries; }

}  // namespace velmora
