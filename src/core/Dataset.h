// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Rows of a query: a cursor over typed fields. TDataset is what engines give; TMemDataset holds its rows itself.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "util/Lists.h"
#include "util/Variant.h"

namespace velmora {

enum class EFieldKind {
  String,
  FixedChar,
  WideString,
  Guid,
  SmallInt,
  Integer,
  Word,
  AutoInc,
  LargeInt,
  Boolean,
  Float,
  Currency,
  Bcd,
  Date,
  Time,
  DateTime,
  TimeStamp,
  Bytes,
  VarBytes,
  Blob,
  Memo,
  Graphic,
  FmtMemo,
  OraBlob,
  OraClob,
  Other
};

// The word for a kind, as shown to users: "string", "date-time", ...
std::string_view FieldKindName(EFieldKind kind);

struct TFieldDef {
  std::string name;
  EFieldKind kind = EFieldKind::String;
  std::int64_t size = 0;  // characters or bytes; 0 where the kind has none
};

// One field of the current row, as a view that is valid until the dataset moves or closes.
struct TField {
  const TFieldDef& def;
  const TVariant& value;
};

// A dataset is open from creation until Close. Before the first call of Next it stands on its first row.
class TDataset {
 public:
  virtual ~TDataset() = default;

  virtual const std::vector<TFieldDef>& Fields() const = 0;
  virtual std::int64_t RecordCount() const = 0;  // rows known so far; all of them unless the rows come in blocks
  virtual bool Eof() const = 0;                  // past the last row
  virtual void First() = 0;                      // raises on a dataset that reads forward only and has moved
  virtual void Next() = 0;
  virtual const TVariant& Value(std::size_t field) const = 0;  // of the current row; null past the last row
  virtual void Close() = 0;                                    // frees the rows; the fields stay

  TField Field(std::size_t field) const;            // raises EListError
  TField FieldByName(std::string_view name) const;  // ignoring case; raises "Field '%s' not found"
};

class TMemDataset : public TDataset {
 public:
  using TRow = std::vector<TVariant>;

  explicit TMemDataset(std::vector<TFieldDef> fields) : fields_(std::move(fields)) {}
  void AddRow(TRow row);  // one value per field, else raises

  const std::vector<TFieldDef>& Fields() const override { return fields_; }
  std::int64_t RecordCount() const override { return static_cast<std::int64_t>(rows_.size()); }
  bool Eof() const override { return row_ >= rows_.size(); }
  void First() override { row_ = 0; }
  void Next() override;
  const TVariant& Value(std::size_t field) const override;
  void Close() override;

 private:
  std::vector<TFieldDef> fields_;
  std::vector<TRow> rows_;
  std::size_t row_ = 0;
};

// Empties the list and adds the text of `field` of every row, from the first row.
void FieldToList(TDataset& dataset, std::string_view field, TStringList& list);

}  // namespace velmora
