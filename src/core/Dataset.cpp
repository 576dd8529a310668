// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/Dataset.h"

#include <array>

#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {
namespace {

// In the order of EFieldKind.
constexpr std::array<std::string_view, static_cast<std::size_t>(EFieldKind::Other) + 1> kKindNames = {
    "string",         "fixed char",     "wide string", "GUID",        "small integer", "integer", "word",
    "auto-increment", "large integer",  "boolean",     "float",       "currency",      "BCD",     "date",
    "time",           "date-time",      "timestamp",   "bytes",       "varbytes",      "blob",    "memo",
    "graphic",        "formatted memo", "Oracle blob", "Oracle clob", "other"};

const TVariant kNullValue;

std::size_t FieldIndex(const TDataset& dataset, std::string_view name) {
  const std::vector<TFieldDef>& fields = dataset.Fields();
  for (std::size_t i = 0; i < fields.size(); ++i)
    if (SameText(fields[i].name, name)) return i;
  RaiseError(Format("Field '%s' not found", name));
}

}  // namespace

std::string_view FieldKindName(EFieldKind kind) { return kKindNames[static_cast<std::size_t>(kind)]; }

TField TDataset::Field(std::size_t field) const {
  if (field >= Fields().size()) throw EListError(static_cast<std::int64_t>(field));
  return {Fields()[field], Value(field)};
}

TField TDataset::FieldByName(std::string_view name) const { return Field(FieldIndex(*this, name)); }

void TMemDataset::AddRow(TRow row) {
  if (row.size() != fields_.size())
    RaiseError(Format("A row of %d values does not fit a dataset of %d fields", row.size(), fields_.size()));
  rows_.push_back(std::move(row));
}

void TMemDataset::Next() {
  if (!Eof()) ++row_;
}

const TVariant& TMemDataset::Value(std::size_t field) const {
  if (field >= fields_.size()) throw EListError(static_cast<std::int64_t>(field));
  return Eof() ? kNullValue : rows_[row_][field];
}

void TMemDataset::Close() {
  rows_ = {};
  row_ = 0;
}

void FieldToList(TDataset& dataset, std::string_view field, TStringList& list) {
  const std::size_t index = FieldIndex(dataset, field);
  list.clear();
  for (dataset.First(); !dataset.Eof(); dataset.Next()) list.push_back(VarToText(dataset.Value(index)));
}

}  // namespace velmora
