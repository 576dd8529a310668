// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What columns, expressions and parts of keys will hold in the rows that are there, in words of a query on these.

#include <string>
#include <vector>

#include "exact/compare/Changes.h"
#include "mysqltext/ColumnType.h"
#include "mysqltext/KeyText.h"
#include "mysqltext/Lexer.h"

namespace velmora {

// A column's value in the rows that are there, as the run will have made it.
struct TRowValue {
  enum class EKind { Stored, Constant, Null, Numbered, Unknown };
  EKind kind = EKind::Stored;
  std::string sql;  // of Stored and Constant; empty for a constant that is not written anywhere
  std::string why;  // of Unknown
};

// A table that stays, and what happens to it.
struct TTableRows {
  const TTableText* reference = nullptr;
  const TTableText* target = nullptr;
  std::vector<const TChange*> changes;
  std::size_t statements = 0;               // of the plan
  bool key_first = false;                   // the first of them adds the primary key
  bool unpartitioned = false;               // one of them takes all partitions away
  bool checked = false;                     // one of them adds foreign keys that are checked
  std::vector<const TElement*> put_back{};  // foreign keys that go for a while

  // That makes or modifies the column; null for none.
  const TChange* ColumnChange(const std::string& column) const;
};

TRowValue ValueOfColumn(const TTableRows& table, const std::string& column, int depth = 0);

// The text of these tokens with the columns as they will be, in brackets; or it is unknown.
TRowValue ValueOfTokens(const TTableRows& table, TTokens tokens, TTokenRange range, int depth = 0);

TRowValue ValueOfPart(const TTableRows& table, const TKeyPart& part);

// Whether the part of a key that stays will hold other values than now, or compare them otherwise.
bool HoldsOthers(const TTableRows& table, const TKeyPart& part);

// Why nothing is known of the column.
std::string WhyUnknown(const TRowValue& value, const std::string& column);

}  // namespace velmora
