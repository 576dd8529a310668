// SPDX-License-Identifier: GPL-3.0-or-later
#include "foreign/OracleFacts.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "engines/server/DBConnOracle.h"
#include "foreign/Names.h"
#include "foreign/Sequences.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

// --- Questions to the dictionary

constexpr char kProbe[] = "select 1 from dual";

// Without what only holds the rows of something else: overflows, nested tables, parts of indexes, views.
constexpr char kTables[] =
    "select t.table_name, c.comments as remarks, t.temporary from user_tables t "
    "left join user_tab_comments c on c.table_name = t.table_name "
    "where t.dropped = 'NO' and t.nested = 'NO' and t.secondary = 'N' and (t.iot_type is null or t.iot_type = 'IOT') "
    "and not exists (select 1 from user_mviews m where m.mview_name = t.table_name) order by t.table_name";

constexpr char kColumns[] =
    "select c.table_name, c.column_name as name, c.data_type, c.data_type_owner as type_owner, c.data_length as bytes, "
    "c.char_length as letters, c.char_used as unit, c.data_precision as digits, c.data_scale as decimals, c.nullable, "
    "c.virtual_column as is_virtual, m.comments as remarks, c.data_default as default_text "
    "from user_tab_cols c left join user_col_comments m on m.table_name = c.table_name "
    "and m.column_name = c.column_name where c.hidden_column = 'NO' order by c.table_name, c.column_id";

constexpr char kConstraints[] =
    "select c.table_name, c.constraint_name as name, c.constraint_type as kind, c.status, k.column_name as part "
    "from user_constraints c join user_cons_columns k on k.owner = c.owner and k.constraint_name = c.constraint_name "
    "where c.constraint_type in ('P', 'U') "
    "order by c.table_name, c.constraint_type, c.constraint_name, k.position";

// A column that an index has the other way round is kept as an expression.
constexpr char kIndexes[] =
    "select i.table_name, i.index_name as name, i.index_type, i.uniqueness, k.column_name as part, "
    "k.descend as direction, e.column_expression as expression "
    "from user_indexes i join user_ind_columns k on k.index_name = i.index_name "
    "left join user_ind_expressions e on e.index_name = k.index_name and e.column_position = k.column_position "
    "where i.table_owner = user order by i.table_name, i.index_name, k.column_position";

// A parent of another user's has a name that none of the tables has.
constexpr char kReferences[] =
    "select c.table_name, c.constraint_name as name, "
    "case when c.r_owner = user then p.table_name else c.r_owner || '.' || p.table_name end as parent, "
    "c.delete_rule, c.status, k.column_name as part, r.column_name as parent_part "
    "from user_constraints c join all_constraints p on p.owner = c.r_owner "
    "and p.constraint_name = c.r_constraint_name "
    "join user_cons_columns k on k.owner = c.owner and k.constraint_name = c.constraint_name "
    "join all_cons_columns r on r.owner = p.owner and r.constraint_name = p.constraint_name "
    "and r.position = k.position where c.constraint_type = 'R' "
    "order by c.table_name, c.constraint_name, k.position";

constexpr char kChecks[] =
    "select c.table_name, c.constraint_name as name, c.generated, c.status, c.search_condition as condition "
    "from user_constraints c where c.constraint_type = 'C' order by c.table_name, c.constraint_name";

constexpr char kTriggers[] =
    "select t.table_name, t.trigger_body as body from user_triggers t "
    "where t.status = 'ENABLED' and t.base_object_type = 'TABLE' and t.trigger_type = 'BEFORE EACH ROW' "
    "and t.triggering_event like '%INSERT%' and t.table_owner = user order by t.table_name, t.trigger_name";

constexpr TCatalogQuery kQueries[] = {
    {"tables", kTables},         {"columns", kColumns}, {"constraints", kConstraints}, {"indexes", kIndexes},
    {"references", kReferences}, {"checks", kChecks},   {"triggers", kTriggers}};

// --- What is told

constexpr char kUnknownType[] = "its type, %s, is not known";
constexpr char kOutside[] = "a %s leads to what is not in the table";
constexpr char kComputed[] = "computed: %s";
constexpr char kExpression[] = "it is over an expression: %s";
constexpr char kDomain[] = "MySQL has no such index: %s";

// --- Types

// Which numbers of a column count.
enum class ESize { None, Letters, Bytes, Digits, Fraction };

struct TTypeRow {
  std::string_view type;  // without what stands in brackets
  EFamily family;
  ESize size = ESize::None;
};

constexpr TTypeRow kTypes[] = {
    {"NUMBER", EFamily::Decimal, ESize::Digits},
    {"FLOAT", EFamily::Double},
    {"BINARY_FLOAT", EFamily::Single},
    {"BINARY_DOUBLE", EFamily::Double},
    {"BOOLEAN", EFamily::Boolean},
    {"CHAR", EFamily::Char, ESize::Letters},
    {"NCHAR", EFamily::Char, ESize::Letters},
    {"VARCHAR2", EFamily::VarChar, ESize::Letters},
    {"NVARCHAR2", EFamily::VarChar, ESize::Letters},
    {"VARCHAR", EFamily::VarChar, ESize::Letters},
    {"CLOB", EFamily::LongText},
    {"NCLOB", EFamily::LongText},
    {"LONG", EFamily::LongText},
    {"XMLTYPE", EFamily::LongText},
    {"JSON", EFamily::LongText},
    {"RAW", EFamily::VarBinary, ESize::Bytes},
    {"LONG RAW", EFamily::LongBinary},
    {"BLOB", EFamily::LongBinary},
    {"DATE", EFamily::DateTime},
    {"TIMESTAMP", EFamily::DateTime, ESize::Fraction},
    {"TIMESTAMP WITH TIME ZONE", EFamily::DateTimeZone, ESize::Fraction},
    {"TIMESTAMP WITH LOCAL TIME ZONE", EFamily::DateTimeZone, ESize::Fraction},
    {"INTERVAL YEAR TO MONTH", EFamily::Interval},
    {"INTERVAL DAY TO SECOND", EFamily::Interval},
    {"ROWID", EFamily::RowId},
    {"SDO_GEOMETRY", EFamily::Shape},
};

constexpr std::string_view kOutsideTypes[] = {"BFILE", "UROWID"};

// "TIMESTAMP(6) WITH TIME ZONE" without what stands in brackets.
std::string PlainType(const std::string& type) {
  std::string plain;
  bool inside = false;
  for (const char c : type) {
    inside = inside || c == '(';
    if (!inside) plain += c;
    inside = inside && c != ')';
  }
  return plain;
}

// NUMBER has any digits; NUMBER(*,s), as which whole numbers are kept, has 38.
void TakeDigits(const TCatalogRow& row, TForeignColumn& column) {
  constexpr int kMostDigits = 38;
  column.precision = row.Int("digits");
  column.scale = row.Int("decimals");
  if (!column.precision && !column.scale) column.family = EFamily::Number;
  if (!column.precision && column.scale) column.precision = kMostDigits;
}

void TakeType(const TCatalogRow& row, TForeignColumn& column) {
  const std::string plain = PlainType(column.native);
  const auto* known = std::ranges::find(kTypes, plain, &TTypeRow::type);
  if (std::ranges::find(kOutsideTypes, plain) != std::end(kOutsideTypes)) {
    column.problem = Format(kOutside, plain);
  } else if (known == std::end(kTypes) && row.Has("type_owner")) {
    column.family = EFamily::Variant;  // an object
  } else if (known == std::end(kTypes)) {
    column.problem = Format(kUnknownType, column.native);
  } else {
    column.family = known->family;
    if (known->size == ESize::Letters) column.length = row.Number("letters");
    if (known->size == ESize::Letters) column.in_bytes = row.Text("unit") == "B";
    if (known->size == ESize::Bytes) column.length = row.Number("bytes");
    if (known->size == ESize::Digits) TakeDigits(row, column);
    if (known->size == ESize::Fraction) column.fraction = row.Int("decimals");
  }
}

// Identities of all rows are as long as each other.
void TakeGuid(TForeignColumn& column) {
  constexpr int kGuidBytes = 16;
  const bool made = column.default_text && SameText(Trim(*column.default_text), "sys_guid()");
  if (made && column.family == EFamily::VarBinary && column.length == kGuidBytes) column.family = EFamily::Binary;
}

// The column of an expression that is nothing but a name in quotes; empty for any other.
std::string ColumnIn(const std::string& expression) {
  const std::string text = Trim(expression);
  const bool quoted = text.size() > 2 && text.front() == '"' && text.find('"', 1) == text.size() - 1;
  return quoted ? text.substr(1, text.size() - 2) : std::string();
}

// The column of a condition that says no more than that there is a value; empty for any other.
std::string FilledColumn(const std::string& condition) {
  constexpr std::string_view kFilled = " is not null";
  const std::string text = Trim(condition);
  if (text.size() <= kFilled.size() || !SameText(text.substr(text.size() - kFilled.size()), kFilled)) return {};
  const std::string name = Trim(text.substr(0, text.size() - kFilled.size()));
  if (std::string quoted = ColumnIn(name); !quoted.empty()) return quoted;
  return name.find_first_of(" ()'\"") == std::string::npos ? name : std::string();
}

bool SameColumns(const TForeignKey& a, const TForeignKey& b) {
  return std::ranges::equal(a.parts, b.parts, {}, &TForeignKeyPart::column, &TForeignKeyPart::column);
}

bool IsOff(const TCatalogRow& row) { return row.Text("status") == "DISABLED"; }

class TOracleFacts final : public TCatalogFacts {
 public:
  explicit TOracleFacts(TDBConn& conn) : TCatalogFacts(conn, kProbe) {}

 private:
  void ReadCatalog() override {
    ForEach(kTables, [this](const TCatalogRow& row) {
      TForeignTable table{.name = row.Text("table_name"), .comment = row.Text("remarks")};
      if (row.Text("temporary") == "Y") table.problem = kTemporary;
      AddTable(std::move(table));
    });
    Each(kColumns, &TOracleFacts::TakeColumn);
    Each(kConstraints, &TOracleFacts::TakeConstraintPart);
    Each(kIndexes, &TOracleFacts::TakeIndexPart);
    Each(kReferences, &TOracleFacts::TakeReferencePart);
    Each(kChecks, &TOracleFacts::TakeCheck);
    Each(kTriggers, &TOracleFacts::TakeTrigger);
    ForEachTable(DropServingIndexes);
  }

  // Rows of tables that are compared.
  void Each(const char* sql, void (TOracleFacts::*take)(const TCatalogRow& row, TForeignTable& table)) {
    ForEach(sql, [&](const TCatalogRow& row) {
      if (TForeignTable* table = Find(row.Text("table_name"))) (this->*take)(row, *table);
    });
  }

  void TakeColumn(const TCatalogRow& row, TForeignTable& table) {
    TForeignColumn column{.name = row.Text("name"), .native = row.Text("data_type"), .comment = row.Text("remarks")};
    TakeType(row, column);
    column.nullable = row.Text("nullable") != "N";
    const std::string text = Trim(row.Text("default_text"));
    column.computed = row.Text("is_virtual") == "YES";
    if (column.computed)
      column.remark = Format(kComputed, text);
    else if (!text.empty())
      column.default_text = text;
    // Identities have such a default, too.
    if (column.default_text && IsNextValue(text)) column.counting = ECounting::Counts;
    TakeGuid(column);
    table.columns.push_back(std::move(column));
  }

  void TakeConstraintPart(const TCatalogRow& row, TForeignTable& table) {
    const std::string name = row.Text("name");
    const bool primary = row.Text("kind") == "P";
    TForeignKey& key =
        KeyOf(table, name, {.name = name, .kind = primary ? EForeignKeyKind::Primary : EForeignKeyKind::Unique});
    if (IsOff(row)) key.problem = kDisabled;
    key.parts.push_back({row.Text("part")});
  }

  void TakeIndexPart(const TCatalogRow& row, TForeignTable& table) {
    constexpr std::string_view kDomainIndex = "DOMAIN";
    const std::string type = row.Text("index_type");
    const bool unique = row.Text("uniqueness") == "UNIQUE";
    TForeignKey& key =
        KeyOf(table, "index " + row.Text("name"),
              {.name = row.Text("name"), .kind = unique ? EForeignKeyKind::Unique : EForeignKeyKind::Plain});
    if (type.find(kDomainIndex) != std::string::npos) key.problem = Format(kDomain, LowerText(type));
    std::string column = row.Text("part");
    if (row.Has("expression")) {
      column = ColumnIn(row.Text("expression"));
      if (column.empty()) key.problem = Format(kExpression, Trim(row.Text("expression")));
    }
    key.parts.push_back({column, row.Text("direction") == "DESC"});
  }

  // Those that primary and unique keys stand on.
  static void DropServingIndexes(TForeignTable& table) {
    std::vector<TForeignKey> keys;
    for (TForeignKey& key : table.keys)
      if (!key.problem.empty() || std::ranges::none_of(keys, [&](const TForeignKey& other) {
            return other.kind != EForeignKeyKind::Plain && SameColumns(other, key);
          }))
        keys.push_back(std::move(key));
    table.keys = std::move(keys);
  }

  void TakeReferencePart(const TCatalogRow& row, TForeignTable& table) {
    const std::string name = row.Text("name");
    if (IsOff(row)) return LeaveOutDisabled(name, table);
    TForeignReference& reference =
        ReferenceOf(table, name,
                    {.name = name, .table = row.Text("parent"), .on_delete = ReferenceRuleOf(row.Text("delete_rule"))});
    reference.columns.push_back(row.Text("part"));
    reference.references.push_back(row.Text("parent_part"));
  }

  // Every NOT NULL is kept as a check as well.
  void TakeCheck(const TCatalogRow& row, TForeignTable& table) {
    const std::string name = row.Text("name");
    const std::string condition = Trim(row.Text("condition"));
    const std::string filled = FilledColumn(condition);
    const auto column = FindNamed(table.columns, filled, &TForeignColumn::name);
    if (column != table.columns.end()) {
      if (!IsOff(row)) column->nullable = false;
      return;
    }
    if (IsOff(row)) return LeaveOutDisabled(name, table);
    const bool own = row.Text("generated") == "USER NAME";
    table.checks.push_back({.name = own ? name : std::string(), .text = condition});
  }

  void TakeTrigger(const TCatalogRow& row, TForeignTable& table) { TakeCounting(row.Text("body"), table); }
};

}  // namespace

std::unique_ptr<TFactReader> MakeOracleFacts(TDBConn& conn) {
  if (dynamic_cast<TDBConnOracle*>(&conn) == nullptr) return nullptr;
  return std::make_unique<TOracleFacts>(conn);
}

std::span<const TCatalogQuery> OracleQueries() { return kQueries; }

}  // namespace velmora
