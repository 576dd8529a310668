// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A short text that stands for a structure: another one is, but for what nobody will see, of another structure.

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "core/DBConn.h"
#include "exact/objects/ObjectChanges.h"

namespace velmora {

// 32 hexadecimal digits.
std::string TextDigest(std::string_view text);

// A creation text without the counter of numbers given so far, which rows move.
std::string WithoutCounter(const std::string& text);

// Of the creation texts of all tables, and of all that stands beside them, whatever the database's name is.
struct TStructureDigest {
  std::string tables;
  std::string others;  // empty where nobody looked
  bool operator==(const TStructureDigest&) const = default;
  std::string Text() const;  // "tables 1f0c..., others 77ab..."
};
TStructureDigest DigestOf(const std::map<std::string, std::string>& tables, const TDatabaseObjects* others);

// Of a connected server's database as it is now; nothing for a side without texts of a server. A table that cannot be
// read counts for nothing. Raises where the connection is lost.
std::optional<TStructureDigest> DigestNow(TDBConn& conn);

// A line of a script's header; and what that of a side says, nothing where there is none.
inline constexpr char kStructureLine[] = "-- Structure of the ";
std::string DigestLine(const char* side, const TStructureDigest& digest);
std::optional<TStructureDigest> DigestIn(std::string_view script, const char* side);

}  // namespace velmora
