// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/run/RowChecks.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <unordered_map>

#include "core/Host.h"
#include "exact/compare/CanonicalForm.h"
#include "exact/compare/GeneratedKey.h"
#include "exact/plan/PlanClauses.h"
#include "exact/plan/PlanFilling.h"
#include "exact/run/PartitionLimits.h"
#include "exact/run/RowValues.h"
#include "mysqltext/ColumnParts.h"
#include "mysqltext/ColumnType.h"
#include "mysqltext/ElementText.h"
#include "mysqltext/KeyText.h"
#include "mysqltext/Lexer.h"
#include "util/Counted.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Lists.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kEqualRows[] = "%s with values that occur more than once (%d such values)";
constexpr char kNulls[] = "%s with NULL, which will no longer be allowed";
constexpr char kOrphans[] = "%s without the row referred to";
constexpr char kOrphansMet[] =
    "%s without the row referred to; this server looks at all foreign keys of a table when it adds one";
constexpr char kAgainst[] = "%s that it does not allow";
constexpr char kNoPlace[] = "%s for which there is no partition";
constexpr char kComputedNull[] = "%s for which it is NULL, which will not be allowed";
constexpr char kTooLarge[] = "%s for which it is out of range or too long";
constexpr char kNoValue[] = "%s for which there is no value, and NULL is not allowed";
constexpr char kTriggers[] = "it gets its values by an update of all rows, which runs the table's own triggers";
constexpr char kTriggersOf[] =
    "count(*), 1 from information_schema.triggers where event_manipulation = 'UPDATE' and event_object_schema = "
    "database() "
    "and event_object_table = %s";
constexpr char kNoKey[] =
    "it will have no primary key, which this server requires (sql_require_primary_key, "
    "sql_generate_invisible_primary_key)";
constexpr char kLateKey[] =
    "it is changed before it gets its primary key, which this server requires (sql_require_primary_key)";
// What MySQL is told of tables without one; other servers know nothing of it. Not 0 where it refuses a table: one that
// is made, and that gets a key from the server if this is told to; one that cannot get it; one that is altered.
constexpr char kMadeWithoutKey[] =
    "0 /*!80013 + @@sql_require_primary_key */ /*!80030 > @@sql_generate_invisible_primary_key */, 1";
constexpr char kLeftWithoutKey[] =
    "0 /*!80013 + @@sql_require_primary_key */ /*!80030 + @@sql_generate_invisible_primary_key */, 1";
constexpr char kStaysWithoutKey[] = "0 /*!80013 + @@sql_require_primary_key */, 1";
// True for MySQL alone, which copies a table row by row under the checks of all its foreign keys.
constexpr char kCopiesChecked[] = "0 /*!50700 + 1 */ and ";
constexpr char kHiddenKey[] =
    "it stands for the primary key, which the table does not have, and servers do not hide that one from queries";
constexpr char kOtherSystem[] = "%s with shapes of another reference system (SRID)";
constexpr char kOtherSize[] =
    "column %s is of another size, or has other values, than what it refers to, and servers compare the bytes";
constexpr char kSeveral[] = "it goes by several columns";

bool IsUnique(const TElement& key) { return key.kind == EElement::PrimaryKey || key.kind == EElement::UniqueKey; }

std::string KeySubject(const TElement& key) {
  return key.kind == EElement::PrimaryKey ? "primary key" : "unique key " + key.name;
}

struct TWholeRange {
  const char* type;
  const char* range;
  const char* of_unsigned;
};
constexpr std::array<TWholeRange, 5> kWholeRanges = {
    {{"tinyint", "-128 and 127", "0 and 255"},
     {"smallint", "-32768 and 32767", "0 and 65535"},
     {"mediumint", "-8388608 and 8388607", "0 and 16777215"},
     {"int", "-2147483648 and 2147483647", "0 and 4294967295"},
     {"bigint", "-9223372036854775808 and 9223372036854775807", "0 and 18446744073709551615"}}};

// A condition of values, "%s", that the column does not take; empty where none is known.
std::string OutOfType(const TColumnText& column) {
  for (const TWholeRange& row : kWholeRanges)
    if (column.type == row.type) return Format("%%s not between %s", column.is_unsigned ? row.of_unsigned : row.range);
  const bool has_length = (column.type == "char" || column.type == "varchar") && column.Length();
  return has_length ? Format("char_length(%%s) > %d", *column.Length()) : std::string();
}

template <class Values>
std::string Joined(const Values& values, const char* between, const char* after) {
  std::string text;
  for (const std::string& value : values) text += (text.empty() ? "" : between) + value + after;
  return text;
}

using EKind = TRowValue::EKind;

// Whether equal values have other bytes, which is what servers compare of such types in foreign keys.
bool HasOtherBytes(const TTableText& table, const std::string& column, const TTableText* parent,
                   const std::string& referred) {
  const TElement* own = table.Find(EElement::Column, column);
  const TElement* theirs = parent == nullptr ? nullptr : parent->Find(EElement::Column, referred);
  if (own == nullptr || theirs == nullptr) return false;
  const TColumnText a = ReadColumnText(own->text, table), b = ReadColumnText(theirs->text, *parent);
  return a.type == b.type && a.arguments != b.arguments &&
         InList(a.type, {"decimal", "bit", "time", "datetime", "timestamp", "enum", "set"});
}

class TRowInquiry {
 public:
  TRowInquiry(const std::vector<TChange>& changes, const TSchema& reference, const TSchema& target,
              const std::vector<TPlanStatement>& plan)
      : wanted_(reference) {
    const auto take = [&](const std::string& name) -> TTableRows& {
      const auto [found, is_new] = tables_.try_emplace(name);
      TTableRows& table = found->second;
      if (!is_new) return table;
      table.reference = reference.Find(name);
      table.target = target.Find(name);
      if (table.reference != nullptr) order_.push_back(name);
      return table;
    };
    for (const TChange& change : changes) take(change.table).changes.push_back(&change);
    for (const TPlanStatement& statement : plan) {
      TTableRows& table = take(statement.table);
      Follow(statement, table);
      if (table.target != nullptr) FindPutBack(statement, table);
    }
  }

  std::vector<TRowQuestion> Questions() {
    for (const std::string& name : order_) {
      const TTableRows& table = tables_.at(name);
      AskKey(table);
      if (table.target == nullptr) continue;
      for (const TChange* change : table.changes) AskAbout(table, *change);
      for (const TElement& key : table.reference->elements)
        if (IsUnique(key) && IsSortedAnew(table, key)) AskUnique(table, key);
      for (const TElement* key : table.put_back) AskOrphans(table, *key);
      if (table.checked) AskKept(table);
    }
    return std::move(questions_);
  }

 private:
  static void Follow(const TPlanStatement& statement, TTableRows& table) {
    if (statement.text.starts_with("rename table ")) return;
    if (++table.statements == 1) table.key_first = PosNoCase("add primary key ", statement.text) != 0;
    table.unpartitioned |= statement.text == Format("alter table %s remove partitioning", QuotedName(statement.table));
    table.checked |= statement.checks_on;
  }

  static bool Changes(const TTableRows& table, const TElement& element) {
    return std::ranges::any_of(table.changes, [&element](const TChange* change) {
      return change->kind == element.kind && SameText(change->item, element.name);
    });
  }

  // Foreign keys that do not change, but go while a column does.
  static void FindPutBack(const TPlanStatement& statement, TTableRows& table) {
    for (const TElement& element : table.target->elements) {
      if (element.kind != EElement::ForeignKey || statement.text.find("add " + element.text.Str()) == std::string::npos)
        continue;
      if (!Changes(table, element)) table.put_back.push_back(&element);
    }
  }

  static bool WillHavePrimaryKey(const TTableRows& table) {
    if (table.target == nullptr) return HasPrimaryKey(*table.reference);
    const auto found =
        std::ranges::find_if(table.changes, [](const TChange* change) { return change->kind == EElement::PrimaryKey; });
    return found == table.changes.end() ? HasPrimaryKey(*table.target) : !(*found)->new_text.Empty();
  }

  // Servers take a unique key without NULL for a primary one in the statement that adds it, and in no other.
  static bool GetsUniqueKey(const TTableRows& table) {
    if (table.target == nullptr) return true;
    const std::size_t before =
        table.unpartitioned && HasPrimaryKey(*table.target) ? 1 : 0;  // which leaves the key as it is
    return table.statements <= 1 + before && std::ranges::any_of(table.changes, [&table](const TChange* change) {
             const TElement* key = table.reference->Find(EElement::UniqueKey, change->item);
             return IsKey(change->kind) && key != nullptr && IsKeyWithoutNull(*key, *table.reference);
           });
  }

  void AskKey(const TTableRows& table) {
    const TTableText& has = *table.reference;
    const TTableText* had = table.target;
    const bool has_key = HasUniqueKeyWithoutNull(has);
    if (WillHavePrimaryKey(table)) return AskLateKey(table);
    AskHiddenKey(table);
    if (has_key && GetsUniqueKey(table)) return;
    const bool had_key = had != nullptr && (HasPrimaryKey(*had) || HasUniqueKeyWithoutNull(*had));
    const bool is_own = EngineOf(has) == "innodb";
    const bool takes_key = had == nullptr && has.partitioning.empty() && !HasCounter(has);
    const bool partitioned =
        had != nullptr && !had->partitioning.empty() && !has.partitioning.empty() && !table.unpartitioned;
    const bool loses_key = had == nullptr || (had_key && !has_key && !partitioned);
    const char* sql = !is_own || !loses_key ? kStaysWithoutKey : takes_key ? kMadeWithoutKey : kLeftWithoutKey;
    questions_.push_back({has.name, "table", sql, kNoKey});
  }

  // The first unique key without NULL, before one of first letters. One that does not change has been taken.
  void AskHiddenKey(const TTableRows& table) {
    const TElement* stands = nullptr;
    bool whole = false;
    for (const TElement& key : table.reference->elements) {
      if (key.kind != EElement::UniqueKey || !NeverNull(key, *table.reference)) continue;
      const bool of_letters = !IsKeyWithoutNull(key, *table.reference);
      if (stands != nullptr && (whole || of_letters)) continue;
      stands = &key;
      whole = !of_letters;
    }
    if (stands == nullptr || SplitKeyUse(stands->text).word.empty()) return;
    if (table.target == nullptr || Changes(table, *stands))
      questions_.push_back({table.reference->name, KeySubject(*stands), "1, 1", kHiddenKey});
  }

  static bool NeverNull(const TElement& key, const TTableText& table) {
    return std::ranges::all_of(key.text.KeyParts(), [&table](const TKeyPart& part) {
      const TElement* column = table.Find(EElement::Column, part.column);
      return column != nullptr && ReadColumnText(column->text, table).not_null;
    });
  }

  void AskLateKey(const TTableRows& table) {
    if (table.target == nullptr || HasPrimaryKey(*table.target) || table.key_first || table.statements == 0) return;
    questions_.push_back({table.reference->name, "table", kStaysWithoutKey, kLateKey});
  }

  void AskAbout(const TTableRows& table, const TChange& change) {
    const bool adds = change.action == saAddKey || change.action == saModifyKey || change.action == saAddConstraint ||
                      change.action == saModifyConstraint;
    if (change.action == saModifyColumn) AskNull(change);
    if (change.action == saModifyColumn) AskSystem(table, change);
    if (change.action == saModifyColumn || change.action == saAddColumn) AskComputed(table, change);
    if (change.action == saModifyColumn || change.action == saAddColumn) AskOwnCheck(table, change);
    if (change.action == saAddColumn) AskFilled(change);
    if (change.action == saAddColumn) AskTriggers(change);
    if (change.action == saChangeTableType && change.item == kPartitioningItem) AskPlaces(table, change);
    if (!adds) return;
    const TElement* element = table.reference->Find(change.kind, change.item);
    if (element == nullptr) return;
    if (IsUnique(*element)) AskUnique(table, *element);
    if (element->kind == EElement::ForeignKey) AskOrphans(table, *element);
    if (element->kind == EElement::Check) AskCheck(table, *element);
  }

  // The text of these tokens with the columns as they will be; nothing where that is refused.
  std::optional<std::string> InRows(const TTableRows& table, const std::string& subject, TTokens tokens,
                                    TTokenRange range) {
    TRowValue value = ValueOfTokens(table, tokens, range);
    if (value.kind == EKind::Stored) return std::move(value.sql);
    Refuse(table, subject, value.why);
    return std::nullopt;
  }

  void Ask(const TTableRows& table, const std::string& subject, const std::string& condition, const char* answer) {
    const std::string rows = Format("count(*), 1 from %s where %s", QuotedName(table.target->name), condition);
    questions_.push_back({table.target->name, subject, rows, answer});
  }

  void AskCheck(const TTableRows& table, const TElement& check) {
    const std::string text = check.text.Str();
    const std::vector<TToken> tokens = Tokens(text);
    std::size_t open = 0;
    while (open < tokens.size() && !IsKeyword(tokens[open], "check")) ++open;
    open = NextBracket(tokens, open);
    const std::size_t after = AfterGroup(tokens, open);
    if (after >= tokens.size() || IsKeyword(TokenAt(tokens, after), "not")) return;  // not enforced
    const std::string subject = "check " + check.name;
    if (const auto condition = InRows(table, subject, tokens, {open + 1, after - 1}))
      Ask(table, subject, "not " + *condition, kAgainst);
  }

  // A check within a column is the column's own.
  void AskOwnCheck(const TTableRows& table, const TChange& change) {
    const std::optional<TTokenRange>& has = change.new_text.Column().check;
    if (!has || change.moved_only) return;
    const TElementText& old_text = change.old_text;
    const bool same = !old_text.Empty() && old_text.Column().check &&
                      old_text.Part(*old_text.Column().check) == change.new_text.Part(*has);
    const std::string subject = "check of column " + change.item;
    if (same) return;
    if (const auto condition = InRows(table, subject, change.new_text.Tokens(), *has))
      Ask(table, subject, "not " + *condition, kAgainst);
  }

  // There is no shape and no vector that servers would fill rows with.
  void AskFilled(const TChange& change) {
    const TColumnText& has = *change.new_column;
    const bool has_filling = !IsShapeType(has.type) && has.type != "vector";
    if (has_filling || !has.not_null || has.default_text || has.generated) return;
    questions_.push_back(
        {change.table, "column " + change.item, Format("count(*), 1 from %s", QuotedName(change.table)), kNoValue});
  }

  // Rows are not in the way of that, but whoever wrote the triggers did not think of it.
  void AskTriggers(const TChange& change) {
    if (!IsFilledByUpdate(change)) return;
    questions_.push_back(
        {change.table, "column " + change.item, Format(kTriggersOf, QuotedText(change.table)), kTriggers});
  }

  void AskSystem(const TTableRows& table, const TChange& change) {
    const std::string system = SridOf(change.new_text);
    if (system.empty() || system == SridOf(change.old_text)) return;
    const std::string condition = Format("st_srid(%s) <> %s", QuotedName(change.item), system);
    Ask(table, "column " + change.item, condition, kOtherSystem);
  }

  void AskPlaces(const TTableRows& table, const TChange& change) {
    const std::string text = change.new_text.Str();
    const std::vector<TToken> tokens = Tokens(text);
    const TPartitionLimits limits = ReadPartitionLimits(text, tokens);
    if (limits.condition.empty()) return;
    if (limits.several) return Refuse(table, kPartitioningItem, kSeveral);
    if (const auto value = InRows(table, kPartitioningItem, tokens, limits.expression))
      Ask(table, kPartitioningItem, StrReplace(limits.condition, "%s", *value), kNoPlace);
  }

  // Of a column that is computed and stored, and of one that may not be NULL.
  void AskComputed(const TTableRows& table, const TChange& change) {
    const TColumnText& has = *change.new_column;
    if (!has.generated || change.moved_only) return;
    const TColumnText none;
    const TColumnText& had = change.old_column == nullptr ? none : *change.old_column;
    const bool same = had.generated == has.generated && had.stored == has.stored;
    const bool same_values =
        same && had.type == has.type && had.arguments == has.arguments && had.is_unsigned == has.is_unsigned;
    const bool same_nulls = same && (had.not_null || !has.not_null);
    const std::string limit = has.stored && !same_values ? OutOfType(has) : std::string();
    const bool asks_null = has.not_null && !same_nulls;
    if (limit.empty() && !asks_null) return;
    const std::string subject = "column " + change.item;
    const std::vector<TToken> tokens = Tokens(*has.generated);
    const auto value = InRows(table, subject, tokens, {0, tokens.size() - 1});
    if (!value) return;
    if (asks_null) Ask(table, subject, *value + " is null", kComputedNull);
    if (!limit.empty()) Ask(table, subject, StrReplace(limit, "%s", *value), kTooLarge);
  }

  void AskNull(const TChange& change) {
    const TColumnText& had = *change.old_column;
    const TColumnText& has = *change.new_column;
    if (had.not_null || !has.not_null || has.generated || has.auto_increment) return;
    const std::string rows =
        Format("count(*), 1 from %s where %s is null", QuotedName(change.table), QuotedName(change.item));
    questions_.push_back({change.table, "column " + change.item, rows, kNulls});
  }

  // A key that stays, over values that do not.
  static bool IsSortedAnew(const TTableRows& table, const TElement& key) {
    const bool changes = std::ranges::any_of(
        table.changes, [&](const TChange* change) { return IsKey(change->kind) && SameText(change->item, key.name); });
    if (changes || table.target->Find(key.kind, key.name) == nullptr) return false;
    return std::ranges::any_of(key.text.KeyParts(), [&](const TKeyPart& part) { return HoldsOthers(table, part); });
  }

  void AskUnique(const TTableRows& table, const TElement& key) {
    TStringList stored;
    for (const TKeyPart& part : key.text.KeyParts()) {
      const TRowValue value = ValueOfPart(table, part);
      if (value.kind == EKind::Null || value.kind == EKind::Numbered) return;  // no two rows are equal in this
      if (value.kind == EKind::Unknown) return Refuse(table, KeySubject(key), value.why);
      if (value.kind == EKind::Stored) stored.push_back(value.sql);
    }
    const std::string name = QuotedName(table.target->name);
    std::string rows = Format("if(count(*) > 1, count(*), 0), 1 from %s", name);
    if (!stored.empty())
      rows = Format(
          "cast(coalesce(sum(n), 0) as signed), count(*) from (select count(*) as n from %s where %s group by %s "
          "having count(*) > 1) "
          "as equal_rows",
          name, Joined(stored, " and ", " is not null"), Joined(stored, ", ", ""));
    questions_.push_back({table.target->name, KeySubject(key), rows, kEqualRows});
  }

  // A foreign key's own columns and those it refers to, in words of a query.
  struct TReference {
    TStringList columns;  // of the child, "expression as c0"
    TStringList given;    // "c0 is not null"
    TStringList same;     // "parent.id = child.c0"
  };

  // Foreign keys that stay as they are while the table gets another one.
  void AskKept(const TTableRows& table) {
    for (const TElement& key : table.target->elements) {
      if (key.kind != EElement::ForeignKey || std::ranges::find(table.put_back, &key) != table.put_back.end()) continue;
      if (!Changes(table, key)) AskOrphans(table, key, kCopiesChecked, kOrphansMet);
    }
  }

  void AskOrphans(const TTableRows& table, const TElement& key, const char* where = "", const char* answer = kOrphans) {
    const std::string subject = "foreign key " + key.name;
    const TForeignKeyParts& parts = key.text.ForeignKey();
    const auto found = parts.database.empty() ? tables_.find(parts.table) : tables_.end();
    const TTableRows* parent = found == tables_.end() ? nullptr : &found->second;
    TReference reference;
    for (std::size_t i = 0; i < std::min(parts.columns.size(), parts.references.size()); ++i) {
      const TRowValue value = ValueOfColumn(table, parts.columns[i]);
      if (value.kind == EKind::Null) return;  // refers to nothing
      if (HasOtherBytes(*table.reference, parts.columns[i], wanted_.Find(parts.table), parts.references[i]))
        return Refuse(table, subject, Format(kOtherSize, parts.columns[i]));
      if (value.sql.empty()) return Refuse(table, subject, WhyUnknown(value, parts.columns[i]));
      const TRowValue wanted = ValueInParent(parent, parts.references[i]);
      if (wanted.kind != EKind::Stored) return Refuse(table, subject, WhyUnknown(wanted, parts.references[i]));
      const std::string column = Format("c%d", i);
      reference.columns.push_back(value.sql + " as " + column);
      reference.given.push_back(column + " is not null");
      reference.same.push_back(wanted.sql + " = child." + column);
    }
    std::string rows =
        Format("count(*), 1 from (select %s from %s) as child where %s%s", JoinList(reference.columns, ", "),
               QuotedName(table.target->name), where, JoinList(reference.given, " and "));
    const bool has_rows = parent == nullptr || parent->target != nullptr;  // a new table has none
    const std::string database = parts.database.empty() ? "" : QuotedName(parts.database) + ".";
    if (has_rows)
      rows += Format(" and not exists (select 1 from %s%s as parent where %s)", database, QuotedName(parts.table),
                     JoinList(reference.same, " and "));
    questions_.push_back({table.target->name, subject, rows, answer});
  }

  static TRowValue ValueInParent(const TTableRows* parent, const std::string& column) {
    const std::string name = QuotedName(column);
    TRowValue value{EKind::Stored, name, {}};
    if (parent != nullptr && parent->target != nullptr && parent->reference != nullptr)
      value = ValueOfColumn(*parent, column);
    value.sql = StrReplace(value.sql, name, "parent." + name);
    return value;
  }

  void Refuse(const TTableRows& table, const std::string& subject, const std::string& why) {
    questions_.push_back({table.target->name, subject, {}, why});
  }

  const TSchema& wanted_;
  std::unordered_map<std::string, TTableRows> tables_;
  TStringList order_;
  std::vector<TRowQuestion> questions_;
};

// --- Asking

constexpr char kFinding[] = "%s: %s: %s";
constexpr char kNotChecked[] = "%s: %s: not checked: %s";
constexpr char kTooLong[] = "the server was not done within %s (--row-check-time)";
constexpr char kCannotStop[] = "the server cannot end a query after a time (--row-check-time 0 waits for it)";

// How a kind of server is told to end a query by itself.
struct TTimeLimit {
  const char* probe;   // only these servers have it
  const char* select;  // with the limit, in what the server counts
  int per_second;
  int error;  // of a query that was ended
};
constexpr std::array<TTimeLimit, 2> kTimeLimits = {
    {{"select @@max_statement_time + 0", "set statement max_statement_time=%d for select ", 1, 1969},
     {"select @@max_execution_time + 0", "select /*+ max_execution_time(%d) */ ", 1000, 3024}}};

const TTimeLimit* TimeLimitOf(TDBConn& server) {
  for (const TTimeLimit& limit : kTimeLimits) {
    try {
      TVariant value;
      server.GetResultSQL(limit.probe, value);
      return &limit;
    } catch (const EMySqlException&) {
      if (!server.GetConnected()) throw;
    }
  }
  return nullptr;
}

class TRowAsker {
 public:
  TRowAsker(TDBConn& server, int seconds) : server_(server), seconds_(seconds) {
    if (seconds > 0) limit_ = TimeLimitOf(server);
  }

  std::optional<TRowFinding> Ask(const TRowQuestion& question) {
    if (question.sql.empty()) return NotChecked(question, question.answer);
    if (seconds_ > 0 && limit_ == nullptr) return NotChecked(question, kCannotStop);
    try {
      const std::unique_ptr<TDataset> rows = server_.OpenQuery(Select() + question.sql);
      const std::int64_t count = VarToInt(rows->Value(0));
      const std::int64_t values = VarToInt(rows->Value(1));
      rows->Close();
      if (count == 0) return std::nullopt;
      const std::string told = Format(question.answer, Counted(static_cast<std::size_t>(count), "row"), values);
      return TRowFinding{Format(kFinding, question.table, question.subject, told)};
    } catch (const EMySqlException& error) {
      if (!server_.GetConnected()) throw;
      const bool ended = limit_ != nullptr && error.Number() == limit_->error;
      return NotChecked(question,
                        ended ? Format(kTooLong, Counted(static_cast<std::size_t>(seconds_), "second")) : error.what());
    }
  }

 private:
  std::string Select() const {
    return limit_ == nullptr ? "select " : Format(limit_->select, seconds_ * limit_->per_second);
  }

  static TRowFinding NotChecked(const TRowQuestion& question, const std::string& why) {
    return {Format(kNotChecked, question.table, question.subject, why), question.needed};
  }

  TDBConn& server_;
  int seconds_;
  const TTimeLimit* limit_ = nullptr;
};

}  // namespace

std::vector<TRowQuestion> RowQuestions(const std::vector<TChange>& changes, const TSchema& reference,
                                       const TSchema& target, const std::vector<TPlanStatement>& plan) {
  return TRowInquiry(changes, reference, target, plan).Questions();
}

std::vector<TRowFinding> AskRows(const std::vector<TRowQuestion>& questions, TDBConn& server, int seconds) {
  std::vector<TRowFinding> findings;
  if (questions.empty()) return findings;
  TRowAsker asker(server, seconds);
  for (const TRowQuestion& question : questions) {
    Host().ProcessMessages();
    if (std::optional<TRowFinding> finding = asker.Ask(question)) findings.push_back(std::move(*finding));
  }
  return findings;
}

}  // namespace velmora
