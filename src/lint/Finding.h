// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What a look at a structure found.

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "mysqltext/Element.h"

namespace velmora {

// The least first.
enum class ESeverity { Off, Note, Warning, Error };
inline constexpr std::size_t kSeverityCount = 4;
std::string_view SeverityWord(ESeverity severity);  // "off", "note", "warning", "error"

struct TSourceLine {
  std::string file;
  std::size_t line = 0;  // from 1; 0 for what stands in no file
};

struct TFinding {
  std::string rule;  // its id
  ESeverity severity = ESeverity::Note;
  std::string table;                 // empty for the database as a whole
  EElement kind = EElement::Other;   // of the element; Other for the table itself
  std::string element;               // empty for the table itself, and for one without a name
  std::vector<std::string> columns;  // of the element, where it is a key or a foreign key
  std::string text;                  // a sentence
  std::string advice;                // what to do, a sentence
  TSourceLine place;
};

std::string_view ElementWord(EElement kind);  // "column", "index", "foreign key"; "table" for Other
std::string NameOf(const TFinding& finding);  // "orders.ix_a", "orders", empty for the database

}  // namespace velmora
