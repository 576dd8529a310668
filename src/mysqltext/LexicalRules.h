// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// MySQL's rules below its words: white space, quotes and escapes, comments, marks of versions. Whoever reads texts in
// this language, by tokens or by statements, goes by these.

#include <cstddef>
#include <string_view>

namespace velmora {

constexpr bool IsSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
// Control characters too, as files have them between statements.
constexpr bool IsBlank(char c) { return static_cast<unsigned char>(c) <= ' '; }

constexpr bool IsQuote(char c) { return c == '\'' || c == '"' || c == '`'; }
// After the quote that closes the one at `open`; npos for none. A backslash escapes within ' and ", not within
// backticks. A doubled quote closes and opens again: who takes both texts for one goes on from there.
std::size_t QuotedEnd(std::string_view text, std::size_t open);

// Where a comment that begins at `at` ends: before the line end of "-- " or "#", or after "*/". `at` itself when none
// begins there, npos when it is not closed. Two dashes open a comment at the end of the text or before a blank.
std::size_t CommentEnd(std::string_view text, std::size_t at);

// The length of what opens a comment that servers may run: "/*!", "/*M!"; 0 for none.
std::size_t MarkOpening(std::string_view text, std::size_t at);
// The same with the version after it (/*!50001, /*M!100401; of five digits or six: MySQL 8.4 Reference Manual, 11.7
// Comments); 0 for one of fewer digits, and for the version 999999,
// which no server has.
constexpr std::size_t kVersionDigits = 5;
std::size_t VersionMark(std::string_view text, std::size_t at, std::size_t least_digits = kVersionDigits);
// What closes one, "*/".
bool ClosesComment(std::string_view text, std::size_t at);

}  // namespace velmora
