// SPDX-License-Identifier: GPL-3.0-or-later

// Access files.

#include "foreign/AccessSamples.h"
#include "foreign/Sources.h"
#include "formats/mdb/MdbPages.h"
#include "support/ByteText.h"

namespace velmora::testing {

namespace {

using enum EMost;

constexpr int Code(EMdbType type) { return static_cast<int>(type); }

const TSketchDialect kAccess = {
    .types = {{.word = "", .code = Code(EMdbType::Bool), .literal = "1", .defaults = {"No", "=True", "Yes"}},
              {.word = "",
               .code = Code(EMdbType::Byte),
               .literal = "255",
               .defaults = {"0", "=12"},
               .checks = {"<100", "Between 1 And 9 Or 200"},
               .keyed = true},
              {.word = "",
               .code = Code(EMdbType::Int),
               .literal = "-32768",
               .defaults = {"-5"},
               .checks = {">=-10 And <=10"},
               .keyed = true},
              {.word = "",
               .code = Code(EMdbType::LongInt),
               .literal = "-2147483648",
               .defaults = {"1000000"},
               .checks = {"<>0", "In (1,2,3) Or Is Null"},
               .keyed = true,
               .counts = true},
              {.word = "",
               .code = Code(EMdbType::BigInt),
               .literal = "-9223372036854775808",
               .defaults = {"9000000000"},
               .checks = {">0"},
               .keyed = true},
              {.word = "",
               .code = Code(EMdbType::Money),
               .literal = "-922337203685477.5808",
               .defaults = {"1.5"},
               .checks = {">=0.01"}},
              {.word = "", .code = Code(EMdbType::Float), .literal = "3.4e38", .defaults = {".5"}},
              {.word = "",
               .code = Code(EMdbType::Double),
               .literal = "1.7e308",
               .defaults = {"-2.25"},
               .checks = {"<1000000"}},
              {.word = "",
               .code = Code(EMdbType::Numeric),
               .first = 1,
               .last = 28,
               .most_scale = 28,
               .most = Digits,
               .defaults = {"0", "3.14"},
               .checks = {">0"},
               .keyed = true},
              {.word = "",
               .code = Code(EMdbType::DateTime),
               .literal = "'9999-12-31 23:59:59'",
               .defaults = {"Now()", "#1/31/2024#", "Date()", "#10:20:30#"},
               .checks = {">=#1/1/1990#"},
               .keyed = true},
              {.word = "",
               .code = Code(EMdbType::LongDateTime),
               .literal = "'9999-12-31 23:59:59.999999'",
               .defaults = {"Now()"}},
              {.word = "",
               .code = Code(EMdbType::RepId),
               .literal = "uuid()",
               .defaults = {"GenGUID()"},
               .keyed = true},
              {.word = "",
               .code = Code(EMdbType::Text),
               .first = 6,
               .last = 255,
               .most = Letters,
               .defaults = {"\"x\"", "\"it's \"", "\"\"", "=\"a\\\""},
               .checks = {"Like \"*a?\"", "\"A\" Or \"B\"", "Not \"x'y\"", "Like \"[a-c]*\""},
               .keyed = true},
              {.word = "", .code = Code(EMdbType::Memo), .literal = "'ö'", .defaults = {"\"none\""}},
              {.word = "", .code = Code(EMdbType::Ole), .literal = "x'ff'"},
              {.word = "", .code = Code(EMdbType::Binary), .first = 1, .last = 255, .most = Bytes, .keyed = true}},
    .refused = "😀",  // the library reads no letters beyond the first plane
    .delete_rules = {"0", "4096", "8192"},
    .update_rules = {"0", "256"},
    .key_size = 255,
    .without_form = {"Like '[a-c]%'", "#10:20:30#", "takes no check of a column"}};

TMdbColumn ColumnFor(const TSketchColumn& column) {
  const auto type = static_cast<EMdbType>(column.type->code);
  const bool letters = type == EMdbType::Text;
  if (letters || type == EMdbType::Binary)
    return MdbVarColumn(column.name, type, static_cast<std::uint16_t>(column.size * (letters ? 2 : 1)));
  if (type == EMdbType::Memo || type == EMdbType::Ole) return MdbVarColumn(column.name, type);
  TMdbColumn made = MdbFixedColumn(column.name, type, column.counts ? kMdbAutoNumber : kMdbNullable);
  made.precision = static_cast<std::uint8_t>(column.size);
  made.scale = static_cast<std::uint8_t>(column.scale);
  return made;
}

TMdbIndex IndexFor(const TSketchKey& key) {
  TMdbIndex index{.name = key.name, .parts = {}};
  for (std::size_t i = 0; i < key.columns.size(); ++i)
    index.parts.push_back({static_cast<std::uint16_t>(key.columns[i]), key.descending[i]});
  if (key.kind != ESketchKey::Plain) index.flags = kMdbUnique;
  if (key.kind == ESketchKey::Primary) index.kind = kMdbPrimaryKey;
  return index;
}

TAccessTable TableFor(const TSketchTable& sketch) {
  TAccessTable table{.name = sketch.name, .columns = {}};
  if (!sketch.comment.empty()) table.properties[""]["Description"] = sketch.comment;
  for (const TSketchColumn& column : sketch.columns) {
    table.columns.push_back(ColumnFor(column));
    TAccessProperties& properties = table.properties[column.name];
    if (column.not_null) properties["Required"] = "yes";
    if (!column.comment.empty()) properties["Description"] = column.comment;
    if (column.default_text) properties["DefaultValue"] = *column.default_text;
    if (column.check) properties["ValidationRule"] = *column.check;
  }
  for (const TSketchKey& key : sketch.keys) table.indexes.push_back(IndexFor(key));
  return table;
}

TStringList Named(const std::vector<std::size_t>& columns, const TSketchTable& table) {
  TStringList names;
  for (const std::size_t column : columns) names.push_back(table.columns[column].name);
  return names;
}

class TAccessSources final : public TSourceMaker {
 public:
  const TSketchDialect& Dialect() const override { return kAccess; }

  std::string Make(TSketch& sketch, const std::string& folder, TRandom& /*random*/) override {
    std::vector<TAccessTable> tables;
    std::vector<TAccessRelation> relations;
    for (const TSketchTable& table : sketch) {
      tables.push_back(TableFor(table));
      for (const TSketchReference& reference : table.references) {
        const TSketchTable& parent = sketch[reference.table];
        const int bits = std::stoi(kAccess.delete_rules[reference.delete_rule]) |
                         std::stoi(kAccess.update_rules[reference.update_rule]);
        relations.push_back({reference.name, table.name, Named(reference.columns, table), parent.name,
                             Named(reference.references, parent), static_cast<unsigned>(bits)});
      }
    }
    PutFile(folder + "/shop.mdb", AccessFile(tables, relations));
    return "Access:filename=" + folder + "/shop.mdb";
  }
};

}  // namespace

std::unique_ptr<TSourceMaker> MakeAccessSources() { return std::make_unique<TAccessSources>(); }

}  // namespace velmora::testing
