// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/plan/ColumnLocks.h"

#include <algorithm>

#include "mysqltext/ColumnParts.h"
#include "mysqltext/ColumnType.h"
#include "mysqltext/KeyText.h"
#include "util/Text.h"

namespace velmora {

namespace {

using EChange = ELockChange;

constexpr long long kShortBytes = 255;  // what a length of one byte counts

const TElement* LastColumn(const TTableText& table) {
  const TElement* last = nullptr;
  for (const TElement& element : table.elements)
    if (element.kind == EElement::Column) last = &element;
  return last;
}

bool IsLast(const TColumnPlace& place, const TTableText& table) {
  const TElement* last = LastColumn(table);
  return !place || (last != nullptr && SameText(*place, last->name));
}

const TElement* KeyOf(std::string_view column, const TTableText& table, bool wider) {
  for (const TElement& key : table.elements) {
    if (!IsKey(key.kind)) continue;
    const std::vector<TKeyPart>& parts = key.text.KeyParts();
    if (wider && parts.size() < 2) continue;
    if (std::ranges::any_of(parts, [&](const TKeyPart& part) { return SameText(part.column, column); })) return &key;
  }
  return nullptr;
}

bool StandsInPrimary(std::string_view column, const TTableText& table) {
  const TElement* key = table.Find(EElement::PrimaryKey, "PRIMARY");
  return key != nullptr && std::ranges::any_of(key->text.KeyParts(), [column](const TKeyPart& part) {
           return SameText(part.column, column);
         });
}

std::string PartOf(const TElementText& text, const std::optional<TTokenRange>& range) {
  return range ? text.Part(*range) : std::string();
}

// --- What becomes of values

long long Bytes(const TColumnText& column) {
  const long long each = column.type == "varchar" ? LetterBytes(column.charset.charset).most : 1;
  return column.Length().value_or(0) * each;
}

bool IsShortText(const TColumnText& column) { return column.type == "varchar" || column.type == "varbinary"; }

// Bytes that a value of an enum or set takes.
std::size_t MemberBytes(const TColumnText& column) {
  const std::size_t count = column.arguments.size();
  if (column.type == "enum") return count <= static_cast<std::size_t>(kShortBytes) ? 1 : 2;
  constexpr std::size_t kBits = 8, kMost = 8, kLargest = 4;
  const std::size_t bytes = (count + kBits - 1) / kBits;
  return bytes > kLargest ? kMost : bytes;
}

EChange GrownLetters(const TColumnText& from, const TColumnText& to) {
  if (to.Length().value_or(0) < from.Length().value_or(0)) return EChange::ChangeType;
  return Bytes(from) <= kShortBytes && Bytes(to) > kShortBytes ? EChange::GrowLettersAcross : EChange::GrowLetters;
}

EChange OtherMembers(const TColumnText& from, const TColumnText& to) {
  const bool appends = to.arguments.size() > from.arguments.size() &&
                       std::equal(from.arguments.begin(), from.arguments.end(), to.arguments.begin());
  return appends && MemberBytes(from) == MemberBytes(to) ? EChange::AppendMember : EChange::ChangeType;
}

std::optional<EChange> TypeChange(const TColumnText& from, const TColumnText& to) {
  const bool same_sign = from.is_unsigned == to.is_unsigned && from.zerofill == to.zerofill;
  if (from.type == to.type && same_sign && from.arguments == to.arguments) return std::nullopt;
  if (from.type != to.type || !same_sign) return EChange::ChangeType;
  if (IsShortText(from)) return GrownLetters(from, to);
  if (from.type == "enum" || from.type == "set") return OtherMembers(from, to);
  return IsWholeType(from.type) && !from.zerofill ? EChange::ChangeWidth : EChange::ChangeType;
}

bool IsSupersetOf(const TCharset& to, const TCharset& from) {
  return from.charset == "utf8mb3" && to.charset == "utf8mb4";
}

std::optional<EChange> CharsetChange(const TColumnText& from, const TColumnText& to, const TTableText& table) {
  if (!from.HasLetters() || !to.HasLetters() || SameCharset(from.charset, to.charset)) return std::nullopt;
  if (from.charset.charset.empty() || to.charset.charset.empty()) return EChange::Unknown;
  const bool in_key = StandsInKey(from.name, table);
  if (from.charset.charset == to.charset.charset)
    return !in_key                             ? EChange::ChangeCollation
           : StandsInPrimary(from.name, table) ? EChange::ChangeCollationOfPrimary
                                               : EChange::ChangeCollationOfKey;
  if (from.charset.charset == "ascii") return EChange::Unknown;
  if (!IsSupersetOf(to.charset, from.charset)) return EChange::ChangeType;
  if (from.type == "enum" || from.type == "set") return EChange::WidenCharsetOfMembers;
  if (from.type == "varchar" && Bytes(from) <= kShortBytes && Bytes(to) > kShortBytes)
    return EChange::GrowLettersAcross;
  return in_key ? EChange::WidenCharsetOfKey : EChange::WidenCharset;
}

// --- A column that is there

class TColumnLocks {
 public:
  TColumnLocks(const TElement& from, const TElement& to, const TTableText& table, const TCharset& charset)
      : from_(from.text),
        to_(to.text),
        had_(from_.Column()),
        has_(to_.Column()),
        table_(table),
        old_(ReadColumnText(from.text, table)),
        new_(ReadColumnText(to.text, charset)) {}

  std::vector<EChange> Changes(const TColumnPlace& place) {
    if (!SameText(had_.name, has_.name)) Add(EChange::RenameColumn);
    if (place) Move();
    if (had_.generated || has_.generated)
      ChangeComputed();
    else
      ChangeValues();
    ChangeDescription();
    if (changes_.empty()) Describe();
    return std::move(changes_);
  }

 private:
  void Add(EChange change) { changes_.push_back(change); }
  void Describe() { Add(had_.generated && had_.stored ? EChange::DescribeStored : EChange::DescribeColumn); }

  void Move() {
    const EChange computed = had_.stored ? EChange::MoveStored : EChange::MoveVirtual;
    Add(had_.generated ? computed : EChange::MoveColumn);
  }

  void ChangeComputed() {
    if (had_.generated.has_value() != has_.generated.has_value())
      return Add(had_.generated && had_.stored ? EChange::ChangeType : EChange::Unknown);
    const std::optional<EChange> type = TypeChange(old_, new_);
    if (had_.stored != has_.stored || (type && *type != EChange::ChangeWidth)) return Add(EChange::ChangeType);
    if (CharsetChange(old_, new_, table_)) return Add(EChange::Unknown);
    if (Expression(from_, *had_.generated) != Expression(to_, *has_.generated))
      Add(had_.stored ? EChange::ChangeType : EChange::ChangeVirtual);
    if (had_.not_null != has_.not_null) Add(EChange::Unknown);
  }

  void ChangeValues() {
    if (const auto type = TypeChange(old_, new_)) Add(*type);
    if (const auto letters = CharsetChange(old_, new_, table_)) Add(*letters);
    if (old_.type != new_.type && old_.HasLetters() != new_.HasLetters()) Add(EChange::ChangeType);
    if (had_.not_null != has_.not_null) Add(has_.not_null ? EChange::ForbidNull : EChange::AllowNull);
    if (had_.auto_increment != has_.auto_increment)
      Add(has_.auto_increment ? EChange::StartCounter : EChange::EndCounter);
  }

  void ChangeDescription() {
    const auto comment = [](const TElementText& text, const TColumnParts& parts) {
      return parts.comment ? text.Part({*parts.comment, *parts.comment + 1}) : std::string();
    };
    const bool described = PartOf(from_, had_.default_value) != PartOf(to_, has_.default_value) ||
                           PartOf(from_, had_.on_update) != PartOf(to_, has_.on_update) ||
                           comment(from_, had_) != comment(to_, has_) || had_.invisible != has_.invisible;
    if (described) Describe();
    if (PartOf(from_, had_.check) != PartOf(to_, has_.check))
      Add(has_.check ? EChange::AddColumnCheck : EChange::DropColumnCheck);
    if (Rest(from_, had_) != Rest(to_, has_)) Add(EChange::Unknown);
  }

  // Some print a pair of brackets more.
  static std::string Expression(const TElementText& text, TTokenRange range) {
    const TTokens tokens = text.Tokens();
    while (range.first < range.last && tokens[range.first].Is("(") && AfterGroup(tokens, range.first) == range.last) {
      ++range.first;
      --range.last;
    }
    return text.Part(range);
  }

  static std::string Rest(const TElementText& text, const TColumnParts& parts) {
    std::string rest;
    for (const TTokenRange range : parts.rest) rest += text.Part(range) + "\n";
    return LowerText(rest);
  }

  const TElementText& from_;
  const TElementText& to_;
  const TColumnParts& had_;
  const TColumnParts& has_;
  const TTableText& table_;
  const TColumnText old_;
  const TColumnText new_;
  std::vector<EChange> changes_;
};

}  // namespace

TColumnPlace TakePlace(TTokens tokens, TTokenRange& range) {
  if (range.last - range.first > 2 && IsKeyword(tokens[range.last - 1], "first")) {
    range.last -= 1;
    return std::string();
  }
  if (range.last - range.first <= 3 || !IsKeyword(tokens[range.last - 2], "after")) return std::nullopt;
  range.last -= 2;
  return NameOf(tokens[range.last + 1]);
}

bool StandsInKey(std::string_view column, const TTableText& table) { return KeyOf(column, table, false) != nullptr; }

std::vector<ELockChange> AddedColumn(const TElement& column, const TColumnPlace& place, const TTableText& table) {
  const TColumnParts& parts = column.text.Column();
  if (parts.generated) return {parts.stored ? EChange::AddStored : EChange::AddVirtual};
  if (parts.auto_increment) return {EChange::AddCounter};
  std::vector<ELockChange> changes = {IsLast(place, table) ? EChange::AddColumn : EChange::AddColumnBetween};
  if (PartOf(column.text, parts.default_value).starts_with("(")) changes.push_back(EChange::AddComputedDefault);
  if (parts.check) changes.push_back(EChange::AddCheckedColumn);
  return changes;
}

// Rows hold nothing of a virtual column; where it stands in a key, that is made anew or goes.
std::vector<ELockChange> DroppedColumn(const std::string& name, const TTableText& table) {
  const TElement* column = table.Find(EElement::Column, name);
  if (column == nullptr) return {EChange::Unknown};
  const TColumnParts& parts = column->text.Column();
  const bool in_key = StandsInKey(name, table);
  if (parts.generated && !parts.stored)
    return in_key ? std::vector{EChange::DropVirtual, EChange::DropKey} : std::vector{EChange::DropVirtual};
  if (KeyOf(name, table, true) != nullptr) return {EChange::DropWiderKeyColumn};
  return {in_key ? EChange::DropKeyColumn : EChange::DropColumn};
}

std::vector<ELockChange> ChangedColumn(const TElement& from, const TElement& to, const TColumnPlace& place,
                                       const TTableText& table, const TCharset& charset) {
  return TColumnLocks(from, to, table, charset).Changes(place);
}

}  // namespace velmora
