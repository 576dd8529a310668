// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What a column of a source is in MySQL, and which other types of a target count as equal: those that hold every value
// of the source, of the same family.

#include <string>
#include <unordered_map>

#include "exact/run/TextMaker.h"
#include "foreign/Facts.h"
#include "foreign/ForeignWishes.h"
#include "foreign/TargetServer.h"
#include "mysqltext/ColumnType.h"

namespace velmora {

// What MySQL says of a type alone, as in "decimal(10,2) unsigned".
TColumnText ReadType(const std::string& type);

// The same of the many columns of a schema, which have few types.
class TTypeReader {
 public:
  const TColumnText& operator()(const std::string& type);  // lasts as long as this object

 private:
  std::unordered_map<std::string, TColumnText> read_;
};

struct TMapContext {
  TTargetServer server{};
  TForeignWishes wishes{};
  mutable TTypeReader read_type{};
};

// MySQL's type of a column, with what the user should know of it. Refused ones have none.
struct TMappedType {
  std::string type{};
  EMadeLevel level = EMadeLevel::Info;
  std::string text{};
  std::string rule{};  // the left side of the user's own, beside whose type no other counts; empty for none

  bool ByRule() const { return !rule.empty(); }
};

// The type in the source's words: "NUMBER(10,2)", "nvarchar(40)".
std::string NativeText(const TForeignColumn& column);

// By what a rule of the user may mean the column: by its places, "TABLE.COLUMN", then its type with a size, then the
// type.
TStringList RuleNames(const TForeignColumn& column, const TStringList& places);
// `names`: these. Counting columns get a type that can count.
TMappedType MapType(const TForeignColumn& column, const TStringList& names, const TMapContext& context);
// Of letters or bytes that find no room in their row: the text or blob type that takes as many.
TMappedType MapOutOfRow(const TForeignColumn& column);

// Whether two columns have the same type, whatever the width that they are shown in.
bool SameType(const TColumnText& a, const TColumnText& b);
// Whether the target's type counts as equal to the one that the column is mapped to, though it is another one.
bool HoldsAll(const TForeignColumn& column, const TColumnText& there, const TMapContext& context);

}  // namespace velmora
