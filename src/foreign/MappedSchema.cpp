// SPDX-License-Identifier: GPL-3.0-or-later
#include "foreign/MappedSchema.h"

#include <algorithm>
#include <functional>
#include <map>
#include <utility>

#include "foreign/Checks.h"
#include "foreign/Keys.h"
#include "foreign/Names.h"
#include "foreign/RowRoom.h"
#include "mysqltext/Lexer.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr long long kRowRoom = 65535;         // bytes
constexpr long long kPageRoom = 8101;         // what InnoDB takes of a row in a page, beside its own columns
constexpr std::size_t kMostColumns = 1017;    // of InnoDB
constexpr std::size_t kColumnComment = 1024;  // letters
constexpr std::size_t kTableComment = 2048;

constexpr char kColumnRefused[] = "column %s (%s): %s";
constexpr char kNoColumns[] = "it has no columns";
constexpr char kTooManyColumns[] = "it has %d columns, of which MySQL takes %d";
constexpr char kNoRoom[] = "MySQL has no room for a row of so many columns";
constexpr char kOutOfRow[] = "rows of the table have no room for it";
constexpr char kLikeParent[] = "as %s.%s, which it refers to";
constexpr char kCannotCountHere[] = "counts, but no key of the table begins with it: auto_increment is left out";
constexpr char kCountsTwice[] = "counts, as another column does: MySQL takes one for a table";
constexpr char kUnclearCounting[] = "a trigger may count it: auto_increment is left out";
constexpr char kNoParent[] = "the table that it refers to, %s, is not there";
constexpr char kNoParentColumn[] = "the table that it refers to, %s, has no column %s";
constexpr char kOtherCount[] = "it refers to %d columns with %d";
constexpr char kNoParentKey[] = "table %s has no key that begins with %s";
constexpr char kNoUniqueParent[] = "%s wants a unique key there, and table %s has none over %s alone";
constexpr char kRuleGone[] = "reference %s: the target has no \"%s\" here: no action takes its place";
constexpr char kNoPrimaryKey[] = "the source states no primary key";
constexpr char kNoCheck[] = "only comparisons of columns with values have a form in MySQL: %s";
constexpr char kNoChecks[] = "%s checks nothing: %s";
constexpr char kCheckOfCounter[] = "MySQL takes no check of a column that counts, as %s does: %s";
constexpr char kCheckOfReference[] = "MySQL takes no check of a column that a foreign key's rule changes, as %s: %s";
constexpr char kRenamed[] = "table %s of the source is called %s";

void AddText(TMappedType& type, const std::string& text, EMadeLevel level) {
  if (text.empty()) return;
  type.text += (type.text.empty() ? "" : "; ") + text;
  type.level = std::max(type.level, level);
}

class TSchemaMapper {
 public:
  TSchemaMapper(std::vector<TReadTable> tables, TKnownFacts known, const TTargetNames& target,
                const TMapContext& context)
      : read_(std::move(tables)), known_(known), target_(target), context_(context) {
    for (const std::string& table : target.tables) {
      spellings_.emplace(table, table);
      spellings_.emplace(LowerText(table), table);
    }
  }

  std::vector<TMappedTable> Map() {
    NameTables();
    for (std::size_t i = 0; i < read_.size(); ++i) MapColumns(i);
    for (std::size_t i = 0; i < read_.size(); ++i) FindRoots(i);
    for (std::size_t i = 0; i < read_.size(); ++i) UnifyTypes(i);
    for (std::size_t i = 0; i < read_.size(); ++i) Finish(i);
    for (std::size_t i = 0; i < read_.size(); ++i) MapReferences(i);
    for (std::size_t i = 0; i < read_.size(); ++i) MapChecks(i);
    for (std::size_t i = 0; i < read_.size(); ++i) Tell(i);
    return InOrder();
  }

 private:
  const TForeignTable& Facts(std::size_t at) const { return read_[at].facts; }

  // --- Names

  std::string Cased(const std::string& name) const {
    return context_.wishes.names == ENameCase::Lower ? LowerText(name) : name;
  }

  std::string Spelled(const std::string& name) const {
    auto found = spellings_.find(name);
    if (found == spellings_.end()) found = spellings_.find(LowerText(name));
    return found == spellings_.end() ? name : found->second;
  }

  // Tables whose plain names are the same keep what tells them apart.
  void NameTables() {
    TNames names;
    std::map<std::string, int> likes;
    for (const TReadTable& table : read_) ++likes[LowerText(table.plain_name)];
    mapped_.resize(read_.size());
    for (std::size_t i = 0; i < read_.size(); ++i) {
      TMappedTable& table = mapped_[i];
      table.source_name = Facts(i).name;
      table.known = Facts(i).known.value_or(known_);
      table.refused = Facts(i).problem;
      const bool alone = likes[LowerText(read_[i].plain_name)] == 1;
      const std::string& wanted = alone ? read_[i].plain_name : table.source_name;
      table.name = Spelled(names.Take(Cased(MakeTableName(wanted, "table"))));
      places_.emplace(table.source_name, i);
      like_places_.emplace(LowerText(table.source_name), i);
      if (!SameText(table.name, wanted))
        TellOf(table, Format(kRenamed, table.source_name, table.name), EMadeLevel::Info);
    }
  }

  // --- Columns

  void MapColumns(std::size_t at) {
    TMappedTable& table = mapped_[at];
    TNames names;
    table.columns.reserve(read_[at].facts.columns.size());
    for (TForeignColumn& column : read_[at].facts.columns) {
      TMappedColumn mapped{.source = std::move(column)};
      const std::string& name = mapped.source.name;
      const std::string number = std::to_string(table.columns.size() + 1);
      mapped.name = names.Take(Cased(MakeColumnName(name, "column_" + number)));
      mapped.rule_names = RuleNames(mapped.source, {table.source_name + "." + name, read_[at].plain_name + "." + name,
                                                    table.name + "." + name, table.name + "." + mapped.name});
      mapped.type = MapType(mapped.source, mapped.rule_names, context_);
      mapped.root = mapped.letters_root = {at, table.columns.size()};
      if (mapped.type.level == EMadeLevel::Refused && table.refused.empty())
        table.refused = Format(kColumnRefused, mapped.source.name, NativeText(mapped.source), mapped.type.text);
      table.columns.push_back(std::move(mapped));
    }
    if (table.columns.empty() && table.refused.empty()) table.refused = kNoColumns;
    if (!table.refused.empty()) return;
    const TTargetServer& server = context_.server;
    const auto in_row = [this](const std::string& type) { return RowBytes(context_.read_type(type)); };
    const auto in_page = [&](const std::string& type) { return PageBytes(context_.read_type(type), server); };
    const long long bitmap = (MostNulls(table) + 7) / 8;
    const bool fits_row = MakeRoom(at, kRowRoom - bitmap, in_row);
    const bool fits = MakeRoom(at, kPageRoom - bitmap, in_page) && fits_row;
    // A table that is there may be one of another kind.
    const bool there = spellings_.contains(table.name);
    if (!there && table.columns.size() > kMostColumns)
      table.refused = Format(kTooManyColumns, table.columns.size(), kMostColumns);
    else if (!there && !fits)
      table.refused = kNoRoom;
  }

  static long long MostNulls(const TMappedTable& table) {
    return std::ranges::count_if(table.columns, [&](const TMappedColumn& column) {
      return !table.known.Has(EFact::Nullability) || column.source.nullable.value_or(true);
    });
  }

  bool InKey(std::size_t at, const TForeignColumn& column) const {
    const auto of_key = [&](const TForeignKey& key) {
      return std::ranges::find(key.parts, column.name, &TForeignKeyPart::column) != key.parts.end();
    };
    return std::ranges::any_of(Facts(at).keys, of_key) ||
           std::ranges::any_of(Facts(at).references, [&](const TForeignReference& reference) {
             return IndexOf(reference.columns, column.name) != kNotInList;
           });
  }

  // What is longest goes out of the row first, what keys need last. Gives whether there is room then.
  bool MakeRoom(std::size_t at, long long room, const std::function<long long(const std::string& type)>& bytes) {
    TMappedTable& table = mapped_[at];
    long long all = 0;
    for (const TMappedColumn& column : table.columns) all += bytes(column.type.type);
    if (all <= room) return true;
    std::vector<std::pair<std::pair<bool, long long>, TMappedColumn*>> movable;
    for (TMappedColumn& column : table.columns) {
      if (!GoesOut(column)) continue;
      movable.push_back({{InKey(at, column.source), -bytes(column.type.type)}, &column});
    }
    std::ranges::stable_sort(movable, {}, [](const auto& entry) { return entry.first; });
    for (auto next = movable.begin(); all > room && next != movable.end(); ++next) {
      TMappedType out = MapOutOfRow(next->second->source);
      const long long saved = -next->first.second - bytes(out.type);
      if (saved <= 0) continue;
      next->second->type = std::move(out);
      AddText(next->second->type, kOutOfRow, EMadeLevel::Info);
      all -= saved;
    }
    return all <= room;
  }

  static bool GoesOut(const TMappedColumn& column) {
    const EFamily family = column.source.family;
    return !column.type.ByRule() && (family == EFamily::Char || family == EFamily::VarChar ||
                                     family == EFamily::Binary || family == EFamily::VarBinary);
  }

  // --- References

  std::optional<std::size_t> ParentOf(const TForeignReference& reference) const {
    auto found = places_.find(reference.table);
    if (found != places_.end()) return found->second;
    found = like_places_.find(LowerText(reference.table));
    return found == like_places_.end() ? std::nullopt : std::optional(found->second);
  }

  static std::optional<std::size_t> ColumnAt(const TMappedTable& table, const std::string& name) {
    const auto found = FindNamed(table.columns, name, &TMappedColumn::SourceName);
    if (found == table.columns.end()) return std::nullopt;
    return static_cast<std::size_t>(found - table.columns.begin());
  }

  // The parent's columns of a reference, in the source's words.
  TStringList ReferencedOf(const TForeignReference& reference, std::size_t parent) const {
    if (!reference.references.empty()) return reference.references;
    TStringList columns;
    for (const TForeignKey& key : Facts(parent).keys)
      if (key.kind == EForeignKeyKind::Primary)
        for (const TForeignKeyPart& part : key.parts) columns.push_back(part.column);
    return columns;
  }

  void FindRoots(std::size_t at) {
    for (const TForeignReference& reference : Facts(at).references) {
      const auto parent = ParentOf(reference);
      if (!parent) continue;
      const TStringList columns = ReferencedOf(reference, *parent);
      for (std::size_t i = 0; i < std::min(columns.size(), reference.columns.size()); ++i) {
        const auto own = ColumnAt(mapped_[at], reference.columns[i]);
        const auto theirs = ColumnAt(mapped_[*parent], columns[i]);
        if (own && theirs) parents_.emplace(std::pair(at, *own), TColumnPlace{*parent, *theirs});
      }
    }
  }

  TColumnPlace RootOf(TColumnPlace place) const {
    for (std::size_t steps = 0; steps <= parents_.size(); ++steps) {
      const auto next = parents_.find({place.table, place.column});
      if (next == parents_.end() || next->second == place) break;
      place = next->second;
    }
    return place;
  }

  const TMappedColumn& ColumnAt(const TColumnPlace& place) const { return mapped_[place.table].columns[place.column]; }

  // A server joins only what is alike; letters may differ in length, not in their collation.
  void UnifyTypes(std::size_t at) {
    for (std::size_t i = 0; i < mapped_[at].columns.size(); ++i) {
      TMappedColumn& column = mapped_[at].columns[i];
      const TColumnPlace root = RootOf({at, i});
      const TMappedColumn& parent = ColumnAt(root);
      if (&parent == &column || column.type.ByRule() || parent.type.level == EMadeLevel::Refused) continue;
      if (column.type.level == EMadeLevel::Refused) continue;
      const TColumnText& own = context_.read_type(column.type.type);
      const TColumnText& theirs = context_.read_type(parent.type.type);
      if (own.HasLetters() && theirs.HasLetters()) column.letters_root = root;
      if (own.HasLetters() && theirs.HasLetters() && NeedsPrefix(own) == NeedsPrefix(theirs)) continue;
      column.root = root;
      if (SameType(own, theirs)) continue;
      column.type.type = parent.type.type;
      AddText(column.type, Format(kLikeParent, mapped_[root.table].name, parent.name), EMadeLevel::Info);
    }
  }

  // --- What hangs on the types

  void Finish(std::size_t at) {
    TMappedTable& table = mapped_[at];
    if (!table.refused.empty()) return;
    MapKeys(Facts(at), context_, table);
    for (TMappedColumn& column : table.columns) {
      SetNull(column, table);
      column.default_value = MakeDefault(column.source, context_.read_type(column.type.type), context_.server);
      if (!column.default_value.reason.empty() && table.known.Has(EFact::Defaults))
        table.unmade.push_back({table.name, column.name, "default", column.default_value.reason});
      column.source.comment = CutChars(column.source.comment, kColumnComment);
      AddText(column.type, column.source.remark, EMadeLevel::Info);
    }
    SetCounting(table);
    table.comment = CutChars(Facts(at).comment, kTableComment);
    for (const std::string& remark : Facts(at).remarks) TellOf(table, remark, EMadeLevel::Info);
    for (const std::string& warning : Facts(at).warnings) TellOf(table, warning, EMadeLevel::Warning);
    const bool keyed = std::ranges::any_of(Facts(at).keys,
                                           [](const TForeignKey& key) { return key.kind == EForeignKeyKind::Primary; });
    if (!keyed)
      TellOf(table, kNoPrimaryKey, table.known.Has(EFact::PrimaryKey) ? EMadeLevel::Warning : EMadeLevel::Info);
  }

  static void TellOf(TMappedTable& table, const std::string& text, EMadeLevel level) {
    table.told.push_back({table.name, "", "", "", level, text});
  }

  static void SetNull(TMappedColumn& column, const TMappedTable& table) {
    if (column.source.nullable && table.known.Has(EFact::Nullability)) column.not_null = !*column.source.nullable;
    for (const TMappedKey& key : table.keys)
      for (const TMappedKeyPart& part : key.parts)
        if (key.kind == EForeignKeyKind::Primary && part.column == column.name) column.not_null = true;
  }

  static bool LeadsKey(const TMappedColumn& column, const TMappedTable& table) {
    return std::ranges::any_of(table.keys, [&](const TMappedKey& key) {
      return key.parts.front().column == column.name && key.parts.front().letters == 0;
    });
  }

  void SetCounting(TMappedTable& table) const {
    bool counts = false;
    for (TMappedColumn& column : table.columns) {
      column.may_count = column.source.counting != ECounting::None;
      if (column.source.counting == ECounting::Unclear) AddText(column.type, kUnclearCounting, EMadeLevel::Warning);
      if (column.source.counting != ECounting::Counts) continue;
      const bool leads = LeadsKey(column, table);
      column.counts = leads && !counts && CanCount(context_.read_type(column.type.type));
      if (!column.counts) AddText(column.type, counts ? kCountsTwice : kCannotCountHere, EMadeLevel::Warning);
      if (!column.counts)
        table.unmade.push_back({table.name, column.name, "counting", counts ? kCountsTwice : kCannotCountHere});
      if (column.counts) column.not_null = true;
      if (column.counts) column.may_count = false;
      counts = counts || column.counts;
    }
  }

  static bool CanCount(const TColumnText& type) {
    return InList(type.type, {"tinyint", "smallint", "mediumint", "int", "bigint"});
  }

  // --- Checks, when it is known which columns references change

  // Names of references are unique in a database: one that another table of the target's has is not to be had.
  static std::string FreeName(const std::string& name, const TMappedTable& table,
                              const std::map<std::string, std::string>& there, TNames& names) {
    for (;;) {
      std::string free = names.Take(name);
      const auto taken = there.find(LowerText(free));
      if (taken == there.end() || SameText(taken->second, table.name)) return free;
    }
  }

  // Those of checks are it, too, on MySQL. MariaDB tells them apart from all constraints of their table.
  std::string FreeCheckName(const std::string& name, const TMappedTable& table, TNames& of_table) {
    if (context_.server.HasDatabaseChecks()) return FreeName(name, table, target_.checks, check_names_);
    for (;;) {
      std::string free = of_table.Take(name);
      const auto taken = target_.references.find(LowerText(free));
      if (taken == target_.references.end() || !SameText(taken->second, table.name)) return free;
    }
  }

  // Whether a reference's rule may change the column, which servers do not let a check look at then.
  static bool IsChangedByRule(const std::string& column, const TMappedTable& table) {
    return std::ranges::any_of(table.references, [&](const TMappedReference& reference) {
      const auto changes = [](EReferenceRule rule) {
        return rule == EReferenceRule::SetNull || rule == EReferenceRule::SetDefault;
      };
      return IndexOf(reference.columns, column) != kNotInList &&
             (changes(reference.on_delete) || changes(reference.on_update) ||
              reference.on_update == EReferenceRule::Cascade);
    });
  }

  // Why the target has no such check; empty where it has.
  std::string CheckFault(const TForeignCheck& check, const std::optional<std::string>& text,
                         const TMappedTable& table) const {
    if (!text) return Format(kNoCheck, check.text);
    if (!context_.server.HasChecks()) return Format(kNoChecks, context_.server.Text(), check.text);
    for (const TMappedColumn& column : table.columns) {
      if (text->find(QuotedName(column.name)) == std::string::npos) continue;
      if (column.counts) return Format(kCheckOfCounter, column.name, check.text);
      if (IsChangedByRule(column.name, table)) return Format(kCheckOfReference, column.name, check.text);
    }
    return {};
  }

  void MapChecks(std::size_t at) {
    TMappedTable& table = mapped_[at];
    if (!table.refused.empty()) return;
    TStringList columns, names;
    for (const TMappedColumn& column : table.columns) {
      columns.push_back(column.source.name);
      names.push_back(column.name);
    }
    TNames taken, elements;
    for (const TMappedReference& reference : table.references) taken.Take(reference.name);
    for (const TForeignCheck& check : Facts(at).checks) {
      const auto text = MakeCheck(check, columns, names);
      if (std::string fault = CheckFault(check, text, table); !fault.empty()) {
        const std::string element = !check.name.empty() ? check.name : check.column;
        table.unmade.push_back(
            {table.name, elements.Take(element.empty() ? "check" : element), "check", std::move(fault)});
        continue;
      }
      const std::string name = MakeName(check.name, "chk_" + table.name + "_" + Format("%d", table.checks.size() + 1));
      table.checks.push_back({FreeCheckName(name, table, taken), *text});
    }
  }

  // --- References again

  void MapReferences(std::size_t at) {
    TMappedTable& table = mapped_[at];
    if (!table.refused.empty()) return;
    for (const TForeignReference& reference : Facts(at).references) {
      TMappedReference mapped;
      const std::string fault = MapReference(reference, table, mapped);
      if (fault.empty())
        table.references.push_back(std::move(mapped));
      else
        LeaveOut(reference, fault, table);
    }
  }

  static void LeaveOut(const TForeignReference& reference, const std::string& fault, TMappedTable& table) {
    table.unmade.push_back({table.name, reference.name.empty() ? reference.table : reference.name, "reference", fault});
    TStringList columns;
    for (const std::string& name : reference.columns)
      if (const auto own = ColumnAt(table, name)) columns.push_back(table.columns[*own].name);
    table.open_references.push_back(std::move(columns));
  }

  // Gives why there is no such reference; empty where there is one.
  std::string MapReference(const TForeignReference& reference, TMappedTable& table, TMappedReference& mapped) {
    const auto place = ParentOf(reference);
    if (!place || !mapped_[*place].refused.empty()) return Format(kNoParent, reference.table);
    const TMappedTable& parent = mapped_[*place];
    const TStringList columns = ReferencedOf(reference, *place);
    if (columns.size() != reference.columns.size() || columns.empty())
      return Format(kOtherCount, columns.size(), reference.columns.size());
    for (std::size_t i = 0; i < columns.size(); ++i) {
      const auto own = ColumnAt(table, reference.columns[i]);
      const auto theirs = ColumnAt(parent, columns[i]);
      if (!own) return Format(kNoParentColumn, table.name, reference.columns[i]);
      if (!theirs) return Format(kNoParentColumn, parent.name, columns[i]);
      mapped.columns.push_back(table.columns[*own].name);
      mapped.references.push_back(parent.columns[*theirs].name);
    }
    const std::string wanted = JoinList(mapped.references, ", ");
    const bool unique = context_.server.WantsUniqueParents();
    if (!FitToKey(parent, unique, mapped))
      return unique && FitToKey(parent, false, mapped)
                 ? Format(kNoUniqueParent, context_.server.Text(), parent.name, wanted)
                 : Format(kNoParentKey, parent.name, wanted);
    mapped.table = parent.name;
    const std::string made = "fk_" + table.name + "_" + Format("%d", table.references.size() + 1);
    const std::string name = MakeKeyName(reference.name.empty() ? made : reference.name, made);
    do mapped.name = FreeName(name, table, target_.references, reference_names_);
    while (NamesOtherKey(mapped, table));
    mapped.on_delete = RuleFor(reference.on_delete, table, mapped);
    mapped.on_update = RuleFor(reference.on_update, table, mapped);
    return {};
  }

  // The server makes a key of the reference's name, where none serves it.
  static bool NamesOtherKey(const TMappedReference& reference, const TMappedTable& table) {
    return std::ranges::any_of(table.keys, [&](const TMappedKey& key) {
      return SameText(key.name, reference.name) && key.parts.front().column != reference.columns.front();
    });
  }

  static TStringList LeadingColumns(const TMappedKey& key, std::size_t count) {
    TStringList columns;
    for (const TMappedKeyPart& part : key.parts) {
      if (columns.size() == count || part.letters != 0) break;
      columns.push_back(part.column);
    }
    return columns;
  }

  // Puts the pairs of columns into the order of a key of the parent's, which MySQL wants: sources take any order.
  // `unique`: of one that is unique over these columns and no others. Where their keys are not known the target may
  // have one.
  static bool FitToKey(const TMappedTable& parent, bool unique, TMappedReference& mapped) {
    const std::size_t count = mapped.references.size();
    std::optional<TStringList> fit;
    for (const TMappedKey& key : parent.keys) {
      if (unique && (key.kind == EForeignKeyKind::Plain || key.parts.size() != count)) continue;
      TStringList order = LeadingColumns(key, count);
      if (order == mapped.references) return true;
      if (!fit && std::ranges::is_permutation(order, mapped.references)) fit = std::move(order);
    }
    if (!fit) return !parent.known.Has(EFact::OtherKeys);
    TStringList columns;
    for (const std::string& column : *fit)
      columns.push_back(mapped.columns[static_cast<std::size_t>(IndexOf(mapped.references, column))]);
    mapped.columns = std::move(columns);
    mapped.references = std::move(*fit);
    return true;
  }

  EReferenceRule RuleFor(EReferenceRule rule, TMappedTable& table, const TMappedReference& mapped) const {
    const char* gone = nullptr;
    if (rule == EReferenceRule::SetDefault && !context_.server.HasSetDefault()) gone = "set default";
    if (rule == EReferenceRule::SetNull)
      for (const TMappedColumn& column : table.columns)
        if (std::ranges::find(mapped.columns, column.name) != mapped.columns.end() && column.not_null.value_or(false))
          gone = "set null";
    if (gone == nullptr) return rule;
    TellOf(table, Format(kRuleGone, mapped.name, gone), EMadeLevel::Warning);
    return EReferenceRule::NoAction;
  }

  // --- The end

  void Tell(std::size_t at) {
    TMappedTable& table = mapped_[at];
    std::vector<TMadeColumn> told;
    for (const TMappedColumn& column : table.columns)
      told.push_back({table.name, column.name, NativeText(column.source), column.type.type, column.type.level,
                      column.type.text, column.rule_names, column.type.rule});
    told.insert(told.end(), table.told.begin(), table.told.end());
    table.told = std::move(told);
  }

  std::vector<TMappedTable> InOrder() {
    std::vector<TMappedTable> ordered;
    std::vector<char> seen(mapped_.size(), 0);
    for (std::size_t start = 0; start < mapped_.size(); ++start) {
      // Without recursion: chains may be long.
      std::vector<std::size_t> stack{start};
      while (!stack.empty()) {
        const std::size_t at = stack.back();
        const bool first = seen[at] == 0;
        if (first) seen[at] = 1;
        if (first)
          for (const TForeignReference& reference : Facts(at).references)
            if (const auto parent = ParentOf(reference); parent && seen[*parent] == 0) stack.push_back(*parent);
        if (stack.back() != at) continue;
        stack.pop_back();
        if (seen[at] == 2) continue;
        seen[at] = 2;
        order_.push_back(at);
      }
    }
    std::vector<std::size_t> place(order_.size());
    for (std::size_t i = 0; i < order_.size(); ++i) place[order_[i]] = i;
    for (const std::size_t at : order_) ordered.push_back(std::move(mapped_[at]));
    for (TMappedTable& table : ordered)
      for (TMappedColumn& column : table.columns)
        for (TColumnPlace* root : {&column.root, &column.letters_root}) root->table = place[root->table];
    return ordered;
  }

  std::vector<TReadTable> read_;
  TKnownFacts known_;
  const TTargetNames& target_;
  const TMapContext& context_;
  std::map<std::string, std::string> spellings_;  // the target's, by name and by the name in lower case
  std::vector<TMappedTable> mapped_;
  std::map<std::string, std::size_t> places_;       // of tables, by the source's names
  std::map<std::string, std::size_t> like_places_;  // the same in lower case, the first of its like
  std::map<std::pair<std::size_t, std::size_t>, TColumnPlace> parents_;  // of columns that refer to others
  TNames reference_names_;
  TNames check_names_;
  std::vector<std::size_t> order_;
};

}  // namespace

std::vector<TMappedTable> MapSchema(std::vector<TReadTable> tables, TKnownFacts known, const TTargetNames& target,
                                    const TMapContext& context) {
  return TSchemaMapper(std::move(tables), known, target, context).Map();
}

}  // namespace velmora
