#include "exact/Equivalences.h"

#include <algorithm>
#include <optional>

#include "exact/CanonicalForm.h"
#include "exact/Charsets.h"
#include "exact/ColumnParts.h"
#include "exact/TableOptions.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

// Takes out of a form what its equivalence says does not count. False when there was nothing of it.
using TApply = bool (*)(TCanonicalForm& form);

// Deliberate: tinyint(1) keeps its width, for clients take it for a boolean.
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

// AutoIncrement and OptionOrder are of options, not of elements; charsets are compared in pairs, by CharsetsAgree.
constexpr std::array<TApply, kEquivalenceCount> kApply = {
    nullptr, DropDisplayWidth, nullptr, UnquoteNumber, ShortenTimestamps, DropBtree, DropRestricts, nullptr};

constexpr std::array<TEquivalence, kEquivalenceCount> kEquivalences = {
    {{EEquivalence::AutoIncrement, "auto-increment", "the counter of a table, AUTO_INCREMENT=N"},
     {EEquivalence::DisplayWidth, "display-width", "int(11) and int; tinyint(1) and zerofill keep their width"},
     {EEquivalence::InheritedCharset, "inherited-charset",
      "a character set or collation that is the table's, or the set's own collation"},
     {EEquivalence::QuotedNumber, "quoted-number", "default '0' and default 0 of a number"},
     {EEquivalence::CurrentTimestamp, "current-timestamp", "current_timestamp, current_timestamp(), now(), localtime"},
     {EEquivalence::UsingBtree, "using-btree", "USING BTREE where the engine makes such keys by itself"},
     {EEquivalence::NoAction, "no-action", "ON DELETE and ON UPDATE with RESTRICT, NO ACTION or not at all"},
     {EEquivalence::OptionOrder, "option-order", "the order of table options"}}};

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

using TUsed = std::array<bool, kEquivalenceCount>;
constexpr std::size_t kInherited = static_cast<std::size_t>(EEquivalence::InheritedCharset);

bool SameUnder(TCanonicalForm a, TCanonicalForm b, const TUsed& used) {
  for (std::size_t i = 0; i < used.size(); ++i)
    if (used[i] && kApply[i] != nullptr) {
      kApply[i](a);
      kApply[i](b);
    }
  return SameForm(a, b, used[kInherited]);
}

// Those that are on and find something in one of the forms.
TUsed UsedBy(TCanonicalForm a, TCanonicalForm b, const TEquivalenceUse& use) {
  TUsed used{};
  for (std::size_t i = 0; i < used.size(); ++i) {
    if (!use.On(static_cast<EEquivalence>(i))) continue;
    if (i == kInherited) used[i] = a.own != b.own;
    if (kApply[i] == nullptr) continue;
    const bool in_a = kApply[i](a);
    const bool in_b = kApply[i](b);
    used[i] = in_a || in_b;
  }
  return used;
}

// An equivalence made two forms equal if they differ without it.
void CountNeeded(const TCanonicalForm& a, const TCanonicalForm& b, const TUsed& used, TEquivalenceUse& use) {
  const bool single = std::count(used.begin(), used.end(), true) == 1;
  for (std::size_t i = 0; i < used.size(); ++i) {
    if (!used[i]) continue;
    TUsed others = used;
    others[i] = false;
    if (single || !SameUnder(a, b, others)) use.Add(static_cast<EEquivalence>(i));
  }
}

bool SameOption(const TTableText& a, const TTableText& b, std::string_view name) {
  const TTableOption* in_a = a.FindOption(name);
  const TTableOption* in_b = b.FindOption(name);
  if (in_a == nullptr || in_b == nullptr) return in_a == in_b;
  return in_a->value == in_b->value;
}

// Whether equal texts mean the same in both tables: what elements inherit is equal.
bool SameSurroundings(const TTableText& a, const TTableText& b) {
  return SameOption(a, b, "DEFAULT CHARSET") && SameOption(a, b, "COLLATE") && SameOption(a, b, "KEY_BLOCK_SIZE");
}

}  // namespace

std::span<const TEquivalence, kEquivalenceCount> Equivalences() { return kEquivalences; }

bool SameElement(const TElement& a, const TTableText& table_a, const TElement& b, const TTableText& table_b,
                 TEquivalenceUse& use) {
  if (a.kind != b.kind) return false;
  if (a.text == b.text && SameSurroundings(table_a, table_b)) return true;
  const TCanonicalForm form_a = CanonicalForm(a, table_a);
  const TCanonicalForm form_b = CanonicalForm(b, table_b);
  if (SameForm(form_a, form_b, false)) return true;
  const TUsed used = UsedBy(form_a, form_b, use);
  if (!SameUnder(form_a, form_b, used)) return false;
  CountNeeded(form_a, form_b, used, use);
  return true;
}

bool SamePartitioning(const TTableText& a, const TTableText& b) {
  return a.partitioning == b.partitioning || CanonicalPartitioning(a) == CanonicalPartitioning(b);
}

}  // namespace velmora
