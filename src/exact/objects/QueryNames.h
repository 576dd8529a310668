// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What the names of columns mean in a query: which of the tables that it reads from they are of.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmora {

struct TListedColumn {
  std::string name;
  bool hidden = false;  // "*" does not stand for it
};
using TListedColumns = std::optional<std::vector<TListedColumn>>;  // in order; nothing where they are not known

// A column of one of the tables.
struct TNamedColumn {
  std::string table;  // its alias, or its name
  TListedColumn column;
};
struct TColumnPair {
  TNamedColumn left, right;
};

// The tables of a "from", or of a part of it. Names of columns ignore case, those of tables do not.
class TNamedTables {
 public:
  void Add(const std::string& table, const TListedColumns& columns);
  // With those of the other to the right, as by "join" or a comma.
  void Join(const TNamedTables& other);
  // "natural", or "using" these columns: each pair is one column from here on. `right`: by a right join. Gives the
  // pairs. Raises where it is not certain which they are.
  std::vector<TColumnPair> JoinAlike(const TNamedTables& other, const std::vector<std::string>* names, bool right);

  // The column that is meant; nothing where there is none. Without a table it is the only one of this name: raises
  // where there may be several. Of a table whose columns are not known it is taken to have those that are named.
  std::optional<TNamedColumn> Find(std::string_view table, const std::string& name) const;
  // What "*" stands for, or "table.*". Raises where that is not known.
  std::vector<TNamedColumn> Star(std::string_view table) const;
  std::vector<std::string> Names() const;  // of the tables

 private:
  struct TTable {
    std::string name;
    TListedColumns columns;
  };
  const TTable* FindTable(std::string_view table) const;
  std::vector<TNamedColumn> Alike(const std::string& name) const;

  std::vector<TTable> tables_;
  std::vector<TNamedColumn> row_;  // columns that need no table before them, in the order of "*"
  bool known_ = true;              // all that there are
};

}  // namespace velmora
