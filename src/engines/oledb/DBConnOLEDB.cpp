// SPDX-License-Identifier: GPL-3.0-or-later

// The common engine but for the reading of structure, which is in OLEDBStructure.cpp.

#include "engines/oledb/DBConnOLEDB.h"

#include <algorithm>
#include <utility>

#include "core/Meta.h"
#include "engines/oledb/OLEDBTypes.h"
#include "util/Dates.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kNotImplemented[] = "NOT IMPLEMENTED";
constexpr char kNoColumns[] = "To be created, table must have at least one column!";
constexpr char kUnsupportedField[] = "TDBConnOLEDB.FieldValParam: Unsupported field type for field ";
constexpr char kNoChunks[] = "Table %s can not be opened in chunks!";
constexpr char kNoKey[] = "%s.OpenTableDataChunk: Table %s does not have a primary key!";
constexpr char kWideKey[] = "%s.OpenTableDataChunk: Table %s has a multiple columns primary key!";

std::string HexLiteral(std::string_view bytes) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text = "0x";
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    text += kDigits[byte >> 4];
    text += kDigits[byte & 15];
  }
  return text;
}

// What is left of a definition in the dialect of MySQL. Deliberate: this looks for texts, not for words, and a default
// in quotes goes together with everything up to the last quote, a further quoted word included; one without quotes
// stays.
std::string CleanDefinition(const std::string& definition) {
  std::string text = StrReplace(definition, " first", "");
  text = StrReplace(text, " auto_increment", " identity");
  const std::size_t start = text.find("default '");
  if (start != std::string::npos) text.erase(start, text.rfind('\'') + 1 - start);
  return text;
}

std::string WithCommas(std::string columns) {
  std::ranges::replace(columns, ';', ',');
  return columns;
}

}  // namespace

TDBConnOLEDB::TDBConnOLEDB(TOLEDBProviderMaker maker) : maker_(std::move(maker)), data_source_(maker_) {
  data_source_.BeforeConnect = [this] { ApplyParams(); };
}

TDBConnOLEDB::~TDBConnOLEDB() = default;

// --- Connection

void TDBConnOLEDB::Reconnect() {
  data_source_.Close();
  ApplyParams();
  data_source_.Open();
}

TOLEDBDataSource& TDBConnOLEDB::GetConnectionObject() { return data_source_; }

void TDBConnOLEDB::GetDisplayName(std::string& text) { text = data_source_.DBName(); }

// --- Words of the dialect, rows, statements

void TDBConnOLEDB::DateTimeLiteral(TDateTime value, std::string& text) {
  const TDateParts parts = DecodeDateTime(value);
  const std::string date = Format("%04d%02d%02d", parts.year, parts.month, parts.day);
  const std::string time = Format("%02d:%02d:%02d", parts.hour, parts.minute, parts.second);
  text = time == "00:00:00" ? "'" + date + "'" : "'" + date + " " + time + "'";
}

void TDBConnOLEDB::AutoIncKeyword(std::string& text) { text = "identity"; }

std::unique_ptr<TDataset> TDBConnOLEDB::OpenQuery(const std::string& sql) { return OpenRows(sql); }

std::unique_ptr<TOLEDBDataSet> TDBConnOLEDB::OpenRows(const std::string& sql) {
  auto rows = std::make_unique<TOLEDBDataSet>();
  rows->SetOLEDBDataSource(data_source_);
  rows->SetFlags(rfLocate | rfScroll | rfCanScrollBackwards | rfCanFetchBackwards);
  rows->SetCommandText(sql);
  rows->Open();
  return rows;
}

std::int64_t TDBConnOLEDB::ExecSQL(const std::string& sql) {
  TDBConn::ExecSQL(sql);
  return data_source_.Execute(sql);
}

void TDBConnOLEDB::QuoteOpen(std::string& text) { text = "["; }

void TDBConnOLEDB::QuoteClose(std::string& text) { text = "]"; }

void TDBConnOLEDB::GetColumnTypes(TColumnTypeInfoArray& table) { table = OLEDBColumnTypes(); }

// As everywhere but for bytes, which are hexadecimal, for dates, none of which is taken for an empty one, and for
// GUIDs, which have no literal.
void TDBConnOLEDB::FieldValParam(const TField& field, std::string& text) {
  if (VarIsNull(field.value)) return TDBConn::FieldValParam(field, text);
  switch (field.def.kind) {
    case EFieldKind::Date:
    case EFieldKind::DateTime:
    case EFieldKind::TimeStamp:
      return DateTimeLiteral(VarToFloat(field.value), text);
    case EFieldKind::Bytes:
    case EFieldKind::VarBytes:
    case EFieldKind::Blob:
    case EFieldKind::OraBlob:
    case EFieldKind::OraClob:
      text = HexLiteral(VarToText(field.value));
      return;
    case EFieldKind::Guid:
    case EFieldKind::Other:
      RaiseError(kUnsupportedField + field.def.name);
    default:
      TDBConn::FieldValParam(field, text);
  }
}

bool TDBConnOLEDB::HasKeyOfOneColumn(const std::string& table) {
  std::string key;
  meta().PrimaryKeyFields(table, key);
  return !key.empty() && key.find(';') == std::string::npos;
}

std::string TDBConnOLEDB::ChunkKey(const std::string& table, const char* engine_class) {
  if (!SupportsChunks(table)) RaiseError(Format(kNoChunks, table));
  std::string key;
  meta().PrimaryKeyFields(table, key);
  if (key.empty()) RaiseError(Format(kNoKey, engine_class, table));
  if (key.find(';') != std::string::npos) RaiseError(Format(kWideKey, engine_class, table));
  return key;
}

// Deliberate: the column stands unquoted.
std::string TDBConnOLEDB::ChunkAfter(const std::string& table, const std::string& key, std::int64_t first,
                                     std::int64_t count) {
  return Format("select top %d * from %s where %s not in (select top %d %s from %s)", count, QuoteName(table), key,
                first - 1, key, QuoteName(table));
}

TStringList TDBConnOLEDB::TakeWarnings() {
  TStringList warnings = std::exchange(warnings_, {});
  for (std::string& warning : data_source_.TakeWarnings()) warnings.push_back(std::move(warning));
  return warnings;
}

// --- Names

void TDBConnOLEDB::ListDatabases(TStringList& list) {
  list.clear();
  Connect();
  for (std::string& catalog : data_source_.Session().GetCatalogs()) list.push_back(std::move(catalog));
}

void TDBConnOLEDB::ListTables(TStringList& list) {
  list.clear();
  if (!GetConnected()) Connect();
  for (TOLEDBTableRow& row : data_source_.Session().GetTables())
    if (row.TABLE_TYPE == "TABLE") list.push_back(std::move(row.TABLE_NAME));
}

// --- Transactions, copies

void TDBConnOLEDB::StartTransaction() { data_source_.Session().StartTransaction(kReadCommitted); }

void TDBConnOLEDB::Commit() { data_source_.Session().Commit(false, kSyncCommit); }

void TDBConnOLEDB::Rollback() { RaiseError(kNotImplemented); }

bool TDBConnOLEDB::InTransaction() { RaiseError(kNotImplemented); }

// --- Structure to texts and back

// Deliberate: a default gets a pair of brackets, whatever it holds already.
void TDBConnOLEDB::ColumnDescription(const TMetaColumn& column, bool detailed, std::string& text) {
  std::string whole;
  TDBConn::ColumnDescription(column, detailed, whole);
  if (detailed) {
    if (column.notnull) whole += " not null";
    if (column.autoinc) whole += " identity";
    if (!no_defaults && !column.default_.empty()) whole += Format(" default (%s)", column.default_);
  }
  text = std::move(whole);
}

void TDBConnOLEDB::ConstraintDescription(const TMetaConstraint& constraint, bool detailed, std::string& text) {
  if (constraint.constraint_type != kForeignKeyConstraint)
    text.clear();
  else if (!detailed)
    text = constraint.name;
  else
    text =
        Format("constraint %s foreign key(%s) references %s(%s)", constraint.name, WithCommas(constraint.local_columns),
               constraint.foreign_table, WithCommas(constraint.foreign_columns));
}

// --- Changing the structure: the store first, then the server

void TDBConnOLEDB::CreateTable(const std::string& table, const TStringList& definitions) {
  if (definitions.empty()) RaiseError(kNoColumns);
  ExecSQL(Format("create table %s(\r\n%s\r\n)", QuoteName(table), DefinitionLines(definitions)));
  RefreshTableList();
}

void TDBConnOLEDB::DropTable(const std::string& table) {
  TDBConn::DropTable(table);
  ExecSQL(Format("drop table %s", QuoteName(table)));
}

void TDBConnOLEDB::TruncateTable(const std::string& table) { ExecSQL(Format("truncate table %s", QuoteName(table))); }

void TDBConnOLEDB::AddColumn(const std::string& table, const std::string& definition) {
  TDBConn::AddColumn(table, definition);
  ExecSQL(Format("alter table %s add %s", QuoteName(table), CleanDefinition(definition)));
}

// Deliberate: the column stands unquoted.
void TDBConnOLEDB::DropColumn(const std::string& table, const std::string& column) {
  TDBConn::DropColumn(table, column);
  ExecSQL(Format("alter table %s drop column %s", QuoteName(table), column));
}

void TDBConnOLEDB::ModifyColumn(const std::string& table, const std::string& old_name, const std::string& new_name,
                                const std::string& definition) {
  TDBConn::ModifyColumn(table, old_name, new_name, definition);
  if (old_name != new_name) RenameColumn(table, old_name, new_name);
  ExecSQL(
      Format("alter table %s ALTER COLUMN %s %s", QuoteName(table), QuoteName(new_name), CleanDefinition(definition)));
}

void TDBConnOLEDB::DropKey(const std::string& table, const std::string& key) {
  TDBConn::DropKey(table, key);
  ExecSQL(Format("drop index %s.%s", QuoteName(table), QuoteName(key)));
}

void TDBConnOLEDB::DropConstraint(const std::string& table, const std::string& constraint) {
  TDBConn::DropConstraint(table, constraint);
  ExecSQL(Format("alter table %s drop constraint %s", QuoteName(table), QuoteName(constraint)));
}

}  // namespace velmora
