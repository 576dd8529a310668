// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A mapped table as the target is to have it: what the source does not know, what is not compared, and what is within
// tolerance is the target's.

#include <array>
#include <functional>
#include <string>
#include <vector>

#include "foreign/MappedSchema.h"
#include "mysqltext/Charsets.h"
#include "mysqltext/TableText.h"

namespace velmora {

// What was not compared, and what was taken as equal.
struct TToleranceCounts {
  int wider = 0;                                                       // types that hold more than the source's
  std::array<int, static_cast<std::size_t>(EFact::kCount)> unknown{};  // what the target has and the source cannot say
  int unique_for_plain = 0;                                            // keys
};

// What a column got in its completed table.
struct TSettledColumn {
  std::string type{};  // empty for none yet
  TCharset charset{};
};
using TSettledColumns = std::function<TSettledColumn(const TColumnPlace& place)>;

class TTolerance {
 public:
  TTolerance(const TMapContext& context, TToleranceCounts& counts) : context_(context), counts_(counts) {}

  // `there` is the target's table, null for none. Columns that refer to others take the types that these have
  // `settled`, and new ones their collations.
  TTableText Complete(const TMappedTable& table, const TTableText* there, const TSettledColumns& settled);

 private:
  const TMapContext& context_;
  TToleranceCounts& counts_;
};

}  // namespace velmora
