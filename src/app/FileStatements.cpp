// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/FileStatements.h"

#include <algorithm>

#include "mysqltext/Lexer.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kFault[] = "%s: table %s: %s";
constexpr char kPassedOver[] = "%s: \"%s\" is not run: tables that it makes or changes are not known";
constexpr std::size_t kShownChars = 60;

bool IsOfTables(const TTableStatement& statement) { return statement.kind > ETableStatement::CreateDatabase; }

std::string Beginning(std::string_view statement) {
  const std::string_view line = TrimView(statement.substr(0, statement.find('\n')));
  return CutChars(line.substr(0, 4 * kShownChars), kShownChars);
}

// What does something that its text does not say.
bool MayMakeTables(std::string_view statement) {
  try {
    const std::vector<TToken> tokens = Tokens(statement);
    return !InList(LowerText(tokens[0].text), {"create", "alter", "rename", "drop", "set"});
  } catch (const EVelmora&) {
    return true;
  }
}

class TCollector {
 public:
  explicit TCollector(const TStructureScript& script) : script_(script) {}

  TFileStatements Collect() {
    std::vector<TTableStatement> read;
    read.reserve(script_.statements.size());
    for (const TStructureStatement& statement : script_.statements) read.push_back(Read(statement));
    FindOwn(read);
    for (std::size_t i = 0; i < read.size(); ++i) Take(script_.statements[i], std::move(read[i]));
    if (!faults_.empty()) RaiseError(JoinList(faults_, "\n"));
    return std::move(result_);
  }

 private:
  // What cannot be read as a statement of tables is none: bodies of routines may hold anything.
  static TTableStatement Read(const TStructureStatement& statement) {
    try {
      return ReadTableStatement(statement.text);
    } catch (const EVelmora&) {
      return {};
    }
  }

  // In front of its name, or else that in use.
  static std::string DatabaseOf(const TStructureStatement& statement, const TTableStatement& about) {
    const std::string& written = about.changes.front().database;
    return written.empty() ? std::string(statement.database) : written;
  }

  // A file whose first table has no database has none of its own in front of names.
  void FindOwn(const std::vector<TTableStatement>& statements) {
    TStringList databases;
    bool first_has_none = false;
    for (std::size_t i = 0; i < statements.size(); ++i) {
      if (statements[i].kind != ETableStatement::CreateTable || statements[i].changes.empty()) continue;
      const std::string database = DatabaseOf(script_.statements[i], statements[i]);
      first_has_none = first_has_none || (databases.empty() && database.empty());
      if (std::find(databases.begin(), databases.end(), database) == databases.end()) databases.push_back(database);
    }
    one_of_several_ = !first_has_none && databases.size() > 1;
    if (!first_has_none) own_ = script_.database;
  }

  void Take(const TStructureStatement& raw, TTableStatement about) {
    if (!IsOfTables(about) || about.changes.empty()) {
      if (MayMakeTables(raw.text))
        result_.warnings.push_back(Format(kPassedOver, script_.PlaceOf(raw), Beginning(raw.text)));
      return;
    }
    if (const std::string of = DatabaseOf(raw, about); one_of_several_ && !of.empty() && of != own_) return;
    try {
      result_.statements.push_back({TextForScratch(raw.text, own_), script_.PlaceOf(raw), about});
    } catch (const EVelmora& error) {
      faults_.push_back(Format(kFault, script_.PlaceOf(raw), about.changes.front().table, error.what()));
    }
  }

  const TStructureScript& script_;
  std::string own_;
  bool one_of_several_ = false;
  TStringList faults_;
  TFileStatements result_;
};

}  // namespace

TFileStatements ReadFileStatements(const TStructureScript& script) { return TCollector(script).Collect(); }

}  // namespace velmora
