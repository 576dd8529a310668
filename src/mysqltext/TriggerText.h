// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// Triggers of a script: on which tables they fire, and in which order.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/CreationTexts.h"
#include "mysqltext/Lexer.h"

namespace velmora {

// What the text of a trigger says before its body.
struct TTriggerHead {
  std::string table;            // without a database
  std::size_t table_start = 0;  // in the text, with its database
  std::size_t table_end = 0;
  std::string moment;   // "before insert"
  std::string order{};  // "follows", "precedes"; empty where it says nothing
  std::string other{};  // the trigger that it names with that
};
std::optional<TTriggerHead> ReadTriggerHead(std::string_view text);  // nothing for what is none

// What a statement makes of a table that is there: it goes, with its triggers, or gets another name.
struct TTableFate {
  std::string database;  // empty where the statement names none
  std::string table;
  std::string renamed{};  // empty: it goes
};
std::vector<TTableFate> FatesOfTables(std::string_view statement);
// The text of a trigger whose table has another name now.
std::string MovedTrigger(std::string_view text, const TTriggerHead& head, const std::string& table);

// The token after a name, whose last part it gives; nothing for what is no name.
std::optional<std::size_t> AfterName(TTokens tokens, std::size_t at, std::string& name);

// Gives each trigger its place among those that fire with it. What `follows` and `precedes` say counts wherever they
// stand: files of a folder come in the order of their names. One that no order lets stand beside the other that it
// names, as that is nowhere or waits for it in turn, loses its text, with the reason, as servers refuse it.
void PlaceTriggers(std::vector<TOtherObject>& objects);

}  // namespace velmora
