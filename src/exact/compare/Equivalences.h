// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What two creation texts may spell differently and mean the same, one row of data each.

#include <array>
#include <span>
#include <string>
#include <string_view>

#include "mysqltext/Charsets.h"
#include "mysqltext/TableText.h"

namespace velmora {

enum class EEquivalence {
  AutoIncrement,     // the counter's AUTO_INCREMENT=N among the options
  DisplayWidth,      // int(11) and int; not tinyint(1), and nothing with zerofill
  InheritedCharset,  // a charset or collation that is the one of the table, or the charset's own collation
  QuotedNumber,      // default '0' and default 0 of a number column
  CurrentTimestamp,  // current_timestamp, current_timestamp(), now(), localtime: with the same fraction
  UsingBtree,        // using btree, which is the engine's own
  NoAction,          // on delete/update restrict, no action, or nothing
  OptionOrder,       // the order of table options
  KeyOrder,          // the order of keys, checks and foreign keys; counted once a table, whether it is on or not
  GeneratedKey,      // a primary key that a server made by itself where the other table has none; once a table
  CopiedName,        // underscores that a tool for large tables has put before the name of a constraint
  LiteralCollation,  // the collation under which an object was made that holds texts; once an object
  // Not taken as equal unless it is switched on.
  ColumnOrder,  // the order of columns; once a table
  Comments,     // of tables, columns and keys
  Partitions,   // by what a table is partitioned, or whether
  Charset,      // character sets and collations of tables and columns
  kCount
};
inline constexpr int kEquivalenceCount = static_cast<int>(EEquivalence::kCount);

struct TEquivalence {
  EEquivalence id;
  std::string_view name;  // as the log shows it and a switch names it: "auto-increment", "display-width", ...
  std::string_view help;
  bool on = true;       // at first
  bool follows = true;  // what differs can be changed; the order of keys and options is none that a statement sets
};
std::span<const TEquivalence, kEquivalenceCount> Equivalences();

// Null for a name that none of them has; letter case does not count.
const TEquivalence* FindEquivalence(std::string_view name);

// Which of them count, at first those of the table that do, and how often each made two texts equal that are written
// differently.
class TEquivalenceUse {
 public:
  TEquivalenceUse();
  void Switch(EEquivalence id, bool on) { on_[static_cast<std::size_t>(id)] = on; }
  bool On(EEquivalence id) const { return on_[static_cast<std::size_t>(id)]; }
  int Count(EEquivalence id) const { return counts_[static_cast<std::size_t>(id)]; }
  void Add(EEquivalence id) { ++counts_[static_cast<std::size_t>(id)]; }
  void ResetCounts() { counts_.fill(0); }

 private:
  std::array<bool, kEquivalenceCount> on_{};
  std::array<int, kEquivalenceCount> counts_{};
};

// Whether the partitioning of two tables means the same.
bool SamePartitioning(const TTableText& a, const TTableText& b, TEquivalenceUse& use);

// What a table hands down to elements whose own text is silent.
struct TInheritance {
  TCharset charset;
  std::string key_block_size;  // empty for the engine's own
  bool btree_is_own = true;    // the engine makes btree keys where a text says nothing
};
TInheritance InheritanceOf(const TTableText& table);

// Elements of two tables. What made them equal is counted in `use`, which outlives this object.
class TElementComparison {
 public:
  TElementComparison(const TTableText& a, const TTableText& b, TEquivalenceUse& use)
      : a_(InheritanceOf(a)), b_(InheritanceOf(b)), use_(use) {
    // What a key of the one engine says means something else to the other.
    a_.btree_is_own = b_.btree_is_own = a_.btree_is_own && b_.btree_is_own;
  }
  // Whether two elements of the same kind mean the same in their tables, the first in the one, the second in the other.
  // Letter case of keywords, white space, quoting of names and the form of quotes never count.
  bool Same(const TElement& in_a, const TElement& in_b);

 private:
  bool InheritTheSame(EElement kind) const;

  TInheritance a_;
  TInheritance b_;
  TEquivalenceUse& use_;
};

}  // namespace velmora
