// SPDX-License-Identifier: GPL-3.0-or-later
#include "foreign/Tolerance.h"

#include <algorithm>
#include <set>
#include <utility>

#include "exact/compare/Equivalences.h"
#include "exact/compare/ExpressionForm.h"
#include "exact/compare/ServerCompletion.h"
#include "exact/compare/ServerForm.h"
#include "foreign/CreationText.h"
#include "foreign/Names.h"
#include "mysqltext/ColumnParts.h"
#include "mysqltext/KeyText.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr std::string_view kHiddenKey = "my_row_id";  // the primary key that servers make of their own

bool SameNames(const std::vector<std::string>& a, const std::vector<std::string>& b) {
  return std::ranges::equal(a, b, [](const std::string& x, const std::string& y) { return SameText(x, y); });
}

// Whether two expressions say the same, as far as it is known.
bool SameExpression(const std::string& a, const std::string& b) {
  if (a == b) return true;
  const std::vector<TToken> of_a = Tokens(a);
  const std::vector<TToken> of_b = Tokens(b);
  const auto form_a = ReadExpressionForm(TTokens(of_a).first(of_a.size() - 1));
  const auto form_b = ReadExpressionForm(TTokens(of_b).first(of_b.size() - 1));
  return form_a && form_b && form_a->text == form_b->text;
}

// Whether what is said of one type alone can be said of the other: shapes have a reference system, and what varies in
// length can be compressed.
bool IsLikeType(const std::string& a, const std::string& b) {
  const auto varies = [](const std::string& type) {
    return type.starts_with("var") || SizedText(type) != nullptr || SizedBlob(type) != nullptr;
  };
  return (IsShapeType(a) && IsShapeType(b)) || (varies(a) && varies(b));
}

class TCompletion {
 public:
  TCompletion(const TMappedTable& table, const TTableText* there, const TSettledColumns& settled,
              const TMapContext& context, TToleranceCounts& counts)
      : table_(table), there_(there), settled_(settled), context_(context), counts_(counts) {}

  TTableText Make() {
    made_.name = table_.name;
    made_.options = there_ == nullptr ? NewTableOptions(table_, context_.wishes.collation) : OptionsOf(*there_);
    if (there_ != nullptr) made_.partitioning = there_->partitioning;
    AddHiddenKey();
    for (const TMappedColumn& column : table_.columns) AddColumn(column);
    AddKeys();
    AddReferences();
    AddChecks();
    AddOthers();
    if (IsAllTheirs()) return TheirsAnew();
    return Settled();
  }

 private:
  bool Known(EFact fact) const { return table_.known.Has(fact); }
  void Count(EFact fact) { ++counts_.unknown[static_cast<std::size_t>(fact)]; }

  // --- Options

  std::vector<TTableOption> OptionsOf(const TTableText& there) {
    std::vector<TTableOption> options = there.options;
    const TTableOption* comment = there.FindOption("COMMENT");
    if (!Known(EFact::TableComment)) {
      if (comment != nullptr) Count(EFact::TableComment);
      return options;
    }
    if (comment != nullptr && comment->value == QuotedText(table_.comment)) return options;
    std::erase_if(options, [](const TTableOption& option) { return option.name == "COMMENT"; });
    if (!table_.comment.empty()) options.push_back({"COMMENT", QuotedText(table_.comment)});
    return options;
  }

  // --- Columns

  const TElement* FindColumn(const std::string& name) const {
    return there_ == nullptr ? nullptr : there_->Find(EElement::Column, name);
  }

  void AddHiddenKey() {
    const TElement* hidden = FindColumn(std::string(kHiddenKey));
    if (hidden == nullptr || !hidden->text.Column().invisible) return;
    if (std::ranges::any_of(table_.columns, [](const TMappedColumn& c) { return SameText(c.name, kHiddenKey); }))
      return;
    made_.elements.push_back(*hidden);
    has_hidden_key_ = true;
  }

  // What a reference makes of the type, and else the mapping.
  std::string WantedType(const TMappedColumn& column) const {
    const std::string settled = settled_(column.root).type;
    return settled.empty() ? column.type.type : settled;
  }

  void AddColumn(const TMappedColumn& column) {
    TColumnPieces pieces = PiecesOf(column);
    pieces.type = WantedType(column);
    if (!Known(EFact::ColumnComments)) pieces.comment.clear();
    if (!Known(EFact::Defaults)) pieces.default_value.clear();
    if (const TElement* there = FindColumn(column.name)) {
      const TColumnPieces theirs = PiecesOf(*there);
      TakeOver(column, *there, theirs, pieces);
      if (pieces == theirs) return made_.elements.push_back(*there);
    } else {
      pieces.charset = OwnCharset(column, pieces);
    }
    made_.elements.push_back({EElement::Column, pieces.name, pieces.Text()});
  }

  // Of a new column: the collation of what it refers to, else the one asked for, where its table has another; nothing
  // where a type of the user's own says one.
  std::string OwnCharset(const TMappedColumn& column, const TColumnPieces& pieces) const {
    const TElement element{EElement::Column, pieces.name, pieces.Text()};
    const TColumnParts& parts = element.text.Column();
    if (!IsLetterType(parts.type) || !parts.charset.empty() || !parts.collation.empty()) return {};
    const TCharset of_table = TableCharset(made_);
    TCharset wanted = of_table;
    if (!context_.wishes.collation.empty()) wanted = NewCharset(context_.wishes.collation);
    if (const TCharset of_root = settled_(column.letters_root).charset; of_root != TCharset()) wanted = of_root;
    return wanted == of_table ? std::string() : CharsetText(wanted);
  }

  void TakeOver(const TMappedColumn& column, const TElement& there, const TColumnPieces& theirs,
                TColumnPieces& pieces) {
    pieces.name = theirs.name;
    TakeType(column, theirs, pieces);
    pieces.null_word = theirs.null_word;
    // An expression in place of values that are kept is no equal.
    if (column.source.computed || !Known(EFact::Defaults)) pieces.generated = theirs.generated;
    pieces.on_update = theirs.on_update;
    pieces.further = theirs.further;
    if (KeepsCheck(there)) pieces.check = theirs.check;
    TakeNull(column, theirs, pieces);
    if (!Known(EFact::Counting) || column.may_count) {
      pieces.auto_increment = theirs.auto_increment;
      if (theirs.auto_increment && !column.may_count) Count(EFact::Counting);
    }
    if (!Known(EFact::ColumnComments)) {
      pieces.comment = theirs.comment;
      if (!theirs.comment.empty()) Count(EFact::ColumnComments);
    }
    TakeDefault(column, theirs, pieces);
    // A column of expressions has none of these.
    if (!pieces.generated.empty()) {
      pieces.default_value.clear();
      pieces.auto_increment = false;
    }
  }

  // MariaDB's checks of columns stay where they are among the source's, or nobody can tell.
  bool KeepsCheck(const TElement& column) const {
    const auto& check = column.text.Column().check;
    return !check || !TellsChecks() || std::ranges::any_of(table_.checks, [&](const TMappedCheck& own) {
      return SameExpression(column.text.Part(*check), own.text);
    });
  }

  bool IsCheckOfColumn(const TMappedCheck& own) const {
    return there_ != nullptr && std::ranges::any_of(there_->elements, [&](const TElement& there) {
             return there.kind == EElement::Column && there.text.Column().check &&
                    SameExpression(there.text.Part(*there.text.Column().check), own.text);
           });
  }

  // Where some of the source's checks have no form nobody can tell which of the target's stands for which.
  bool TellsChecks() const {
    return Known(EFact::Checks) &&
           std::ranges::none_of(table_.unmade, [](const TUnmadeElement& unmade) { return unmade.kind == "check"; });
  }

  void TakeType(const TMappedColumn& column, const TColumnPieces& theirs, TColumnPieces& pieces) {
    const TColumnText& type = context_.read_type(theirs.type);
    const TColumnText& wanted = context_.read_type(pieces.type);
    const bool same = SameType(wanted, type);
    const bool free = settled_(column.root).type.empty() && !column.type.ByRule() && !context_.wishes.strict_types;
    const bool holds = !same && free && HoldsAll(column.source, type, context_);
    if (same || holds) pieces.type = theirs.type;
    if (holds) ++counts_.wider;
    if (IsLikeType(type.type, context_.read_type(pieces.type).type)) pieces.of_type = theirs.of_type;
    if (same || holds || (type.HasLetters() && wanted.HasLetters())) pieces.charset = theirs.charset;
  }

  bool InTheirPrimaryKey(const std::string& column) const {
    const TElement* key = there_->Find(EElement::PrimaryKey, "PRIMARY");
    return key != nullptr && std::ranges::any_of(key->text.KeyParts(),
                                                 [&](const TKeyPart& part) { return SameText(part.column, column); });
  }

  void TakeNull(const TMappedColumn& column, const TColumnPieces& theirs, TColumnPieces& pieces) {
    const bool keyed = !Known(EFact::PrimaryKey) && InTheirPrimaryKey(theirs.name);
    if (column.not_null && !keyed) return;
    if (!column.not_null && theirs.not_null) Count(EFact::Nullability);
    pieces.not_null = theirs.not_null;
  }

  void TakeDefault(const TMappedColumn& column, const TColumnPieces& theirs, TColumnPieces& pieces) {
    const bool unmade = !column.default_value.reason.empty();
    if (!Known(EFact::Defaults) && !theirs.default_value.empty()) Count(EFact::Defaults);
    if (!Known(EFact::Defaults) || unmade || SameDefault(theirs, pieces)) pieces.default_value = theirs.default_value;
    if (column.counts) pieces.default_value.clear();
  }

  // Whether the target's default says what the column's own does, for the type that it has.
  static bool SameDefault(const TColumnPieces& theirs, const TColumnPieces& pieces) {
    if (theirs.default_value == pieces.default_value) return true;
    if (theirs.default_value.empty() || pieces.default_value.empty())
      return theirs.default_value.empty() == pieces.default_value.empty();
    TColumnPieces a{.name = "c", .type = theirs.type, .default_value = theirs.default_value};
    TColumnPieces b{.name = "c", .type = theirs.type, .default_value = pieces.default_value};
    TTableText table_a, table_b;
    table_a.elements.push_back({EElement::Column, "c", a.Text()});
    table_b.elements.push_back({EElement::Column, "c", b.Text()});
    CompleteTable(table_a, nullptr, {});
    CompleteTable(table_b, nullptr, {});
    TEquivalenceUse use;
    return TElementComparison(table_a, table_b, use).Same(table_a.elements[0], table_b.elements[0]) ||
           SameExpression(theirs.default_value, pieces.default_value);
  }

  // --- Keys

  static std::vector<std::string> ColumnsOf(const TElement& key) {
    std::vector<std::string> columns;
    for (const TKeyPart& part : key.text.KeyParts()) columns.push_back(part.column);
    return columns;
  }

  // As the columns are called in the table that is made.
  std::string MadeName(const std::string& column) const {
    const TElement* made = made_.Find(EElement::Column, column);
    return made == nullptr ? column : made->name;
  }

  // Whether the target's key is over the same columns, as far as they count.
  static bool SameParts(const TMappedKey& key, const TElement& there) {
    const std::vector<TKeyPart>& parts = there.text.KeyParts();
    if (parts.size() != key.parts.size()) return false;
    for (std::size_t i = 0; i < parts.size(); ++i) {
      if (!SameText(parts[i].column, key.parts[i].column)) return false;
      if (parts[i].length != 0 && key.parts[i].letters == 0) return false;
      const bool descending = LowerText(parts[i].text).ends_with(" desc");
      if (descending != key.parts[i].descending) return false;
    }
    return true;
  }

  static bool StandsFor(EElement there, EForeignKeyKind kind) {
    switch (kind) {
      case EForeignKeyKind::Primary:
        return there == EElement::PrimaryKey;
      case EForeignKeyKind::Unique:
        return there == EElement::UniqueKey;
      case EForeignKeyKind::Plain:
        return there == EElement::Key || there == EElement::UniqueKey;
    }
    return false;
  }

  // The target's key that stands for this one; the like of its name and kind first.
  const TElement* MatchingKey(const TMappedKey& key) const {
    const TElement* match = nullptr;
    int best = 0;
    if (there_ == nullptr) return match;
    for (const TElement& there : there_->elements) {
      if (!IsKey(there.kind) || taken_.contains(&there) || !StandsFor(there.kind, key.kind) || !SameParts(key, there))
        continue;
      const bool same_kind = (there.kind == EElement::UniqueKey) == (key.kind == EForeignKeyKind::Unique);
      const int likeness = 1 + (same_kind ? 2 : 0) + (SameText(there.name, key.name) ? 1 : 0);
      if (likeness <= best) continue;
      best = likeness;
      match = &there;
    }
    return match;
  }

  void AddKeys() {
    for (const TMappedKey& key : table_.keys) {
      const bool primary = key.kind == EForeignKeyKind::Primary;
      if (!Known(primary ? EFact::PrimaryKey : EFact::OtherKeys) && there_ != nullptr) continue;
      const TElement* match = MatchingKey(key);
      if (match != nullptr) {
        taken_.insert(match);
        if (match->kind == EElement::UniqueKey && key.kind == EForeignKeyKind::Plain) ++counts_.unique_for_plain;
        made_.elements.push_back(*match);
      } else {
        own_keys_.push_back(key);
      }
    }
    KeepKeys();
    for (TMappedKey& key : own_keys_) AddOwnKey(key);
  }

  void AddOwnKey(TMappedKey key) {
    for (TMappedKeyPart& part : key.parts) part.column = MadeName(part.column);
    const bool primary = key.kind == EForeignKeyKind::Primary;
    if (primary && has_hidden_key_) std::erase_if(made_.elements, [](auto& e) { return IsHidden(e); });
    const auto named = [&](const TElement& other) { return IsKey(other.kind) && SameText(other.name, key.name); };
    const std::string name = key.name;
    for (int number = 2; !primary && std::ranges::any_of(made_.elements, named); ++number)
      key.name = CutChars(name, kLongestName - 4) + "_" + std::to_string(number);
    made_.elements.push_back(KeyElement(key));
  }

  static bool IsHidden(const TElement& element) {
    return element.kind == EElement::Column && SameText(element.name, kHiddenKey);
  }

  bool HasColumns(const std::vector<std::string>& columns) const {
    return std::ranges::all_of(
        columns, [&](const std::string& column) { return made_.Find(EElement::Column, column) != nullptr; });
  }

  // The target's keys that stay though the source has none of these.
  void KeepKeys() {
    if (there_ == nullptr) return;
    for (const TElement& there : there_->elements) {
      if (!IsKey(there.kind) || taken_.contains(&there) || !Keeps(there)) continue;
      made_.elements.push_back(there);
    }
  }

  bool Keeps(const TElement& there) {
    const std::vector<std::string> columns = ColumnsOf(there);
    const bool special = there.kind == EElement::FulltextKey || there.kind == EElement::SpatialKey ||
                         std::ranges::find(columns, "") != columns.end();
    if (special) return true;
    if (!HasColumns(columns)) return false;
    if (there.kind == EElement::PrimaryKey && has_hidden_key_) return true;
    const EFact fact = there.kind == EElement::PrimaryKey ? EFact::PrimaryKey : EFact::OtherKeys;
    if (!Known(fact)) {
      Count(fact);
      return true;
    }
    if (IsOpen(table_.open_keys, columns) || ServesCounting(columns.front())) return true;
    // What a table's references and those to it stand on is no surplus.
    return there.kind == EElement::Key && ServesReference(columns);
  }

  static bool IsOpen(const std::vector<TStringList>& open, const std::vector<std::string>& columns) {
    return std::ranges::any_of(open, [&](const TStringList& names) { return SameNames(names, columns); });
  }

  // Whether the target has given a column that counts in the source the key that MySQL wants for it.
  bool ServesCounting(const std::string& column) const {
    const TElement* there = FindColumn(column);
    return there != nullptr && there->text.Column().auto_increment &&
           std::ranges::any_of(table_.columns, [&](const TMappedColumn& mapped) {
             return mapped.may_count && SameText(mapped.name, column);
           });
  }

  bool ServesReference(const std::vector<std::string>& key) const {
    const auto leads = [&](const std::vector<std::string>& columns) {
      return columns.size() <= key.size() &&
             SameNames(columns, {key.begin(), key.begin() + static_cast<std::ptrdiff_t>(columns.size())});
    };
    const auto exactly = [&](const std::vector<std::string>& columns) {
      return leads(columns) && columns.size() == key.size();
    };
    if (std::ranges::any_of(table_.references, [&](const auto& reference) { return exactly(reference.columns); }))
      return true;
    return std::ranges::any_of(there_->elements, [&](const TElement& element) {
      return element.kind == EElement::ForeignKey && KeepsReference(element) &&
             leads(element.text.ForeignKey().columns);
    });
  }

  // --- References

  bool SameReference(const TMappedReference& reference, const TElement& there) const {
    const TForeignKeyParts& parts = there.text.ForeignKey();
    return SameNames(parts.columns, reference.columns) && SameText(parts.table, reference.table) &&
           parts.database.empty() && SameNames(parts.references, reference.references);
  }

  void AddReferences() {
    for (TMappedReference reference : table_.references) {
      if (!Known(EFact::References)) break;
      const TElement* match = nullptr;
      if (there_ != nullptr)
        for (const TElement& there : there_->elements)
          if (there.kind == EElement::ForeignKey && !taken_.contains(&there) && SameReference(reference, there))
            match = &there;
      if (match != nullptr) {
        taken_.insert(match);
        reference.name = match->name;
      }
      for (std::string& column : reference.columns) column = MadeName(column);
      TElement element = ReferenceElement(reference);
      if (match != nullptr && (!Known(EFact::Rules) || element.text == match->text || SameElement(element, *match)))
        element = *match;
      made_.elements.push_back(std::move(element));
    }
    if (there_ == nullptr) return;
    for (const TElement& there : there_->elements) {
      if (there.kind != EElement::ForeignKey || taken_.contains(&there) || !KeepsReference(there)) continue;
      if (!HasColumns(there.text.ForeignKey().columns)) continue;
      if (!Known(EFact::References)) Count(EFact::References);
      made_.elements.push_back(there);
    }
  }

  // Whether a reference of the target's stays though the source has none that could be made.
  bool KeepsReference(const TElement& there) const {
    return !Known(EFact::References) || IsOpen(table_.open_references, there.text.ForeignKey().columns);
  }

  bool SameElement(const TElement& a, const TElement& b) const {
    TEquivalenceUse use;
    return TElementComparison(made_, *there_, use).Same(a, b);
  }

  // --- Checks

  // The target's checks stay where the source's are unknown, or some of them have no form.
  void AddChecks() {
    for (const TMappedCheck& check : table_.checks) {
      if (!Known(EFact::Checks)) break;
      if (IsCheckOfColumn(check)) continue;
      const TElement own = CheckElement(check);
      const TElement* match = there_ == nullptr ? nullptr : MatchingCheck(check);
      if (match != nullptr) taken_.insert(match);
      made_.elements.push_back(match != nullptr ? *match : own);
    }
    if (there_ == nullptr || TellsChecks()) return;
    for (const TElement& there : there_->elements) {
      if (there.kind != EElement::Check || taken_.contains(&there)) continue;
      if (std::ranges::any_of(made_.elements, [&](const TElement& made) {
            return made.kind == EElement::Check && SameText(made.name, there.name);
          }))
        continue;
      Count(EFact::Checks);
      made_.elements.push_back(there);
    }
  }

  static std::string ConditionOf(const TElement& check) {
    const std::size_t open = NextBracket(check.text.Tokens(), check.text.Body());
    const std::size_t after = AfterGroup(check.text.Tokens(), open);
    return after <= open + 1 ? std::string() : check.text.Part({open + 1, after - 1});
  }

  const TElement* MatchingCheck(const TMappedCheck& check) const {
    for (const TElement& there : there_->elements)
      if (there.kind == EElement::Check && !taken_.contains(&there) && SameExpression(ConditionOf(there), check.text))
        return &there;
    return nullptr;
  }

  void AddOthers() {
    if (there_ == nullptr) return;
    for (const TElement& there : there_->elements)
      if (there.kind == EElement::Period || there.kind == EElement::Other) made_.elements.push_back(there);
  }

  // --- The end

  // Whether nothing was made that is not the target's, and nothing of it left out.
  bool IsAllTheirs() const {
    if (there_ == nullptr || there_->system_versioned || made_.elements.size() != there_->elements.size()) return false;
    const auto same = [](const auto& a, const auto& b) { return a.name == b.name && a.value == b.value; };
    if (!std::ranges::equal(made_.options, there_->options, same)) return false;
    std::size_t next = 0;  // of the target's columns, whose order counts
    for (const TElement& element : made_.elements) {
      const bool column = element.kind == EElement::Column;
      const TElement* there = column ? &there_->elements[next++] : there_->Find(element.kind, element.name);
      if (there == nullptr || there->kind != element.kind || !(there->text == element.text)) return false;
    }
    return true;
  }

  TTableText TheirsAnew() const {
    TTableText theirs = *there_;
    theirs.name = made_.name;
    return theirs;
  }

  // As a server would print it: keys that references bring along, defaults in its words.
  TTableText Settled() {
    const TServerTraits server{.mysql = !context_.server.mariadb};
    const auto first = std::stable_partition(made_.elements.begin(), made_.elements.end(),
                                             [](const TElement& element) { return element.kind == EElement::Column; });
    std::vector<TElement> others(std::make_move_iterator(first), std::make_move_iterator(made_.elements.end()));
    made_.elements.erase(first, made_.elements.end());
    AddElements(std::move(others), true, server, made_);
    SettleTable(made_);
    CompleteTable(made_, nullptr, server);
    TakeSpellings();
    return std::move(made_);
  }

  // What says the same is written as the target has it, so that nothing is counted that this program has written.
  void TakeSpellings() {
    if (there_ == nullptr) return;
    TEquivalenceUse use;
    TElementComparison comparison(made_, *there_, use);
    for (TElement& element : made_.elements) {
      const TElement* there = there_->Find(element.kind, element.name);
      if (there != nullptr && comparison.Same(element, *there)) element.text = there->text;
    }
  }

  const TMappedTable& table_;
  const TTableText* there_;
  const TSettledColumns& settled_;
  const TMapContext& context_;
  TToleranceCounts& counts_;
  TTableText made_;
  bool has_hidden_key_ = false;
  std::set<const TElement*> taken_;
  std::vector<TMappedKey> own_keys_;
};

}  // namespace

TTableText TTolerance::Complete(const TMappedTable& table, const TTableText* there, const TSettledColumns& settled) {
  return TCompletion(table, there, settled, context_, counts_).Make();
}

}  // namespace velmora
