// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What a login may do, as "show grants" says it: MySQL Reference Manual and MariaDB Documentation, "SHOW GRANTS".

#include <functional>
#include <initializer_list>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "util/Lists.h"

namespace velmora {

class TGrants {
 public:
  // Lines of "show grants"; what is not known in them gives nothing.
  explicit TGrants(const TStringList& lines);

  // Whether one of the privileges, in upper case as servers write them, holds everywhere; for all of a database; or for
  // a table.
  bool Everywhere(std::initializer_list<std::string_view> privileges) const;
  bool On(std::string_view database, std::initializer_list<std::string_view> privileges) const;
  bool OnTable(std::string_view database, std::string_view table,
               std::initializer_list<std::string_view> privileges) const;
  bool HasRoles() const { return has_roles_; }

 private:
  struct TRow {
    std::set<std::string> privileges;
    std::string database;  // a pattern; "*" for all
    std::string table;     // "*" for all
    bool revokes;
  };
  static bool Names(const TRow& row, std::initializer_list<std::string_view> privileges);
  void Read(const std::string& line);

  std::vector<TRow> rows_;
  bool has_roles_ = false;
};

// What the login of a session may do with the roles that it has taken on. `ask` gives the first column of a query's
// rows; what it raises passes on.
TGrants AskGrants(const std::function<TStringList(const std::string& query)>& ask);

}  // namespace velmora
