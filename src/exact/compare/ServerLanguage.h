// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What servers have for tables, by product and version.

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "exact/compare/ServerForm.h"
#include "mysqltext/TableText.h"
#include "util/Lists.h"

namespace velmora {

// What `select version()` gives: "10.11.6-MariaDB-log" is MariaDB 101106.
TServerTraits ReadServerTraits(const std::string& version);
std::string ServerName(const TServerTraits& server);  // "MariaDB 10.11"
// Whether they have the same things and print them alike: servers of one product and release.
bool SpeakAlike(const TServerTraits& a, const TServerTraits& b);

// Both sides of a comparison.
struct TServerPair {
  TServerTraits reference{};
  TServerTraits target{};
  bool differ = false;  // they are known, and do not speak alike
};

bool HasType(const TServerTraits& server, std::string_view type);  // of a column, a parameter or a result

// What of a table, in the words of `server`, this server does not have, each with its place: "type uuid (column c)".
// `foreign` tells that the table comes from the other product; then its expressions have to be such that both products
// have them and print them alike.
TStringList MissingOn(const TServerTraits& server, const TTableText& table, bool foreign);

// What tables that stand together cannot have on `server`, by table: checks of one name, where a server has each name
// once, and foreign keys to what is not unique, where one refuses these.
std::map<std::string, std::string> MissingTogether(const TServerTraits& server,
                                                   const std::vector<const TTableText*>& tables);

}  // namespace velmora
