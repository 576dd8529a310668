// SPDX-License-Identifier: GPL-3.0-or-later
#include "engines/mysql/DDLParser.h"

#include "core/DBConn.h"
#include "util/Errors.h"
#include "util/Text.h"

namespace velmora {
namespace {

constexpr char kCommentOpen[] = "/*";
constexpr char kCommentClose[] = "*/";

constexpr char kCannotAlter[] = "Can't alter undefined table ";
constexpr char kCannotDrop[] = "Can't drop undefined table ";

}  // namespace

TDDLParser::TDDLParser(TDBConn& engine) : engine_(engine), meta_(engine.meta()) {}

// Each round reads one statement or one further clause. Deliberate: the clauses of a CREATE TABLE come back to the top
// after each comma, so a clause that begins with "create", "alter" or "drop" is read as a statement, and after a comma
// in an ALTER TABLE "add" is the name of a column.
void TDDLParser::Parse(std::string_view sql) {
  RemoveComments(sql);
  for (;;) {
    while (!AtEnd() && PeekWord() == ";") NextWord();
    if (AtEnd()) return;
    if (!ReadStatementHead()) continue;
    ReadClause();
    if (AtEnd()) return;
    EndClause();
  }
}

// Deliberate: only these comments are known, "--" and "#" are words like others; and a mark inside a literal counts.
void TDDLParser::RemoveComments(std::string_view sql) {
  text_ = sql;
  if (Pos(kCommentOpen, sql) != 0) {
    stripped_ = sql;
    StripBetween(stripped_, kCommentOpen, kCommentClose);
    text_ = stripped_;
  }
  pos_ = 1;
  peeked_ = 0;
  quotes_ = TQuoteCounter(text_);
}

bool TDDLParser::ReadStatementHead() {
  const TWord word = PeekWord();
  if (word == "create") return ReadCreate();
  if (word == "alter") return ReadAlter();
  if (word != "drop") return true;
  ReadDrop();
  return false;
}

bool TDDLParser::ReadCreate() {
  Expect("create");
  const TWord what = NextWord();
  if (what == "table") {
    if (PeekWord() == "if") {
      NextWord();
      Expect("not");
      Expect("exists");
    }
    NextName();
    AddTable();
    Expect("(");
  } else if (what.In({"unique", "fulltext", "index"})) {
    pos_ -= word_.size();
  }
  return true;  // any other word is dropped
}

// Deliberate: backticks stay in the table's name here and in ReadDrop, so a table is altered and dropped by its bare
// name only; and the table type is "type" alone, "engine" is refused.
bool TDDLParser::ReadAlter() {
  Expect("alter");
  Expect("table");
  NextWord();
  if (!FindTable()) RaiseError(kCannotAlter + std::string(word_));
  if (PeekWord() == "type") {
    NextWord();
    SetTableType();
    return false;
  }
  ExpectAny({"add", "change", "modify", "drop"});
  return true;
}

void TDDLParser::ReadDrop() {
  Expect("drop");
  Expect("table");
  NextWord();
  if (!FindTable()) RaiseError(kCannotDrop + std::string(word_));
  std::string discarded;
  meta_.DropTableSQL(std::string(word_), discarded);
}

void TDDLParser::ReadClause() {
  if (PeekWord().In({"unique", "constraint", "foreign", "fulltext", "key", "primary", "index"}))
    ReadKeyClause();
  else
    ReadColumnClause();
}

void TDDLParser::EndClause() {
  if (PeekWord() != ")") {
    ExpectAny({";", ","});
    return;
  }
  NextWord();
  if (!PeekWord().In({"engine", "type"})) return;
  NextWord();
  SetTableType();
  SkipTableOptions();
}

// Deliberate: an existing table gives way, also where the statement says "if not exists".
void TDDLParser::AddTable() {
  if (FindTable()) {
    std::string discarded;
    meta_.DropTableSQL(std::string(word_), discarded);
  }
  meta_.tTables.Append().name = word_;
  meta_.tTables.Post();
}

void TDDLParser::SetTableType() {
  Expect("=");
  NextWord();
  if (!meta_.tTables.HasCurrent()) return;  // a stray end of a CREATE TABLE in an empty store
  meta_.tTables.Edit().type = word_;
  meta_.tTables.Post();
}

// On to what follows the next ";" that ends a statement: one inside a literal, as in a table comment, ends nothing.
void TDDLParser::SkipTableOptions() {
  std::size_t at = Pos(";", text_, pos_);
  while (at != 0 && quotes_.InQuotes(at)) at = Pos(";", text_, at + 1);
  pos_ = at == 0 ? text_.size() + 1 : at + 1;
}

bool TDDLParser::FindTable() { return meta_.FindTable(word_); }

std::string TDDLParser::CurrentTable() const {
  return meta_.tTables.HasCurrent() ? meta_.tTables.Current().name : std::string();
}

}  // namespace velmora
