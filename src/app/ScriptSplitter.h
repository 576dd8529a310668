// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Cuts a script into the statements that a run of it executes.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {

struct TScriptStatement {
  std::string text;          // without comments, trimmed
  std::size_t position = 0;  // where the editor's caret goes when the statement fails; see SplitScript
  std::size_t start = 0;     // of the statement's first character in the script, from 0
};

struct TScriptPieces {
  std::vector<TScriptStatement> statements;  // those that are not empty
  std::size_t pieces = 0;                    // of the cut, the empty ones included
};

// Cuts `script` at every ";" that stands outside quotes; the character after each is lost with it. Comments, from "--"
// to the next carriage return of the same piece, are then taken out, with the character before them; a comment without
// a carriage return takes the rest of its piece. Deliberate: comments are not looked at by the cut, and a "--" within a
// literal begins one.
//
// A statement's position is the running offset plus the length of its piece less 1, in bytes. Deliberate: the offset
// grows by the piece and the character that is lost, and not by the ";", so it falls behind by one for each statement.
TScriptPieces SplitScript(std::string_view script);

// The same for scripts of the exact dialect: cut at ";", or at what a `delimiter` line has put in its place, outside
// quotes, backticks and comments; nothing taken out but what stands around a statement. A statement's position is its
// start.
TScriptPieces SplitExactScript(std::string_view script);

using TScriptSplitter = TScriptPieces (*)(std::string_view script);

}  // namespace velmora
