// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/compare/OptionEquivalences.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

#include "exact/compare/CanonicalForm.h"
#include "mysqltext/Charsets.h"
#include "mysqltext/TableOptions.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr std::string_view kAutoIncrement = "AUTO_INCREMENT";
constexpr std::string_view kComment = "COMMENT";

bool IsCharsetOption(const TTableOption& option) {
  return option.name == "DEFAULT CHARSET" || option.name == "COLLATE";
}

std::string CountedValue(const TTableText& table, const TTableOption& option) {
  return option.name == "ENGINE" ? EngineOf(table) : OptionValue(option);
}

// Aria names its own default in every text, and other engines go on naming it for a table that once was Aria's.
bool IsAriaDefault(const TTableText& table, const TTableText& other, const TTableOption& option) {
  constexpr std::string_view kAria = "aria";
  return option.name == "PAGE_CHECKSUM" && option.value == "1" && EngineOf(table) == kAria && EngineOf(other) == kAria;
}

// An option that is named with the value it has without being named is as if it were not there.
bool IsReset(const TTableText& table, const TTableText& other, const TTableOption& option) {
  const std::optional<std::string_view> reset = OptionResetValue(option);
  if (reset && OptionValue(option) == OptionValue({option.name, std::string(*reset)})) return true;
  return IsAriaDefault(table, other, option);
}

// Options that are compared one by one: not the character set, which is a pair, and not the counter when it is off.
bool Counts(const TTableOption& option, const TEquivalenceUse& use) {
  if (IsCharsetOption(option)) return false;
  if (option.name == kComment && use.On(EEquivalence::Comments)) return false;
  return option.name != kAutoIncrement || !use.On(EEquivalence::AutoIncrement);
}

// A text that names no engine takes what is there: servers always name it.
bool HasSame(const TTableText& table, const TTableText& other, const TTableOption& option) {
  const TTableOption* found = other.FindOption(option.name);
  if (option.name == "ENGINE" && found == nullptr) return true;
  if (found == nullptr || IsReset(other, table, *found)) return IsReset(table, other, option);
  return MayBeOneText(CountedValue(table, option), CountedValue(other, *found));
}

bool HasAll(const TTableText& table, const TTableText& other, const TEquivalenceUse& use) {
  return std::all_of(table.options.begin(), table.options.end(),
                     [&](const TTableOption& option) { return !Counts(option, use) || HasSame(table, other, option); });
}

TCharset OwnCharset(const TTableText& table) {
  TCharset result;
  for (const TTableOption& option : table.options) {
    if (option.name == "DEFAULT CHARSET") result.charset = CharsetName(OptionValue(option));
    if (option.name == "COLLATE") result.collation = CollationName(OptionValue(option));
  }
  return result;
}

// A table that names no character set takes that of its database, which no text tells: it equals any.
bool CharsetsMeanTheSame(const TTableText& a, const TTableText& b) {
  const TCharset of_a = TableCharset(a);
  const TCharset of_b = TableCharset(b);
  return of_a == TCharset() || of_b == TCharset() || SameCharset(of_a, of_b);
}

bool SameTableCharset(const TTableText& a, const TTableText& b, const TEquivalenceUse& use) {
  if (OwnCharset(a) == OwnCharset(b) || use.On(EEquivalence::Charset)) return true;
  return use.On(EEquivalence::InheritedCharset) && CharsetsMeanTheSame(a, b);
}

// Of two that are not written alike and count as the same.
EEquivalence CharsetReason(const TTableText& a, const TTableText& b, const TEquivalenceUse& use) {
  const bool same = use.On(EEquivalence::InheritedCharset) && CharsetsMeanTheSame(a, b);
  return same ? EEquivalence::InheritedCharset : EEquivalence::Charset;
}

// Names of the options that the other one has too.
std::vector<std::string_view> SharedOrder(const TTableText& table, const TTableText& other) {
  std::vector<std::string_view> result;
  for (const TTableOption& option : table.options)
    if (option.name != kAutoIncrement && other.FindOption(option.name) != nullptr) result.push_back(option.name);
  return result;
}

bool SameTexts(const std::vector<TTableOption>& a, const std::vector<TTableOption>& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const TTableOption& x, const TTableOption& y) {
    return x.name == y.name && x.value == y.value;
  });
}

bool SameValue(const TTableText& a, const TTableText& b, std::string_view name) {
  const TTableOption* in_a = a.FindOption(name);
  const TTableOption* in_b = b.FindOption(name);
  if (in_a == nullptr || in_b == nullptr) return in_a == in_b;
  return in_a->value == in_b->value;
}

}  // namespace

bool SameOptions(const TTableText& a, const TTableText& b, TEquivalenceUse& use) {
  if (a.system_versioned != b.system_versioned) return false;
  if (SameTexts(a.options, b.options)) return true;
  if (!SameTableCharset(a, b, use) || !HasAll(a, b, use) || !HasAll(b, a, use)) return false;
  const bool ordered = SharedOrder(a, b) == SharedOrder(b, a);
  if (!ordered && !use.On(EEquivalence::OptionOrder)) return false;
  if (!ordered) use.Add(EEquivalence::OptionOrder);
  if (!SameValue(a, b, kAutoIncrement)) use.Add(EEquivalence::AutoIncrement);
  if (use.On(EEquivalence::Comments) && !SameValue(a, b, kComment)) use.Add(EEquivalence::Comments);
  if (OwnCharset(a) != OwnCharset(b)) use.Add(CharsetReason(a, b, use));
  return true;
}

std::vector<TTableOption> OptionsToSet(const TTableText& a, const TTableText& b, const TEquivalenceUse& use) {
  std::vector<TTableOption> result;
  const bool charset = !SameTableCharset(a, b, use);
  for (const TTableOption& option : a.options)
    if (IsCharsetOption(option) ? charset : Counts(option, use) && !HasSame(a, b, option)) result.push_back(option);
  const bool other_engine = EngineOf(a) != EngineOf(b) && !EngineOf(a).empty();
  for (const TTableOption& option : b.options) {
    if (other_engine && !OutlivesEngine(option, EngineOf(a))) continue;
    if (!Counts(option, use) || a.FindOption(option.name) != nullptr || IsReset(b, a, option)) continue;
    if (const std::optional<std::string_view> reset = OptionResetValue(option))
      result.push_back({option.name, std::string(*reset)});
  }
  return result;
}

}  // namespace velmora
