#pragma once

// The statements that make the changes, in the order in which servers take them.

#include <functional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "exact/Changes.h"
#include "exact/Lexer.h"
#include "exact/ServerForm.h"

namespace velmora {

// Tables by name as one side has them.
class TSchema {
 public:
  void Add(TTableText table);
  const TTableText* Find(const std::string& name) const;  // exact name; null when there is none
  TTableText* Find(const std::string& name);
  void Remove(const std::string& name);
  // In order of addition, but that the last one takes the place of one that is removed.
  const std::vector<TTableText>& Tables() const { return tables_; }

 private:
  std::vector<TTableText> tables_;
  std::unordered_map<std::string, std::size_t> index_;
};

struct TPlanStatement {
  std::string text;                 // without ";"
  std::vector<int> actions;         // ids of the changes it serves
  std::vector<std::string> unsafe;  // reasons, "column c: ..." each
  std::string table;                // that it is about
};

// 1. foreign keys that go, change, or stand on a column that changes (those come back at the end), 2. dropped tables,
// checks whose names other tables get, 3. partitioning that is taken away or loses its columns, 4. one "alter table"
// per table: options, columns dropped, then modified and added with first/after, keys dropped and added, checks,
// partitioning (an option that outlives its engine has one of its own behind it), 5. new tables without foreign
// keys, 6. foreign keys added. Names in backticks. It holds what `changes` holds and nothing else: a change that was
// struck out leaves its statement.
std::vector<TPlanStatement> MakePlan(const std::vector<TChange>& changes, const TSchema& reference,
                                     const TSchema& target);

// Applies statements of the plan to a schema in memory, by reading their texts. Raises for one it does not understand.
void ApplyStatement(const std::string& statement, TSchema& schema);

// An "alter table" as people write it, in whatever form servers take it: `tokens` are the statement's, its clauses
// begin at `first`. Raises for what it does not understand, and the table is what nobody knows then.
struct TAlterationEffects {
  std::string new_name;                                              // of the table; empty for none
  std::vector<std::pair<std::string, std::string>> renamed_columns;  // from, to
};
TAlterationEffects ApplyWrittenAlteration(const std::string& statement, const std::vector<TToken>& tokens,
                                          std::size_t first, const TServerTraits& server, TTableText& table);

// The places (start, length) of the statements of a script: ends are ";" outside quotes, backticks and comments.
// Comments before a statement do not belong to it.
struct TScriptRange {
  std::size_t start = 0;
  std::size_t length = 0;
};
std::vector<TScriptRange> ScanStatements(std::string_view script);

}  // namespace velmora
