// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// A creation text of a view, trigger, procedure, function or event, taken apart as far as comparing it and writing it
// anew need. The grammar is that of "show create ..." and of dumps: MySQL Reference Manual and MariaDB Documentation,
// "CREATE VIEW", "CREATE TRIGGER", "CREATE PROCEDURE and CREATE FUNCTION", "CREATE EVENT".

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "mysqltext/Lexer.h"

namespace velmora {

// What an object consists of, by name: "query", "body", "sql security", ...
struct TObjectElement {
  std::string name;
  std::string text;  // what it says, in a spelling of its own; of a body its text as written, with LF for line ends
  bool operator==(const TObjectElement&) const = default;
};

// What the text is written anew with.
struct TObjectSpelling {
  std::string definer;  // "user@host"; empty: the text names none, so that who runs it becomes the definer
  bool or_replace = false;
  std::string order{};   // of a trigger: "follows `t`", "precedes `t`"; empty for none
  bool says_not = true;  // false for an event: without "not preserve", which is as it is where nothing is said
  std::string starts{};  // of a repeated event: "starts '...'" in place of what its text says
};

// What a result's type says of its letters. A text may be silent of it: then it is what the database has.
inline constexpr char kResultLetters[] = "character set of the result";
inline constexpr char kViewQuery[] = "query";

struct TObjectText {
  std::string kind;  // "view", "trigger", "procedure", "function", "event"
  std::string name;
  std::string definer;  // "user@host" or a role; empty where the text names none
  std::string table;    // of a trigger
  std::string moment;   // of a trigger: "before insert"
  std::string order;    // of a trigger: "follows `t`" where the text says so
  // In a fixed order; what is as it is where the text says nothing is left out.
  std::vector<TObjectElement> elements;

  const TObjectElement* Find(std::string_view element) const;  // null for none
  // Its creation text: names in backticks where it had them, without the own database.
  std::string Creation(const TObjectSpelling& spelling) const;
  // What stands between the word for the kind, or the name, and the body; written as it was.
  std::string algorithm;  // of a view: "algorithm = merge"; of a function "aggregate"
  std::string security;   // of a view: "sql security invoker"
  std::string header;     // after the name, up to the body or query; of a trigger nothing, which has table and moment
  std::string body;       // with LF for line ends
  // Of a view: the names that it gives its columns, if it does, and its query without a check option.
  std::vector<std::string> columns{};
  std::string query{};
  // Of an event, whose header has these in turn.
  std::string interval{};
  std::string starts{};
  std::string start{};  // the moment that this names, as servers print it; empty for none, and where it is computed
  std::string ends{};
  std::string completion{};
  std::string rest{};  // all else that it says of itself, and "do"
};

// `database` is the own one, whose name before others is left out; empty where nobody knows it. Raises "line %d: ..."
// for what is none of these, and for what cannot be followed. `quotes_names`: names may stand in double quotes.
TObjectText ReadObjectText(std::string_view text, const std::string& database, bool quotes_names = false);

// Tokens of the text, with those in double quotes as names if names may stand there.
std::vector<TToken> TokensByMode(std::string_view text, bool quotes_names);

// What a text of any other kind says, definers included, in a spelling of its own. Raises as the lexer does.
std::string PlainMeaning(std::string_view text, const std::string& database);

// The text without this database before names of it; what may be a column of something that has the database's name
// stays.
std::string WithoutDatabase(std::string_view text, TTokens tokens, TTokenRange range, const std::string& database);

}  // namespace velmora
