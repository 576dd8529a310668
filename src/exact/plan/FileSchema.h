// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The tables that a script makes, its statements applied in order as a server would.

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "core/CreationTexts.h"
#include "exact/compare/ServerForm.h"
#include "exact/plan/Plan.h"
#include "mysqltext/Lexer.h"
#include "util/Lists.h"

namespace velmora {

class TFileSchema {
 public:
  // Raises with file and line for a statement that names no table by which it could be passed over, and for one whose
  // words cannot be read.
  TFileSchema(const TStructureScript& script, const TServerTraits& server);

  TStringList TableNames() const;  // in the order of their making, then those that could not be followed
  // The statement that makes the table, where it is all that the script says of it and was not needed so far; null
  // otherwise. Statements that are the same make the same, and one as a server prints it makes what it says.
  const std::string_view* PlainText(const std::string& name) const;
  // As the server prints it but for what depends on its settings. Raises for one that could not be followed, with file
  // and line, and for none.
  const TTableText& Table(const std::string& name);
  // Of statements that may make or change tables which their texts do not name: each with file and line.
  const TStringList& Unknown() const { return unknown_; }
  // What is told of a table that cannot be followed after all.
  std::string NotFollowed(const std::string& table, const std::string& reason) const;

 private:
  struct TName {
    std::string database;
    std::string table;
  };

  void Apply(const TStructureStatement& statement);
  void ApplyNow(const TStructureStatement& statement);
  void Read(const TStructureStatement& statement);
  bool PutOff(const TStructureStatement& statement);
  bool PlainSettings() const;
  void CatchUp(const std::string& table);
  void CatchUpAll();
  void Set();
  void SetDatabase(std::size_t at, bool creates);
  void TakeDefaults(const std::string& database, TTableText& table) const;
  void CheckModes() const;
  void Create(std::size_t at);
  void CreateLike(const std::string& name, const std::string& from);
  void CreateIndex(std::size_t at, const std::string& kind);
  void Alter(std::size_t at);
  void Alter(const std::string& table, const std::string& text);
  void Rename(std::size_t at);
  void RenameTable(const std::string& from, const std::string& to);
  void Drop(std::size_t at);

  bool Is(std::size_t at, std::string_view word) const {
    return IsKeyword(tokens_[std::min(at, tokens_.size() - 1)], word);
  }
  bool TakeIf(std::size_t& at) const;  // "if exists", "if not exists"
  TName ReadName(std::size_t& at) const;
  bool IsMeant(const TName& name) const;
  void Add(TTableText table);
  TTableText* Known(const std::string& table);  // null for none
  TTableText& Find(const std::string& table);
  template <class Action>
  void Guard(const std::string& table, Action action);
  void Forget(const std::string& table);

  const TStructureScript& script_;
  const TServerTraits& server_;
  TSchema schema_;
  // Tables whose statements are not taken apart as long as nobody asks: most of a dump is as the other side has it.
  std::unordered_map<std::string, TStructureStatement> put_off_;
  std::unordered_map<std::string, std::size_t> numbers_;  // of tables, in the order of their making
  std::map<std::string, std::string> unfollowed_;         // tables, and why
  TStringList unknown_;
  std::map<std::string, TStructureStatement> places_;               // of each table: its last statement
  std::map<std::string, std::vector<TTableOption>> table_options_;  // by database: what its new tables have
  std::string_view file_;                                           // of a folder's: the one that is being read
  std::string engine_;                                              // of new tables; empty for the server's own
  std::string modes_;                                               // in lower case
  // The statement under way. Its text keeps its place while another statement is caught up with: tokens point into it.
  const TStructureStatement* statement_ = nullptr;
  std::unique_ptr<const std::string> text_;
  std::vector<TToken> tokens_;
};

}  // namespace velmora
