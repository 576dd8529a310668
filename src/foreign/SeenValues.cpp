// SPDX-License-Identifier: GPL-3.0-or-later
#include "foreign/SeenValues.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <variant>

#include "util/Text.h"

namespace velmora {

void TSeenValues::See(const TMemDataset::TRow& row) {
  for (std::size_t i = 0; i < std::min(columns_.size(), row.size()); ++i) {
    TColumn& column = columns_[i];
    if (const auto* number = std::get_if<double>(&row[i])) {
      column.numbers = true;
      column.whole = column.whole && std::trunc(*number) == *number;
      column.largest = std::max(column.largest, std::abs(*number));
    } else if (const auto* moment = std::get_if<TMoment>(&row[i])) {
      column.moments = true;
      column.with_day = column.with_day || std::floor(moment->value) != 0;
      column.with_time = column.with_time || std::floor(moment->value) != moment->value;
    } else if (const auto* text = std::get_if<std::string>(&row[i])) {
      if (static_cast<std::int64_t>(text->size()) > column.longest)
        column.longest = std::max(column.longest, static_cast<std::int64_t>(CharCount(*text)));
    }
  }
}

void TSeenValues::Settle(std::vector<TForeignColumn>& columns) const {
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    TForeignColumn& column = columns[i];
    if (column.length) column.length = std::max(*column.length, columns_[i].longest);
    if (column.family == EFamily::Double) SettleNumbers(columns_[i], column);
    if (column.family == EFamily::DateTime) SettleMoments(columns_[i], column);
  }
}

void TSeenValues::SettleNumbers(const TColumn& seen, TForeignColumn& column) {
  constexpr double kInt = 2147483647;
  constexpr double kExact = 9007199254740992;  // up to which doubles keep every digit
  if (!seen.numbers || !seen.whole || seen.largest > kExact) return;
  column.native = "whole number";
  column.family = seen.largest <= kInt ? EFamily::Int32 : EFamily::Int64;
}

void TSeenValues::SettleMoments(const TColumn& seen, TForeignColumn& column) {
  if (!seen.moments || (seen.with_day && seen.with_time)) return;
  column.native = seen.with_time ? "time" : "date";
  column.family = seen.with_time ? EFamily::Time : EFamily::Date;
}

}  // namespace velmora
