// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/compare/MySqlLimits.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "exact/compare/CanonicalForm.h"
#include "mysqltext/ColumnParts.h"
#include "mysqltext/ElementText.h"
#include "mysqltext/KeyText.h"
#include "util/Format.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kOfCounter[] = "what is computed of a counter (%s %s)";
constexpr char kOfLater[] = "what is computed of a later column with a computed default (%s %s)";
constexpr char kMemory[] = "computed defaults in this engine (%s %s)";
constexpr char kVirtualKey[] = "keys over virtual columns in this engine (%s %s)";
constexpr char kShapes[] = "shapes in other keys than spatial ones (%s %s)";
constexpr char kPartitioned[] = "such keys of partitioned tables (%s %s)";
constexpr char kDescending[] = "descending keys in this engine (%s %s)";
constexpr char kVirtualParent[] = "foreign keys over virtual columns (%s %s)";
constexpr char kCheckedRule[] = "checks of columns that a foreign key changes (%s %s)";

bool NamesIn(TTokens tokens, std::string_view column) {
  for (std::size_t at = 0; at < tokens.size(); ++at)
    if (IsName(tokens[at]) && !TokenAt(tokens, at + 1).Is("(") && SameText(NameOf(tokens[at]), column)) return true;
  return false;
}

class TLimits {
 public:
  explicit TLimits(const TTableText& table) : table_(table), engine_(EngineOf(table)) {
    for (const TElement& element : table.elements)
      if (element.kind == EElement::Column) columns_.push_back(&element);
  }

  TStringList Find() {
    for (std::size_t at = 0; at < columns_.size(); ++at) FindInColumn(at);
    for (const TElement& element : table_.elements)
      if (IsKey(element.kind))
        FindInKey(element);
      else if (element.kind == EElement::ForeignKey)
        FindInForeignKey(element);
      else if (element.kind == EElement::Check &&
               Names(element.text.Tokens(), [](auto& of) { return of.auto_increment; }))
        Add(kOfCounter, element);
    return std::move(found_);
  }

 private:
  void Add(const char* what, const TElement& element) {
    const char* kind = element.kind == EElement::Column       ? "column"
                       : element.kind == EElement::Check      ? "check"
                       : element.kind == EElement::ForeignKey ? "foreign key"
                                                              : "key";
    found_.push_back(Format(what, kind, element.name));
  }

  static bool IsComputed(const TColumnParts& parts, TTokens tokens) {
    return parts.default_value && TokenAt(tokens, parts.default_value->first).Is("(");
  }

  // Whether the tokens name a column of which `holds` is true, from the place `from` on.
  template <class Holds>
  bool Names(TTokens tokens, Holds holds, std::size_t from = 0) const {
    return std::any_of(columns_.begin() + static_cast<std::ptrdiff_t>(from), columns_.end(),
                       [&](auto* column) { return holds(column->text.Column()) && NamesIn(tokens, column->name); });
  }

  void FindInColumn(std::size_t at) {
    const TElement& column = *columns_[at];
    const TColumnParts& parts = column.text.Column();
    const TTokens tokens = column.text.Tokens();
    if (engine_ == "memory" && IsComputed(parts, tokens)) Add(kMemory, column);
    for (const auto& range : {parts.generated, parts.default_value}) {
      if (!range) continue;
      const TTokens expression = tokens.subspan(range->first, range->last - range->first);
      if (Names(expression, [](auto& of) { return of.auto_increment; })) Add(kOfCounter, column);
      const bool later =
          std::any_of(columns_.begin() + static_cast<std::ptrdiff_t>(at), columns_.end(), [&](auto* other) {
            return IsComputed(other->text.Column(), other->text.Tokens()) && NamesIn(expression, other->name);
          });
      if (later) Add(kOfLater, column);
    }
  }

  const TColumnParts* Column(const std::string& name) const {
    const TElement* column = table_.Find(EElement::Column, name);
    return column == nullptr ? nullptr : &column->text.Column();
  }
  bool IsVirtual(const std::string& name) const {
    const TColumnParts* parts = Column(name);
    return parts != nullptr && parts->generated && !parts->stored;
  }

  void FindInKey(const TElement& key) {
    const std::vector<std::string> columns = KeyColumns(key);
    const bool on_virtual = std::any_of(columns.begin(), columns.end(), [&](auto& name) { return IsVirtual(name); });
    const bool plain = key.kind != EElement::FulltextKey && key.kind != EElement::SpatialKey;
    if (!plain && !table_.partitioning.empty()) Add(kPartitioned, key);
    const auto is_shape = [this](auto& name) {
      const TColumnParts* parts = Column(name);
      return parts != nullptr && IsShapeType(parts->type);
    };
    if (plain && std::any_of(columns.begin(), columns.end(), is_shape)) Add(kShapes, key);
    if (engine_ == "innodb") return;
    if (on_virtual) Add(kVirtualKey, key);
    const TTokens tokens = key.text.Tokens();
    const auto parts = ListParts(tokens, NextBracket(tokens, 0));
    const auto descends = [&tokens](TTokenRange part) { return IsKeyword(tokens[part.last - 1], "desc"); };
    if (std::any_of(parts.begin(), parts.end(), descends)) Add(kDescending, key);
  }

  void FindInForeignKey(const TElement& key) {
    const TForeignKeyParts& parts = key.text.ForeignKey();
    const auto is_virtual = [&](auto& name) { return IsVirtual(name); };
    const bool own = parts.table == table_.name;
    const bool refers = own && std::any_of(parts.references.begin(), parts.references.end(), is_virtual);
    if (refers || std::any_of(parts.columns.begin(), parts.columns.end(), is_virtual)) Add(kVirtualParent, key);
    if (!Changes(key)) return;
    for (const TElement& check : table_.elements)
      for (const std::string& column : parts.columns)
        if (check.kind == EElement::Check && NamesIn(check.text.Tokens().subspan(check.text.Body()), column))
          return Add(kCheckedRule, check);
  }

  // Whether its rules change the columns: "on delete set null", "on update cascade" and the like.
  static bool Changes(const TElement& key) {
    const TTokens tokens = key.text.Tokens();
    for (std::size_t at = key.text.ForeignKey().rules; at < tokens.size(); ++at) {
      if (IsKeyword(tokens[at], "set")) return true;
      if (IsKeyword(tokens[at], "update") && IsKeyword(TokenAt(tokens, at + 1), "cascade")) return true;
    }
    return false;
  }

  const TTableText& table_;
  std::string engine_;
  std::vector<const TElement*> columns_;
  TStringList found_;
};

}  // namespace

TStringList BeyondMySql(const TTableText& table) { return TLimits(table).Find(); }

}  // namespace velmora
