// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What rooms that do not know each other have to know of MySQL servers alike.

namespace velmora {

inline constexpr int kMySqlPort = 3306;  // where a server listens when nobody said otherwise

// Around statements that the checks of foreign keys would stop. Without an end mark: a script adds it.
inline constexpr char kForeignKeyChecksOff[] = "set foreign_key_checks=0";
inline constexpr char kForeignKeyChecksOn[] = "set foreign_key_checks=1";

// What is shown of an error of a server that says nothing but its number.
inline constexpr char kErrorWithoutText[] = "Error %d, of which the server says no more";

}  // namespace velmora
