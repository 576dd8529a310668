// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/plan/PlanClauses.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "exact/compare/CanonicalForm.h"
#include "exact/compare/GeneratedKey.h"
#include "exact/plan/PlanFilling.h"
#include "exact/plan/PlanPartitions.h"
#include "mysqltext/ColumnType.h"
#include "mysqltext/ElementText.h"
#include "mysqltext/KeyText.h"
#include "mysqltext/Lexer.h"
#include "mysqltext/TableOptions.h"
#include "util/Text.h"

namespace velmora {

bool IsForeignKeyChange(const TChange& change) {
  return change.kind == EElement::ForeignKey &&
         (change.action == saAddConstraint || change.action == saModifyConstraint || change.action == saDropConstraint);
}
bool IsColumnChange(const TChange& change) {
  return change.action == saAddColumn || change.action == saModifyColumn || change.action == saDropColumn;
}
bool IsPartitionChange(const TChange& change) {
  return change.action == saChangeTableType && change.options.empty() && change.item == kPartitioningItem;
}
bool SetsOption(const TChange& change, std::string_view name) {
  return std::any_of(change.options.begin(), change.options.end(),
                     [name](const TTableOption& option) { return option.name == name; });
}

// --- Texts

std::string DropText(EElement kind, const std::string& name, const TPlanServer& server) {
  switch (kind) {
    case EElement::PrimaryKey:
      return "drop primary key";
    case EElement::ForeignKey:
      return "drop foreign key " + QuotedName(name);
    case EElement::Check:
      return (server.mysql ? "drop check " : "drop constraint ") + QuotedName(name);
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

void TAlter::Force() {
  constexpr const char* kForce = "force";
  if (std::find(clauses_.begin(), clauses_.end(), kForce) == clauses_.end()) Clause(kForce);
}

void TAlter::Serves(const TChange& change) {
  auto& ids = statement_.actions;
  if (std::find(ids.begin(), ids.end(), change.id) == ids.end()) ids.push_back(change.id);
}

void TAlter::Makes(const TChange& change) {
  Serves(change);
  if (!change.unsafe.empty()) statement_.unsafe.push_back(Subject(change) + ": " + change.unsafe);
}

void TAlter::MoveTo(std::vector<TPlanStatement>& plan) {
  if (Empty()) return;
  const bool one_line = clauses_.size() + (end_.empty() ? 0 : 1) == 1;
  const char* gap = one_line ? " " : "\n  ";
  statement_.text = "alter table " + QuotedName(table_);
  for (std::size_t i = 0; i < clauses_.size(); ++i) statement_.text += (i == 0 ? "" : ",") + (gap + clauses_[i]);
  if (!end_.empty()) statement_.text += gap + end_;
  statement_.table = table_;
  plan.push_back(std::move(statement_));
}

// --- The statements of a table

namespace {

EElement KindOf(const TElement& element) {
  const auto head = element.text.Empty() ? std::nullopt : ReadElementHead(element.text.Tokens());
  return head ? head->kind : EElement::Other;
}

}  // namespace

std::string SridOf(const TElementText& column) {
  const TTokens tokens = column.Tokens();
  for (std::size_t at = 0; at < tokens.size(); ++at)
    if (IsKeyword(tokens[at], "srid")) return std::string(TokenAt(tokens, at + 1).text);
  return {};
}

namespace {

bool NamesColumn(const TElementText& key, const std::string& column) {
  const std::vector<TKeyPart>& parts = key.KeyParts();
  return std::any_of(parts.begin(), parts.end(),
                     [&column](const TKeyPart& part) { return SameText(part.column, column); });
}

bool ChangesSystem(const TChange& change, const TElement& key) {
  if (change.action != saModifyColumn || SridOf(change.old_text) == SridOf(change.new_text)) return false;
  return NamesColumn(key.text, change.item);
}

// Servers do not change the reference system of a column with a spatial key, even if that goes in the same statement.
bool HasToBeGone(const TElement& key, const TTableWork& work) {
  if (KindOf(key) != EElement::SpatialKey) return false;
  return std::any_of(work.changes.begin(), work.changes.end(),
                     [&key](const TChange* change) { return ChangesSystem(*change, key); });
}

// Whether a column of the key goes and comes again in the table's main statement.
bool LosesColumn(const TElementText& key, const TTableWork& work) {
  return std::any_of(work.changes.begin(), work.changes.end(), [&](const TChange* change) {
    return IsReplaced(*change, work) && NamesColumn(key, change->item);
  });
}

// Whether the column may be null only once the former primary key is gone, which stays until the new one has values.
bool LeavesKeyLater(const TChange& column, const TTableWork& work) {
  if (column.action != saModifyColumn || column.moved_only || column.new_column->not_null) return false;
  return std::any_of(work.changes.begin(), work.changes.end(), [&](const TChange* key) {
    if (key->kind != EElement::PrimaryKey || key->old_text.Empty() || key->new_text.Empty()) return false;
    return NamesColumn(key->old_text, column.item) && NamesFilledColumn(key->new_text, work) &&
           !LosesColumn(key->old_text, work);
  });
}

// Whether a column stays as long as the former primary key, whose place the new one takes once its columns are filled:
// servers may refuse to be without a primary key in between.
bool GoesWithKey(const TChange& change, const TTableWork& work) {
  const TElement* had = work.target->Find(EElement::PrimaryKey, "PRIMARY");
  const TElement* has = work.reference->Find(EElement::PrimaryKey, "PRIMARY");
  return had != nullptr && has != nullptr && NamesColumn(had->text, change.item) &&
         NamesFilledColumn(has->text, work) && !LosesColumn(had->text, work);
}

}  // namespace

void TTableAlters::Replace(const TElement& had, const TElement& has, const TTableWork& work, const TChange* made,
                           const std::vector<const TChange*>& changes) {
  bool is_made = false;
  const auto add = [&](TAlter& alter, std::string text) {
    alter.Clause(std::move(text));
    if (made != nullptr) is_made ? alter.Serves(*made) : alter.Makes(*made);
    is_made = true;
    for (const TChange* change : changes) alter.Serves(*change);
  };
  const bool waits = has.kind == EElement::PrimaryKey && !has.text.Empty() && NamesFilledColumn(has.text, work);
  TAlter& drops = HasToBeGone(had, work)                                        ? first
                  : waits && (had.text.Empty() || !LosesColumn(had.text, work)) ? filled
                                                                                : main;
  if (!had.text.Empty()) add(drops, DropText(had.kind, had.name, work.server));
  if (has.text.Empty()) return;
  const std::string text = "add " + has.text.Str();
  const bool is_fulltext = KindOf(has) == EElement::FulltextKey;
  if (is_fulltext && (adds_fulltext || KindOf(had) == EElement::FulltextKey))
    return add(fulltext.emplace_back(work.name), text);
  adds_fulltext = adds_fulltext || is_fulltext;
  add(waits ? filled : main, text);
}

void TTableAlters::MoveTo(std::vector<TPlanStatement>& plan) {
  first.MoveTo(plan);
  main.MoveTo(plan);
  if (!filling.text.empty()) plan.push_back(std::move(filling));
  filled.MoveTo(plan);
  later.MoveTo(plan);
  for (TAlter& alter : fulltext) alter.MoveTo(plan);
}

// --- Columns

// Servers do not turn a computed column into a stored one or back, nor some types into others. The column's keys stay
// with it.
bool IsReplaced(const TChange& change, const TTableWork& work) {
  if (change.action != saModifyColumn || change.moved_only || work.reference == nullptr) return false;
  const TColumnText& from = *change.old_column;
  const TColumnText& to = *change.new_column;
  const auto is_virtual = [](const TColumnText& column) { return column.generated && !column.stored; };
  return is_virtual(from) != is_virtual(to) || !Converts(from, to);
}

namespace {

// The column clauses of one table. What is placed stands in the order of the reference, so that the column before it
// is already there.
class TColumnClauses {
 public:
  explicit TColumnClauses(const TTableWork& work);
  void AddTo(TTableAlters& alters) const;

 private:
  void Add(const TChange& change, TTableAlters& alters) const;
  void Modify(const TChange& change, TTableAlters& alters) const;
  static void SetLater(const TChange& change, const std::string& text, TTableAlters& alters);
  std::string Text(const TChange& change) const;
  std::string Place(const TChange& change) const;
  std::size_t Position(const TChange& change) const;

  const TTableWork& work_;
  std::vector<const TChange*> changes_;
  std::vector<std::string> order_;  // names of the reference's columns
  std::unordered_map<std::string, std::size_t> positions_;
  std::unordered_set<std::string> there_;  // what the table has when the statement ran
  bool keeps_generated_ = false;           // the column of a generated key stays the first one
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
  for (const auto& element : work.target->elements)
    if (element.kind == EElement::Column) there_.insert(LowerText(element.name));
  for (const TChange* change : changes_)
    if (change->action == saAddColumn) there_.insert(LowerText(change->item));
  keeps_generated_ =
      HasGeneratedKey(*work.target) && std::none_of(changes_.begin(), changes_.end(), [](const TChange* change) {
        return change->action != saAddColumn && SameText(change->item, kGeneratedColumn);
      });
  std::stable_sort(changes_.begin(), changes_.end(),
                   [this](const TChange* a, const TChange* b) { return Position(*a) < Position(*b); });
}

std::size_t TColumnClauses::Position(const TChange& change) const {
  const auto position = positions_.find(LowerText(change.item));
  return position == positions_.end() ? 0 : position->second;
}

std::string TColumnClauses::Text(const TChange& change) const {
  return inherits_ ? change.new_text.Str() : PinnedColumnText(change.new_text, *work_.reference, *work_.target);
}

// After the nearest column before it that the table will have: one that was to come may have been struck out.
std::string TColumnClauses::Place(const TChange& change) const {
  for (std::size_t i = Position(change); i > 0; --i)
    if (there_.contains(LowerText(order_[i - 1]))) return " after " + QuotedName(order_[i - 1]);
  return keeps_generated_ ? " after " + QuotedName(kGeneratedColumn) : " first";
}

void TColumnClauses::SetLater(const TChange& change, const std::string& text, TTableAlters& alters) {
  alters.filled.Clause("modify column " + text);
  alters.filled.Serves(change);
}

void TColumnClauses::Add(const TChange& change, TTableAlters& alters) const {
  const std::string text = Text(change);
  const bool filled = IsFilledLater(change, work_);
  alters.main.Clause("add column " + (filled ? TextWithoutDefault(text, !ComesNotNull(change, work_)) : text) +
                     Place(change));
  if (filled) SetLater(change, text, alters);
}

void TColumnClauses::Modify(const TChange& change, TTableAlters& alters) const {
  const std::string text = Text(change);
  const bool waits = GetsDefaultLater(change, work_);
  const std::string place = change.after ? Place(change) : "";
  if (LeavesKeyLater(change, work_)) return alters.filled.Clause("modify column " + text + place);
  alters.main.Clause("modify column " + (waits ? TextWithoutDefault(text, false) : text) + place);
  if (waits) SetLater(change, text, alters);
}

void TColumnClauses::AddTo(TTableAlters& alters) const {
  TAlter& alter = alters.main;
  for (const TChange* change : changes_) {
    const bool drops = change->action == saDropColumn;
    TAlter& dropping = drops && GoesWithKey(*change, work_) ? alters.filled : alter;
    if (drops || IsReplaced(*change, work_)) dropping.Clause("drop column " + QuotedName(change->item));
    if (drops) dropping.Makes(*change);
  }
  for (const TChange* change : changes_) {
    if (change->action == saDropColumn) continue;
    if (change->action == saAddColumn || IsReplaced(*change, work_))
      Add(*change, alters);
    else
      Modify(*change, alters);
    (LeavesKeyLater(*change, work_) ? alters.filled : alter).Makes(*change);
  }
}

// Servers print "?" for letters of four bytes, so that members which look the same may be others.
bool MayHaveOtherMembers(const TColumnText& column) {
  return std::any_of(column.arguments.begin(), column.arguments.end(),
                     [](const std::string& member) { return member.find('?') != std::string::npos; });
}

}  // namespace

bool DisturbsForeignKeys(const TChange& change, const TTableWork& work) {
  if (change.action != saModifyColumn || change.moved_only || work.reference == nullptr) return false;
  const TColumnText& from = *change.old_column;
  const TColumnText& to = *change.new_column;
  return from.type != to.type || from.arguments != to.arguments || from.is_unsigned != to.is_unsigned ||
         from.zerofill != to.zerofill || from.not_null != to.not_null || from.auto_increment != to.auto_increment ||
         from.charset != to.charset || from.generated != to.generated || from.stored != to.stored ||
         MayHaveOtherMembers(to);
}

void AddColumnClauses(const TTableWork& work, TTableAlters& alters) {
  TColumnClauses(work).AddTo(alters);
  alters.filling = FillingStatement(work);
}

// --- What columns take along

namespace {

// Whether servers refuse the change while a check reads the column: they let go of none, even if it comes again in the
// same statement, and go on computing it from columns that it may no longer be computed of.
bool DisturbsChecks(const TChange& change, const TTableWork& work) {
  if (IsReplaced(change, work)) return true;
  if (change.action != saModifyColumn || change.moved_only) return false;
  return change.old_column->generated.has_value();
}

// Keys keep the lengths that they had, which need not be ones of the new type.
bool DisturbsKeys(const TChange& change, const TTableWork& work) {
  if (change.action != saModifyColumn || change.moved_only) return false;
  const TColumnText& from = *change.old_column;
  const TColumnText& to = *change.new_column;
  const auto has_members = [](const TColumnText& column) { return column.type == "enum" || column.type == "set"; };
  // MySQL takes the bytes of a member's number for letters.
  if (has_members(from) && !has_members(to)) return true;
  return IsReplaced(change, work) && (from.type != to.type || from.arguments != to.arguments);
}

// A table in memory keeps the directions of its keys, but does not print them: another engine then would.
bool BringsDirections(const TChange& change, const TTableWork& work) {
  return SetsOption(change, "ENGINE") && EngineOf(*work.target) == "memory";
}

// As checks do, such keys keep the columns that they compute something of, and those that these are computed of.
bool HasExpression(const TElement& key) {
  if (!IsKey(key.kind)) return false;
  const std::vector<TKeyPart>& parts = key.text.KeyParts();
  return std::any_of(parts.begin(), parts.end(), [](const TKeyPart& part) { return part.column.empty(); });
}

bool Disturbs(const TChange& change, const TElement& element, const TTableWork& work) {
  const bool is_check = element.kind == EElement::Check;
  if (!is_check &&
      (BringsDirections(change, work) || (element.kind == EElement::SpatialKey && ChangesSystem(change, element))))
    return true;
  const bool disturbs_key = DisturbsKeys(change, work) || (HasExpression(element) && DisturbsChecks(change, work));
  if (is_check ? !DisturbsChecks(change, work) : !disturbs_key) return false;
  const TTokens tokens = element.text.Tokens();
  return std::any_of(tokens.begin(), tokens.end(),
                     [&change](const TToken& token) { return IsName(token) && SameText(NameOf(token), change.item); });
}

// A key as columns that are dropped leave it; empty for one that goes with them.
TElementText RemainingText(TElementText key, const TTableWork& work) {
  for (const TChange* change : work.changes)
    if (change->action == saDropColumn && !key.Empty()) key = KeyTextWithout(key, change->item);
  return key;
}

bool BeginsWith(const TElement& key, const std::vector<std::string>& columns) {
  const std::vector<TKeyPart>& parts = key.text.KeyParts();
  return parts.size() >= columns.size() &&
         std::equal(columns.begin(), columns.end(), parts.begin(),
                    [](const std::string& column, const TKeyPart& part) { return SameText(column, part.column); });
}

bool HasFulltextKey(const TTableText* table, const std::vector<std::string>& columns) {
  return table != nullptr && std::any_of(table->elements.begin(), table->elements.end(), [&](const TElement& key) {
           return key.kind == EElement::FulltextKey && BeginsWith(key, columns);
         });
}

// Servers let go of a key that they made for a foreign key where a fulltext key has its columns, but for a statement
// that says of the key that it is to be there. MySQL then refuses every other one about the table; to MariaDB the
// foreign key is without it from the statement on that adds the fulltext key.
bool IsToBeNamed(const TElement& key, const TTableWork& work) {
  if (key.kind != EElement::Key) return false;
  const TElement* foreign = work.target->Find(EElement::ForeignKey, key.name);
  if (foreign == nullptr) return false;
  const auto is_it = [&key](const std::string& name) { return SameText(name, key.name); };
  const bool goes =
      std::any_of(work.changes.begin(), work.changes.end(),
                  [&](const TChange* change) { return IsForeignKeyChange(*change) && is_it(change->item); }) ||
      std::any_of(work.obstacles.begin(), work.obstacles.end(),
                  [&](const TObstacle& obstacle) { return is_it(obstacle.key->name); });
  const std::vector<std::string>& columns = foreign->text.ForeignKey().columns;
  const bool had = HasFulltextKey(work.target, columns), has = HasFulltextKey(work.reference, columns);
  return !goes && BeginsWith(key, columns) && (work.server.mysql ? had || has : !had && has);
}

}  // namespace

bool DisturbsCheck(const TChange& change, const TElement& check, const TTableWork& work) {
  return Disturbs(change, check, work);
}

void RenewElements(const TTableWork& work, TTableAlters& alters) {
  for (const TElement& element : work.target->elements) {
    const bool is_check = element.kind == EElement::Check;
    if ((!is_check && !IsKey(element.kind)) || element.name.empty()) continue;
    const auto changes = [&element, is_check](const TChange* change) {
      const bool same_kind = is_check ? change->kind == EElement::Check : IsKey(change->kind);
      return same_kind && SameText(change->item, element.name);
    };
    if (std::any_of(work.changes.begin(), work.changes.end(), changes)) continue;
    std::vector<const TChange*> causes;
    for (const TChange* change : work.changes)
      if (Disturbs(*change, element, work)) causes.push_back(change);
    if (causes.empty() && IsToBeNamed(element, work)) causes = work.changes;
    if (causes.empty()) continue;
    const TElementText text = is_check ? element.text : RemainingText(element.text, work);
    alters.Replace(element, {element.kind, element.name, text}, work, nullptr, causes);
  }
}

// --- Keys and checks

namespace {

std::string BlockSize(const std::string& key_text) {
  const auto tokens = Tokens(key_text);
  for (std::size_t at = 0; at < tokens.size(); ++at) {
    if (!IsKeyword(tokens[at], "key_block_size")) continue;
    return std::string(TokenAt(tokens, TokenAt(tokens, at + 1).Is("=") ? at + 2 : at + 1).text);
  }
  return "";
}

TElement ElementOf(const TChange& change) { return {change.kind, change.item, change.old_text}; }

// Also by what it takes over from the table, and would keep.
bool IsDisturbed(const TElement& element, const TTableWork& work) {
  return std::any_of(work.changes.begin(), work.changes.end(), [&](const TChange* change) {
    return SetsOption(*change, "KEY_BLOCK_SIZE") || Disturbs(*change, element, work);
  });
}

}  // namespace

// Servers take a key that goes and comes again in one statement for the same one where only its use or block size
// differs, and leave it as it was, unless the table is made anew. For the use alone there is a clause that costs
// nothing.
void ChangeElement(const TChange& change, const TTableWork& work, TTableAlters& alters) {
  const bool is_new = change.old_text.Empty();
  if (IsKey(change.kind) && !is_new && !change.new_text.Empty()) {
    const TKeyUse had = SplitKeyUse(change.old_text);
    const TKeyUse has = SplitKeyUse(change.new_text);
    if (had.text == has.text && had.word != has.word && !IsDisturbed(ElementOf(change), work)) {
      const std::string used = had.word == "ignored" ? "not ignored" : "visible";
      alters.main.Clause("alter index " + QuotedName(change.item) + " " + (has.word.empty() ? used : has.word));
      return alters.main.Makes(change);
    }
    if (had.word != has.word || BlockSize(had.text) != BlockSize(has.text)) alters.main.Force();
  }
  alters.Replace(ElementOf(change), {change.kind, change.item, change.new_text}, work, &change, {});
}

// --- Options

namespace {

bool IsOptionsChange(const TChange& change) { return change.action == saChangeTableType && !change.options.empty(); }
// Aria's own default is named once a table was partitioned or changed, and is not forgotten in the statement that
// leaves the engine or partitions the table.
constexpr std::string_view kOutlivesEngine = "PAGE_CHECKSUM";

bool NamesOnLeaving(const TTableWork& work) {
  return EngineOf(*work.target) == "aria" && work.target->FindOption(kOutlivesEngine) == nullptr &&
         RemovesPartitioning(work);
}

}  // namespace

void SetOptions(const TTableWork& work, TTableAlters& alters) {
  TAlter& alter = alters.main;
  const auto set_later = [&later = alters.later](const TChange& change, const TTableOption& option) {
    later.Clause(OptionText(option));
    later.Serves(change);
  };
  for (const TChange* change : work.changes) {
    if (!IsOptionsChange(*change)) continue;
    const bool leaves = SetsOption(*change, "ENGINE");
    const TChange* partitioning = PartitionChange(work);
    const bool partitions = partitioning != nullptr && !partitioning->new_text.Empty();
    if (leaves && NamesOnLeaving(work)) set_later(*change, {std::string(kOutlivesEngine), "DEFAULT"});
    std::string options;
    for (const auto& option : change->options)
      if (option.name == kOutlivesEngine && (leaves || partitions))
        set_later(*change, option);
      else
        options += (options.empty() ? "" : " ") + OptionText(option);
    if (!options.empty()) alter.Clause(options);
    alter.Makes(*change);
  }
}

// --- Keys by hash

namespace {

bool UsesHash(const TElement& key) {
  if (key.kind != EElement::UniqueKey) return false;
  const TTokens tokens = key.text.Tokens();
  for (std::size_t at = 0; at + 1 < tokens.size(); ++at)
    if (IsKeyword(tokens[at], "using") && IsKeyword(tokens[at + 1], "hash")) return true;
  return false;
}

}  // namespace

std::vector<TElement> HashKeys(const TTableWork& work) {
  std::vector<TElement> keys;
  const auto add = [&keys](const TElement& key) {
    if (!key.text.Empty() && UsesHash(key)) keys.push_back(key);
  };
  const TTableText& table = work.target != nullptr ? *work.target : *work.reference;
  for (const TElement& key : table.elements) {
    const bool changes = std::any_of(work.changes.begin(), work.changes.end(), [&key](const TChange* change) {
      return IsKey(change->kind) && SameText(change->item, key.name);
    });
    if (!changes && UsesHash(key)) add({key.kind, key.name, RemainingText(key.text, work)});
  }
  for (const TChange* change : work.changes) add({change->kind, change->item, change->new_text});
  return keys;
}

}  // namespace velmora
