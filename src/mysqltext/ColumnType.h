// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A column's own text taken apart as far as safety and equivalence need it.

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "mysqltext/Charsets.h"
#include "mysqltext/TableText.h"

namespace velmora {

struct TColumnText {
  std::string name;
  std::string type;                    // lower case, synonyms resolved: "int", "varchar", "double", "enum", ...
  std::vector<std::string> arguments;  // numbers as written; members of enum and set without quotes
  bool is_unsigned = false;
  bool zerofill = false;
  bool not_null = false;
  bool auto_increment = false;
  bool invisible = false;
  std::optional<std::string> default_text;  // as written
  std::optional<std::string> generated;     // the expression, as written, without its outer brackets
  bool stored = false;
  TCharset charset;  // effective, for types that have letters; empty otherwise

  bool HasLetters() const;  // char, varchar, the text types, enum, set
  bool IsNumber() const;
  std::optional<long long> Length() const;    // the first argument, as a number; one too large for servers is less
  std::optional<long long> Fraction() const;  // the second one; of a time type the first
};

// A type of letters without a length of their own, the type of bytes that is its like, and the bytes that either takes.
struct TSizedType {
  std::string_view text;
  std::string_view blob;
  long long bytes;
};
inline constexpr std::array<TSizedType, 4> kSizedTypes = {{{"tinytext", "tinyblob", 255},
                                                           {"text", "blob", 65535},
                                                           {"mediumtext", "mediumblob", 16777215},
                                                           {"longtext", "longblob", 4294967295}}};
const TSizedType* SizedText(std::string_view type);  // null for other types
const TSizedType* SizedBlob(std::string_view type);

// Of a column's text; the table is the one that it stands in.
TColumnText ReadColumnText(const TElementText& column, const TTableText& table);
TColumnText ReadColumnText(const TElementText& column, const TCharset& of_table);

// Whether servers turn a column of the one type into one of the other; of some pairs they refuse that even for a table
// without rows.
bool Converts(const TColumnText& from, const TColumnText& to);

}  // namespace velmora
