// SPDX-License-Identifier: GPL-3.0-or-later
#include "converge/SchemaGenerator.h"

#include <algorithm>
#include <iterator>

#include "converge/SchemaTypes.h"
#include "util/Format.h"

namespace velmora::testing {

namespace {

using TTexts = std::vector<std::string>;

// A partitioned table loses it with its next change.
constexpr std::string_view kLostByPartitions = "page_checksum";

bool Fits(EKeyModel kind, const TColumnModel& column) {
  const EFamily family = column.type.family;
  switch (kind) {
    case EKeyModel::Primary:
      return !column.Generated() && (column.type.InKeys() || column.type.TakesPrefix());
    case EKeyModel::Fulltext:
      return (family == EFamily::Letters || family == EFamily::LongLetters) && !column.Generated();
    case EKeyModel::Spatial:
      return family == EFamily::Shape;
    default:
      return column.type.InKeys() || column.type.TakesPrefix();
  }
}

}  // namespace

std::string TSchemaGenerator::Name(const char* prefix) {
  static const TTexts kTails = {"",      "",     "",    "",    " blank", "`tick", "'quote", "\"double",
                                ";semi", "-- ",  "/*c", "(p)", ", ",     "%d",    "\\b",    "ÄöЖ",
                                "#hash", ".dot", "-",   "=",   "@var",   "?what", "[x]"};
  static const TTexts kReserved = {"order",   "select", "key",   "table", "index", "from",
                                   "default", "check",  "first", "after", "null",  "comment"};
  const int number = ++named_;
  if (random_.Chance(5)) {
    const std::string word = random_.Pick(kReserved);
    return random_.Chance(30) && plain_.insert(word).second ? word : word + std::to_string(number);
  }
  std::string tail = random_.Pick(kTails);
  if (tail.ends_with(' ')) tail += "x";
  if (random_.Chance(2)) tail += "_" + std::string(40, 'l');
  return prefix + std::to_string(number) + tail;
}

std::string TSchemaGenerator::Comment() {
  static const TTexts kComments = {"it's; -- not a comment",
                                   "/* no */ `x` \"q\" ,)(;",
                                   "back\\slash",
                                   "two\nlines\tand a tab",
                                   "Ünïcode – Жук",
                                   "not null default 'x' first after `y`",
                                   "%s %d # hash",
                                   "''quoted''",
                                   " blanks ",
                                   "*/ /*!50000 x",
                                   "COMMENT 'x', key",
                                   "?",
                                   "a"};
  return random_.Chance(80) ? "" : random_.Pick(kComments);
}

// --- Columns

TColumnModel TSchemaGenerator::Column(TTypeModel type) {
  TColumnModel column;
  column.id = ++identified_;
  column.name = Name("c");
  column.type = std::move(type);
  column.not_null = random_.Chance(35);
  if (!column.type.defaults.empty() && random_.Chance(45)) column.default_value = random_.Pick(column.type.defaults);
  column.comment = Comment();
  if (random_.Chance(12) && CanBeRead(column.type.charset)) column.check = AnyCondition(column.type, random_);
  column.invisible = random_.Chance(6);
  return column;
}

TColumnModel TSchemaGenerator::Column() { return Column(AnyType(random_)); }

void TSchemaGenerator::AddColumn(TTableModel& table) {
  const auto place = static_cast<std::ptrdiff_t>(random_.Below(table.columns.size() + 1));
  table.columns.insert(table.columns.begin() + place, Column());
}

void TSchemaGenerator::AddGenerated(TTableModel& table) {
  const TColumnModel base = random_.Pick(table.columns);
  const TComputation computation = AnyComputation(base.type, random_);
  if (computation.expression.empty() || base.Generated() || base.auto_increment) return;
  TColumnModel column;
  column.id = ++identified_;
  column.name = Name("g");
  column.type = computation.type;
  column.base = base.name;
  column.expression = computation.expression;
  column.stored = random_.Chance(45);
  column.comment = Comment();
  column.invisible = random_.Chance(10);
  const auto place = static_cast<std::ptrdiff_t>(random_.Below(table.columns.size() + 1));
  table.columns.insert(table.columns.begin() + place, std::move(column));
}

// --- Keys, checks, foreign keys

TKeyModel TSchemaGenerator::Key(const TTableModel& table, EKeyModel kind) {
  TKeyModel key;
  key.kind = kind;
  if (kind != EKeyModel::Primary) key.name = Name(random_.Chance(50) ? "k" : "i");
  const std::size_t wanted = kind == EKeyModel::Spatial ? 1 : 1 + random_.Below(3);
  std::set<std::string> seen;
  for (std::size_t tries = 3 * wanted; tries > 0 && seen.size() < wanted; --tries) {
    const TColumnModel& column = random_.Pick(table.columns);
    if (!Fits(kind, column) || !seen.insert(column.name).second) continue;
    const TTypeModel& type = column.type;
    TKeyPartModel part{column.name};
    if (kind != EKeyModel::Fulltext && kind != EKeyModel::Spatial) {
      if (type.TakesPrefix() && (!type.InKeys() || random_.Chance(25))) part.prefix = 1 + random_.Below(9);
      part.descending = random_.Chance(12);
    }
    key.parts.push_back(part);
  }
  if (kind == EKeyModel::Plain || kind == EKeyModel::Unique) {
    static const TTexts kMethods = {" using btree", " using hash", ""};
    if (random_.Chance(20)) key.options += random_.Pick(kMethods);
    if (kind == EKeyModel::Plain && random_.Chance(6)) key.options += " ignored";
  }
  if (random_.Chance(12)) key.options += " comment " + SqlText("k'; -- (" + std::to_string(random_.Below(9)));
  return key;
}

void TSchemaGenerator::AddKey(TTableModel& table) {
  static constexpr EKeyModel kKinds[] = {EKeyModel::Unique, EKeyModel::Unique,   EKeyModel::Plain,  EKeyModel::Plain,
                                         EKeyModel::Plain,  EKeyModel::Fulltext, EKeyModel::Spatial};
  TKeyModel key = Key(table, random_.Pick(kKinds));
  if (key.parts.empty()) return;
  if (key.kind == EKeyModel::Spatial) table.Find(key.parts.front().column)->not_null = true;
  table.keys.push_back(std::move(key));
}

void TSchemaGenerator::AddPrimaryKey(TTableModel& table) {
  std::erase_if(table.keys, [](const TKeyModel& key) { return key.kind == EKeyModel::Primary; });
  TKeyModel key = Key(table, EKeyModel::Primary);
  if (key.parts.empty()) return;
  for (TKeyPartModel& part : key.parts) table.Find(part.column)->not_null = true;
  TColumnModel& first = *table.Find(key.parts.front().column);
  if (first.type.family == EFamily::Whole && random_.Chance(50)) first.auto_increment = true;
  table.keys.insert(table.keys.begin(), std::move(key));
}

void TSchemaGenerator::AddCheck(TTableModel& table) {
  const TColumnModel& column = random_.Pick(table.columns);
  const std::string condition = AnyCondition(column.type, random_);
  if (!condition.empty() && CanBeRead(column.type.charset))
    table.checks.push_back({Name("chk"), column.name, condition});
}

void TSchemaGenerator::SetForeignKeyRules(TForeignKeyModel& key) {
  static const TTexts kRules = {"", "", "cascade", "set null", "restrict", "no action"};
  key.on_delete = random_.Pick(kRules);
  key.on_update = random_.Pick(kRules);
}

// The child gets columns of its own for it, as the parent's.
void TSchemaGenerator::AddForeignKey(TSchemaModel& schema, TTableModel& table) {
  const TTableModel parent = random_.Chance(15) ? table : random_.Pick(schema.tables);
  if (parent.keys.empty() || !parent.TakesForeignKeys() || !table.TakesForeignKeys()) return;
  const TKeyModel& key = random_.Pick(parent.keys);
  if (key.kind == EKeyModel::Fulltext || key.kind == EKeyModel::Spatial) return;
  const std::size_t width = std::min<std::size_t>(key.parts.size(), 1 + random_.Below(2));
  TForeignKeyModel foreign;
  foreign.name = Name("fk");
  foreign.parent = parent.name;
  SetForeignKeyRules(foreign);
  for (std::size_t i = 0; i < width; ++i) {
    const TColumnModel& referenced = *parent.Find(key.parts[i].column);
    TColumnModel column = Column(referenced.type);
    if (column.type.HasLetters()) column.type.charset = parent.CharsetOf(referenced);
    if (random_.Chance(80)) column.not_null = false;
    foreign.columns.push_back(column.name);
    foreign.references.push_back(referenced.name);
    table.columns.push_back(std::move(column));
  }
  table.foreign_keys.push_back(std::move(foreign));
}

// --- Tables

// Without folders of data: servers leave a table's files where they are.
void TSchemaGenerator::SetOptions(TTableModel& table) {
  struct TRow {
    const char* engine;  // empty for all
    const char* name;
    TTexts values;
  };
  static const std::vector<TRow> kRows = {
      {"", "max_rows", {"1000", "50000"}},
      {"", "min_rows", {"10"}},
      {"", "avg_row_length", {"64", "200"}},
      {"InnoDB", "row_format", {"dynamic", "compact", "redundant", "compressed"}},
      {"InnoDB", "stats_persistent", {"0", "1"}},
      {"InnoDB", "stats_auto_recalc", {"0", "1"}},
      {"InnoDB", "stats_sample_pages", {"12", "40"}},
      {"InnoDB", "page_compressed", {"1"}},
      {"InnoDB", "key_block_size", {"8"}},
      {"Aria", "row_format", {"page", "dynamic"}},
      {"Aria", "transactional", {"0", "1"}},
      {"Aria", "page_checksum", {"0", "1"}},
      {"MyISAM", "pack_keys", {"0", "1"}},
      {"MyISAM", "checksum", {"1"}},
      {"MyISAM", "delay_key_write", {"1"}},
      {"MyISAM", "row_format", {"dynamic"}},
  };
  table.options.clear();
  for (const TRow& row : kRows) {
    if (*row.engine != '\0' && table.engine != row.engine) continue;
    if (row.name == kLostByPartitions && !table.partitioning.empty()) continue;
    if (random_.Chance(8)) table.options.push_back({row.name, random_.Pick(row.values)});
  }
  const std::string comment = Comment();
  if (!comment.empty()) table.options.push_back({"comment", SqlText(comment)});
  if (random_.Chance(10)) table.options.push_back({"auto_increment", std::to_string(5 + random_.Below(90))});
}

void TSchemaGenerator::SetPartitions(TTableModel& table) {
  static const TTexts kKinds = {
      "partition by hash (%s) partitions 3",
      "partition by linear hash (%s) partitions 2",
      "partition by hash (%s % 7) partitions 2",
      "partition by key (%s) partitions 3",
      "partition by linear key (%s) partitions 2",
      "partition by range (%s) (partition p0 values less than (10) comment = 'it''s; (', partition `p 1` values less "
      "than (20), partition m values less than maxvalue)",
      "partition by range (%s) (partition p0 values less than (10), partition m values less than maxvalue)",
      "partition by range columns (%s) (partition a values less than (5), partition b values less than (maxvalue))",
      "partition by list (%s) (partition a values in (1, 2), partition b values in (3), partition d default)",
      "partition by list columns (%s) (partition a values in (1, 7), partition d default)",
      "partition by range (%s) subpartition by hash (%s) subpartitions 2 (partition p0 values less than (9), partition "
      "p1 values less than maxvalue)"};
  TTexts columns;
  for (const TColumnModel& column : table.columns)
    if (column.type.family == EFamily::Whole && !column.Generated()) columns.push_back(column.name);
  if (columns.empty()) return;
  table.partition_column = random_.Pick(columns);
  table.partitioning = random_.Pick(kKinds);
  table.foreign_keys.clear();
  std::erase_if(table.options, [](const TOptionModel& option) { return option.name == kLostByPartitions; });
  TColumnModel& column = *table.Find(table.partition_column);
  for (TKeyModel& key : table.keys) {
    if (!key.Unique()) continue;
    column.not_null = column.not_null || key.kind == EKeyModel::Primary;
    const auto is_it = [&column](const TKeyPartModel& part) { return part.column == column.name; };
    if (std::none_of(key.parts.begin(), key.parts.end(), is_it)) key.parts.push_back({column.name});
  }
}

TTableModel TSchemaGenerator::Table() {
  static const TTexts kEngines = {"InnoDB", "InnoDB", "InnoDB", "InnoDB", "InnoDB",
                                  "InnoDB", "InnoDB", "Aria",   "MyISAM", "MEMORY"};
  TTableModel table;
  table.id = ++identified_;
  table.name = Name("t");
  table.engine = random_.Pick(kEngines);
  table.charset = AnyTableCharset(random_);
  table.columns.push_back(Column(TypeOf(EFamily::Whole, random_)));
  const std::size_t columns = 2 + random_.Below(7);
  while (table.columns.size() < columns) table.columns.push_back(Column());
  for (std::size_t i = random_.Below(3); i > 0; --i) AddGenerated(table);
  if (random_.Chance(75)) AddPrimaryKey(table);
  for (std::size_t i = random_.Below(5); i > 0; --i) AddKey(table);
  if (random_.Chance(30)) AddCheck(table);
  SetOptions(table);
  if (random_.Chance(15)) SetPartitions(table);
  return table;
}

TSchemaModel TSchemaGenerator::Schema(std::size_t tables) {
  TSchemaModel schema;
  for (std::size_t i = 0; i < tables; ++i) {
    schema.tables.push_back(Table());
    for (std::size_t keys = random_.Chance(50) ? random_.Below(3) : 0; keys > 0; --keys)
      AddForeignKey(schema, schema.tables.back());
  }
  return schema;
}

}  // namespace velmora::testing
