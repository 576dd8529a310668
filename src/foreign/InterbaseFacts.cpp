// SPDX-License-Identifier: GPL-3.0-or-later
#include "foreign/InterbaseFacts.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "engines/server/DBConnInterbase.h"
#include "foreign/CatalogFacts.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

// --- Questions to the system tables

constexpr char kProbe[] = "select 1 from rdb$database";

// What not every version has.
constexpr char kExtras[] =
    "select rdb$field_name as column_name from rdb$relation_fields where rdb$relation_name in ('RDB$RELATION_FIELDS', "
    "'RDB$INDICES', 'RDB$RELATIONS') and rdb$field_name in ('RDB$IDENTITY_TYPE', 'RDB$CONDITION_SOURCE', "
    "'RDB$RELATION_TYPE')";

constexpr char kTables[] =
    "select rdb$relation_name as table_name, rdb$description as remarks, rdb$external_file as external_file, "
    "%s as relation_type "
    "from rdb$relations where (rdb$system_flag is null or rdb$system_flag <> 1) and rdb$view_blr is null order by 1";

constexpr char kColumns[] =
    "select r.rdb$relation_name as table_name, r.rdb$field_name as column_name, f.rdb$field_type as type_number, "
    "f.rdb$field_sub_type as sub_type, f.rdb$field_length as bytes, f.rdb$field_precision as digits, "
    "f.rdb$field_scale as decimals, f.rdb$character_length as letters, f.rdb$character_set_id as charset, "
    "f.rdb$dimensions as dimensions, r.rdb$null_flag as not_null, f.rdb$null_flag as domain_not_null, "
    "r.rdb$default_source as default_text, f.rdb$default_source as domain_default, r.rdb$description as remarks, "
    "f.rdb$computed_source as computed_text, f.rdb$validation_source as domain_check, %s as identity_type "
    "from rdb$relation_fields r join rdb$fields f on f.rdb$field_name = r.rdb$field_source "
    "where (r.rdb$system_flag is null or r.rdb$system_flag <> 1) order by 1, r.rdb$field_position, 2";

constexpr char kKeys[] =
    "select i.rdb$relation_name as table_name, i.rdb$index_name as id, c.rdb$constraint_type as key_type, "
    "c.rdb$constraint_name as key_name, i.rdb$unique_flag as is_unique, i.rdb$index_type as is_descending, "
    "i.rdb$index_inactive as is_inactive, i.rdb$expression_source as expression_text, %s as condition_text, "
    "s.rdb$field_name as part "
    "from rdb$indices i left join rdb$index_segments s on s.rdb$index_name = i.rdb$index_name "
    "left join rdb$relation_constraints c on c.rdb$index_name = i.rdb$index_name "
    "where (i.rdb$system_flag is null or i.rdb$system_flag <> 1) order by 1, i.rdb$index_id, 2, s.rdb$field_position";

constexpr char kReferences[] =
    "select c.rdb$relation_name as table_name, c.rdb$constraint_name as key_name, s.rdb$field_name as part, "
    "p.rdb$relation_name as parent, t.rdb$field_name as parent_part, r.rdb$delete_rule as delete_rule, "
    "r.rdb$update_rule as update_rule "
    "from rdb$ref_constraints r join rdb$relation_constraints c on c.rdb$constraint_name = r.rdb$constraint_name "
    "join rdb$relation_constraints p on p.rdb$constraint_name = r.rdb$const_name_uq "
    "join rdb$index_segments s on s.rdb$index_name = c.rdb$index_name "
    "join rdb$index_segments t on t.rdb$index_name = p.rdb$index_name and t.rdb$field_position = s.rdb$field_position "
    "order by 1, 2, s.rdb$field_position";

// A check is kept as triggers, one of them before inserts.
constexpr char kChecks[] =
    "select c.rdb$relation_name as table_name, c.rdb$constraint_name as check_name, t.rdb$trigger_source as "
    "source_text "
    "from rdb$relation_constraints c join rdb$check_constraints k on k.rdb$constraint_name = c.rdb$constraint_name "
    "join rdb$triggers t on t.rdb$trigger_name = k.rdb$trigger_name "
    "where c.rdb$constraint_type = 'CHECK' and t.rdb$trigger_type = 1 order by 1, 2";

constexpr char kTriggers[] =
    "select rdb$relation_name as table_name, rdb$trigger_type as trigger_type, rdb$trigger_source as source_text "
    "from rdb$triggers where (rdb$system_flag is null or rdb$system_flag = 0) and (rdb$trigger_inactive is null or "
    "rdb$trigger_inactive = 0) "
    "and rdb$relation_name is not null order by 1, rdb$trigger_sequence";

constexpr char kIdentity[] = "RDB$IDENTITY_TYPE";
constexpr char kCondition[] = "RDB$CONDITION_SOURCE";
constexpr char kRelationType[] = "RDB$RELATION_TYPE";

// --- What is told

constexpr char kArray[] = "arrays have no form in MySQL";
constexpr char kUnknownType[] = "its type, number %d, is not known";
constexpr char kComputed[] = "computed: %s";
constexpr char kExpression[] = "it is over an expression: %s";
constexpr char kFilter[] = "it holds only rows with %s";
constexpr char kExternal[] = "rows are kept in the file %s";

// --- Types

// Which numbers of the system tables count.
enum class ESize { None, Letters, Fraction };

struct TTypeRow {
  int type;
  const char* native;
  EFamily family;
  ESize size = ESize::None;
  int digits = 0;  // of a number with decimals that states none
};

constexpr int kFraction = 4;  // digits of a second: the server counts its ten thousandths

constexpr TTypeRow kTypes[] = {
    {7, "smallint", EFamily::Int16, ESize::None, 4},
    {8, "integer", EFamily::Int32, ESize::None, 9},
    {10, "float", EFamily::Single},
    {11, "double precision", EFamily::Double, ESize::None, 15},
    {12, "date", EFamily::Date},
    {13, "time", EFamily::Time, ESize::Fraction},
    {14, "char", EFamily::Char, ESize::Letters},
    {16, "bigint", EFamily::Int64, ESize::None, 18},
    {17, "boolean", EFamily::Boolean},
    {23, "boolean", EFamily::Boolean},
    {24, "decfloat(16)", EFamily::DecFloat},
    {25, "decfloat(34)", EFamily::DecFloat},
    {26, "int128", EFamily::Int128, ESize::None, 38},
    {27, "double precision", EFamily::Double, ESize::None, 15},
    {28, "time with time zone", EFamily::Time, ESize::Fraction},
    {29, "timestamp with time zone", EFamily::DateTimeZone, ESize::Fraction},
    {35, "timestamp", EFamily::DateTime, ESize::Fraction},
    {37, "varchar", EFamily::VarChar, ESize::Letters},
    {40, "cstring", EFamily::VarChar, ESize::Letters},
    {261, "blob", EFamily::LongBinary},
};

constexpr int kBlob = 261;
constexpr int kTextBlob = 1;  // sub type
constexpr int kTimeWithZone = 28;
constexpr int kNumeric = 1;  // sub types of numbers
constexpr int kDecimal = 2;
constexpr int kOctets = 1;  // the character set of texts that are bytes

void TakeLetters(const TCatalogRow& row, TForeignColumn& column) {
  column.length = row.Number(row.Has("LETTERS") ? "LETTERS" : "BYTES");
  if (row.Number("CHARSET") != kOctets) return;
  column.length = row.Number("BYTES");
  column.family = column.family == EFamily::Char ? EFamily::Binary : EFamily::VarBinary;
}

// Numbers with decimals are kept as whole ones, and in old databases as doubles.
void TakeDigits(const TCatalogRow& row, int digits, TForeignColumn& column) {
  const int sub_type = row.Int("SUB_TYPE").value_or(0);
  const int scale = row.Int("DECIMALS").value_or(0);
  if (digits == 0 || (scale == 0 && sub_type != kNumeric && sub_type != kDecimal)) return;
  column.native = sub_type == kDecimal ? "decimal" : "numeric";
  column.family = EFamily::Decimal;
  column.precision = row.Number("DIGITS") > 0 ? row.Int("DIGITS") : digits;
  column.scale = -scale;
}

void TakeType(const TCatalogRow& row, TForeignColumn& column) {
  const int type = row.Int("TYPE_NUMBER").value_or(0);
  const auto* known = std::ranges::find(kTypes, type, &TTypeRow::type);
  if (known == std::end(kTypes)) {
    column.native = Format("%d", type);
    column.problem = Format(kUnknownType, type);
    return;
  }
  column.native = known->native;
  column.family = known->family;
  if (known->size == ESize::Letters) TakeLetters(row, column);
  if (known->size == ESize::Fraction) column.fraction = kFraction;
  TakeDigits(row, known->digits, column);
  if (type == kBlob && row.Number("SUB_TYPE") == kTextBlob) {
    column.native = "blob sub_type text";
    column.family = EFamily::LongText;
  }
  if (type == kTimeWithZone) column.remark = "the offset from UTC is lost";
  if (row.Number("DIMENSIONS") > 0) column.problem = kArray;
}

// --- Conditions

// Without the word in front, as in "check (A > 0)".
std::string ConditionOf(std::string_view source) {
  constexpr std::string_view kCheck = "check";
  source = TrimView(source);
  if (SameText(source.substr(0, kCheck.size()), kCheck)) source.remove_prefix(kCheck.size());
  return Trim(std::string(source));
}

bool InWord(char c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == '$';
}

// A domain's condition, whose VALUE is the column.
std::string ForColumn(const std::string& condition, const std::string& column) {
  std::string made;
  for (std::size_t at = 0; at < condition.size();) {
    const std::size_t start = at;
    if (condition[at] == '\'' || condition[at] == '"')
      at = std::min(condition.find(condition[at], at + 1), condition.size() - 1) + 1;
    else if (InWord(condition[at]))
      while (at < condition.size() && InWord(condition[at])) ++at;
    else
      ++at;
    const std::string piece = condition.substr(start, at - start);
    made += SameText(piece, "value") ? "\"" + column + "\"" : piece;
  }
  return made;
}

// Whether a trigger of this type runs before inserts: bit 0 says after, then come three kinds of statements of two
// bits.
bool RunsBeforeInsert(std::int64_t type) {
  constexpr std::int64_t kKind = 3;
  constexpr std::int64_t kInsert = 1;
  const std::int64_t bits = type + 1;
  return bits % 2 == 0 &&
         (((bits >> 1) & kKind) == kInsert || ((bits >> 3) & kKind) == kInsert || ((bits >> 5) & kKind) == kInsert);
}

// By Firebird's number or InterBase's word for the kind of table.
bool IsTemporary(const std::string& type) { return type == "4" || type == "5" || type.starts_with("GLOBAL_TEMPORARY"); }

// Names that the server has made say nothing.
std::string NameOf(const std::string& name) {
  return name.starts_with("RDB$") || name.starts_with("INTEG_") ? std::string() : name;
}

class TInterbaseFacts final : public TCatalogFacts {
 public:
  explicit TInterbaseFacts(TDBConn& conn) : TCatalogFacts(conn, kProbe) {}

 private:
  void ReadCatalog() override {
    bool identities = false, conditions = false, relation_types = false;
    ForEach(kExtras, [&](const TCatalogRow& row) {
      identities = identities || row.Text("COLUMN_NAME") == kIdentity;
      conditions = conditions || row.Text("COLUMN_NAME") == kCondition;
      relation_types = relation_types || row.Text("COLUMN_NAME") == kRelationType;
    });
    const auto column = [](bool there, const char* name) { return there ? std::string(name) : "null"; };
    ForEach(Format(kTables, column(relation_types, "rdb$relation_type")),
            [this](const TCatalogRow& row) { TakeTable(row); });
    Each(Format(kColumns, column(identities, "r.rdb$identity_type")), &TInterbaseFacts::TakeColumn);
    Each(Format(kKeys, column(conditions, "i.rdb$condition_source")), &TInterbaseFacts::TakeKeyPart);
    Each(kReferences, &TInterbaseFacts::TakeReferencePart);
    Each(kChecks, &TInterbaseFacts::TakeCheck);
    Each(kTriggers, &TInterbaseFacts::TakeTrigger);
  }

  // Rows of tables that are compared.
  void Each(const std::string& sql, void (TInterbaseFacts::*take)(const TCatalogRow& row, TForeignTable& table)) {
    ForEach(sql, [&](const TCatalogRow& row) {
      if (TForeignTable* table = Find(row.Text("TABLE_NAME"))) (this->*take)(row, *table);
    });
  }

  void TakeTable(const TCatalogRow& row) {
    TForeignTable table{.name = row.Text("TABLE_NAME"), .comment = row.Text("REMARKS")};
    if (row.Has("EXTERNAL_FILE")) table.remarks.push_back(Format(kExternal, row.Text("EXTERNAL_FILE")));
    if (IsTemporary(row.Text("RELATION_TYPE"))) table.problem = kTemporary;
    AddTable(std::move(table));
  }

  void TakeColumn(const TCatalogRow& row, TForeignTable& table) {
    TForeignColumn column{.name = row.Text("COLUMN_NAME"), .comment = row.Text("REMARKS")};
    TakeType(row, column);
    column.nullable = !row.Yes("NOT_NULL") && !row.Yes("DOMAIN_NOT_NULL");
    for (const char* source : {"DOMAIN_DEFAULT", "DEFAULT_TEXT"})
      if (row.Has(source)) column.default_text = DefaultOf(row.Text(source));
    if (row.Has("IDENTITY_TYPE")) column.counting = ECounting::Counts;
    column.computed = row.Has("COMPUTED_TEXT");
    if (column.computed) column.remark = Format(kComputed, Trim(row.Text("COMPUTED_TEXT")));
    if (row.Has("DOMAIN_CHECK"))
      table.checks.push_back(
          {.column = column.name, .text = ForColumn(ConditionOf(row.Text("DOMAIN_CHECK")), column.name)});
    table.columns.push_back(std::move(column));
  }

  // Without the word in front, which may end in a line.
  static std::string DefaultOf(const std::string& source) {
    constexpr std::string_view kDefault = "default";
    std::string_view text = TrimView(source);
    if (SameText(text.substr(0, kDefault.size()), kDefault)) text.remove_prefix(kDefault.size());
    return std::string(TrimView(text));
  }

  void TakeKeyPart(const TCatalogRow& row, TForeignTable& table) {
    const std::string type = row.Text("KEY_TYPE");
    if (type == "FOREIGN KEY") return;  // MySQL makes such a key by itself
    TForeignKey first{.name = NameOf(row.Text(row.Has("KEY_NAME") ? "KEY_NAME" : "ID"))};
    if (type == "PRIMARY KEY")
      first.kind = EForeignKeyKind::Primary;
    else if (row.Yes("IS_UNIQUE"))
      first.kind = EForeignKeyKind::Unique;
    if (row.Yes("IS_INACTIVE")) first.problem = kDisabled;
    if (row.Has("CONDITION_TEXT")) first.problem = Format(kFilter, Trim(row.Text("CONDITION_TEXT")));
    if (row.Has("EXPRESSION_TEXT")) first.problem = Format(kExpression, Trim(row.Text("EXPRESSION_TEXT")));
    TForeignKey& key = KeyOf(table, row.Text("ID"), first);
    if (row.Has("PART")) key.parts.push_back({row.Text("PART"), row.Yes("IS_DESCENDING")});
  }

  void TakeReferencePart(const TCatalogRow& row, TForeignTable& table) {
    TForeignReference& reference = ReferenceOf(table, row.Text("KEY_NAME"),
                                               {.name = NameOf(row.Text("KEY_NAME")),
                                                .table = row.Text("PARENT"),
                                                .on_delete = ReferenceRuleOf(row.Text("DELETE_RULE")),
                                                .on_update = ReferenceRuleOf(row.Text("UPDATE_RULE"))});
    reference.columns.push_back(row.Text("PART"));
    reference.references.push_back(row.Text("PARENT_PART"));
  }

  void TakeCheck(const TCatalogRow& row, TForeignTable& table) {
    table.checks.push_back({.name = NameOf(row.Text("CHECK_NAME")), .text = ConditionOf(row.Text("SOURCE_TEXT"))});
  }

  void TakeTrigger(const TCatalogRow& row, TForeignTable& table) {
    if (RunsBeforeInsert(row.Number("TRIGGER_TYPE"))) TakeCounting(row.Text("SOURCE_TEXT"), table);
  }
};

}  // namespace

std::unique_ptr<TFactReader> MakeInterbaseFacts(TDBConn& conn) {
  if (dynamic_cast<TDBConnInterbase*>(&conn) == nullptr) return nullptr;
  return std::make_unique<TInterbaseFacts>(conn);
}

}  // namespace velmora
