// SPDX-License-Identifier: GPL-3.0-or-later
#include "mysqltext/GrantText.h"

#include <algorithm>
#include <utility>

#include "mysqltext/KeyText.h"
#include "mysqltext/Lexer.h"
#include "util/Errors.h"
#include "util/Text.h"

namespace velmora {

namespace {

// "%" and "_" stand for others, unless a backslash is before them.
bool Matches(std::string_view pattern, std::string_view name) {
  std::size_t p = 0, n = 0, after_any = std::string_view::npos, tried = 0;
  while (n < name.size()) {
    const bool escaped = p + 1 < pattern.size() && pattern[p] == '\\';
    if (p < pattern.size() && pattern[p] == '%') {
      after_any = ++p;
      tried = n;
    } else if (p < pattern.size() && (pattern[p] == '_' || pattern[p + (escaped ? 1 : 0)] == name[n])) {
      p += escaped ? 2 : 1;
      ++n;
    } else if (after_any != std::string_view::npos) {  // "%" stands for one more
      p = after_any;
      n = ++tried;
    } else {
      return false;
    }
  }
  return pattern.find_first_not_of('%', p) == std::string_view::npos;
}

constexpr int kServerRunsWithoutThat = 1290;

bool AreRolesTaken(const TStringList& roles) { return !roles.empty() && !roles[0].empty() && roles[0] != "NONE"; }

}  // namespace

TGrants::TGrants(const TStringList& lines) {
  for (const std::string& line : lines) Read(line);
}

// grant SELECT, INSERT (a), SHOW VIEW on `d`.* to ...; grant `role` to ...
void TGrants::Read(const std::string& line) {
  std::vector<TToken> tokens;
  try {
    tokens = Tokens(line);
  } catch (const EVelmora&) {  // it gives nothing
    return;
  }
  const bool revokes = tokens[0].Is("revoke");
  if (!revokes && !tokens[0].Is("grant")) return;
  TRow row{{}, {}, {}, revokes};
  std::string privilege;
  std::size_t at = 1;
  for (; tokens[at].kind == EToken::Word || tokens[at].Is(",") || tokens[at].Is("("); ++at) {
    if (tokens[at].Is("on")) break;
    if (tokens[at].Is("(")) privilege = "of columns";
    if (tokens[at].Is("(")) at = std::min(AfterGroup(tokens, at), tokens.size() - 1) - 1;  // it may never be closed
    if (tokens[at].kind == EToken::Word) privilege += (privilege.empty() ? "" : " ") + LowerText(tokens[at].text);
    if (!tokens[at].Is(",") && !tokens[at + 1].Is(",") && !tokens[at + 1].Is("on")) continue;
    row.privileges.insert(std::exchange(privilege, {}));
  }
  if (!tokens[at].Is("on")) {
    has_roles_ = has_roles_ || IsName(tokens[at]);
    return;
  }
  if (tokens[at + 1].Is("table")) ++at;
  const bool whole = TokenAt(tokens, at + 2).Is(".");
  if (!whole) return;  // of a routine, a proxy
  const auto name = [](const TToken& token) { return token.Is("*") ? std::string("*") : NameOf(token); };
  row.database = name(tokens[at + 1]);
  row.table = name(TokenAt(tokens, at + 3));
  rows_.push_back(std::move(row));
}

bool TGrants::Names(const TRow& row, std::initializer_list<std::string_view> privileges) {
  return row.privileges.contains("all privileges") || row.privileges.contains("all") ||
         std::ranges::any_of(privileges,
                             [&](std::string_view privilege) { return row.privileges.contains(LowerText(privilege)); });
}

bool TGrants::Everywhere(std::initializer_list<std::string_view> privileges) const {
  return std::ranges::any_of(rows_, [&](const TRow& row) {
    return !row.revokes && row.database == "*" && row.table == "*" && Names(row, privileges);
  });
}

bool TGrants::On(std::string_view database, std::initializer_list<std::string_view> privileges) const {
  const auto of_database = [&](std::string_view privilege, bool revokes) {
    return std::ranges::any_of(rows_, [&](const TRow& row) {
      return row.revokes == revokes && row.database != "*" && row.table == "*" && Names(row, {privilege}) &&
             Matches(row.database, database);
    });
  };
  return std::ranges::any_of(privileges, [&](std::string_view privilege) {
    return of_database(privilege, false) || (Everywhere({privilege}) && !of_database(privilege, true));
  });
}

bool TGrants::OnTable(std::string_view database, std::string_view table,
                      std::initializer_list<std::string_view> privileges) const {
  return On(database, privileges) || std::ranges::any_of(rows_, [&](const TRow& row) {
           return !row.revokes && row.table == table && row.database == database && Names(row, privileges);
         });
}

TGrants AskGrants(const std::function<TStringList(const std::string& query)>& ask) {
  TStringList lines;
  try {
    lines = ask("show grants");
  } catch (const EMySqlException& error) {
    if (error.Number() != kServerRunsWithoutThat) throw;
    lines = {"grant all privileges on *.* to ''"};  // with skip-grant-tables everybody may do everything
  }
  TGrants grants(lines);
  if (!grants.HasRoles()) return grants;
  const TStringList roles = ask("select current_role()");
  // MariaDB has shown those of the role already, and gives its name without a host.
  if (!AreRolesTaken(roles) || roles[0].find('@') == std::string::npos) return grants;
  return TGrants(ask("show grants for current_user() using " + roles[0]));
}

}  // namespace velmora
