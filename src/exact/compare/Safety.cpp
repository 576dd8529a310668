// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/compare/Safety.h"

// What a change may cost. The judgement is on the safe side: what is not known to keep every value is unsafe. A change
// that a server merely refuses, such as a unique key over rows that are not, or partitions that do not take all rows,
// loses nothing and so is safe.

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

#include "mysqltext/Charsets.h"
#include "mysqltext/ColumnParts.h"
#include "mysqltext/ColumnType.h"
#include "mysqltext/ElementText.h"
#include "mysqltext/Lexer.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kDropsTable[] = "the table is dropped with its rows";
constexpr char kDropsColumn[] = "the column is dropped with its values";
constexpr char kDropsUnique[] = "equal rows may enter from then on";
constexpr char kNeeded[] = "foreign key %s needs it";
constexpr char kNoNull[] = "NULL is no longer allowed";
constexpr char kRenumbers[] = "rows with 0 are numbered anew";
constexpr char kComputes[] = "its values are replaced by computed ones";
constexpr char kUncomputes[] = "its computed values are not kept";
constexpr char kRange[] = "%s to %s: values may be out of range";
constexpr char kDigits[] = "%s to %s: digits may be lost";
constexpr char kFraction[] = "%s to %s: fractions of seconds are lost";
constexpr char kCuts[] = "%s to %s: longer values do not fit";
constexpr char kBlanks[] = "%s to %s: trailing blanks are lost";
constexpr char kZeros[] = "%s to %s: values are filled up with zero bytes";
constexpr char kMembers[] = "%s to %s: members are taken away or change their order";
constexpr char kFamily[] = "%s to %s: values may change";
constexpr char kReplaced[] = "%s to %s: values are not kept";
constexpr char kUnprinted[] = "a ? in its %s may stand for a letter that the server does not print";
constexpr char kLetters[] = "%s to %s: letters may be lost";

// --- What is known of types, a row each

struct TIntegerType {
  std::string_view type;
  long long bytes;
  long long digits;
  long long unsigned_digits;
};
constexpr std::array<TIntegerType, 5> kIntegers{
    {{"tinyint", 1, 3, 3}, {"smallint", 2, 5, 5}, {"mediumint", 3, 7, 8}, {"int", 4, 10, 10}, {"bigint", 8, 19, 20}}};

template <class Rows>
auto Find(const Rows& rows, std::string_view type) {
  const auto row = std::find_if(rows.begin(), rows.end(), [type](const auto& r) { return r.type == type; });
  return row == rows.end() ? nullptr : &*row;
}

bool HoldsAllLetters(std::string_view charset) {
  return InList(charset, {"utf8mb4", "utf16", "utf16le", "utf32", "gb18030"});
}
bool HoldsBasicPlane(std::string_view charset) { return InList(charset, {"utf8mb3", "utf8", "ucs2"}); }

// Whether letters keep their bytes, as those of ascii do nearly everywhere.
bool SameBytes(std::string_view from, std::string_view to) {
  if (from == to) return true;
  if (InList(from, {"utf8", "utf8mb3"})) return InList(to, {"utf8", "utf8mb3", "utf8mb4"});
  return from == "ascii" && LetterBytes(to).least == 1 && to != "swe7";
}

// --- A column's values

bool IsOneOf(const TColumnText& c, std::initializer_list<std::string_view> types) { return InList(c.type, types); }
bool IsInteger(const TColumnText& c) { return Find(kIntegers, c.type) != nullptr; }
bool IsFloating(const TColumnText& c) { return IsOneOf(c, {"float", "double"}); }
bool IsUnsigned(const TColumnText& c) { return c.is_unsigned || c.zerofill; }
bool IsText(const TColumnText& c) { return IsOneOf(c, {"char", "varchar"}) || SizedText(c.type) != nullptr; }
bool IsBytes(const TColumnText& c) { return IsOneOf(c, {"binary", "varbinary"}) || SizedBlob(c.type) != nullptr; }
bool IsMembers(const TColumnText& c) { return IsOneOf(c, {"enum", "set"}); }
bool IsTime(const TColumnText& c) { return IsOneOf(c, {"date", "datetime", "timestamp", "time"}); }

std::string TypeText(const TColumnText& c) {
  std::string text = c.type;
  if (!IsMembers(c) && !c.arguments.empty()) {
    for (std::size_t i = 0; i < c.arguments.size(); ++i) text += (i == 0 ? "(" : ",") + c.arguments[i];
    text += ")";
  }
  return IsUnsigned(c) ? text + " unsigned" : text;
}

long long LengthOr(const TColumnText& c, long long none) { return c.Length().value_or(none); }
// A fraction's digits: of decimal and floating numbers the second argument, of times the only one.
long long FractionOf(const TColumnText& c) { return c.Fraction().value_or(0); }
long long DecimalWhole(const TColumnText& c) { return LengthOr(c, 10) - FractionOf(c); }

long long IntegerDigits(const TColumnText& c) {
  const auto* row = Find(kIntegers, c.type);
  return IsUnsigned(c) ? row->unsigned_digits : row->digits;
}

// float(30) is a double; float(7,4) keeps seven digits, four of them after the point.
bool IsDouble(const TColumnText& c) {
  return c.type == "double" || (c.type == "float" && c.arguments.size() == 1 && LengthOr(c, 0) > 24);
}
bool HasFixedDigits(const TColumnText& c) { return c.arguments.size() == 2; }

// The most letters that a value has as text; nothing where that loses or is not known.
std::optional<long long> LettersNeeded(const TColumnText& c) {
  constexpr long long kSign = 1;
  if (IsOneOf(c, {"char", "varchar"})) return LengthOr(c, 1);
  if (const auto* text = SizedText(c.type)) return text->bytes / LetterBytes(c.charset.charset).least;
  if (IsInteger(c)) {
    const long long digits = IntegerDigits(c) + (IsUnsigned(c) ? 0 : kSign);
    return c.zerofill ? std::max(digits, LengthOr(c, 0)) : digits;
  }
  if (c.type == "decimal") return LengthOr(c, 10) + kSign + (FractionOf(c) > 0 ? 2 : 0);
  if (c.type == "year") return 4;
  if (c.type == "date") return 10;
  const long long fraction = FractionOf(c) > 0 ? FractionOf(c) + 1 : 0;
  if (c.type == "time") return 10 + fraction;
  if (IsOneOf(c, {"datetime", "timestamp"})) return 19 + fraction;
  if (!IsMembers(c)) return std::nullopt;
  long long longest = 0;
  long long all = 0;
  for (const auto& member : c.arguments) {
    const auto letters = static_cast<long long>(CharCount(member));
    longest = std::max(longest, letters);
    all += letters + 1;
  }
  return c.type == "enum" ? longest : all;
}

bool LettersFit(const TColumnText& from, const TColumnText& to) {
  const auto needed = LettersNeeded(from);
  if (!needed) return false;
  const auto* room = SizedText(to.type);
  if (room == nullptr) return *needed <= LengthOr(to, 1);
  const auto* taken = SizedText(from.type);
  if (taken != nullptr && SameBytes(from.charset.charset, to.charset.charset)) return taken->bytes <= room->bytes;
  return *needed * LetterBytes(to.charset.charset).most <= room->bytes;
}

long long BytesRoom(const TColumnText& c) {
  const auto* blob = SizedBlob(c.type);
  return blob != nullptr ? blob->bytes : LengthOr(c, 1);
}

// --- Rules per family of types: a message, or null where every value is kept

const char* IntegerToInteger(const TColumnText& from, const TColumnText& to) {
  const long long had = Find(kIntegers, from.type)->bytes;
  const long long has = Find(kIntegers, to.type)->bytes;
  if (IsUnsigned(from) == IsUnsigned(to)) return had <= has ? nullptr : kRange;
  return IsUnsigned(from) && had < has ? nullptr : kRange;
}

// Of a float servers show six digits.
const char* ToFloating(const TColumnText& from, const TColumnText& to) {
  if (IsUnsigned(to) && !IsUnsigned(from)) return kRange;
  if (IsInteger(from)) {
    const long long exact_bytes = IsDouble(to) ? 4 : 2;
    if (Find(kIntegers, from.type)->bytes > exact_bytes) return kDigits;
    return !HasFixedDigits(to) || IntegerDigits(from) <= DecimalWhole(to) ? nullptr : kRange;
  }
  if (IsDouble(from) && !IsDouble(to)) return kDigits;
  if (!HasFixedDigits(to)) return nullptr;
  if (!HasFixedDigits(from) || FractionOf(to) < FractionOf(from)) return kDigits;
  return DecimalWhole(to) < DecimalWhole(from) ? kRange : nullptr;
}

const char* ToDecimal(const TColumnText& from, const TColumnText& to) {
  if (IsUnsigned(to) && !IsUnsigned(from)) return kRange;
  const long long whole = IsInteger(from) ? IntegerDigits(from) : DecimalWhole(from);
  if (whole > DecimalWhole(to)) return kRange;
  return !IsInteger(from) && FractionOf(from) > FractionOf(to) ? kDigits : nullptr;
}

const char* DecimalToInteger(const TColumnText& from, const TColumnText& to) {
  if (FractionOf(from) > 0) return kDigits;
  if (IsUnsigned(to) && !IsUnsigned(from)) return kRange;
  return DecimalWhole(from) < IntegerDigits(to) ? nullptr : kRange;  // not all numbers of as many digits are in range
}

const char* TimeToTime(const TColumnText& from, const TColumnText& to) {
  const bool widens = from.type == to.type || (from.type == "date" && to.type == "datetime") ||
                      (from.type == "timestamp" && to.type == "datetime");
  if (!widens) return IsOneOf(to, {"timestamp"}) ? kRange : kFamily;
  return FractionOf(from) > FractionOf(to) ? kFraction : nullptr;
}

const char* ToText(const TColumnText& from, const TColumnText& to) {
  if (!LettersNeeded(from)) return kFamily;
  if (!LettersFit(from, to)) return kCuts;
  const bool keeps_blanks = from.type == "varchar" || SizedText(from.type) != nullptr;
  return keeps_blanks && to.type == "char" ? kBlanks : nullptr;
}

const char* BytesToBytes(const TColumnText& from, const TColumnText& to) {
  if (BytesRoom(from) > BytesRoom(to)) return kCuts;
  if (to.type != "binary") return nullptr;
  return from.type == "binary" && BytesRoom(from) == BytesRoom(to) ? nullptr : kZeros;
}

const char* MembersToMembers(const TColumnText& from, const TColumnText& to) {
  auto member = to.arguments.begin();
  for (const auto& wanted : from.arguments) {
    member = std::find(member, to.arguments.end(), wanted);
    if (member == to.arguments.end()) return kMembers;
    ++member;
  }
  return nullptr;
}

const char* UnsafeType(const TColumnText& from, const TColumnText& to) {
  if (!Converts(from, to)) return kReplaced;
  if (IsInteger(from) && IsInteger(to)) return IntegerToInteger(from, to);
  if ((IsInteger(from) || IsFloating(from)) && IsFloating(to)) return ToFloating(from, to);
  if ((IsInteger(from) || from.type == "decimal") && to.type == "decimal") return ToDecimal(from, to);
  if (from.type == "decimal" && IsInteger(to)) return DecimalToInteger(from, to);
  if (from.type == "bit" && to.type == "bit") return LengthOr(from, 1) > LengthOr(to, 1) ? kCuts : nullptr;
  if (from.type == "year" && to.type == "year") return LengthOr(from, 4) > LengthOr(to, 4) ? kRange : nullptr;
  if (from.type == "year" && IsInteger(to)) return to.type == "tinyint" ? kRange : nullptr;
  if (IsTime(from) && IsTime(to)) return TimeToTime(from, to);
  if (IsMembers(from) && from.type == to.type) return MembersToMembers(from, to);
  if (IsText(to)) return ToText(from, to);
  if (IsBytes(from) && IsBytes(to)) return BytesToBytes(from, to);
  if (from.type == to.type && from.arguments == to.arguments) return nullptr;
  if (from.type == "json" || from.type == "vector" || to.type != "geometry") return kFamily;
  return IsShapeType(from.type) ? nullptr : kFamily;
}

bool LettersMayBeLost(std::string_view from, std::string_view to) {
  if (from == to || from.empty() || to.empty()) return false;
  if (from == "binary" || to == "binary") return true;
  if (HoldsAllLetters(to)) return false;
  if (HoldsBasicPlane(to)) return HoldsAllLetters(from);
  return !SameBytes(from, to);
}

std::string UnsafeValues(const TColumnText& from, const TColumnText& to) {
  std::string reasons;
  if (const char* reason = UnsafeType(from, to)) AddReason(reasons, Format(reason, TypeText(from), TypeText(to)));
  if (from.HasLetters() && to.HasLetters() && LettersMayBeLost(from.charset.charset, to.charset.charset))
    AddReason(reasons, Format(kLetters, from.charset.charset, to.charset.charset));
  return reasons;
}

// --- Keys and options

// Whether rows that differ by `strict` must differ by `loose` too: each of its parts is one of the other's, as long or
// shorter. What is not a plain column counts by its text.
bool Implies(const TElement& strict, const TElement& loose) {
  const std::vector<TKeyPart>& had = loose.text.KeyParts();
  const std::vector<TKeyPart>& has = strict.text.KeyParts();
  return std::all_of(has.begin(), has.end(), [&had](const TKeyPart& part) {
    return std::any_of(had.begin(), had.end(), [&part](const TKeyPart& old) {
      if (part.column.empty() || old.column.empty()) return part.text == old.text;
      const bool as_long = old.length == 0 || (part.length != 0 && part.length <= old.length);
      return SameText(part.column, old.column) && as_long;
    });
  });
}

bool IsUnique(EElement kind) { return kind == EElement::PrimaryKey || kind == EElement::UniqueKey; }

const TElement* FindKey(const TTableText& table, std::string_view name) {
  const auto key = std::find_if(table.elements.begin(), table.elements.end(), [name](const TElement& element) {
    return IsKey(element.kind) && SameText(element.name, name);
  });
  return key == table.elements.end() ? nullptr : &*key;
}

bool BeginsWith(const TElement& key, const std::vector<std::string>& columns) {
  if (!IsKey(key.kind)) return false;
  const std::vector<TKeyPart>& parts = key.text.KeyParts();
  return parts.size() >= columns.size() &&
         std::equal(columns.begin(), columns.end(), parts.begin(),
                    [](const std::string& name, const TKeyPart& part) { return SameText(name, part.column); });
}

// A foreign key that stays and by no other key of either table is served as by this one; null for none.
const TElement* NeedyForeignKey(const TElement& key, const TTableText& target, const TTableText& reference) {
  const auto has_other = [&key](const TTableText& table, const std::vector<std::string>& columns) {
    return std::any_of(table.elements.begin(), table.elements.end(), [&](const TElement& other) {
      return !SameText(other.name, key.name) && BeginsWith(other, columns);
    });
  };
  for (const TElement& foreign : target.elements) {
    if (foreign.kind != EElement::ForeignKey || reference.Find(EElement::ForeignKey, foreign.name) == nullptr) continue;
    const std::vector<std::string>& columns = foreign.text.ForeignKey().columns;
    if (BeginsWith(key, columns) && !has_other(target, columns) && !has_other(reference, columns)) return &foreign;
  }
  return nullptr;
}

std::string UnsafeKeyChange(const TChange& change, const TTableText& target, const TTableText& reference) {
  const TElement* from = FindKey(target, change.item);
  if (from == nullptr) return {};
  const TElement* to = change.action == saModifyKey ? FindKey(reference, change.item) : nullptr;
  if (to == nullptr)
    if (const TElement* foreign = NeedyForeignKey(*from, target, reference)) return Format(kNeeded, foreign->name);
  if (!IsUnique(from->kind)) return {};
  return to != nullptr && IsUnique(to->kind) && Implies(*to, *from) ? std::string() : kDropsUnique;
}

struct TForgetfulEngine {
  std::string_view engine;
  std::string_view reason;
};
constexpr std::array<TForgetfulEngine, 3> kForgetfulEngines{
    {{"BLACKHOLE", "the engine keeps no rows"},
     {"MEMORY", "the engine keeps its rows until the server ends"},
     {"HEAP", "the engine keeps its rows until the server ends"}}};

std::string UnsafeOptions(const TChange& change) {
  for (const auto& option : change.options) {
    if (option.name != "ENGINE") continue;
    for (const auto& row : kForgetfulEngines)
      if (SameText(option.value, row.engine)) return std::string(row.reason);
  }
  return {};
}

}  // namespace

void AddReason(std::string& reasons, const std::string& reason) {
  if (!reason.empty()) reasons += (reasons.empty() ? "" : "; ") + reason;
}

std::string UnsafeColumnChange(const TColumnText& had, const TColumnText& has) {
  if (has.generated) return had.generated ? std::string() : kComputes;  // computed values are computed again
  if (had.generated && !had.stored) return kUncomputes;
  std::string reasons = UnsafeValues(had, has);
  if (has.not_null && !had.not_null) AddReason(reasons, kNoNull);
  if (has.auto_increment && !had.auto_increment) AddReason(reasons, kRenumbers);
  return reasons;
}

bool KeepsValues(const TColumnText& had, const TColumnText& has) {
  const bool computed = has.generated || (had.generated && !had.stored);
  return !computed && (!has.auto_increment || had.auto_increment) && UnsafeValues(had, has).empty();
}

namespace {

// Of letters of four bytes servers print "?" in defaults and members, which would be written.
std::string UnprintedLetters(const TColumnText& text) {
  const std::string& charset = text.charset.charset;
  if (!text.HasLetters() || !(charset.empty() || HoldsAllLetters(charset))) return {};
  const auto has = [](const std::string& value) { return value.find('?') != std::string::npos; };
  std::string reasons;
  if (IsMembers(text) && std::any_of(text.arguments.begin(), text.arguments.end(), has))
    AddReason(reasons, Format(kUnprinted, "members"));
  // Defaults of long texts are expressions, which are printed whole.
  const bool literal = text.default_text && text.default_text->starts_with('\'') && SizedText(text.type) == nullptr;
  if (literal && has(*text.default_text)) AddReason(reasons, Format(kUnprinted, "default"));
  return reasons;
}

std::string UnsafeNewTable(const TTableText& table) {
  std::string reasons;
  for (const TElement& element : table.elements) {
    if (element.kind != EElement::Column) continue;
    if (element.text.Str().find('?') == std::string::npos) continue;
    const std::string reason = UnprintedLetters(ReadColumnText(element.text, table));
    if (!reason.empty()) AddReason(reasons, "column " + element.name + ": " + reason);
  }
  return reasons;
}

std::string UnsafeModify(const TChange& change) {
  std::string reasons = change.moved_only ? "" : UnsafeColumnChange(*change.old_column, *change.new_column);
  AddReason(reasons, UnprintedLetters(*change.new_column));
  return reasons;
}

}  // namespace

std::string UnsafeChange(const TChange& change, const TTableText& target, const TTableText& reference) {
  switch (change.action) {
    case saDropTable:
      return kDropsTable;
    case saDropColumn:
      return kDropsColumn;
    case saCreateTable:
      return UnsafeNewTable(reference);
    case saAddColumn:
      return UnprintedLetters(*change.new_column);
    case saModifyColumn:
      return UnsafeModify(change);
    case saDropKey:
    case saModifyKey:
      return UnsafeKeyChange(change, target, reference);
    case saChangeTableType:
      return UnsafeOptions(change);
    default:
      return {};
  }
}

}  // namespace velmora
