// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Routines on lists of texts.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {

using TStringList = std::vector<std::string>;

inline constexpr std::ptrdiff_t kNotInList = -1;

std::ptrdiff_t IndexOf(const TStringList& list, std::string_view text);    // ignoring case; kNotInList when absent
const std::string& ItemAt(const TStringList& list, std::ptrdiff_t index);  // raises EListError outside the list

// Empties `list`, then one line per piece, the last included; an empty text gives none.
void SplitText(std::string_view separator, std::string_view text, TStringList& list);
// The same by a separator of one character, but an empty text gives one empty line.
void SplitPlain(char separator, std::string_view text, TStringList& list);
// The splitter of delimited text files. Its quote handling is narrow, and files are read by it as it is.
void SplitQuoted(std::string_view separator, std::string_view text, TStringList& list);

std::string JoinList(const TStringList& list, std::string_view separator);

// Lines of a text, whatever ends them (CR LF, LF or CR). A last line without an end counts, an empty text has none.
TStringList LinesOf(std::string_view text);

}  // namespace velmora
