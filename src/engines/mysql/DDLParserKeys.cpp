// SPDX-License-Identifier: GPL-3.0-or-later

// The key and constraint clauses of the DDL parser.

#include "engines/mysql/DDLParser.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Lists.h"
#include "util/Text.h"

namespace velmora {
namespace {

constexpr char kKeyDropExpected[] = "DROP: PRIMARY KEY, DROP KEY/INDEX expected, but %s found.";
constexpr char kNoTableForKey[] = "Can't add key into undefined table ";
constexpr char kInvalidForeignKey[] = "Invalid foreign key definition.";
constexpr char kUnequalFieldLists[] = "Invalid foreign key field list: %s(%s)->%s(%s)";

std::string WithoutTicks(std::string_view name) { return RemoveChar(name, '`'); }

std::string Joined(const std::vector<std::string_view>& items) {
  return JoinList(TStringList(items.begin(), items.end()), ",");
}

}  // namespace

void TDDLParser::ReadKeyClause() {
  if (LastWord() == "drop") {
    DropKey();
  } else if (PeekWord().In({"constraint", "foreign"})) {
    ReadConstraint();
  } else {
    const TKeyHead key = ReadKeyHead();
    Expect("(");
    ReadBracketList(items_);
    CutPrefixLength();
    AddKey(key);
  }
}

// Deliberate: foreign keys are not dropped by this, "drop foreign key" is refused.
void TDDLParser::DropKey() {
  SkipIf("unique");
  SkipIf("fulltext");
  const TWord what = NextWord();
  std::string name;
  if (what == "key" || what == "index") {
    NextWord();
    name = WithoutTicks(word_);
  } else if (what == "primary") {
    Expect("key");
    name = kPrimaryKeyName;
  } else {
    RaiseError(Format(kKeyDropExpected, word_));
  }
  std::string discarded;
  meta_.DropKeySQL(CurrentTable(), name, discarded);
}

// What stands before the columns. The table is named before the key's name or, as in CREATE INDEX, after it.
TDDLParser::TKeyHead TDDLParser::ReadKeyHead() {
  TKeyHead key;
  ReadKeyKind(key);
  ReadKeyTable();
  if (PeekWord() != "(") {
    NextName();
    key.name = word_;
  } else if (key.primary) {
    key.name = kPrimaryKeyName;
  }
  ReadKeyTable();
  return key;
}

void TDDLParser::ReadKeyKind(TKeyHead& key) {
  const TWord kind = NextWord();
  if (kind == "primary") {
    key.primary = key.unique = true;
    Expect("key");
    return;
  }
  key.unique = kind == "unique";
  key.fulltext = kind == "fulltext";
  if ((key.unique || key.fulltext) && PeekWord().In({"key", "index"})) NextWord();
}

void TDDLParser::ReadKeyTable() {
  if (PeekWord() != "on") return;
  NextWord();
  NextWord();
  if (!FindTable()) RaiseError(kNoTableForKey + std::string(word_));
}

// Deliberate: a prefix length is known for a key of one column only. With more columns the ")" of the first length has
// ended the list, and what follows is left in the text for whoever stumbles over it.
void TDDLParser::CutPrefixLength() {
  if (items_.items.size() != 1) return;
  std::string_view& column = items_.items.front();
  const std::size_t open = column.find('(');
  if (open == std::string_view::npos) return;
  column = column.substr(0, open);
  ++pos_;
}

void TDDLParser::AddKey(const TKeyHead& key) {
  TKeyRow& row = meta_.tKeys.Append();
  row.name = WithoutTicks(key.name);
  row.primary = key.primary;
  row.unique = key.unique;
  row.fulltext = key.fulltext;
  meta_.tKeys.Post();
  for (std::string_view column : items_.items) {
    meta_.tKeyFields.Append().column = column;
    meta_.tKeyFields.Post();
  }
}

// The row is there from the start and fills as the clause is read; an error leaves it as far as it got.
void TDDLParser::ReadConstraint() {
  meta_.tConstraints.Append().constraint_type = kForeignKeyConstraint;
  std::string_view name;
  if (PeekWord() == "constraint") {
    NextWord();
    if (PeekWord() != "foreign") {
      NextName();
      name = word_;
    }
  }
  meta_.tConstraints.Edit().name = WithoutTicks(name);
  Expect("foreign");
  if (!NextWord().In({"key", "index"})) RaiseError(kInvalidForeignKey);
  Expect("(");
  ReadBracketList(items_);
  Expect("references");
  NextWord();
  meta_.tConstraints.Edit().foreign_table = WithoutTicks(word_);
  Expect("(");
  ReadBracketList(foreign_items_);
  AddConstraintFields();
  ReadRules();
  meta_.tConstraints.Post();
}

void TDDLParser::AddConstraintFields() {
  const auto& local = items_.items;
  const auto& foreign = foreign_items_.items;
  if (local.size() != foreign.size()) {
    const std::string& table = meta_.tConstraints.Current().foreign_table;
    RaiseError(Format(kUnequalFieldLists, table, Joined(foreign), CurrentTable(), Joined(local)));
  }
  for (std::size_t i = 0; i < local.size(); ++i) {
    TConstraintFieldRow& row = meta_.tConstraintFields.Append();
    row.foreign_column = foreign[i];
    row.local_column = local[i];
    meta_.tConstraintFields.Post();
  }
}

// Deliberate: a word must follow, so a foreign key is never the last thing in a text.
void TDDLParser::ReadRules() {
  while (PeekWord() == "on") {
    NextWord();
    const TWord event = NextWord();
    std::string action = LowerText(NextWord().text);
    if (action == "set" || action == "no") action.append(" ").append(LowerText(NextWord().text));
    TConstraintRow& row = meta_.tConstraints.Edit();
    if (event == "delete")
      row.delete_rule = action;
    else if (event == "update")
      row.update_rule = action;
    else
      UnexpectedToken();
  }
}

}  // namespace velmora
