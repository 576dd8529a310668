#pragma once

// Names of character sets and collations.

#include <string>
#include <string_view>

#include "exact/Equivalences.h"

namespace velmora {

std::string CharsetName(std::string_view written);    // lower case; utf8 is utf8mb3
std::string CollationName(std::string_view written);  // the same: utf8_bin is utf8mb3_bin

// Bytes that letters of a set take at least and at most; one for sets that nobody knows.
struct TLetterBytes {
  std::string_view charset;
  long long least;
  long long most;
};
TLetterBytes LetterBytes(std::string_view charset);

// A value of a default, a member or a comment as servers print it: "?" for each letter of four bytes.
std::string PrintedText(std::string value);

// What a text that names these means; both may be empty. A collation brings its set along, a set its own collation.
TCharset NamedCharset(std::string_view charset, std::string_view collation);

}  // namespace velmora
