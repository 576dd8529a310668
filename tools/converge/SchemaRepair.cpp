// What goes together on a server.

#include <algorithm>
#include <set>

#include "converge/SchemaGenerator.h"
#include "converge/SchemaTypes.h"
#include "util/Text.h"

namespace velmora::testing {

namespace {

bool IsInnoDB(const TTableModel& table) { return table.engine == "InnoDB"; }
bool IsPartitioned(const TTableModel& table) { return !table.partitioning.empty(); }

// --- Columns

void RepairNames(TTableModel& table) {
  std::set<std::string> names;
  std::erase_if(table.columns,
                [&](const TColumnModel& column) { return !names.insert(LowerText(column.name)).second; });
  std::set<std::string> keys;
  std::erase_if(table.keys, [&](const TKeyModel& key) { return !keys.insert(LowerText(key.name)).second; });
  std::set<std::string> checks;
  std::erase_if(table.checks, [&](const TCheckModel& check) { return !checks.insert(LowerText(check.name)).second; });
}

bool HasBase(const TTableModel& table, const TColumnModel& column) {
  const TColumnModel* base = table.Find(column.base);
  if (base == nullptr || base->Generated() || base->auto_increment) return false;
  TRandom random(0);
  for (int tries = 0; tries < 20; ++tries)
    if (AnyComputation(base->type, random).expression == column.expression) return true;
  return false;
}

// A server of this version cannot open some tables of these engines again that have both bits and virtual columns.
bool HasBits(const TTableModel& table) {
  return std::any_of(table.columns.begin(), table.columns.end(),
                     [](const TColumnModel& column) { return column.type.family == EFamily::Bit; });
}

void RepairGenerated(TTableModel& table) {
  const TTableModel before = table;
  const bool none = table.engine == "MEMORY" || (table.engine != "InnoDB" && HasBits(table));
  std::erase_if(table.columns,
                [&](const TColumnModel& column) { return column.Generated() && (none || !HasBase(before, column)); });
}

bool HoldsAllLetters(const std::string& charset) { return charset.find("utf8mb4") != std::string::npos; }

void ReplaceSmile(TColumnModel& column) {
  const std::string smile = "😀";
  for (std::string* text : {&column.type.text, &column.type.samples[0], &column.type.samples[1],
                            &column.type.defaults[0], &column.type.defaults[1], &column.default_value}) {
    const std::size_t at = text->find(smile);
    if (at != std::string::npos) text->replace(at, smile.size(), "smile");
  }
}

void RepairColumns(TTableModel& table) {
  RepairGenerated(table);
  bool counts = false;
  for (TColumnModel& column : table.columns) {
    if (column.Generated()) {
      column.not_null = column.auto_increment = false;
      column.default_value.clear();
      column.check.clear();
    }
    // Not every character set has it. Servers print it as "?", and "show create table" is all that is compared.
    if (column.type.family == EFamily::Members && !HoldsAllLetters(table.CharsetOf(column))) ReplaceSmile(column);
    const auto is_special = [](char c) { return static_cast<unsigned char>(c) >= 0x80; };
    const std::string& standard = column.default_value;
    if (column.type.family == EFamily::Letters && !HoldsAllLetters(table.CharsetOf(column)) &&
        std::any_of(standard.begin(), standard.end(), is_special))
      column.default_value = "'x'";
    if (column.type.family == EFamily::Whole) column.auto_increment = column.auto_increment && !counts;
    if (column.auto_increment) {
      counts = column.not_null = true;
      column.default_value.clear();
      column.check.clear();  // servers refuse it to be read by checks
    }
    // The text of the check would hold the literal in that character set, which cannot be read back.
    if (column.type.HasLetters() && !FulltextCharset(table.CharsetOf(column))) column.check.clear();
    // A timestamp without a default has one that depends on its place in the table and on the server's mode.
    if (column.type.text.starts_with("timestamp") && column.not_null && column.default_value.empty())
      column.default_value = column.type.defaults.front();
    if (column.invisible && column.not_null && column.default_value.empty()) column.invisible = false;
  }
  const bool visible =
      std::any_of(table.columns.begin(), table.columns.end(), [](const auto& c) { return !c.invisible; });
  if (!visible) table.columns.front().invisible = false;
}

// A table of memory has no long columns.
void RepairEngine(TTableModel& table) {
  if (table.engine != "MEMORY") return;
  const auto is_long = [](const TColumnModel& column) {
    return column.type.compressed || column.type.family == EFamily::LongLetters ||
           column.type.family == EFamily::Json || column.type.family == EFamily::LongBytes ||
           column.type.family == EFamily::Shape;
  };
  if (std::any_of(table.columns.begin(), table.columns.end(), is_long)) table.engine = "Aria";
}

// --- Keys

bool Fits(const TTableModel& table, const TKeyModel& key, const TKeyPartModel& part) {
  const TColumnModel* column = table.Find(part.column);
  if (column == nullptr) return false;
  const TTypeModel& type = column->type;
  switch (key.kind) {
    case EKeyModel::Fulltext:
      return (type.family == EFamily::Letters || type.family == EFamily::LongLetters) && !type.compressed &&
             !column->Generated() && FulltextCharset(table.CharsetOf(*column));
    case EKeyModel::Spatial:
      return type.family == EFamily::Shape && column->not_null;
    default:
      if (column->Generated() && (key.Unique() || table.engine == "Aria")) return false;
      // MariaDB 10.11 takes different bits for the same in such a key when bits of another column stand before them.
      if (type.family == EFamily::Bit && key.Unique() && table.engine == "Aria") return false;
      if (key.kind == EKeyModel::Primary && !column->not_null) return false;
      return type.InKeys() || type.TakesPrefix();
  }
}

void RepairKey(const TTableModel& table, TKeyModel& key) {
  constexpr std::size_t kPrefix = 5;
  std::set<std::string> seen;
  std::erase_if(key.parts, [&](const TKeyPartModel& part) {
    return !Fits(table, key, part) || !seen.insert(LowerText(part.column)).second;
  });
  for (TKeyPartModel& part : key.parts) {
    const TTypeModel& type = table.Find(part.column)->type;
    if (key.kind == EKeyModel::Fulltext || key.kind == EKeyModel::Spatial)
      part = {part.column};
    else if (part.prefix > 0 ? !type.TakesPrefix() : !type.InKeys())
      part.prefix = type.InKeys() ? 0 : kPrefix;
  }
  // A key may not be ignored once it is the table's only unique one, and there is no hash of counters.
  if (key.Unique() && key.options.find("ignored") != std::string::npos) key.options.clear();
  const bool counts = std::any_of(table.columns.begin(), table.columns.end(),
                                  [](const TColumnModel& column) { return column.auto_increment; });
  if (key.options.find("hash") != std::string::npos && (counts || table.engine == "Aria")) key.options.clear();
  if (key.kind == EKeyModel::Fulltext && !key.parts.empty()) {
    const std::string charset = table.CharsetOf(*table.Find(key.parts.front().column));
    std::erase_if(key.parts,
                  [&](const TKeyPartModel& part) { return table.CharsetOf(*table.Find(part.column)) != charset; });
  }
}

void RepairKeys(TTableModel& table) {
  for (TKeyModel& key : table.keys) RepairKey(table, key);
  std::erase_if(table.keys, [&](const TKeyModel& key) {
    const bool plain = key.kind == EKeyModel::Fulltext || key.kind == EKeyModel::Spatial;
    return key.parts.empty() || (plain && (IsPartitioned(table) || table.engine == "MEMORY"));
  });
  for (TColumnModel& column : table.columns) {
    column.auto_increment =
        column.auto_increment && std::any_of(table.keys.begin(), table.keys.end(), [&](const auto& k) {
          return k.kind != EKeyModel::Fulltext && k.parts.front().column == column.name;
        });
  }
}

void RepairPartitions(TTableModel& table) {
  if (!IsPartitioned(table)) return;
  TColumnModel* column = table.Find(table.partition_column);
  const bool shapes = std::any_of(table.columns.begin(), table.columns.end(),
                                  [](const TColumnModel& other) { return other.type.family == EFamily::Shape; });
  if (shapes || column == nullptr || column->type.family != EFamily::Whole || column->Generated() ||
      table.engine == "MEMORY") {
    table.partitioning.clear();
    return;
  }
  for (TKeyModel& key : table.keys) {
    if (!key.Unique()) continue;
    if (key.kind == EKeyModel::Primary) column->not_null = true;
    const bool has = std::any_of(key.parts.begin(), key.parts.end(),
                                 [&](const TKeyPartModel& part) { return part.column == column->name; });
    if (!has) key.parts.push_back({column->name});
  }
}

// --- Options

std::size_t RowBytes(const TTableModel& table) {
  constexpr std::size_t kMostInRow = 788;
  std::size_t bytes = 100;
  for (const TColumnModel& column : table.columns) {
    const bool is_long = column.type.family == EFamily::LongLetters || column.type.family == EFamily::LongBytes ||
                         column.type.family == EFamily::Json || column.type.family == EFamily::Shape;
    bytes += is_long ? kMostInRow : std::min(kMostInRow, 10 + 4 * column.type.length);
  }
  return bytes;
}

void RepairOptions(TTableModel& table) {
  const auto has = [&](std::string_view name) {
    return std::any_of(table.options.begin(), table.options.end(), [&](const auto& o) { return o.name == name; });
  };
  const auto drop = [&](std::string_view name) {
    std::erase_if(table.options, [&](const TOptionModel& option) { return option.name == name; });
  };
  // A partitioned table loses it with its next change.
  if (IsPartitioned(table)) drop("page_checksum");
  constexpr std::size_t kHalfOfPage = 3500;
  if (IsPartitioned(table) || RowBytes(table) > kHalfOfPage) {
    drop("row_format");
    drop("key_block_size");
  }
  // Compressed pages and compressed rows exclude each other, and block sizes are those of compressed rows.
  if (has("page_compressed")) {
    drop("row_format");
    drop("key_block_size");
  }
  if (has("key_block_size")) drop("row_format");
}

// --- Foreign keys

bool IsKeyOf(const TTableModel& parent, const std::vector<std::string>& columns) {
  return std::any_of(parent.keys.begin(), parent.keys.end(), [&](const TKeyModel& key) {
    if (key.kind == EKeyModel::Fulltext || key.kind == EKeyModel::Spatial || key.parts.size() < columns.size())
      return false;
    return std::equal(columns.begin(), columns.end(), key.parts.begin(),
                      [](const auto& column, const auto& part) {
                        return column == part.column && part.prefix == 0 && !part.descending;
                      }) &&
           key.options.find("ignored") == std::string::npos && key.options.find("hash") == std::string::npos;
  });
}

bool IsBase(const TTableModel& table, const std::string& column) {
  return std::any_of(table.columns.begin(), table.columns.end(),
                     [&](const TColumnModel& other) { return other.Generated() && other.base == column; });
}

bool IsFulltext(const TTableModel& table, const std::string& column) {
  return std::any_of(table.keys.begin(), table.keys.end(), [&](const TKeyModel& key) {
    return key.kind == EKeyModel::Fulltext &&
           std::any_of(key.parts.begin(), key.parts.end(), [&](const auto& part) { return part.column == column; });
  });
}

bool BeginsHashKey(const TTableModel& table, const std::string& column) {
  return std::any_of(table.keys.begin(), table.keys.end(), [&](const TKeyModel& key) {
    return key.options.find("hash") != std::string::npos && key.parts.front().column == column;
  });
}

bool SameKeyColumn(const TTableModel& child, const TColumnModel& own, const TTableModel& parent,
                   const TColumnModel& referenced) {
  if (own.type.text != referenced.type.text || own.Generated() || referenced.Generated()) return false;
  if (!own.type.InKeys()) return false;
  return !own.type.HasLetters() || child.CharsetOf(own) == parent.CharsetOf(referenced);
}

bool Stands(TSchemaModel& schema, const TTableModel& child, const TForeignKeyModel& key) {
  const TTableModel* parent = schema.Find(key.parent);
  if (parent == nullptr || !IsInnoDB(*parent) || !IsInnoDB(child)) return false;
  if (IsPartitioned(*parent) || IsPartitioned(child) || !IsKeyOf(*parent, key.references)) return false;
  for (std::size_t i = 0; i < key.columns.size(); ++i) {
    const TColumnModel* own = child.Find(key.columns[i]);
    const TColumnModel* referenced = parent->Find(key.references[i]);
    if (own == nullptr || referenced == nullptr || !SameKeyColumn(child, *own, *parent, *referenced)) return false;
    const bool sets_null = key.on_delete == "set null" || key.on_update == "set null";
    if (sets_null && own->not_null) return false;
    if (key.on_update == "cascade" && own->not_null && !referenced->not_null) return false;
    // For the index that a foreign key needs a server may take a fulltext one, and refuse it then.
    if (IsFulltext(child, own->name) || IsFulltext(*parent, referenced->name)) return false;
    // A key by hash that a server forgets to be one takes the place of the index that it made for the foreign key,
    // which is then gone, in whatever "alter table" comes first.
    if (BeginsHashKey(child, own->name)) return false;
    // Servers take rules that write to the base of a stored column in "create table", but in no "alter table".
    if (IsBase(child, own->name) || (parent == &child && IsBase(child, referenced->name))) return false;
  }
  return true;
}

// No check reads a column that a foreign key writes to.
void DropChecksOfWritten(TTableModel& table) {
  for (const TForeignKeyModel& key : table.foreign_keys) {
    const auto writes = [](const std::string& rule) { return rule == "cascade" || rule == "set null"; };
    if (!writes(key.on_delete) && !writes(key.on_update)) continue;
    for (const std::string& name : key.columns) {
      table.Find(name)->check.clear();
      std::erase_if(table.checks, [&](const TCheckModel& check) { return check.column == name; });
    }
  }
}

}  // namespace

void Repair(TSchemaModel& schema) {
  std::set<std::string> names;
  std::erase_if(schema.tables, [&](const TTableModel& table) { return !names.insert(LowerText(table.name)).second; });
  for (TTableModel& table : schema.tables) {
    RepairNames(table);
    RepairEngine(table);
    RepairColumns(table);
    RepairPartitions(table);
    RepairColumns(table);  // the partitions' column may no longer be null
    RepairKeys(table);
    RepairOptions(table);
    std::erase_if(table.checks, [&](const TCheckModel& check) {
      const TColumnModel* column = table.Find(check.column);
      return column == nullptr || column->auto_increment || !FulltextCharset(table.CharsetOf(*column));
    });
  }
  for (TTableModel& table : schema.tables) {
    std::erase_if(table.foreign_keys, [&](const TForeignKeyModel& key) { return !Stands(schema, table, key); });
    DropChecksOfWritten(table);
  }
}

}  // namespace velmora::testing
