// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Names of character sets and collations.

#include <optional>
#include <string>
#include <string_view>

namespace velmora {

struct TTableText;

// A character set and a collation, as CharsetName and CollationName give them; empty where nobody says.
struct TCharset {
  std::string charset;
  std::string collation;
  bool operator==(const TCharset&) const = default;
};

// Lower case; utf8 is utf8mb3, as later servers print it (MySQL 8.4 Reference Manual, 12.9.2 The utf8mb3 Character
// Set).
std::string CharsetName(std::string_view written);
std::string CollationName(std::string_view written);  // the same: utf8_bin is utf8mb3_bin

// Bytes that letters of a set take at least and at most; one for sets that nobody knows.
struct TLetterBytes {
  std::string_view charset;
  long long least;
  long long most;
};
TLetterBytes LetterBytes(std::string_view charset);

// What bytes say that are letters of a set, in UTF-8; nothing for a set that nobody knows, and for what are no letters.
std::optional<std::string> LettersOf(std::string_view bytes, std::string_view charset);

// A value of a default, a member or a comment as servers print it: "?" for each letter of four bytes.
std::string PrintedText(std::string value);
// Whether the two are one value, of which one may have been printed so.
bool MayBeOneText(const std::string& a, const std::string& b);

// What a text that names these means; both may be empty. A collation brings its set along, a set its own collation.
TCharset NamedCharset(std::string_view charset, std::string_view collation);
// What a table's options say, which its columns have where their own texts are silent.
TCharset TableCharset(const TTableText& table);

// A Unicode set without a collation is left to the server, and servers differ: general, 0900 and uca1400 are its own
// collations somewhere, so a text that names the set alone is the same as one that names any of these. Written to a
// server it gives one of them, too. Of all other sets the collation is known. Where a text says nothing at all both are
// empty, which equals itself only.
bool SameCharset(const TCharset& a, const TCharset& b);

}  // namespace velmora
