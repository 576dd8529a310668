// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/file/DBConnSMI.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#include "core/Meta.h"
#include "engines/file/FilesOfFolder.h"
#include "formats/text/TextFile.h"
#include "util/Aside.h"
#include "util/Errors.h"
#include "util/Files.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {
namespace {

constexpr char kUnhandledType[] = "Unhandled data type";
constexpr char kUnsupportedField[] = "TDBConnSMI.FetchTableStructure: Unsupported field type for field %s";
constexpr std::int64_t kUsualTextSize = 255;
constexpr std::int32_t kMoneyDecimals = 2;

// By the type of an imported column.
constexpr std::array kFieldKinds = {EFieldKind::String, EFieldKind::Integer, EFieldKind::Float,   EFieldKind::DateTime,
                                    EFieldKind::Date,   EFieldKind::Time,    EFieldKind::Boolean, EFieldKind::Blob};

TFieldDef FieldOf(const TSMColumn& column) {
  if (column.type < 0 || column.type >= std::ssize(kFieldKinds)) RaiseError(kUnhandledType);
  const bool text = column.type == kSMString;
  return {column.name, kFieldKinds[static_cast<std::size_t>(column.type)],
          !text             ? 0
          : column.size > 0 ? column.size
                            : kUsualTextSize};
}

struct TKindType {
  EFieldKind kind;
  TNeutralType datatype;
};
constexpr TKindType kNeutralTypes[] = {
    {EFieldKind::String, ntVarChar},    {EFieldKind::SmallInt, ntI2},
    {EFieldKind::Integer, ntI4},        {EFieldKind::Word, ntUI2},
    {EFieldKind::Boolean, ntBool},      {EFieldKind::Float, ntDouble},
    {EFieldKind::Currency, ntDecimal},  {EFieldKind::Bcd, ntDecimal},
    {EFieldKind::Date, ntDate},         {EFieldKind::Time, ntTime},
    {EFieldKind::DateTime, ntDateTime}, {EFieldKind::Bytes, ntBytes},
    {EFieldKind::Blob, ntBytes},        {EFieldKind::Graphic, ntBytes},
    {EFieldKind::VarBytes, ntVarBytes}, {EFieldKind::AutoInc, ntI4},
    {EFieldKind::Memo, ntText},         {EFieldKind::FmtMemo, ntText},
    {EFieldKind::FixedChar, ntChar},    {EFieldKind::WideString, ntNVarChar},
    {EFieldKind::LargeInt, ntI8},       {EFieldKind::TimeStamp, ntTimestamp},
};

TNeutralType NeutralTypeOf(const TFieldDef& field) {
  const auto* row = std::ranges::find(kNeutralTypes, field.kind, &TKindType::kind);
  if (row == std::end(kNeutralTypes)) RaiseError(Format(kUnsupportedField, field.name));
  return row->datatype;
}

bool IsBlob(EFieldKind kind) {
  return kind == EFieldKind::Blob || kind == EFieldKind::Graphic || kind == EFieldKind::Memo ||
         kind == EFieldKind::FmtMemo;
}

bool HasMoneyDecimals(EFieldKind kind) { return kind == EFieldKind::Currency || kind == EFieldKind::Bcd; }

std::int64_t LargestBlob(TDataset& rows, std::size_t field) {
  std::size_t largest = 0;
  for (rows.First(); !rows.Eof(); rows.Next()) largest = std::max(largest, VarToText(rows.Value(field)).size());
  return static_cast<std::int64_t>(largest);
}

std::string OpenName(const std::string& table) { return CutChars(table, kNameWidth); }

// The dataset of an open table, for those who read it: the engine closes it when it closes the table.
class TOpenTableView final : public TDataset {
 public:
  explicit TOpenTableView(std::shared_ptr<TMemDataset> rows) : rows_(std::move(rows)) {}

  const TMemDataset* Rows() const { return rows_.get(); }
  const std::vector<TFieldDef>& Fields() const override { return rows_->Fields(); }
  std::int64_t RecordCount() const override { return rows_->RecordCount(); }
  bool Eof() const override { return rows_->Eof(); }
  void First() override { rows_->First(); }
  void Next() override { rows_->Next(); }
  const TVariant& Value(std::size_t field) const override { return rows_->Value(field); }
  void Close() override { rows_->Close(); }

 private:
  std::shared_ptr<TMemDataset> rows_;
};

}  // namespace

TDBConnSMI::TDBConnSMI(std::string folder, std::string extensions)
    : folder_(std::move(folder)), extensions_(std::move(extensions)) {}

// --- Connection

void TDBConnSMI::Connect() { RefreshTableList(); }

void TDBConnSMI::Disconnect() {
  meta().Clear();
  while (!open_tables_.empty()) CloseOpenTable(open_tables_.begin());
}

void TDBConnSMI::GetDisplayName(std::string& text) { text.clear(); }

// --- Words of the dialect, rows, statements

std::unique_ptr<TDataset> TDBConnSMI::OpenTable(const std::string& table) {
  if (!ComponentClass) RaiseAbstract();
  TOpenTable& open = open_tables_.emplace_back(
      TOpenTable{ComponentClass(), std::make_shared<TMemDataset>(std::vector<TFieldDef>()), OpenName(table)});
  TSMImportBaseComponent& component = *open.component;
  component.SourceFileName = JoinPath(folder_, table);
  component.OnCreateStructure = CreateStructure;
  component.DataSet = open.dataset.get();
  component.Options &= ~kSMFirstOption;
  component.AbortOnProblem = false;
  component.AnimatedStatus = false;
  ApplyParams(component);
  try {
    DoAside(ESlow::Files, [component = open.component, dataset = open.dataset] { component->Execute(); });
  } catch (const ECancelled&) {  // the work that was left may be at it still
    open_tables_.pop_back();
    throw;
  }
  return std::make_unique<TOpenTableView>(open.dataset);
}

void TDBConnSMI::CloseTable(std::unique_ptr<TDataset> dataset) {
  if (const auto* view = dynamic_cast<TOpenTableView*>(dataset.get())) {
    const auto open = std::ranges::find(open_tables_, view->Rows(), [](const TOpenTable& table) {
      return static_cast<const TMemDataset*>(table.dataset.get());
    });
    if (open != open_tables_.end()) CloseOpenTable(open);
  }
  TDBConn::CloseTable(std::move(dataset));
}

int TDBConnSMI::GetEngine() { return kEngineNone; }

std::int64_t TDBConnSMI::GetRecordCount(const std::string& table) {
  const auto open = std::ranges::find(open_tables_, table, &TOpenTable::name);
  if (open != open_tables_.end()) return open->dataset->RecordCount();
  return TTableGuard(*this, table)->RecordCount();
}

void TDBConnSMI::CreateStructure(TSMImportBaseComponent& component, const TSMColumns& columns) {
  component.Mappings.clear();
  std::vector<TFieldDef> fields;
  for (const TSMColumn& column : columns) fields.push_back(FieldOf(column));
  *component.DataSet = TMemDataset(std::move(fields));
  component.RebuildMappings();
}

void TDBConnSMI::CloseOpenTable(std::list<TOpenTable>::iterator table) {
  table->component.reset();
  table->dataset->Close();
  open_tables_.erase(table);
}

// --- Names

void TDBConnSMI::ListDatabases(TStringList& list) { list.clear(); }

void TDBConnSMI::ListTables(TStringList& list) {
  TStringList extensions;
  SplitText(";", extensions_, extensions);
  list = FilesAside(folder_, std::move(extensions));
}

// --- Transactions, copies

std::unique_ptr<TDBConn> TDBConnSMI::Clone() {
  auto clone = std::make_unique<TDBConnSMI>(folder_, extensions_);
  clone->ComponentClass = ComponentClass;
  clone->meta().CopyFrom(meta());
  return clone;
}

// --- Structure to texts and back

void TDBConnSMI::FetchTableStructure(const std::string& table) {
  TTableGuard rows(*this, table);
  meta().InvalidateTable(table);
  for (std::size_t i = 0; i < rows->Fields().size(); ++i) DescribeField(*rows, i);
}

// Fields of a dataset in memory are never required and have no default expressions.
void TDBConnSMI::DescribeField(TDataset& rows, std::size_t field) {
  const TFieldDef& def = rows.Fields()[field];
  const TNeutralType datatype = NeutralTypeOf(def);
  const std::int64_t size = IsBlob(def.kind) ? LargestBlob(rows, field) : def.size;
  TColumnRow& column = meta().tColumns.Append();
  column.name = def.name;
  column.datatype = datatype;
  column.size = size;
  if (HasMoneyDecimals(def.kind)) column.precision = kMoneyDecimals;
  column.autoinc = def.kind == EFieldKind::AutoInc;
  meta().tColumns.Post();
}

void TDBConnSMI::ColumnDescription(const TMetaColumn& column, bool detailed, std::string& text) {
  std::string word = column.description;
  if (word.empty() || !detailed) TDBConn::ColumnDescription(column, false, word);
  if (!detailed) {
    text = std::move(word);
    return;
  }
  if (kFractional.Holds(column.datatype) && column.size > 0)
    word = Format("%s(%d,%d)", word, column.size, column.precision);
  else if (kCharacter.Holds(column.datatype))
    word = Format("%s(%d)", word, column.size);
  text = Trim(word + (column.notnull ? " not null" : "") + (column.autoinc ? " auto_increment" : ""));
}

}  // namespace velmora
