// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/compare/ChangeText.h"

#include <algorithm>
#include <array>
#include <utility>

#include "mysqltext/ColumnParts.h"
#include "util/Counted.h"
#include "util/Lists.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr std::size_t kLongestDetail = 200;  // letters
constexpr std::size_t kLongestFact = 80;

// One thing that an element says, and what stands for it where it says nothing.
struct TFact {
  std::string text;
  const char* absent = "";
  bool of_itself = true;  // otherwise of interest only where it changes
};
using TFacts = std::vector<TFact>;

std::string Cut(const std::string& text, std::size_t letters) {
  return CharCount(text) <= letters ? text : CutChars(text, letters) + "...";
}

// Short words for what reads well without quotes.
std::string Plain(const std::string& text) { return RemoveChar(text, '`'); }

std::string InBrackets(const std::vector<std::string>& parts) { return "(" + JoinList(parts, ", ") + ")"; }

std::string BodyText(const TElementText& text) { return Plain(text.Part({text.Body(), text.Tokens().size()})); }

// --- Columns

// The width of a whole number says how it is shown, and servers of today do not print it.
std::string TypeFact(const TColumnText& column, const TElementText& text) {
  std::string type = column.type;
  const bool only_shown = IsWholeType(column.type) && !column.zerofill;
  if (const TTokenRange range = text.Column().arguments; range.last > range.first && !only_shown)
    type += "(" + text.Part(range) + ")";
  if (column.is_unsigned) type += " unsigned";
  return column.zerofill ? type + " zerofill" : type;
}

std::string DefaultFact(const TColumnText& column) {
  if (!column.default_text || SameText(*column.default_text, "null")) return {};
  return "default " + *column.default_text;
}

std::string RangeFact(const char* head, const TElementText& text, const std::optional<TTokenRange>& range) {
  return range ? head + text.Part(*range) : std::string();
}

TFacts ColumnFacts(const TColumnText& column, const TElementText& text) {
  const TColumnParts& parts = text.Column();
  const auto said = [](bool is, const char* word) { return is ? std::string(word) : std::string(); };
  std::string rest;
  for (const TTokenRange range : parts.rest) rest += (rest.empty() ? "" : " ") + text.Part(range);
  std::string comment;
  if (parts.comment) comment = "comment " + text.Part({*parts.comment, *parts.comment + 1});
  std::string generated;
  if (column.generated) generated = "as (" + *column.generated + ")" + (column.stored ? " stored" : "");
  return {{TypeFact(column, text), ""},
          {column.HasLetters() ? column.charset.collation : "", "no collation", false},
          {column.not_null ? "not null" : "", "null"},
          {DefaultFact(column), "no default"},
          {said(column.auto_increment, "auto_increment"), "no auto_increment"},
          {RangeFact("on update ", text, parts.on_update), "no on update"},
          {std::move(generated), "not computed"},
          {said(column.invisible, "invisible"), "visible"},
          {RangeFact("check ", text, parts.check), "no check"},
          {std::move(comment), "no comment"},
          {std::move(rest), "nothing more"}};
}

// --- Keys and constraints

constexpr std::pair<EElement, const char*> kKeyWords[] = {{EElement::PrimaryKey, "primary key"},
                                                          {EElement::UniqueKey, "unique"},
                                                          {EElement::FulltextKey, "fulltext"},
                                                          {EElement::SpatialKey, "spatial"}};

std::string KeyWord(const TElementText& text) {
  const auto head = ReadElementHead(text.Tokens());
  for (const auto& [kind, word] : kKeyWords)
    if (head && head->kind == kind) return word;
  return {};
}

std::string TextFrom(const TElementText& text, std::size_t first) {
  return Plain(text.Part({std::min(first, text.Tokens().size()), text.Tokens().size()}));
}

TFacts KeyFacts(const TElementText& text) {
  std::vector<std::string> columns;
  for (const TKeyPart& part : text.KeyParts()) columns.push_back(Plain(part.text));
  const TTokens tokens = text.Tokens();
  const std::size_t open = NextBracket(tokens, text.Body());
  return {{KeyWord(text), "not unique"},
          {InBrackets(columns), ""},
          {open < tokens.size() ? TextFrom(text, AfterGroup(tokens, open)) : "", "nothing more"}};
}

TFacts ForeignKeyFacts(const TElementText& text) {
  const TForeignKeyParts& parts = text.ForeignKey();
  const std::string table = parts.database.empty() ? parts.table : parts.database + "." + parts.table;
  return {{InBrackets(parts.columns), ""},
          {"references " + table + " " + InBrackets(parts.references), ""},
          {LowerText(TextFrom(text, parts.rules)), "no rules"}};
}

TFacts Facts(const TChange& change, const TElementText& text, const std::shared_ptr<const TColumnText>& column) {
  if (text.Empty()) return {};
  if (column != nullptr) return ColumnFacts(*column, text);
  if (IsKey(change.kind)) return KeyFacts(text);
  if (change.kind == EElement::ForeignKey) return ForeignKeyFacts(text);
  return {{BodyText(text), ""}};
}

// --- What is told of them

std::string Listed(const TFacts& facts) {
  std::string text;
  for (const TFact& fact : facts)
    if (!fact.text.empty() && fact.of_itself) text += (text.empty() ? "" : " ") + Cut(fact.text, kLongestFact);
  return text;
}

std::string Arrow(const std::string& from, const std::string& to) {
  return Cut(from, kLongestFact) + " -> " + Cut(to, kLongestFact);
}

std::string Changed(const TFacts& had, const TFacts& has) {
  TStringList changes;
  for (std::size_t i = 0; i < std::min(had.size(), has.size()); ++i) {
    const auto said = [](const TFact& fact) { return fact.text.empty() ? std::string(fact.absent) : fact.text; };
    if (had[i].text != has[i].text) changes.push_back(Arrow(said(had[i]), said(has[i])));
  }
  return JoinList(changes, ", ");
}

std::string ElementDetail(const TChange& change) {
  const TFacts had = Facts(change, change.old_text, change.old_column);
  const TFacts has = Facts(change, change.new_text, change.new_column);
  std::string detail;
  if (had.empty() || has.empty())
    detail = Listed(had.empty() ? has : had);
  else if (!change.moved_only)
    detail = Changed(had, has);
  // A column that is new stands where the reference has it, which is of no interest.
  if (!change.after || had.empty()) return detail;
  const std::string place = change.after->empty() ? "first" : "after " + *change.after;
  return detail.empty() ? place : detail + ", " + place;
}

std::string OptionsDetail(const TChange& change, const TTableText* target) {
  TStringList changes;
  for (const TTableOption& option : change.options) {
    const TTableOption* had = target == nullptr ? nullptr : target->FindOption(option.name);
    const std::string name = LowerText(option.name) + " ";
    changes.push_back(had == nullptr ? name + Cut(option.value, kLongestFact) : name + Arrow(had->value, option.value));
  }
  return JoinList(changes, ", ");
}

std::string PartitionDetail(const TChange& change) {
  const auto said = [](const TElementText& text) { return text.Empty() ? "not partitioned" : Plain(text.Str()); };
  return Arrow(said(change.old_text), said(change.new_text));
}

std::string TableDetail(const TTableText* table) {
  if (table == nullptr) return {};
  const auto columns = std::ranges::count(table->elements, EElement::Column, &TElement::kind);
  return Counted(static_cast<std::size_t>(columns), "column");
}

std::string Detail(const TChange& change, const TTableText* target, const TTableText* reference) {
  if (SyncAction(change.action).WholeTable()) return TableDetail(change.action == saDropTable ? target : reference);
  if (change.action != saChangeTableType) return ElementDetail(change);
  return change.options.empty() && change.item == kPartitioningItem ? PartitionDetail(change)
                                                                    : OptionsDetail(change, target);
}

}  // namespace

std::string ChangeDetail(const TChange& change, const TTableText* target, const TTableText* reference) {
  return Cut(ShownText(Detail(change, target, reference)), kLongestDetail);
}

}  // namespace velmora
