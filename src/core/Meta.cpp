// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/Meta.h"

#include "core/CreationTexts.h"
#include "core/DBConn.h"
#include "core/Engines.h"
#include "util/Format.h"

namespace velmora {

namespace {

const std::string kNoText;

void Cut(std::string& text, std::size_t width) {
  if (text.size() > width) text = CutChars(text, width);
}

// The texts that `get` takes from each row, joined.
template <class Rows, class Get>
std::string Joined(const Rows& rows, std::string_view separator, Get get) {
  std::string text;
  bool first = true;
  for (const auto& row : rows) {
    if (!first) text += separator;
    first = false;
    text += get(row);
  }
  return text;
}

}  // namespace

void TTableRow::CutTexts() {
  Cut(name, kNameWidth);
  Cut(type, kWordWidth);
}

bool TColumnRow::SaysSame(const TColumnRow& other) const {
  return datatype == other.datatype && size == other.size && precision == other.precision && notnull == other.notnull &&
         autoinc == other.autoinc && default_ == other.default_;
}

void TColumnRow::CutTexts() {
  Cut(name, kNameWidth);
  Cut(default_, kNameWidth);
}

void TColumnRow::BeforePost() {
  if (!size && kIntegers.Holds(datatype)) precision.reset();
}

void TKeyRow::CutTexts() { Cut(name, kNameWidth); }

void TKeyFieldRow::CutTexts() {
  Cut(column, kNameWidth);
  Cut(order, kOrderWidth);
}

const std::string& TConstraintRow::Link() const {
  return constraint_type == kForeignKeyConstraint ? foreign_table : kNoText;
}

void TConstraintRow::CutTexts() {
  for (std::string* text : {&name, &foreign_db, &foreign_table, &def_value, &check_condition}) Cut(*text, kNameWidth);
  Cut(delete_rule, kWordWidth);
  Cut(update_rule, kWordWidth);
}

void TConstraintFieldRow::CutTexts() {
  Cut(local_column, kNameWidth);
  Cut(foreign_column, kNameWidth);
}

TMeta::TMeta(TDBConn* owner)
    : tTables("table"),
      tColumns("column", &tTables),
      tKeys("key", &tTables),
      tKeyFields("key column", &tKeys),
      tConstraints("constraint", &tTables),
      tConstraintFields("constraint column", &tConstraints),
      owner_(owner) {
  tTables.AddDetail(tColumns);
  tTables.AddDetail(tKeys);
  tTables.AddDetail(tConstraints);
  tKeys.AddDetail(tKeyFields);
  tConstraints.AddDetail(tConstraintFields);
}

// --- Lookups

bool TMeta::FindTable(std::string_view table) { return tTables.Locate(table); }

bool TMeta::FindColumn(std::string_view table, std::string_view column) {
  if (!FindTable(table)) return false;
  CheckFetched();
  return tColumns.Locate(column);
}

bool TMeta::FindKey(std::string_view table, std::string_view key) {
  if (!FindTable(table)) return false;
  CheckFetched();
  return tKeys.LocateNoCase(key);
}

bool TMeta::FindConstraint(std::string_view table, std::string_view constraint) {
  if (!FindTable(table)) return false;
  CheckFetched();
  return tConstraints.LocateNoCase(constraint);
}

void TMeta::GotoTable(std::string_view table) {
  if (!FindTable(table)) RaiseError(Format("Can't find table %s in metadata", table));
}

void TMeta::GotoColumn(std::string_view table, std::string_view column) {
  if (!FindColumn(table, column)) RaiseError(Format("Can't find field %s of table %s in metadata", column, table));
}

void TMeta::GotoKey(std::string_view table, std::string_view key) {
  if (!FindKey(table, key)) RaiseError(Format("Can't find key %s of table %s in metadata", key, table));
}

void TMeta::GotoConstraint(std::string_view table, std::string_view constraint) {
  if (!FindConstraint(table, constraint))
    RaiseError(Format("Can't find constraint %s of table %s in metadata", constraint, table));
}

// --- Lists

void TMeta::TableNames(TStringList& list) const {
  list.clear();
  list.reserve(tTables.TotalCount());
  for (const TTableRow& row : tTables.Rows()) list.push_back(row.name);
}

void TMeta::ColumnNames(std::string_view table, TStringList& list, bool in_quotes) {
  GotoTable(table);
  CheckFetched();
  list.clear();
  list.reserve(tColumns.Rows().size());
  for (const TColumnRow& row : tColumns.Rows()) list.push_back(in_quotes ? Owner().QuoteName(row.name) : row.name);
}

void TMeta::ReferencingTables(std::string_view table, TStringList& list) {
  list.clear();
  // Ids of tables rise in table order: rows are appended and never moved.
  for (int id : tConstraints.WithLink(std::string(table))) {
    const TTableRow* row = tTables.FindId(id);
    if (row != nullptr && row->name != table) list.push_back(row->name);
  }
}

void TMeta::PrimaryKeyFields(std::string_view table, std::string& text) {
  GotoTable(table);
  CheckFetched();
  std::string fields;
  for (const TKeyRow& row : tKeys.Rows()) {
    if (!row.primary) continue;
    fields = KeyFieldListOf(row.id, ";");
    break;
  }
  text = std::move(fields);
}

std::string TMeta::KeyFieldList(std::string_view separator) const {
  return KeyFieldListOf(tKeys.CurrentId(), separator);
}

std::string TMeta::KeyFieldListOf(int key_id, std::string_view separator) const {
  return Joined(tKeyFields.RowsOf(key_id), separator,
                [](const TKeyFieldRow& row) { return std::string_view(row.column); });
}

std::string TMeta::LocalColumnListOf(int constraint_id, std::string_view separator) const {
  return Joined(tConstraintFields.RowsOf(constraint_id), separator,
                [](const TConstraintFieldRow& row) { return std::string_view(row.local_column); });
}

std::string TMeta::ForeignColumnListOf(int constraint_id, std::string_view separator) const {
  return Joined(tConstraintFields.RowsOf(constraint_id), separator,
                [](const TConstraintFieldRow& row) { return std::string_view(row.foreign_column); });
}

TMetaColumn ColumnRecord(const TTableRow& table, const TColumnRow& row) {
  return {.table = table.name,
          .name = row.name,
          .datatype = row.datatype,
          .description = {},
          .size = row.size.value_or(0),
          .precision = row.precision.value_or(0),
          .notnull = row.notnull,
          .default_ = row.default_,
          .autoinc = row.autoinc};
}

TMetaKey TMeta::KeyRecord(const TTableRow& table, const TKeyRow& row) const {
  return {.table = table.name,
          .name = row.name,
          .primary = row.primary,
          .unique = row.unique,
          .fulltext = row.fulltext,
          .columns = KeyFieldListOf(row.id, ";")};
}

TMetaConstraint TMeta::ConstraintRecord(const TTableRow& table, const TConstraintRow& row) const {
  return {.table = table.name,
          .constraint_type = row.constraint_type,
          .name = row.name,
          .foreign_db = row.foreign_db,
          .foreign_table = row.foreign_table,
          .delete_rule = row.delete_rule,
          .update_rule = row.update_rule,
          .local_columns = LocalColumnListOf(row.id, ";"),
          .foreign_columns = ForeignColumnListOf(row.id, ";")};
}

// --- Maintenance

void TMeta::Clear() {
  tTables.Clear();
  tColumns.Clear();
  tKeys.Clear();
  tKeyFields.Clear();
  tConstraints.Clear();
  tConstraintFields.Clear();
}

void TMeta::CheckFetched() {
  if (!tTables.HasCurrent() || tTables.Current().fetched) return;
  if (owner_ == nullptr) RaiseError(Format("TMeta: Table %s not fetched!", tTables.Current().name));
  owner_->FetchIfNeeded();
}

void TMeta::InvalidateTable(std::string_view table) {
  GotoTable(table);
  EraseDetails();
  tTables.Amend().fetched = false;
}

void TMeta::MoveColumn(std::string_view table, std::string_view column, std::string_view after) {
  const auto place = [&](std::string_view name) {
    if (!tColumns.LocateExact(name) && !tColumns.Locate(name))
      RaiseError(Format("Can't find field %s of table %s in metadata", name, table));
    return tColumns.Mark();
  };
  GotoTable(table);
  std::optional<TMetaTable<TColumnRow>::TMark> anchor;
  if (!after.empty()) anchor = place(after);
  place(column);
  tColumns.MoveAfter(anchor);
}

void TMeta::CopyFrom(const TMeta& source) {
  tTables.CopyFrom(source.tTables);
  tColumns.CopyFrom(source.tColumns);
  tKeys.CopyFrom(source.tKeys);
  tKeyFields.CopyFrom(source.tKeyFields);
  tConstraints.CopyFrom(source.tConstraints);
  tConstraintFields.CopyFrom(source.tConstraintFields);
}

void TMeta::EraseDetails() {
  const int table = tTables.CurrentId();
  for (const TConstraintRow& row : tConstraints.RowsOf(table)) tConstraintFields.DeleteOf(row.id);
  tConstraints.DeleteOf(table);
  for (const TKeyRow& row : tKeys.RowsOf(table)) tKeyFields.DeleteOf(row.id);
  tKeys.DeleteOf(table);
  tColumns.DeleteOf(table);
}

// --- Texts

const std::string& TMeta::CachedTableDDL(const std::string& table) {
  GotoTable(table);
  if (tTables.Current().cached_ddl != kNoCachedDDL) return tTables.Current().cached_ddl;
  std::string text;
  const int engine = owner_ == nullptr ? kEngineNone : owner_->GetEngine();
  auto* texts = dynamic_cast<TCreationTexts*>(owner_);
  if (engine == kEngineMySQL && texts != nullptr)
    texts->ShowCreateTable(table, text);
  else if (engine == kEngineMySQLScript)
    BuildCreateTable(table, nullptr, text);
  else
    RaiseError("CachedTableDDL unsupported");
  GotoTable(table);
  return tTables.Amend().cached_ddl = std::move(text);
}

TDBConn& TMeta::Owner() const {
  if (owner_ == nullptr) RaiseError("TMeta: a store without an engine cannot render texts");
  return *owner_;
}

// Rendering may move cursors, so each of these places them again afterwards.

void TMeta::ColumnDefinition(const std::string& table, const std::string& column, std::string& text, TDBConn* engine) {
  GotoColumn(table, column);
  TDBConn& writer = engine == nullptr ? Owner() : *engine;
  TMetaColumn record;
  if (&writer == &Owner()) {
    Owner().FetchIfNeeded();  // no need of the bare type name, which the same engine is about to render
    record = ColumnRecord(tTables.Current(), tColumns.Current());
  } else {
    Owner().ReadColumn(record);
  }
  writer.ColumnDescription(record, true, text);
  GotoColumn(table, column);
}

void TMeta::KeyDefinition(const std::string& table, const std::string& key, std::string& text, TDBConn* engine) {
  GotoKey(table, key);
  TMetaKey record;
  Owner().ReadKey(record);
  (engine == nullptr ? Owner() : *engine).KeyDescription(record, true, text);
  GotoKey(table, key);
}

void TMeta::ConstraintDefinition(const std::string& table, const std::string& constraint, std::string& text,
                                 TDBConn* engine) {
  GotoConstraint(table, constraint);
  TMetaConstraint record;
  Owner().ReadConstraint(record);
  (engine == nullptr ? Owner() : *engine).ConstraintDescription(record, true, text);
  GotoConstraint(table, constraint);
}

}  // namespace velmora
