// SPDX-License-Identifier: GPL-3.0-or-later
#include "lint/ForeignKeyRules.h"

#include <algorithm>
#include <optional>

#include "mysqltext/Charsets.h"
#include "mysqltext/ColumnParts.h"
#include "mysqltext/ColumnType.h"
#include "mysqltext/KeyText.h"
#include "util/Format.h"
#include "util/Lists.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kNoTable[] = "%s refers to table %s, which is not there.";
constexpr char kNoColumn[] = "%s refers to column %s of table %s, which is not there.";
constexpr char kMakeParent[] = "Make the table, or drop the foreign key.";
constexpr char kNameColumn[] = "Name a column that is there.";
constexpr char kTypes[] = "%s: column %s is %s, and %s, which it refers to, is %s.";
constexpr char kCollations[] = "%s: column %s has %s, and %s, which it refers to, has %s.";
constexpr char kSameType[] = "Give both the same type.";
constexpr char kSameCollation[] = "Give both the same character set and collation.";
constexpr char kNoOwnIndex[] = "%s: no index of its table begins with %s; each change of table %s reads it whole.";
constexpr char kNoParentIndex[] = "%s: no index of table %s begins with %s, and servers refuse that.";
constexpr char kMakeIndex[] = "Add an index on %s.";
constexpr char kNotUnique[] =
    "%s refers to %s of table %s, where no key is unique: which row is meant is not told, and MySQL 8.4 refuses it.";
constexpr char kMakeUnique[] = "Refer to a primary key or a unique one.";
constexpr char kSameKeys[] = "%s says the same as foreign key %s.";
constexpr char kDropKey[] = "Drop one of them.";

std::string ForeignKeyName(const TTableLook& at, const TElement& key) {
  const std::string name = key.name.empty() ? "" : " " + key.name;
  return "Foreign key" + name + " of table " + at.table.name;
}

// --- What it refers to

enum class EParent { Known, Missing, Unknown };

struct TReference {
  const TElement* key = nullptr;
  const TForeignKeyParts* parts = nullptr;
  EParent is = EParent::Unknown;
  const TTableText* parent = nullptr;  // of a known one
};

TReference ReferenceOf(const TTableLook& at, const TElement& key) {
  TReference reference{&key, &key.text.ForeignKey(), EParent::Unknown, nullptr};
  const TForeignKeyParts& parts = *reference.parts;
  if (!parts.database.empty() || parts.table.empty()) return reference;
  reference.parent = SameText(parts.table, at.table.name) ? &at.table : at.schema.Find(parts.table);
  const bool hidden = !at.schema.whole || at.schema.unread.contains(LowerText(parts.table));
  reference.is = reference.parent != nullptr ? EParent::Known : hidden ? EParent::Unknown : EParent::Missing;
  return reference;
}

template <class Look>
void ForReferences(const TTableLook& at, EParent is, Look look) {
  if (LintEngine(at.table) != "innodb") return;
  for (const TElement& element : at.table.elements) {
    if (element.kind != EElement::ForeignKey) continue;
    const TReference reference = ReferenceOf(at, element);
    if (reference.is == is) look(reference);
  }
}

// --- Types

enum class EFamily { Unknown, Whole, Fixed, Float, Double, Letters, Bytes, Members, Bits, Date, Year, Time };

EFamily FamilyOf(const TColumnText& column) {
  if (IsWholeType(column.type)) return EFamily::Whole;
  if (InList(column.type, {"enum", "set"})) return EFamily::Members;
  if (column.HasLetters()) return column.charset.charset == "binary" ? EFamily::Unknown : EFamily::Letters;
  if (IsByteType(column.type)) return EFamily::Bytes;
  if (IsTimeType(column.type)) return EFamily::Time;
  if (column.type == "decimal") return EFamily::Fixed;
  if (column.type == "float") return EFamily::Float;
  if (column.type == "double") return EFamily::Double;
  if (column.type == "bit") return EFamily::Bits;
  if (column.type == "date") return EFamily::Date;
  return column.type == "year" ? EFamily::Year : EFamily::Unknown;
}

bool SameSizes(const TColumnText& a, const TColumnText& b, long long length) {
  return a.Length().value_or(length) == b.Length().value_or(length) &&
         a.Fraction().value_or(0) == b.Fraction().value_or(0);
}

long long BitBytes(const TColumnText& column) {
  constexpr long long kBits = 8;
  return (column.Length().value_or(1) + kBits - 1) / kBits;
}

// Whether values of the two are the same bytes; true where nobody knows.
bool SameType(const TColumnText& a, const TColumnText& b) {
  constexpr long long kDigits = 10, kOne = 1;  // that decimal, and bit or binary, have by themselves
  const EFamily family = FamilyOf(a);
  if (family == EFamily::Unknown || FamilyOf(b) == EFamily::Unknown) return true;
  if (family != FamilyOf(b)) return false;
  switch (family) {
    case EFamily::Whole:
      return a.type == b.type && a.is_unsigned == b.is_unsigned;
    case EFamily::Fixed:
      return SameSizes(a, b, kDigits);
    case EFamily::Time:
      return a.type == b.type && a.Fraction().value_or(0) == b.Fraction().value_or(0);
    case EFamily::Bits:
      return BitBytes(a) == BitBytes(b);
    case EFamily::Bytes:
      return a.type != "binary" || b.type != "binary" || SameSizes(a, b, kOne);
    default:
      return true;
  }
}

// Of letters; true where nobody knows.
bool SameCollation(const TColumnText& a, const TColumnText& b) {
  if (FamilyOf(a) != EFamily::Letters || FamilyOf(b) != EFamily::Letters) return true;
  return a.charset.charset.empty() || b.charset.charset.empty() || SameCharset(a.charset, b.charset);
}

std::string TypeText(const TColumnText& column) {
  const bool members = InList(column.type, {"enum", "set"});
  const std::string sizes = members || column.arguments.empty() ? "" : "(" + JoinList(column.arguments, ",") + ")";
  return column.type + sizes + (column.is_unsigned ? " unsigned" : "");
}

std::string CharsetText(const TColumnText& column) {
  return column.charset.collation.empty() ? column.charset.charset : column.charset.collation;
}

void LookAtTypes(TTableLook& at, const TReference& reference) {
  const TForeignKeyParts& parts = *reference.parts;
  const std::size_t count = std::min(parts.columns.size(), parts.references.size());
  for (std::size_t i = 0; i < count; ++i) {
    const TElement* own = at.table.Find(EElement::Column, parts.columns[i]);
    const TElement* other = reference.parent->Find(EElement::Column, parts.references[i]);
    if (own == nullptr || other == nullptr) continue;
    const TColumnText here = ReadColumnText(own->text, at.table);
    const TColumnText there = ReadColumnText(other->text, *reference.parent);
    const std::string name = ForeignKeyName(at, *reference.key);
    const std::string target = reference.parent->name + "." + there.name;
    if (!SameType(here, there))
      at.Add(*reference.key, Format(kTypes, name, here.name, TypeText(here), target, TypeText(there)), kSameType);
    else if (!SameCollation(here, there))
      at.Add(*reference.key, Format(kCollations, name, here.name, CharsetText(here), target, CharsetText(there)),
             kSameCollation);
  }
}

// --- Indexes

// Columns of a key in order, with those of the primary key that each row has behind them; nothing for one that does not
// serve foreign keys.
TStringList ServingColumns(const TTableText& table, const TElement& key) {
  if (!IsKey(key.kind) || key.kind == EElement::FulltextKey || key.kind == EElement::SpatialKey) return {};
  TStringList columns;
  const auto add = [&columns](const TElement& of) {
    for (const TKeyPart& part : of.text.KeyParts()) {
      if (part.length > 0 || part.column.empty()) return;
      columns.push_back(part.column);
    }
  };
  add(key);
  const TElement* primary = table.Find(EElement::PrimaryKey, "PRIMARY");
  if (primary != nullptr && primary != &key && columns.size() == key.text.KeyParts().size()) add(*primary);
  return columns;
}

bool Begins(const TStringList& columns, const TStringList& wanted) {
  return columns.size() >= wanted.size() &&
         std::equal(wanted.begin(), wanted.end(), columns.begin(),
                    [](const std::string& a, const std::string& b) { return SameText(a, b); });
}

bool HasServingIndex(const TTableText& table, const TStringList& columns) {
  return std::ranges::any_of(table.elements, [&](const TElement& key) {
    return IsKey(key.kind) && Begins(ServingColumns(table, key), columns);
  });
}

bool HasColumns(const TTableText& table, const TStringList& columns) {
  return std::ranges::all_of(columns, [&table](auto& name) { return table.Find(EElement::Column, name) != nullptr; });
}

bool IsUniqueKeyOf(const TElement& key, const TStringList& columns) {
  if (key.kind != EElement::PrimaryKey && key.kind != EElement::UniqueKey) return false;
  const std::vector<TKeyPart>& parts = key.text.KeyParts();
  const bool whole = std::ranges::all_of(parts, [](const TKeyPart& part) { return part.length == 0; });
  return whole && parts.size() <= columns.size() &&
         std::ranges::all_of(parts, [&](const TKeyPart& part) { return IndexOf(columns, part.column) != kNotInList; });
}

std::string Listed(const TStringList& columns) { return "(" + JoinList(columns, ", ") + ")"; }

}  // namespace

void LookForMissingParents(TTableLook& at) {
  ForReferences(at, EParent::Missing, [&](const TReference& to) {
    at.Add(*to.key, Format(kNoTable, ForeignKeyName(at, *to.key), to.parts->table), kMakeParent);
  });
  ForReferences(at, EParent::Known, [&](const TReference& to) {
    for (const std::string& column : to.parts->references)
      if (to.parent->Find(EElement::Column, column) == nullptr)
        at.Add(*to.key, Format(kNoColumn, ForeignKeyName(at, *to.key), column, to.parent->name), kNameColumn);
  });
}

void LookForOtherTypes(TTableLook& at) {
  ForReferences(at, EParent::Known, [&at](const TReference& to) { LookAtTypes(at, to); });
}

void LookForMissingIndexes(TTableLook& at) {
  ForReferences(at, EParent::Known, [&](const TReference& to) {
    const std::string name = ForeignKeyName(at, *to.key);
    const std::string own = Listed(to.parts->columns);
    const std::string there = Listed(to.parts->references);
    if (!HasServingIndex(at.table, to.parts->columns))
      at.Add(*to.key, Format(kNoOwnIndex, name, own, to.parent->name), Format(kMakeIndex, own));
    if (HasColumns(*to.parent, to.parts->references) && !HasServingIndex(*to.parent, to.parts->references))
      at.Add(*to.key, Format(kNoParentIndex, name, to.parent->name, there), Format(kMakeIndex, there));
  });
}

void LookForNotUnique(TTableLook& at) {
  ForReferences(at, EParent::Known, [&](const TReference& to) {
    const TStringList& columns = to.parts->references;
    const bool unique =
        std::ranges::any_of(to.parent->elements, [&](const TElement& key) { return IsUniqueKeyOf(key, columns); });
    if (!unique && HasServingIndex(*to.parent, columns))
      at.Add(*to.key, Format(kNotUnique, ForeignKeyName(at, *to.key), Listed(columns), to.parent->name), kMakeUnique);
  });
}

void LookForSameForeignKeys(TTableLook& at) {
  std::vector<const TElement*> before;
  for (const TElement& key : at.table.elements) {
    if (key.kind != EElement::ForeignKey) continue;
    const TForeignKeyParts& parts = key.text.ForeignKey();
    const auto same = std::ranges::find_if(before, [&parts](const TElement* other) {
      const TForeignKeyParts& there = other->text.ForeignKey();
      return SameText(parts.table, there.table) && SameText(parts.database, there.database) &&
             parts.columns.size() == there.columns.size() && Begins(parts.columns, there.columns) &&
             parts.references.size() == there.references.size() && Begins(parts.references, there.references);
    });
    if (same != before.end())
      at.Add(key, Format(kSameKeys, ForeignKeyName(at, key), (*same)->name), kDropKey);
    else
      before.push_back(&key);
  }
}

}  // namespace velmora
