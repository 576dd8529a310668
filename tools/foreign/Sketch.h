// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Structures of sources that are not MySQL, drawn at random: names, types, keys and references, as far as an engine has
// them.

#include <optional>
#include <string>
#include <vector>

#include "Random.h"
#include "util/Lists.h"

namespace velmora::testing {

// What a column of a type holds at most, as MySQL writes it; the target has to take it.
enum class EMost { Literal, Digits, Letters, PlainLetters, Bytes };

struct TSketchType {
  const char* word;                         // of the source, with a "%d" for each size
  int code = 0;                             // of the source, where it has one
  int first = 0, last = 0, most_scale = 0;  // sizes that are drawn; of digits also those behind the point
  EMost most = EMost::Literal;
  const char* literal = "null";
  std::vector<const char*> defaults{};
  std::vector<const char*> checks{};  // "#" stands for the column
  bool keyed = false;                 // keys may be over it
  bool counts = false;                // may count
};

struct TSketchColumn {
  std::string name;
  const TSketchType* type = nullptr;
  int size = 0, scale = 0;
  bool not_null = false;
  bool counts = false;
  bool small = false;  // counts, or refers to what does: no value is near the type's end
  std::optional<std::string> default_text{}, check{};
  std::string comment{};

  std::string Word() const;  // the type with its sizes
  std::string Most() const;  // in MySQL's language
};

enum class ESketchKey { Primary, Unique, Plain };

struct TSketchKey {
  std::string name;
  ESketchKey kind = ESketchKey::Plain;
  std::vector<std::size_t> columns;
  std::vector<bool> descending;
};

struct TSketchReference {
  std::string name;
  std::vector<std::size_t> columns;
  std::size_t table = 0;
  std::vector<std::size_t> references;           // the columns of a primary or unique key
  std::size_t delete_rule = 0, update_rule = 0;  // places in the dialect's lists
};

struct TSketchTable {
  std::string name;
  std::string comment{};
  std::vector<TSketchColumn> columns{};
  std::vector<TSketchKey> keys{};  // the primary one first
  std::vector<TSketchReference> references{};
  // Of sources whose values say what the types are: a row has a value for each column, as the source and as MySQL
  // writes it.
  std::vector<std::vector<std::pair<std::string, std::string>>> rows{};
};
using TSketch = std::vector<TSketchTable>;

// Of the longest names.
struct TNameBytes {
  std::size_t column = 64, table = 64, key = 64;
};

// What an engine has.
struct TSketchDialect {
  std::vector<TSketchType> types;
  bool columns_alone = false;  // it has no keys, references, nulls, defaults, comments and checks
  TNameBytes names{};
  const char* refused = "";       // letters that its names do not take
  const char* letters = nullptr;  // all that they are made of; nothing for any
  bool end_blanks = true;         // names may end in blanks
  bool case_counts = false;       // names may differ by case alone
  int most_parts = 3;             // of a key
  bool descending = true;         // parts of keys
  bool shared_names = false;      // keys and references may not have the same
  bool primary_parents = false;   // references to primary keys alone
  std::vector<const char*> refused_names{};
  bool comments = true, checks = true;
  std::vector<const char*> delete_rules{""}, update_rules{""};
  int key_size = 60;  // of letters and bytes in keys
  int most_columns = 12;
  bool shaped = true;                       // what comes of it has the columns that were drawn
  std::vector<const char*> without_form{};  // parts of what is told of elements that MySQL has no form for
};

TSketch DrawSketch(const TSketchDialect& dialect, TRandom& random);

// What MySQL has to show of it: for each table its columns in order and those that may not be null, the primary key,
// the references; sorted, without names.
TStringList ShapeOf(const TSketch& sketch, const TSketchDialect& dialect);

}  // namespace velmora::testing
