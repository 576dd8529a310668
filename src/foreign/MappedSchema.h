// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The tables of a source as MySQL has them: names, types, keys and references that hold together.

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "exact/run/TextMaker.h"
#include "foreign/Defaults.h"
#include "foreign/Facts.h"
#include "foreign/Mapping.h"
#include "util/Lists.h"

namespace velmora {

// A column of a table, by their places in the schema.
struct TColumnPlace {
  std::size_t table = 0;
  std::size_t column = 0;
  bool operator==(const TColumnPlace&) const = default;
};

struct TMappedColumn {
  TForeignColumn source{};
  std::string name{};
  TStringList rule_names{};  // see RuleNames
  TMappedType type{};
  TColumnPlace root{};  // whose type it has: its own, or that of the column that it refers to, along all references
  TColumnPlace letters_root{};     // the same of its collation, where both have letters
  std::optional<bool> not_null{};  // nothing where nobody knows
  TMadeDefault default_value{};
  bool counts = false;
  bool may_count = false;  // in the source, or nobody can tell: what the target does stays

  const std::string& SourceName() const { return source.name; }
};

struct TMappedKeyPart {
  std::string column;
  long long letters = 0;  // that count; 0 for all
  bool descending = false;
};

struct TMappedKey {
  std::string name{};
  EForeignKeyKind kind = EForeignKeyKind::Plain;
  std::vector<TMappedKeyPart> parts{};
  bool hashed = false;  // unique over more than the server's keys take
};

struct TMappedReference {
  std::string name{};
  TStringList columns{};
  std::string table{};
  TStringList references{};
  EReferenceRule on_delete = EReferenceRule::NoAction;
  EReferenceRule on_update = EReferenceRule::NoAction;
};

struct TMappedCheck {
  std::string name{};
  std::string text{};  // in MySQL's language
};

struct TMappedTable {
  std::string source_name{};
  std::string name{};
  TKnownFacts known{};
  std::vector<TMappedColumn> columns{};
  std::vector<TMappedKey> keys{};
  std::vector<TMappedReference> references{};
  std::vector<TMappedCheck> checks{};
  // The columns of keys and references that are left out: what the target has over these may stand for them.
  std::vector<TStringList> open_keys{};
  std::vector<TStringList> open_references{};
  std::string comment{};
  std::vector<TMadeColumn> told{};       // of each column, then what is said of the table
  std::vector<TUnmadeElement> unmade{};  // whether accepted or not
  std::string refused{};                 // why there is no such table in MySQL
};

// A table that was read, and what it is called without what only the source needs.
struct TReadTable {
  TForeignTable facts;
  std::string plain_name;
};

// What the target has by now.
struct TTargetNames {
  TStringList tables{};                             // lend their spelling
  std::map<std::string, std::string> references{};  // the tables of foreign keys, by their names in lower case
  std::map<std::string, std::string> checks{};      // the same of checks
};

// `known` are the facts of a table that says nothing itself. Parents come before tables that refer to them, as far as
// can be.
std::vector<TMappedTable> MapSchema(std::vector<TReadTable> tables, TKnownFacts known, const TTargetNames& target,
                                    const TMapContext& context);

}  // namespace velmora
