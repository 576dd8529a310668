// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/ScriptSplitter.h"

#include "exact/plan/Plan.h"
#include "mysqltext/StatementReader.h"
#include "util/Lists.h"
#include "util/Text.h"
#include "util/Words.h"

namespace velmora {

namespace {

constexpr std::string_view kSeparator = ";";
constexpr std::string_view kCommentOpen = "--";
constexpr std::string_view kCommentClose = "\r";
constexpr std::string_view kBlanks = " \t\r\n";

// Where in `piece` the first character stands that is neither blank nor taken out as a comment.
std::size_t FirstCharacter(std::string_view piece) {
  std::size_t from = 1;
  while (true) {
    const std::size_t open = Pos(kCommentOpen, piece, from);
    // The character before the comment goes too.
    const std::size_t kept = open == 0 ? piece.size() + 1 : open - LastCharSize(piece.substr(from - 1, open - from));
    const std::size_t first = piece.find_first_not_of(kBlanks, from - 1);
    if (first != std::string_view::npos && first + 1 < kept) return first;
    if (open == 0) return 0;
    const std::size_t close = Pos(kCommentClose, piece, open + kCommentOpen.size());
    if (close == 0) return 0;
    from = close + kCommentClose.size();
  }
}

}  // namespace

TScriptPieces SplitScript(std::string_view script) {
  TStringList list;
  SplitWords(kSeparator, script, list, false);
  TScriptPieces result;
  result.pieces = list.size();
  std::size_t position = 0;
  std::size_t begin = 0;
  for (const std::string& piece : list) {
    std::string text = piece;
    StripBetween(text, kCommentOpen, kCommentClose);
    text = Trim(text);
    if (!text.empty())
      result.statements.push_back({std::move(text), position + piece.size() - 1, begin + FirstCharacter(piece)});
    const std::size_t after = begin + piece.size() + kSeparator.size();
    const std::size_t dropped = after < script.size() ? CharSize(script, after) : 1;
    position += piece.size() + dropped;
    begin = after + dropped;
  }
  return result;
}

TScriptPieces SplitExactScript(std::string_view script) {
  TScriptPieces result;
  for (const TScriptRange& range : ScanStatements(script))
    result.statements.push_back({std::string(script.substr(range.start, range.length)), range.start, range.start});
  result.pieces = result.statements.size();
  return result;
}

}  // namespace velmora
