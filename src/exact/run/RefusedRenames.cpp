// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/run/RefusedRenames.h"

#include "util/Errors.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr int kUnknownColumn = 1054;
constexpr int kTries = 16;

bool RenamesColumn(const std::string& statement) {
  return PosNoCase("alter table ", statement) == 1 &&
         (PosNoCase(" rename column ", statement) != 0 || PosNoCase(" change column ", statement) != 0);
}

}  // namespace

std::int64_t ExecuteChange(TDBConn& conn, const std::string& statement) {
  for (int tries = 1;; ++tries) {
    try {
      return conn.ExecSQL(statement);
    } catch (const EMySqlException& error) {
      if (error.Number() != kUnknownColumn || tries == kTries || !RenamesColumn(statement)) throw;
    }
  }
}

}  // namespace velmora
