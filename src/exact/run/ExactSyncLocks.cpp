// SPDX-License-Identifier: GPL-3.0-or-later

// What the statements of the plan lock: whom the classes are told of, and what the script says of them.

#include <algorithm>
#include <set>

#include "core/CreationTexts.h"
#include "exact/run/ExactSync.h"
#include "mysqltext/ServerVersion.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kAbove[] = "%s: %s, which --algorithm %s does not allow: %s";
constexpr std::size_t kShownLetters = 200;

bool IsLarge(ELockClass of) { return of >= ELockClass::Rebuild && of != ELockClass::Unknown; }

std::string Shown(const std::string& statement) {
  std::string text = StrReplace(statement, "\n  ", " ");
  return text.size() > kShownLetters ? text.substr(0, kShownLetters) + "..." : text;
}

}  // namespace

// A server is asked; of a file the user may say what it is for. Empty where nobody knows.
std::string TExactSync::TargetVersion(TDBConn& target) const {
  auto* texts = dynamic_cast<TCreationTexts*>(&target);
  if (texts == nullptr) return {};
  return texts->StructureScript() != nullptr ? Wishes.locks.target_version : texts->ServerVersion();
}

TPlanServer TExactSync::PlanServerOf(TDBConn& target) const {
  TPlanServer server;
  server.unchecked_foreign_keys = Wishes.locks.fast_foreign_keys;
  if (changes_.empty() && objects_.changes.empty() && renames_.empty()) return server;
  const std::string version = TargetVersion(target);
  if (version.empty()) return server;
  const TServerVersion read = ReadServerVersion(version);
  server.mysql = !read.mariadb;
  server.mariadb = read.mariadb;
  server.version = read.version;
  server.asked = dynamic_cast<TCreationTexts&>(target).StructureScript() == nullptr;
  return server;
}

void TExactSync::AskSizes(TDBConn& target) {
  if (!Wishes.locks.row_counts || !target.GetConnected()) return;
  auto* texts = dynamic_cast<TCreationTexts*>(&target);
  if (texts == nullptr || texts->StructureScript() != nullptr) return;
  std::set<std::string> tables;
  for (const TPlanStatement& statement : plan_)
    if (IsLarge(statement.lock)) tables.insert(statement.table);
  sizes_ = AskTableSizes(target, TStringList(tables.begin(), tables.end()));
}

TActionLock TExactSync::LockOf(const TPlanStatement& statement) const {
  TActionLock lock{statement.lock, std::string(LockText(statement.lock)), std::nullopt};
  const auto size = sizes_.find(LowerText(statement.table));
  if (!IsLarge(statement.lock) || size == sizes_.end()) return lock;
  lock.size = size->second;
  lock.text += " (" + size->second.Text() + ")";
  return lock;
}

std::map<int, TActionLock> TExactSync::ActionLocks(const std::vector<TPlanStatement>& plan) const {
  std::map<int, TActionLock> locks;
  for (const TPlanStatement& statement : plan) {
    if (statement.lock == ELockClass::None) continue;
    for (const int action : statement.actions)
      if (TActionLock& lock = locks[action]; lock.is < statement.lock) lock = LockOf(statement);
  }
  return locks;
}

TStringList TExactSync::AboveAlgorithm(const std::vector<TPlanStatement>& statements) const {
  TStringList lines;
  const ELockClass algorithm = Wishes.locks.algorithm;
  for (const TPlanStatement& statement : statements)
    if (!WithinAlgorithm(statement.lock, algorithm))
      lines.push_back(Format(kAbove, statement.table, std::string(LockText(statement.lock)),
                             algorithm == ELockClass::Instant ? "instant" : "inplace", Shown(statement.text)));
  return lines;
}

}  // namespace velmora
