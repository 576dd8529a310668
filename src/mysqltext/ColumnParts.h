// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A column's text as attributes, whatever order they are written in.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "mysqltext/KeyText.h"

namespace velmora {

struct TColumnParts {
  std::string name;
  std::string type;         // lower case, synonyms resolved
  TTokenRange arguments;    // between the brackets of the type
  bool is_boolean = false;  // written as bool: tinyint(1)
  bool is_unsigned = false;
  bool zerofill = false;
  bool null = false;  // said in so many words
  bool not_null = false;
  bool auto_increment = false;
  bool invisible = false;
  bool stored = false;
  std::optional<TTokenRange> default_value;
  std::optional<TTokenRange> on_update;
  std::optional<TTokenRange> generated;  // without the outer brackets
  std::optional<TTokenRange> check;      // the same
  std::optional<std::size_t> comment;    // its token
  std::string charset;                   // the text's own, as TCharset has them; empty for none
  std::string collation;
  std::vector<TTokenRange> rest;  // everything else, in order
};

// `tokens` are those of a column element, without End.
TColumnParts ReadColumnParts(TTokens tokens);

bool IsLetterType(std::string_view type);  // char, varchar, the text types, enum, set
bool IsByteType(std::string_view type);    // binary, varbinary, the blob types
bool IsWholeType(std::string_view type);   // tinyint to bigint
bool IsNumberType(std::string_view type);  // these, decimal, float, double
bool IsTimeType(std::string_view type);    // with a fraction: time, datetime, timestamp
bool IsShapeType(std::string_view type);   // geometry and its kinds

}  // namespace velmora
