// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The port to a reference whose engine has no creation texts: they are made for the target, of what the source holds.

#include <functional>
#include <string>
#include <vector>

#include "core/DBConn.h"
#include "mysqltext/TableText.h"
#include "util/Lists.h"

namespace velmora {

enum class EMadeLevel { Info, Warning, Refused };

// What became of a column of the source.
struct TMadeColumn {
  std::string table;   // by the target's name
  std::string column;  // empty for what is said of the table
  std::string source;  // the type in the source's words: "NUMBER(10,2)"
  std::string type;    // in MySQL's; empty where it has none
  EMadeLevel level = EMadeLevel::Info;
  std::string text;     // what the user should know; empty for nothing
  TStringList names{};  // by which a rule of the user may mean it, the nearest first
  std::string rule{};   // that has decided, by the name that it has; empty for none

  std::string Place() const { return column.empty() ? table : table + "." + column; }
  // "orders.total (NUMBER, decimal(65,30)): the source states no precision"; of a table "orders: it has no primary
  // key".
  std::string Text() const { return Place() + (column.empty() ? "" : " (" + source + ", " + type + ")") + ": " + text; }
};

// What the source has and MySQL has no form for, so that a database cannot be called identical.
struct TUnmadeElement {
  std::string table;
  std::string element;  // its name, or that of its column: it is accepted as "TABLE.ELEMENT"
  std::string kind;     // "default", "check", "key", "primary key", "reference", "counting"
  std::string reason;

  std::string Name() const { return table + "." + element; }
  std::string Text() const { return Name() + " (" + kind + "): " + reason; }
};

// A table in the target's language.
struct TMadeTable {
  TTableText table;
  std::string shown;  // its creation text for the user, with the source's types
};

class TTextMaker {
 public:
  virtual ~TTextMaker() = default;

  // Reads all tables of the reference, which is connected, for this target: a connected server, or a script. `step` is
  // called before each table with the number of all. A table that cannot be read stays, and Make raises the reason.
  // Raises where the tables cannot be listed, where there are none, and where the source is gone.
  virtual void Read(TDBConn& target, const TStringList& target_tables,
                    const std::function<void(const std::string& table, std::size_t count)>& step) = 0;
  // As the target spells them.
  virtual TStringList Tables() const = 0;
  // The table as it is to be. Of the target's, null for none, it has all that the source does not know, that is not
  // compared, or that is within tolerance. Raises for one that has no form in MySQL.
  virtual TMadeTable Make(const std::string& table, const TTableText* there) = 0;
  virtual bool DropsObsolete() const = 0;  // tables that the target alone has go
  // After all tables are made; what the user has accepted is apart.
  virtual std::vector<TUnmadeElement> Unmade() const = 0;
  virtual std::vector<TUnmadeElement> Accepted() const = 0;
  virtual std::vector<TMadeColumn> Columns() const = 0;
  virtual TStringList Log() const = 0;  // what was counted
};

}  // namespace velmora
