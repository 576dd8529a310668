// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A mapped table as creation text, and columns taken apart as far as they are put together anew.

#include <optional>
#include <string>
#include <vector>

#include "foreign/MappedSchema.h"
#include "mysqltext/Charsets.h"
#include "mysqltext/TableText.h"

namespace velmora {

// A column's attributes, each as it is written; empty for none.
struct TColumnPieces {
  std::string name{};
  std::string type{};     // with its brackets, unsigned, zerofill
  std::string of_type{};  // what only types of its kind have: COMPRESSED, SRID 4326
  std::string charset{};  // "CHARACTER SET x COLLATE y"
  bool null_word = false;
  bool not_null = false;
  std::string default_value{};
  std::string on_update{};
  bool auto_increment = false;
  std::string generated{};  // the whole of it
  std::string comment{};    // in quotes
  std::string further{};    // everything else: visibility, how the column is kept
  std::string check{};      // without its brackets

  bool operator==(const TColumnPieces&) const = default;
  std::string Text() const;
};

TColumnPieces PiecesOf(const TElement& column);       // of a column as a server prints it
TColumnPieces PiecesOf(const TMappedColumn& column);  // of one that nothing is taken over for

TElement KeyElement(const TMappedKey& key);
TElement ReferenceElement(const TMappedReference& reference);
TElement CheckElement(const TMappedCheck& check);

// The options of a new table; the collation may be empty.
std::vector<TTableOption> NewTableOptions(const TMappedTable& table, const std::string& collation);
// What new tables and columns have; the collation may be empty here, too.
TCharset NewCharset(const std::string& collation);
// What a column says whose collation is not its table's.
std::string CharsetText(const TCharset& charset);

// The creation text with the source's types at the ends of its columns' lines, as comments.
std::string ShownCreationText(const TTableText& text, const TMappedTable& table);

}  // namespace velmora
