// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A plan that locks less: what each of its statements costs, and clauses in statements of their own where that makes
// them cheaper.

#include <string>
#include <vector>

#include "exact/plan/LockClasses.h"
#include "exact/plan/Plan.h"

namespace velmora {

struct TLockWishes {
  std::string target_version{};                // "mysql 8.0.36", for a target that cannot be asked
  ELockClass algorithm = ELockClass::Unknown;  // the server is to refuse what is not Instant, or not InPlace
  bool row_counts = false;
  bool fast_foreign_keys = false;  // they are added unchecked, once a query has found no orphans

  bool operator==(const TLockWishes&) const = default;
};

// Whether a statement of this class is done by the algorithm.
bool WithinAlgorithm(ELockClass is, ELockClass algorithm);

// Writes the words that make the server refuse what the algorithm does not do; none into other statements than "alter
// table", nor for Unknown. What is known to be instant is to be that.
void WriteAlgorithm(ELockClass algorithm, TPlanStatement& statement);

// Of statements that alter tables of `target`. Without a server that is known none has a class, and none is split; the
// algorithm is written all the same.
std::vector<TPlanStatement> WithLocks(std::vector<TPlanStatement> plan, const std::vector<TChange>& changes,
                                      const TSchema& target, const TPlanServer& server, ELockClass algorithm);

}  // namespace velmora
