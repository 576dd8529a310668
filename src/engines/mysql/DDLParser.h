// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// TDDLParser: applies a text of MySQL statements to the structure store of an engine, as a server would apply it to its
// catalogue.
//
// This is no SQL parser. It recognises what the server prints for "show create table" and what this program generates:
// CREATE TABLE, CREATE INDEX, ALTER TABLE with one clause, DROP TABLE. It passes over what it doesn't know inside a
// column definition and is strict wherever structure depends on it. Its limits are part of what it is: the comparison
// relies on it taking exactly this dialect, so none of them is to be mended on its own.

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "core/Meta.h"
#include "util/Text.h"
#include "util/Words.h"

namespace velmora {

// One object per text; its engine must outlive it. It works on the store's cursors: clauses land in the table that the
// last CREATE TABLE, ALTER TABLE or CREATE INDEX made current, which is the current one when Parse ends.
class TDDLParser {
 public:
  explicit TDDLParser(TDBConn& engine);
  TDDLParser(const TDDLParser&) = delete;
  TDDLParser& operator=(const TDDLParser&) = delete;

  // Callers pass trimmed text: white space after the last ";" is refused. Raises EVelmora at the first offence, with
  // the store as far as it got; offsets in messages count bytes from 1 in the text without its comments. Runs in time
  // linear in the text.
  void Parse(std::string_view sql);

 private:
  // A word as it stands in the text; its case plays no part in comparisons.
  struct TWord {
    std::string_view text;
    bool operator==(std::string_view keyword) const { return SameText(text, keyword); }
    bool In(std::initializer_list<std::string_view> keywords) const {
      return std::any_of(keywords.begin(), keywords.end(), [this](std::string_view each) { return *this == each; });
    }
  };
  // The items between brackets; they point into `text`.
  struct TBracketList {
    std::string text;
    std::vector<std::string_view> items;
  };
  struct TKeyHead {
    std::string_view name;
    bool primary = false;
    bool unique = false;
    bool fulltext = false;
  };

  // --- Tokens, on the state below; see DDLParserTokens.cpp
  bool TokNext(bool in_quotes);  // takes a word; false at the end of the text
  TWord NextWord();              // takes a word; raises at the end of the text
  TWord PeekWord();              // the same, but takes only the white space before the word
  TWord LastWord() const;        // the word before `pos_`
  void Expect(std::string_view keyword);
  void ExpectAny(std::initializer_list<std::string_view> keywords);
  void SkipIf(std::string_view keyword);
  void ReadUntil(std::string_view stopper);  // `word_` becomes the text up to it, `pos_` stands at it
  void NextName();                           // a name, with or without backticks, into `word_`
  void ReadBracketList(TBracketList& list);  // up to the next ")", which is taken
  [[noreturn]] void UnexpectedToken() const;
  bool AtEnd() const { return pos_ > text_.size(); }
  bool AtClauseEnd();  // the end of the text, or "," or ")" ahead

  // --- Statements
  void RemoveComments(std::string_view sql);
  bool ReadStatementHead();  // whether a clause follows
  bool ReadCreate();
  bool ReadAlter();
  void ReadDrop();
  void ReadClause();
  void EndClause();
  void AddTable();
  void SetTableType();
  void SkipTableOptions();
  bool FindTable();  // the table named by `word_`, which becomes current
  std::string CurrentTable() const;

  // --- Keys and constraints
  void ReadKeyClause();
  void DropKey();
  TKeyHead ReadKeyHead();
  void ReadKeyKind(TKeyHead& key);
  void ReadKeyTable();
  void CutPrefixLength();
  void AddKey(const TKeyHead& key);
  void ReadConstraint();
  void AddConstraintFields();
  void ReadRules();

  // --- Columns
  void ReadColumnClause();
  void DropColumn();
  void OpenColumn(bool change);
  void ReadColumnType();
  void ReadColumnSize();
  void ReadAttribute();
  void ReadDefault();
  void MoveColumn(std::string_view after);

  TDBConn& engine_;
  TMeta& meta_;

  std::string stripped_;    // holds the text when comments were taken out of it
  std::string_view text_;   // without comments
  std::size_t pos_ = 1;     // counts from 1
  std::string_view word_;   // the current word as it stands in the text
  std::size_t peeked_ = 0;  // where `word_` starts when it was only looked at; 0 when it was taken
  TQuoteCounter quotes_{std::string_view()};

  TBracketList items_, foreign_items_;
};

}  // namespace velmora
