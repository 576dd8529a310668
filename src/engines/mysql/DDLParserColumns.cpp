// SPDX-License-Identifier: GPL-3.0-or-later

// The column clause of the DDL parser. Fields are set in the row as they are read; an error leaves it as far as it got.

#include <algorithm>

#include "core/DBConn.h"
#include "engines/mysql/DDLParser.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Lists.h"
#include "util/Text.h"

namespace velmora {
namespace {

constexpr char kTooManyNumbers[] = "Expected size,precision, but %s found.";

// Cuts "." and as many "0" as the column has decimal places off the end of a number.
void CutEmptyFraction(std::string& number, std::int32_t precision) {
  const auto places = static_cast<std::size_t>(std::max(precision, 0));
  if (number.size() <= places) return;
  const std::size_t point = number.size() - places - 1;
  if (number[point] == '.' && number.find_first_not_of('0', point + 1) == std::string::npos) number.resize(point);
}

// The word after "default", as the column of this type holds it. Deliberate: <DATETIME> and <TIMESTAMP> keep the
// quotes that came with the word; other types outside the sets get a second pair around them, <DOUBLE> among them.
std::string DefaultText(std::string_view word, const TColumnRow& column) {
  std::string text(word);
  if (kNumericUnquoted.Holds(column.datatype)) std::erase_if(text, [](char c) { return c == '\'' || c == '"'; });
  if (kFractional.Holds(column.datatype))
    CutEmptyFraction(text, column.precision.value_or(0));
  else if (kCharacter.Holds(column.datatype) && (text.starts_with('\'') || text.starts_with('"')))
    text = TrimChar(text, text.front());
  if (column.datatype == ntDateTime || column.datatype == ntTimestamp) return text;
  return "'" + text + "'";
}

}  // namespace

void TDDLParser::ReadColumnClause() {
  const TWord verb = LastWord();
  SkipIf("column");
  if (verb == "drop") {
    DropColumn();
    return;
  }
  OpenColumn(verb == "change");
  ReadColumnType();
  // Deliberate: a ";" is no end here. After a bare type it is passed over like any word, and so is the next statement,
  // up to its own ";".
  for (bool first = true; !AtClauseEnd() && (first || PeekWord() != ";"); first = false) ReadAttribute();
  meta_.tColumns.Post();
}

void TDDLParser::DropColumn() {
  NextName();
  std::string discarded;
  meta_.DropColumnSQL(CurrentTable(), std::string(word_), discarded);
}

// Opens the row of the column; case counts, so a name in other letters is another column.
void TDDLParser::OpenColumn(bool change) {
  NextName();
  const std::string_view known = word_;
  if (change) NextName();
  if (meta_.tColumns.LocateExact(known))
    meta_.tColumns.Edit().name = word_;
  else
    meta_.tColumns.Append().name = word_;
}

// Deliberate: the word before the brackets decides, and the numbers stay as they were written: «int(11) unsigned» is
// an <I4> of size 11, whatever the type table makes of that.
void TDDLParser::ReadColumnType() {
  const std::string type = LowerText(NextWord().text);
  if (PeekWord() == "(") ReadColumnSize();
  TNumber length, precision, scale;
  engine_.DecodeColumn(type, 0, 0, 0, meta_.tColumns.Edit().datatype, length, precision, scale);
}

// Deliberate: items that are no numbers, as those of an enum, end the parse.
void TDDLParser::ReadColumnSize() {
  NextWord();
  ReadBracketList(items_);
  const auto& items = items_.items;
  if (items.empty()) throw EListError(0);
  TColumnRow& row = meta_.tColumns.Edit();
  row.size = StrToInt(items[0]);
  if (items.size() == 2) row.precision = StrToInt(items[1]);
  if (items.size() > 2) RaiseError(Format(kTooManyNumbers, JoinList(TStringList(items.begin(), items.end()), ",")));
}

// Words that are none of these are passed over: "unsigned", "comment" and its literal, a lone "null", "primary key"...
// Deliberate: what a changed column doesn't name keeps its old value.
void TDDLParser::ReadAttribute() {
  const TWord word = NextWord();
  if (word == "not") {
    Expect("null");
    meta_.tColumns.Edit().notnull = true;
  } else if (word == "auto_increment") {
    meta_.tColumns.Edit().autoinc = true;
  } else if (word == "default") {
    ReadDefault();
  } else if (word == "after") {
    // Deliberate: backticks and all, so the anchor is found by its bare name only.
    MoveColumn(LowerText(NextWord().text));
  } else if (word == "first") {
    MoveColumn({});
  } else if (word == "last") {
    MoveColumn(std::string(meta_.tColumns.Rows().back().name));
  }
}

void TDDLParser::ReadDefault() {
  if (NextWord() == "null") return;
  if (word_ == "'" || word_ == "\"") {
    --pos_;
    TokNext(true);
  }
  TColumnRow& row = meta_.tColumns.Edit();
  row.default_ = DefaultText(word_, row);
}

// Posts the column and moves it; attributes that follow still go to it.
void TDDLParser::MoveColumn(std::string_view after) {
  meta_.tColumns.Post();
  const auto mark = meta_.tColumns.Mark();
  meta_.MoveColumn(CurrentTable(), std::string(mark->name), std::string(after));
  meta_.tColumns.GoTo(mark);
}

}  // namespace velmora
