// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/ClientRows.h"

#include <utility>

namespace velmora {

void TClientRows::Show(std::unique_ptr<TDataset> rows) {
  rows_ = std::move(rows);
  active_ = true;
}

const std::vector<TFieldDef>& TClientRows::Fields() const {
  static const std::vector<TFieldDef> kNoFields;
  return rows_ ? rows_->Fields() : kNoFields;
}

std::int64_t TClientRows::RecordCount() const { return active_ ? rows_->RecordCount() : 0; }

bool TClientRows::Eof() const { return !active_ || rows_->Eof(); }

void TClientRows::First() {
  if (active_) rows_->First();
}

void TClientRows::Next() {
  if (active_) rows_->Next();
}

const TVariant& TClientRows::Value(std::size_t field) const {
  static const TVariant kNull;
  return active_ ? rows_->Value(field) : kNull;
}

void TClientRows::Close() {
  if (!active_) return;
  active_ = false;
  rows_->Close();
}

}  // namespace velmora
