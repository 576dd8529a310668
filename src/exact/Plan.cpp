#include "exact/Plan.h"

#include <algorithm>
#include <array>
#include <deque>
#include <iterator>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "exact/CanonicalForm.h"
#include "exact/ColumnType.h"
#include "exact/ElementText.h"
#include "exact/KeyText.h"
#include "exact/Lexer.h"
#include "exact/TableOptions.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

// A foreign key that does not change itself, and the changes that cannot be made while it is there.
struct TObstacle {
  const TElement* key = nullptr;
  std::vector<const TChange*> causes;
};

struct TTableWork {
  std::string name;
  const TTableText* reference = nullptr;  // null for a side without the table
  const TTableText* target = nullptr;
  std::vector<const TChange*> changes;
  std::vector<TObstacle> obstacles;
};

bool IsForeignKeyChange(const TChange& change) {
  return change.kind == EElement::ForeignKey &&
         (change.action == saAddConstraint || change.action == saModifyConstraint || change.action == saDropConstraint);
}
bool IsColumnChange(const TChange& change) {
  return change.action == saAddColumn || change.action == saModifyColumn || change.action == saDropColumn;
}
bool IsOptionsChange(const TChange& change) { return change.action == saChangeTableType && !change.options.empty(); }
bool IsPartitionChange(const TChange& change) {
  return change.action == saChangeTableType && change.options.empty() && change.item == "partitioning";
}
bool SetsOption(const TChange& change, std::string_view name) {
  return std::any_of(change.options.begin(), change.options.end(),
                     [name](const TTableOption& option) { return option.name == name; });
}

// --- Texts

std::string DropText(EElement kind, const std::string& name) {
  switch (kind) {
    case EElement::PrimaryKey:
      return "drop primary key";
    case EElement::ForeignKey:
      return "drop foreign key " + QuotedName(name);
    case EElement::Check:
      return "drop constraint " + QuotedName(name);
    case EElement::Period:
      return "drop period for " + QuotedName(name);
    default:
      return "drop key " + QuotedName(name);
  }
}

std::string Subject(const TChange& change) {
  switch (change.action) {
    case saCreateTable:
    case saDropTable:
      return "table " + change.table;
    case saChangeTableType:
      return change.item;
    case saAddKey:
    case saModifyKey:
    case saDropKey:
      return "key " + change.item;
    case saAddConstraint:
    case saModifyConstraint:
    case saDropConstraint:
      return "constraint " + change.item;
    default:
      return "column " + change.item;
  }
}

// An "alter table" as it grows; it may stay empty.
class TAlter {
 public:
  explicit TAlter(std::string table) : table_(std::move(table)) {}

  void Clause(std::string text) { clauses_.push_back(std::move(text)); }
  void AtEnd(std::string text) { end_ = std::move(text); }
  void Serves(const TChange& change) {
    auto& ids = statement_.actions;
    if (std::find(ids.begin(), ids.end(), change.id) == ids.end()) ids.push_back(change.id);
  }
  // For the statement that does what the change is about, as against those that clear its way.
  void Makes(const TChange& change) {
    Serves(change);
    if (!change.unsafe.empty()) statement_.unsafe.push_back(Subject(change) + ": " + change.unsafe);
  }

  void MoveTo(std::vector<TPlanStatement>& plan) {
    if (clauses_.empty() && end_.empty()) return;
    const bool one_line = clauses_.size() + (end_.empty() ? 0 : 1) == 1;
    const char* gap = one_line ? " " : "\n  ";
    statement_.text = "alter table " + QuotedName(table_);
    for (std::size_t i = 0; i < clauses_.size(); ++i) statement_.text += (i == 0 ? "" : ",") + (gap + clauses_[i]);
    if (!end_.empty()) statement_.text += gap + end_;
    plan.push_back(std::move(statement_));
  }

 private:
  std::string table_;
  std::vector<std::string> clauses_;
  std::string end_;
  TPlanStatement statement_;
};

// --- Columns

// Servers do not turn a computed column into a stored one or back, nor some types into others: the column goes and
// comes again, and its keys stay with it.
bool IsReplaced(const TChange& change, const TTableWork& work) {
  if (change.action != saModifyColumn || change.moved_only || work.reference == nullptr) return false;
  const TColumnText from = ReadColumnText({EElement::Column, change.item, change.old_text}, *work.target);
  const TColumnText to = ReadColumnText({EElement::Column, change.item, change.new_text}, *work.reference);
  const auto is_virtual = [](const TColumnText& column) { return column.generated && !column.stored; };
  return is_virtual(from) != is_virtual(to) || !Converts(from, to);
}

// Whether a foreign key on the column has to be away for the change. Servers take new defaults and comments as it is.
bool DisturbsForeignKeys(const TChange& change, const TTableWork& work) {
  if (change.action != saModifyColumn || change.moved_only || work.reference == nullptr) return false;
  const TColumnText from = ReadColumnText({EElement::Column, change.item, change.old_text}, *work.target);
  const TColumnText to = ReadColumnText({EElement::Column, change.item, change.new_text}, *work.reference);
  return from.type != to.type || from.arguments != to.arguments || from.is_unsigned != to.is_unsigned ||
         from.zerofill != to.zerofill || from.not_null != to.not_null || from.auto_increment != to.auto_increment ||
         from.charset != to.charset || from.generated != to.generated || from.stored != to.stored;
}

// The column clauses of one table. What is placed stands in the order of the reference, so that the column before it
// is already there.
class TColumnClauses {
 public:
  explicit TColumnClauses(const TTableWork& work);
  void AddTo(TAlter& alter) const;

 private:
  std::string Text(const TChange& change) const;
  std::string Place(const TChange& change) const;
  std::size_t Position(const TChange& change) const;

  const TTableWork& work_;
  std::vector<const TChange*> changes_;
  std::vector<std::string> order_;  // names of the reference's columns
  std::unordered_map<std::string, std::size_t> positions_;
  std::unordered_set<std::string> there_;  // what the table has when the statement ran
  bool inherits_ = true;                   // the table will hand down what the reference's does
};

TColumnClauses::TColumnClauses(const TTableWork& work) : work_(work) {
  bool sets_charset = false;
  for (const TChange* change : work.changes) {
    if (IsColumnChange(*change)) changes_.push_back(change);
    if (SetsOption(*change, "DEFAULT CHARSET") || SetsOption(*change, "COLLATE")) sets_charset = true;
  }
  if (changes_.empty() || work.reference == nullptr) return;
  inherits_ = sets_charset || SameCharset(TableCharset(*work.reference), TableCharset(*work.target));
  for (const auto& element : work.reference->elements) {
    if (element.kind != EElement::Column) continue;
    positions_.emplace(LowerText(element.name), order_.size());
    order_.push_back(element.name);
  }
  for (const auto& element : work.target->elements) {
    if (element.kind == EElement::Column) there_.insert(LowerText(element.name));
  }
  for (const TChange* change : changes_) {
    if (change->action == saAddColumn) there_.insert(LowerText(change->item));
  }
  std::stable_sort(changes_.begin(), changes_.end(),
                   [this](const TChange* a, const TChange* b) { return Position(*a) < Position(*b); });
}

std::size_t TColumnClauses::Position(const TChange& change) const {
  const auto position = positions_.find(LowerText(change.item));
  return position == positions_.end() ? 0 : position->second;
}

std::string TColumnClauses::Text(const TChange& change) const {
  if (inherits_) return change.new_text;
  return PinnedColumnText({EElement::Column, change.item, change.new_text}, *work_.reference, *work_.target);
}

// Behind the nearest column before it that the table will have: one that was to come may have been struck out.
std::string TColumnClauses::Place(const TChange& change) const {
  for (std::size_t i = Position(change); i > 0; --i) {
    if (there_.contains(LowerText(order_[i - 1]))) return " after " + QuotedName(order_[i - 1]);
  }
  return " first";
}

void TColumnClauses::AddTo(TAlter& alter) const {
  for (const TChange* change : changes_) {
    const bool drops = change->action == saDropColumn;
    if (drops || IsReplaced(*change, work_)) alter.Clause("drop column " + QuotedName(change->item));
    if (drops) alter.Makes(*change);
  }
  for (const TChange* change : changes_) {
    if (change->action == saDropColumn) continue;
    if (change->action == saAddColumn || IsReplaced(*change, work_)) {
      alter.Clause("add column " + Text(*change) + Place(*change));
    } else {
      alter.Clause("modify column " + Text(*change) + (change->after ? Place(*change) : ""));
    }
    alter.Makes(*change);
  }
}

// --- The plan

class TPlanner {
 public:
  TPlanner(const std::vector<TChange>& changes, const TSchema& reference, const TSchema& target);
  std::vector<TPlanStatement> Make();

 private:
  TTableWork& Work(const std::string& table);
  void FindObstacles();
  void FindObstacles(const TTableText& table);
  void AddCauses(const std::string& table, const std::vector<std::string>& columns, TObstacle& obstacle) const;

  void DropForeignKeys(const TTableWork& work);
  void DropTable(const TTableWork& work);
  void RemovePartitioning(const TTableWork& work);
  void AlterTable(const TTableWork& work);
  void CreateTable(const TTableWork& work);
  void AddForeignKeys(const TTableWork& work);
  void RenewHashKeys(const TTableWork& work);

  const TSchema& reference_;
  const TSchema& target_;
  std::deque<TTableWork> work_;  // in the order of the changes
  std::unordered_map<std::string, TTableWork*> by_name_;
  // By lower-case table: the changed columns, in lower case, or the empty name for all of them.
  std::unordered_map<std::string, std::unordered_multimap<std::string, const TChange*>> disturbed_;
  std::vector<TPlanStatement> plan_;
};

TPlanner::TPlanner(const std::vector<TChange>& changes, const TSchema& reference, const TSchema& target)
    : reference_(reference), target_(target) {
  for (const TChange& change : changes) {
    TTableWork& work = Work(change.table);
    work.changes.push_back(&change);
    // No foreign key outlives its table's engine.
    const bool all = SetsOption(change, "ENGINE");
    if (all || DisturbsForeignKeys(change, work)) {
      disturbed_[LowerText(change.table)].emplace(all ? std::string() : LowerText(change.item), &change);
    }
  }
  FindObstacles();
}

TTableWork& TPlanner::Work(const std::string& table) {
  TTableWork*& work = by_name_[table];
  if (work == nullptr) {
    work = &work_.emplace_back();
    work->name = table;
    work->reference = reference_.Find(table);
    work->target = target_.Find(table);
  }
  return *work;
}

bool Drops(const std::vector<const TChange*>& changes) {
  return std::any_of(changes.begin(), changes.end(), [](const TChange* c) { return c->action == saDropTable; });
}

void TPlanner::FindObstacles() {
  if (disturbed_.empty()) return;
  for (const TTableText& table : target_.Tables()) {
    const auto work = by_name_.find(table.name);
    if (work == by_name_.end() || !Drops(work->second->changes)) FindObstacles(table);
  }
}

void TPlanner::FindObstacles(const TTableText& table) {
  for (const TElement& key : table.elements) {
    if (key.kind != EElement::ForeignKey || key.name.empty()) continue;
    const TForeignKeyParts parts = ForeignKeyParts(key);
    TObstacle obstacle{&key, {}};
    AddCauses(table.name, parts.columns, obstacle);
    if (parts.database.empty()) AddCauses(parts.table, parts.references, obstacle);
    if (obstacle.causes.empty()) continue;
    TTableWork& work = Work(table.name);
    const bool changes = std::any_of(work.changes.begin(), work.changes.end(), [&key](const TChange* change) {
      return IsForeignKeyChange(*change) && SameText(change->item, key.name);
    });
    if (!changes) work.obstacles.push_back(std::move(obstacle));
  }
}

void TPlanner::AddCauses(const std::string& table, const std::vector<std::string>& columns, TObstacle& obstacle) const {
  const auto disturbed = disturbed_.find(LowerText(table));
  if (disturbed == disturbed_.end()) return;
  const auto add = [&](const std::string& column) {
    const auto [begin, end] = disturbed->second.equal_range(column);
    std::transform(begin, end, std::back_inserter(obstacle.causes), [](const auto& entry) { return entry.second; });
  };
  add({});
  for (const auto& column : columns) add(LowerText(column));
}

std::vector<TPlanStatement> TPlanner::Make() {
  using TStep = void (TPlanner::*)(const TTableWork&);
  constexpr std::array<TStep, 7> kSteps{
      &TPlanner::DropForeignKeys, &TPlanner::DropTable,      &TPlanner::RemovePartitioning, &TPlanner::AlterTable,
      &TPlanner::CreateTable,     &TPlanner::AddForeignKeys, &TPlanner::RenewHashKeys};
  for (const TStep step : kSteps) {
    for (const TTableWork& work : work_) (this->*step)(work);
  }
  return std::move(plan_);
}

// A key that keeps its name goes here and comes back in the last step: servers refuse both in one statement.
void TPlanner::DropForeignKeys(const TTableWork& work) {
  TAlter alter(work.name);
  for (const TChange* change : work.changes) {
    if (!IsForeignKeyChange(*change) || change->action == saAddConstraint) continue;
    alter.Clause(DropText(EElement::ForeignKey, change->item));
    alter.Makes(*change);
  }
  for (const TObstacle& obstacle : work.obstacles) {
    alter.Clause(DropText(EElement::ForeignKey, obstacle.key->name));
    for (const TChange* cause : obstacle.causes) alter.Serves(*cause);
  }
  alter.MoveTo(plan_);
}

void TPlanner::DropTable(const TTableWork& work) {
  for (const TChange* change : work.changes) {
    if (change->action != saDropTable) continue;
    TPlanStatement statement{"drop table " + QuotedName(work.name), {change->id}, {}};
    if (!change->unsafe.empty()) statement.unsafe.push_back(Subject(*change) + ": " + change->unsafe);
    plan_.push_back(std::move(statement));
  }
}

// Before the other changes: these may drop the columns by which the table is partitioned, or take them out of its keys.
void TPlanner::RemovePartitioning(const TTableWork& work) {
  TAlter alter(work.name);
  for (const TChange* change : work.changes) {
    if (!IsPartitionChange(*change) || !change->new_text.empty()) continue;
    alter.Clause("remove partitioning");
    alter.Makes(*change);
  }
  alter.MoveTo(plan_);
}

// Whether servers refuse the change while a check reads the column: they let go of none, even if it comes again in the
// same statement, and go on computing it from columns that it may no longer be computed of.
bool DisturbsChecks(const TChange& change, const TTableWork& work) {
  if (IsReplaced(change, work)) return true;
  if (change.action != saModifyColumn || change.moved_only) return false;
  return ReadColumnText({EElement::Column, change.item, change.old_text}, *work.target).generated.has_value();
}

// Keys keep the lengths that they had, which need not be ones of the new type.
bool DisturbsKeys(const TChange& change, const TTableWork& work) {
  if (!IsReplaced(change, work)) return false;
  const TColumnText from = ReadColumnText({EElement::Column, change.item, change.old_text}, *work.target);
  const TColumnText to = ReadColumnText({EElement::Column, change.item, change.new_text}, *work.reference);
  return from.type != to.type || from.arguments != to.arguments;
}

// Keys and checks that stay, but have to go and come again in the statement because of what columns become.
void RenewElements(const TTableWork& work, TAlter& alter) {
  for (const TElement& element : work.target->elements) {
    const bool is_check = element.kind == EElement::Check;
    if ((!is_check && !IsKey(element.kind)) || element.name.empty()) continue;
    const auto changes = [&element, is_check](const TChange* change) {
      const bool same_kind = is_check ? change->kind == EElement::Check : IsKey(change->kind);
      return same_kind && SameText(change->item, element.name);
    };
    if (std::any_of(work.changes.begin(), work.changes.end(), changes)) continue;
    const auto tokens = Tokens(element.text);
    bool renewed = false;
    for (const TChange* change : work.changes) {
      if (is_check ? !DisturbsChecks(*change, work) : !DisturbsKeys(*change, work)) continue;
      const auto reads = [change](const TToken& token) {
        return IsName(token) && SameText(NameOf(token), change->item);
      };
      if (std::none_of(tokens.begin(), tokens.end(), reads)) continue;
      alter.Serves(*change);
      renewed = true;
    }
    if (!renewed) continue;
    alter.Clause(DropText(element.kind, element.name));
    alter.Clause("add " + element.text);
  }
}

// Aria's own default is named once a table was partitioned or changed, and is not forgotten in the statement that leaves
// the engine.
constexpr std::string_view kOutlivesEngine = "PAGE_CHECKSUM";

bool NamesOnLeaving(const TTableWork& work) {
  return EngineOf(*work.target) == "aria" && work.target->FindOption(kOutlivesEngine) == nullptr &&
         std::any_of(work.changes.begin(), work.changes.end(), [](const TChange* change) {
           return IsPartitionChange(*change) && change->new_text.empty();
         });
}

void SetOptions(const TTableWork& work, TAlter& alter, TAlter& later) {
  const auto set_later = [&later](const TChange& change, const TTableOption& option) {
    later.Clause(OptionText(option));
    later.Serves(change);
  };
  for (const TChange* change : work.changes) {
    if (!IsOptionsChange(*change)) continue;
    const bool leaves = SetsOption(*change, "ENGINE");
    if (leaves && NamesOnLeaving(work)) set_later(*change, {std::string(kOutlivesEngine), "DEFAULT"});
    std::string options;
    for (const auto& option : change->options) {
      if (option.name == kOutlivesEngine && leaves) {
        set_later(*change, option);
      } else {
        options += (options.empty() ? "" : " ") + OptionText(option);
      }
    }
    if (!options.empty()) alter.Clause(options);
    alter.Makes(*change);
  }
}

void TPlanner::AlterTable(const TTableWork& work) {
  if (work.target == nullptr) return;
  TAlter alter(work.name);
  TAlter later(work.name);
  SetOptions(work, alter, later);
  TColumnClauses(work).AddTo(alter);
  RenewElements(work, alter);
  for (const TChange* change : work.changes) {
    if (IsColumnChange(*change) || IsForeignKeyChange(*change)) continue;
    if (change->action == saChangeTableType || change->action == saDropTable) continue;
    if (!change->old_text.empty()) alter.Clause(DropText(change->kind, change->item));
    if (!change->new_text.empty()) alter.Clause("add " + change->new_text);
    alter.Makes(*change);
  }
  for (const TChange* change : work.changes) {
    if (!IsPartitionChange(*change) || change->new_text.empty()) continue;
    alter.AtEnd(change->new_text);
    alter.Makes(*change);
  }
  alter.MoveTo(plan_);
  later.MoveTo(plan_);
}

void TPlanner::CreateTable(const TTableWork& work) {
  for (const TChange* change : work.changes) {
    if (change->action != saCreateTable || work.reference == nullptr) continue;
    plan_.push_back({CreationTextOf(*work.reference, true), {change->id}, {}});
  }
}

void TPlanner::AddForeignKeys(const TTableWork& work) {
  TAlter alter(work.name);
  for (const TChange* change : work.changes) {
    if (change->action == saCreateTable && work.reference != nullptr) {
      for (const auto& element : work.reference->elements) {
        if (element.kind != EElement::ForeignKey) continue;
        alter.Clause("add " + element.text);
        alter.Serves(*change);
      }
    }
    if (!IsForeignKeyChange(*change) || change->action == saDropConstraint) continue;
    alter.Clause("add " + change->new_text);
    alter.Serves(*change);
  }
  for (const TObstacle& obstacle : work.obstacles) {
    alter.Clause("add " + obstacle.key->text);
    for (const TChange* cause : obstacle.causes) alter.Serves(*cause);
  }
  alter.MoveTo(plan_);
}

bool UsesHash(const TElement& key) {
  if (key.kind != EElement::UniqueKey) return false;
  const auto tokens = Tokens(key.text);
  for (std::size_t at = 0; at + 1 < tokens.size(); ++at) {
    if (IsKeyword(tokens[at], "using") && IsKeyword(tokens[at + 1], "hash")) return true;
  }
  return false;
}

// The unique hash keys that the table has once its changes are made.
std::vector<TElement> HashKeys(const TTableWork& work) {
  std::vector<TElement> keys;
  const TTableOption* engine = work.reference->FindOption("ENGINE");
  if (engine != nullptr && SameText(engine->value, "MEMORY")) return keys;  // there they are what they are
  const auto add = [&keys](const TElement& key) {
    if (UsesHash(key)) keys.push_back(key);
  };
  const TTableText& table = work.target != nullptr ? *work.target : *work.reference;
  for (const TElement& key : table.elements) {
    const bool changes = std::any_of(work.changes.begin(), work.changes.end(), [&key](const TChange* change) {
      return IsKey(change->kind) && SameText(change->item, key.name);
    });
    if (!changes) add(key);
  }
  for (const TChange* change : work.changes) add({change->kind, change->item, change->new_text});
  return keys;
}

// With every "alter table" a server forgets that a unique key was one by hash, where it can make another one of it: the
// keys that the table's last statement does not add come again behind it.
void TPlanner::RenewHashKeys(const TTableWork& work) {
  if (work.reference == nullptr) return;
  const std::vector<TElement> keys = HashKeys(work);
  if (keys.empty()) return;
  const std::string head = "alter table " + QuotedName(work.name);
  const TPlanStatement* last = nullptr;
  for (const TPlanStatement& statement : plan_) {
    const bool alters = statement.text.starts_with(head + " ") || statement.text.starts_with(head + "\n");
    if (alters) last = &statement;
  }
  if (last == nullptr) return;
  TAlter alter(work.name);
  for (const TElement& key : keys) {
    if (last->text.find("add " + key.text) != std::string::npos) continue;
    alter.Clause(DropText(key.kind, key.name));
    alter.Clause("add " + key.text);
    for (const TChange* change : work.changes) alter.Serves(*change);
    for (const TObstacle& obstacle : work.obstacles) {
      for (const TChange* cause : obstacle.causes) alter.Serves(*cause);
    }
  }
  alter.MoveTo(plan_);
}

}  // namespace

void TSchema::Add(TTableText table) {
  const auto [place, is_new] = index_.emplace(table.name, tables_.size());
  if (is_new) {
    tables_.push_back(std::move(table));
  } else {
    tables_[place->second] = std::move(table);
  }
}

const TTableText* TSchema::Find(const std::string& name) const {
  const auto place = index_.find(name);
  return place == index_.end() ? nullptr : &tables_[place->second];
}

TTableText* TSchema::Find(const std::string& name) {
  const auto place = index_.find(name);
  return place == index_.end() ? nullptr : &tables_[place->second];
}

void TSchema::Remove(const std::string& name) {
  const auto place = index_.find(name);
  if (place == index_.end()) return;
  const std::size_t at = place->second;
  index_.erase(place);
  tables_.erase(tables_.begin() + static_cast<std::ptrdiff_t>(at));
  for (auto& [other, index] : index_) {
    if (index > at) --index;
  }
}

std::vector<TPlanStatement> MakePlan(const std::vector<TChange>& changes, const TSchema& reference,
                                     const TSchema& target) {
  return TPlanner(changes, reference, target).Make();
}

}  // namespace velmora
