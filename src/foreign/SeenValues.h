// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What the values of a source say of columns whose types were guessed from the first of them.

#include <cstddef>
#include <cstdint>
#include <vector>

#include "core/Dataset.h"
#include "foreign/Facts.h"

namespace velmora {

class TSeenValues {
 public:
  explicit TSeenValues(std::size_t columns) : columns_(columns) {}

  void See(const TMemDataset::TRow& row);  // a value for each column
  // A longer text needs more room; numbers of which none has anything behind the point are whole; moments of which none
  // has a time are days, and those on no day are times.
  void Settle(std::vector<TForeignColumn>& columns) const;

 private:
  struct TColumn {
    bool numbers = false;
    bool whole = true;
    double largest = 0;
    bool moments = false;
    bool with_day = false;
    bool with_time = false;
    std::int64_t longest = 0;  // in letters
  };
  static void SettleNumbers(const TColumn& seen, TForeignColumn& column);
  static void SettleMoments(const TColumn& seen, TForeignColumn& column);

  std::vector<TColumn> columns_;
};

}  // namespace velmora
