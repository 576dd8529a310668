// SPDX-License-Identifier: GPL-3.0-or-later
#include "exact/compare/GeneratedKey.h"

#include <algorithm>

#include "mysqltext/ColumnParts.h"
#include "mysqltext/ColumnType.h"
#include "mysqltext/KeyText.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr std::string_view kPrimary = "PRIMARY";

bool NamesColumn(const TElement& key) {
  return std::ranges::any_of(key.text.KeyParts(),
                             [](const TKeyPart& part) { return SameText(part.column, kGeneratedColumn); });
}

bool LacksKey(const TTableText& table) {
  return table.Find(EElement::PrimaryKey, kPrimary) == nullptr &&
         table.Find(EElement::Column, kGeneratedColumn) == nullptr;
}

}  // namespace

bool HasGeneratedKey(const TTableText& table) {
  const TElement* element = table.Find(EElement::Column, kGeneratedColumn);
  const TElement* key = element == nullptr ? nullptr : table.Find(EElement::PrimaryKey, kPrimary);
  if (key == nullptr || key->text.KeyParts().size() != 1 || !NamesColumn(*key)) return false;
  const TColumnText column = ReadColumnText(element->text, table);
  const bool is_own = column.type == "bigint" && column.is_unsigned && column.auto_increment && column.invisible;
  return is_own && std::ranges::none_of(table.elements, [key](const TElement& other) {
           return &other != key && IsKey(other.kind) && NamesColumn(other);
         });
}

bool HasPrimaryKey(const TTableText& table) { return table.Find(EElement::PrimaryKey, kPrimary) != nullptr; }

bool HasCounter(const TTableText& table) {
  return std::ranges::any_of(table.elements, [](const TElement& element) {
    return element.kind == EElement::Column && element.text.Column().auto_increment;
  });
}

bool IsKeyWithoutNull(const TElement& key, const TTableText& table) {
  const auto never_null = [&table](const TKeyPart& part) {
    const TElement* column = table.Find(EElement::Column, part.column);
    return part.length == 0 && column != nullptr && ReadColumnText(column->text, table).not_null;
  };
  return key.kind == EElement::UniqueKey && std::ranges::all_of(key.text.KeyParts(), never_null);
}

bool HasUniqueKeyWithoutNull(const TTableText& table) {
  return std::ranges::any_of(table.elements,
                             [&table](const TElement& element) { return IsKeyWithoutNull(element, table); });
}

const TTableText* WithGeneratedKey(const TTableText& reference, const TTableText& target) {
  if (HasGeneratedKey(reference) && LacksKey(target)) return &reference;
  const bool stays = HasGeneratedKey(target) && LacksKey(reference) && reference.partitioning.empty();
  return stays && !HasCounter(reference) ? &target : nullptr;
}

bool IsOfGeneratedKey(const TElement& element) {
  return element.kind == EElement::PrimaryKey ||
         (element.kind == EElement::Column && SameText(element.name, kGeneratedColumn));
}

}  // namespace velmora
