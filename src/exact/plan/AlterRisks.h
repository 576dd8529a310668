// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What the clauses of an "alter table" may cost.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "mysqltext/KeyText.h"
#include "mysqltext/TableText.h"

namespace velmora {

// Of what is not known to be harmless.
inline constexpr char kNotKnown[] = "what it does is not known";

// Reasons why the clauses of `statement`, whose `tokens` end with End and hold the clauses from `first`, may lose data.
// `table` is the table before the statement; null when that is not known.
std::vector<std::string> AlterRisks(std::string_view statement, TTokens tokens, std::size_t first,
                                    const TTableText* table);

// The same of a key that goes.
std::string DropKeyRisk(const std::string& name, const TTableText* table);

// Whether `tokens` go on with these words from `at`.
bool WordsAt(TTokens tokens, std::size_t at, const std::vector<std::string_view>& words);

}  // namespace velmora
