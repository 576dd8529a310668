// SPDX-License-Identifier: GPL-3.0-or-later
#include "lint/IndexRules.h"

#include <algorithm>

#include "exact/compare/GeneratedKey.h"
#include "mysqltext/ColumnParts.h"
#include "mysqltext/ElementText.h"
#include "mysqltext/KeyText.h"
#include "util/Format.h"
#include "util/Lists.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kNoKey[] =
    "Table %s has no primary key: equal rows cannot be told apart, and replicas may read all rows for each that "
    "changes.";
constexpr char kGiveKey[] = "Give it a primary key.";
constexpr char kOnlyUnique[] = "Table %s has no primary key; its unique key %s stands for one.";
constexpr char kMakePrimary[] = "Make %s the primary key.";
constexpr char kSame[] = "%s has the same columns as %s.";
constexpr char kBegins[] = "%s has the first columns of %s, which serves the same queries.";
constexpr char kDrop[] = "Drop index %s.";
constexpr char kDropPerhaps[] = "Drop index %s, unless queries need it for its size.";
constexpr char kNullable[] =
    "Unique key %s has %s, which may be null: any number of rows with null there are the same in its other columns.";
constexpr char kNullableAlone[] = "Unique key %s has %s, which may be null: any number of rows have null there.";
constexpr char kForbidNull[] = "Make it not null, unless such rows are meant.";

// --- Keys side by side

constexpr char kHash[] = "hash";

struct TKeyLook {
  const TElement* key = nullptr;
  TStringList parts;  // column, length and direction, in lower case where they are names
  std::string use;    // "ignored", "invisible"; empty for one that queries use
  std::string kind;   // how it is built, where that is not as usual
  int weight = 0;     // of two that have the same columns the lighter one can go
};

int WeightOf(const TElement& key) {
  if (key.kind == EElement::PrimaryKey) return 2;
  return key.kind == EElement::UniqueKey ? 1 : 0;
}

std::string PartText(const TKeyPart& part) {
  if (part.column.empty()) return part.text;
  std::string text = LowerText(part.column) + (part.length > 0 ? Format("(%d)", part.length) : "");
  const std::vector<TToken> tokens = Tokens(part.text);
  const bool descends = tokens.size() > 1 && IsKeyword(tokens[tokens.size() - 2], "desc");
  return descends ? text + " desc" : text;
}

// What of a key counts beside its columns. Engines that know one way of building keys take any other for that.
std::string KindOf(const TElement& key, const std::string& engine) {
  const bool takes_any = engine == "innodb" || engine == "myisam" || engine == "aria";
  const TTokens tokens = key.text.Tokens();
  std::string way = engine == "memory" ? kHash : "";
  std::string rest;
  for (std::size_t at = key.text.Body(); at < tokens.size(); at = AfterValue(tokens, at)) {
    const std::string word = LowerText(tokens[at].text);
    if (InList(word, {"using", "type"}))
      way = LowerText(TokenAt(tokens, ++at).text);
    else if (InList(word, {"comment", "key_block_size"}))
      at += std::size_t{TokenAt(tokens, at + 1).Is("=") ? 2U : 1U};
    else if (!InList(word, {"(", "not", "visible", "invisible", "ignored"}))
      rest += " " + word;
  }
  return (takes_any || way == "btree" ? "" : way) + rest;
}

bool IsFamily(EElement kind) { return kind == EElement::FulltextKey || kind == EElement::SpatialKey; }

TKeyLook LookAt(const TElement& key, const std::string& engine) {
  TKeyLook look;
  look.key = &key;
  for (const TKeyPart& part : key.text.KeyParts()) look.parts.push_back(PartText(part));
  look.use = SplitKeyUse(key.text).word;
  look.kind = (IsFamily(key.kind) ? std::to_string(static_cast<int>(key.kind)) + " " : "") + KindOf(key, engine);
  look.weight = WeightOf(key);
  return look;
}

// Those that are known to the last word.
std::vector<TKeyLook> KeysOf(const TTableText& table) {
  std::vector<TKeyLook> keys;
  const std::string engine = LintEngine(table);
  for (const TElement& element : table.elements)
    if (IsKey(element.kind)) keys.push_back(LookAt(element, engine));
  std::erase_if(keys, [](const TKeyLook& key) { return key.parts.empty(); });
  return keys;
}

std::string KeyText(const TElement& key) {
  if (key.kind == EElement::PrimaryKey) return "the primary key";
  return (key.kind == EElement::UniqueKey ? "unique key " : "index ") + key.name;
}

std::string Capital(std::string text) {
  text[0] = static_cast<char>(text[0] >= 'a' && text[0] <= 'z' ? text[0] - 'a' + 'A' : text[0]);
  return text;
}

// A key that queries do not use takes no place of one that they do.
bool CanReplace(const TKeyLook& other, const TKeyLook& key) {
  return other.kind == key.kind && (other.use.empty() || !key.use.empty());
}

bool IsDuplicate(const TKeyLook& key, const TKeyLook& other) {
  if (key.parts != other.parts || !CanReplace(other, key)) return false;
  // Of two that are alike the later one, unless the earlier one is not used.
  const bool alike = key.weight == other.weight && CanReplace(key, other);
  return alike ? key.key > other.key : key.weight <= other.weight;
}

bool IsRedundant(const TKeyLook& key, const TKeyLook& other) {
  if (key.weight > 0 || IsFamily(key.key->kind) || key.parts.size() >= other.parts.size()) return false;
  // The hash of some columns does not find fewer.
  return CanReplace(other, key) && !key.kind.starts_with(kHash) &&
         std::equal(key.parts.begin(), key.parts.end(), other.parts.begin());
}

using TMatch = bool (*)(const TKeyLook& key, const TKeyLook& other);
const TKeyLook* MatchOf(const TKeyLook& key, const std::vector<TKeyLook>& keys, TMatch matches) {
  const auto found = std::ranges::find_if(keys, [&](auto& other) { return &other != &key && matches(key, other); });
  return found == keys.end() ? nullptr : &*found;
}

}  // namespace

void LookForNoKey(TTableLook& at) {
  const bool takes_keys = !InList(LintEngine(at.table), {"csv", "mrg_myisam", "merge", "performance_schema"});
  if (takes_keys && !HasPrimaryKey(at.table) && !HasUniqueKeyWithoutNull(at.table))
    at.Add(Format(kNoKey, at.table.name), kGiveKey);
}

void LookForUniqueAsPrimary(TTableLook& at) {
  if (HasPrimaryKey(at.table)) return;
  const auto key = std::ranges::find_if(at.table.elements,
                                        [&](const TElement& element) { return IsKeyWithoutNull(element, at.table); });
  if (key != at.table.elements.end())
    at.Add(*key, Format(kOnlyUnique, at.table.name, key->name), Format(kMakePrimary, key->name));
}

void LookForDuplicates(TTableLook& at) {
  const std::vector<TKeyLook> keys = KeysOf(at.table);
  for (const TKeyLook& key : keys)
    if (const TKeyLook* other = MatchOf(key, keys, IsDuplicate))
      at.Add(*key.key, Format(kSame, Capital(KeyText(*key.key)) + " of table " + at.table.name, KeyText(*other->key)),
             Format(kDrop, key.key->name));
}

void LookForRedundant(TTableLook& at) {
  const std::vector<TKeyLook> keys = KeysOf(at.table);
  for (const TKeyLook& key : keys) {
    if (MatchOf(key, keys, IsDuplicate) != nullptr) continue;
    if (const TKeyLook* other = MatchOf(key, keys, IsRedundant))
      at.Add(*key.key, Format(kBegins, Capital(KeyText(*key.key)) + " of table " + at.table.name, KeyText(*other->key)),
             Format(kDropPerhaps, key.key->name));
  }
}

void LookForNullableUnique(TTableLook& at) {
  for (const TElement& key : at.table.elements) {
    if (key.kind != EElement::UniqueKey) continue;
    TStringList nullable;
    for (const std::string& name : KeyColumns(key)) {
      const TElement* column = name.empty() ? nullptr : at.table.Find(EElement::Column, name);
      if (column == nullptr || column->text.Column().generated) continue;  // such a one is null on purpose
      const TColumnParts& parts = column->text.Column();
      const bool told = parts.type != "timestamp" || parts.null;  // servers differ in what it is otherwise
      if (told && !parts.not_null) nullable.push_back(parts.name);
    }
    if (nullable.empty()) continue;
    const bool alone = KeyColumns(key).size() == nullable.size();
    at.Add(key,
           Format(alone ? kNullableAlone : kNullable, key.name + " of table " + at.table.name,
                  (nullable.size() == 1 ? "column " : "columns ") + JoinList(nullable, ", ")),
           kForbidNull);
  }
}

}  // namespace velmora
