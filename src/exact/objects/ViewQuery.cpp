#include "exact/objects/ViewQuery.h"

#include "mysqltext/Lexer.h"
#include "util/Text.h"

namespace velmora {

namespace {

// Words of which servers print some by themselves: in them letter case says nothing. In others it may, as in names of
// tables.
bool IsFixedWord(std::string_view lower) {
  return InList(lower, {"select", "distinct", "as",   "from",  "where",  "and",   "or",    "not",    "in",    "is",
                        "null",   "like",     "case", "when",  "then",   "else",  "end",   "group",  "order", "by",
                        "having", "limit",    "join", "inner", "left",   "right", "outer", "cross",  "on",    "using",
                        "union",  "all",      "asc",  "desc",  "exists", "with",  "over",  "between"});
}

}  // namespace

std::string QueryMeaning(std::string_view query) {
  std::string meaning;
  for (const TToken& token : Tokens(query)) {
    const std::string lower = LowerText(token.text);
    if (!meaning.empty()) meaning += ' ';
    if (token.kind == EToken::Word)
      meaning += IsFixedWord(lower) ? lower : std::string(token.text);
    else if (token.kind == EToken::Name)
      meaning += NameOf(token);
    else if (token.kind == EToken::String)
      meaning += LowerText(PrefixOf(token)) + QuotedText(ValueOf(token));
    else
      meaning += token.text;
  }
  return meaning;
}

}  // namespace velmora
