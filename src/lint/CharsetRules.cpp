// SPDX-License-Identifier: GPL-3.0-or-later
#include "lint/CharsetRules.h"

#include "mysqltext/Charsets.h"
#include "mysqltext/ColumnParts.h"
#include "mysqltext/ColumnType.h"
#include "util/Format.h"
#include "util/Lists.h"
#include "util/Text.h"

namespace velmora {

namespace {

constexpr char kOtherSet[] = "Table %s has the character set %s, and %d of %d tables have %s.";
constexpr char kOtherCollation[] = "Table %s has the collation %s, and %d of %d tables of this set have %s.";
constexpr char kConvert[] = "Convert it (alter table %s convert to character set %s), unless it is meant so.";
constexpr char kColumn[] =
    "Column %s of table %s has %s, and its table %s: where it meets other columns indexes may be of no use.";
constexpr char kColumnLikeTable[] = "Give it the set and collation of its table, unless it is meant so.";
constexpr char kShort[] = "%s has the character set utf8mb3, which holds no letters of four bytes, as emoji are.";
constexpr char kMakeLong[] = "Convert it to utf8mb4.";

constexpr std::string_view kUtf8mb3 = "utf8mb3";
constexpr std::string_view kUtf8mb4 = "utf8mb4";

// MariaDB's json is a text of this collation with a check.
bool IsJson(const TElement& column) { return PosNoCase("json_valid", column.text.Str()) > 0; }

// Which mixes with any other without a loss.
bool IsPlain(const TCharset& of) { return of.charset == "ascii" || of.charset == "binary"; }

std::string TextOf(const TCharset& of) { return of.collation.empty() ? of.charset : of.collation; }

template <class Look>
void ForLetterColumns(const TTableText& table, Look look) {
  for (const TElement& element : table.elements) {
    if (element.kind != EElement::Column || !IsLetterType(element.text.Column().type) || IsJson(element)) continue;
    look(element, ReadColumnText(element.text, table).charset);
  }
}

bool HasLetters(const TTableText& table) {
  bool has = false;
  ForLetterColumns(table, [&has](const TElement&, const TCharset&) { has = true; });
  return has;
}

}  // namespace

void LookForOtherCharset(TTableLook& at) {
  const TUsualName& usual = at.schema.UsualCharset();
  const TCharset of = TableCharset(at.table);
  const bool is_usual = usual.name.empty() || of.charset.empty() || of.charset == usual.name;
  // Nobody goes back to a set that holds less.
  const bool is_best = IsPlain(of) || of.charset == kUtf8mb4;
  if (is_usual || is_best || !HasLetters(at.table)) return;
  at.Add(Format(kOtherSet, at.table.name, of.charset, usual.tables, usual.of, usual.name),
         Format(kConvert, at.table.name, usual.name == kUtf8mb3 ? kUtf8mb4 : usual.name));
}

void LookForOtherCollation(TTableLook& at) {
  const TUsualName& usual = at.schema.UsualCollation();
  const TCharset of = TableCharset(at.table);
  const bool has_usual_set = of.charset == at.schema.UsualCharset().name;
  if (usual.name.empty() || !has_usual_set || of.collation.empty() || of.collation == usual.name) return;
  if (!HasLetters(at.table)) return;
  at.Add(Format(kOtherCollation, at.table.name, of.collation, usual.tables, usual.of, usual.name),
         Format(kConvert, at.table.name, of.charset + " collate " + usual.name));
}

void LookForColumnCharsets(TTableLook& at) {
  const TCharset table = TableCharset(at.table);
  if (table.charset.empty()) return;
  ForLetterColumns(at.table, [&](const TElement& element, const TCharset& of) {
    const bool listed = InList(element.text.Column().type, {"enum", "set"});  // as who has listed its values knows
    if (of.charset.empty() || listed || IsPlain(of) || SameCharset(of, table)) return;
    at.Add(element, Format(kColumn, element.name, at.table.name, TextOf(of), TextOf(table)), kColumnLikeTable);
  });
}

void LookForShortUtf8(TTableLook& at) {
  if (TableCharset(at.table).charset == kUtf8mb3)
    return HasLetters(at.table) ? at.Add(Format(kShort, "Table " + at.table.name), kMakeLong) : void();
  ForLetterColumns(at.table, [&](const TElement& element, const TCharset& of) {
    if (of.charset == kUtf8mb3)
      at.Add(element, Format(kShort, "Column " + element.name + " of table " + at.table.name), kMakeLong);
  });
}

}  // namespace velmora
