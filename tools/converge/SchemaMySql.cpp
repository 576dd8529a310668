// SPDX-License-Identifier: GPL-3.0-or-later
#include "converge/SchemaMySql.h"

#include <algorithm>
#include <array>

#include "util/Format.h"
#include "util/Text.h"

namespace velmora::testing {

namespace {

using TTexts = std::vector<std::string>;

void TakeAway(std::string& text, std::string_view what) {
  const std::size_t at = text.find(what);
  if (at != std::string::npos) text.erase(at, what.size());
}

// --- Other words for the same

// Defaults of long values are expressions, and so in brackets.
void SpeakDefault(const TTypeModel& type, std::string& value) {
  const bool is_long = type.family == EFamily::LongLetters || type.family == EFamily::LongBytes ||
                       type.family == EFamily::Json || type.family == EFamily::Shape;
  if (is_long && !value.empty() && !value.starts_with("(")) value = "(" + value + ")";
}

void SpeakType(TTypeModel& type) {
  if (type.family == EFamily::Address)
    type = {EFamily::Bytes, "varbinary(16)", "", 16, false, {"''", "repeat(x'ff', 16)"}, {"''", "x'41'"}};
  TakeAway(type.text, " compressed");
  type.compressed = false;
  type.charset = StrReplace(type.charset, "utf8mb4_uca1400_ai_ci", "utf8mb4_0900_ai_ci");
  for (std::string& value : type.defaults) SpeakDefault(type, value);
}

void SpeakColumn(TColumnModel& column) {
  const bool is_address = column.type.family == EFamily::Address;
  SpeakType(column.type);
  if (is_address) column.default_value.clear();
  SpeakDefault(column.type, column.default_value);
}

void SpeakTable(TTableModel& table) {
  if (table.engine == "Aria") table.engine = "InnoDB";
  for (TColumnModel& column : table.columns) SpeakColumn(column);
  // Keys of MyISAM over members do not outlive another character set of these.
  const auto has_members = [&table](const TKeyPartModel& part) {
    const TColumnModel* column = table.Find(part.column);
    return column != nullptr && column->type.family == EFamily::Members;
  };
  if (table.engine == "MyISAM") {
    for (TKeyModel& key : table.keys) std::erase_if(key.parts, has_members);
    std::erase_if(table.keys, [](const TKeyModel& key) { return key.parts.empty(); });
  }
  for (TKeyModel& key : table.keys) key.options = StrReplace(key.options, " ignored", " invisible");
  table.partitioning = StrReplace(table.partitioning, "partition d default", "partition d values in (8, 9, null)");
  std::erase_if(table.options, [](const TOptionModel& option) {
    return InList(option.name, {"transactional", "page_checksum", "page_compressed"});
  });
}

// --- What is MySQL's own

TColumnModel* AnyColumn(TTableModel& table, std::initializer_list<EFamily> families, TRandom& random) {
  std::vector<TColumnModel*> fitting;
  for (TColumnModel& column : table.columns)
    if (std::find(families.begin(), families.end(), column.type.family) != families.end()) fitting.push_back(&column);
  return fitting.empty() ? nullptr : random.Pick(fitting);
}

std::string NewName(const TTableModel& table, const char* prefix, TRandom& random) {
  return Format("%s%d %d", prefix, table.columns.size() + table.keys.size() + table.checks.size(), random.Below(10000));
}

void AddExpressionKey(TTableModel& table, TRandom& random) {
  static const TTexts kOfNumbers = {"(%s > 2)", "(%s is null)", "(%s % 3)", "(case when %s > 3 then 1 else 0 end)"};
  static const TTexts kOfLetters = {"(char_length(%s))", "(cast(left(%s, 4) as char(9)))", "(md5(%s))"};
  static const TTexts kOfJson = {"(cast(json_extract(%s, '$.tags') as unsigned array))",
                                 "(cast(json_extract(%s, '$.names') as char(20) array))",
                                 "(cast(json_unquote(json_extract(%s, '$.a')) as char(30)))"};
  const TColumnModel* column =
      AnyColumn(table, {EFamily::Whole, EFamily::Letters, EFamily::LongLetters, EFamily::Json}, random);
  if (column == nullptr || column->auto_increment) return;
  const bool is_json = column->type.family == EFamily::Json;
  const TTexts& expressions = is_json ? kOfJson : column->type.family == EFamily::Whole ? kOfNumbers : kOfLetters;
  TKeyModel key;
  key.kind = random.Chance(30) ? EKeyModel::Unique : EKeyModel::Plain;
  key.name = NewName(table, "e", random);
  key.parts.push_back({column->name, 0, !is_json && random.Chance(30), random.Pick(expressions)});
  const TColumnModel* other = AnyColumn(table, {EFamily::Whole, EFamily::Number, EFamily::Time}, random);
  if (other != nullptr && random.Chance(40))
    key.parts.insert(key.parts.begin(), {other->name, 0, random.Chance(30), ""});
  // Servers make invisible what they then take for a primary key.
  if (!key.Unique() && random.Chance(20)) key.options = " invisible";
  table.keys.push_back(std::move(key));
}

void TakeExpressionKey(TTableModel& table, TRandom&) {
  const auto key = std::find_if(table.keys.begin(), table.keys.end(), [](const TKeyModel& k) {
    return std::any_of(k.parts.begin(), k.parts.end(),
                       [](const TKeyPartModel& part) { return !part.expression.empty(); });
  });
  if (key != table.keys.end()) table.keys.erase(key);
}

void ChangeParser(TTableModel& table, TRandom& random) {
  constexpr std::string_view kParser = " with parser ngram";
  TColumnModel* column = AnyColumn(table, {EFamily::Letters, EFamily::LongLetters}, random);
  if (random.Chance(50) && column != nullptr && !column->Generated())
    table.keys.push_back({EKeyModel::Fulltext, NewName(table, "f", random), {{column->name, 0, false, ""}}, ""});
  for (TKeyModel& key : table.keys) {
    if (key.kind != EKeyModel::Fulltext || random.Chance(40)) continue;
    if (key.options.find(kParser) == std::string::npos)
      key.options = std::string(kParser) + key.options;
    else
      TakeAway(key.options, kParser);
  }
}

void ChangeEnforcement(TTableModel& table, TRandom& random) {
  if (table.checks.empty()) {
    // A key may have the same name.
    const TKeyModel* key = table.keys.empty() ? nullptr : &random.Pick(table.keys);
    const bool shares = key != nullptr && key->kind == EKeyModel::Unique;
    if (const TColumnModel* column = AnyColumn(table, {EFamily::Whole, EFamily::Number}, random))
      table.checks.push_back({shares ? key->name : NewName(table, "u", random), column->name, "%s <> 0.125"});
    if (table.checks.empty()) return;
  }
  TCheckModel& check = random.Pick(table.checks);
  check.enforcement = check.enforcement.empty() ? " not enforced" : "";
}

void ChangeVector(TTableModel& table, TRandom& random) {
  const std::size_t size = 1 + random.Below(4);
  std::string value = "1";
  for (std::size_t i = 1; i < size; ++i) value += ",0.5";
  const std::string sample = "string_to_vector('[" + value + "]')";
  const TTypeModel type{EFamily::Vector, Format("vector(%d)", size), "", 0, false, {sample, sample}, {}};
  if (TColumnModel* column = AnyColumn(table, {EFamily::Vector}, random)) {
    column->type = type;
    return;
  }
  TColumnModel column;
  column.name = NewName(table, "v", random);
  column.type = type;
  column.invisible = random.Chance(20);
  table.columns.push_back(std::move(column));
}

void ChangeReferenceSystem(TTableModel& table, TRandom& random) {
  static const TTexts kSystems = {"", "0", "4326"};
  TColumnModel* column = AnyColumn(table, {EFamily::Shape}, random);
  if (column == nullptr) return;
  TTypeModel& type = column->type;
  type.text = type.text.substr(0, type.text.find(' '));
  const std::string& system = random.Pick(kSystems);
  if (!system.empty()) type.text += " srid " + system;
  for (std::string& sample : type.samples) {
    const std::size_t quote = sample.find('\'', sample.find('\'') + 1);
    sample = sample.substr(0, quote + 1) + (system.empty() ? ")" : ", " + system + ")");
  }
}

void ChangeDefault(TTableModel& table, TRandom& random) {
  TColumnModel* column =
      AnyColumn(table, {EFamily::Number, EFamily::Letters, EFamily::LongLetters, EFamily::Json}, random);
  if (column == nullptr || column->Generated() || column->auto_increment) return;
  static const TTexts kLetters = {"(left(uuid(), 1))", "(char(65))", "(left(concat('a', 'b'), 1))"};
  static const TTexts kNumbers = {"(rand())", "(1.5 + 0.5)", "(floor(2.5))"};
  static const TTexts kJson = {"(json_object('a', 1, 'it''s', null))", "(json_array())"};
  const bool is_number = column->type.family == EFamily::Number;
  column->default_value = random.Pick(is_number ? kNumbers : column->type.family == EFamily::Json ? kJson : kLetters);
}

void ChangeCollation(TTableModel& table, TRandom& random) {
  static const TTexts kCollations = {"utf8mb4_0900_ai_ci",       "utf8mb4_0900_as_cs",       "utf8mb4_0900_bin",
                                     "utf8mb4_de_pb_0900_ai_ci", "utf8mb4_ja_0900_as_cs_ks", "utf8mb4_zh_0900_as_cs"};
  const std::string charset = "character set utf8mb4 collate " + random.Pick(kCollations);
  TColumnModel* column = AnyColumn(table, {EFamily::Letters, EFamily::LongLetters, EFamily::Members}, random);
  if (column == nullptr || column->Generated() || random.Chance(30))
    table.charset = charset;
  else
    column->type.charset = charset;
}

void ChangeOption(TTableModel& table, TRandom& random) {
  struct TRow {
    const char* name;
    TTexts values;
  };
  static const std::vector<TRow> kRows = {{"autoextend_size", {"4194304", "8388608"}},
                                          {"compression", {"'zlib'", "'lz4'", "'none'"}},
                                          {"engine_attribute", {"'{\"a\": 1}'", "'{\"it\": \"''s\"}'"}},
                                          {"encryption", {"'n'"}},
                                          {"stats_persistent", {"0", "1", "default"}}};
  const TRow& row = random.Pick(kRows);
  const std::size_t before = table.options.size();
  std::erase_if(table.options, [&row](const TOptionModel& option) { return option.name == row.name; });
  if (before == table.options.size() || random.Chance(50)) table.options.push_back({row.name, random.Pick(row.values)});
}

// Of the kinds that MariaDB has not, or spells otherwise.
void ChangePartitions(TTableModel& table, TRandom& random) {
  static const TTexts kKinds = {
      "partition by key algorithm = 1 (%s) partitions 2",
      "partition by key algorithm = 2 (%s) partitions 3",
      "partition by linear key algorithm = 1 (%s) partitions 2",
      "partition by range columns (%s) subpartition by key (%s) subpartitions 2 (partition a values less than (7), "
      "partition b values less than (maxvalue))",
      "partition by list (%s) (partition a values in (1, 7, null), partition b values in (-100, 0, 42))",
      "partition by range (%s div 2) (partition `p;` values less than (3) comment = ')', partition m values less than "
      "maxvalue)"};
  if (!table.partition_column.empty() && table.Find(table.partition_column) != nullptr && !table.partitioning.empty())
    table.partitioning = random.Pick(kKinds);
}

}  // namespace

void SpeakMySql(TSchemaModel& schema) {
  for (TTableModel& table : schema.tables) SpeakTable(table);
}

void VaryMySql(TSchemaModel& schema, TRandom& random) {
  using TVariation = void (*)(TTableModel&, TRandom&);
  static constexpr TVariation kVariations[] = {
      AddExpressionKey,      AddExpressionKey, TakeExpressionKey, ChangeParser, ChangeEnforcement, ChangeVector,
      ChangeReferenceSystem, ChangeDefault,    ChangeCollation,   ChangeOption, ChangePartitions};
  for (TTableModel& table : schema.tables) {
    if (random.Chance(25)) continue;
    for (std::size_t changes = 1 + random.Below(3); changes > 0; --changes) random.Pick(kVariations)(table, random);
  }
}

}  // namespace velmora::testing
