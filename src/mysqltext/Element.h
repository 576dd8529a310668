// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What a table is made of: columns, keys and constraints, each with its own text and what is read of it.

#include <memory>
#include <string>
#include <vector>

#include "mysqltext/Lexer.h"

namespace velmora {

enum class EElement { Column, PrimaryKey, UniqueKey, Key, FulltextKey, SpatialKey, ForeignKey, Check, Period, Other };

bool IsKey(EElement kind);  // keys of any kind, the primary one included; not foreign keys

// A part of a key: a column, or the leading `length` letters of one, or an expression, whose `column` is empty.
struct TKeyPart {
  std::string column;
  long long length = 0;  // 0 for the whole column
  std::string text;      // as written
};

// A foreign key's own columns, the referenced table (empty database when it is the same one) and its columns.
struct TForeignKeyParts {
  std::vector<std::string> columns;
  std::string database;
  std::string table;
  std::vector<std::string> references;
  std::size_t rules = 0;  // the first token after these
};

struct TColumnParts;  // in ColumnParts.h

// The text of an element and what it says, which is read at first need and once. It never changes: an element whose
// text changes is given another one, so that nothing which was read can be of a former text. Copies share both.
class TElementText {
 public:
  TElementText() = default;
  TElementText(std::string text);  // NOLINT(google-explicit-constructor): an element is written with a plain text
  // The part of a longer text from the first of its `tokens` to the last, which need not be read again.
  TElementText(std::string_view source, TTokens tokens);

  const std::string& Str() const;
  bool Empty() const { return Str().empty(); }
  bool operator==(const TElementText& other) const { return own_ == other.own_ || Str() == other.Str(); }

  // What is read lives as long as a copy of this text, or until Forget. Raises as Tokens(text) does.
  TTokens Tokens() const;                         // without End
  std::string Part(TTokenRange range) const;      // what these tokens say, as TextOf gives it
  std::size_t Body() const;                       // the first token after kind and name
  const TColumnParts& Column() const;             // of a column
  const std::vector<TKeyPart>& KeyParts() const;  // of a key
  const TForeignKeyParts& ForeignKey() const;     // of a foreign key

  // Gives back the memory of what was read; it is read again at the next need.
  void Forget() const;

 private:
  struct TReading;
  struct TOwn;
  TReading& Reading() const;

  std::shared_ptr<const TOwn> own_;  // null for the empty text
};

struct TElement {
  EElement kind = EElement::Column;
  std::string name;   // without quotes; "PRIMARY" for the primary key; empty where the text has none
  TElementText text;  // as written, from the name or the kind's word, without the comma; line ends inside are blanks
  bool generated{};   // a key that a foreign key has brought along
};

}  // namespace velmora
