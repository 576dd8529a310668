// SPDX-License-Identifier: GPL-3.0-or-later
#include "foreign/DbfFacts.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <map>
#include <string_view>
#include <system_error>
#include <utility>

#include "engines/oledb/DBConnDBF.h"
#include "engines/oledb/DBConnFoxPro.h"
#include "formats/dbf/DbfStructure.h"
#include "util/Aside.h"
#include "util/Errors.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kExpression[] = "it is over an expression: %s";
constexpr char kUnknownType[] = "its type, %s, is not known";
constexpr char kNotLookedAfter[] = "relation to %s: FoxPro does not look after it, MySQL will";

// Which numbers of a field its type takes.
enum class EFieldSize { None, Length, Digits };

struct TFieldRow {
  char type;
  std::uint8_t flag;  // only fields with this flag; the first row that fits counts
  EFamily family;
  EFieldSize size;
};

constexpr TFieldRow kFields[] = {
    {'C', kDbfBinary, EFamily::Binary, EFieldSize::Length},
    {'C', 0, EFamily::Char, EFieldSize::Length},
    {'N', 0, EFamily::FieldWidth, EFieldSize::Digits},
    {'F', 0, EFamily::FieldWidth, EFieldSize::Digits},
    {'I', 0, EFamily::Int32, EFieldSize::None},
    {'B', 0, EFamily::Double, EFieldSize::None},
    {'Y', 0, EFamily::Money, EFieldSize::None},
    {'D', 0, EFamily::Date, EFieldSize::None},
    {'T', 0, EFamily::DateTime, EFieldSize::None},
    {'L', 0, EFamily::Boolean, EFieldSize::None},
    {'M', kDbfBinary, EFamily::LongBinary, EFieldSize::None},
    {'M', 0, EFamily::LongText, EFieldSize::None},
    {'G', 0, EFamily::LongBinary, EFieldSize::None},
    {'P', 0, EFamily::LongBinary, EFieldSize::None},
    {'W', 0, EFamily::LongBinary, EFieldSize::None},
    {'V', 0, EFamily::VarChar, EFieldSize::Length},
    {'Q', 0, EFamily::VarBinary, EFieldSize::Length},
};

TForeignColumn ColumnOf(const TDbfField& field, bool visual) {
  TForeignColumn column{.name = field.name, .native = std::string(1, field.type)};
  const auto* row = std::ranges::find_if(kFields, [&](const TFieldRow& each) {
    return each.type == field.type && (!visual || field.Is(each.flag)) && (visual || each.flag == 0);
  });
  if (row == std::end(kFields)) {
    column.problem = Format(kUnknownType, column.native);
    return column;
  }
  column.family = row->family;
  if (row->size == EFieldSize::Length) column.length = static_cast<std::int64_t>(field.size);
  if (row->size == EFieldSize::Digits) {
    column.precision = static_cast<int>(field.size);
    column.scale = static_cast<int>(field.decimals);
  }
  if (visual) column.nullable = field.Is(kDbfNullable);
  if (visual && field.type == 'I' && field.Is(kDbfAutoInc)) column.counting = ECounting::Counts;
  return column;
}

// The column that is all of an index's expression; empty for any other expression.
std::string ColumnIn(const std::string& expression, const TDbfStructure& structure) {
  for (std::size_t i = 0; i < structure.fields.size(); ++i) {
    const std::string& long_name = structure.entry ? structure.entry->fields[i].name : structure.fields[i].name;
    if (SameText(expression, long_name) || SameText(expression, structure.fields[i].name)) return long_name;
  }
  return {};
}

// An expression in the common form: texts stand in double quotes or brackets, too, and words between points.
std::string PlainExpression(const std::string& text) {
  constexpr std::array<std::string_view, 3> kWords = {".and.", ".or.", ".not."};
  std::string plain;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char open = text[at], close = open == '[' ? ']' : open;
    const std::size_t end = open == '"' || open == '\'' || open == '[' ? text.find(close, at + 1) : std::string::npos;
    const auto word = std::ranges::find_if(
        kWords, [&](std::string_view each) { return SameText(std::string_view(text).substr(at, each.size()), each); });
    if (end != std::string::npos) {
      plain += "'" + StrReplace(text.substr(at + 1, end - at - 1), "'", "''") + "'";
      at = end;
    } else if (word != kWords.end()) {
      plain.append(" ").append(word->substr(1, word->size() - 2)).append(" ");
      at += word->size() - 1;
    } else {
      plain += open;
    }
  }
  return plain;
}

TForeignKey KeyOf(const TDbfIndex& index, const TDbfStructure& structure) {
  TForeignKey key{.name = index.name, .kind = index.unique ? EForeignKeyKind::Unique : EForeignKeyKind::Plain};
  if (structure.entry && SameText(index.name, structure.entry->primary_tag)) key.kind = EForeignKeyKind::Primary;
  const std::string column = ColumnIn(index.expression, structure);
  if (column.empty())
    key.problem = Format(kExpression, index.expression);
  else
    key.parts.push_back({column});
  return key;
}

class TDbfFacts : public TFactReader {
 public:
  using TOpen = std::unique_ptr<TDbfStructures> (*)(const std::string& path, const std::string& code_page);
  TDbfFacts(std::string path, std::string code_page, TOpen open)
      : path_(path), files_(ESlow::Files, [path = std::move(path), code_page = std::move(code_page), open] {
          return open(path, code_page);
        }) {}

  TKnownFacts Known() const override { return {EFact::Order}; }
  TStringList Tables() override { return TableNames(); }
  bool Reachable() override {
    std::error_code ignored;
    return std::filesystem::exists(path_, ignored);
  }

  TForeignTable Table(const std::string& name) override {
    const TDbfStructure structure = StructureOf(name);
    TForeignTable table{.name = name, .known = KnownOf(structure), .warnings = structure.warnings};
    for (std::size_t i = 0; i < structure.fields.size(); ++i) {
      table.columns.push_back(ColumnOf(structure.fields[i], structure.visual));
      if (structure.entry) Complete(structure.entry->fields[i], table);
    }
    for (const TDbfIndex& index : structure.indexes) table.keys.push_back(KeyOf(index, structure));
    if (!structure.entry) return table;
    table.comment = structure.entry->comment;
    if (!structure.entry->rule.empty()) table.checks.push_back({.text = PlainExpression(structure.entry->rule)});
    for (const TDbcRelation& relation : structure.entry->relations) AddReference(relation, table);
    return table;
  }

 private:
  TStringList TableNames() {
    return files_.Do([](TDbfStructures& files) { return files.TableNames(); });
  }
  TDbfStructure Read(const std::string& name) {
    return files_.Do([name](TDbfStructures& files) { return files.StructureOf(name); });
  }

  // A parent was read with the first table that refers to it.
  TDbfStructure StructureOf(const std::string& name) {
    if (auto parent = parents_.extract(name)) return std::move(parent.mapped());
    TDbfStructure structure = Read(name);
    if (structure.entry) KeepTags(name, structure);
    return structure;
  }

  void KeepTags(const std::string& name, const TDbfStructure& structure) {
    TTags& tags = tags_[name];
    for (const TDbfIndex& index : structure.indexes)
      tags.emplace(LowerText(index.name), ColumnIn(index.expression, structure));
  }

  static TKnownFacts KnownOf(const TDbfStructure& structure) {
    TKnownFacts known = {EFact::Order};
    if (structure.visual) known.Add(EFact::Nullability);
    if (structure.visual) known.Add(EFact::Counting);
    if (!structure.entry) return known;
    for (const EFact fact : {EFact::Defaults, EFact::PrimaryKey, EFact::OtherKeys, EFact::References, EFact::Rules,
                             EFact::Checks, EFact::ColumnComments, EFact::TableComment})
      known.Add(fact);
    if (!structure.tags_missing) return known;
    for (const EFact fact : {EFact::PrimaryKey, EFact::OtherKeys, EFact::References, EFact::Rules}) known.Remove(fact);
    return known;
  }

  // Long names and what the table's file has no room for.
  static void Complete(const TDbcField& field, TForeignTable& table) {
    TForeignColumn& column = table.columns.back();
    column.name = field.name;
    if (field.default_value) column.default_text = PlainExpression(*field.default_value);
    column.comment = field.comment;
    if (!field.rule.empty()) table.checks.push_back({.column = field.name, .text = PlainExpression(field.rule)});
  }

  // Empty for none, and where the table cannot be read: it says by itself what is wrong with it.
  std::string ColumnOfTag(const std::string& tag, const std::string& table) {
    if (!tags_.contains(table)) ReadAhead(table);
    const TTags& tags = tags_[table];
    const auto found = tags.find(LowerText(tag));
    return found == tags.end() ? std::string() : found->second;
  }

  void ReadAhead(const std::string& table) {
    try {
      TDbfStructure structure = Read(table);
      KeepTags(table, structure);
      parents_.emplace(table, std::move(structure));
    } catch (const EAbort&) {
      throw;
    } catch (const EVelmora&) {
    }
  }

  static EReferenceRule RuleOf(char letter) {
    return letter == 'C' || letter == 'c' ? EReferenceRule::Cascade : EReferenceRule::NoAction;
  }

  void AddReference(const TDbcRelation& relation, TForeignTable& table) {
    TForeignReference reference{.table = NameIn(relation.parent),
                                .on_delete = RuleOf(relation.on_delete),
                                .on_update = RuleOf(relation.on_update)};
    const std::string column = ColumnOfTag(relation.tag, table.name);
    const std::string parent = ColumnOfTag(relation.parent_tag, reference.table);
    if (!column.empty()) reference.columns.push_back(column);
    if (!parent.empty()) reference.references.push_back(parent);
    if (relation.on_delete == ' ' && relation.on_update == ' ')
      table.remarks.push_back(Format(kNotLookedAfter, reference.table));
    table.references.push_back(std::move(reference));
  }

  // As the list of tables spells it.
  std::string NameIn(const std::string& table) {
    if (names_.empty())
      for (const std::string& name : TableNames()) names_.emplace(LowerText(name), name);
    const auto found = names_.find(LowerText(table));
    return found == names_.end() ? table : found->second;
  }

  std::string path_;
  TAsideObject<TDbfStructures> files_;
  using TTags = std::map<std::string, std::string>;  // columns by tags in lower case
  std::map<std::string, std::string> names_;         // of tables, by the name in lower case
  std::map<std::string, TTags> tags_;                // of tables that were read
  std::map<std::string, TDbfStructure> parents_;     // that were read before it was their turn
};

}  // namespace

std::unique_ptr<TFactReader> MakeDBaseFacts(TDBConn& conn) {
  const auto* engine = dynamic_cast<TDBConnDBF*>(&conn);
  if (engine == nullptr) return nullptr;
  return std::make_unique<TDbfFacts>(engine->folder(), engine->code_page(), OpenDBaseStructures);
}

std::unique_ptr<TFactReader> MakeFoxProFacts(TDBConn& conn) {
  const auto* engine = dynamic_cast<TDBConnFoxPro*>(&conn);
  if (engine == nullptr) return nullptr;
  return std::make_unique<TDbfFacts>(engine->folder(), engine->code_page(), OpenFoxProStructures);
}

}  // namespace velmora
