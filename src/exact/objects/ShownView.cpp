// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/objects/ShownView.h"

#include "mysqltext/Lexer.h"
#include "util/Errors.h"
#include "util/Lists.h"

namespace velmora {

namespace {

const TStringList kClauses = {"select", "from",  "where", "group",     "having", "order",
                              "limit",  "union", "with",  "intersect", "except", "window"};
const TStringList kBeforeJoin = {"left", "right", "inner", "cross", "natural", "outer"};

bool InWords(const TToken& token, const TStringList& words) {
  return token.kind == EToken::Word && IndexOf(words, token.text) != kNotInList;
}

class TBreaking {
 public:
  explicit TBreaking(const std::string& text) : text_(text), tokens_(Tokens(text)) {}

  std::string Broken() {
    std::string shown;
    std::size_t done = 0;
    for (std::size_t i = 0; i + 1 < tokens_.size(); ++i) {
      const std::string_view lead = LeadOf(i);
      if (lead.empty()) continue;
      const std::size_t end = tokens_[i - 1].End();
      shown.append(text_, done, end - done).append(lead);
      done = tokens_[i].start;
    }
    return shown + text_.substr(done);
  }

 private:
  // What stands in front of the token, in place of blanks; empty for no line end.
  std::string_view LeadOf(std::size_t i) {
    const TToken& token = tokens_[i];
    if (token.Is("(")) ++depth_;
    if (token.Is(")")) --depth_;
    in_query_ = in_query_ || IsKeyword(token, "select");
    if (!in_query_ || i == 0) return {};
    if (depth_ == 0 && InWords(token, kClauses)) {
      in_columns_ = IsKeyword(token, "select");
      return "\n";
    }
    if (depth_ == 0 && in_columns_ && tokens_[i - 1].Is(",")) return "\n  ";
    return StartsJoin(i) ? "\n  " : std::string_view();
  }

  // "left join", "join", "straight_join"; left(...) is a function.
  bool StartsJoin(std::size_t i) const {
    const TToken& next = tokens_[i + 1];
    if (InWords(tokens_[i - 1], kBeforeJoin)) return false;
    if (InWords(tokens_[i], kBeforeJoin)) return IsKeyword(next, "join") || InWords(next, kBeforeJoin);
    return IsKeyword(tokens_[i], "join") || IsKeyword(tokens_[i], "straight_join");
  }

  const std::string& text_;
  std::vector<TToken> tokens_;
  int depth_ = 0;
  bool in_query_ = false;
  bool in_columns_ = false;
};

}  // namespace

std::string ShownView(const std::string& text) {
  if (text.find('\n') != std::string::npos) return text;
  try {
    return TBreaking(text).Broken();
  } catch (const EVelmora&) {  // a quote that is not closed
    return text;
  }
}

}  // namespace velmora
