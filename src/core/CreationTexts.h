// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "util/Lists.h"

namespace velmora {

// What a session had set when a trigger, routine or event was made: its server sets it again whenever the body runs.
struct TObjectContext {
  std::optional<std::string> sql_mode{};  // nothing where nobody knows; so are the others where they are empty
  std::string collation{};                // of the connection: that of literals
  std::string time_zone{};                // of events
  bool of_client = false;                 // no mode is said: it is what a client of the server that makes it has
};

// Where a text stands in a file.
struct TScriptPlace {
  std::string file{};
  std::size_t line = 0;  // from 1; 0 for nowhere
};

struct TOtherObject {
  std::string kind;  // "view", "sequence", "trigger", "procedure", "function", "event", ...
  std::string name;
  std::string text{};  // its creation text where it can be had, else empty
  TObjectContext context{};
  int order = 0;  // of a trigger: its place, from 1, among those of its table, time and event; 0 where nobody knows
  TScriptPlace place{};  // of its text in a script; the file is named for those of a folder alone
  // Of a repeated event: its server has written when it starts, as nobody had said so.
  bool servers_start = false;
  std::string unread{};  // of a script: why nobody can say what it makes of it, and its text is empty
};

// A statement of a script on tables, indexes or databases: create, alter, rename, drop; a setting that new tables
// follow; or what may do any of these without saying so: call, prepare, source. Its text, which the script owns, begins
// at its first word or at the mark of a version before it.
struct TStructureStatement {
  std::string_view text;
  std::size_t line = 0;       // of the file, from 1
  std::string_view database;  // that `use` has chosen; empty before any
  std::string_view file{};    // of a folder's: which of its files; else empty
};

// What stands in a script that makes a database, or in the scripts of a folder, one after the other.
struct TStructureScript {
  std::string file;      // or the folder
  std::string database;  // the one that is meant; empty where the script names none
  std::vector<TStructureStatement> statements;

  // "shop.sql: line 3", with the path of the file; "line 3" where the script has none. `line` is one of this file.
  std::string PlaceOf(const TStructureStatement& statement, std::size_t line) const {
    const std::string path = statement.file.empty() ? file : std::string(statement.file);
    return (path.empty() ? "line " : path + ": line ") + std::to_string(line);
  }
  std::string PlaceOf(const TStructureStatement& statement) const { return PlaceOf(statement, statement.line); }
};

// What an engine also implements that can give the creation text of a table as its server prints it.
class TCreationTexts {
 public:
  // Asks for the text, and stores it into the table's `cached_ddl` as well, but for exact texts.
  virtual void ShowCreateTable(const std::string& table, std::string& ddl) = 0;
  // A hint: the texts of these tables will be asked for next, in this order. A client may read ahead; an error of a
  // table that nobody asks for never shows.
  virtual void ExpectCreationTexts(const TStringList& /*tables*/) {}
  // Makes the server print texts without loss from here on: names in backticks, every option; and take statements as
  // they are written in such texts. Holds for later connections of this engine too, until it is switched off, which
  // the next connecting makes good. For files there is nothing to do.
  virtual void PrepareExactTexts(bool /*exact*/ = true) {}
  // The database's name, with which texts name its sequences. Empty for files.
  virtual std::string TextsDatabase() const { return {}; }
  // What the database holds besides tables: views, sequences, triggers, routines, events.
  virtual std::vector<TOtherObject> OtherObjects() { return {}; }
  // Asks for the texts and contexts of these alone, by kind and name; a text stays empty where there is none to see.
  virtual void ReadObjectTexts(std::vector<TOtherObject>& /*objects*/) {}
  // The kinds, "table" among them, of which there may be more than a server lists: the login may not see all of them.
  virtual TStringList KindsHidden() { return {}; }
  // The kinds of other objects that a script has none of, as dumps leave some out. After OtherObjects.
  virtual TStringList KindsLeftOut() { return {}; }
  // What the connected server says of itself by `select version()`; empty for files.
  virtual std::string ServerVersion() { return {}; }
  // Of a side that is a script: its statements, in order, which live until it connects anew; null for servers.
  virtual const TStructureScript* StructureScript() const { return nullptr; }
  // Statements that may have made or changed tables of this side, and whose work it does not show; each with its place.
  virtual TStringList NotFollowed() const { return {}; }

 protected:
  ~TCreationTexts() = default;
};

}  // namespace velmora
