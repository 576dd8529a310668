#pragma once

// A mapped table as the target is to have it: what the source does not know, what is not compared, and what is within
// tolerance is the target's.

#include <array>
#include <functional>
#include <string>
#include <vector>

#include "foreign/MappedSchema.h"
#include "mysqltext/TableText.h"

namespace velmora {

// What was not compared, and what was taken as equal.
struct TToleranceCounts {
  int wider = 0;                                                       // types that hold more than the source's
  std::array<int, static_cast<std::size_t>(EFact::kCount)> unknown{};  // what the target has and the source cannot say
  int unique_for_plain = 0;                                            // keys
};

// The type that a column got in its completed table; empty for none yet.
using TSettledTypes = std::function<std::string(const TColumnPlace& place)>;

class TTolerance {
 public:
  TTolerance(const TMapContext& context, TToleranceCounts& counts) : context_(context), counts_(counts) {}

  // `there` is the target's table, null for none. Columns that refer to others take the types that these have
  // `settled`.
  TTableText Complete(const TMappedTable& table, const TTableText* there, const TSettledTypes& settled);

 private:
  const TMapContext& context_;
  TToleranceCounts& counts_;
};

}  // namespace velmora
