// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "core/Dataset.h"

namespace velmora {

// The rows of a client's query: those of a dataset that the client gave for its statement, from Show to Close. A query
// that shows none is at its end, without fields; after Close the fields stay.
class TClientRows : public TDataset {
 public:
  TClientRows() = default;
  TClientRows(const TClientRows&) = delete;
  TClientRows& operator=(const TClientRows&) = delete;

  bool Active() const { return active_; }

  const std::vector<TFieldDef>& Fields() const override;
  std::int64_t RecordCount() const override;
  bool Eof() const override;
  void First() override;
  void Next() override;
  const TVariant& Value(std::size_t field) const override;
  void Close() override;

 protected:
  void Show(std::unique_ptr<TDataset> rows);  // never null; rows that are shown already have to be closed before

 private:
  std::unique_ptr<TDataset> rows_;
  bool active_ = false;
};

}  // namespace velmora
