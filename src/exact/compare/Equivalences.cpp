// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/compare/Equivalences.h"

#include <algorithm>
#include <optional>

#include "exact/compare/CanonicalForm.h"
#include "mysqltext/Charsets.h"
#include "mysqltext/ColumnParts.h"
#include "mysqltext/ElementText.h"
#include "mysqltext/TableOptions.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

// Takes out of a form, from certain slots, what its equivalence says does not count. False when there was nothing of
// it.
using TApply = bool (*)(TCanonicalForm& form);

// MySQL prints widths up to 8.0.18, and later only where they mean something (MySQL 8.4 Reference Manual, 13.1.1
// Numeric Data Type Syntax). Deliberate: tinyint(1) keeps its width, for clients take it for a boolean.
bool DropDisplayWidth(TCanonicalForm& form) {
  TCanonicalTokens& width = form[ESlot::Arguments];
  const TCanonicalTokens& sign = form[ESlot::Sign];
  if (width.size() != 1 || (!sign.empty() && sign.back().text == "zerofill")) return false;
  const bool year = form.type == "year" && width[0].text == "4";
  if (!year && (!IsWholeType(form.type) || (form.type == "tinyint" && width[0].text == "1"))) return false;
  width.clear();
  return true;
}

// The number that a text is, or that sign and digits are.
std::optional<std::string> NumberText(const TCanonicalTokens& value) {
  std::string text;
  for (const TCanonicalToken& token : value)
    text += token.kind == EToken::String && token.text.starts_with('\'') ? token.text.substr(1) : token.text;
  if (text.starts_with('+')) text.erase(0, 1);
  return TryStrToFloat(text) ? std::optional(LowerText(text)) : std::nullopt;
}

bool UnquoteNumber(TCanonicalForm& form) {
  TCanonicalTokens& value = form[ESlot::Default];
  if (value.size() != 1 || value[0].kind != EToken::String) return false;
  if (!IsNumberType(form.type) && form.type != "year") return false;
  const std::optional<std::string> number = NumberText(value);
  if (!number) return false;
  value.clear();
  if (number->front() == '-') value.push_back({EToken::Symbol, "-"});
  value.push_back({EToken::Number, number->substr(number->front() == '-' ? 1 : 0)});
  return true;
}

// current_timestamp and its synonyms, with "()" or a fraction.
bool ShortenTimestamp(TCanonicalTokens& value) {
  if (value.empty() || value[0].kind != EToken::Word) return false;
  if (!InList(value[0].text, {"current_timestamp", "now", "localtime", "localtimestamp"})) return false;
  const bool brackets = value.size() >= 3 && value[1].text == "(" && value.back().text == ")";
  const bool silent = value.size() == 1 ? value[0].text != "now" : brackets && value.size() == 3;
  if (!silent && !(brackets && value.size() == 4 && value[2].kind == EToken::Number)) return false;
  const std::string fraction = silent || value[2].text == "0" ? "" : value[2].text;
  TCanonicalTokens plain = {{EToken::Word, "current_timestamp"}};
  if (!fraction.empty()) plain.push_back({EToken::Number, fraction});
  if (plain == value) return false;
  value = std::move(plain);
  return true;
}

bool ShortenTimestamps(TCanonicalForm& form) {
  const bool in_default = ShortenTimestamp(form[ESlot::Default]);
  const bool in_update = ShortenTimestamp(form[ESlot::OnUpdate]);
  return in_default || in_update;
}

bool DropBtree(TCanonicalForm& form) {
  TCanonicalTokens& method = form[ESlot::Using];
  if (!form.btree_is_own || method.empty() || method[0].text != "btree") return false;
  method.clear();
  return true;
}

bool DropRule(TCanonicalTokens& rule) {
  const bool restricts = rule.size() == 1 && rule[0].text == "restrict";
  const bool nothing = rule.size() == 2 && rule[0].text == "no" && rule[1].text == "action";
  if (restricts || nothing) rule.clear();
  return restricts || nothing;
}

bool DropRestricts(TCanonicalForm& form) {
  const bool of_delete = DropRule(form[ESlot::DeleteRule]);
  const bool of_update = DropRule(form[ESlot::UpdateRule]);
  return of_delete || of_update;
}

bool DropComment(TCanonicalForm& form) {
  const bool found = !form[ESlot::Comment].empty();
  form[ESlot::Comment].clear();
  return found;
}

struct TRule {
  EEquivalence id;
  TApply apply;
  std::array<ESlot, 2> slots;  // it looks for something here
};
// AutoIncrement and OptionOrder are of options, KeyOrder, GeneratedKey, CopiedName, ColumnOrder and Partitions of
// tables, LiteralCollation of what stands beside them, not of elements; charsets are compared in pairs, by
// CharsetsAgree.
constexpr std::array<TRule, 6> kRules = {
    {{EEquivalence::DisplayWidth, DropDisplayWidth, {ESlot::Arguments, ESlot::Arguments}},
     {EEquivalence::QuotedNumber, UnquoteNumber, {ESlot::Default, ESlot::Default}},
     {EEquivalence::CurrentTimestamp, ShortenTimestamps, {ESlot::Default, ESlot::OnUpdate}},
     {EEquivalence::UsingBtree, DropBtree, {ESlot::Using, ESlot::Using}},
     {EEquivalence::NoAction, DropRestricts, {ESlot::DeleteRule, ESlot::UpdateRule}},
     {EEquivalence::Comments, DropComment, {ESlot::Comment, ESlot::Comment}}}};

constexpr std::array<TEquivalence, kEquivalenceCount> kEquivalences = {
    {{EEquivalence::AutoIncrement, "auto-increment", "the counter of a table, AUTO_INCREMENT=N"},
     {EEquivalence::DisplayWidth, "display-width", "int(11) and int; tinyint(1) and zerofill keep their width"},
     {EEquivalence::InheritedCharset, "inherited-charset",
      "a character set or collation that is the table's, or the set's own collation"},
     {EEquivalence::QuotedNumber, "quoted-number", "default '0' and default 0 of a number"},
     {EEquivalence::CurrentTimestamp, "current-timestamp", "current_timestamp, current_timestamp(), now(), localtime"},
     {EEquivalence::UsingBtree, "using-btree", "USING BTREE where the engine makes such keys by itself"},
     {EEquivalence::NoAction, "no-action", "ON DELETE and ON UPDATE with RESTRICT, NO ACTION or not at all"},
     {EEquivalence::OptionOrder, "option-order", "the order of table options", true, false},
     {EEquivalence::KeyOrder, "key-order", "the order of keys, checks and foreign keys", true, false},
     {EEquivalence::GeneratedKey, "generated-key", "the invisible primary key that a server makes for a table without"},
     {EEquivalence::CopiedName, "copied-name",
      "underscores before the name of a foreign key or check, as tools for large tables put them there"},
     {EEquivalence::LiteralCollation, "literal-collation",
      "the collation in which views, triggers, routines and events compare the texts in them"},
     {EEquivalence::ColumnOrder, "column-order", "the order of columns", false},
     {EEquivalence::Comments, "comments", "comments of tables, columns and keys", false},
     {EEquivalence::Partitions, "partitions", "how tables are partitioned, and whether they are", false},
     {EEquivalence::Charset, "charset", "character sets and collations of tables and columns", false}}};

// --- Elements

// Where a table says nothing its columns have what their database has: the same as what is inherited elsewhere.
bool Inherits(const TCanonicalForm& a, const TCanonicalForm& b) {
  return a.effective == TCharset() && SameCharset(b.effective, b.table);
}

bool EffectiveAgree(const TCanonicalForm& a, const TCanonicalForm& b) {
  return SameCharset(a.effective, b.effective) || Inherits(a, b) || Inherits(b, a);
}

// A difference in what is effective is one even between equal texts. `inherited` tells whether it is the only one.
bool CharsetsAgree(const TCanonicalForm& a, const TCanonicalForm& b, bool inherited) {
  if (!EffectiveAgree(a, b)) return false;
  if (a.own == b.own) return true;
  return inherited && !(a.effective == TCharset() && b.effective == TCharset());
}

bool SameForm(const TCanonicalForm& a, const TCanonicalForm& b, bool inherited) {
  const bool named = !a.name.empty() && !b.name.empty();  // servers name what a text leaves without a name
  return (!named || a.name == b.name) && a.slots == b.slots && CharsetsAgree(a, b, inherited);
}

using TNeeded = std::array<bool, kEquivalenceCount>;
constexpr std::size_t kInherited = static_cast<std::size_t>(EEquivalence::InheritedCharset);

bool Differ(const TCanonicalForm& a, const TCanonicalForm& b, const std::array<ESlot, 2>& slots) {
  return std::any_of(slots.begin(), slots.end(), [&](ESlot slot) { return a[slot] != b[slot]; });
}

// Takes out of both forms what does not count by the equivalences that are on. If the forms are equal then, those were
// needed that found something where the ones before them had left a difference.
TNeeded TakeOut(TCanonicalForm& a, TCanonicalForm& b, const TEquivalenceUse& use) {
  TNeeded needed{};
  needed[kInherited] = use.On(EEquivalence::InheritedCharset) && a.own != b.own;
  if (use.On(EEquivalence::Charset) && !CharsetsAgree(a, b, needed[kInherited])) {
    needed[kInherited] = false;
    needed[static_cast<std::size_t>(EEquivalence::Charset)] = true;
    for (TCanonicalForm* form : {&a, &b}) form->own = form->effective = {};
  }
  for (const TRule& rule : kRules) {
    if (!use.On(rule.id) || !Differ(a, b, rule.slots)) continue;
    const bool in_a = rule.apply(a);
    const bool in_b = rule.apply(b);
    needed[static_cast<std::size_t>(rule.id)] = in_a || in_b;
  }
  return needed;
}

}  // namespace

std::span<const TEquivalence, kEquivalenceCount> Equivalences() { return kEquivalences; }

const TEquivalence* FindEquivalence(std::string_view name) {
  const auto* const row =
      std::ranges::find_if(kEquivalences, [name](const TEquivalence& of) { return SameText(of.name, name); });
  return row == kEquivalences.end() ? nullptr : row;
}

TEquivalenceUse::TEquivalenceUse() {
  for (const TEquivalence& row : kEquivalences) Switch(row.id, row.on);
}

TInheritance InheritanceOf(const TTableText& table) {
  TInheritance result;
  result.charset = TableCharset(table);
  if (const TTableOption* size = table.FindOption("KEY_BLOCK_SIZE")) result.key_block_size = OptionValue(*size);
  if (result.key_block_size == "0") result.key_block_size.clear();
  result.btree_is_own = !InList(EngineOf(table), {"memory", "ndbcluster", "ndb"});
  return result;
}

// Whether equal texts mean the same in both tables.
bool TElementComparison::InheritTheSame(EElement kind) const {
  if (kind == EElement::Column) return a_.charset == b_.charset;
  return !IsKey(kind) || a_.key_block_size == b_.key_block_size;
}

bool TElementComparison::Same(const TElement& in_a, const TElement& in_b) {
  if (in_a.kind != in_b.kind) return false;
  if (in_a.text == in_b.text && InheritTheSame(in_a.kind)) return true;
  TCanonicalForm form_a = CanonicalForm(in_a, a_);
  TCanonicalForm form_b = CanonicalForm(in_b, b_);
  if (SameForm(form_a, form_b, false)) return true;
  const TNeeded needed = TakeOut(form_a, form_b, use_);
  if (!SameForm(form_a, form_b, needed[kInherited])) return false;
  for (std::size_t i = 0; i < needed.size(); ++i)
    if (needed[i]) use_.Add(static_cast<EEquivalence>(i));
  return true;
}

bool SamePartitioning(const TTableText& a, const TTableText& b, TEquivalenceUse& use) {
  if (a.partitioning == b.partitioning || CanonicalPartitioning(a) == CanonicalPartitioning(b)) return true;
  if (!use.On(EEquivalence::Partitions)) return false;
  use.Add(EEquivalence::Partitions);
  return true;
}

}  // namespace velmora
