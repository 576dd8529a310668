// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Which kinds of change a clause for a column is made of.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "exact/plan/LockClasses.h"
#include "mysqltext/Charsets.h"
#include "mysqltext/TableText.h"

namespace velmora {

// The column before the place; empty for the first one. Nothing where none is named.
using TColumnPlace = std::optional<std::string>;
// Takes it off the end of the range.
TColumnPlace TakePlace(TTokens tokens, TTokenRange& range);

bool StandsInKey(std::string_view column, const TTableText& table);

std::vector<ELockChange> AddedColumn(const TElement& column, const TColumnPlace& place, const TTableText& table);
std::vector<ELockChange> DroppedColumn(const std::string& name, const TTableText& table);
// `charset` is what the table hands down by then.
std::vector<ELockChange> ChangedColumn(const TElement& from, const TElement& to, const TColumnPlace& place,
                                       const TTableText& table, const TCharset& charset);

}  // namespace velmora
