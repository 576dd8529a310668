// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The modes of a session in which an object was made: its server reads and runs the body in them ever after.

#include <string>
#include <string_view>
#include <vector>

#include "core/CreationTexts.h"
#include "exact/objects/ObjectText.h"
#include "exact/plan/Plan.h"

namespace velmora {

// Without the modes that this server does not know; all where nobody knows the server.
std::string ModesFor(const std::string& sql_mode, const TPlanServer& server);
// The first of the modes without which a body would be read in another way, and which this server does not know; empty
// for none.
std::string MissingMode(const std::string& sql_mode, const TPlanServer& server);

// An object's text by the modes in which it was made; raises as ReadObjectText.
TObjectText ReadObject(const TOtherObject& object, const std::string& database);
// The tokens of its text, which it owns, likewise: what stands in double quotes may be a name. Raises as the lexer
// does.
std::vector<TToken> TokensOf(const TOtherObject& object);

// Whether names stand in double quotes in these modes.
bool QuotesNames(std::string_view sql_mode);
// Whether a backslash is a letter in them.
bool HasPlainBackslashes(std::string_view sql_mode);
// Whether MySQL refuses "on completion not preserve" in them.
bool RefusesNotPreserve(std::string_view sql_mode);
// What makes a text that was written in these modes unreadable here, with its line; empty for nothing: a backslash that
// is a letter.
std::string UnreadableIn(std::string_view sql_mode, std::string_view text);

}  // namespace velmora
