// SPDX-License-Identifier: GPL-3.0-or-later
#include "lint/Rules.h"

#include <algorithm>
#include <array>
#include <utility>

#include "lint/CharsetRules.h"
#include "lint/ColumnRules.h"
#include "lint/ForeignKeyRules.h"
#include "lint/IndexRules.h"
#include "lint/KeyLimits.h"
#include "mysqltext/KeyText.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Lists.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kNoRule[] = "\"%s\" is no rule; there are: %s";
constexpr char kNoSeverity[] = "\"%s\" is no severity of rule %s: give off, note, warning or error";
constexpr char kNoWish[] = "\"%s\" names no rule and severity, as in no-primary-key=error";

constexpr ESeverity kNote = ESeverity::Note;
constexpr ESeverity kWarning = ESeverity::Warning;
constexpr ESeverity kError = ESeverity::Error;

constexpr std::array kRules = {
    TLintRule{"no-primary-key", kWarning, "A table has no primary key, and no unique key that could stand for one",
              LookForNoKey},
    TLintRule{"unique-as-primary-key", kNote, "A table has no primary key, but a unique key without null",
              LookForUniqueAsPrimary},
    TLintRule{"duplicate-index", kWarning, "An index has the same columns as another one", LookForDuplicates},
    TLintRule{"redundant-index", kNote, "An index has the first columns of another one", LookForRedundant},
    TLintRule{"nullable-unique", kNote, "A unique key has columns that may be null, and takes rows with null again",
              LookForNullableUnique},
    TLintRule{"key-too-long", kError, "A key takes more bytes or columns than its engine has room for",
              LookForLongKeys},
    TLintRule{"foreign-key-parent", kError, "A foreign key refers to a table or column that is not there",
              LookForMissingParents},
    TLintRule{"foreign-key-type", kError, "The columns of a foreign key are not of the types that they refer to",
              LookForOtherTypes},
    TLintRule{"foreign-key-index", kError, "No index begins with the columns of a foreign key, or with those it is to",
              LookForMissingIndexes},
    TLintRule{"foreign-key-not-unique", kNote, "A foreign key refers to columns that are not unique", LookForNotUnique},
    TLintRule{"duplicate-foreign-key", kWarning, "Two foreign keys say the same", LookForSameForeignKeys},
    TLintRule{"mixed-charsets", kWarning, "A table has another character set than most tables", LookForOtherCharset},
    TLintRule{"mixed-collations", kNote, "A table has another collation than most tables with its character set",
              LookForOtherCollation},
    TLintRule{"column-charset", kNote, "A column has another character set or collation than its table",
              LookForColumnCharsets},
    TLintRule{"utf8mb3", kNote, "A table or column has utf8mb3, which holds no letters of four bytes",
              LookForShortUtf8},
    TLintRule{"zero-date", kWarning, "A default is a date whose month or day is zero", LookForZeroDates},
    TLintRule{"auto-increment", kWarning, "A counter of new rows is near its end", LookForFullCounters, true},
    TLintRule{"no-transactions", kNote, "A table's engine knows no transactions", LookForNoTransactions},
};

}  // namespace

std::span<const TLintRule> LintRules() { return kRules; }

const TLintRule* FindLintRule(std::string_view id) {
  const auto* const rule = std::ranges::find_if(kRules, [id](const TLintRule& row) { return SameText(row.id, id); });
  return rule == kRules.end() ? nullptr : rule;
}

void TakeRuleWish(const std::string& text, TLintWishes& wishes) {
  const std::size_t equals = text.find('=');
  if (equals == std::string::npos) RaiseError(Format(kNoWish, text));
  const std::string id = Trim(text.substr(0, equals));
  const std::string word = Trim(text.substr(equals + 1));
  const TLintRule* rule = FindLintRule(id);
  TStringList ids;
  for (const TLintRule& row : kRules) ids.emplace_back(row.id);
  if (rule == nullptr) RaiseError(Format(kNoRule, id, JoinList(ids, ", ")));
  for (std::size_t i = 0; i < kSeverityCount; ++i) {
    if (!SameText(SeverityWord(static_cast<ESeverity>(i)), word)) continue;
    wishes.severities[std::string(rule->id)] = static_cast<ESeverity>(i);
    return;
  }
  RaiseError(Format(kNoSeverity, word, std::string(rule->id)));
}

void TTableLook::Begin(const TLintRule& rule) {
  rule_ = &rule;
  const auto asked = wishes.severities.find(rule.id);
  asked_ = asked != wishes.severities.end();
  severity_ = asked_ ? asked->second : rule.severity;
  if (severity_ != ESeverity::Off) rule.look(*this);
}

void TTableLook::Add(std::string text, std::string advice) {
  found_.push_back(
      {std::string(rule_->id), severity_, table.name, EElement::Other, {}, {}, std::move(text), std::move(advice), {}});
}

void TTableLook::Add(const TElement& element, std::string text, std::string advice) {
  Add(severity_, element, std::move(text), std::move(advice));
}

void TTableLook::Add(ESeverity severity, const TElement& element, std::string text, std::string advice) {
  TFinding finding{std::string(rule_->id),
                   asked_ ? severity_ : severity,
                   table.name,
                   element.kind,
                   element.name,
                   {},
                   std::move(text),
                   std::move(advice),
                   {}};
  if (IsKey(element.kind) || element.kind == EElement::ForeignKey) finding.columns = KeyColumns(element);
  found_.push_back(std::move(finding));
}

void LookAtTable(const TTableText& table, const TLintSchema& schema, const TLintWishes& wishes,
                 std::vector<TFinding>& found) {
  TTableLook look(table, schema, wishes, found);
  for (const TLintRule& rule : kRules) look.Begin(rule);
}

}  // namespace velmora
