// SPDX-License-Identifier: GPL-3.0-or-later
#include "converge/SchemaTypes.h"

#include <array>

#include "util/Format.h"

namespace velmora::testing {

namespace {

using TTexts = std::vector<std::string>;

struct TWhole {
  const char* name;
  const char* least;
  const char* most;
  const char* most_unsigned;
};
constexpr std::array<TWhole, 5> kWholes{
    {{"tinyint", "-128", "127", "255"},
     {"smallint", "-32768", "32767", "65535"},
     {"mediumint", "-8388608", "8388607", "16777215"},
     {"int", "-2147483648", "2147483647", "4294967295"},
     {"bigint", "-9223372036854775808", "9223372036854775807", "18446744073709551615"}}};

TTypeModel Whole(TRandom& r) {
  const TWhole& row = r.Pick(kWholes);
  const bool zerofill = r.Chance(10);
  const bool is_unsigned = zerofill || r.Chance(35);
  TTypeModel type{EFamily::Whole, row.name, "", 0, false, {}, {"0", "7", "'42'", "(1 + 2)", "(length('a;`b') * 3)"}};
  if (r.Chance(40)) type.text += Format("(%d)", 1 + r.Below(20));
  if (zerofill)
    type.text += " zerofill";
  else if (is_unsigned)
    type.text += " unsigned";
  else
    type.defaults.insert(type.defaults.end(), {"-1", "-100"});
  type.samples = {is_unsigned ? "0" : row.least, is_unsigned ? row.most_unsigned : row.most};
  return type;
}

TTypeModel Decimal(TRandom& r) {
  const std::size_t fraction = r.Below(6);
  const std::size_t digits = fraction + 3 + r.Below(20);
  std::string most = std::string(digits - fraction, '9') + (fraction > 0 ? "." + std::string(fraction, '9') : "");
  const bool is_unsigned = r.Chance(25);
  const std::string least = is_unsigned ? "0" : "-" + most;
  TTypeModel type{EFamily::Number,          Format("decimal(%d,%d)", digits, fraction), "", 0, false,
                  {least, std::move(most)}, {"0", "4.99", "'1.50'", "(3 / 2)"}};
  if (is_unsigned) type.text += r.Chance(20) ? " unsigned zerofill" : " unsigned";
  if (!is_unsigned) type.defaults.push_back("-1.5");
  return type;
}

TTypeModel Floating(TRandom& r) {
  static const TTexts kTexts = {
      "float",    "double", "float(7,4)", "double(16,4)", "float unsigned", "double(9,2) unsigned", "double precision",
      "float(30)"};
  return {EFamily::Number, r.Pick(kTexts), "", 0, false, {"0.5", "512.25"}, {"0", "1.5", "'2.25'", "1e2", "(pi())"}};
}

TTypeModel Bit(TRandom& r) {
  const std::size_t length = 1 + r.Below(64);
  return {EFamily::Bit, Format("bit(%d)", length), "", 0, false, {"b'0'", "b'" + std::string(length, '1') + "'"},
          {"b'1'", "0"}};
}

const TTexts& LetterDefaults() {
  static const TTexts kDefaults = {
      "''",     "'x'",     "'it''s'", "'a,b'", "'\\\\'", "')('", "'\"`;--'", "' y'", "(concat('a', ''';'))",
      "'null'", "(uuid())"};
  return kDefaults;
}

TTypeModel WithLetters(TTypeModel type, TRandom& r) {
  type.charset = AnyCharset(r);
  type.samples = {"''", Format("repeat('w', %d)", type.length)};
  type.defaults = LetterDefaults();
  if (type.length < 40) type.defaults = {"''", "'x'", "','", "(char(65))", "''''", "'\\\\'"};
  // Defaults of long columns are expressions, kept in the character set of the table.
  const bool unicode = type.charset.find("utf8mb4") != std::string::npos && type.family == EFamily::Letters;
  if (unicode) type.defaults.insert(type.defaults.end(), {"'é'", "'Ж'", "'😀'"});
  return type;
}

TTypeModel Letters(TRandom& r) {
  static constexpr std::size_t kLengths[] = {1, 8, 20, 40, 60, 255, 300, 600};
  const bool fixed = r.Chance(25);
  const std::size_t length = fixed ? kLengths[r.Below(4)] : r.Pick(kLengths);
  TTypeModel type{EFamily::Letters, Format(fixed ? "char(%d)" : "varchar(%d)", length), "", length, false, {}, {}};
  type.compressed = !fixed && length > 40 && r.Chance(5);
  type = WithLetters(std::move(type), r);
  if (type.compressed) type.text += " compressed";
  return type;
}

TTypeModel LongLetters(TRandom& r) {
  static const TTexts kTexts = {"tinytext", "text", "mediumtext", "longtext"};
  constexpr std::size_t kSample = 60;  // fits a tinytext in every character set
  TTypeModel type = WithLetters({EFamily::LongLetters, r.Pick(kTexts), "", kSample, false, {}, {}}, r);
  type.compressed = r.Chance(8);
  if (type.compressed) type.text += " compressed";
  return type;
}

TTypeModel Bytes(TRandom& r) {
  static constexpr std::size_t kLengths[] = {1, 16, 40, 255, 600};
  const bool fixed = r.Chance(35);
  const std::size_t length = fixed ? kLengths[r.Below(3)] : r.Pick(kLengths);
  return {EFamily::Bytes,
          Format(fixed ? "binary(%d)" : "varbinary(%d)", length),
          "",
          length,
          false,
          {"''", Format("repeat(x'ff', %d)", length)},
          {"''", "'x'", "x'41'", "(unhex('42'))", "x'ff'"}};
}

TTypeModel LongBytes(TRandom& r) {
  static const TTexts kTexts = {"tinyblob", "blob", "mediumblob", "longblob"};
  TTypeModel type{EFamily::LongBytes, r.Pick(kTexts), "", 60, false, {"''", "repeat(x'fe', 60)"}, {"''", "'b'"}};
  type.compressed = r.Chance(10);
  if (type.compressed) type.text += " compressed";
  return type;
}

TTypeModel Members(TRandom& r) {
  static const TTexts kMembers = {"'x'",   "'it''s'", "'a b'",   "'semi;'", "'(p)'",
                                  "'`t`'", "'\"q\"'", "'\\\\s'", "'😀'",     "'z'"};
  const std::size_t first = r.Below(4);
  const std::size_t last = first + 2 + r.Below(kMembers.size() - first - 2);
  std::string list = kMembers[first];
  for (std::size_t i = first + 1; i < last; ++i) list += "," + kMembers[i];
  return {EFamily::Members,
          (r.Chance(70) ? "enum(" : "set(") + list + ")",
          AnyCharset(r),
          0,
          false,
          {kMembers[first], kMembers[last - 1]},
          {kMembers[first], kMembers[first + 1]}};
}

TTypeModel Time(TRandom& r) {
  const std::size_t digits = r.Chance(50) ? 0 : 1 + r.Below(6);
  const std::string width = digits == 0 ? "" : Format("(%d)", digits);
  const std::string fraction = digits == 0 ? "" : "." + std::string(digits, '9');
  const std::string now = "current_timestamp" + width;
  switch (r.Below(5)) {
    case 0:
      return {EFamily::Time,
              "date",
              "",
              0,
              false,
              {"'1000-01-01'", "'9999-12-31'"},
              {"'2005-01-01'", "'0000-00-00'", "(curdate())"}};
    case 1:
      return {EFamily::Time,
              "time" + width,
              "",
              0,
              false,
              {"'-838:59:59'", "'838:59:58" + fraction + "'"},
              {"'00:00:00'", "'-12:30:00'", "(curtime())"}};
    case 2:
      return {EFamily::Time, "year", "", 0, false, {"'1901'", "'2155'"}, {"1999", "'2010'", "(year(curdate()))"}};
    case 3:
      return {EFamily::Time,
              "datetime" + width,
              "",
              0,
              false,
              {"'1000-01-01 00:00:00'", "'9999-12-31 23:59:58" + fraction + "'"},
              {"'2005-01-01 12:00:00'", "'0000-00-00 00:00:00'", now, now + " on update " + now,
               "(now() + interval 1 day)"}};
    default:
      return {EFamily::Time,
              "timestamp" + width,
              "",
              0,
              false,
              {"'1970-02-01 00:00:01'", "'2037-12-31 23:59:58" + fraction + "'"},
              {"'2005-01-01 12:00:00'", "'0000-00-00 00:00:00'", now, now + " on update " + now}};
  }
}

TTypeModel Json(TRandom&) {
  return {
      EFamily::Json, "json", "", 60, false, {"'{}'", "'[1, \"two\"]'"}, {"'{\"a\": 1}'", "(json_array(1, 'it''s'))"}};
}

TTypeModel Address(TRandom& r) {
  switch (r.Below(3)) {
    case 0:
      return {EFamily::Address,
              "uuid",
              "",
              0,
              false,
              {"'00000000-0000-0000-0000-000000000000'", "'ffffffff-ffff-ffff-ffff-ffffffffffff'"},
              {"uuid()", "'123e4567-e89b-12d3-a456-426655440000'"}};
    case 1:
      return {EFamily::Address, "inet6", "", 0, false, {"'::'", "'ffff:ffff::ffff'"}, {"'::1'"}};
    default:
      return {EFamily::Address, "inet4", "", 0, false, {"'0.0.0.0'", "'255.255.255.255'"}, {"'127.0.0.1'"}};
  }
}

TTypeModel Shape(TRandom& r) {
  struct TShape {
    const char* type;
    const char* sample;
  };
  static constexpr std::array<TShape, 8> kShapes{
      {{"geometry", "POINT(1 1)"},
       {"point", "POINT(2 2)"},
       {"linestring", "LINESTRING(0 0,1 1)"},
       {"polygon", "POLYGON((0 0,4 0,4 4,0 0))"},
       {"multipoint", "MULTIPOINT(1 1,2 2)"},
       {"multilinestring", "MULTILINESTRING((0 0,1 1),(2 2,3 3))"},
       {"multipolygon", "MULTIPOLYGON(((0 0,4 0,4 4,0 0)))"},
       {"geometrycollection", "GEOMETRYCOLLECTION(POINT(1 1),LINESTRING(0 0,1 1))"}}};
  const TShape& row = r.Pick(kShapes);
  const std::string sample = Format("st_geomfromtext('%s')", row.sample);
  return {EFamily::Shape, row.type, "", 0, false, {sample, sample}, {}};
}

TTypeModel Number(const char* text) { return {EFamily::Whole, text, "", 0, false, {"0", "1"}, {"0"}}; }

TTypeModel Text(std::size_t length) {
  return {EFamily::Letters, Format("varchar(%d)", length), "", length, false, {"''", "'w'"}, {"'x'"}};
}

}  // namespace

TTypeModel TypeOf(EFamily family, TRandom& r) {
  using TMaker = TTypeModel (*)(TRandom&);
  static constexpr TMaker kMakers[] = {Whole,   nullptr, Bit,  Letters, LongLetters, Bytes,  LongBytes,
                                       Members, Time,    Json, Address, Shape,       nullptr};
  if (family == EFamily::Vector) return Address(r);
  if (family == EFamily::Number) return r.Chance(60) ? Decimal(r) : Floating(r);
  return kMakers[static_cast<std::size_t>(family)](r);
}

TTypeModel AnyType(TRandom& r) {
  static constexpr EFamily kFamilies[] = {EFamily::Whole,   EFamily::Whole,       EFamily::Whole,   EFamily::Number,
                                          EFamily::Number,  EFamily::Bit,         EFamily::Letters, EFamily::Letters,
                                          EFamily::Letters, EFamily::LongLetters, EFamily::Bytes,   EFamily::LongBytes,
                                          EFamily::Members, EFamily::Members,     EFamily::Time,    EFamily::Time,
                                          EFamily::Json,    EFamily::Address,     EFamily::Shape};
  return TypeOf(r.Pick(kFamilies), r);
}

TComputation AnyComputation(const TTypeModel& base, TRandom& r) {
  switch (base.family) {
    case EFamily::Whole:
      if (r.Chance(30)) return {"%s is null or %s between 1 and 7", Number("tinyint(1)")};
      return {r.Chance(50) ? "%s % 10" : "case when %s > 3 then 1 else 0 end", Number("bigint")};
    case EFamily::Number:
      return {"%s > 1.5", Number("int")};
    case EFamily::Letters:
    case EFamily::LongLetters:
      if (base.text.starts_with("char")) return {};  // what they are depends on the session's mode
      if (r.Chance(40)) return {"char_length(%s)", Number("int unsigned")};
      return {r.Chance(50) ? "left(%s, 5)" : "concat(left(%s, 3), ''';', left(%s, 3))", Text(20)};
    case EFamily::Bytes:
    case EFamily::LongBytes:
      return {"length(%s)", Number("int")};
    case EFamily::Members:
      return {"%s + 0", Number("bigint")};
    case EFamily::Json:
      return {"json_value(%s, '$.a')", Text(60)};
    default:
      return {};
  }
}

std::string AnyCondition(const TTypeModel& type, TRandom& r) {
  static const TTexts kNumbers = {"%s < 1e30", "%s >= -1e30 and %s <> 0.125", "not (%s = 0.25)",
                                  "%s is null or %s between -1e30 and 1e30", "%s not in (0.1, 0.2)"};
  static const TTexts kLetters = {"char_length(%s) < 100000", "%s <> 'it''s; no'", "%s not like '%(;%'",
                                  "length(%s) >= 0 or %s = '\"`,'", "coalesce(%s, ')') <> '--'"};
  switch (type.family) {
    case EFamily::Whole:
    case EFamily::Number:
      return r.Pick(kNumbers);
    case EFamily::Letters:
    case EFamily::LongLetters:
      return r.Pick(kLetters);
    default:
      return "";
  }
}

std::string AnyCharset(TRandom& r) {
  static const TTexts kCharsets = {"character set latin1 collate latin1_bin",
                                   "character set utf8mb4 collate utf8mb4_general_ci",
                                   "character set utf8mb4 collate utf8mb4_unicode_ci",
                                   "character set utf8mb4 collate utf8mb4_bin",
                                   "character set utf8mb4 collate utf8mb4_uca1400_ai_ci",
                                   "character set utf8mb3 collate utf8mb3_general_ci",
                                   "character set ascii collate ascii_general_ci",
                                   "character set ucs2 collate ucs2_general_ci",
                                   "character set utf16 collate utf16_bin",
                                   "character set cp1251 collate cp1251_general_ci",
                                   "character set sjis collate sjis_japanese_ci"};
  return r.Chance(50) ? "" : r.Pick(kCharsets);
}

std::string AnyTableCharset(TRandom& r) {
  static const TTexts kCharsets = {
      "character set utf8mb4 collate utf8mb4_general_ci", "character set utf8mb4 collate utf8mb4_general_ci",
      "character set utf8mb4 collate utf8mb4_unicode_ci", "character set utf8mb4 collate utf8mb4_bin",
      "character set utf8mb3 collate utf8mb3_general_ci", "character set latin1 collate latin1_swedish_ci",
      "character set latin1 collate latin1_bin"};
  return r.Pick(kCharsets);
}

bool CanBeRead(const std::string& charset) {
  return charset.find("ucs2") == std::string::npos && charset.find("utf16") == std::string::npos;
}

}  // namespace velmora::testing
