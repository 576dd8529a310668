#pragma once

// A table's creation text taken apart without loss: elements, options and partitioning keep their own texts.

#include <string>
#include <string_view>
#include <vector>

namespace velmora {

enum class EElement { Column, PrimaryKey, UniqueKey, Key, FulltextKey, SpatialKey, ForeignKey, Check, Period, Other };

struct TElement {
  EElement kind = EElement::Column;
  std::string name;  // without quotes; "PRIMARY" for the primary key; empty where the text has none
  std::string text;  // as written, from the name or the kind's word, without the comma; line ends inside are blanks
  bool generated{};  // a key that a foreign key has brought along
};

struct TTableOption {
  std::string name;   // upper case, one blank between words: "ENGINE", "DEFAULT CHARSET", "COMMENT"; CHARACTER SET is
                      // CHARSET, and CHARSET and COLLATE come as "DEFAULT CHARSET" and "COLLATE"
  std::string value;  // as written, quotes included
};

struct TTableText {
  std::string name;                // without quotes and without a database
  std::vector<TElement> elements;  // in order
  std::vector<TTableOption> options;
  std::string partitioning;  // from "PARTITION BY", without the marks of a version comment; empty for none
  bool temporary = false;
  bool system_versioned = false;

  const TElement* Find(EElement kind, std::string_view name) const;  // names of columns and keys ignore case
  const TTableOption* FindOption(std::string_view name) const;
};

// Reads what a server's "show create table" gives, or a "create table" statement of a dump. Raises "line %d: ..." with
// what was expected and what was found. Bounded in time and memory by the text's length.
TTableText ReadTableText(std::string_view ddl);

// The creation text again, one element a line. `without_foreign_keys` leaves these out.
std::string CreationTextOf(const TTableText& table, bool without_foreign_keys = false);

// The columns of a key element, in order, without lengths and directions; of an expression part the empty text.
std::vector<std::string> KeyColumns(const TElement& key);
// A foreign key's own columns, the referenced table (empty database when it is the same one) and its columns.
struct TForeignKeyParts {
  std::vector<std::string> columns;
  std::string database;
  std::string table;
  std::vector<std::string> references;
};
TForeignKeyParts ForeignKeyParts(const TElement& key);

}  // namespace velmora
