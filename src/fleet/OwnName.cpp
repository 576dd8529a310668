// SPDX-License-Identifier: GPL-3.0-or-later
#include "fleet/OwnName.h"

#include <cstddef>
#include <vector>

#include "mysqltext/Lexer.h"

namespace velmora {

std::string WithOwnNameAs(const std::string& mark, const std::string& text, const std::string& database) {
  const std::string own = QuotedName(database);
  if (database.empty() || text.find(own + ".") == std::string::npos) return text;
  std::string result;
  std::size_t copied = 0;
  const std::vector<TToken> tokens = Tokens(text);
  for (std::size_t i = 0; i + 1 < tokens.size(); ++i) {
    if (tokens[i].kind != EToken::Name || tokens[i].text != own || !tokens[i + 1].Is(".")) continue;
    result.append(text, copied, tokens[i].start - copied).append(mark);
    copied = tokens[i + 1].End();
  }
  return result.append(text, copied);
}

}  // namespace velmora
