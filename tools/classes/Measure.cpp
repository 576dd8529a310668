// SPDX-License-Identifier: GPL-3.0-or-later
#include "classes/Measure.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>

#include "exact/compare/ServerLanguage.h"
#include "exact/plan/StatementLocks.h"
#include "mysqltext/Lexer.h"
#include "support/LiveDatabase.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora::testing {

namespace {

constexpr char kFile[] = VELMORA_SOURCE_DIR "/tools/classes/cases.txt";
constexpr char kChecksOff[] = "set foreign_key_checks = 0";
constexpr char kRows[] = "insert into t (id) values (1), (2), (3)";
constexpr char kRowsWithoutId[] = "insert into t () values (), (), ()";
// A copy of a partitioned table has new numbers, as one that is made anew has.
constexpr char kTableIds[] =
    "select coalesce(group_concat(table_id order by table_id), '') from information_schema.%s where name = '%s/%s' or "
    "name like '%s/%s#%%'";

struct TCase {
  std::string name;
  std::string table;
  std::string clauses;
  std::string before;
};

TCase ReadCase(const std::string& line) {
  TStringList parts;
  SplitText(" | ", line, parts);
  if (parts.size() < 3) throw std::runtime_error(std::string(kFile) + ": not a case: " + line);
  return {parts[0], parts[1], parts[2], parts.size() > 3 ? parts[3] : ""};
}

std::vector<TCase> ReadCases() {
  std::vector<TCase> cases;
  std::ifstream file(kFile);
  if (!file) throw std::runtime_error(std::string(kFile) + " cannot be read");
  for (std::string line; std::getline(file, line);)
    if (!line.empty() && !line.starts_with('#')) cases.push_back(ReadCase(line));
  return cases;
}

// What a statement may ask for, the least first, and what it is when the server takes it.
struct TTry {
  const char* algorithm;
  const char* lock;
  ELockClass is;
};
constexpr TTry kTries[] = {{"instant", nullptr, ELockClass::Instant},      {"inplace", "none", ELockClass::InPlace},
                           {"inplace", "shared", ELockClass::ReadersOnly}, {"copy", "none", ELockClass::CopyWithWrites},
                           {"copy", "shared", ELockClass::Copy},           {"copy", "exclusive", ELockClass::Copy}};

class TMeasuring {
 public:
  TMeasuring() {
    const std::string version = Answer(database_.Connection(), "select version()");
    server_ = ReadServerTraits(version);
    ids_ = server_.mysql ? "innodb_tables" : "innodb_sys_tables";
    database_.Run("set sql_mode = 'STRICT_ALL_TABLES,NO_ENGINE_SUBSTITUTION'");
  }

  TMeasureCounts Run(bool all);

 private:
  std::optional<ELockClass> Measure(const TCase& row, std::string& error);
  void MakeTable(const TCase& row);
  void Fill(const TCase& row);
  std::string Ids(const std::string& table);
  void Judge(const TCase& row, ELockClass measured, bool all, TMeasureCounts& counts);

  TLiveDatabase database_{"classes"};
  TServerTraits server_;
  std::string ids_;  // where the numbers of tables are
  std::set<ELockChange> met_;
};

std::string TMeasuring::Ids(const std::string& table) {
  const std::string& name = database_.Name();
  return Answer(database_.Connection(), Format(kTableIds, ids_, name, table, name, table));
}

void TMeasuring::MakeTable(const TCase& row) {
  database_.Run("set foreign_key_checks = 0");
  database_.Run("drop table if exists t, t9, p");
  database_.Run("set foreign_key_checks = 1");
  database_.Run("create table p (id int primary key)");
  database_.Run("create table t " + row.table);
}

void TMeasuring::Fill(const TCase& row) {
  const bool counts = PosNoCase("auto_increment", row.table) != 0 || PosNoCase("id int", row.table) == 0;
  database_.Run(counts ? kRowsWithoutId : kRows);
  if (!row.before.empty()) database_.Run(row.before);
}

// Nothing where the server does not have it at all.
std::optional<ELockClass> TMeasuring::Measure(const TCase& row, std::string& error) {
  for (const TTry& attempt : kTries) {
    try {
      MakeTable(row);
      Fill(row);
    } catch (const EVelmora& fault) {
      error = fault.what();
      return std::nullopt;
    }
    const std::string before = Ids("t");
    const std::string statement = WithAlgorithm("alter table `t` " + row.clauses, attempt.algorithm,
                                                attempt.lock == nullptr ? std::string_view() : attempt.lock);
    try {
      database_.Run(statement);
    } catch (const EVelmora& fault) {
      error = fault.what();
      continue;
    }
    const bool renames = row.clauses.starts_with("rename to");
    const bool same = Ids(renames ? "t9" : "t") == before;
    if (same || attempt.is > ELockClass::InPlace) return attempt.is;
    // Some say that they take it at an instant, and copy the table all the same.
    return attempt.is == ELockClass::Instant ? ELockClass::Copy : ELockClass::Rebuild;
  }
  return std::nullopt;
}

// The table that the statement meets, as the server prints it.
void TMeasuring::Judge(const TCase& row, ELockClass measured, bool all, TMeasureCounts& counts) {
  MakeTable(row);
  const TTableText table = ReadTableText(Answer(database_.Connection(), "show create table t"));
  const std::string statement = "alter table `t` " + row.clauses;
  const bool checks = row.before != kChecksOff;
  for (const TLockClause& clause : LockClauses(statement, table, checks))
    for (const ELockChange change : clause.changes) met_.insert(change);
  const ELockClass told = ClassOfStatement(statement, table, server_, checks);
  ++counts.measured;
  if (told == ELockClass::Unknown) ++counts.unknown;
  const bool wrong = told != measured && told != ELockClass::Unknown;
  if (wrong) ++counts.wrong;
  if (wrong || told == ELockClass::Unknown || all)
    std::printf("%-60s %-18s %s%s\n", row.name.c_str(), std::string(LockWord(measured)).c_str(),
                wrong ? "the table says: " : "", told == measured ? "" : std::string(LockWord(told)).c_str());
}

TMeasureCounts TMeasuring::Run(bool all) {
  TMeasureCounts counts;
  counts.server = ServerName(server_);
  for (const TCase& row : ReadCases()) {
    std::string error;
    if (const auto measured = Measure(row, error)) {
      Judge(row, *measured, all, counts);
      continue;
    }
    ++counts.refused;
    if (all) std::printf("refused: %s: %s\n", row.name.c_str(), error.c_str());
  }
  for (const TLockRow& row : LockRows()) {
    const bool there = std::ranges::any_of(server_.mysql ? row.mysql : row.mariadb, [this](const TLockStep& step) {
      return step.since != 0 && step.since <= server_.version;
    });
    if (there && !met_.contains(row.change)) counts.rows_left.emplace_back(row.name);
  }
  return counts;
}

}  // namespace

TMeasureCounts MeasureClasses(bool all) { return TMeasuring().Run(all); }

}  // namespace velmora::testing
