// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A table's creation text taken apart without loss: elements, options and partitioning keep their own texts.

#include <string>
#include <string_view>
#include <vector>

#include "mysqltext/Element.h"

namespace velmora {

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
  void ForgetReadings() const;  // as TElementText has it, of all elements
};

// Reads what a server's "show create table" gives, or a "create table" statement of a dump. Raises "line %d: ..." with
// what was expected and what was found. Bounded in time and memory by the text's length.
TTableText ReadTableText(std::string_view ddl);
TTableText ReadTableText(std::string_view ddl, TTokens tokens);  // which are those of the text

// Every text in double quotes as a name in backticks, as where a setting makes them quotes of names; lines stay.
std::string WithBackticks(std::string_view text, TTokens tokens);

// The creation text again, one element a line. `without_foreign_keys` leaves these out.
std::string CreationTextOf(const TTableText& table, bool without_foreign_keys = false);

}  // namespace velmora
