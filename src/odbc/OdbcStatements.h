// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The engines write statements in one dialect; this turns them into those that an ODBC driver takes.

#include <cstdint>
#include <string>
#include <string_view>

namespace velmora {

inline constexpr std::int64_t kNoLimit = -1;

struct TOdbcCommand {
  std::string sql;
  std::int64_t limit = kNoLimit;  // rows that are wanted
};

// Outside quotes, [name] gets the driver's `quote` around it, which is doubled inside; a driver that has none, which
// says so by a blank, gets the bare name. A leading "select top n" becomes "select" with a limit.
TOdbcCommand AdaptStatement(std::string_view sql, std::string_view quote);

// A name in the driver's quotes.
std::string OdbcName(std::string_view name, std::string_view quote);

}  // namespace velmora
