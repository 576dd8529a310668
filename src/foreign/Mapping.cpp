// SPDX-License-Identifier: GPL-3.0-or-later
#include "foreign/Mapping.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "mysqltext/ColumnParts.h"
#include "mysqltext/Element.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr int kMostDigits = 65;
constexpr int kMostDecimals = 30;
constexpr int kLetterBytes = 4;  // of utf8mb4
constexpr std::int64_t kLongestChar = 255;
constexpr std::int64_t kLongestVarchar = 16383;
constexpr std::int64_t kLongestVarbinary = 65532;
constexpr int kFinestFraction = 6;

// --- What a target's type can hold

struct TWholeType {
  std::string_view type;
  int bits;
  int digits;  // of which it holds every number, signed
};
constexpr std::array<TWholeType, 5> kWholeTypes = {
    {{"tinyint", 8, 2}, {"smallint", 16, 4}, {"mediumint", 24, 6}, {"int", 32, 9}, {"bigint", 64, 18}}};

const TWholeType* WholeType(std::string_view type) {
  const auto* found = std::ranges::find(kWholeTypes, type, &TWholeType::type);
  return found == kWholeTypes.end() ? nullptr : found;
}

bool IsDecimal(const TColumnText& there) { return there.type == "decimal" && !there.is_unsigned; }

// A decimal with as many digits on either side of the point.
bool HoldsDigits(const TColumnText& there, int whole, int decimals) {
  if (!IsDecimal(there)) return false;
  constexpr long long kUsualDigits = 10;
  const long long digits = there.Length().value_or(kUsualDigits);
  const long long behind = there.Fraction().value_or(0);
  return behind >= decimals && digits - behind >= whole;
}

// A signed integer that holds all numbers of as many digits.
bool HoldsWhole(const TColumnText& there, int digits) {
  const TWholeType* type = WholeType(there.type);
  return type != nullptr && !there.is_unsigned && type->digits >= digits;
}

bool HoldsLetters(const TColumnText& there, std::int64_t length, bool fixed) {
  if (there.type == "varchar" || (fixed && there.type == "char"))
    return there.Length().value_or(there.type == "char" ? 1 : 0) >= length;
  const TSizedType* sized = SizedText(there.type);
  return sized != nullptr && sized->bytes / kLetterBytes >= length;
}

bool HoldsBytes(const TColumnText& there, std::int64_t length) {
  if (there.type == "varbinary") return there.Length().value_or(0) >= length;
  const TSizedType* sized = SizedBlob(there.type);
  return sized != nullptr && sized->bytes >= length;
}

bool HoldsMoments(const TColumnText& there, int fraction, const TMapContext& context) {
  const bool fits = there.type == "datetime" || (there.type == "timestamp" && context.wishes.accept_timestamp);
  return fits && there.Fraction().value_or(0) >= fraction;
}

bool IsDouble(const TColumnText& there) { return there.type == "double" && there.arguments.empty(); }

// --- Numbers of columns

// precision and scale as they are meant: NUMBER(5,-2) has seven digits, NUMBER(2,4) four behind the point.
struct TDigits {
  int digits = 0;
  int decimals = 0;
  int Whole() const { return digits - decimals; }
  bool Fit() const { return digits >= 1 && digits <= kMostDigits && decimals <= kMostDecimals; }
};

TDigits DigitsOf(const TForeignColumn& column) {
  const int precision = column.precision.value_or(0);
  const int scale = column.scale.value_or(0);
  if (scale < 0) return {precision - scale, 0};
  return {std::max(precision, scale), scale};
}

int FractionOf(const TForeignColumn& column, const TMapContext& context) {
  if (!context.server.HasFractions()) return 0;
  return std::clamp(column.fraction.value_or(0), 0, kFinestFraction);
}

std::string WithFraction(const char* type, int fraction) {
  return fraction == 0 ? type : Format("%s(%d)", type, fraction);
}

// --- Types that are made

using TMakeType = TMappedType (*)(const TForeignColumn& column, const TMapContext& context);
using THolds = bool (*)(const TForeignColumn& column, const TColumnText& there, const TMapContext& context);

TMappedType Plain(std::string type) { return {std::move(type)}; }
TMappedType Warned(std::string type, std::string text) {
  return {std::move(type), EMadeLevel::Warning, std::move(text)};
}

constexpr char kTooManyDigits[] =
    "%d digits, %d of them behind the point, are more than MySQL keeps: a double is not exact";
constexpr char kFractionCut[] = "fractions of seconds: %d digits become %d";
constexpr char kOffsetLost[] = "the offset from UTC is lost: keep the moments as UTC";

// The integer that holds all whole numbers of as many digits; null where none does. What users say of whole numbers is
// one of the usual four.
const char* IntegerFor(int digits) {
  constexpr std::array kUsual = {"tinyint", "smallint", "int", "bigint"};
  for (const char* type : kUsual)
    if (WholeType(type)->digits >= digits) return type;
  return nullptr;
}

TMappedType MakeDecimal(const TForeignColumn& column, const TMapContext& context) {
  const TDigits digits = DigitsOf(column);
  const bool whole = context.wishes.whole_numbers && digits.decimals == 0;
  if (const char* integer = whole ? IntegerFor(digits.digits) : nullptr) return Plain(integer);
  if (!digits.Fit()) return Warned("double", Format(kTooManyDigits, digits.digits, digits.decimals));
  return Plain(Format("decimal(%d,%d)", digits.digits, digits.decimals));
}

bool HoldsDecimal(const TForeignColumn& column, const TColumnText& there, const TMapContext& /*context*/) {
  const TDigits digits = DigitsOf(column);
  if (!digits.Fit()) return IsDouble(there);
  return HoldsDigits(there, digits.Whole(), digits.decimals) ||
         (digits.decimals == 0 && HoldsWhole(there, digits.digits));
}

// The sign and the point may take places of the field.
bool HoldsField(const TForeignColumn& column, const TColumnText& there, const TMapContext& context) {
  const TDigits digits = DigitsOf(column);
  if (there.type == "double" || HoldsDecimal(column, there, context)) return true;
  return digits.decimals > 0 && HoldsDigits(there, std::max(digits.Whole() - 1, 0), digits.decimals);
}

TMappedType MakeLetters(const TForeignColumn& column, const TMapContext& /*context*/) {
  const std::int64_t length = std::max<std::int64_t>(column.length.value_or(kLongestVarchar + 1), 1);
  if (column.family == EFamily::Char && length <= kLongestChar) return Plain(Format("char(%d)", length));
  return length <= kLongestVarchar ? Plain(Format("varchar(%d)", length)) : MapOutOfRow(column);
}

bool HoldsText(const TForeignColumn& column, const TColumnText& there, const TMapContext& /*context*/) {
  const bool fixed = column.family == EFamily::Char && column.length.value_or(1) <= kLongestChar;
  if (!column.length) return there.type == "longtext";
  return HoldsLetters(there, std::max<std::int64_t>(*column.length, 1), fixed);
}

TMappedType MakeBytes(const TForeignColumn& column, const TMapContext& /*context*/) {
  const std::int64_t length = std::max<std::int64_t>(column.length.value_or(kLongestVarbinary + 1), 1);
  const bool fixed = column.family == EFamily::Binary;
  if (fixed && length <= kLongestChar) return Plain(Format("binary(%d)", length));
  if (length > kLongestVarbinary) return MapOutOfRow(column);
  const std::string type = Format("varbinary(%d)", length);
  return fixed ? Warned(type, "a fixed length over 255 bytes is not kept: values are not padded") : Plain(type);
}

bool HoldsRaw(const TForeignColumn& column, const TColumnText& there, const TMapContext& /*context*/) {
  if (!column.length) return there.type == "longblob";
  return HoldsBytes(there, *column.length);
}

bool HoldsGuid(const TForeignColumn& /*column*/, const TColumnText& there, const TMapContext& context) {
  constexpr int kLetters = 36;
  constexpr int kBytes = 16;
  if (there.type == "char" || there.type == "varchar") return there.Length().value_or(1) >= kLetters;
  return (there.type == "binary" && there.Length() == kBytes) || (there.type == "uuid" && context.server.HasUuid());
}

TMappedType MakeMoment(const TForeignColumn& column, const TMapContext& context) {
  const int wanted = column.fraction.value_or(0);
  const int fraction = FractionOf(column, context);
  TMappedType mapped = Plain(WithFraction(column.family == EFamily::Time ? "time" : "datetime", fraction));
  if (fraction < wanted) {
    mapped.level = EMadeLevel::Warning;
    mapped.text = Format(kFractionCut, wanted, fraction);
  }
  if (column.family == EFamily::DateTimeZone) {
    mapped.level = EMadeLevel::Warning;
    mapped.text = kOffsetLost + (mapped.text.empty() ? "" : "; " + mapped.text);
  }
  return mapped;
}

bool HoldsMoment(const TForeignColumn& column, const TColumnText& there, const TMapContext& context) {
  return HoldsMoments(there, FractionOf(column, context), context);
}

// Numbers of `bits`, with or without a sign.
template <int kBits, bool kUnsigned, int kDigits>
bool HoldsInteger(const TForeignColumn& /*column*/, const TColumnText& there, const TMapContext& /*context*/) {
  const TWholeType* type = WholeType(there.type);
  if (type == nullptr) return HoldsDigits(there, kDigits, 0);
  if (there.is_unsigned) return kUnsigned && type->bits >= kBits;
  return kUnsigned ? type->bits > kBits : type->bits >= kBits;
}

struct TMappingRow {
  EFamily family;
  const char* type;  // MySQL's; null where `make` has it
  TMakeType make;
  THolds holds;      // beside the type itself
  EMadeLevel level;  // of what is said of each such column
  const char* text;  // null for nothing
};

constexpr EMadeLevel kInfo = EMadeLevel::Info;
constexpr EMadeLevel kWarning = EMadeLevel::Warning;

// One row per family.
constexpr TMappingRow kMapping[] = {
    {EFamily::Int8, "tinyint", nullptr, HoldsInteger<8, false, 3>, kInfo, nullptr},
    {EFamily::UInt8, "tinyint unsigned", nullptr, HoldsInteger<8, true, 3>, kInfo, nullptr},
    {EFamily::Int16, "smallint", nullptr, HoldsInteger<16, false, 5>, kInfo, nullptr},
    {EFamily::UInt16, "smallint unsigned", nullptr, HoldsInteger<16, true, 5>, kInfo, nullptr},
    {EFamily::Int32, "int", nullptr, HoldsInteger<32, false, 10>, kInfo, nullptr},
    {EFamily::UInt32, "int unsigned", nullptr, HoldsInteger<32, true, 10>, kInfo, nullptr},
    {EFamily::Int64, "bigint", nullptr, HoldsInteger<64, false, 19>, kInfo, nullptr},
    {EFamily::UInt64, "bigint unsigned", nullptr, HoldsInteger<64, true, 20>, kInfo, nullptr},
    {EFamily::Int128, "decimal(39,0)", nullptr, [](auto&, auto& there, auto&) { return HoldsDigits(there, 39, 0); },
     kInfo, nullptr},
    {EFamily::Decimal, nullptr, MakeDecimal, HoldsDecimal, kInfo, nullptr},
    {EFamily::Number, "decimal(65,30)", nullptr, [](auto&, auto& there, auto&) { return there.IsNumber(); }, kWarning,
     "the source states no precision: 35 digits before the point and 30 behind it are kept"},
    {EFamily::DecFloat, "decimal(65,30)", nullptr, [](auto&, auto& there, auto&) { return IsDouble(there); }, kWarning,
     "decimal floating point: 35 digits before the point and 30 behind it are kept"},
    {EFamily::FieldWidth, nullptr, MakeDecimal, HoldsField, kInfo, nullptr},
    {EFamily::Double, "double", nullptr, [](auto&, auto& there, auto&) { return HoldsDigits(there, 35, 30); }, kInfo,
     nullptr},
    {EFamily::Single, "float", nullptr, [](auto&, auto& there, auto&) { return IsDouble(there); }, kInfo, nullptr},
    {EFamily::Money, "decimal(19,4)", nullptr, [](auto&, auto& there, auto&) { return HoldsDigits(there, 15, 4); },
     kInfo, nullptr},
    {EFamily::SmallMoney, "decimal(10,4)", nullptr, [](auto&, auto& there, auto&) { return HoldsDigits(there, 6, 4); },
     kInfo, nullptr},
    {EFamily::FloatMoney, "double", nullptr, [](auto&, auto& there, auto&) { return HoldsDigits(there, 13, 2); }, kInfo,
     "money that the source keeps as a double"},
    {EFamily::Boolean, "tinyint(1)", nullptr,
     [](auto&, auto& there, auto&) {
       return there.type == "tinyint" || (there.type == "bit" && there.Length().value_or(1) == 1);
     },
     kInfo, nullptr},
    {EFamily::Char, nullptr, MakeLetters, HoldsText, kInfo, nullptr},
    {EFamily::VarChar, nullptr, MakeLetters, HoldsText, kInfo, nullptr},
    {EFamily::LongText, "longtext", nullptr, nullptr, kInfo, nullptr},
    {EFamily::Guid, "char(36)", nullptr, HoldsGuid, kInfo, nullptr},
    {EFamily::Variant, "longtext", nullptr, [](auto&, auto& there, auto&) { return there.HasLetters(); }, kWarning,
     "MySQL has no such type: values are kept as texts"},
    {EFamily::RowId, "varchar(18)", nullptr, [](auto&, auto& there, auto&) { return there.HasLetters(); }, kWarning,
     "row addresses of the source mean nothing in MySQL"},
    {EFamily::Interval, "varchar(30)", nullptr, [](auto&, auto& there, auto&) { return there.HasLetters(); }, kWarning,
     "MySQL has no intervals: values are kept as texts"},
    {EFamily::Binary, nullptr, MakeBytes, HoldsRaw, kInfo, nullptr},
    {EFamily::VarBinary, nullptr, MakeBytes, HoldsRaw, kInfo, nullptr},
    {EFamily::LongBinary, "longblob", nullptr, nullptr, kInfo, nullptr},
    {EFamily::RowVersion, "binary(8)", nullptr,
     [](auto&, auto& there, auto&) {
       return (there.type == "varbinary" && there.Length().value_or(0) >= 8) ||
              (there.type == "bigint" && there.is_unsigned);
     },
     kWarning, "the source counts it up by itself, MySQL does not"},
    {EFamily::Shape, "geometry", nullptr, [](auto&, auto& there, auto&) { return IsShapeType(there.type); }, kWarning,
     "MySQL may take the axes in another order, and the reference system is not carried over"},
    {EFamily::Date, "date", nullptr, [](auto&, auto& there, auto&) { return there.type == "datetime"; }, kInfo,
     nullptr},
    {EFamily::Time, nullptr, MakeMoment,
     [](auto& column, auto& there, auto& context) {
       return there.type == "time" && there.Fraction().value_or(0) >= FractionOf(column, context);
     },
     kInfo, nullptr},
    {EFamily::DateTime, nullptr, MakeMoment, HoldsMoment, kInfo, nullptr},
    {EFamily::DateTimeZone, nullptr, MakeMoment, HoldsMoment, kInfo, nullptr},
};

const TMappingRow* RowOf(EFamily family) {
  const auto* found = std::ranges::find(kMapping, family, &TMappingRow::family);
  return found == std::end(kMapping) ? nullptr : found;
}

// --- Columns that count

constexpr char kCannotCount[] = "%s cannot count in MySQL: %s takes its place";

constexpr char kCountsFar[] = "%s cannot count in MySQL: %s takes its place, and ends at 9223372036854775807";
constexpr int kBigintDigits = 18;

// Whether the source's column may hold more than what takes its place.
bool CountsFar(const TForeignColumn& column) {
  return column.family == EFamily::Number || column.family == EFamily::Int128 ||
         DigitsOf(column).digits > kBigintDigits;
}

// The integer in which numbers of this column can be counted; empty where it is one by itself, or none will do. Whole
// numbers without a bound are what some sources' identities usually are.
const char* CountingType(const TForeignColumn& column) {
  constexpr int kIntDigits = 9;
  if (column.family == EFamily::Number || column.family == EFamily::Int128) return "bigint";
  if (column.family != EFamily::Decimal && column.family != EFamily::FieldWidth) return "";
  const TDigits digits = DigitsOf(column);
  if (digits.decimals > 0) return "";
  return digits.digits <= kIntDigits ? "int" : "bigint";
}

// Without the width in which whole numbers are shown, and with what a type has where nothing is said.
std::vector<std::string> PlainArguments(const TColumnText& column) {
  if (WholeType(column.type) != nullptr || column.type == "year") return {};
  std::vector<std::string> arguments = column.arguments;
  if (column.type == "decimal" && arguments.empty()) arguments = {"10"};
  if (column.type == "decimal" && arguments.size() == 1) arguments.emplace_back("0");
  if (arguments.empty() && InList(column.type, {"char", "binary", "bit"})) arguments = {"1"};
  if (IsTimeType(column.type) && arguments.size() == 1 && arguments[0] == "0") arguments.clear();
  return arguments;
}

}  // namespace

std::string NativeText(const TForeignColumn& column) {
  if (column.native.find('(') != std::string::npos) return column.native;
  const auto sized = [&](auto size) { return column.native + "(" + std::to_string(size) + ")"; };
  if (column.precision && column.scale.value_or(0) != 0)
    return Format("%s(%d,%d)", column.native, *column.precision, *column.scale);
  if (column.precision) return sized(*column.precision);
  if (column.length) return sized(*column.length);
  if (column.fraction) return sized(*column.fraction);
  return column.native;
}

TStringList RuleNames(const TForeignColumn& column, const TStringList& places) {
  TStringList names;
  for (const std::string& place : places)
    if (std::ranges::find(names, place) == names.end()) names.push_back(place);
  names.push_back(NativeText(column));
  if (column.native != names.back()) names.push_back(column.native);
  return names;
}

TMappedType MapType(const TForeignColumn& column, const TStringList& names, const TMapContext& context) {
  if (const TMapRule* rule = FindMapRule(context.wishes.rules, names)) return {.type = rule->type, .rule = rule->what};
  const TMappingRow* row = RowOf(column.family);
  if (row == nullptr || !column.problem.empty()) {
    const std::string reason = column.problem.empty() ? "has no form in MySQL" : column.problem;
    return {.level = EMadeLevel::Refused, .text = reason};
  }
  if (column.counting == ECounting::Counts)
    if (const std::string type = CountingType(column); !type.empty())
      return CountsFar(column) ? Warned(type, Format(kCountsFar, NativeText(column), type))
                               : TMappedType{.type = type, .text = Format(kCannotCount, NativeText(column), type)};
  if (row->make != nullptr) return row->make(column, context);
  return {.type = row->type, .level = row->level, .text = row->text == nullptr ? "" : row->text};
}

TMappedType MapOutOfRow(const TForeignColumn& column) {
  const bool bytes = column.family == EFamily::Binary || column.family == EFamily::VarBinary;
  const long long size = column.length.value_or(kSizedTypes.back().bytes) * (bytes ? 1 : kLetterBytes);
  for (const TSizedType& row : kSizedTypes)
    if ((size <= row.bytes || &row == &kSizedTypes.back()) && row.bytes > kSizedTypes.front().bytes)
      return {.type = std::string(bytes ? row.blob : row.text)};
  return {};
}

TColumnText ReadType(const std::string& type) { return ReadColumnText(TElementText("`c` " + type), TCharset()); }

const TColumnText& TTypeReader::operator()(const std::string& type) {
  auto found = read_.find(type);
  if (found == read_.end()) found = read_.emplace(type, ReadType(type)).first;
  return found->second;
}

bool SameType(const TColumnText& a, const TColumnText& b) {
  if (a.type != b.type || a.is_unsigned != b.is_unsigned) return false;
  return a.arguments == b.arguments || PlainArguments(a) == PlainArguments(b);
}

bool HoldsAll(const TForeignColumn& column, const TColumnText& there, const TMapContext& context) {
  if (column.counting == ECounting::Counts)
    if (const std::string type = CountingType(column); !type.empty()) return HoldsWhole(there, WholeType(type)->digits);
  const TMappingRow* row = RowOf(column.family);
  return row != nullptr && row->holds != nullptr && row->holds(column, there, context);
}

}  // namespace velmora
